// BIGINT conversions to and from the C integers, qmr_int8_t, dec_t and
// floating point, and the 8-byte big-endian stored form. The text conversions
// are in bigint_text.cpp.
#include "qmr/bigint.h"

#include <cmath>

#include "numeric/bigint.hpp"

namespace
{

using qmr::bigint_null;
using qmr::is_float_null;
using qmr::set_float_null;

// The base-100 digits of 2^63-1, the largest integer part that fits.
constexpr unsigned char max_pairs[10] = {9, 22, 33, 72, 3, 68, 54, 77, 58, 7};

int from_double(double x, std::int64_t *v)
{
    constexpr double two63 = 9223372036854775808.0;
    // kept on purpose: a NaN and 2^63 itself are accepted and come out as the
    // null pattern, as the processor's conversion gives them
    if (std::isnan(x) || x == two63) {
        *v = bigint_null;
        return 0;
    }
    if (!(x >= -two63 && x < two63))
        return QMR_E_NOFIT;
    *v = static_cast<std::int64_t>(x);
    return 0;
}

} // namespace

int biginttoint2(std::int64_t v, short *s) noexcept
{
    if (v == bigint_null) {
        *s = -32768;
        return 0;
    }
    if (v < -32767 || v > 32767)
        return QMR_E_SMALLINTRANGE;
    *s = static_cast<short>(v);
    return 0;
}

int bigintcvint2(short s, std::int64_t *v) noexcept
{
    *v = s == -32768 ? bigint_null : s;
    return 0;
}

int biginttoint4(std::int64_t v, std::int32_t *l) noexcept
{
    if (v == bigint_null) {
        *l = INT32_MIN;
        return 0;
    }
    if (v < -2147483647 || v > 2147483647)
        return QMR_E_NOFIT;
    *l = static_cast<std::int32_t>(v);
    return 0;
}

int bigintcvint4(std::int32_t l, std::int64_t *v) noexcept
{
    *v = l == INT32_MIN ? bigint_null : l;
    return 0;
}

int bigintcvqmr_int8(const qmr_int8_t *a, std::int64_t *v) noexcept
{
    return qmr::int8_to_native(a, v);
}

int biginttoqmr_int8(std::int64_t v, qmr_int8_t *a) noexcept
{
    qmr::native_to_int8(v, a);
    return 0;
}

int bigintcvdec(const dec_t *d, std::int64_t *v) noexcept
{
    if (d->sign == -1) {
        *v = bigint_null;
        return 0;
    }
    const int e = d->exponent;
    if (e > 10)
        return QMR_E_NOFIT;
    if (e < 1) {
        *v = 0;
        return 0;
    }
    int held = d->ndigits < 0 ? 0 : d->ndigits;
    if (held > QMR_DECSIZE)
        held = QMR_DECSIZE;
    // digit bytes past ndigits count as 0, whatever they hold
    auto pair = [&](int i) -> unsigned {
        return i < held ? static_cast<unsigned char>(d->digits[i]) : 0u;
    };
    if (e == 10) {
        for (int i = 0; i < 10; ++i) {
            if (pair(i) != max_pairs[i]) {
                if (pair(i) > max_pairs[i])
                    return QMR_E_NOFIT;
                break;
            }
        }
    }
    std::uint64_t m = 0;
    for (int i = 0; i < e; ++i)
        m = m * 100 + pair(i);
    // a malformed digit above 99 can push even a lower first digit past 2^63-1
    if (m > static_cast<std::uint64_t>(INT64_MAX))
        return QMR_E_NOFIT;
    const auto s = static_cast<std::int64_t>(m);
    *v = d->sign == 0 ? -s : s;
    return 0;
}

int biginttodec(std::int64_t v, dec_t *d) noexcept
{
    if (v == bigint_null) {
        d->sign = -1;
        d->ndigits = 0;
        d->exponent = 0;
        return 0;
    }
    std::uint64_t m = v < 0 ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
    char pairs[10];
    int n = 10;
    while (m != 0) {
        pairs[--n] = static_cast<char>(m % 100);
        m /= 100;
    }
    return decload(d, v < 0 ? 0 : 1, 10 - n, pairs + n, 10 - n);
}

int bigintcvdbl(double x, std::int64_t *v) noexcept
{
    if (is_float_null(x)) {
        *v = bigint_null;
        return 0;
    }
    return from_double(x, v);
}

int bigintcvflt(float x, std::int64_t *v) noexcept
{
    if (is_float_null(x)) {
        *v = bigint_null;
        return 0;
    }
    return from_double(static_cast<double>(x), v);
}

int biginttodbl(std::int64_t v, double *x) noexcept
{
    if (v == bigint_null)
        set_float_null(x);
    else
        *x = static_cast<double>(v);
    return 0;
}

int biginttoflt(std::int64_t v, float *x) noexcept
{
    if (v == bigint_null) {
        set_float_null(x);
        return 0;
    }
    // through double, as the narrowing of a double result is defined
    const double dv = static_cast<double>(v);
    const double mag = std::fabs(dv);
    if (mag != 0 && (mag > 3.4028235e38 || mag < 1.1754944e-38))
        return 0;
    *x = static_cast<float>(dv);
    return 0;
}

int ldbigint(std::int64_t *v, const char *bytes) noexcept
{
    std::uint64_t u = 0;
    for (int i = 0; i < 8; ++i)
        u = (u << 8) | static_cast<unsigned char>(bytes[i]);
    *v = static_cast<std::int64_t>(u);
    return 0;
}

int stbigint(std::int64_t v, char *bytes) noexcept
{
    auto u = static_cast<std::uint64_t>(v);
    for (int i = 7; i >= 0; --i) {
        bytes[i] = static_cast<char>(u & 0xFF);
        u >>= 8;
    }
    return 0;
}
