// Differential checks of the decimal routines against the straightforward
// reference copy: every byte of every result record and every return code must
// agree, on edge-biased random operands, aliased results and garbage bytes.
#include "dec_testutil.h"
#include "decimal_reference.hpp"

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace dectest;

namespace
{

std::string hex(const void *p, std::size_t n)
{
    std::string s;
    char buf[4];
    for (std::size_t i = 0; i < n; ++i) {
        std::snprintf(buf, sizeof buf, "%02X ", static_cast<const unsigned char *>(p)[i]);
        s += buf;
    }
    return s;
}

std::string rec(const dec_t &d)
{
    return show(d) + " [" + hex(&d, sizeof d) + "]";
}

// Operands: normal values of every length and exponent, plus the shapes that
// reach the odd paths: runs of 99, carry results with trailing zeros, leading
// zero digits, zeros of either sign, nulls, earlier results; the digit bytes
// past ndigits always hold garbage.
struct Operands {
    Gen g;
    std::vector<dec_t> pool;
    explicit Operands(std::uint64_t seed) : g(seed) {}

    dec_t shaped(int exponent)
    {
        dec_t d = g.value_at(exponent);
        const int kind = g.uniform(0, 99), n = g.length();
        if (kind < 8) { // a run of 99s, maybe ending in a 50
            d.ndigits = static_cast<short>(n);
            std::memset(d.digits, 99, static_cast<std::size_t>(n));
            if (g.uniform(0, 1))
                d.digits[n - 1] = 50;
        } else if (kind < 14) { // a round-up carry result: 16 digits, zeros at the end
            d.ndigits = 16;
            std::memset(d.digits, 0, 16);
            d.digits[0] = static_cast<char>(g.uniform(0, 3) == 0 ? 1 : g.uniform(1, 99));
        } else if (kind < 18) { // leading zero digits
            d.ndigits = static_cast<short>(n < 16 ? n + 1 : 16);
            std::memmove(d.digits + 1, d.digits, QMR_DECSIZE - 1);
            d.digits[0] = 0;
        } else if (kind < 23) { // short, as money amounts are
            d.ndigits = static_cast<short>(g.uniform(1, 3));
            if (d.digits[d.ndigits - 1] == 0)
                d.digits[d.ndigits - 1] = 1;
        }
        return d;
    }

    dec_t next(int exponent)
    {
        const int kind = g.uniform(0, 99);
        dec_t d;
        if (kind < 2) {
            d = null_dec();
            if (g.uniform(0, 1)) { // only the sign marks a null
                d.exponent = static_cast<short>(g.uniform(-64, 63));
                d.ndigits = static_cast<short>(g.uniform(0, 16));
            }
        } else if (kind < 5) {
            d = zero_dec();
            d.sign = static_cast<short>(g.uniform(0, 1));
        } else if (kind < 25 && !pool.empty()) {
            d = pool[static_cast<std::size_t>(g.uniform(0, static_cast<int>(pool.size()) - 1))];
        } else {
            d = shaped(exponent);
        }
        for (int i = d.ndigits; i < QMR_DECSIZE; ++i)
            d.digits[i] = static_cast<char>(g.uniform(0, 255));
        return d;
    }

    dec_t first() { return next(g.exponent()); }

    // Often near a's exponent, so that digit runs overlap or just touch.
    dec_t second(const dec_t &a)
    {
        if (g.uniform(0, 2) == 0)
            return first();
        return next(std::clamp(a.exponent + g.uniform(-18, 18), -64, 63));
    }

    void keep(const dec_t &r)
    {
        if (r.sign == -1 || decverify(&r) != 0)
            return;
        if (pool.size() < 512)
            pool.push_back(r);
        else
            pool[static_cast<std::size_t>(g.uniform(0, 511))] = r;
    }

    dec_t junk()
    {
        dec_t d;
        for (std::size_t i = 0; i < sizeof d; ++i)
            reinterpret_cast<unsigned char *>(&d)[i] =
                static_cast<unsigned char>(g.uniform(0, 255));
        return d;
    }

