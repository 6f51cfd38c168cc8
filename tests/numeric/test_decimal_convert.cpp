// Decimal number conversions: nulls, double round trips of a million doubles
// and correct rounding against strtod, integer range edges, digit strings
// against the arithmetic's own rounding, and text to number.
#include "dec_testutil.h"

#include "qmr/errors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

using namespace dectest;

namespace
{

constexpr long long_null = -2147483647L - 1;

constexpr auto bits = [](double v) { return std::bit_cast<std::uint64_t>(v); };
constexpr auto from_bits = [](std::uint64_t b) { return std::bit_cast<double>(b); };

// The decimal's exact value as text, built from its fields: "-0.DDDD...eK".
std::string exact_text(const dec_t &d)
{
    std::string s = d.sign == 0 ? "-0." : "0.";
    for (int i = 0; i < d.ndigits; ++i) {
        const int v = static_cast<unsigned char>(d.digits[i]);
        s += {static_cast<char>('0' + v / 10), static_cast<char>('0' + v % 10)};
    }
    return s + "e" + std::to_string(2 * d.exponent);
}

// The significant digits of |d| and the number of digits before its point.
std::pair<std::string, int> expand(const dec_t &d)
{
    std::string s = exact_text(d).substr(d.sign == 0 ? 3 : 2);
    s.resize(s.find('e'));
    int point = 2 * d.exponent;
    for (; !s.empty() && s[0] == '0'; --point)
        s.erase(0, 1);
    while (!s.empty() && s.back() == '0')
        s.pop_back();
    return {s, point};
}

} // namespace

TEST(DecConvert, NullsMapToNullsEverywhere)
{
    dec_t d[3];
    std::memset(d, 0, sizeof d);
    EXPECT_EQ(deccvdbl(from_bits(~0ULL), &d[0]) + deccvlong(long_null, &d[1]) +
                  deccvint(-32768, &d[2]),
              0);
    for (const dec_t &x : d)
        EXPECT_TRUE(same(x, null_dec())) << show(x);

    const dec_t null = null_dec();
    double x = 1;
    long l = 1;
    int i = 1;
    EXPECT_EQ(dectodbl(&null, &x) + dectolong(&null, &l) + dectoint(&null, &i), 0);
    EXPECT_TRUE(bits(x) == ~0ULL && l == long_null && i == -32768);
    char buf[4] = "xyz";
    int decpt = 9, sign = 9;
    for (auto *fn : {deccvt, dececvt, decfcvt}) {
        EXPECT_STREQ(fn(&null, 3, &decpt, &sign), "");
        EXPECT_TRUE(decpt == 0 && sign == 0);
        decpt = sign = 9;
    }
    EXPECT_EQ(qmr_decfcvt(&null, 2, &decpt, &sign, buf, 1), 0);
    EXPECT_TRUE(buf[0] == '\0' && decpt == 0 && sign == 0);
    for (const char *blank : {"", " ", " \t  "}) {
        x = l = i = 1;
        EXPECT_EQ(rstod(blank, &x) + rstol(blank, &l) + rstoi(blank, &i), 0) << '"' << blank;
        EXPECT_TRUE(bits(x) == ~0ULL && l == long_null && i == -32768) << '"' << blank;
    }
}

TEST(DecConvert, DoubleEdgesInvalidValuesAndLimits)
{
    const dec_t untouched = raw(1, 7, {7}), nines = raw(0, 63, {99, 99, 99, 99, 99, 99, 99, 98});
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        double in;
        int code;
        dec_t want;
    } rows[] = {
        {0.1, 0, raw(1, 0, {10})},
        {-123.45, 0, raw(0, 2, {1, 23, 45})},
        {123456789012345678.0, 0, dec("123456789012345680")},
        {0.0, 0, zero_dec()},
        {-0.0, 0, zero_dec()},
        {1e-130, 0, raw(1, -64, {1})},
        {std::nextafter(1e-130, 1.0), 0, raw(1, -64, {1, 0, 0, 0, 0, 0, 0, 0, 3})},
        {-std::nextafter(1e126, 0.0), 0, nines},
        {1e126, QMR_E_DECOVERFLOW, untouched},
        {-std::numeric_limits<double>::max(), QMR_E_DECOVERFLOW, untouched},
        {std::nextafter(1e-130, 0.0), QMR_E_DECUNDERFLOW, zero_dec()},
        {-5e-324, QMR_E_DECUNDERFLOW, zero_dec()},
        {inf, QMR_E_BADFLOAT, untouched},
        {std::numeric_limits<double>::quiet_NaN(), QMR_E_BADFLOAT, untouched},
        {from_bits(~0ULL - 1), QMR_E_BADFLOAT, untouched},
    };
    for (const auto &r : rows) {
        dec_t d = untouched;
        EXPECT_EQ(deccvdbl(r.in, &d), r.code) << r.in;
        EXPECT_TRUE(same(d, r.want)) << r.in << " gave " << show(d);
    }
}

