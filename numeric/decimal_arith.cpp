// Decimal arithmetic on base-100 digits: the normaliser decload through which
// every result passes, addition, subtraction, multiplication, division,
// rounding, truncation, comparison, square root and the small digit routines.
#include "qmr/decimal.h"

#include <cstring>

namespace
{

constexpr int min_exponent = -64;
constexpr int max_exponent = 63;
constexpr int max_digits = QMR_DECSIZE;

void set_null(dec_t *d)
{
    d->exponent = 0;
    d->sign = -1;
    d->ndigits = 0;
}

void set_zero(dec_t *d)
{
    d->exponent = min_exponent;
    d->sign = 1;
    d->ndigits = 0;
}

bool is_null(const dec_t *d)
{
    return d->sign == -1;
}

unsigned digit(const dec_t *d, int i)
{
    return static_cast<unsigned char>(d->digits[i]);
}

// Magnitude order of a and b: -1, 0, 1. A digit run that is a prefix of the
// other is the smaller one, even when the rest is zeros.
int cmp_magnitude(const dec_t *a, const dec_t *b)
{
    if (a->ndigits == 0)
        return b->ndigits == 0 ? 0 : -1;
    if (b->ndigits == 0)
        return 1;
    if (a->exponent != b->exponent)
        return a->exponent > b->exponent ? 1 : -1;
    const int n = a->ndigits < b->ndigits ? a->ndigits : b->ndigits;
    for (int i = 0; i < n; ++i) {
        if (a->digits[i] != b->digits[i])
            return digit(a, i) > digit(b, i) ? 1 : -1;
    }
    if (a->ndigits == b->ndigits)
        return 0;
    return a->ndigits > b->ndigits ? 1 : -1;
}

// Adds (or subtracts, when subtract is set) the magnitude of s to that of l,
// |l| >= |s|, in an 18-byte work area: a carry byte and 17 digits aligned on
// l's first digit. Digits of s beyond that span are dropped without rounding.
int add_magnitudes(const dec_t *l, const dec_t *s, bool subtract, dec_t *result)
{
    unsigned char work[max_digits + 2] = {};
    const int shift = l->exponent - s->exponent; // >= 0 since |l| >= |s|
    int span = shift + s->ndigits;
    if (span < l->ndigits)
        span = l->ndigits;
    if (span > max_digits + 1)
        span = max_digits + 1;
    const int width = span + 1;
    for (int i = 0; i < l->ndigits; ++i)
        work[i + 1] = static_cast<unsigned char>(l->digits[i]);
    int taking = width - shift - 1;
    if (taking > s->ndigits)
        taking = s->ndigits;
    int carry = 0; // +1 carry or -1 borrow
    int pos = shift + taking;
    for (int j = taking - 1; j >= 0; --j, --pos) {
        int v = work[pos] + carry + (subtract ? -static_cast<int>(digit(s, j)) : digit(s, j));
        carry = 0;
        if (v > 99) {
            v -= 100;
            carry = 1;
        } else if (v < 0) {
            v += 100;
            carry = -1;
        }
        work[pos] = static_cast<unsigned char>(v);
    }
    for (; carry != 0 && pos >= 0; --pos) {
        int v = work[pos] + carry;
        if (v > 99) {
            work[pos] = 0;
        } else if (v < 0) {
            work[pos] = 99;
        } else {
            work[pos] = static_cast<unsigned char>(v);
            carry = 0;
        }
    }
    return decload(result, l->sign, l->exponent + 1, reinterpret_cast<const char *>(work), width);
}

int add_signed(const dec_t *a, const dec_t *b, dec_t *result)
{
    // the larger magnitude goes first and gives its sign; on a tie, a does
    const dec_t *l = a;
    const dec_t *s = b;
    if (cmp_magnitude(a, b) < 0) {
        l = b;
        s = a;
    }
    return add_magnitudes(l, s, a->sign != b->sign, result);
}

} // namespace

