// BIGINT text: reading a number with the locale's thousands separators and
// decimal point (or "0x" hexadecimal) into a native 64-bit value, and writing
// one in base 10 or 16 into a caller's buffer.
#include "qmr/bigint.h"

#include <cstring>

#include "numeric/bigint.hpp"
#include "numeric/decimal_pairs.hpp"
#include "numeric/money.hpp"
#include "numeric/text_scan.hpp"

namespace
{

// Characters left after the leading zeros and the trailing white space that
// can still make a number: 19 digits with separators, a point and an exponent.
constexpr int max_text = 25;
constexpr int max_integer_digits = 19;
constexpr std::uint64_t powers_of_ten[8] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};

bool is_space(unsigned char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool is_digit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

int hex_value(unsigned char c)
{
    if (is_digit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The view [p, end) with trailing white space cut.
const char *cut_trailing(const char *p, const char *end)
{
    while (end > p && is_space(static_cast<unsigned char>(end[-1])))
        --end;
    return end;
}

using qmr::starts_with;

// Hexadecimal digits only, no sign: the two's-complement range is not used,
// so a value above 2^63-1 does not fit.
int read_hex(const char *p, const char *end, std::int64_t *v)
{
    if (p == end)
        return QMR_E_NOTNUMBER;
    std::uint64_t m = 0;
    for (; p < end; ++p) {
        const int h = hex_value(static_cast<unsigned char>(*p));
        if (h < 0)
            return QMR_E_NOTNUMBER;
        if (m > (static_cast<std::uint64_t>(INT64_MAX) - static_cast<unsigned>(h)) / 16)
            return QMR_E_NOFIT;
        m = m * 16 + static_cast<unsigned>(h);
    }
    *v = static_cast<std::int64_t>(m);
    return 0;
}

// The exponent after "e": whatever rstol reads as a 32-bit integer; blank or
// unreadable text is a bad exponent.
int read_exponent(const char *p, const char *end, long *e)
{
    char text[max_text + 1];
    const auto n = static_cast<std::size_t>(end - p);
    std::memcpy(text, p, n);
    text[n] = '\0';
    if (p == end || rstol(text, e) != 0 || *e == INT32_MIN)
        return QMR_E_NOTNUMBER;
    return 0;
}

struct Mantissa {
    char digits[max_text]; // digit values 0..9
    int count = 0;
    int point = -1; // digits before the decimal point, -1 without one
};

// Keeps the digits of [p, end), dropping every thousands separator and noting
// where the one decimal point stands.
// Stops at an "e" or "E", which it leaves at *stop.
int read_mantissa(const char *p, const char *end, const qmr_numconv &conv, Mantissa *m,
                  const char **stop)
{
    const int sep_len = conv.thousands_sep_len;
    const int point_len = conv.decimal_point_len;
    // a separator or point that starts with a digit byte is looked for first
    const bool digits_first = !is_digit(static_cast<unsigned char>(conv.thousands_sep[0])) &&
                              !is_digit(static_cast<unsigned char>(conv.decimal_point[0]));
    while (p < end) {
        const auto c = static_cast<unsigned char>(*p);
        if (digits_first && is_digit(c)) {
            m->digits[m->count++] = static_cast<char>(c - '0');
            ++p;
        } else if (starts_with(p, end, conv.thousands_sep, sep_len)) {
            p += sep_len;
        } else if (starts_with(p, end, conv.decimal_point, point_len)) {
            if (m->point >= 0)
                return QMR_E_NOTNUMBER;
            m->point = m->count;
            p += point_len;
        } else if (is_digit(c)) {
            m->digits[m->count++] = static_cast<char>(c - '0');
            ++p;
        } else if ((c | 0x20) == 'e') {
            break;
        } else {
            return QMR_E_NOTNUMBER;
        }
    }
    *stop = p;
    return 0;
}

// The common text: nothing but up to 19 digits, read eight at a time. False
// leaves the text to the general reader.
bool read_plain_integer(const char *p, const char *end, const char *begin, bool negative,
                        std::int64_t *v)
{
    if (end - p > max_integer_digits)
        return false;
    std::uint64_t value = 0;
    while (p < end) {
        const std::uint64_t chunk = qmr::load_upto8(p, end, begin);
        const long left = end - p;
        const int k = left < 8 ? static_cast<int>(left) : 8;
        if (qmr::digit_prefix8(chunk) < k)
            return false;
        value = value * (k == 8 ? 100000000u : powers_of_ten[k]) + qmr::digits_value(chunk, k);
        p += k;
    }
    if (value > static_cast<std::uint64_t>(INT64_MAX))
        return false; // the general reader gives the error
    const auto s = static_cast<std::int64_t>(value);
    *v = negative ? -s : s;
    return true;
}

int read_decimal(const char *p, const char *end, const char *begin, const qmr_numconv &conv,
                 std::int64_t *v)
{
    bool negative = false;
    if (p < end && (*p == '-' || *p == '+'))
        negative = *p++ == '-';
    const char *digits = p;
    while (p < end && *p == '0')
        ++p;
    const bool had_zeros = p != digits;
    end = cut_trailing(p, end);
    if (p == end) {
        *v = had_zeros ? 0 : qmr::bigint_null; // a lone sign is null
        return 0;
    }
    if (read_plain_integer(p, end, begin, negative, v))
        return 0;
    if (end - p > max_text)
        return QMR_E_NOFIT;
    // a stray character and a bad exponent are both no number, so one pass
    // reads the mantissa up to the "e" and the exponent after it
    Mantissa m;
    const char *mantissa_end = end;
    if (const int status = read_mantissa(p, end, conv, &m, &mantissa_end); status != 0)
        return status;
    long exponent = 0;
    if (mantissa_end < end) {
        if (const int status = read_exponent(mantissa_end + 1, end, &exponent); status != 0)
            return status;
    }
    if (m.count == 0 && !had_zeros)
        return QMR_E_NOTNUMBER; // no digit at all: ".", "e5", "+."
    const long long integer_digits =
        (m.point >= 0 ? m.point : m.count) + static_cast<long long>(exponent);
    if (integer_digits > max_integer_digits)
        return QMR_E_NOFIT;
    // the fraction is dropped; missing integer digits are zeros. Two digits a
    // step halve the multiply chain.
    const int n = integer_digits > 0 ? static_cast<int>(integer_digits) : 0;
    auto digit = [&](int i) -> unsigned { return i < m.count ? m.digits[i] : 0u; };
    std::uint64_t value = (n & 1) ? digit(0) : 0;
    for (int i = n & 1; i < n; i += 2)
        value = value * 100 + digit(i) * 10 + digit(i + 1);
    if (value > static_cast<std::uint64_t>(INT64_MAX))
        return QMR_E_NOFIT;
    const auto s = static_cast<std::int64_t>(value);
    *v = negative ? -s : s;
    return 0;
}

} // namespace

namespace qmr
{

int u64_to_decimal(std::uint64_t m, char *out) noexcept
{
    char tmp[20];
    int i = 20;
    while (m >= 100) {
        const auto r = static_cast<unsigned>(m % 100);
        m /= 100;
        tmp[--i] = qmr::pair_text[2 * r + 1];
        tmp[--i] = qmr::pair_text[2 * r];
    }
    if (m >= 10) {
        tmp[--i] = qmr::pair_text[2 * m + 1];
        tmp[--i] = qmr::pair_text[2 * m];
    } else {
        tmp[--i] = static_cast<char>('0' + m);
    }
    const int n = 20 - i;
    std::memcpy(out, tmp + i, static_cast<std::size_t>(n));
    return n;
}

int bigint_format(std::int64_t v, int radix, char *out) noexcept
{
    if (radix == 16) {
        static constexpr char hex[] = "0123456789abcdef";
        auto u = static_cast<std::uint64_t>(v);
        out[0] = '0';
        out[1] = 'x';
        for (int i = 17; i >= 2; --i) {
            out[i] = hex[u & 0xF];
            u >>= 4;
        }
        return 18;
    }
    if (v < 0) {
        out[0] = '-';
        return 1 + u64_to_decimal(0 - static_cast<std::uint64_t>(v), out + 1);
    }
    return u64_to_decimal(static_cast<std::uint64_t>(v), out);
}

} // namespace qmr

int biginttoasc(std::int64_t v, char *text, int len, int radix) noexcept
{
    if (v == qmr::bigint_null) {
        if (len > 0)
            std::memset(text, ' ', static_cast<std::size_t>(len));
        return 0;
    }
    char buf[24];
    const int n = qmr::bigint_format(v, radix, buf);
    if (len == 0)
        return 0;
    if (len < n) {
        if (len > 0)
            std::memset(text, '*', static_cast<std::size_t>(len));
        return QMR_E_TEXTFIT;
    }
    std::memcpy(text, buf, static_cast<std::size_t>(n));
    text[n] = '\0';
    return 0;
}

int bigintcvasc(const char *text, int len, std::int64_t *v) noexcept
{
    if (text == nullptr)
        return QMR_E_NOTNUMBER;
    // a NUL within len ends the text, as it would in a terminated copy
    std::size_t n = 0;
    if (len == -1)
        n = std::strlen(text);
    else if (len > 0)
        n = static_cast<std::size_t>(qmr::text_length(text, len));
    if (n == 0) {
        *v = qmr::bigint_null;
        return 0;
    }
    int status = 0;
    const qmr_glsenv_t *env = qmr::money_env(&status);
    if (env == nullptr)
        return status;
    const char *p = text;
    const char *end = text + n;
    while (p < end && is_space(static_cast<unsigned char>(*p)))
        ++p;
    if (end - p > 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))
        return read_hex(p + 2, cut_trailing(p + 2, end), v);
    return read_decimal(p, end, text, env->local_conv, v);
}
