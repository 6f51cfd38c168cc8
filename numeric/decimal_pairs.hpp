// Base-100 digit pairs as decimal characters, shared by the conversions that
// print a decimal's digits for further work.
#pragma once

namespace qmr
{

// "00" .. "99": one table lookup per base-100 digit.
inline constexpr char pair_text[] = "00010203040506070809101112131415161718192021222324"
                                    "25262728293031323334353637383940414243444546474849"
                                    "50515253545556575859606162636465666768697071727374"
                                    "75767778798081828384858687888990919293949596979899";

// Writes n base-100 digits as 2n characters (no terminator); a digit above 99
// prints its value modulo 100. Returns: the end of what was written.
inline char *write_pairs(const char *pairs, int n, char *out)
{
    for (int i = 0; i < n; ++i) {
        const unsigned v = static_cast<unsigned char>(pairs[i]) % 100;
        out[0] = pair_text[2 * v];
        out[1] = pair_text[2 * v + 1];
        out += 2;
    }
    return out;
}

} // namespace qmr
