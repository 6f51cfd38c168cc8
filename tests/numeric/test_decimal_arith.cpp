// Decimal arithmetic: the normaliser, the four operations run from tables with
// garbage and aliased results, differential checks against __int128, rounding,
// truncation, comparison properties, square root and the digit routines.
#include "dec_testutil.h"

#include "qmr/errors.h"

#include <vector>

using namespace dectest;

namespace
{

using BinOp = int (*)(const dec_t *, const dec_t *, dec_t *);

struct BinRow {
    const char *name;
    BinOp op;
    dec_t a, b, want;
    int code;
};

// Runs one row into a garbage-filled result, then with the result aliasing a
// and then b; an operand that is not the result must not change.
void run_row(const BinRow &r)
{
    SCOPED_TRACE(std::string(r.name) + " a=" + show(r.a) + " b=" + show(r.b));
    for (const char *into : {"a fresh record", "a", "b"}) {
        dec_t a = r.a, b = r.b, out;
        std::memset(&out, 0xA5, sizeof out);
        dec_t *res = into == std::string("a") ? &a : into == std::string("b") ? &b : &out;
        EXPECT_EQ(r.op(&a, &b, res), r.code) << "result in " << into;
        EXPECT_TRUE(same(*res, r.want)) << "result in " << into << ": " << show(*res);
        EXPECT_TRUE(res == &a || std::memcmp(&a, &r.a, sizeof a) == 0) << into;
        EXPECT_TRUE(res == &b || std::memcmp(&b, &r.b, sizeof b) == 0) << into;
    }
}

dec_t nines(int count, int exponent)
{
    dec_t d = raw(1, exponent, {});
    d.ndigits = static_cast<short>(count);
    std::memset(d.digits, 99, static_cast<std::size_t>(count));
    return d;
}

// 16 digits: `first`, then fifteen times `rest`, the last one replaced by `last`.
dec_t run16(int exponent, int first, int rest, int last)
{
    dec_t d = raw(1, exponent, {first});
    d.ndigits = 16;
    std::memset(d.digits + 1, rest, 15);
    d.digits[15] = static_cast<char>(last);
    return d;
}

} // namespace

TEST(DecLoad, NormalisesRoundsAndClamps)
{
    const std::vector<int> all_nines(17, 99);
    const struct {
        int sign, exponent;
        std::vector<int> bytes;
        dec_t want;
        int code;
    } rows[] = {
        {-1, 5, {1, 2}, null_dec(), 0},
        {0, 5, {0, 0, 0}, zero_dec(), 0},
        {0, 5, {}, zero_dec(), 0},
        {1, 3, {0, 0, 12, 34, 0, 0}, raw(1, 1, {12, 34}), 0},
        {0, 0, {0, 5}, raw(0, -1, {5}), 0},
        // 17th digit below 50: cut, and zeros left at the end are dropped
        {1, 1, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 49, 99}, raw(1, 1, {1}), 0},
        {1,
         1,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 50},
         raw(1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17}),
         0},
        // a carry through the 16th digit keeps all 16 digits, zeros included
        {1,
         2,
         {3, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 50},
         run16(2, 4, 0, 0),
         0},
        {0, 62, all_nines, raw(0, 63, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0},
        {1, 63, all_nines, run16(63, 1, 0, 0), QMR_E_DECOVERFLOW},
        {1, 64, {7}, raw(1, 63, {7}), QMR_E_DECOVERFLOW},
        {1, 63, {7}, raw(1, 63, {7}), 0},
        {0, -64, {7}, raw(0, -64, {7}), 0},
        {0, -64, {0, 7}, raw(0, -64, {7}), QMR_E_DECUNDERFLOW},
    };
    for (const auto &r : rows) {
        std::vector<char> bytes(r.bytes.begin(), r.bytes.end());
        const std::vector<char> before = bytes;
        dec_t out;
        std::memset(&out, 0xA5, sizeof out);
        EXPECT_EQ(decload(&out, r.sign, r.exponent, bytes.data(), static_cast<int>(bytes.size())),
                  r.code);
        EXPECT_TRUE(same(out, r.want)) << show(out) << " want " << show(r.want);
        EXPECT_EQ(bytes, before) << "decload wrote into its input";
    }
    // the input may be the result's own digits
    dec_t d = raw(1, 2, {0, 0, 5, 0});
    EXPECT_EQ(decload(&d, 1, d.exponent, d.digits, d.ndigits), 0);
    EXPECT_TRUE(same(d, raw(1, 0, {5})));
}

