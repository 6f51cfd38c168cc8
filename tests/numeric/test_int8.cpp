// INT8: arithmetic, comparison and the narrow conversions against a 128-bit
// oracle on edge-biased operands; the float conversion against the exact text
// route; the stored form, decimal and text conversions by their rules.
#include "qmr/int8.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <thread>

#include "numeric/dec_testutil.h"
#include "platform/alloc.hpp"

namespace
{

using i128 = __int128;
constexpr i128 kMax = (i128{1} << 63) - 1;

qmr_int8_t rec(i128 v)
{
    const auto m = static_cast<unsigned long long>(v < 0 ? -v : v);
    return {{static_cast<unsigned>(m), static_cast<unsigned>(m >> 32)},
            static_cast<short>(v < 0 ? -1 : 1)};
}

i128 val(const qmr_int8_t &r)
{
    const i128 m = (i128{r.data[1]} << 32) | r.data[0];
    return r.sign == -1 ? -m : m;
}

qmr_int8_t garbage()
{
    return {{0x5A5A5A5Au, 0x5A5A5A5Au}, 0x5A5A};
}

bool same(const qmr_int8_t &a, const qmr_int8_t &b)
{
    return a.sign == b.sign && a.data[0] == b.data[0] && a.data[1] == b.data[1];
}

// Values favouring 0, 1, the 16- and 32-bit limits, the square root of the
// range and its ends.
i128 next(std::mt19937_64 &rng)
{
    static const i128 edge[] = {0,          1,          32767,         32768,
                                2147483647, 2147483648, 4294967295LL,  4294967296LL,
                                3037000499, 3037000500, i128{1} << 62, kMax};
    i128 v = static_cast<i128>(rng() >> (1 + rng() % 63));
    if (rng() % 3 == 0)
        v = edge[rng() % std::size(edge)];
    return (rng() & 1) ? -v : v;
}

// The text route: x's exact decimal expansion with its fraction dropped, read
// as an integer; false when that lies beyond the range.
bool text_route(double x, i128 *out)
{
    char text[400];
    std::snprintf(text, sizeof text, "%.1f", std::trunc(x));
    const char *p = text + (text[0] == '-');
    if (std::strchr(p, '.') - p > 19)
        return false;
    i128 v = 0;
    for (; *p != '.'; ++p)
        v = v * 10 + (*p - '0');
    *out = text[0] == '-' ? -v : v;
    return v <= kMax;
}

int order(i128 x, i128 y)
{
    return (x > y) - (x < y);
}

} // namespace