int decload(dec_t *result, int sign, int exponent, const char *bytes, int count) noexcept
{
    if (sign == -1) {
        set_null(result);
        return 0;
    }
    int first = 0;
    int end = count;
    while (end > 0 && bytes[end - 1] == 0)
        --end;
    while (first < end && bytes[first] == 0) {
        ++first;
        --exponent;
    }
    if (first == end) {
        set_zero(result);
        return 0;
    }
    char kept[max_digits];
    int n = end - first;
    if (n > max_digits) {
        std::memcpy(kept, bytes + first, max_digits);
        if (static_cast<unsigned char>(bytes[first + max_digits]) >= 50) {
            int i = max_digits - 1;
            for (; i >= 0; --i) {
                if (++kept[i] <= 99)
                    break;
                kept[i] = 0;
            }
            if (i < 0) {
                // the carry ran out of the first digit: 100^16 of the old scale
                kept[0] = 1;
                ++exponent;
            }
            // kept on purpose: a round-up carry keeps all 16 digits even when it
            // leaves zeros at the end, and the stored form sees that digit count
            n = max_digits;
        } else {
            n = max_digits;
            while (kept[n - 1] == 0)
                --n;
        }
    } else {
        std::memcpy(kept, bytes + first, static_cast<size_t>(n));
    }
    std::memcpy(result->digits, kept, static_cast<size_t>(n));
    result->ndigits = static_cast<short>(n);
    result->sign = static_cast<short>(sign);
    if (exponent < min_exponent) {
        result->exponent = min_exponent;
        return QMR_E_DECUNDERFLOW;
    }
    if (exponent > max_exponent) {
        result->exponent = max_exponent;
        return QMR_E_DECOVERFLOW;
    }
    result->exponent = static_cast<short>(exponent);
    return 0;
}

int decadd(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_null(result);
        return 0;
    }
    return add_signed(a, b, result);
}

int decsub(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_null(result);
        return 0;
    }
    dec_t negated = *b;
    negated.sign = static_cast<short>(b->sign == 1 ? 0 : 1);
    return add_signed(a, &negated, result);
}

int decmul(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_null(result);
        return 0;
    }
    // column sums first, then one carry pass: each column is at most
    // 16 * 99 * 99 plus the carry, well inside 32 bits
    unsigned column[2 * max_digits] = {};
    const int na = a->ndigits;
    const int nb = b->ndigits;
    for (int i = 0; i < na; ++i) {
        const unsigned ai = digit(a, i);
        if (ai == 0)
            continue;
        for (int j = 0; j < nb; ++j)
            column[i + j + 1] += ai * digit(b, j);
    }
    char product[2 * max_digits];
    unsigned carry = 0;
    for (int k = na + nb - 1; k >= 0; --k) {
        const unsigned v = column[k] + carry;
        product[k] = static_cast<char>(v % 100);
        carry = v / 100;
    }
    return decload(result, a->sign == b->sign ? 1 : 0, a->exponent + b->exponent, product, na + nb);
}

namespace
{

constexpr int quotient_digits = 18;
constexpr int remainder_bytes = 2 * max_digits + 2;

// Subtracts q * divisor (len bytes, its leading zero first) from rem at its
// start. Returns true when the result went below zero.
bool subtract_multiple(int *rem, const int *divisor, int len, int q)
{
    int borrow = 0;
    for (int j = len - 1; j >= 0; --j) {
        int v = rem[j] - q * divisor[j] - borrow;
        borrow = 0;
        if (v < 0) {
            borrow = (99 - v) / 100;
            v += borrow * 100;
        }
        rem[j] = v;
    }
    return borrow != 0;
}

void add_back(int *rem, const int *divisor, int len)
{
    int carry = 0;
    for (int j = len - 1; j >= 0; --j) {
        int v = rem[j] + divisor[j] + carry;
        carry = v > 99 ? 1 : 0;
        rem[j] = v - 100 * carry;
    }
}

} // namespace

int decdiv(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_null(result);
        return 0;
    }
    if (b->ndigits == 0) {
        set_zero(result);
        return QMR_E_DIVZERO;
    }
    int rem[remainder_bytes] = {};
    for (int i = 0; i < a->ndigits; ++i)
        rem[i + 1] = static_cast<int>(digit(a, i));
    int divisor[max_digits + 1] = {};
    const int nb = b->ndigits;
    for (int i = 0; i < nb; ++i)
        divisor[i + 1] = static_cast<int>(digit(b, i));
    const int trial = static_cast<int>(digit(b, 0)) * 100 + (nb > 1 ? divisor[2] : 0);

    char quotient[quotient_digits];
    for (int i = 0; i < quotient_digits; ++i) {
        int q = ((rem[i] * 100 + rem[i + 1]) * 100 + rem[i + 2]) / trial;
        // the trial divisor leaves out all but two digits, so q is at most one
        // too large and one correction is enough
        if (q != 0 && subtract_multiple(rem + i, divisor, nb + 1, q)) {
            --q;
            add_back(rem + i, divisor, nb + 1);
        }
        quotient[i] = static_cast<char>(q);
    }
    return decload(result, a->sign == b->sign ? 1 : 0, a->exponent - b->exponent + 1, quotient,
                   quotient_digits);
}