TEST(DecArith, TableWithGarbageAndAliasedResults)
{
    const dec_t big = nines(16, 16), x = dec("123.45"), nx = dec("-123.45"); // big: 10^32 - 1
    const BinRow rows[] = {
        {"0.005+0.005", decadd, dec("0.005"), dec("0.005"), raw(1, 0, {1}), 0},
        {"1e20+1e-20", decadd, pow10(20), pow10(-20), raw(1, 11, {1}), 0},
        {"1e-20+1e20", decadd, pow10(-20), pow10(20), raw(1, 11, {1}), 0},
        {"(1e32-1)+0.5", decadd, big, dec("0.5"), run16(17, 1, 0, 0), 0},
        {"x+(-x)", decadd, x, nx, zero_dec(), 0},
        {"-x+x", decadd, nx, x, zero_dec(), 0},
        {"sign of larger", decadd, dec("-5"), dec("3"), dec("-2"), 0},
        {"borrow chain", decadd, dec("10000"), dec("-0.01"), dec("9999.99"), 0},
        {"null+1", decadd, null_dec(), dec("1"), null_dec(), 0},
        {"1+null", decadd, dec("1"), null_dec(), null_dec(), 0},
        {"0+0", decadd, zero_dec(), zero_dec(), zero_dec(), 0},
        {"0+x", decadd, zero_dec(), x, x, 0},
        {"overflow add", decadd, nines(1, 63), nines(1, 63), raw(1, 63, {1, 98}),
         QMR_E_DECOVERFLOW},
        {"1-1e-31 exact", decsub, dec("1"), pow10(-31), run16(0, 99, 99, 90), 0},
        {"1-1e-33 dropped", decsub, dec("1"), pow10(-33), dec("1"), 0},
        {"5-3", decsub, dec("5"), dec("3"), dec("2"), 0},
        {"3-5", decsub, dec("3"), dec("5"), dec("-2"), 0},
        {"x-x", decsub, x, x, zero_dec(), 0},
        {"null-1", decsub, null_dec(), dec("1"), null_dec(), 0},
        {"1.5*-2", decmul, dec("1.5"), dec("-2"), dec("-3"), 0},
        {"-1.5*-2", decmul, dec("-1.5"), dec("-2"), dec("3"), 0},
        {"0*-7", decmul, zero_dec(), dec("-7"), zero_dec(), 0},
        {"null*1", decmul, null_dec(), dec("1"), null_dec(), 0},
        {"full product rounds once", decmul, big, big, run16(32, 99, 99, 98), 0},
        {"product overflow", decmul, raw(1, 40, {2}), raw(1, 30, {3}), raw(1, 63, {6}),
         QMR_E_DECOVERFLOW},
        {"product underflow", decmul, raw(0, -40, {2}), raw(1, -30, {3}), raw(0, -64, {6}),
         QMR_E_DECUNDERFLOW},
        {"product overflow rounded", decmul, nines(16, 40), nines(16, 30), run16(63, 99, 99, 98),
         QMR_E_DECOVERFLOW},
        {"1/3", decdiv, dec("1"), dec("3"), run16(0, 33, 33, 33), 0},
        {"2/3", decdiv, dec("2"), dec("3"), run16(0, 66, 66, 67), 0},
        {"-1/8", decdiv, dec("-1"), dec("8"), dec("-0.125"), 0},
        {"1/0.0001", decdiv, dec("1"), dec("0.0001"), dec("10000"), 0},
        {"x/0", decdiv, x, zero_dec(), zero_dec(), QMR_E_DIVZERO},
        {"null/0", decdiv, null_dec(), zero_dec(), null_dec(), 0},
        {"0/x", decdiv, zero_dec(), x, zero_dec(), 0},
        {"correction step", decdiv, dec("10000"), dec("100.99"),
         dec("99.019704921279334587582929002872"), 0},
        {"quotient overflow", decdiv, raw(1, 63, {1}), raw(1, -1, {1}), raw(1, 63, {1}),
         QMR_E_DECOVERFLOW},
        {"quotient underflow", decdiv, raw(1, -63, {1}), raw(1, 3, {1}), raw(1, -64, {1}),
         QMR_E_DECUNDERFLOW},
    };
    for (const BinRow &r : rows)
        run_row(r);
}

