// Base-100 digit runs held in machine words: eight digits to a 64-bit word
// with the first digit in the top byte, so that words compare, shift and carry
// as the digit run does; conversions to and from binary by reciprocal splits.
#ifndef QMR_NUMERIC_DECIMAL_WORDS_HPP
#define QMR_NUMERIC_DECIMAL_WORDS_HPP

#include "qmr/decimal.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace qmr::decwords
{

using u64 = std::uint64_t;
using u128 = unsigned __int128;

// Eight digit bytes from p, first byte on top.
inline u64 load8(const char *p)
{
    u64 w;
    std::memcpy(&w, p, sizeof w);
    if constexpr (std::endian::native == std::endian::little)
        w = __builtin_bswap64(w);
    return w;
}

inline void store8(char *p, u64 w)
{
    if constexpr (std::endian::native == std::endian::little)
        w = __builtin_bswap64(w);
    std::memcpy(p, &w, sizeof w);
}

// A byte repeated over a 128-bit word.
constexpr u128 repeat16(unsigned byte)
{
    const u64 w = 0x0101010101010101u * byte;
    return static_cast<u128>(w) << 64 | w;
}

// The first k of 16 digit bytes, as a mask over a 16-byte run, k = 0..16.
inline u128 first_digits(unsigned k)
{
    static constexpr struct {
        u64 hi, lo;
    } mask[17] = {{0, 0},
                  {0xFF00000000000000u, 0},
                  {0xFFFF000000000000u, 0},
                  {0xFFFFFF0000000000u, 0},
                  {0xFFFFFFFF00000000u, 0},
                  {0xFFFFFFFFFF000000u, 0},
                  {0xFFFFFFFFFFFF0000u, 0},
                  {0xFFFFFFFFFFFFFF00u, 0},
                  {~u64{0}, 0},
                  {~u64{0}, 0xFF00000000000000u},
                  {~u64{0}, 0xFFFF000000000000u},
                  {~u64{0}, 0xFFFFFF0000000000u},
                  {~u64{0}, 0xFFFFFFFF00000000u},
                  {~u64{0}, 0xFFFFFFFFFF000000u},
                  {~u64{0}, 0xFFFFFFFFFFFF0000u},
                  {~u64{0}, 0xFFFFFFFFFFFFFF00u},
                  {~u64{0}, ~u64{0}}};
    return static_cast<u128>(mask[k].hi) << 64 | mask[k].lo;
}

// The 16 digit bytes of a record as one run, first digit on top; bytes past
// ndigits read as 0, whatever the record holds there.
inline u128 digits_of(const dec_t *d)
{
    const unsigned n = static_cast<unsigned>(d->ndigits);
    const u128 run = static_cast<u128>(load8(d->digits)) << 64 | load8(d->digits + 8);
    return run & first_digits(n < 16 ? n : 16);
}

// Writes the first n (1..16) digits of run into d and leaves its later digit
// bytes as they were.
inline void put_digits(dec_t *d, u128 run, int n)
{
    if (n == QMR_DECSIZE) {
        store8(d->digits, static_cast<u64>(run >> 64));
        store8(d->digits + 8, static_cast<u64>(run));
        return;
    }
    const u128 keep = first_digits(static_cast<unsigned>(n));
    const u64 keep0 = static_cast<u64>(keep >> 64), keep1 = static_cast<u64>(keep);
    store8(d->digits, (static_cast<u64>(run >> 64) & keep0) | (load8(d->digits) & ~keep0));
    if (n > 8)
        store8(d->digits + 8, (static_cast<u64>(run) & keep1) | (load8(d->digits + 8) & ~keep1));
}

// Brings the bytes of a biased sum or a difference back to digits: a byte
// with its top bit set (156 or more) takes 156 off, the others are digits.
inline u64 unbias(u64 total)
{
    const u64 top = total & 0x8080808080808080u;
    return total - (top + (top >> 2) - (top >> 5)); // 128 + 32 - 4 per marked byte
}

inline u128 unbias(u128 total)
{
    return static_cast<u128>(unbias(static_cast<u64>(total >> 64))) << 64 |
           unbias(static_cast<u64>(total));
}

// add100 and sub100 on eight digits.
inline u64 add100(u64 a, u64 b, unsigned &carry_out)
{
    const u64 total = a + 0x9C9C9C9C9C9C9C9Cu + b;
    carry_out = static_cast<unsigned>(total >> 63) ^ 1;
    return unbias(total);
}

inline u64 sub100(u64 a, u64 b, unsigned &borrow_out)
{
    const u64 total = a - b;
    borrow_out = static_cast<unsigned>(total >> 63);
    return unbias(total);
}

// a + b + carry_in on 16 base-100 digit bytes at once. Each byte of a is
// biased by 156 first, so a byte sum of 100 or more carries into the next byte
// as a binary carry does and leaves a digit below 100; a byte that did not
// carry is 156 or more and loses the bias again.
inline u128 add100(u128 a, u128 b, unsigned carry_in, unsigned &carry_out)
{
    const u128 total = a + repeat16(156) + b + carry_in;
    carry_out = static_cast<unsigned>(total >> 127) ^ 1;
    return unbias(total);
}

// a - b - borrow_in on 16 base-100 digit bytes at once: a byte that borrowed
// holds its difference plus 256, 156 or more, and is brought to plus 100.
inline u128 sub100(u128 a, u128 b, unsigned borrow_in, unsigned &borrow_out)
{
    const u128 total = a - b - borrow_in;
    borrow_out = static_cast<unsigned>(total >> 127);
    return unbias(total);
}

// Eight digits to 16-bit lanes of digit pairs, then 32-bit lanes of four
// digits: the two halves of the word as numbers below 10^8.
inline u64 quads_of(u64 w)
{
    const u64 pairs = ((w >> 8) & 0x00FF00FF00FF00FFu) * 100 + (w & 0x00FF00FF00FF00FFu);
    return ((pairs >> 16) & 0x0000FFFF0000FFFFu) * 10000 + (pairs & 0x0000FFFF0000FFFFu);
}

// Eight digits as a number below 10^16.
inline u64 value_of(u64 w)
{
    const u64 q = quads_of(w);
    return (q >> 32) * 100000000u + (q & 0xFFFFFFFFu);
}

// Two numbers below 10^8 (x the leading one) as a word of eight digits: each
// is split into two numbers below 10^4 by a reciprocal multiply, and each of
// those into two digits in 32-bit lanes, q * 256 + r being v + 156 * q.
inline u64 digits_from(std::uint32_t x, std::uint32_t y)
{
    const std::uint32_t xh = x / 10000, xl = x - xh * 10000;
    const std::uint32_t yh = y / 10000, yl = y - yh * 10000;
    u64 lead = static_cast<u64>(xh) << 32 | yh;
    u64 tail = static_cast<u64>(xl) << 32 | yl;
    // v / 100 as (v * 5243) >> 19, exact below 43699, in each 32-bit lane
    lead += (((lead * 5243) >> 19) & 0x0000007F0000007Fu) * 156;
    tail += (((tail * 5243) >> 19) & 0x0000007F0000007Fu) * 156;
    return lead << 16 | tail;
}

// A number below 10^16 as eight digits.
inline u64 digits_from(u64 v)
{
    const u64 x = v / 100000000u;
    return digits_from(static_cast<std::uint32_t>(x),
                       static_cast<std::uint32_t>(v - x * 100000000u));
}

// The word made of the bytes from byte off of a onwards, continued by b.
inline u64 funnel(u64 a, u64 b, int off)
{
    const int s = 8 * off; // 0..56; b is shifted in two steps so that s = 0 needs no case
    return a << s | (b >> 1) >> (63 - s);
}

} // namespace qmr::decwords

#endif
