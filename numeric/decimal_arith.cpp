// Decimal arithmetic on base-100 digits: the normaliser decload through which
// every result passes, addition, subtraction, multiplication, division,
// rounding, truncation, comparison, square root and the small digit routines.
// The digit runs are worked on eight digits to a machine word (see
// decimal_words.hpp); every result is the one the plain digit-by-digit loops
// give, down to the digit bytes past ndigits, which are left as they were.
#include "numeric/decimal_special.hpp"
#include "numeric/decimal_words.hpp"
#include "qmr/decimal.h"

#include <bit>
#include <cstring>

namespace
{

using qmr::set_dec_null;
using qmr::set_dec_zero;

using namespace qmr::decwords;

constexpr int min_exponent = -64;
constexpr int max_exponent = 63;
constexpr int max_digits = QMR_DECSIZE;

bool is_null(const dec_t *d)
{
    return d->sign == -1;
}

unsigned digit(const dec_t *d, int i)
{
    return static_cast<unsigned char>(d->digits[i]);
}

// Sets sign, digit count and the exponent, clamped to its range.
[[gnu::always_inline]] inline int set_head(dec_t *d, int sign, int exponent, int n)
{
    d->ndigits = static_cast<short>(n);
    d->sign = static_cast<short>(sign);
    if (exponent < min_exponent) {
        d->exponent = min_exponent;
        return QMR_E_DECUNDERFLOW;
    }
    if (exponent > max_exponent) {
        d->exponent = max_exponent;
        return QMR_E_DECOVERFLOW;
    }
    d->exponent = static_cast<short>(exponent);
    return 0;
}

// Leading and trailing zero bytes of a non-zero 16-byte run.
int leading_zero_bytes(u128 run)
{
    const u64 hi = static_cast<u64>(run >> 64);
    return (hi != 0 ? std::countl_zero(hi) : 64 + std::countl_zero(static_cast<u64>(run))) / 8;
}

int trailing_zero_bytes(u128 run)
{
    const u64 lo = static_cast<u64>(run);
    return (lo != 0 ? std::countr_zero(lo) : 64 + std::countr_zero(static_cast<u64>(run >> 64))) /
           8;
}

// The byte loop of increment() below, kept for digit bytes above 99: they
// only come from malformed input or a trial quotient gone wrong, and the carry
// then follows the char arithmetic of that loop.
[[gnu::noinline]] bool increment_bytes(u128 &run)
{
    char bytes[max_digits];
    store8(bytes, static_cast<u64>(run >> 64));
    store8(bytes + 8, static_cast<u64>(run));
    int i = max_digits - 1;
    for (; i >= 0; --i) {
        if (++bytes[i] <= 99)
            break;
        bytes[i] = 0;
    }
    run = static_cast<u128>(load8(bytes)) << 64 | load8(bytes + 8);
    return i < 0;
}

// One more in the last of 16 digit bytes, carried leftwards: a byte passing
// 99 becomes 0 and the carry goes on. Returns true when the carry ran out of
// the first digit.
bool increment(u128 &run)
{
    if (((run + repeat16(28)) | run) & repeat16(0x80))
        return increment_bytes(run);
    unsigned out;
    run = add100(run, 0, 1, out);
    return out != 0;
}

// Stores 16 digits whose first is not zero, rounded half up on the magnitude
// by the 17th (next). A round-up keeps all 16 digits even when the carry
// leaves zeros at the end, and a carry out of the first digit makes the run
// 1 0 0 ... one power of 100 higher; otherwise trailing zero digits go.
[[gnu::always_inline]] inline int store_rounded(dec_t *d, int sign, int exponent, u128 run,
                                                unsigned next)
{
    int n = max_digits;
    if (next >= 50) {
        if (increment(run)) {
            run = u128{1} << 120;
            ++exponent;
        }
    } else {
        n -= trailing_zero_bytes(run);
    }
    put_digits(d, run, n);
    return set_head(d, sign, exponent, n);
}

// The normaliser on a run of count words (eight digits each, first digit in
// the top byte of w[0]) followed by two zero words: the first non-zero digit
// and the 16 after it are all that the result depends on.
[[gnu::always_inline]] inline int store_run(dec_t *d, int sign, int exponent, const u64 *w,
                                            int count)
{
    int i = 0; // the first word is most often the first non-zero one
    while (i < count && w[i] == 0)
        ++i;
    if (i == count) {
        set_dec_zero(d);
        return 0;
    }
    const int off = std::countl_zero(w[i]) / 8;
    if (off == 0)
        return store_rounded(d, sign, exponent - 8 * i, static_cast<u128>(w[i]) << 64 | w[i + 1],
                             static_cast<unsigned>(w[i + 2] >> 56));
    const u128 run =
        static_cast<u128>(funnel(w[i], w[i + 1], off)) << 64 | funnel(w[i + 1], w[i + 2], off);
    const unsigned next = static_cast<unsigned>(w[i + 2] >> (56 - 8 * off)) & 0xFF;
    return store_rounded(d, sign, exponent - 8 * i - off, run, next);
}

// The normaliser on a run of eight digits, the rest zero.
[[gnu::always_inline]] inline int store_word(dec_t *d, int sign, int exponent, u64 w)
{
    if (w == 0) {
        set_dec_zero(d);
        return 0;
    }
    const int off = std::countl_zero(w) / 8;
    return store_rounded(d, sign, exponent - off, static_cast<u128>(w << (8 * off)) << 64, 0);
}

// The 18-byte work area of an addition, normalised as decload does it: the
// carry byte lead (power 100^exponent), the 16 digits of mid, and the 17th
// place last.
[[gnu::always_inline]] inline int store_sum(dec_t *d, int sign, int exponent, unsigned lead,
                                            u128 mid, unsigned last)
{
    if (lead != 0)
        return store_rounded(d, sign, exponent, static_cast<u128>(lead) << 120 | mid >> 8,
                             static_cast<unsigned>(mid) & 0xFF);
    if ((mid >> 120) != 0) // the first digit of l stays the first
        return store_rounded(d, sign, exponent - 1, mid, last);
    if (mid != 0) {
        const int off = leading_zero_bytes(mid);
        u128 run = mid << (8 * off);
        if (off != 0)
            run |= static_cast<u128>(last) << (8 * (off - 1));
        return store_rounded(d, sign, exponent - 1 - off, run, off == 0 ? last : 0);
    }
    if (last != 0)
        return store_rounded(d, sign, exponent - 17, static_cast<u128>(last) << 120, 0);
    set_dec_zero(d);
    return 0;
}

// Magnitude order of a and b, x and y being their digit runs: -1, 0, 1. A
// digit run that is a prefix of the other is the smaller one, even when the
// rest is zeros; so the runs, read as 0 past ndigits, compare as 16-byte
// numbers and the digit counts break a tie.
[[gnu::always_inline]] inline int cmp_runs(const dec_t *a, u128 x, const dec_t *b, u128 y)
{
    if (a->ndigits == 0)
        return b->ndigits == 0 ? 0 : -1;
    if (b->ndigits == 0)
        return 1;
    if (a->exponent != b->exponent)
        return a->exponent > b->exponent ? 1 : -1;
    if (x != y)
        return x > y ? 1 : -1;
    if (a->ndigits == b->ndigits)
        return 0;
    return a->ndigits > b->ndigits ? 1 : -1;
}

// add_runs below when both digit runs lie in l's first eight places: one word
// and its carry byte, nine digits at most, so nothing rounds.
int add_words(const dec_t *l, u64 big, u64 small, bool subtract, int sign, dec_t *result)
{
    unsigned out;
    u64 lead;
    u64 mid;
    if (subtract) {
        mid = sub100(big, small, out);
        lead = out != 0 ? 99 : 0;
    } else {
        mid = add100(big, small, out);
        lead = out;
    }
    if (lead != 0)
        return store_rounded(result, sign, l->exponent + 1,
                             static_cast<u128>(lead << 56 | mid >> 8) << 64 | mid << 56, 0);
    return store_word(result, sign, l->exponent, mid);
}

// Adds (or subtracts, when subtract is set) the magnitude of s to that of l,
// |l| >= |s|, big and run being their digit runs, in an 18-byte work area: a
// carry byte, the 16 digits of l, and a 17th place that only s reaches. The
// digits of s are aligned by shifting its run right by the difference of
// exponents; those past the 17th place are dropped without rounding.
[[gnu::always_inline]] inline int add_runs(const dec_t *l, u128 big, const dec_t *s, u128 run,
                                           bool subtract, int sign, dec_t *result)
{
    const int shift = l->exponent - s->exponent; // >= 0 since |l| >= |s|
    if (l->ndigits <= 8 && shift < 8 && shift + s->ndigits <= 8)
        return add_words(l, static_cast<u64>(big >> 64), static_cast<u64>(run >> 64) >> (8 * shift),
                         subtract, sign, result);
    u128 small = 0;
    unsigned last = 0; // the digit of s in the 17th place
    if (shift == 0) {
        small = run;
    } else if (shift < max_digits) {
        small = run >> (8 * shift);
        last = static_cast<unsigned>(run >> (8 * (shift - 1))) & 0xFF;
    } else if (shift == max_digits) {
        last = static_cast<unsigned>(run >> 120);
    }
    unsigned out;
    if (subtract) {
        // 0 - last borrows from the 16th place; a borrow out of the first
        // digit (operands that are not in normal form) leaves 99 in the carry
        // byte, as the digit loop does
        const u128 mid = sub100(big, small, last != 0, out);
        return store_sum(result, sign, l->exponent + 1, out != 0 ? 99 : 0, mid,
                         last != 0 ? 100 - last : 0);
    }
    const u128 mid = add100(big, small, 0, out);
    return store_sum(result, sign, l->exponent + 1, out, mid, last);
}

// a + b, with b's sign given apart so that subtraction needs no copy of b.
[[gnu::always_inline]] inline int add_signed(const dec_t *a, const dec_t *b, int b_sign,
                                             dec_t *result)
{
    // the larger magnitude goes first and gives its sign; on a tie, a does
    const u128 x = digits_of(a), y = digits_of(b);
    const bool swap = cmp_runs(a, x, b, y) < 0;
    return add_runs(swap ? b : a, swap ? y : x, swap ? a : b, swap ? x : y, a->sign != b_sign,
                    swap ? b_sign : a->sign, result);
}

} // namespace