// Checked operations refuse what does not fit and leave the result alone;
// the unchecked ones wrap as the native value does; division truncates toward
// zero with the remainder taking the dividend's sign.
TEST(Int8Arith, TwoOperandsAgreeWithWideOracle)
{
    struct Op {
        int (*checked)(const qmr_int8_t *, const qmr_int8_t *, qmr_int8_t *);
        int (*general)(const qmr_int8_t *, const qmr_int8_t *, qmr_int8_t *, int);
        i128 (*exact)(i128, i128);
    };
    const Op ops[] = {
        {qmr_int8add, gint8add, [](i128 x, i128 y) { return x + y; }},
        {qmr_int8sub, gint8sub, [](i128 x, i128 y) { return x - y; }},
        {qmr_int8mul, gint8mul, [](i128 x, i128 y) { return x * y; }},
    };
    std::mt19937_64 rng(1);
    for (int i = 0; i < 30000; ++i) {
        const i128 x = next(rng), y = i % 7 ? next(rng) : x;
        const qmr_int8_t a = rec(x), b = rec(y);
        SCOPED_TRACE(dectest::show(x) + " op " + dectest::show(y));
        for (const Op &op : ops) {
            const i128 want = op.exact(x, y);
            const bool fits = want >= -kMax && want <= kMax;
            qmr_int8_t r = garbage();
            ASSERT_EQ(op.checked(&a, &b, &r), fits ? 0 : QMR_E_NOFIT);
            ASSERT_TRUE(fits ? val(r) == want && r.sign == (want < 0 ? -1 : 1)
                             : same(r, garbage())); // untouched on an error
            // unchecked: the native value wraps; the wrapped null pattern is null
            const auto wrapped = static_cast<long long>(static_cast<unsigned long long>(want));
            ASSERT_EQ(op.general(&a, &b, &r, 0), 0);
            ASSERT_TRUE(wrapped == INT64_MIN ? same(r, const_int8null) : val(r) == wrapped);
            // the result may be an operand
            qmr_int8_t alias = a;
            ASSERT_EQ(op.checked(&alias, &b, &alias), fits ? 0 : QMR_E_NOFIT);
            ASSERT_EQ(val(alias), fits ? want : x);
        }
        qmr_int8_t q = garbage(), rem = garbage();
        ASSERT_EQ(gint8div(&a, &b, &q, &rem), y == 0 ? QMR_E_DIVZERO : 0);
        if (y != 0) {
            ASSERT_TRUE(val(q) == x / y && val(rem) == x % y);
            ASSERT_EQ(qmr_int8div(&a, &b, &q), 0);
            ASSERT_EQ(val(q), x / y);
        }
        const i128 ax = x < 0 ? -x : x, ay = y < 0 ? -y : y;
        ASSERT_EQ(qmr_int8cmp(&a, &b), order(x, y));
        ASSERT_EQ(qmr_int8cmp_det(&a, &b), order(x, y));
        ASSERT_EQ(int8ucmp(&a, &b), order(ax, ay));
        ASSERT_EQ(qmr_int8iszero(&a), x == 0);
    }
    qmr_int8_t r, rem, neg_zero = rec(0);
    EXPECT_EQ(qmr_int8add(&const_int8max, &const_int8one, &r), QMR_E_NOFIT);
    EXPECT_EQ(qmr_int8sub(&const_int8min, &const_int8one, &r), QMR_E_NOFIT);
    EXPECT_EQ(gint8add(&const_int8max, &const_int8one, &r, 0), 0);
    EXPECT_TRUE(same(r, const_int8null));
    EXPECT_EQ(qmr_int8mul(&const_int8min, &const_int8negone, &r), 0);
    EXPECT_TRUE(same(r, const_int8max));
    neg_zero.sign = -1;
    const qmr_int8_t seven = rec(7), m_two = rec(-2);
    EXPECT_EQ(qmr_int8div(&seven, &neg_zero, &r), QMR_E_DIVZERO); // whatever its sign
    ASSERT_EQ(gint8div(&seven, &m_two, &r, &rem), 0);
    EXPECT_TRUE(val(r) == -3 && val(rem) == 1);
}

// A null operand gives a null result and a -2 comparison (0 and last in the
// deterministic order); a high word beyond 2^63-1 is refused.
TEST(Int8Arith, NullAndMalformedOperands)
{
    const qmr_int8_t five = rec(5);
    using Op = int (*)(const qmr_int8_t *, const qmr_int8_t *, qmr_int8_t *);
    for (Op op : {Op{qmr_int8add}, Op{qmr_int8sub}, Op{qmr_int8mul}, Op{qmr_int8div}}) {
        qmr_int8_t r = garbage(), s = garbage();
        EXPECT_EQ(op(&const_int8null, &five, &r), 0);
        EXPECT_EQ(op(&five, &const_int8null, &s), 0);
        EXPECT_TRUE(same(r, const_int8null) && same(s, const_int8null));
    }
    qmr_int8_t q = garbage(), rem = garbage();
    EXPECT_EQ(gint8div(&const_int8null, &const_int8zero, &q, &rem), 0);
    EXPECT_TRUE(same(q, const_int8null) && same(rem, garbage())); // rem not written
    EXPECT_EQ(qmr_int8cmp(&const_int8null, &const_int8null), -2);
    EXPECT_EQ(qmr_int8cmp(&const_int8one, &const_int8null), -2);
    EXPECT_EQ(qmr_int8cmp_det(&const_int8null, &const_int8null), 0);
    EXPECT_EQ(qmr_int8cmp_det(&const_int8null, &const_int8min), -1);
    EXPECT_EQ(qmr_int8cmp_det(&const_int8min, &const_int8null), 1);
    EXPECT_EQ(qmr_int8iszero(&const_int8null), 0);

    qmr_int8_t bad = rec(1), r;
    bad.data[1] = 0x80000000u; // beyond 2^63-1
    std::int64_t v;
    char text[32];
    EXPECT_EQ(qmr_int8add(&bad, &five, &r), QMR_E_NOFIT);
    EXPECT_EQ(qmr_int8mul(&five, &bad, &r), QMR_E_NOFIT);
    EXPECT_EQ(qmr_int8div(&bad, &five, &r), QMR_E_NOFIT);
    EXPECT_EQ(serial8inc(&bad, &r), QMR_E_NOFIT);
    EXPECT_EQ(int8toqmr_off_t(&bad, &v), QMR_E_NOFIT);
    EXPECT_EQ(qmr_int8tostr(&bad, text, 32), QMR_E_NOFIT);

    // serial8inc: after the maximum it starts again at 1; null stays null (-2)
    const std::pair<qmr_int8_t, qmr_int8_t> serial[] = {{const_int8max, rec(1)},
                                                        {const_int8negone, rec(0)},
                                                        {rec(4294967295LL), rec(4294967296LL)},
                                                        {const_int8null, const_int8null}};
    for (const auto &[a, want] : serial) {
        r = garbage();
        EXPECT_EQ(serial8inc(&a, &r), a.sign == 0 ? -2 : 0);
        EXPECT_TRUE(same(r, want));
    }
}