TEST(DecArith, IntegersAgreeWithInt128)
{
    Gen g(20261121);
    for (int iter = 0; iter < 20000; ++iter) {
        const i128 a = g.integer(31), b = g.integer(31);
        const dec_t da = from_i128(a), db = from_i128(b);
        SCOPED_TRACE(show(a) + " , " + show(b));
        dec_t r;
        ASSERT_EQ(decadd(&da, &db, &r), 0);
        ASSERT_TRUE(to_i128(r) == a + b && same(r, from_i128(a + b))) << show(r);
        ASSERT_EQ(decsub(&da, &db, &r), 0);
        ASSERT_TRUE(same(r, from_i128(a - b))) << show(r);
        ASSERT_EQ(deccmp(&da, &db), a < b ? -1 : a > b ? 1 : 0);

        // operands short enough that the product has at most 31 decimal digits
        const i128 s = g.integer(16), t = g.integer(15);
        const dec_t ds = from_i128(s), dt = from_i128(t), dp = from_i128(s * t);
        ASSERT_EQ(decmul(&ds, &dt, &r), 0);
        ASSERT_TRUE(same(r, dp)) << show(s) << " * " << show(t) << " " << show(r);
        if (t != 0) {
            ASSERT_EQ(decdiv(&dp, &dt, &r), 0);
            ASSERT_TRUE(same(r, ds)) << show(s * t) << " / " << show(t) << " " << show(r);
        }
    }
}

// |a / b| rounded half-up to 16 base-100 digits, from __int128 long division;
// a round-up keeps all 16 digits, as the normaliser does after a carry.
TEST(DecArith, DivisionRoundsTheExactQuotient)
{
    Gen g(77);
    const i128 top = static_cast<i128>(10000000000000000LL) * 10000000000000000LL; // 100^16
    for (int iter = 0; iter < 20000; ++iter) {
        const i128 a = g.integer(6), b = g.integer(6);
        if (b == 0 || a == 0)
            continue;
        const i128 ub = b < 0 ? -b : b;
        int exponent = 16; // of the quotient scaled to 16 digits
        i128 num = a < 0 ? -a : a;
        for (; num / ub < top / 100; num *= 100)
            --exponent;
        i128 q = num / ub;
        const bool up = 2 * (num % ub) >= ub;
        if (up && ++q == top) {
            q = top / 100;
            ++exponent;
        }
        char bytes[16];
        for (int i = 15; i >= 0; --i, q /= 100)
            bytes[i] = static_cast<char>(q % 100);
        dec_t want = raw((a < 0) == (b < 0) ? 1 : 0, exponent, {});
        if (up) {
            want.ndigits = 16;
            std::memcpy(want.digits, bytes, 16);
        } else {
            decload(&want, want.sign, exponent, bytes, 16);
        }
        const dec_t da = from_i128(a), db = from_i128(b);
        dec_t r;
        ASSERT_EQ(decdiv(&da, &db, &r), 0);
        ASSERT_TRUE(same(r, want))
            << show(a) << " / " << show(b) << " = " << show(r) << " want " << show(want);
    }
}

TEST(DecCmp, OrderRulesAndProperties)
{
    const struct {
        dec_t a, b;
        int want;
    } rows[] = {
        {null_dec(), dec("1"), -2},
        {dec("1"), null_dec(), -2},
        {null_dec(), null_dec(), -2},
        {dec("-1"), zero_dec(), -1},
        {zero_dec(), dec("-1"), 1},
        {zero_dec(), zero_dec(), 0},
        {zero_dec(), dec("0.01"), -1},
        {dec("-0.01"), zero_dec(), -1},
        {dec("100"), dec("99.99"), 1},
        {dec("-100"), dec("-99.99"), -1},
        {raw(1, 1, {1, 50, 0}), raw(1, 1, {1, 50}), 1},
        {raw(0, 1, {1, 50, 0}), raw(0, 1, {1, 50}), -1},
        {dec("1.5"), dec("1.5"), 0},
        {dec("1.49"), dec("1.5"), -1},
    };
    for (const auto &r : rows)
        EXPECT_EQ(deccmp(&r.a, &r.b), r.want) << show(r.a) << " " << show(r.b);

    // antisymmetric, reflexive, transitive, and the sign of a - b
    Gen g(4242);
    const dec_t zero = zero_dec();
    for (int iter = 0; iter < 20000; ++iter) {
        dec_t v[3];
        for (dec_t &d : v) {
            d = g.value();
            // neighbours share exponents often enough to reach the digit loop
            if (g.uniform(0, 1))
                d.exponent = v[0].exponent;
        }
        const int ab = deccmp(&v[0], &v[1]), bc = deccmp(&v[1], &v[2]), ac = deccmp(&v[0], &v[2]);
        ASSERT_EQ(ab, -deccmp(&v[1], &v[0])) << show(v[0]) << " " << show(v[1]);
        ASSERT_EQ(deccmp(&v[0], &v[0]), 0);
        ASSERT_TRUE((ab > 0 || bc > 0 || ac <= 0) && (ab < 0 || bc < 0 || ac >= 0));
        // away from the limits
        if (v[0].exponent < 60 && v[1].exponent < 60 && v[0].exponent > -40 &&
            v[1].exponent > -40) {
            dec_t diff;
            decsub(&v[0], &v[1], &diff);
            ASSERT_EQ(deccmp(&diff, &zero), ab) << show(v[0]) << " " << show(v[1]);
        }
    }
}