int decload(dec_t *result, int sign, int exponent, const char *bytes, int count) noexcept
{
    if (sign == -1) {
        set_dec_null(result);
        return 0;
    }
    // leading zero bytes lower the exponent; trailing ones need no scan, as
    // the 16 digits kept are cut at the last non-zero digit anyway
    int first = 0;
    while (count - first >= 8 && load8(bytes + first) == 0)
        first += 8;
    while (first < count && bytes[first] == 0)
        ++first;
    if (first == count) {
        set_dec_zero(result);
        return 0;
    }
    if (count - first > max_digits) {
        const u128 run = static_cast<u128>(load8(bytes + first)) << 64 | load8(bytes + first + 8);
        return store_rounded(result, sign, exponent - first, run,
                             static_cast<unsigned char>(bytes[first + max_digits]));
    }
    char window[max_digits] = {};
    std::memcpy(window, bytes + first, static_cast<size_t>(count - first));
    const u128 run = static_cast<u128>(load8(window)) << 64 | load8(window + 8);
    return store_rounded(result, sign, exponent - first, run, 0);
}

int decadd(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_dec_null(result);
        return 0;
    }
    return add_signed(a, b, b->sign, result);
}

int decsub(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_dec_null(result);
        return 0;
    }
    return add_signed(a, b, b->sign == 1 ? 0 : 1, result);
}