// Each narrow form keeps what fits, refuses the rest unwritten, and has its own
// null standing for the INT8 null both ways; the wide forms, double, float,
// decimal and stored bytes carry every value.
TEST(Int8Convert, OneOperandAgreesWithWideOracle)
{
    std::mt19937_64 rng(4);
    for (int i = 0; i < 30000; ++i) {
        const i128 x = next(rng);
        const qmr_int8_t a = rec(x);
        SCOPED_TRACE(dectest::show(x));
        std::int32_t l = 99, l4 = 99;
        int n = 99;
        short s = 99;
        const bool fits32 = x >= -2147483647LL && x <= 2147483647LL;
        const bool fits16 = x >= -32767 && x <= 32767;
        ASSERT_EQ(qmr_int8tolong(&a, &l), fits32 ? 0 : QMR_E_NOFIT);
        ASSERT_EQ(qmr_int8toint4(&a, &l4), fits32 ? 0 : QMR_E_NOFIT);
        ASSERT_EQ(qmr_int8toint(&a, &n), fits16 ? 0 : QMR_E_SMALLINTRANGE);
        ASSERT_EQ(qmr_int8toint2(&a, &s), fits16 ? 0 : QMR_E_SMALLINTRANGE);
        ASSERT_TRUE(l == (fits32 ? x : 99) && l4 == l && n == (fits16 ? x : 99) && s == n);
        unsigned hi, lo;
        qmr_int8high(&a, &hi);
        qmr_int8low(&a, &lo);
        ASSERT_EQ((i128{hi} << 32 | lo), x < 0 ? -x : x);
        qmr_off_t o;
        std::int64_t k;
        ASSERT_EQ(int8toqmr_off_t(&a, &o), 0);
        ASSERT_EQ(qmr_int8tokps_int8(&a, &k), 0);
        ASSERT_TRUE(o == x && k == x);
        qmr_int8_t b1 = garbage(), b2 = garbage(), b3 = garbage(), b4 = garbage();
        ASSERT_EQ(int8cvqmr_off_t(o, &b1), 0);
        qmr_int8cvkps_int8(k, &b2);
        ASSERT_TRUE(same(b1, a) && same(b2, a));
        if (fits32) {
            qmr_int8cvlong(l, &b3);
            qmr_int8cvint(static_cast<int>(x), &b4);
            ASSERT_TRUE(same(b3, a));
            ASSERT_TRUE(same(b4, x == -32768 ? const_int8null : a));
        }
        double dbl;
        float flt;
        ASSERT_EQ(qmr_int8todbl(&a, &dbl), 0);
        ASSERT_EQ(dbl, static_cast<double>(static_cast<long long>(x))); // the nearest double
        ASSERT_EQ(qmr_int8toflt(&a, &flt), 0);
        ASSERT_EQ(flt, static_cast<float>(dbl));
        dec_t d, d2;
        ASSERT_EQ(qmr_int8todec(&a, &d), 0);
        ASSERT_EQ(deccvint8(&a, &d2), 0);
        ASSERT_TRUE(dectest::same(d, dectest::from_i128(x)) && dectest::same(d2, d));
        qmr_int8_t back = garbage(), loaded = garbage();
        ASSERT_EQ(qmr_int8cvdec(&d, &back), 0);
        char bytes[QMR_INT8_STORED_SIZE];
        stint8(&a, bytes);
        ldint8(bytes, &loaded);
        ASSERT_TRUE(same(back, a) && same(loaded, a));
    }
    qmr_int8_t r1 = garbage(), r2 = garbage(), r3 = garbage();
    qmr_int8cvlong(INT32_MIN, &r1);
    qmr_int8cvint(-32768, &r2);
    int8cvqmr_off_t(INT64_MIN, &r3);
    EXPECT_TRUE(same(r1, const_int8null) && same(r2, const_int8null) && same(r3, const_int8null));
    std::int32_t l;
    int n;
    short s;
    unsigned hi, lo;
    qmr_off_t o;
    double x;
    float f;
    EXPECT_EQ(qmr_int8tolong(&const_int8null, &l) + qmr_int8toint(&const_int8null, &n) +
                  qmr_int8toint2(&const_int8null, &s) + qmr_int8high(&const_int8null, &hi) +
                  qmr_int8low(&const_int8null, &lo) + int8toqmr_off_t(&const_int8null, &o) +
                  qmr_int8todbl(&const_int8null, &x) + qmr_int8toflt(&const_int8null, &f),
              0);
    EXPECT_TRUE(l == INT32_MIN && n == -32768 && s == -32768);
    EXPECT_TRUE(hi == 0x80000000u && lo == 0x80000000u && o == INT64_MIN);
    EXPECT_EQ(std::memcmp(&x, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8), 0);
    EXPECT_EQ(std::memcmp(&f, "\xFF\xFF\xFF\xFF", 4), 0);
    EXPECT_TRUE(same(const_int8max, rec(kMax)) && same(const_int8min, rec(-kMax)) &&
                same(const_int8negone, rec(-1)) && same(const_int8zero, rec(0)));

    char bytes[QMR_INT8_STORED_SIZE];
    qmr_int8_t back = garbage();
    const qmr_int8_t m5 = rec(-5);
    stint8(&m5, bytes);
    EXPECT_EQ(std::memcmp(bytes, "\xFF\xFF\0\0\0\x05\0\0\0\0", 10), 0);
    stint8(&const_int8max, bytes);
    EXPECT_EQ(std::memcmp(bytes, "\0\x01\xFF\xFF\xFF\xFF\x7F\xFF\xFF\xFF", 10), 0);
    stint8(&const_int8null, bytes);
    ldint8(bytes, &back);
    EXPECT_TRUE(same(back, const_int8null));
}

