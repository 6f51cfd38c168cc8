// Conversions between decimals and binary numbers: doubles through their
// shortest round-trip digit string (and back, correctly rounded), and the
// 32-bit long and 16-bit int forms with their null values.
#include "qmr/decimal.h"

#include "numeric/decimal_pairs.hpp"
#include "numeric/decimal_special.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace
{

using qmr::set_dec_null;
using qmr::set_dec_zero;

constexpr long long_null = -2147483647L - 1;
constexpr long long_limit = 2147483647L;
constexpr int int_null = -32768;
constexpr int int_limit = 32767;

// The held digit count, kept inside the record for malformed input.
int held_digits(const dec_t *d)
{
    return d->ndigits < 0 ? 0 : d->ndigits > QMR_DECSIZE ? QMR_DECSIZE : d->ndigits;
}

bool is_float_null(double value)
{
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    for (unsigned char b : bytes) {
        if (b != 0xFF)
            return false;
    }
    return true;
}

// Loads n decimal digit characters (n <= 32) of which the first `point` lie
// before the decimal point. The pairs align on the point, so an odd point
// gives the first pair an implied leading zero.
int load_decimal_digits(dec_t *result, int sign, const char *digits, int n, int point)
{
    const int lead = point & 1; // 0 or 1, also for a negative point
    char pairs[QMR_DECSIZE + 1];
    int count = 0;
    for (int i = -lead; i < n; i += 2) {
        const int high = i >= 0 ? digits[i] - '0' : 0;
        const int low = i + 1 < n ? digits[i + 1] - '0' : 0;
        pairs[count++] = static_cast<char>(high * 10 + low);
    }
    return decload(result, sign, (point + lead) / 2, pairs, count);
}

// Exact powers of ten that a double holds: 10^22 is the last.
constexpr double exact_pow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int exact_pow10_max = 22;

// Short decimals: a digit run M of at most 2^53 and a power 10^k with |k| <=
// 22 are both exact doubles, so one multiplication or division rounds the
// value correctly. Returns false when the value is not of this kind.
bool exact_quotient(const dec_t *d, int n, int exp10, double *value)
{
    if (n > 8 || exp10 < -exact_pow10_max || exp10 > exact_pow10_max)
        return false;
    std::uint64_t m = 0;
    for (int i = 0; i < n; ++i)
        m = m * 100 + static_cast<unsigned char>(d->digits[i]);
    if (m > (std::uint64_t{1} << 53))
        return false;
    const double mantissa = static_cast<double>(m);
    *value = exp10 >= 0 ? mantissa * exact_pow10[exp10] : mantissa / exact_pow10[-exp10];
    return true;
}

// Writes v in decimal. The integer std::to_chars is not used: its inline
// digit tables would be exported from the shared library.
char *write_int(char *out, int v)
{
    unsigned m = static_cast<unsigned>(v);
    if (v < 0) {
        *out++ = '-';
        m = 0U - m;
    }
    char reversed[10];
    int n = 0;
    do {
        reversed[n++] = static_cast<char>('0' + m % 10);
        m /= 10;
    } while (m != 0);
    while (n > 0)
        *out++ = reversed[--n];
    return out;
}

// The integer part of |d| when it is at most limit.
bool integer_part(const dec_t *d, long long limit, long long *magnitude)
{
    const int n = held_digits(d);
    long long m = 0;
    for (int i = 0; i < d->exponent; ++i) {
        m = m * 100 + (i < n ? static_cast<unsigned char>(d->digits[i]) : 0);
        if (m > limit)
            return false;
    }
    *magnitude = m;
    return true;
}

int load_integer(long long value, dec_t *result)
{
    unsigned long long m = value < 0 ? 0ULL - static_cast<unsigned long long>(value)
                                     : static_cast<unsigned long long>(value);
    char reversed[10];
    int n = 0;
    for (; m != 0; m /= 100)
        reversed[n++] = static_cast<char>(m % 100);
    char pairs[10];
    for (int i = 0; i < n; ++i)
        pairs[i] = reversed[n - 1 - i];
    return decload(result, value < 0 ? 0 : 1, n, pairs, n);
}

} // namespace

int deccvdbl(double value, dec_t *result) noexcept
{
    if (is_float_null(value)) {
        set_dec_null(result);
        return 0;
    }
    if (!std::isfinite(value))
        return QMR_E_BADFLOAT;
    if (value == 0) {
        set_dec_zero(result);
        return 0;
    }
    // shortest round-trip form "-d.ddde-XX": at most 17 digits
    char text[32];
    const char *const end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    const char *p = text;
    const int sign = *p == '-' ? 0 : 1;
    if (sign == 0)
        ++p;
    char digits[17];
    int n = 0;
    for (; *p != 'e'; ++p) {
        if (*p != '.')
            digits[n++] = *p;
    }
    ++p;
    if (*p == '+')
        ++p;
    int exp10 = 0;
    std::from_chars(p, end, exp10);
    dec_t loaded;
    const int status = load_decimal_digits(&loaded, sign, digits, n, exp10 + 1);
    if (status == QMR_E_DECOVERFLOW)
        return status;
    if (status == QMR_E_DECUNDERFLOW)
        set_dec_zero(result);
    else
        *result = loaded;
    return status;
}

int dectodbl(const dec_t *d, double *result) noexcept
{
    if (d->sign == -1) {
        std::memset(result, 0xFF, sizeof *result);
        return 0;
    }
    const int n = held_digits(d);
    // the digit run read as an integer, times 10^exp10
    const int exp10 = 2 * (d->exponent - n);
    double value = 0;
    if (n > 0 && !exact_quotient(d, n, exp10, &value)) {
        char text[2 * QMR_DECSIZE + 8];
        char *p = qmr::write_pairs(d->digits, n, text);
        *p++ = 'e';
        p = write_int(p, exp10);
        // at most 32 digits within 10^-130..10^126: always in range, and
        // from_chars rounds correctly whatever the length
        std::from_chars(text, p, value);
    }
    *result = d->sign == 0 ? -value : value;
    return 0;
}

int deccvlong(long value, dec_t *result) noexcept
{
    if (value == long_null) {
        set_dec_null(result);
        return 0;
    }
    return load_integer(value, result);
}

int dectolong(const dec_t *d, long *result) noexcept
{
    if (d->sign == -1) {
        *result = long_null;
        return 0;
    }
    long long m = 0;
    if (!integer_part(d, long_limit, &m))
        return QMR_E_DECOVERFLOW;
    *result = static_cast<long>(d->sign == 0 ? -m : m);
    return 0;
}

int deccvint(int value, dec_t *result) noexcept
{
    if (value == int_null) {
        set_dec_null(result);
        return 0;
    }
    return load_integer(value, result);
}

int dectoint(const dec_t *d, int *result) noexcept
{
    if (d->sign == -1) {
        *result = int_null;
        return 0;
    }
    long long m = 0;
    if (!integer_part(d, int_limit, &m))
        return QMR_E_DECOVERFLOW;
    *result = static_cast<int>(d->sign == 0 ? -m : m);
    return 0;
}