namespace
{

// The product of two runs of L limbs each (numbers below 10^8, four digits
// each, the leading limb first) as 2L limbs carried in base 10^8, then as L
// words of digits. A product of two limbs is below 10^16, so a column of up
// to four such products fits 64 bits; limb k + 1 gathers the limb products
// i + j = k, as the schoolbook loop gathers digit products.
template <int L> void multiply_limbs(const u64 *a, const u64 *b, u64 *w)
{
    constexpr u64 base = 100000000u;
    u64 column[2 * L - 1] = {};
    for (int i = 0; i < L; ++i) {
        for (int j = 0; j < L; ++j)
            column[i + j] += a[i] * b[j];
    }
    std::uint32_t limb[2 * L];
    u64 carry = 0;
    for (int k = 2 * L - 2; k >= 0; --k) {
        const u64 v = column[k] + carry;
        carry = v / base;
        limb[k + 1] = static_cast<std::uint32_t>(v - carry * base);
    }
    limb[0] = static_cast<std::uint32_t>(carry);
    if constexpr (L < 4) {
        for (int k = 0; k < L; ++k)
            w[k] = digits_from(limb[2 * k], limb[2 * k + 1]);
    } else {
        // The normaliser reads the 17 digits from the first non-zero one. The
        // product of two leading digits that are not 0 begins in the first or
        // second place, and then only places 16 and 17 of the third word
        // count: the two leading digits of its first limb.
        w[0] = digits_from(limb[0], limb[1]);
        w[1] = digits_from(limb[2], limb[3]);
        if ((w[0] >> 48) != 0) {
            const std::uint32_t pair = limb[4] / 10000;
            w[2] = static_cast<u64>(pair / 100) << 56 | static_cast<u64>(pair % 100) << 48;
            w[3] = 0;
        } else {
            w[2] = digits_from(limb[4], limb[5]);
            w[3] = digits_from(limb[6], limb[7]);
        }
    }
}

// The 32-digit product of two 16-digit runs, as four words (the product digit
// k + 1 gathers the digit products i + j = k). The runs are taken as limbs of
// four digits: two of each when both runs have eight digits or fewer.
void multiply_runs(const dec_t *x, const dec_t *y, u64 *w)
{
    const u128 rx = digits_of(x), ry = digits_of(y);
    const u64 qa0 = quads_of(static_cast<u64>(rx >> 64)),
              qb0 = quads_of(static_cast<u64>(ry >> 64));
    const int longer = x->ndigits > y->ndigits ? x->ndigits : y->ndigits;
    if (longer <= 8) {
        const u64 a[2] = {qa0 >> 32, qa0 & 0xFFFFFFFFu}, b[2] = {qb0 >> 32, qb0 & 0xFFFFFFFFu};
        multiply_limbs<2>(a, b, w);
    } else {
        const u64 qa1 = quads_of(static_cast<u64>(rx)), qb1 = quads_of(static_cast<u64>(ry));
        const u64 a[4] = {qa0 >> 32, qa0 & 0xFFFFFFFFu, qa1 >> 32, qa1 & 0xFFFFFFFFu};
        const u64 b[4] = {qb0 >> 32, qb0 & 0xFFFFFFFFu, qb1 >> 32, qb1 & 0xFFFFFFFFu};
        multiply_limbs<4>(a, b, w);
    }
}

} // namespace

