// INT8 records: the constants, arithmetic with overflow detection on the
// native 64-bit form, comparisons, the C integer conversions and the 10-byte
// stored form.
#include "qmr/int8.h"

#include "numeric/bigint.hpp"
#include "qmr/byteutil.h"

using qmr::bigint_null;
using qmr::int8_to_native;
using qmr::native_to_int8;

const qmr_int8_t const_int8zero = {{0, 0}, 1};
const qmr_int8_t const_int8one = {{1, 0}, 1};
const qmr_int8_t const_int8negone = {{1, 0}, -1};
const qmr_int8_t const_int8max = {{0xFFFFFFFFu, 0x7FFFFFFFu}, 1};
const qmr_int8_t const_int8min = {{0xFFFFFFFFu, 0x7FFFFFFFu}, -1};
const qmr_int8_t const_int8null = {{0, 0}, 0};

namespace
{

void set_null(qmr_int8_t *r)
{
    r->data[0] = 0;
    r->data[1] = 0;
    r->sign = 0;
}

// Both operands as native values; a null operand makes r null and stops.
enum class Operands { ready, null, error };
Operands load_operands(const qmr_int8_t *a, const qmr_int8_t *b, std::int64_t *x, std::int64_t *y,
                       qmr_int8_t *r, int *status)
{
    if (a->sign == 0 || b->sign == 0) {
        set_null(r);
        *status = 0;
        return Operands::null;
    }
    *status = int8_to_native(a, x);
    if (*status == 0)
        *status = int8_to_native(b, y);
    return *status == 0 ? Operands::ready : Operands::error;
}

// Two's-complement wrap without signed overflow.
std::int64_t wrap_add(std::int64_t x, std::int64_t y)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(x) + static_cast<std::uint64_t>(y));
}

std::int64_t wrap_sub(std::int64_t x, std::int64_t y)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(x) - static_cast<std::uint64_t>(y));
}

std::int64_t wrap_mul(std::int64_t x, std::int64_t y)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(x) * static_cast<std::uint64_t>(y));
}

int cmp_words(const qmr_int8_t *a, const qmr_int8_t *b)
{
    if (a->data[1] != b->data[1])
        return a->data[1] > b->data[1] ? 1 : -1;
    if (a->data[0] != b->data[0])
        return a->data[0] > b->data[0] ? 1 : -1;
    return 0;
}

// A magnitude below 2^31 has high word 0 and low word below 2^31.
bool fits_int32(const qmr_int8_t *a)
{
    return a->data[1] == 0 && a->data[0] < 0x80000000u;
}

std::int32_t signed_low(const qmr_int8_t *a)
{
    const auto m = static_cast<std::int32_t>(a->data[0]);
    return a->sign == -1 ? -m : m;
}

// The workers behind the exported shells, so that the checked forms call
// them directly rather than through the exported (interposable) symbol.
int add(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, bool check)
{
    std::int64_t x, y;
    int status;
    if (load_operands(a, b, &x, &y, r, &status) != Operands::ready)
        return status;
    const std::int64_t s = wrap_add(x, y);
    if (check && (((x < 0) == (y < 0) && (s < 0) != (x < 0)) || s == bigint_null))
        return QMR_E_NOFIT;
    native_to_int8(s, r);
    return 0;
}

int sub(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, bool check)
{
    std::int64_t x, y;
    int status;
    if (load_operands(a, b, &x, &y, r, &status) != Operands::ready)
        return status;
    const std::int64_t s = wrap_sub(x, y);
    if (check && (((x < 0) != (y < 0) && (s < 0) != (x < 0)) || s == bigint_null))
        return QMR_E_NOFIT;
    native_to_int8(s, r);
    return 0;
}

int mul(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, bool check)
{
    std::int64_t x, y;
    int status;
    if (load_operands(a, b, &x, &y, r, &status) != Operands::ready)
        return status;
    const std::int64_t p = wrap_mul(x, y);
    if (check) {
        // p is not the null pattern here, so p / x cannot overflow
        if (p == bigint_null || (x != 0 && y != 0 && p / x != y))
            return QMR_E_NOFIT;
    }
    native_to_int8(p, r);
    return 0;
}

} // namespace

int gint8add(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, int check) noexcept
{
    return add(a, b, r, check != 0);
}

int gint8sub(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, int check) noexcept
{
    return sub(a, b, r, check != 0);
}

int gint8mul(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r, int check) noexcept
{
    return mul(a, b, r, check != 0);
}

int qmr_int8add(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) noexcept
{
    return add(a, b, r, true);
}

int qmr_int8sub(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) noexcept
{
    return sub(a, b, r, true);
}

int qmr_int8mul(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) noexcept
{
    return mul(a, b, r, true);
}

namespace
{

int divide(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *q, qmr_int8_t *rem)
{
    if (a->sign == 0 || b->sign == 0) {
        set_null(q);
        return 0;
    }
    if (b->data[0] == 0 && b->data[1] == 0)
        return QMR_E_DIVZERO;
    std::int64_t x, y;
    int status = int8_to_native(a, &x);
    if (status == 0)
        status = int8_to_native(b, &y);
    if (status != 0)
        return status;
    // neither operand is the null pattern, so the quotient cannot overflow
    const std::int64_t quotient = x / y;
    const std::int64_t remainder = x - quotient * y;
    if (rem != nullptr)
        native_to_int8(remainder, rem);
    native_to_int8(quotient, q);
    return 0;
}

} // namespace

