// Internal helpers shared by the BIGINT and INT8 code: the native 64-bit form
// of a qmr_int8_t record and back, inlined because the INT8 arithmetic is
// built on them.
#pragma once

#include <cstdint>
#include <cstring>

#include "qmr/errors.h"
#include "qmr/int8.h"

namespace qmr
{

inline constexpr std::int64_t bigint_null = INT64_MIN;

// All bytes 0xFF: the null of the FLOAT and SMALLFLOAT types, itself a NaN.
template <typename F> bool is_float_null(F x) noexcept
{
    unsigned char bytes[sizeof x];
    std::memcpy(bytes, &x, sizeof x);
    for (unsigned char b : bytes)
        if (b != 0xFF)
            return false;
    return true;
}

template <typename F> void set_float_null(F *x) noexcept
{
    std::memset(x, 0xFF, sizeof *x);
}

// The native value of a record: null gives the null pattern; a high word with
// its top bit set is malformed (QMR_E_NOFIT, *v untouched).
inline int int8_to_native(const qmr_int8_t *a, std::int64_t *v) noexcept
{
    if (a->sign == 0) {
        *v = bigint_null;
        return 0;
    }
    if (a->data[1] & 0x80000000u)
        return QMR_E_NOFIT;
    const std::uint64_t mag = (std::uint64_t{a->data[1]} << 32) | a->data[0];
    const std::int64_t m = static_cast<std::int64_t>(mag);
    *v = a->sign == -1 ? -m : m;
    return 0;
}

// The record of a native value: the null pattern gives null; zero has sign 1.
inline void native_to_int8(std::int64_t v, qmr_int8_t *a) noexcept
{
    if (v == bigint_null) {
        a->data[0] = 0;
        a->data[1] = 0;
        a->sign = 0;
        return;
    }
    const std::uint64_t mag =
        v < 0 ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
    a->data[0] = static_cast<unsigned>(mag);
    a->data[1] = static_cast<unsigned>(mag >> 32);
    a->sign = v < 0 ? -1 : 1;
}

// Writes the decimal digits of m (no sign, no NUL) at out; returns the count
// (1..20).
int u64_to_decimal(std::uint64_t m, char *out) noexcept;

// Writes the text biginttoasc makes for a non-null v (base 16 when radix is
// 16, else 10; no NUL) at out, which holds 24 bytes; returns its length.
int bigint_format(std::int64_t v, int radix, char *out) noexcept;

} // namespace qmr
