// Text to binary numbers: rstod (double), rstol (32-bit) and rstoi (16-bit),
// sharing one scanner of the plain number syntax with blanks around it.
#include "qmr/decimal.h"

#include <charconv>
#include <cstring>
#include <system_error>

namespace
{

// Exponents beyond this decide nothing more: every integer result is then 0
// or out of range.
constexpr long exponent_cap = 100000000;

struct Number {
    bool negative;
    const char *mantissa; // digits with at most one point
    const char *mantissa_end;
    const char *end; // past the exponent, if any
    long exponent;   // the exponent's value, capped at +-exponent_cap
};

enum class Scan { number, blank, bad };

bool is_blank(char c)
{
    return c == ' ' || c == '\t';
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

const char *skip_blanks(const char *p)
{
    while (is_blank(*p))
        ++p;
    return p;
}

const char *scan_digits(const char *p)
{
    while (is_digit(*p))
        ++p;
    return p;
}

// The exponent after "e": an optional sign and at least one digit. Returns
// the end, or nullptr when no digit follows.
const char *scan_exponent(const char *p, long *exponent)
{
    bool negative = false;
    if (*p == '+' || *p == '-')
        negative = *p++ == '-';
    if (!is_digit(*p))
        return nullptr;
    long v = 0;
    for (; is_digit(*p); ++p) {
        if (v < exponent_cap)
            v = v * 10 + (*p - '0');
    }
    *exponent = negative ? -v : v;
    return p;
}

Scan scan(const char *text, Number *num)
{
    const char *p = skip_blanks(text);
    if (*p == '\0')
        return Scan::blank;
    num->negative = *p == '-';
    if (*p == '+' || *p == '-')
        ++p;
    num->mantissa = p;
    const char *int_end = scan_digits(p);
    bool any_digit = int_end != p;
    p = int_end;
    if (*p == '.') {
        const char *frac_end = scan_digits(p + 1);
        any_digit = any_digit || frac_end != p + 1;
        p = frac_end;
    }
    if (!any_digit)
        return Scan::bad;
    num->mantissa_end = p;
    num->exponent = 0;
    if (*p == 'e' || *p == 'E') {
        p = scan_exponent(p + 1, &num->exponent);
        if (p == nullptr)
            return Scan::bad;
    }
    num->end = p;
    return *skip_blanks(p) == '\0' ? Scan::number : Scan::bad;
}

// The magnitude of the number's integer part when it is at most limit.
bool integer_part(const Number &num, long long limit, long long *magnitude)
{
    const char *point = static_cast<const char *>(
        std::memchr(num.mantissa, '.', static_cast<std::size_t>(num.mantissa_end - num.mantissa)));
    const long long before = (point ? point : num.mantissa_end) - num.mantissa;
    const long long int_digits = before + num.exponent;
    long long m = 0;
    const char *p = num.mantissa;
    for (long long i = 0; i < int_digits; ++i) {
        if (p == point)
            ++p;
        int digit = 0;
        if (p < num.mantissa_end)
            digit = *p++ - '0';
        else if (m == 0)
            break; // zeros after zero: a huge exponent on "0" stays quick
        m = m * 10 + digit;
        if (m > limit)
            return false;
    }
    *magnitude = m;
    return true;
}

// Scans an integer of the 32- or 16-bit range into *value, or gives the code.
int scan_integer(const char *text, long long limit, int range_code, long long null_value,
                 long long *value)
{
    Number num;
    switch (scan(text, &num)) {
    case Scan::blank:
        *value = null_value;
        return 0;
    case Scan::bad:
        return QMR_E_NOTNUMBER;
    case Scan::number:
        break;
    }
    long long m = 0;
    if (!integer_part(num, limit, &m))
        return range_code;
    *value = num.negative ? -m : m;
    return 0;
}

} // namespace

int rstod(const char *text, double *result) noexcept
{
    Number num;
    switch (scan(text, &num)) {
    case Scan::blank:
        std::memset(result, 0xFF, sizeof *result);
        return 0;
    case Scan::bad:
        return QMR_E_NOTNUMBER;
    case Scan::number:
        break;
    }
    // the scanner admits only what from_chars reads in full (no sign, no
    // "inf", no hexadecimal), so the whole span is taken
    double value = 0;
    const auto parsed = std::from_chars(num.mantissa, num.end, value);
    if (parsed.ec == std::errc::result_out_of_range)
        return QMR_E_FLOATRANGE;
    if (parsed.ec != std::errc{} || parsed.ptr != num.end)
        return QMR_E_NOTNUMBER;
    *result = num.negative ? -value : value;
    return 0;
}

int rstol(const char *text, long *result) noexcept
{
    long long v = 0;
    const int status = scan_integer(text, 2147483647LL, QMR_E_INTEGERRANGE, -2147483648LL, &v);
    if (status == 0)
        *result = static_cast<long>(v);
    return status;
}

int rstoi(const char *text, int *result) noexcept
{
    long long v = 0;
    const int status = scan_integer(text, 32767, QMR_E_SMALLINTRANGE, -32768, &v);
    if (status == 0)
        *result = static_cast<int>(v);
    return status;
}