// decround: half away from zero; dectrunc: towards zero; s places after the
// point, a negative s rounding left of it.
TEST(DecRoundTrunc, ToScale)
{
    struct Row {
        const char *in;
        int s;
        const char *round, *trunc;
    };
    // clang-format off
    const Row rows[] = {
        {"2.345", 2, "2.35", "2.34"}, {"-2.345", 2, "-2.35", "-2.34"}, {"2.5", 0, "3", "2"},
        {"-2.5", 0, "-3", "-2"}, {"2.4999", 0, "2", "2"}, {"1234", -2, "1200", "1200"},
        {"1250", -2, "1300", "1200"}, {"2.3", 1, "2.3", "2.3"}, {"2.25", 1, "2.3", "2.2"},
        {"1234", -1, "1230", "1230"}, {"1235", -1, "1240", "1230"}, {"-1235", -1, "-1240", "-1230"},
        {"2.35", 1, "2.4", "2.3"}, {"0.004", 2, "0", "0"}, {"0.005", 2, "0.01", "0"},
        {"99.995", 2, "100", "99.99"}, {"12.3456", 3, "12.346", "12.345"}, {"7", 2, "7", "7"},
        {"0", 2, "0", "0"}, {"-0.0049", 2, "0", "0"}, {"0.44", -1, "0", "0"},
        {"2.349", 2, "2.35", "2.34"}, {"-2.35", 1, "-2.4", "-2.3"}, {"1239", -1, "1240", "1230"},
        {"1299", -2, "1300", "1200"}, {"99", -2, "100", "0"}, {"1.05", 1, "1.1", "1"},
        {"123.45", 5, "123.45", "123.45"}, {"5", 0, "5", "5"}, {"0.5", 0, "1", "0"},
        {"-7.77", 0, "-8", "-7"}, {"1234.5", -3, "1000", "1000"},
    };
    // clang-format on
    for (const auto &r : rows) {
        dec_t rd = dec(r.in), td = rd;
        decround(&rd, r.s);
        dectrunc(&td, r.s);
        EXPECT_TRUE(same(rd, dec(r.round))) << r.in << " rounded to " << r.s << ": " << show(rd);
        EXPECT_TRUE(same(td, dec(r.trunc))) << r.in << " cut to " << r.s << ": " << show(td);
    }
    dec_t n = null_dec(), m = null_dec();
    decround(&n, 2);
    dectrunc(&m, 0);
    EXPECT_TRUE(same(n, null_dec()) && same(m, null_dec()));
    // a value already within s places is left as it is, trailing zero digits too
    dec_t carry = run16(17, 1, 0, 0);
    decround(&carry, 0);
    EXPECT_TRUE(same(carry, run16(17, 1, 0, 0)));
}

TEST(DecZeroVerifyCopy, Encodings)
{
    const dec_t neg_zero_exp = raw(0, -64, {}), zero_exp0 = raw(1, 0, {}), one = dec("1");
    EXPECT_EQ(dec_is_zero(&neg_zero_exp), 1); // the sign is not read
    EXPECT_EQ(std::pair(dec_is_zero(&zero_exp0), dec_is_zero(&one)), std::pair(0, 0));
    dec_t sum;
    const dec_t x = dec("12.5"), mx = dec("-12.5");
    decadd(&x, &mx, &sum);
    EXPECT_TRUE(dec_is_zero(&sum) == 1 && sum.sign == 1);

    dec_t long17 = raw(1, 1, {1});
    long17.ndigits = 17;
    const std::pair<dec_t, int> rows[] = {
        {null_dec(), 0},
        {zero_dec(), 0},
        {raw(1, 0, {}), -1},
        {raw(2, 1, {1}), -1},
        {raw(-2, 1, {1}), -1},
        {raw(1, 64, {1}), -1},
        {raw(1, -65, {1}), -1},
        {long17, -1},
        {raw(1, 1, {1, 100}), -1},
        {raw(0, 63, {99}), 0},
        {raw(1, 1, {1, 50, 0}), 0},
    };
    for (const auto &[d, want] : rows)
        EXPECT_EQ(decverify(&d), want) << show(d);
    EXPECT_EQ(decverify(nullptr), -1);

    dec_t from, to; // deccopy copies the whole record, bytes past ndigits too
    std::memset(&from, 0x3C, sizeof from);
    std::memset(&to, 0, sizeof to);
    from.ndigits = 1;
    deccopy(&from, &to);
    EXPECT_EQ(std::memcmp(&from, &to, sizeof to), 0);
}