// Every double inside the decimal's range comes back bit for bit; those
// outside give the range codes. The limits are compared as doubles: a double
// at or above the double nearest 10^-130 has shortest digits of at least
// 10^-130, and one below the double nearest 10^126 stays below 10^126.
TEST(DecConvert, MillionDoublesSurviveTheRoundTrip)
{
    std::mt19937_64 rng(20240611);
    std::vector<double> powers;
    for (int k = -130; k <= 125; ++k)
        powers.push_back(std::strtod(("1e" + std::to_string(k)).c_str(), nullptr));
    int failures = 0;
    for (int n = 0; n < 1000000 && failures < 10; ++n) {
        const std::uint64_t r = rng();
        double v = 0;
        switch (n % 5) {
        case 0: // any bit pattern, NaNs and infinities included
            v = from_bits(r);
            break;
        case 1: // subnormal
            v = from_bits(r & (1ULL << 63 | ((1ULL << 52) - 1)));
            break;
        case 2: // a power of ten and its neighbours
            v = powers[r % powers.size()];
            for (int step = static_cast<int>(r >> 60) % 5 - 2; step != 0; step += step > 0 ? -1 : 1)
                v = std::nextafter(v, step > 0 ? HUGE_VAL : 0.0);
            break;
        case 3: // an integer, exact or rounded
            v = static_cast<double>(static_cast<std::int64_t>(r) >> (r % 64));
            break;
        default: // binary exponents around the decimal's range
            v = from_bits((r & ~(0x7FFULL << 52)) | ((1023 - 440 + (r >> 52) % 870) << 52));
        }
        const dec_t before = raw(1, 7, {7});
        dec_t d = before;
        const int code = deccvdbl(v, &d);
        const double a = std::fabs(v);
        bool ok;
        if (bits(v) == ~0ULL)
            ok = code == 0 && same(d, null_dec());
        else if (std::isnan(v) || std::isinf(v))
            ok = code == QMR_E_BADFLOAT && same(d, before);
        else if (a >= 1e126)
            ok = code == QMR_E_DECOVERFLOW && same(d, before);
        else if (a != 0 && a < 1e-130)
            ok = code == QMR_E_DECUNDERFLOW && same(d, zero_dec());
        else {
            const int significant = 2 * d.ndigits - (d.ndigits && d.digits[0] < 10) -
                                    (d.ndigits && d.digits[d.ndigits - 1] % 10 == 0);
            double back = 1;
            ok = code == 0 && decverify(&d) == 0 && significant <= 17 && dectodbl(&d, &back) == 0 &&
                 back == v && (v == 0 || bits(back) == bits(v));
        }
        if (!ok) {
            ++failures;
            ADD_FAILURE() << "double " << bits(v) << " (" << v << ") code " << code << " "
                          << show(d);
        }
    }
}

// A decimal of at most 15 significant digits is the shortest text of its
// nearest double, so it comes back exactly: 0.1 is 0.1, 123.45 is 123.45.
TEST(DecConvert, ShortDecimalsComeBackExactly)
{
    Gen g(77);
    for (int n = 0; n < 100000; ++n) {
        const i128 m = g.integer(15);
        const int k = g.uniform(-129, 110);
        dec_t want, d;
        const dec_t scale = pow10(k), whole = from_i128(m);
        ASSERT_EQ(decmul(&whole, &scale, &want), 0);
        const std::string text = show(m) + "e" + std::to_string(k);
        ASSERT_EQ(deccvdbl(std::strtod(text.c_str(), nullptr), &d), 0) << text;
        ASSERT_TRUE(same(d, want)) << text << " gave " << show(d);
    }
}