TEST(Int8Float, FromDoubleMatchesTheTextRoute)
{
    std::mt19937_64 rng(6);
    for (int i = 0; i < 30000; ++i) {
        double x = std::ldexp(static_cast<double>(rng() >> 11), static_cast<int>(rng() % 80) - 53);
        if (i < 8) // the edges: 2^63 does not fit, the double below it does
            x = std::nextafter(9223372036854775808.0, i < 4 ? 0.0 : 1e30);
        x = (rng() & 1) ? -x : x;
        for (bool narrow : {false, true}) {
            const double y = narrow ? static_cast<double>(static_cast<float>(x)) : x;
            qmr_int8_t r = garbage();
            i128 want;
            const int rc = narrow ? qmr_int8cvflt(static_cast<float>(x), &r) : qmr_int8cvdbl(x, &r);
            if (text_route(y, &want)) {
                ASSERT_EQ(rc, 0) << y;
                ASSERT_TRUE(val(r) == want && r.sign == (want < 0 ? -1 : 1)) << y; // -0.5: +0
            } else {
                ASSERT_EQ(rc, QMR_E_NOFIT) << y;
                ASSERT_TRUE(same(r, garbage()));
            }
        }
    }
    qmr_int8_t r = garbage();
    EXPECT_EQ(qmr_int8cvdbl(std::numeric_limits<double>::quiet_NaN(), &r), QMR_E_BADFLOAT);
    EXPECT_EQ(qmr_int8cvdbl(-HUGE_VAL, &r), QMR_E_BADFLOAT);
    EXPECT_EQ(qmr_int8cvflt(std::numeric_limits<float>::infinity(), &r), QMR_E_BADFLOAT);
    double dnull;
    float fnull;
    std::memset(&dnull, 0xFF, sizeof dnull); // the FLOAT null, itself a NaN
    std::memset(&fnull, 0xFF, sizeof fnull);
    EXPECT_EQ(qmr_int8cvdbl(dnull, &r), 0);
    EXPECT_TRUE(same(r, const_int8null));
    r = garbage();
    EXPECT_EQ(qmr_int8cvflt(fnull, &r), 0);
    EXPECT_TRUE(same(r, const_int8null));
}

