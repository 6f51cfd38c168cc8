// Differential checks of the decimal routines against the straightforward
// reference copy: every byte of every result record and every return code must
// agree, on edge-biased random operands, aliased results and garbage bytes.
#include "dec_testutil.h"
#include "decimal_reference.hpp"

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

    void garbage(dec_t &d)
    {
        for (int i = d.ndigits; i < QMR_DECSIZE; ++i)
            d.digits[i] = static_cast<char>(g.uniform(0, 255));
    }

    dec_t shaped(int exponent)
    {
        dec_t d = g.value_at(exponent);
        const int kind = g.uniform(0, 99);
        const int n = g.length();
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
        std::memset(&d, 0, sizeof d);
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
        garbage(d);
        return d;
    }

    dec_t first() { return next(g.exponent()); }

    // Often near a's exponent, so that digit runs overlap or just touch.
    dec_t second(const dec_t &a)
    {
        if (g.uniform(0, 2) == 0)
            return next(g.exponent());
        int e = a.exponent + g.uniform(-18, 18);
        e = e < -64 ? -64 : e > 63 ? 63 : e;
        return next(e);
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

// Where a failure happened, printed only when an assertion fails.
struct Where {
    std::uint64_t seed;
    int iter;
    const dec_t *a, *b;
};

std::ostream &operator<<(std::ostream &os, const Where &w)
{
    os << "seed " << w.seed << " iteration " << w.iter << "\n a=" << rec(*w.a);
    if (w.b != nullptr)
        os << "\n b=" << rec(*w.b);
    return os << "\n ";
}

using BinOp = int (*)(const dec_t *, const dec_t *, dec_t *) noexcept;

struct OpPair {
    const char *name;
    BinOp lib, oracle;
};

// The oracle divides by its trial divisor, the first two digits of b: a divisor
// whose first two digits are both zero is outside what either routine handles.
bool divisible_by(const dec_t &b)
{
    if (b.sign == -1 || b.ndigits == 0)
        return true;
    return b.digits[0] != 0 || (b.ndigits > 1 && b.digits[1] != 0);
}

// One operation on (a, b) into a garbage-filled result, then with the result
// aliasing a, b, and both operands the same record.
void check_op(const OpPair &op, const dec_t &a, const dec_t &b, const dec_t &junk, Operands &ops,
              const Where &where)
{
    dec_t r1 = junk, r2 = junk;
    const int c1 = op.lib(&a, &b, &r1), c2 = op.oracle(&a, &b, &r2);
    ASSERT_EQ(c1, c2) << where << op.name;
    ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
        << where << op.name << " " << rec(r1) << " want " << rec(r2);
    ops.keep(r1);

    dec_t x1 = a, x2 = a;
    ASSERT_EQ(op.lib(&x1, &b, &x1), op.oracle(&x2, &b, &x2)) << where << op.name << " into a";
    ASSERT_EQ(std::memcmp(&x1, &x2, sizeof x1), 0)
        << where << op.name << " into a " << rec(x1) << " want " << rec(x2);

    x1 = b, x2 = b;
    ASSERT_EQ(op.lib(&a, &x1, &x1), op.oracle(&a, &x2, &x2)) << where << op.name << " into b";
    ASSERT_EQ(std::memcmp(&x1, &x2, sizeof x1), 0)
        << where << op.name << " into b " << rec(x1) << " want " << rec(x2);

    if (op.lib == decdiv && !divisible_by(a))
        return;
    x1 = a, x2 = a;
    ASSERT_EQ(op.lib(&x1, &x1, &x1), op.oracle(&x2, &x2, &x2))
        << where << op.name << " a with a into a";
    ASSERT_EQ(std::memcmp(&x1, &x2, sizeof x1), 0)
        << where << op.name << " a with a " << rec(x1) << " want " << rec(x2);
}

} // namespace