// dectodbl against glibc's correctly rounded strtod of the exact digits:
// random decimals of up to 32 digits, and integers exactly halfway between two
// doubles (and one either side), where the last digit decides.
TEST(DecConvert, DoubleFromDecimalIsCorrectlyRounded)
{
    auto check = [](const dec_t &d, const std::string &text) {
        double got = 0;
        ASSERT_EQ(dectodbl(&d, &got), 0);
        ASSERT_EQ(bits(got), bits(std::strtod(text.c_str(), nullptr))) << text << " " << show(d);
    };
    Gen g(4242);
    for (int n = 0; n < 60000; ++n) {
        const dec_t d = g.value();
        check(d, exact_text(d));
    }
    std::mt19937_64 rng(99);
    for (int n = 0; n < 60000; ++n) {
        const i128 mantissa = static_cast<i128>(rng() >> 11 | 1ULL << 52);
        const int shift = static_cast<int>(rng() % 52) + 1; // ulp 2^shift; 10^32 > 2^106
        const i128 halfway = ((2 * mantissa + 1) << (shift - 1)) + static_cast<int>(rng() % 3) - 1;
        check(from_i128(halfway), show(halfway));
    }
}

TEST(DecConvert, IntegerRangeEdges)
{
    const int over = QMR_E_DECOVERFLOW;
    const struct {
        const char *value;
        int long_code;
        long as_long;
        int int_code;
        int as_int;
    } rows[] = {
        // clang-format off
        {"0", 0, 0, 0, 0}, {"-0.999", 0, 0, 0, 0}, {"32767.9", 0, 32767, 0, 32767},
        {"32768", 0, 32768, over, 0}, {"-32768", 0, -32768, over, 0},
        {"2147483647.99", 0, 2147483647, over, 0}, {"-2147483647.5", 0, -2147483647, over, 0},
        {"2147483648", over, 0, over, 0}, {"-2147483648", over, 0, over, 0},
        {"99999999999999999999999999999999", over, 0, over, 0},
        // clang-format on
    };
    for (const auto &r : rows) {
        const dec_t d = dec(r.value);
        long l = 555;
        int i = 555;
        EXPECT_EQ(dectolong(&d, &l), r.long_code) << r.value;
        EXPECT_EQ(l, r.long_code ? 555 : r.as_long) << r.value;
        EXPECT_EQ(dectoint(&d, &i), r.int_code) << r.value;
        EXPECT_EQ(i, r.int_code ? 555 : r.as_int) << r.value;
    }
    // every other value of the argument types converts exactly
    for (long v : {0L, 99L, -100L, -32767L, 32767L, 2147483647L, -2147483647L, long_null - 1,
                   std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        dec_t d = raw(1, 7, {7}), e = d;
        EXPECT_TRUE(deccvlong(v, &d) == 0 && same(d, from_i128(v))) << v;
        const bool is_int = v >= INT32_MIN && v <= INT32_MAX;
        EXPECT_TRUE(!is_int || (deccvint(static_cast<int>(v), &e) == 0 && same(e, d))) << v;
    }
}

namespace
{

struct Cvt {
    std::string text;
    int decpt, sign;
    bool operator==(const Cvt &) const = default;
};

std::ostream &operator<<(std::ostream &os, const Cvt &c)
{
    return os << '"' << c.text << "\" decpt " << c.decpt << " sign " << c.sign;
}

Cvt call(char *(*fn)(const dec_t *, int, int *, int *), const dec_t &d, int n)
{
    Cvt c;
    c.text = fn(&d, n, &c.decpt, &c.sign);
    return c;
}

// The digits decround leaves at `places`, padded with zeros to the first
// `significant` digits, or when that is 0 to `places` after the point.
Cvt rounded_by_arith(dec_t d, int places, int significant)
{
    const int sign = d.sign == 0 ? 1 : 0;
    decround(&d, places);
    auto [s, point] = expand(d);
    if (s.empty())
        point = 0;
    s.resize(static_cast<std::size_t>(significant ? significant
                                      : s.empty() ? places
                                                  : point + places),
             '0');
    return {s, point, sign};
}

} // namespace

// Half away from zero with carries; a value that rounds to zero at ndigit
// places gives ndigit zeros with the point at 0 (the sign still tells a
// negative value). qmr_decfcvt agrees with decfcvt.
TEST(DecDigits, RoundHalfAwayFromZeroWithCarriesAndZeros)
{
    const struct {
        const char *value;
        bool fixed;
        int ndigit;
        Cvt want;
    } rows[] = {
        // clang-format off
        {"9.995", true, 2, {"1000", 2, 0}}, {"-9.995", true, 2, {"1000", 2, 1}},
        {"0.005", true, 2, {"1", -1, 0}}, {"99.5", true, 0, {"100", 3, 0}},
        {"0", true, 3, {"000", 0, 0}}, {"0.0004", true, 3, {"000", 0, 0}},
        {"-0.0004", true, 3, {"000", 0, 1}}, {"0.4", true, 0, {"", 0, 0}},
        {"0.049", true, 1, {"0", 0, 0}}, {"12345.678", false, 3, {"123", 5, 0}},
        {"99.96", false, 3, {"100", 3, 0}}, {"-0.00999", false, 2, {"10", -1, 1}},
        {"0", false, 4, {"0000", 0, 0}}, {"1.5", false, 34, {"15" + std::string(32, '0'), 1, 0}},
        {"99999999999999999999999999999999", false, 31, {"1" + std::string(30, '0'), 33, 0}},
        // clang-format on
    };
    for (const auto &r : rows) {
        const dec_t d = dec(r.value);
        EXPECT_EQ(call(r.fixed ? decfcvt : dececvt, d, r.ndigit), r.want) << r.value;
        Cvt c;
        char buf[40];
        if (r.fixed && qmr_decfcvt(&d, r.ndigit, &c.decpt, &c.sign, buf, sizeof buf) == 0)
            c.text = buf;
        EXPECT_TRUE(!r.fixed || c == r.want) << r.value << " in the caller's buffer: " << c;
    }
    const dec_t tiny = raw(1, -64, {1}); // 10^-130
    EXPECT_EQ(call(decfcvt, tiny, 129), (Cvt{std::string(129, '0'), 0, 0}));
    EXPECT_EQ(call(decfcvt, tiny, 130), (Cvt{"1", -129, 0}));
    // decround rounds half away from zero in the arithmetic: the digit strings
    // agree with it at every place (exponent 63 left out: its carry would
    // leave the range)
    Gen g(31);
    for (int n = 0; n < 20000; ++n) {
        const dec_t d = g.value_at(g.uniform(-64, 62));
        const int places = g.uniform(0, 40), sig = g.uniform(1, 34);
        ASSERT_EQ(call(decfcvt, d, places), rounded_by_arith(d, places, 0)) << show(d) << places;
        ASSERT_EQ(call(dececvt, d, sig), rounded_by_arith(d, sig - expand(d).second, sig))
            << show(d) << " e" << sig;
        ASSERT_EQ(call(deccvt, d, sig), call(dececvt, d, sig));
    }
}

TEST(DecDigits, NdigitLimitsAndTheCallersBuffer)
{
    const dec_t d = dec("-1234.5678");
    const dec_t top = raw(1, 63, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99});
    EXPECT_EQ(call(dececvt, d, 0), call(dececvt, d, 1));
    EXPECT_EQ(call(dececvt, d, -7), (Cvt{"1", 4, 1}));
    EXPECT_EQ(call(decfcvt, d, -3), call(decfcvt, d, 0));
    EXPECT_EQ(call(dececvt, d, 1000).text.size(), std::size_t{QMR_DECCVT_MAXNDIGIT});
    EXPECT_EQ(call(decfcvt, d, 1000).text.size(), std::size_t{4 + QMR_DECCVT_MAXNDIGIT});
    EXPECT_EQ(call(decfcvt, top, 1000).text.size(), std::size_t{126 + QMR_DECCVT_MAXNDIGIT});
    EXPECT_EQ(call(dececvt, top, 1), (Cvt{"1", 127, 0}));

    // exactly fitting (digits and NUL) succeeds; one byte short writes nothing
    for (const dec_t &v : {d, dec("9.995"), dec("0.0004"), zero_dec(), top}) {
        for (int ndigit : {0, 2, 7, 200}) {
            std::vector<char> buf(400, 'x');
            Cvt want;
            ASSERT_EQ(qmr_decfcvt(&v, ndigit, &want.decpt, &want.sign, buf.data(), 400), 0);
            want.text = buf.data();
            EXPECT_TRUE(ndigit > QMR_DECCVT_MAXNDIGIT || call(decfcvt, v, ndigit) == want);
            const int fits = static_cast<int>(want.text.size()) + 1;
            std::fill(buf.begin(), buf.end(), 'x');
            int decpt = 77, sign = 77;
            EXPECT_EQ(qmr_decfcvt(&v, ndigit, &decpt, &sign, buf.data(), fits - 1),
                      QMR_E_BUFTOOSMALL);
            EXPECT_TRUE(std::count(buf.begin(), buf.end(), 'x') == 400 && decpt + sign == 154);
            EXPECT_EQ(qmr_decfcvt(&v, ndigit, &decpt, &sign, buf.data(), fits), 0);
            EXPECT_EQ((Cvt{buf.data(), decpt, sign}), want) << show(v) << ndigit;
        }
    }
    int decpt = 0, sign = 0;
    EXPECT_EQ(qmr_decfcvt(&d, 2, &decpt, &sign, nullptr, 100), QMR_E_BUFTOOSMALL);
}

