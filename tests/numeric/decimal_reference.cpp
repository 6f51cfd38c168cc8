// A verbatim copy of the straightforward base-100 decimal routines, kept as
// the oracle that the optimised library routines must match byte for byte:
// the same digit loops, carries, trial quotients and normaliser.
#include "decimal_reference.hpp"

#include <cstring>

namespace ref
{

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
    return ref::decload(result, l->sign, l->exponent + 1, reinterpret_cast<const char *>(work),
                        width);
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
    return ref::decload(result, a->sign == b->sign ? 1 : 0, a->exponent + b->exponent, product,
                        na + nb);
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
    return ref::decload(result, a->sign == b->sign ? 1 : 0, a->exponent - b->exponent + 1, quotient,
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
    ref::dectrunc(d, s);
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
    ref::decload(&two, 1, 1, "\x02", 1);
    // from above, each step moves down towards the root; the loop stops when a
    // step leaves the rounded value unchanged
    dec_t r;
    dec_t previous;
    dec_t t;
    ref::decdiv(&value, &two, &r);
    do {
        previous = r;
        ref::decdiv(&value, &r, &t);
        ref::decadd(&t, &r, &r);
        ref::decdiv(&r, &two, &r);
    } while (ref::deccmp(&r, &previous) != 0);
    *result = r;
    return 0;
}

namespace
{

constexpr int max_read = 17; // digits lddecimal reads: one past what a dec_t holds

void complement(unsigned char *run, int n)
{
    int i = n - 1;
    while (i >= 0 && run[i] == 0)
        --i;
    if (i < 0)
        return;
    run[i] = static_cast<unsigned char>(100 - run[i]);
    for (--i; i >= 0; --i)
        run[i] = static_cast<unsigned char>(99 - run[i]);
}

// Adds one unit at the last of the n digit bytes after byte 0; a carry out of
// the first digit makes the run 1 0 0 ... and raises the exponent byte.
void round_up(unsigned char *out, int n)
{
    for (int i = n; i >= 1; --i) {
        if (++out[i] <= 99)
            return;
        out[i] = 0;
    }
    out[1] = 1;
    // kept on purpose: the exponent byte is not checked, so a value of
    // exponent 63 carries into the sign bit; callers fit values to the column
    // before storing them
    ++out[0];
}

} // namespace

void deccomplement(char *bytes, int n) noexcept
{
    complement(reinterpret_cast<unsigned char *>(bytes), n);
}

void stdecimal(const dec_t *d, char *buffer, int len) noexcept
{
    auto *out = reinterpret_cast<unsigned char *>(buffer);
    if (len <= 0)
        return;
    if (d->sign == -1) {
        std::memset(out, 0, static_cast<size_t>(len));
        return;
    }
    out[0] = static_cast<unsigned char>((d->exponent + 64) & 0x7F);
    const int room = len - 1;
    const int nd = d->ndigits;
    const int copied = nd < room ? nd : room;
    std::memcpy(out + 1, d->digits, static_cast<size_t>(copied));
    if (room > copied)
        std::memset(out + 1 + copied, 0, static_cast<size_t>(room - copied));
    if (nd > room && room > 0 && static_cast<unsigned char>(d->digits[room]) >= 50)
        round_up(out, room);
    if (d->sign == 1 || nd == 0) {
        out[0] |= 0x80;
    } else {
        complement(out + 1, room);
        out[0] ^= 0x7F;
    }
}

int lddecimal(const char *buffer, int len, dec_t *d) noexcept
{
    const auto *in = reinterpret_cast<const unsigned char *>(buffer);
    if (in[0] == 0 && (len < 2 || in[1] == 0)) {
        d->exponent = 0;
        d->sign = -1;
        d->ndigits = 0;
        return 0;
    }
    int n = (len < max_read + 1 ? len : max_read + 1) - 1;
    if (n < 0)
        n = 0;
    unsigned char work[max_read];
    std::memcpy(work, in + 1, static_cast<size_t>(n));
    unsigned head = in[0];
    const bool positive = (head & 0x80) != 0;
    if (!positive) {
        complement(work, n);
        head ^= 0x7F;
    }
    const int exponent = static_cast<int>(head & 0x7F) - 64;
    return ref::decload(d, positive ? 1 : 0, exponent, reinterpret_cast<const char *>(work), n);
}

} // namespace ref