TEST(DecOracle, ArithmeticMatchesReference)
{
    const OpPair ops[] = {{"decadd", decadd, ref::decadd},
                          {"decsub", decsub, ref::decsub},
                          {"decmul", decmul, ref::decmul},
                          {"decdiv", decdiv, ref::decdiv}};
    for (std::uint64_t seed : {1u, 2u, 3u}) {
        Operands gen(seed);
        for (int iter = 0; iter < 100000; ++iter) {
            const dec_t a = gen.first(), b = gen.second(a), junk = gen.junk();
            for (const OpPair &op : ops) {
                if (op.lib == decdiv && !divisible_by(b))
                    continue;
                check_op(op, a, b, junk, gen, Where{seed, iter, &a, &b});
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(DecOracle, CompareRoundTruncMatchReference)
{
    const std::uint64_t seed = 11;
    Operands gen(seed);
    for (int iter = 0; iter < 200000; ++iter) {
        const dec_t a = gen.first(), b = gen.second(a);
        const Where where{seed, iter, &a, &b};
        ASSERT_EQ(deccmp(&a, &b), ref::deccmp(&a, &b)) << where;
        ASSERT_EQ(deccmp(&a, &a), ref::deccmp(&a, &a)) << where;
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
        ASSERT_EQ(deccmp(&a, &twin), ref::deccmp(&a, &twin)) << where << rec(twin);
        ASSERT_EQ(deccmp(&twin, &a), ref::deccmp(&twin, &a)) << where << rec(twin);
        const int s = gen.scale();
        dec_t r1 = a, r2 = a;
        decround(&r1, s);
        ref::decround(&r2, s);
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
            << where << "decround " << s << " " << rec(r1) << " want " << rec(r2);
        gen.keep(r1);
        r1 = a, r2 = a;
        dectrunc(&r1, s);
        ref::dectrunc(&r2, s);
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
            << where << "dectrunc " << s << " " << rec(r1) << " want " << rec(r2);
    }
}

TEST(DecOracle, LoadAndStoredFormMatchReference)
{
    const std::uint64_t seed = 21;
    Operands gen(seed);
    Gen &g = gen.g;
    for (int iter = 0; iter < 200000; ++iter) {
        const dec_t junk = gen.junk();
        const Where where{seed, iter, &junk, nullptr};
        // a digit run of up to 40 bytes, zeros and 99s at either end
        char bytes[40];
        const int count = g.uniform(0, 3) == 0 ? g.uniform(0, 40) : g.uniform(14, 19);
        for (int i = 0; i < count; ++i) {
            const int k = g.uniform(0, 9);
            bytes[i] = static_cast<char>(k < 3 ? 0 : k < 6 ? 99 : g.digit());
        }
        const int sign = g.uniform(0, 9) == 0 ? -1 : g.uniform(0, 1);
        const int exponent = g.uniform(-80, 80);
        dec_t r1 = junk, r2 = junk;
        ASSERT_EQ(decload(&r1, sign, exponent, bytes, count),
                  ref::decload(&r2, sign, exponent, bytes, count))
            << hex(bytes, static_cast<std::size_t>(count));
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
            << where << hex(bytes, static_cast<std::size_t>(count)) << rec(r1) << " want "
            << rec(r2);
        // the run may be the result's own digit bytes
        const int own = count < QMR_DECSIZE ? count : QMR_DECSIZE;
        r1 = junk, r2 = junk;
        std::memcpy(r1.digits, bytes, static_cast<std::size_t>(own));
        std::memcpy(r2.digits, bytes, static_cast<std::size_t>(own));
        ASSERT_EQ(decload(&r1, sign, exponent, r1.digits, own),
                  ref::decload(&r2, sign, exponent, r2.digits, own))
            << where;
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
            << where << "own digits " << rec(r1) << " want " << rec(r2);

        // stored bytes of a random length, read back; then a value stored
        const int len = g.uniform(1, 20);
        r1 = junk, r2 = junk;
        ASSERT_EQ(lddecimal(bytes, len < count ? len : count, &r1),
                  ref::lddecimal(bytes, len < count ? len : count, &r2))
            << where;
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0)
            << where << "lddecimal " << rec(r1) << " want " << rec(r2);
        const dec_t v = gen.first();
        char s1[20], s2[20];
        std::memset(s1, 0x5A, sizeof s1);
        std::memset(s2, 0x5A, sizeof s2);
        stdecimal(&v, s1, len);
        ref::stdecimal(&v, s2, len);
        ASSERT_EQ(std::memcmp(s1, s2, sizeof s1), 0)
            << where << "stdecimal " << rec(v) << " into " << len;
    }
}

TEST(DecOracle, SquareRootMatchesReference)
{
    const std::uint64_t seed = 31;
    Gen g(seed);
    for (int iter = 0; iter < 3000; ++iter) {
        dec_t x = g.value_at(g.exponent());
        if (g.uniform(0, 3) == 0)
            x.sign = 0;
        const Where where{seed, iter, &x, nullptr};
        dec_t r1, r2;
        std::memset(&r1, 0x33, sizeof r1);
        std::memset(&r2, 0x33, sizeof r2);
        ASSERT_EQ(decsqrt(&x, &r1), ref::decsqrt(&x, &r2)) << where;
        ASSERT_EQ(std::memcmp(&r1, &r2, sizeof r1), 0) << where << rec(r1) << " want " << rec(r2);
    }
}
