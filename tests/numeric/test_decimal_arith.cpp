// Decimal arithmetic: the normaliser, the four operations run from tables with
// garbage and aliased results, differential checks against __int128, rounding,
// truncation, comparison properties, square root and the digit routines.
#include "dec_testutil.h"

#include "qmr/errors.h"

#include <cstdio>
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

// Runs one row with a garbage-filled result, then with the result aliasing a
// and then b; the operands a caller passes separately must not change.
void run_row(const BinRow &r)
{
    SCOPED_TRACE(std::string(r.name) + " a=" + show(r.a) + " b=" + show(r.b));
    dec_t a = r.a, b = r.b, out;
    std::memset(&out, 0xA5, sizeof out);
    EXPECT_EQ(r.op(&a, &b, &out), r.code);
    EXPECT_TRUE(same(out, r.want)) << show(out) << " want " << show(r.want);
    EXPECT_EQ(std::memcmp(&a, &r.a, sizeof a), 0);
    EXPECT_EQ(std::memcmp(&b, &r.b, sizeof b), 0);

    dec_t x = r.a;
    b = r.b;
    EXPECT_EQ(r.op(&x, &b, &x), r.code);
    EXPECT_TRUE(same(x, r.want)) << "result aliasing a: " << show(x);
    EXPECT_EQ(std::memcmp(&b, &r.b, sizeof b), 0);

    a = r.a;
    dec_t y = r.b;
    EXPECT_EQ(r.op(&a, &y, &y), r.code);
    EXPECT_TRUE(same(y, r.want)) << "result aliasing b: " << show(y);
    EXPECT_EQ(std::memcmp(&a, &r.a, sizeof a), 0);
}

dec_t nines(int count, int exponent)
{
    dec_t d = raw(1, exponent, {});
    d.ndigits = static_cast<short>(count);
    for (int i = 0; i < count; ++i)
        d.digits[i] = 99;
    return d;
}

dec_t with_sign(dec_t d, int sign)
{
    d.sign = static_cast<short>(sign);
    return d;
}

} // namespace

