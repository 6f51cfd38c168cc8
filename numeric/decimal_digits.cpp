// Digit strings of a decimal: a number of significant digits (deccvt,
// dececvt) or of digits after the point (decfcvt, qmr_decfcvt), rounded half
// away from zero, with the point position and the sign returned apart.
#include "qmr/decimal.h"

#include "numeric/decimal_pairs.hpp"

namespace
{

// A value of exponent 63 has at most 126 digits before the point; a carry out
// of the first digit makes one more.
constexpr int max_point = 127;
constexpr int buffer_size = max_point + QMR_DECCVT_MAXNDIGIT + 1;

// Shared by the three per-thread routines: trivially constructed, so a thread
// reaches it without an initialiser call or an allocation.
thread_local char cvt_buffer[buffer_size];

// The buffer's address is looked up once per call: in a shared library each
// mention of a thread_local is a call into the dynamic linker.
[[gnu::noinline]] char *thread_buffer()
{
    return cvt_buffer;
}

// The significant decimal digits of |d|, with point digits before the point.
struct Digits {
    char text[2 * QMR_DECSIZE + 1];
    int n;     // 0 for zero
    int point; // meaningful when n > 0
};

Digits digits_of(const dec_t *d)
{
    Digits g;
    const int held = d->ndigits < 0 ? 0 : d->ndigits > QMR_DECSIZE ? QMR_DECSIZE : d->ndigits;
    g.n = static_cast<int>(qmr::write_pairs(d->digits, held, g.text) - g.text);
    g.point = 2 * d->exponent;
    // a normalised decimal has at most one leading zero (a first pair below
    // 10); a malformed one may have more
    int lead = 0;
    while (lead < g.n && g.text[lead] == '0')
        ++lead;
    if (lead > 0) {
        g.n -= lead;
        g.point -= lead;
        for (int i = 0; i < g.n; ++i)
            g.text[i] = g.text[i + lead];
    }
    while (g.n > 0 && g.text[g.n - 1] == '0')
        --g.n;
    return g;
}

// Keeps the first `keep` digits (keep >= 0), rounding half away from zero on
// the magnitude. A carry out of the first digit leaves "1" a place higher;
// nothing kept and no carry leaves no digits (zero).
void round_to(Digits &g, long long keep)
{
    if (keep >= g.n)
        return;
    if (keep < 0) {
        g.n = 0;
        return;
    }
    const bool up = g.text[keep] >= '5';
    g.n = static_cast<int>(keep);
    if (!up)
        return;
    int i = g.n - 1;
    for (; i >= 0 && g.text[i] == '9'; --i)
        g.text[i] = '0';
    if (i >= 0) {
        ++g.text[i];
        return;
    }
    g.text[0] = '1';
    g.n = 1;
    ++g.point;
}

// Writes count digits: the kept ones, then zeros; and the terminating NUL.
void emit(const Digits &g, long long count, char *out)
{
    long long i = 0;
    for (; i < count && i < g.n; ++i)
        out[i] = g.text[i];
    for (; i < count; ++i)
        out[i] = '0';
    out[count] = '\0';
}

int clamp_ndigit(int ndigit, int low)
{
    return ndigit < low ? low : ndigit > QMR_DECCVT_MAXNDIGIT ? QMR_DECCVT_MAXNDIGIT : ndigit;
}

// Rounds |d| to ndigit places after the point (ndigit >= 0). Returns the digit
// count; a value that rounds to zero gives ndigit zeros with point 0.
long long fixed_digits(const dec_t *d, int ndigit, Digits &g)
{
    g = digits_of(d);
    if (g.n > 0)
        round_to(g, static_cast<long long>(g.point) + ndigit);
    if (g.n == 0) {
        g.point = 0;
        return ndigit;
    }
    return static_cast<long long>(g.point) + ndigit;
}

void set_outputs(const dec_t *d, const Digits &g, int *decpt, int *sign)
{
    *decpt = g.point;
    *sign = d->sign == 0 ? 1 : 0;
}

} // namespace

char *dececvt(const dec_t *d, int ndigit, int *decpt, int *sign) noexcept
{
    char *const buffer = thread_buffer();
    if (d->sign == -1) {
        *decpt = 0;
        *sign = 0;
        buffer[0] = '\0';
        return buffer;
    }
    ndigit = clamp_ndigit(ndigit, 1);
    Digits g = digits_of(d);
    round_to(g, ndigit);
    if (g.n == 0)
        g.point = 0;
    emit(g, ndigit, buffer);
    set_outputs(d, g, decpt, sign);
    return buffer;
}

char *deccvt(const dec_t *d, int ndigit, int *decpt, int *sign) noexcept
{
    return dececvt(d, ndigit, decpt, sign);
}

char *decfcvt(const dec_t *d, int ndigit, int *decpt, int *sign) noexcept
{
    char *const buffer = thread_buffer();
    if (d->sign == -1) {
        *decpt = 0;
        *sign = 0;
        buffer[0] = '\0';
        return buffer;
    }
    Digits g;
    long long count = fixed_digits(d, clamp_ndigit(ndigit, 0), g);
    if (count > buffer_size - 1)
        count = buffer_size - 1; // only an exponent beyond 63 gets here
    emit(g, count, buffer);
    set_outputs(d, g, decpt, sign);
    return buffer;
}

int qmr_decfcvt(const dec_t *d, int ndigit, int *decpt, int *sign, char *buf, int buflen) noexcept
{
    if (buf == nullptr || buflen < 1)
        return QMR_E_BUFTOOSMALL;
    if (d->sign == -1) {
        *decpt = 0;
        *sign = 0;
        buf[0] = '\0';
        return 0;
    }
    Digits g;
    const long long count = fixed_digits(d, ndigit < 0 ? 0 : ndigit, g);
    if (count >= buflen)
        return QMR_E_BUFTOOSMALL;
    emit(g, count, buf);
    set_outputs(d, g, decpt, sign);
    return 0;
}