    int scale() { return g.uniform(0, 3) == 0 ? g.uniform(-70, 140) : g.uniform(-6, 8); }
};

// Where a failure happened, printed only when an assertion fails: the
// operands, and the scale or the digit run a call took.
struct Where {
    std::uint64_t seed;
    int iter;
    const dec_t *a, *b;
    int scale = 0;
    const char *run = nullptr;
    int count = 0;
};

std::ostream &operator<<(std::ostream &os, const Where &w)
{
    os << "seed " << w.seed << " iteration " << w.iter << "\n a=" << rec(*w.a);
    if (w.b != nullptr)
        os << "\n b=" << rec(*w.b);
    if (w.run != nullptr)
        os << "\n run " << hex(w.run, static_cast<std::size_t>(w.count));
    return os << "\n scale " << w.scale << "\n ";
}

// Runs call(record, true) (the library) and call(record, false) (the
// reference), each on its own copy of `start`, and requires the same return
// code and the same bytes in the whole record; the library's record goes to
// the operand pool when one is given.
template <typename Call>
void agree(const Where &w, const char *name, const char *how, const dec_t &start, Operands *pool,
           Call call)
{
    dec_t r1 = start, r2 = start;
    const int c1 = call(r1, true), c2 = call(r2, false);
    ASSERT_EQ(c1, c2) << w << name << how;
    ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
        << w << name << how << " " << rec(r1) << " want " << rec(r2);
    if (pool != nullptr)
        pool->keep(r1);
}

using BinOp = int (*)(const dec_t *, const dec_t *, dec_t *) noexcept;

// The oracle divides by its trial divisor, the first two digits of b: a divisor
// whose first two digits are both zero is outside what either routine handles.
bool divisible_by(const dec_t &b)
{
    if (b.sign == -1 || b.ndigits == 0)
        return true;
    return b.digits[0] != 0 || (b.ndigits > 1 && b.digits[1] != 0);
}

} // namespace

// Each operation into a garbage-filled result, then with the result aliasing
// a, b, and both operands the same record.
TEST(DecOracle, ArithmeticMatchesReference)
{
    const struct {
        const char *name;
        BinOp lib, oracle;
    } ops[] = {{"decadd", decadd, ref::decadd},
               {"decsub", decsub, ref::decsub},
               {"decmul", decmul, ref::decmul},
               {"decdiv", decdiv, ref::decdiv}};
    for (std::uint64_t seed : {1u, 2u, 3u}) {
        Operands gen(seed);
        for (int iter = 0; iter < 100000 && !HasFatalFailure(); ++iter) {
            const dec_t a = gen.first(), b = gen.second(a), junk = gen.junk();
            const Where w{seed, iter, &a, &b};
            for (const auto &op : ops) {
                const bool div = op.lib == decdiv;
                if (div && !divisible_by(b))
                    continue;
                const auto fn = [&](bool lib) { return lib ? op.lib : op.oracle; };
                agree(w, op.name, "", junk, &gen,
                      [&](dec_t &r, bool lib) { return fn(lib)(&a, &b, &r); });
                agree(w, op.name, " into a", a, nullptr,
                      [&](dec_t &x, bool lib) { return fn(lib)(&x, &b, &x); });
                agree(w, op.name, " into b", b, nullptr,
                      [&](dec_t &x, bool lib) { return fn(lib)(&a, &x, &x); });
                if (!div || divisible_by(a))
                    agree(w, op.name, " a with a into a", a, nullptr,
                          [&](dec_t &x, bool lib) { return fn(lib)(&x, &x, &x); });
            }
        }
    }
}