TEST(DecLoad, NormalisesRoundsAndClamps)
{
    struct Row {
        int sign, exponent;
        std::vector<int> bytes;
        dec_t want;
        int code;
    };
    const std::vector<int> seventeen_low = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 49, 99};
    std::vector<int> all_nines(17, 99);
    std::vector<int> carry_to_ten = {3,  99, 99, 99, 99, 99, 99, 99, 99,
                                     99, 99, 99, 99, 99, 99, 99, 50};
    const std::vector<Row> rows = {
        {-1, 5, {1, 2}, null_dec(), 0},
        {0, 5, {0, 0, 0}, zero_dec(), 0},
        {0, 5, {}, zero_dec(), 0},
        {1, 3, {0, 0, 12, 34, 0, 0}, raw(1, 1, {12, 34}), 0},
        {0, 0, {0, 5}, raw(0, -1, {5}), 0},
        // 17th digit below 50: cut, and zeros left at the end are dropped
        {1, 1, seventeen_low, raw(1, 1, {1}), 0},
        {1,
         1,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 50},
         raw(1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17}),
         0},
        // a carry through the 16th digit keeps all 16 digits, zeros included
        {1, 2, carry_to_ten, raw(1, 2, {4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0},
        {0, 62, all_nines, raw(0, 63, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0},
        {1, 63, all_nines, raw(1, 63, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
         QMR_E_DECOVERFLOW},
        {1, 64, {7}, raw(1, 63, {7}), QMR_E_DECOVERFLOW},
        {1, 63, {7}, raw(1, 63, {7}), 0},
        {0, -64, {7}, raw(0, -64, {7}), 0},
        {0, -64, {0, 7}, raw(0, -64, {7}), QMR_E_DECUNDERFLOW},
    };
    for (const Row &r : rows) {
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
    dec_t big = nines(16, 16); // 10^32 - 1
    dec_t ten32 = raw(1, 17, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    dec_t x = dec("123.45");
    dec_t third = raw(1, 0, {33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33, 33});
    dec_t two_thirds = raw(1, 0, {66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 66, 67});
    const std::vector<BinRow> rows = {
        {"0.005+0.005", decadd, dec("0.005"), dec("0.005"), raw(1, 0, {1}), 0},
        {"1e20+1e-20", decadd, pow10(20), pow10(-20), raw(1, 11, {1}), 0},
        {"1e-20+1e20", decadd, pow10(-20), pow10(20), raw(1, 11, {1}), 0},
        {"(1e32-1)+0.5", decadd, big, dec("0.5"), ten32, 0},
        {"x+(-x)", decadd, x, dec("-123.45"), zero_dec(), 0},
        {"-x+x", decadd, dec("-123.45"), x, zero_dec(), 0},
        {"sign of larger", decadd, dec("-5"), dec("3"), dec("-2"), 0},
        {"borrow chain", decadd, dec("10000"), dec("-0.01"), dec("9999.99"), 0},
        {"null+1", decadd, null_dec(), dec("1"), null_dec(), 0},
        {"1+null", decadd, dec("1"), null_dec(), null_dec(), 0},
        {"0+0", decadd, zero_dec(), zero_dec(), zero_dec(), 0},
        {"0+x", decadd, zero_dec(), x, x, 0},
        {"overflow add", decadd, with_sign(nines(1, 63), 1), with_sign(nines(1, 63), 1),
         raw(1, 63, {1, 98}), QMR_E_DECOVERFLOW},
        {"1-1e-31 exact", decsub, dec("1"), pow10(-31),
         raw(1, 0, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 90}), 0},
        {"1-1e-33 dropped", decsub, dec("1"), pow10(-33), dec("1"), 0},
        {"5-3", decsub, dec("5"), dec("3"), dec("2"), 0},
        {"3-5", decsub, dec("3"), dec("5"), dec("-2"), 0},
        {"x-x", decsub, x, x, zero_dec(), 0},
        {"null-1", decsub, null_dec(), dec("1"), null_dec(), 0},
        {"1.5*-2", decmul, dec("1.5"), dec("-2"), dec("-3"), 0},
        {"-1.5*-2", decmul, dec("-1.5"), dec("-2"), dec("3"), 0},
        {"0*-7", decmul, zero_dec(), dec("-7"), zero_dec(), 0},
        {"null*1", decmul, null_dec(), dec("1"), null_dec(), 0},
        {"full product rounds once", decmul, big, big,
         raw(1, 32, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 98}), 0},
        {"product overflow", decmul, raw(1, 40, {2}), raw(1, 30, {3}), raw(1, 63, {6}),
         QMR_E_DECOVERFLOW},
        {"product underflow", decmul, raw(0, -40, {2}), raw(1, -30, {3}), raw(0, -64, {6}),
         QMR_E_DECUNDERFLOW},
        {"product overflow rounded", decmul, nines(16, 40), nines(16, 30),
         raw(1, 63, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 98}),
         QMR_E_DECOVERFLOW},
        {"1/3", decdiv, dec("1"), dec("3"), third, 0},
        {"2/3", decdiv, dec("2"), dec("3"), two_thirds, 0},
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
    const std::uint64_t seed = 20261121;
    std::printf("IntegersAgreeWithInt128 seed %llu\n", static_cast<unsigned long long>(seed));
    Gen g(seed);
    const i128 limit = static_cast<i128>(10000000000000000LL) * 10000000000000000LL; // 10^32
    for (int iter = 0; iter < 20000; ++iter) {
        const i128 a = g.integer(31);
        const i128 b = g.integer(31);
        const dec_t da = from_i128(a), db = from_i128(b);
        SCOPED_TRACE(show(a) + " , " + show(b));
        dec_t r;
        ASSERT_EQ(decadd(&da, &db, &r), 0);
        ASSERT_EQ(to_i128(r), a + b) << show(r);
        ASSERT_TRUE(same(r, from_i128(a + b)));
        ASSERT_EQ(decsub(&da, &db, &r), 0);
        ASSERT_TRUE(same(r, from_i128(a - b))) << show(r);

        // operands short enough that the product has at most 32 decimal digits
        const i128 s = g.integer(16), t = g.integer(15);
        const dec_t ds = from_i128(s), dt = from_i128(t);
        ASSERT_EQ(decmul(&ds, &dt, &r), 0);
        ASSERT_TRUE(same(r, from_i128(s * t))) << show(s) << " * " << show(t) << " " << show(r);
        ASSERT_LT(s * t, limit);

        if (t != 0) {
            const dec_t dp = from_i128(s * t);
            ASSERT_EQ(decdiv(&dp, &dt, &r), 0);
            ASSERT_TRUE(same(r, ds)) << show(s * t) << " / " << show(t) << " " << show(r);
        }
        ASSERT_EQ(deccmp(&da, &db), a < b ? -1 : a > b ? 1 : 0);
    }
}

TEST(DecArith, DivisionRoundsTheExactQuotient)
{
    // |a / b| rounded half-up to 16 base-100 digits, from __int128 long division;
    // a round-up keeps all 16 digits, as the normaliser does after a carry
    const std::uint64_t seed = 77;
    std::printf("DivisionRoundsTheExactQuotient seed %llu\n",
                static_cast<unsigned long long>(seed));
    Gen g(seed);
    const i128 top = static_cast<i128>(10000000000000000LL) * 10000000000000000LL; // 100^16
    for (int iter = 0; iter < 20000; ++iter) {
        const i128 a = g.integer(6), b = g.integer(6);
        if (b == 0 || a == 0)
            continue;
        const i128 ua = a < 0 ? -a : a, ub = b < 0 ? -b : b;
        int k = 0; // quotient scaled by 100^k has 16 digits
        i128 num = ua;
        while (num / ub < top / 100) {
            num *= 100;
            ++k;
        }
        i128 q = num / ub;
        const bool up = 2 * (num % ub) >= ub;
        char bytes[17];
        int exponent = 16 - k;
        if (up && ++q == top) {
            q = top / 100;
            ++exponent;
        }
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

TEST(DecCmp, OrderRules)
{
    struct Row {
        dec_t a, b;
        int want;
    };
    const std::vector<Row> rows = {
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
    for (const Row &r : rows) {
        EXPECT_EQ(deccmp(&r.a, &r.b), r.want) << show(r.a) << " " << show(r.b);
    }
}

TEST(DecCmp, AntisymmetricAndTransitive)
{
    const std::uint64_t seed = 4242;
    std::printf("AntisymmetricAndTransitive seed %llu\n", static_cast<unsigned long long>(seed));
    Gen g(seed);
    for (int iter = 0; iter < 20000; ++iter) {
        dec_t v[3];
        for (dec_t &d : v) {
            d = g.value();
            // neighbours share exponents often enough to reach the digit loop
            if (g.uniform(0, 1))
                d.exponent = v[0].exponent;
        }
        const int ab = deccmp(&v[0], &v[1]), ba = deccmp(&v[1], &v[0]);
        ASSERT_EQ(ab, -ba) << show(v[0]) << " " << show(v[1]);
        ASSERT_EQ(deccmp(&v[0], &v[0]), 0);
        const int bc = deccmp(&v[1], &v[2]), ac = deccmp(&v[0], &v[2]);
        if (ab <= 0 && bc <= 0) {
            ASSERT_LE(ac, 0);
        }
        if (ab >= 0 && bc >= 0) {
            ASSERT_GE(ac, 0);
        }
        // a - b has the sign deccmp reports, away from the limits
        if (v[0].exponent < 60 && v[1].exponent < 60 && v[0].exponent > -40 &&
            v[1].exponent > -40) {
            dec_t diff;
            decsub(&v[0], &v[1], &diff);
            const dec_t zero = zero_dec();
            ASSERT_EQ(deccmp(&diff, &zero), ab) << show(v[0]) << " " << show(v[1]);
        }
    }
}

TEST(DecRound, HalfAwayFromZeroToScale)
{
    struct Row {
        const char *in;
        int s;
        const char *want;
    };
    const std::vector<Row> rows = {
        {"2.345", 2, "2.35"}, {"-2.345", 2, "-2.35"},   {"2.5", 0, "3"},
        {"-2.5", 0, "-3"},    {"2.4999", 0, "2"},       {"1234", -2, "1200"},
        {"1250", -2, "1300"}, {"2.3", 1, "2.3"},        {"2.25", 1, "2.3"},
        {"1234", -1, "1230"}, {"1235", -1, "1240"},     {"-1235", -1, "-1240"},
        {"2.35", 1, "2.4"},   {"0.004", 2, "0"},        {"0.005", 2, "0.01"},
        {"99.995", 2, "100"}, {"12.3456", 3, "12.346"}, {"7", 2, "7"},
        {"0", 2, "0"},        {"-0.0049", 2, "0"},      {"0.44", -1, "0"},
    };
    for (const Row &r : rows) {
        dec_t d = dec(r.in);
        decround(&d, r.s);
        EXPECT_TRUE(same(d, dec(r.want))) << r.in << " to " << r.s << ": " << show(d);
    }
    dec_t n = null_dec();
    decround(&n, 2);
    EXPECT_TRUE(same(n, null_dec()));
    // a value already within s places is left as it is, trailing zero digits too
    dec_t carry = raw(1, 17, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    dec_t before = carry;
    decround(&carry, 0);
    EXPECT_TRUE(same(carry, before));
}

TEST(DecTrunc, TowardsZeroToScale)
{
    struct Row {
        const char *in;
        int s;
        const char *want;
    };
    const std::vector<Row> rows = {
        {"2.349", 2, "2.34"}, {"0.004", 2, "0"},       {"2.35", 1, "2.3"},   {"-2.35", 1, "-2.3"},
        {"2.3", 1, "2.3"},    {"1239", -1, "1230"},    {"1299", -2, "1200"}, {"99", -2, "0"},
        {"1.05", 1, "1"},     {"123.45", 5, "123.45"}, {"5", 0, "5"},        {"0.5", 0, "0"},
        {"-7.77", 0, "-7"},   {"1234.5", -3, "1000"},
    };
    for (const Row &r : rows) {
        dec_t d = dec(r.in);
        dectrunc(&d, r.s);
        EXPECT_TRUE(same(d, dec(r.want))) << r.in << " to " << r.s << ": " << show(d);
    }
    dec_t n = null_dec();
    dectrunc(&n, 0);
    EXPECT_TRUE(same(n, null_dec()));
}

TEST(DecZeroAndVerify, Encodings)
{
    const dec_t neg_zero_exp = raw(0, -64, {});
    EXPECT_EQ(dec_is_zero(&neg_zero_exp), 1); // the sign is not read
    const dec_t zero_exp0 = raw(1, 0, {});
    EXPECT_EQ(dec_is_zero(&zero_exp0), 0);
    const dec_t one = dec("1");
    EXPECT_EQ(dec_is_zero(&one), 0);
    dec_t sum;
    const dec_t x = dec("12.5"), mx = dec("-12.5");
    decadd(&x, &mx, &sum);
    EXPECT_EQ(dec_is_zero(&sum), 1);
    EXPECT_EQ(sum.sign, 1);

    struct Row {
        dec_t d;
        int want;
    };
    dec_t digit100 = raw(1, 1, {1, 100});
    dec_t long17 = raw(1, 1, {1});
    long17.ndigits = 17;
    const std::vector<Row> rows = {
        {null_dec(), 0},
        {zero_dec(), 0},
        {raw(1, 0, {}), -1},
        {raw(2, 1, {1}), -1},
        {raw(-2, 1, {1}), -1},
        {raw(1, 64, {1}), -1},
        {raw(1, -65, {1}), -1},
        {long17, -1},
        {digit100, -1},
        {raw(0, 63, {99}), 0},
        {raw(1, 1, {1, 50, 0}), 0},
    };
    for (const Row &r : rows)
        EXPECT_EQ(decverify(&r.d), r.want) << show(r.d);
    EXPECT_EQ(decverify(nullptr), -1);
}

TEST(DecCopy, WholeRecord)
{
    dec_t from;
    std::memset(&from, 0x3C, sizeof from);
    from.ndigits = 1;
    dec_t to;
    std::memset(&to, 0, sizeof to);
    deccopy(&from, &to);
    EXPECT_EQ(std::memcmp(&from, &to, sizeof to), 0);
}

TEST(DecSqrt, NewtonToAFixedPoint)
{
    dec_t r;
    const dec_t neg = dec("-4");
    std::memset(&r, 0xA5, sizeof r);
    EXPECT_EQ(decsqrt(&neg, &r), 0);
    EXPECT_TRUE(same(r, zero_dec()));
    const dec_t four = dec("4");
    EXPECT_EQ(decsqrt(&four, &r), 0);
    EXPECT_TRUE(same(r, dec("2")));
    const dec_t zero = zero_dec();
    EXPECT_EQ(decsqrt(&zero, &r), 0);
    EXPECT_TRUE(same(r, zero_dec()));
    const dec_t null = null_dec();
    EXPECT_EQ(decsqrt(&null, &r), 0);
    EXPECT_TRUE(same(r, null_dec()));
    dec_t alias = dec("6.25");
    EXPECT_EQ(decsqrt(&alias, &alias), 0);
    EXPECT_TRUE(same(alias, dec("2.5")));

    // the exponent limits: the iteration still reaches a fixed point
    const dec_t limits[] = {
        raw(1, -64, {1}), raw(1, -64, {99, 99}),
        raw(1, 63, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99}),
        raw(1, 63, {1})};
    for (const dec_t &x : limits) {
        EXPECT_EQ(decsqrt(&x, &r), 0);
        EXPECT_EQ(r.sign, 1) << show(x);
    }
    const dec_t tiny = raw(1, -64, {1});
    decsqrt(&tiny, &r);
    EXPECT_TRUE(same(r, raw(1, -32, {10}))) << show(r);

    const std::uint64_t seed = 99;
    std::printf("NewtonToAFixedPoint seed %llu\n", static_cast<unsigned long long>(seed));
    Gen g(seed);
    for (int iter = 0; iter < 300; ++iter) {
        i128 n = g.integer(16);
        if (n < 0)
            n = -n;
        const dec_t sq = from_i128(n * n);
        ASSERT_EQ(decsqrt(&sq, &r), 0);
        ASSERT_TRUE(same(r, from_i128(n))) << show(n) << " " << show(r);
    }
    // irrational roots: r*r is within a few units of the 16th digit of x
    for (int iter = 0; iter < 300; ++iter) {
        dec_t x = g.value_at(g.uniform(-30, 30));
        x.sign = 1;
        ASSERT_EQ(decsqrt(&x, &r), 0);
        dec_t sq, diff;
        decmul(&r, &r, &sq);
        decsub(&sq, &x, &diff);
        if (diff.ndigits != 0) {
            ASSERT_LE(diff.exponent, x.exponent - 15) << show(x) << " " << show(r);
        }
    }
}

TEST(DecDigitText, Dec1to2DecstoiDecxtoi)
{
    const char digits[] = {7, 0, 99, 10};
    char out[16];
    std::memset(out, 'x', sizeof out);
    char *end = dec1to2(digits, 4, out);
    EXPECT_STREQ(out, "07009910");
    EXPECT_EQ(end, out + 8);
    EXPECT_EQ(dec1to2(digits, 0, out), out);
    EXPECT_STREQ(out, "");

    struct StoiRow {
        const char *text;
        int value;
        int consumed;
    };
    const std::vector<StoiRow> stoi_rows = {
        {"123abc", 123, 3}, {"-45", -45, 3}, {"+7 ", 7, 2},   {"", 0, 0},
        {"-", 0, 1},        {"x9", 0, 0},    {"0012", 12, 4}, {"2147483647", 2147483647, 10},
    };
    for (const StoiRow &r : stoi_rows) {
        int v = 99;
        const char *p = decstoi(r.text, &v);
        EXPECT_EQ(v, r.value) << r.text;
        EXPECT_EQ(p - r.text, r.consumed) << r.text;
    }

    struct XRow {
        const char *text;
        int code;
        unsigned value;
    };
    const std::vector<XRow> x_rows = {
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
    for (const XRow &r : x_rows) {
        unsigned v = 12345;
        EXPECT_EQ(decxtoi(r.text, &v), r.code) << r.text;
        EXPECT_EQ(v, r.value) << r.text;
    }
}