void dectrunc(dec_t *d, int s) noexcept
{
    if (is_null(d))
        return;
    const int keep = ((s + 1) >> 1) + d->exponent; // base-100 digits kept
    const bool odd = (s & 1) != 0;
    // an odd s also cuts the last kept digit to its tens, so keeping every
    // digit changes nothing only for an even s
    if (keep > d->ndigits || (keep == d->ndigits && !odd))
        return;
    if (keep <= 0) {
        set_zero(d);
        return;
    }
    if (odd)
        d->digits[keep - 1] = static_cast<char>(digit(d, keep - 1) / 10 * 10);
    int n = keep;
    while (n > 0 && d->digits[n - 1] == 0)
        --n;
    if (n == 0) {
        set_zero(d);
        return;
    }
    d->ndigits = static_cast<short>(n);
}

void decround(dec_t *d, int s) noexcept
{
    if (is_null(d) || 2 * (d->ndigits - d->exponent) <= s)
        return;
    // half a unit of the last kept decimal place, with d's sign
    dec_t half;
    half.sign = d->sign;
    half.exponent = static_cast<short>(-(s >> 1));
    half.ndigits = 1;
    half.digits[0] = static_cast<char>((s & 1) != 0 ? 5 : 50);
    add_signed(d, &half, d);
    dectrunc(d, s);
}

int deccmp(const dec_t *a, const dec_t *b) noexcept
{
    if (is_null(a) || is_null(b))
        return -2;
    if (a->sign != b->sign)
        return a->sign == 1 ? 1 : -1;
    const int m = cmp_magnitude(a, b);
    return a->sign == 1 ? m : -m;
}

void deccopy(const dec_t *from, dec_t *to) noexcept
{
    std::memmove(to, from, sizeof(dec_t));
}

int dec_is_zero(const dec_t *d) noexcept
{
    return d->ndigits < 1 && d->exponent == min_exponent ? 1 : 0;
}

int decsqrt(const dec_t *x, dec_t *result) noexcept
{
    if (is_null(x)) {
        set_null(result);
        return 0;
    }
    if (x->sign == 0) {
        set_zero(result);
        return 0;
    }
    const dec_t value = *x;
    dec_t two;
    decload(&two, 1, 1, "\x02", 1);
    // from above, each step moves down towards the root; the loop stops when a
    // step leaves the rounded value unchanged
    dec_t r;
    dec_t previous;
    dec_t t;
    decdiv(&value, &two, &r);
    do {
        previous = r;
        decdiv(&value, &r, &t);
        decadd(&t, &r, &r);
        decdiv(&r, &two, &r);
    } while (deccmp(&r, &previous) != 0);
    *result = r;
    return 0;
}

int decverify(const dec_t *d) noexcept
{
    if (d == nullptr)
        return -1;
    if (d->sign == -1)
        return 0;
    if (d->sign != 0 && d->sign != 1)
        return -1;
    if (d->exponent < min_exponent || d->exponent > max_exponent)
        return -1;
    if (d->ndigits > max_digits)
        return -1;
    if (d->ndigits == 0)
        return d->exponent == min_exponent ? 0 : -1;
    for (int i = 0; i < d->ndigits; ++i) {
        if (digit(d, i) > 99)
            return -1;
    }
    return 0;
}

char *dec1to2(const char *digits, int n, char *out) noexcept
{
    for (int i = 0; i < n; ++i) {
        const unsigned v = static_cast<unsigned char>(digits[i]);
        *out++ = static_cast<char>('0' + v / 10 % 10);
        *out++ = static_cast<char>('0' + v % 10);
    }
    *out = '\0';
    return out;
}

char *decstoi(const char *text, int *value) noexcept
{
    bool negative = false;
    if (*text == '+' || *text == '-') {
        negative = *text == '-';
        ++text;
    }
    unsigned v = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
        v = v * 10 + static_cast<unsigned>(*text - '0');
    if (negative)
        v = 0u - v;
    *value = static_cast<int>(v);
    return const_cast<char *>(text);
}

int decxtoi(const char *text, unsigned int *value) noexcept
{
    unsigned v = 0;
    for (;; ++text) {
        const char c = *text;
        unsigned h;
        if (c >= '0' && c <= '9')
            h = static_cast<unsigned>(c - '0');
        else if (c >= 'A' && c <= 'F')
            h = static_cast<unsigned>(c - 'A' + 10);
        else if (c >= 'a' && c <= 'f')
            h = static_cast<unsigned>(c - 'a' + 10);
        else
            break;
        v = v * 16 + h;
    }
    while (*text == ' ' || *text == '\t')
        ++text;
    if (*text != '\0' && *text != '\n')
        return -1;
    *value = v;
    return 0;
}