// The caller's decimal loses its fraction in place, before the range test.
TEST(Int8Decimal, TruncatedInPlace)
{
    const struct {
        const char *in;
        int rc;
        const char *after; // the caller's decimal afterwards, and the value when rc is 0
    } rows[] = {
        {"12.9", 0, "12"},
        {"-100.5", 0, "-100"},
        {"-0.5", 0, "0"},
        {"9223372036854775807.5", 0, "9223372036854775807"},
        {"9223372036854775808", QMR_E_NOFIT, "9223372036854775808"},
        {"-9223372036854775808.5", QMR_E_NOFIT, "-9223372036854775808"},
        {"100000000000000000000.5", QMR_E_NOFIT, "100000000000000000000.5"},
    };
    for (const auto &row : rows) {
        dec_t d = dectest::dec(row.in), got;
        qmr_int8_t r = garbage();
        ASSERT_EQ(qmr_int8cvdec(&d, &r), row.rc) << row.in;
        EXPECT_TRUE(dectest::same(d, dectest::dec(row.after))) << dectest::show(d);
        EXPECT_EQ(decverify(&d), 0);
        qmr_int8todec(&r, &got);
        EXPECT_TRUE(row.rc ? same(r, garbage()) : dectest::same(got, d)) << row.in;
        EXPECT_EQ(r.sign, row.rc ? garbage().sign : row.after[0] == '-' ? -1 : 1);
    }
    dec_t dn = dectest::null_dec();
    qmr_int8_t r = garbage();
    EXPECT_EQ(qmr_int8cvdec(&dn, &r), 0);
    EXPECT_TRUE(same(r, const_int8null));
    EXPECT_EQ(qmr_int8todec(&const_int8null, &dn), 0);
    EXPECT_EQ(dn.sign, -1);
}

TEST(Int8Text, WritesAndReadsThroughBigintText)
{
    const struct {
        qmr_int8_t a;
        int len, radix, rc;
        const char *field; // len + 1 bytes afterwards, from "q" filled
    } rows[] = {
        {rec(-42), 8, 10, 0, "-42     q"}, // blanks over the NUL
        {rec(-42), 3, 10, 0, "-42\0"},     // exactly len: the NUL stays at [len]
        {rec(-42), 2, 10, QMR_E_TEXTFIT, "**q"},
        {const_int8null, 5, 10, 0, "     q"}, // blanks and no NUL
        {rec(255), 20, 16, 0, "0x00000000000000ff  q"},
        {rec(255), 0, 16, 0, "q"},
    };
    for (const auto &row : rows) {
        char field[24];
        std::memset(field, 'q', sizeof field);
        EXPECT_EQ(int8toasc(&row.a, field, row.len, row.radix), row.rc);
        EXPECT_EQ(std::string(field, static_cast<std::size_t>(row.len) + 1),
                  std::string(row.field, static_cast<std::size_t>(row.len) + 1));
    }
    char field[8] = "qqqqqqq";
    EXPECT_EQ(qmr_int8toasc(&const_int8null, field, 4), 0);
    EXPECT_EQ(qmr_int8tostr(&const_int8null, field + 4, 2), 0);
    EXPECT_STREQ(field, "      q");
    qmr_int8_t r = garbage();
    EXPECT_EQ(qmr_int8cvasc("  ", 2, &r), 0);
    EXPECT_TRUE(same(r, const_int8null));
    r = garbage();
    EXPECT_EQ(qmr_int8cvasc("9223372036854775808", -1, &r), QMR_E_NOFIT);
    EXPECT_EQ(qmr_int8cvasc("12x", -1, &r), QMR_E_NOTNUMBER);
    EXPECT_TRUE(same(r, garbage()));
    EXPECT_EQ(qmr_int8cvasc("-1,234.9", -1, &r), 0);
    EXPECT_EQ(val(r), -1234);
}

// The conversions that need the thread context report -406 without one.
TEST(Int8Convert, NoThreadContext)
{
    int rc[3] = {};
    qmr_int8_t r = garbage();
    std::thread worker([&] {
        qmr::test_fail_alloc_after(1, true);
        dec_t d = dectest::dec("5");
        rc[0] = qmr_int8cvdbl(1.0, &r);
        rc[1] = qmr_int8cvflt(1.0f, &r);
        rc[2] = qmr_int8cvdec(&d, &r);
        qmr::test_fail_alloc_after(0);
    });
    worker.join();
    EXPECT_TRUE(rc[0] == QMR_E_NOMEM && rc[1] == QMR_E_NOMEM && rc[2] == QMR_E_NOMEM);
    EXPECT_TRUE(same(r, garbage()));
}