int decmul(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_dec_null(result);
        return 0;
    }
    const int sign = a->sign == b->sign ? 1 : 0;
    const int exponent = a->exponent + b->exponent;
    if (a->ndigits <= 4 && b->ndigits <= 4) {
        // four digits or fewer each (eight decimal digits, as most amounts
        // are): one product below 10^16, the first eight product digits
        const u64 x = quads_of(static_cast<u64>(digits_of(a) >> 64)) >> 32;
        const u64 y = quads_of(static_cast<u64>(digits_of(b) >> 64)) >> 32;
        return store_word(result, sign, exponent, digits_from(x * y));
    }
    u64 w[7] = {};
    multiply_runs(a, b, w);
    return store_run(result, sign, exponent, w, 4);
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

// Long division digit by digit: 18 quotient digits, each a trial quotient
// from the first two divisor digits with one correction. Used for a divisor
// whose first digit is 0, where the trial quotient can be off by more than
// one and the digits it gives are not those of the exact quotient.
void divide_digitwise(const dec_t *a, const dec_t *b, char *quotient)
{
    int rem[remainder_bytes] = {};
    for (int i = 0; i < a->ndigits; ++i)
        rem[i + 1] = static_cast<int>(digit(a, i));
    int divisor[max_digits + 1] = {};
    const int nb = b->ndigits;
    for (int i = 0; i < nb; ++i)
        divisor[i + 1] = static_cast<int>(digit(b, i));
    const int trial = static_cast<int>(digit(b, 0)) * 100 + (nb > 1 ? divisor[2] : 0);
    for (int i = 0; i < quotient_digits; ++i) {
        int q = ((rem[i] * 100 + rem[i + 1]) * 100 + rem[i + 2]) / trial;
        if (q != 0 && subtract_multiple(rem + i, divisor, nb + 1, q)) {
            --q;
            add_back(rem + i, divisor, nb + 1);
        }
        quotient[i] = static_cast<char>(q);
    }
}

