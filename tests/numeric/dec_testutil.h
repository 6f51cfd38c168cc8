// Test helpers for dec_t: building records from text and from __int128 without
// the library's own conversions, exact record comparison, printing, and the
// edge-biased random generators shared by the numeric suites.
#ifndef QMR_TESTS_DEC_TESTUTIL_H
#define QMR_TESTS_DEC_TESTUTIL_H

#include "qmr/decimal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>

namespace dectest
{

using i128 = __int128;

// A raw record, not normalised: exactly the fields given, other digits 0.
inline dec_t raw(int sign, int exponent, std::initializer_list<int> digits)
{
    dec_t d;
    std::memset(&d, 0, sizeof d);
    d.sign = static_cast<short>(sign);
    d.exponent = static_cast<short>(exponent);
    d.ndigits = static_cast<short>(digits.size());
    std::copy(digits.begin(), digits.end(), d.digits);
    return d;
}

inline dec_t null_dec()
{
    return raw(-1, 0, {});
}

inline dec_t zero_dec()
{
    return raw(1, -64, {});
}

// Plain decimal text ("-123.45", "1e20" not accepted) to a normalised record,
// aligning the digits on base-100 pairs around the point by hand.
inline dec_t dec(const std::string &text)
{
    const bool has_sign = text[0] == '-' || text[0] == '+';
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string ip = text.substr(has_sign, point - has_sign);
    std::string fp = point < text.size() ? text.substr(point + 1) : "";
    ip.insert(0, ip.size() % 2, '0');
    fp.append(fp.size() % 2, '0');
    const std::string all = ip + fp;
    char bytes[128];
    const int n = static_cast<int>(all.size() / 2);
    for (int i = 0; i < n; ++i)
        bytes[i] = static_cast<char>((all[2 * i] - '0') * 10 + (all[2 * i + 1] - '0'));
    dec_t d;
    std::memset(&d, 0x5A, sizeof d);
    decload(&d, text[0] == '-' ? 0 : 1, static_cast<int>(ip.size() / 2), bytes, n);
    return d;
}

// 10^k as a record.
inline dec_t pow10(int k)
{
    const int e = k >= 0 ? k / 2 : -((-k + 1) / 2); // k / 2 rounded down
    return raw(1, e + 1, {k == 2 * e ? 1 : 10});
}

inline dec_t from_i128(i128 v)
{
    char bytes[20];
    int n = 0;
    for (i128 m = v < 0 ? -v : v; m != 0; m /= 100)
        bytes[n++] = static_cast<char>(m % 100);
    std::reverse(bytes, bytes + n);
    dec_t d;
    decload(&d, v < 0 ? 0 : 1, n, bytes, n);
    return d;
}

// The integer a record holds; the record must be an integer.
inline i128 to_i128(const dec_t &d)
{
    i128 v = 0;
    for (int i = 0; i < d.exponent; ++i)
        v = v * 100 + (i < d.ndigits ? static_cast<unsigned char>(d.digits[i]) : 0);
    return d.sign == 0 ? -v : v;
}

inline std::string show(const dec_t &d)
{
    std::string s =
        "{sign " + std::to_string(d.sign) + ", exp " + std::to_string(d.exponent) + ", digits";
    for (int i = 0; i < d.ndigits && i < QMR_DECSIZE; ++i)
        s += " " + std::to_string(static_cast<unsigned char>(d.digits[i]));
    return s + "}";
}

inline std::string show(i128 v)
{
    std::string s;
    for (i128 m = v < 0 ? -v : v; m != 0 || s.empty(); m /= 10)
        s.insert(s.begin(), static_cast<char>('0' + static_cast<int>(m % 10)));
    return v < 0 ? "-" + s : s;
}

// Same value representation: sign, exponent, digit count and held digits.
inline bool same(const dec_t &a, const dec_t &b)
{
    return a.sign == b.sign && a.exponent == b.exponent && a.ndigits == b.ndigits &&
           std::memcmp(a.digits, b.digits, static_cast<std::size_t>(a.ndigits)) == 0;
}

// Edge-biased generators: digit runs favouring 0, 1, 49, 50, 99, lengths
// favouring 1, 15, 16, exponents favouring the limits.
struct Gen {
    std::mt19937_64 rng;
    explicit Gen(std::uint64_t seed) : rng(seed) {}

    int uniform(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

    // One of `edge` with odds 1 in `one_in`, else uniform in [lo, hi].
    template <std::size_t N> int biased(const int (&edge)[N], int one_in, int lo, int hi)
    {
        return uniform(0, one_in - 1) == 0 ? edge[uniform(0, static_cast<int>(N) - 1)]
                                           : uniform(lo, hi);
    }

    int digit()
    {
        static constexpr int edge[] = {0, 1, 9, 10, 49, 50, 51, 90, 98, 99};
        return biased(edge, 3, 0, 99);
    }

    int length()
    {
        static constexpr int edge[] = {1, 2, 15, 16, 16};
        return biased(edge, 2, 1, 16);
    }

    int exponent()
    {
        static constexpr int edge[] = {-64, -63, -62, 0, 1, 61, 62, 63};
        return biased(edge, 4, -64, 63);
    }

    // A normalised non-zero value with the given exponent.
    dec_t value_at(int exponent)
    {
        const int n = length();
        char bytes[QMR_DECSIZE];
        for (int i = 0; i < n; ++i)
            bytes[i] = static_cast<char>(digit());
        if (bytes[0] == 0)
            bytes[0] = static_cast<char>(uniform(1, 99));
        if (bytes[n - 1] == 0)
            bytes[n - 1] = static_cast<char>(uniform(1, 99));
        dec_t d;
        std::memset(&d, 0, sizeof d);
        decload(&d, uniform(0, 1), exponent, bytes, n);
        return d;
    }

    dec_t value() { return uniform(0, 30) == 0 ? zero_dec() : value_at(exponent()); }

    // An integer of up to max_decimal decimal digits, often all 9s or a power
    // of 10 (or 5 times one).
    i128 integer(int max_decimal)
    {
        const int nd = uniform(1, max_decimal), kind = uniform(0, 5);
        i128 v = 0;
        for (int i = 0; i < nd; ++i) {
            const int dd = uniform(0, 9);
            v = v * 10 + (kind == 0 ? 9 : kind == 1 ? i == 0 : kind == 2 ? 5 * (i == 0) : dd);
        }
        return uniform(0, 1) ? -v : v;
    }
};

} // namespace dectest

#endif
