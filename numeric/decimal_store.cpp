// The stored decimal form: an excess-64 exponent byte with the sign in bit 7
// and the leading base-100 digits, complemented for negative values so that
// equal-length byte strings sort in numeric order; and the precision words.
#include "qmr/decimal.h"

#include <cstring>

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
    return decload(d, positive ? 1 : 0, exponent, reinterpret_cast<const char *>(work), n);
}

int dec2prec(const dec_t *d) noexcept
{
    if (d->sign == -1 || d->ndigits == 0)
        return 0;
    const int nd = d->ndigits;
    int scale = 2 * (nd - d->exponent);
    int precision = 2 * nd;
    if (static_cast<unsigned char>(d->digits[nd - 1]) % 10 == 0) {
        --scale;
        --precision;
    }
    if (static_cast<unsigned char>(d->digits[0]) <= 9)
        --precision;
    if (scale >= 0)
        return precision * 256 + scale;
    // an integer whose last held digit lies left of the units place
    return (precision - scale) * 256;
}

int decprec(const dec_t *d) noexcept
{
    const int word = dec2prec(d);
    const int precision = word >> 8;
    const int scale = word & 0xFF;
    return (precision > scale ? precision : scale) * 256 + scale;
}