// x * m as three 64-bit limbs, most significant first.
struct Limbs3 {
    u64 top, mid, low;
};

Limbs3 times(u128 x, u64 m)
{
    const u128 low = static_cast<u128>(static_cast<u64>(x)) * m;
    const u128 high = static_cast<u128>(static_cast<u64>(x >> 64)) * m;
    const u128 mid = (low >> 64) + static_cast<u64>(high);
    return {static_cast<u64>(high >> 64) + static_cast<u64>(mid >> 64), static_cast<u64>(mid),
            static_cast<u64>(low)};
}

// (hi:lo) / d for hi < d: the processor's 128-by-64 division where there is one.
u64 divide_wide(u64 hi, u64 lo, u64 d)
{
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
    u64 q, r;
    __asm__("divq %4" : "=a"(q), "=d"(r) : "a"(lo), "d"(hi), "rm"(d));
    return q;
#else
    return static_cast<u64>((static_cast<u128>(hi) << 64 | lo) / d);
#endif
}

// n / d for a three-limb n and a two-limb d whose top bit is set, when the
// quotient is below 2^63: the first limbs give a trial quotient that is never
// too small, and the test against d's second limb brings it down to the exact
// quotient (Knuth's step D3, exact for a two-limb divisor). rem gets n - q d.
u64 divide_3by2(Limbs3 n, u128 d, u128 &rem)
{
    const u64 d1 = static_cast<u64>(d >> 64), d0 = static_cast<u64>(d);
    u64 q = divide_wide(n.top, n.mid, d1);
    u128 r = (static_cast<u128>(n.top) << 64 | n.mid) - static_cast<u128>(q) * d1;
    while ((r >> 64) == 0 && static_cast<u128>(q) * d0 > (r << 64 | n.low)) {
        --q;
        r += d1;
    }
    rem = (r << 64 | n.low) - static_cast<u128>(q) * d0; // below d, so exact modulo 2^128
    return q;
}

// The 18 quotient digits of the long division when b's first digit is not
// zero. Then every trial quotient of the digit loop is at most one too large
// and its one correction makes it exact, so the digits are those of
// floor(A * 100^17 / B), A and B being the 16-digit runs as integers. That
// quotient is below 100^18 and is found in two halves of nine digits, each a
// three-limb by two-limb division with the divisor shifted to its top bit:
// Q1 = floor(A * 10^16 / B), then Q2 = floor(R1 * 10^18 / B).
void divide_exact(u128 x, u128 y, u64 *w)
{
    constexpr u64 e16 = 10000000000000000u, e18 = 1000000000000000000u;
    const u128 a = static_cast<u128>(value_of(static_cast<u64>(x >> 64))) * e16 +
                   value_of(static_cast<u64>(x));
    const u128 b = static_cast<u128>(value_of(static_cast<u64>(y >> 64))) * e16 +
                   value_of(static_cast<u64>(y));
    const int s = std::countl_zero(static_cast<u64>(b >> 64)); // 21..28: b >= 10^30
    const u128 d = b << s;
    Limbs3 n = times(a, e16);
    n = {n.top << s | n.mid >> (64 - s), n.mid << s | n.low >> (64 - s), n.low << s};
    u128 rem;
    const u64 q1 = divide_3by2(n, d, rem);
    const u64 q2 = divide_3by2(times(rem, e18), d, rem); // rem is already shifted by s
    // each half: one leading digit, then eight
    const u64 lead1 = q1 / e16, lead2 = q2 / e16;
    const u64 run1 = digits_from(q1 - lead1 * e16), run2 = digits_from(q2 - lead2 * e16);
    w[0] = lead1 << 56 | run1 >> 8;
    w[1] = run1 << 56 | lead2 << 48 | run2 >> 16;
    w[2] = run2 << 48;
}

} // namespace