TEST(DecOracle, CompareRoundTruncMatchReference)
{
    const std::uint64_t seed = 11;
    Operands gen(seed);
    for (int iter = 0; iter < 200000 && !HasFatalFailure(); ++iter) {
        const dec_t a = gen.first(), b = gen.second(a);
        Where w{seed, iter, &a, &b};
        // a near twin of a: one digit, or the digit count, or the sign moved,
        // so that long equal prefixes reach the digit comparison
        dec_t twin = a;
        const int change = gen.g.uniform(0, 3);
        if (change == 0 && twin.ndigits > 0)
            twin.digits[gen.g.uniform(0, twin.ndigits - 1)] =
                static_cast<char>(gen.g.uniform(0, 99));
        else if (change == 1 && twin.ndigits > 1)
            twin.ndigits = static_cast<short>(twin.ndigits - 1);
        else if (change == 2 && twin.ndigits > 0 && twin.ndigits < QMR_DECSIZE)
            twin.digits[twin.ndigits++] = static_cast<char>(gen.g.uniform(0, 99));
        else if (twin.sign != -1)
            twin.sign = static_cast<short>(1 - twin.sign);
        using Pair = std::pair<const dec_t *, const dec_t *>;
        for (const auto &[x, y] : {Pair{&a, &b}, Pair{&a, &a}, Pair{&a, &twin}, Pair{&twin, &a}})
            ASSERT_EQ(deccmp(x, y), ref::deccmp(x, y)) << w << rec(*x) << " with " << rec(*y);
        w.scale = gen.scale();
        agree(w, "decround", "", a, &gen, [&](dec_t &x, bool lib) {
            (lib ? decround : ref::decround)(&x, w.scale);
            return 0;
        });
        agree(w, "dectrunc", "", a, nullptr, [&](dec_t &x, bool lib) {
            (lib ? dectrunc : ref::dectrunc)(&x, w.scale);
            return 0;
        });
    }
}

TEST(DecOracle, LoadAndStoredFormMatchReference)
{
    const std::uint64_t seed = 21;
    Operands gen(seed);
    Gen &g = gen.g;
    for (int iter = 0; iter < 200000 && !HasFatalFailure(); ++iter) {
        const dec_t junk = gen.junk();
        // a digit run of up to 40 bytes, zeros and 99s at either end
        char bytes[40];
        const int count = g.uniform(0, 3) == 0 ? g.uniform(0, 40) : g.uniform(14, 19);
        for (int i = 0; i < count; ++i) {
            const int k = g.uniform(0, 9);
            bytes[i] = static_cast<char>(k < 3 ? 0 : k < 6 ? 99 : g.digit());
        }
        const int sign = g.uniform(0, 9) == 0 ? -1 : g.uniform(0, 1);
        const int exponent = g.uniform(-80, 80);
        const Where w{seed, iter, &junk, nullptr, 0, bytes, count};
        agree(w, "decload", "", junk, nullptr, [&](dec_t &r, bool lib) {
            return (lib ? decload : ref::decload)(&r, sign, exponent, bytes, count);
        });
        // the run may be the result's own digit bytes
        const int own = std::min(count, QMR_DECSIZE);
        dec_t start = junk;
        std::memcpy(start.digits, bytes, static_cast<std::size_t>(own));
        agree(w, "decload", " own digits", start, nullptr, [&](dec_t &r, bool lib) {
            return (lib ? decload : ref::decload)(&r, sign, exponent, r.digits, own);
        });

        // stored bytes of a random length, read back; then a value stored
        const int len = g.uniform(1, 20);
        agree(w, "lddecimal", "", junk, nullptr, [&](dec_t &r, bool lib) {
            return (lib ? lddecimal : ref::lddecimal)(bytes, std::min(len, count), &r);
        });
        const dec_t v = gen.first();
        char s1[20], s2[20];
        std::memset(s1, 0x5A, sizeof s1);
        std::memset(s2, 0x5A, sizeof s2);
        stdecimal(&v, s1, len);
        ref::stdecimal(&v, s2, len);
        ASSERT_EQ(std::memcmp(s1, s2, sizeof s1), 0)
            << w << "stdecimal " << rec(v) << " into " << len;
    }
}

TEST(DecOracle, SquareRootMatchesReference)
{
    const std::uint64_t seed = 31;
    Gen g(seed);
    dec_t start;
    std::memset(&start, 0x33, sizeof start);
    for (int iter = 0; iter < 3000 && !HasFatalFailure(); ++iter) {
        dec_t x = g.value_at(g.exponent());
        if (g.uniform(0, 3) == 0)
            x.sign = 0;
        agree(Where{seed, iter, &x, nullptr}, "decsqrt", "", start, nullptr,
              [&](dec_t &r, bool lib) { return (lib ? decsqrt : ref::decsqrt)(&x, &r); });
    }
}