// Each thread has its own digit buffer: two threads converting at once each
// see only their own digits.
TEST(DecDigits, PerThreadBuffers)
{
    auto worker = [](const char *value, const char *want, char **where, bool *ok) {
        const dec_t d = dec(value);
        *ok = true;
        for (int n = 0; n < 20000 && *ok; ++n) {
            int decpt, sign;
            *where = decfcvt(&d, 3, &decpt, &sign);
            *ok = std::strcmp(*where, want) == 0;
        }
    };
    char *a = nullptr, *b = nullptr;
    bool ok_a = false, ok_b = false;
    std::thread ta(worker, "1.5", "1500", &a, &ok_a);
    std::thread tb(worker, "22.25", "22250", &b, &ok_b);
    ta.join();
    tb.join();
    EXPECT_TRUE(ok_a && ok_b && a != b);
}

TEST(RsTo, TextTable)
{
    constexpr int lr = QMR_E_INTEGERRANGE, ir = QMR_E_SMALLINTRANGE, fr = QMR_E_FLOATRANGE;
    const struct {
        const char *text;
        int dcode;
        double dval;
        int lcode;
        long lval;
        int icode;
        int ival;
    } rows[] = {
        // clang-format off
        {"0", 0, 0, 0, 0, 0, 0}, {"  42  ", 0, 42, 0, 42, 0, 42},
        {"\t-17\t", 0, -17, 0, -17, 0, -17}, {"+5", 0, 5, 0, 5, 0, 5},
        {"-1.9", 0, -1.9, 0, -1, 0, -1}, {".5", 0, 0.5, 0, 0, 0, 0}, {"5.", 0, 5, 0, 5, 0, 5},
        {"1.5E+2", 0, 150, 0, 150, 0, 150}, {"125e-2", 0, 1.25, 0, 1, 0, 1},
        {"32768", 0, 32768, 0, 32768, ir, 0}, {"-32768", 0, -32768, 0, -32768, ir, 0},
        {"-2147483647.9", 0, -2147483647.9, 0, -2147483647, ir, 0},
        {"2147483648", 0, 2147483648.0, lr, 0, ir, 0},
        {"-2147483648", 0, -2147483648.0, lr, 0, ir, 0},
        {"99999999999999999999", 0, 1e20, lr, 0, ir, 0}, {"0e999999999999999999", 0, 0, 0, 0, 0, 0},
        {"1e-999999999999999999", fr, 0, 0, 0, 0, 0}, {"1e400", fr, 0, lr, 0, ir, 0},
        {"-1.8e308", fr, 0, lr, 0, ir, 0}, {"4.9e-324", 0, 5e-324, 0, 0, 0, 0},
        {"0.1000000000000000055511151231257827021181583404541015625", 0, 0.1, 0, 0, 0, 0},
        // clang-format on
    };
    for (const auto &r : rows) {
        double d = 777;
        long l = 777;
        int i = 777;
        EXPECT_EQ(rstod(r.text, &d), r.dcode) << r.text;
        EXPECT_EQ(d, r.dcode ? 777 : r.dval) << r.text;
        EXPECT_EQ(rstol(r.text, &l), r.lcode) << r.text;
        EXPECT_EQ(l, r.lcode ? 777 : r.lval) << r.text;
        EXPECT_EQ(rstoi(r.text, &i), r.icode) << r.text;
        EXPECT_EQ(i, r.icode ? 777 : r.ival) << r.text;
    }
    for (const char *text : {"abc", "1.2.3", "1e", "1e+", "e5", ".", "+", "-", "- 1", "1 2", "0x10",
                             "inf", "nan", "--1", "1,000", "12abc", "1e5.5", "1\n", "1e 5"}) {
        double d = 777;
        long l = 777;
        int i = 777;
        EXPECT_EQ(rstod(text, &d), QMR_E_NOTNUMBER) << text;
        EXPECT_EQ(rstol(text, &l), QMR_E_NOTNUMBER) << text;
        EXPECT_EQ(rstoi(text, &i), QMR_E_NOTNUMBER) << text;
        EXPECT_TRUE(d == 777 && l == 777 && i == 777) << text;
    }
}