int decdiv(const dec_t *a, const dec_t *b, dec_t *result) noexcept
{
    if (is_null(a) || is_null(b)) {
        set_dec_null(result);
        return 0;
    }
    if (b->ndigits == 0) {
        set_dec_zero(result);
        return QMR_E_DIVZERO;
    }
    const int sign = a->sign == b->sign ? 1 : 0;
    const int exponent = a->exponent - b->exponent + 1;
    if (b->digits[0] == 0) {
        char quotient[quotient_digits];
        divide_digitwise(a, b, quotient);
        return decload(result, sign, exponent, quotient, quotient_digits);
    }
    u64 w[6] = {};
    divide_exact(digits_of(a), digits_of(b), w);
    return store_run(result, sign, exponent, w, 3);
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
        set_dec_zero(d);
        return;
    }
    if (odd)
        d->digits[keep - 1] = static_cast<char>(digit(d, keep - 1) / 10 * 10);
    int n = keep;
    while (n > 0 && d->digits[n - 1] == 0)
        --n;
    if (n == 0) {
        set_dec_zero(d);
        return;
    }
    d->ndigits = static_cast<short>(n);
}

void decround(dec_t *d, int s) noexcept
{
    if (is_null(d) || 2 * (d->ndigits - d->exponent) <= s)
        return;
    // half a unit of the last kept decimal place, with d's sign
    dec_t half{}; // its digit bytes are read whole, though only one counts
    half.sign = d->sign;
    half.exponent = static_cast<short>(-(s >> 1));
    half.ndigits = 1;
    half.digits[0] = static_cast<char>((s & 1) != 0 ? 5 : 50);
    add_signed(d, &half, half.sign, d);
    dectrunc(d, s);
}

namespace
{

// Magnitude order of two non-zero records of the same exponent: the first
// digit that differs within the shorter run decides, else the longer run is
// the larger. Raw words are compared, eight digits at a time, and a
// difference past the shorter run (in bytes past ndigits) is ignored.
int cmp_digits(const dec_t *a, const dec_t *b)
{
    const int na = a->ndigits, nb = b->ndigits;
    const int n = na < nb ? na : nb;
    const int by_length = (na > nb) - (na < nb);
    for (int at = 0; at < n; at += 8) {
        const u64 x = load8(a->digits + at), y = load8(b->digits + at);
        if (x != y)
            return at + std::countl_zero(x ^ y) / 8 < n ? (x > y ? 1 : -1) : by_length;
    }
    return by_length;
}

} // namespace

int deccmp(const dec_t *a, const dec_t *b) noexcept
{
    if (is_null(a) || is_null(b))
        return -2;
    if (a->sign != b->sign)
        return a->sign == 1 ? 1 : -1;
    int m;
    if (a->ndigits == 0 || b->ndigits == 0)
        m = (a->ndigits != 0) - (b->ndigits != 0);
    else if (a->exponent != b->exponent)
        m = a->exponent > b->exponent ? 1 : -1;
    else
        m = cmp_digits(a, b);
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
        set_dec_null(result);
        return 0;
    }
    if (x->sign == 0) {
        set_dec_zero(result);
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