TEST(DecSqrt, NewtonToAFixedPoint)
{
    const std::pair<dec_t, dec_t> rows[] = {
        {dec("-4"), zero_dec()},  {dec("4"), dec("2")},      {zero_dec(), zero_dec()},
        {null_dec(), null_dec()}, {dec("6.25"), dec("2.5")}, {raw(1, -64, {1}), raw(1, -32, {10})},
    };
    for (const auto &[x, want] : rows) {
        dec_t r, alias = x;
        std::memset(&r, 0xA5, sizeof r);
        EXPECT_EQ(std::pair(decsqrt(&x, &r), decsqrt(&alias, &alias)), std::pair(0, 0)) << show(x);
        EXPECT_TRUE(same(r, want) && same(alias, want)) << show(x) << ": " << show(r);
    }
    // the exponent limits: the iteration still reaches a fixed point
    dec_t r;
    for (const dec_t &x : {raw(1, -64, {99, 99}), nines(16, 63), raw(1, 63, {1})}) {
        EXPECT_EQ(decsqrt(&x, &r), 0);
        EXPECT_EQ(r.sign, 1) << show(x);
    }
    Gen g(99);
    for (int iter = 0; iter < 300; ++iter) {
        i128 n = g.integer(16);
        n = n < 0 ? -n : n;
        const dec_t sq = from_i128(n * n);
        ASSERT_EQ(decsqrt(&sq, &r), 0);
        ASSERT_TRUE(same(r, from_i128(n))) << show(n) << " " << show(r);
    }
    // irrational roots: r*r is within a few units of the 16th digit of x
    for (int iter = 0; iter < 300; ++iter) {
        dec_t x = g.value_at(g.uniform(-30, 30)), sq, diff;
        x.sign = 1;
        ASSERT_EQ(decsqrt(&x, &r), 0);
        decmul(&r, &r, &sq);
        decsub(&sq, &x, &diff);
        ASSERT_TRUE(diff.ndigits == 0 || diff.exponent <= x.exponent - 15)
            << show(x) << " " << show(r);
    }
}

TEST(DecDigitText, Dec1to2DecstoiDecxtoi)
{
    const char digits[] = {7, 0, 99, 10};
    char out[16];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(dec1to2(digits, 4, out), out + 8);
    EXPECT_STREQ(out, "07009910");
    EXPECT_EQ(dec1to2(digits, 0, out), out);
    EXPECT_STREQ(out, "");

    const struct {
        const char *text;
        int value, consumed;
    } stoi_rows[] = {
        {"123abc", 123, 3}, {"-45", -45, 3}, {"+7 ", 7, 2},   {"", 0, 0},
        {"-", 0, 1},        {"x9", 0, 0},    {"0012", 12, 4}, {"2147483647", 2147483647, 10},
    };
    for (const auto &r : stoi_rows) {
        int v = 99;
        const char *p = decstoi(r.text, &v);
        EXPECT_EQ(std::pair(v, p - r.text), std::pair(r.value, std::ptrdiff_t{r.consumed}))
            << r.text;
    }

    const struct {
        const char *text;
        int code;
        unsigned value;
    } x_rows[] = {
        {"1F", 0, 0x1F},
        {"ff  ", 0, 0xFF},
        {"aB\n", 0, 0xAB},
        {"10 \tx", -1, 12345},
        {"1G", -1, 12345},
        {"", 0, 0},
        {"ffffffff", 0, 0xFFFFFFFFu},
        {"0x10", -1, 12345},
        {"  5", -1, 12345},
    };
    for (const auto &r : x_rows) {
        unsigned v = 12345;
        EXPECT_EQ(decxtoi(r.text, &v), r.code) << r.text;
        EXPECT_EQ(v, r.value) << r.text;
    }
}