int gint8div(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *q, qmr_int8_t *rem) noexcept
{
    return divide(a, b, q, rem);
}

int qmr_int8div(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *q) noexcept
{
    return divide(a, b, q, nullptr);
}

int serial8inc(const qmr_int8_t *a, qmr_int8_t *r) noexcept
{
    if (a->sign == 0) {
        set_null(r);
        return -2;
    }
    std::int64_t x;
    const int status = int8_to_native(a, &x);
    if (status != 0)
        return status;
    // a counter at the maximum starts again at 1
    native_to_int8(x == INT64_MAX ? 1 : x + 1, r);
    return 0;
}

void qmr_int8copy(const qmr_int8_t *from, qmr_int8_t *to) noexcept
{
    *to = *from;
}

int qmr_int8cmp(const qmr_int8_t *a, const qmr_int8_t *b) noexcept
{
    if (a->sign == 0 || b->sign == 0)
        return -2;
    if (a->sign != b->sign)
        return a->sign == 1 ? 1 : -1;
    const int m = cmp_words(a, b);
    return a->sign == 1 ? m : -m;
}

int qmr_int8cmp_det(const qmr_int8_t *a, const qmr_int8_t *b) noexcept
{
    if (a->sign == 0)
        return b->sign == 0 ? 0 : -1;
    if (b->sign == 0)
        return 1;
    return qmr_int8cmp(a, b);
}

int int8ucmp(const qmr_int8_t *a, const qmr_int8_t *b) noexcept
{
    return cmp_words(a, b);
}

int qmr_int8iszero(const qmr_int8_t *a) noexcept
{
    return a->sign != 0 && a->data[0] == 0 && a->data[1] == 0 ? 1 : 0;
}

int qmr_int8cvlong(std::int32_t l, qmr_int8_t *r) noexcept
{
    native_to_int8(l == INT32_MIN ? bigint_null : l, r);
    return 0;
}

int qmr_int8tolong(const qmr_int8_t *a, std::int32_t *l) noexcept
{
    if (a->sign == 0) {
        *l = INT32_MIN;
        return 0;
    }
    if (!fits_int32(a))
        return QMR_E_NOFIT;
    *l = signed_low(a);
    return 0;
}

int qmr_int8toint4(const qmr_int8_t *a, std::int32_t *l) noexcept
{
    return qmr_int8tolong(a, l);
}

int qmr_int8cvint(int i, qmr_int8_t *r) noexcept
{
    native_to_int8(i == -32768 ? bigint_null : i, r);
    return 0;
}

int qmr_int8toint(const qmr_int8_t *a, int *i) noexcept
{
    if (a->sign == 0) {
        *i = -32768;
        return 0;
    }
    if (a->data[1] != 0 || a->data[0] > 32767)
        return QMR_E_SMALLINTRANGE;
    *i = signed_low(a);
    return 0;
}

int qmr_int8toint2(const qmr_int8_t *a, short *s) noexcept
{
    int i;
    const int status = qmr_int8toint(a, &i);
    if (status == 0)
        *s = static_cast<short>(i);
    return status;
}

int qmr_int8high(const qmr_int8_t *a, unsigned int *w) noexcept
{
    *w = a->sign == 0 ? 0x80000000u : a->data[1];
    return 0;
}

int qmr_int8low(const qmr_int8_t *a, unsigned int *w) noexcept
{
    *w = a->sign == 0 ? 0x80000000u : a->data[0];
    return 0;
}

int int8toqmr_off_t(const qmr_int8_t *a, qmr_off_t *o) noexcept
{
    return int8_to_native(a, o);
}

int qmr_int8tokps_int8(const qmr_int8_t *a, std::int64_t *o) noexcept
{
    return int8_to_native(a, o);
}

int int8cvqmr_off_t(qmr_off_t o, qmr_int8_t *r) noexcept
{
    native_to_int8(o, r);
    return 0;
}

void qmr_int8cvkps_int8(std::int64_t o, qmr_int8_t *r) noexcept
{
    native_to_int8(o, r);
}

void ldint8(const char *bytes, qmr_int8_t *r) noexcept
{
    r->sign = static_cast<short>(static_cast<signed char>(bytes[0]) * 256 +
                                 static_cast<unsigned char>(bytes[1]));
    r->data[0] = static_cast<unsigned>(ldlong(bytes + 2));
    r->data[1] = static_cast<unsigned>(ldlong(bytes + 6));
}

void stint8(const qmr_int8_t *a, char *bytes) noexcept
{
    bytes[0] = static_cast<char>((static_cast<unsigned short>(a->sign) >> 8) & 0xFF);
    bytes[1] = static_cast<char>(static_cast<unsigned short>(a->sign) & 0xFF);
    stlong(static_cast<long>(a->data[0]), bytes + 2);
    stlong(static_cast<long>(a->data[1]), bytes + 6);
}
