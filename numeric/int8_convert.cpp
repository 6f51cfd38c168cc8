// INT8 conversions with text, dec_t and floating point, built on the native
// 64-bit form and the BIGINT routines.
#include "qmr/bigint.h"
#include "qmr/context.h"
#include "qmr/int8.h"

#include <cmath>
#include <cstring>

#include "numeric/bigint.hpp"

namespace
{

using qmr::is_float_null;

// Runs a BIGINT conversion on a's native value; a malformed record gives
// QMR_E_NOFIT and nothing is converted.
template <typename F> int on_native(const qmr_int8_t *a, F convert)
{
    std::int64_t v;
    const int status = qmr::int8_to_native(a, &v);
    return status != 0 ? status : convert(v);
}

// Runs a BIGINT conversion into a native value and stores that in r; on an
// error r stays as it was.
template <typename F> int into_record(qmr_int8_t *r, F convert)
{
    std::int64_t v;
    const int status = convert(&v);
    if (status == 0)
        qmr::native_to_int8(v, r);
    return status;
}

void set_null(qmr_int8_t *r)
{
    r->data[0] = 0;
    r->data[1] = 0;
    r->sign = 0;
}

// x truncated toward zero into r, x finite and not the FLOAT null. This is the
// value that writing x's exact decimal text and reading it back as INT8 text
// gives: the fraction dropped, a magnitude of 2^63 or more not fitting.
int from_finite(double x, qmr_int8_t *r)
{
    const double mag = std::fabs(x);
    if (mag >= 9223372036854775808.0)
        return QMR_E_NOFIT;
    const auto m = static_cast<std::uint64_t>(mag);
    r->data[0] = static_cast<unsigned>(m);
    r->data[1] = static_cast<unsigned>(m >> 32);
    // a negative x whose magnitude truncates to 0 is zero, with sign 1
    r->sign = x < 0 && m != 0 ? -1 : 1;
    return 0;
}

// x (a double or float) truncated toward zero into r. The FLOAT null is
// itself a NaN: it is looked for first and gives the INT8 null.
template <typename F> int from_float(F x, qmr_int8_t *r)
{
    if (CheckAlltcbInit() == nullptr)
        return QMR_E_NOMEM;
    if (is_float_null(x)) {
        set_null(r);
        return 0;
    }
    if (!std::isfinite(x))
        return QMR_E_BADFLOAT;
    return from_finite(static_cast<double>(x), r);
}

// Drops d's fraction in place: digits past the exponent go, trailing zero
// digits with them; a magnitude below 1 becomes the decimal zero.
void truncate_in_place(dec_t *d)
{
    if (d->exponent <= 0) {
        d->sign = 1;
        d->exponent = -64;
        d->ndigits = 0;
        return;
    }
    int n = d->ndigits;
    if (n > d->exponent)
        n = d->exponent;
    while (n > 0 && d->digits[n - 1] == 0)
        --n;
    if (n == 0) {
        d->sign = 1;
        d->exponent = -64;
    }
    d->ndigits = static_cast<short>(n);
}

} // namespace

int int8tostr(const qmr_int8_t *a, char *text, int len, int radix) noexcept
{
    return on_native(a, [&](std::int64_t v) { return biginttoasc(v, text, len, radix); });
}

int qmr_int8tostr(const qmr_int8_t *a, char *text, int len) noexcept
{
    return int8tostr(a, text, len, 10);
}

int int8toasc(const qmr_int8_t *a, char *text, int len, int radix) noexcept
{
    const int status = int8tostr(a, text, len, radix);
    if (status != 0 || a->sign == 0 || len <= 0)
        return status;
    std::int64_t v = 0;
    qmr::int8_to_native(a, &v); // succeeded in int8tostr
    char buf[24];
    const int n = qmr::bigint_format(v, radix, buf);
    if (n < len)
        std::memset(text + n, ' ', static_cast<std::size_t>(len - n));
    return 0;
}

int qmr_int8toasc(const qmr_int8_t *a, char *text, int len) noexcept
{
    return int8toasc(a, text, len, 10);
}

int qmr_int8cvasc(const char *text, int len, qmr_int8_t *r) noexcept
{
    return into_record(r, [&](std::int64_t *v) { return bigintcvasc(text, len, v); });
}

int qmr_int8todec(const qmr_int8_t *a, dec_t *d) noexcept
{
    return on_native(a, [d](std::int64_t v) { return biginttodec(v, d); });
}

int deccvint8(const qmr_int8_t *a, dec_t *d) noexcept
{
    return qmr_int8todec(a, d);
}

int qmr_int8cvdec(dec_t *d, qmr_int8_t *r) noexcept
{
    if (CheckAlltcbInit() == nullptr)
        return QMR_E_NOMEM;
    if (d->sign == -1) {
        set_null(r);
        return 0;
    }
    if (d->exponent >= 11)
        return QMR_E_NOFIT;
    // the fraction goes before the range test, so 2^63-1 and a half fits
    truncate_in_place(d);
    return into_record(r, [d](std::int64_t *v) { return bigintcvdec(d, v); });
}

int qmr_int8todbl(const qmr_int8_t *a, double *x) noexcept
{
    return on_native(a, [x](std::int64_t v) { return biginttodbl(v, x); });
}

int qmr_int8toflt(const qmr_int8_t *a, float *x) noexcept
{
    if (a->sign == 0) {
        qmr::set_float_null(x);
        return 0;
    }
    double d;
    const int status = qmr_int8todbl(a, &d);
    if (status != 0)
        return status;
    const double mag = std::fabs(d);
    if (mag > 3.4028234663852886e+38 || (mag != 0 && mag < 1.1754943508222875e-38))
        return QMR_E_FLOATRANGE;
    *x = static_cast<float>(d);
    return 0;
}

int qmr_int8cvdbl(double x, qmr_int8_t *r) noexcept
{
    return from_float(x, r);
}

int qmr_int8cvflt(float x, qmr_int8_t *r) noexcept
{
    return from_float(x, r);
}
