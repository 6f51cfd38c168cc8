// BIGINT: the integer, decimal and float conversions against 128-bit and
// standard-library oracles, the stored form, and the text reader and writer by
// their rules, round trips and hostile input.
#include "qmr/bigint.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "numeric/dec_testutil.h"
#include "qmr/gl.h"

namespace
{

using i128 = __int128;
constexpr std::int64_t kNull = INT64_MIN;

// Values favouring the 16- and 32-bit limits, powers of ten and the range's end.
std::int64_t next(std::mt19937_64 &rng)
{
    static const std::int64_t edge[] = {
        0, 1, 99, 32767, 32768, 2147483647, 2147483648, 999999999999999999, INT64_MAX};
    auto v = static_cast<std::int64_t>(rng() >> (1 + rng() % 63));
    if (rng() % 3 == 0)
        v = edge[rng() % std::size(edge)];
    return (rng() & 1) ? -v : v;
}

TEST(BigintConvert, NarrowIntegersKeepWhatFits)
{
    std::mt19937_64 rng(10);
    for (int i = 0; i < 30000; ++i) {
        const std::int64_t v = next(rng);
        short s = 7;
        std::int32_t l = 7;
        const bool fits16 = v >= -32767 && v <= 32767, fits32 = v >= -2147483647 && v <= 2147483647;
        ASSERT_EQ(biginttoint2(v, &s), fits16 ? 0 : QMR_E_SMALLINTRANGE);
        ASSERT_EQ(biginttoint4(v, &l), fits32 ? 0 : QMR_E_NOFIT);
        ASSERT_TRUE(s == (fits16 ? v : 7) && l == (fits32 ? v : 7));
        std::int64_t back = 0;
        if (fits16) {
            bigintcvint2(s, &back);
            ASSERT_EQ(back, v);
        }
        if (fits32) {
            bigintcvint4(l, &back);
            ASSERT_EQ(back, v);
        }
    }
    // each narrow form's own null stands for the BIGINT null both ways
    short s;
    std::int32_t l;
    std::int64_t v2, v4;
    EXPECT_EQ(biginttoint2(kNull, &s) + biginttoint4(kNull, &l), 0);
    bigintcvint2(-32768, &v2);
    bigintcvint4(INT32_MIN, &v4);
    EXPECT_TRUE(s == -32768 && l == INT32_MIN && v2 == kNull && v4 == kNull);
    EXPECT_EQ(biginttoint2(-32768, &s), QMR_E_SMALLINTRANGE);
}

TEST(BigintDecimal, ExactOutTruncatedIn)
{
    std::mt19937_64 rng(11);
    for (int i = 0; i < 30000; ++i) {
        const std::int64_t v = next(rng);
        dec_t d;
        std::int64_t back;
        ASSERT_EQ(biginttodec(v, &d), 0);
        ASSERT_TRUE(dectest::same(d, dectest::from_i128(v))) << v;
        ASSERT_EQ(bigintcvdec(&d, &back), 0);
        ASSERT_EQ(back, v);
    }
    // random decimals around the range: the integer part, or no fit
    dectest::Gen gen(12);
    for (int i = 0; i < 30000; ++i) {
        const dec_t d = gen.value_at(gen.uniform(-2, 11));
        i128 want = 0;
        for (int k = 0; k < d.exponent; ++k)
            want = want * 100 + (k < d.ndigits ? static_cast<unsigned char>(d.digits[k]) : 0);
        std::int64_t v = 42;
        const int rc = bigintcvdec(&d, &v);
        if (want > INT64_MAX) {
            ASSERT_TRUE(rc == QMR_E_NOFIT && v == 42) << dectest::show(d);
        } else {
            ASSERT_EQ(rc, 0) << dectest::show(d);
            ASSERT_EQ(v, d.sign == 0 ? -want : want) << dectest::show(d);
        }
    }
    std::int64_t v;
    dec_t d = dectest::dec("9223372036854775807.9");
    EXPECT_TRUE(bigintcvdec(&d, &v) == 0 && v == INT64_MAX);
    d = dectest::dec("-9223372036854775808");
    EXPECT_EQ(bigintcvdec(&d, &v), QMR_E_NOFIT);
    // exponent 10 with fewer than ten digits: stale bytes past ndigits never decide
    d = dectest::raw(1, 10, {9, 22, 33});
    std::memset(d.digits + 3, 99, QMR_DECSIZE - 3);
    EXPECT_TRUE(bigintcvdec(&d, &v) == 0 && v == 9223300000000000000);
    d = dectest::raw(1, 10, {9, 22, 34});
    EXPECT_EQ(bigintcvdec(&d, &v), QMR_E_NOFIT);
    d = dectest::null_dec();
    EXPECT_TRUE(bigintcvdec(&d, &v) == 0 && v == kNull);
    EXPECT_TRUE(biginttodec(kNull, &d) == 0 && d.sign == -1);
}

TEST(BigintFloat, TruncationAndNulls)
{
    constexpr double two63 = 9223372036854775808.0;
    std::mt19937_64 rng(13);
    for (int i = 0; i < 30000; ++i) {
        double x = std::ldexp(static_cast<double>(rng() >> 11), static_cast<int>(rng() % 70) - 53);
        x = (rng() & 1) ? -x : x;
        std::int64_t v = 42;
        const int rc = bigintcvdbl(x, &v);
        if (x >= two63 || x < -two63) {
            ASSERT_TRUE(rc == QMR_E_NOFIT && v == 42);
        } else {
            ASSERT_EQ(rc, 0);
            ASSERT_EQ(v, x == -two63 ? kNull : static_cast<std::int64_t>(std::trunc(x)));
        }
        const std::int64_t w = next(rng);
        double back;
        float fback;
        ASSERT_EQ(biginttodbl(w, &back) + biginttoflt(w, &fback), 0);
        ASSERT_EQ(back, static_cast<double>(w));
        ASSERT_EQ(fback, static_cast<float>(static_cast<double>(w)));
    }
    double dnull;
    float fnull;
    std::memset(&dnull, 0xFF, sizeof dnull);
    std::memset(&fnull, 0xFF, sizeof fnull);
    // a NaN and 2^63 come out as the null pattern, as do both nulls
    const double nulls[] = {std::numeric_limits<double>::quiet_NaN(), two63, dnull};
    for (double x : nulls) {
        std::int64_t v = 42;
        EXPECT_TRUE(bigintcvdbl(x, &v) == 0 && v == kNull);
    }
    std::int64_t v = 42;
    EXPECT_TRUE(bigintcvflt(fnull, &v) == 0 && v == kNull);
    EXPECT_EQ(bigintcvdbl(HUGE_VAL, &v), QMR_E_NOFIT);
    EXPECT_EQ(bigintcvflt(-HUGE_VALF, &v), QMR_E_NOFIT);
    EXPECT_TRUE(bigintcvflt(-2.75f, &v) == 0 && v == -2);
    double x = 1;
    float f = 1;
    biginttodbl(kNull, &x);
    biginttoflt(kNull, &f);
    EXPECT_TRUE(std::memcmp(&x, &dnull, 8) == 0 && std::memcmp(&f, &fnull, 4) == 0);
}

TEST(BigintStored, BigEndianBytes)
{
    char bytes[8];
    stbigint(1, bytes);
    EXPECT_EQ(std::memcmp(bytes, "\0\0\0\0\0\0\0\1", 8), 0);
    stbigint(kNull, bytes);
    EXPECT_EQ(std::memcmp(bytes, "\x80\0\0\0\0\0\0\0", 8), 0);
    std::int64_t v;
    ldbigint(&v, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE");
    EXPECT_EQ(v, -2);
    std::mt19937_64 rng(14);
    for (int i = 0; i < 1000; ++i) {
        const auto w = static_cast<std::int64_t>(rng());
        stbigint(w, bytes);
        ldbigint(&v, bytes);
        ASSERT_EQ(v, w);
    }
}

TEST(BigintText, WritesBase10And16)
{
    std::mt19937_64 rng(15);
    for (int i = 0; i < 30000; ++i) {
        const std::int64_t v = next(rng);
        char want[32], hex[24], text[40];
        *std::to_chars(want, want + 32, v).ptr = '\0';
        std::snprintf(hex, sizeof hex, "0x%016llx", static_cast<unsigned long long>(v));
        ASSERT_EQ(biginttoasc(v, text, 30, 10), 0);
        ASSERT_STREQ(text, want);
        ASSERT_EQ(biginttoasc(v, text, 30, 16), 0);
        ASSERT_STREQ(text, hex);
        // one byte short: stars over the field and nothing after it
        const int n = static_cast<int>(std::strlen(want));
        std::memset(text, 'q', sizeof text);
        ASSERT_EQ(biginttoasc(v, text, n - 1, 10), n == 1 ? 0 : QMR_E_TEXTFIT);
        ASSERT_EQ(std::string(text, static_cast<std::size_t>(n)),
                  std::string(static_cast<std::size_t>(n - 1), n == 1 ? 'q' : '*') + "q");
    }
    struct Row {
        std::int64_t v;
        int len, radix, rc;
        const char *out; // len + 1 bytes afterwards, from "q" filled
    };
    const Row rows[] = {
        {255, 19, 16, 0, "0x00000000000000ff\0q"},
        {-42, 4, 8, 0, "-42\0q"},     // any radix but 16 is decimal
        {12345, 5, 10, 0, "12345\0"}, // the NUL falls at text[len]
        {12345, 3, 10, QMR_E_TEXTFIT, "***q"},
        {12345, 0, 10, 0, "q"},
        {kNull, 6, 10, 0, "      q"}, // blanks, no NUL
    };
    for (const Row &row : rows) {
        char text[32];
        std::memset(text, 'q', sizeof text);
        EXPECT_EQ(biginttoasc(row.v, text, row.len, row.radix), row.rc);
        EXPECT_EQ(std::string(text, static_cast<std::size_t>(row.len) + 1),
                  std::string(row.out, static_cast<std::size_t>(row.len) + 1));
    }
}

// Read under the built-in locale's conventions: "," separator, "." point.
TEST(BigintText, ReadsByTheRules)
{
    struct Row {
        const char *text;
        int len; // -2: the text's own length
        int rc;
        std::int64_t v;
    };
    const Row rows[] = {
        {"1,234.9", -2, 0, 1234},
        {"1,2,3", -2, 0, 123}, // separators go wherever they stand
        {"1.5e3", -2, 0, 1500},
        {"-99.99E1", -2, 0, -999},
        {"1e-1", -2, 0, 0},
        {"12e17", -2, 0, 1200000000000000000},
        {"12e18", -2, QMR_E_NOFIT, 0}, // 20 integer digits
        {"  -0", -2, 0, 0},
        {"0.", -2, 0, 0},
        {"-", -2, 0, kNull}, // a lone sign
        {"+  ", -2, 0, kNull},
        {"\t\n 42 \r\n", -2, 0, 42},
        {"0x1F", -2, 0, 31},
        {"  0X7fffffffffffffff  ", -2, 0, INT64_MAX},
        {"0x8000000000000000", -2, QMR_E_NOFIT, 0},
        {"0x1G", -2, QMR_E_NOTNUMBER, 0},
        {"0x  ", -2, QMR_E_NOTNUMBER, 0},
        {"-0x10", -2, QMR_E_NOTNUMBER, 0},
        {"12a", -2, QMR_E_NOTNUMBER, 0},
        {"1.2.3", -2, QMR_E_NOTNUMBER, 0},
        {"1e", -2, QMR_E_NOTNUMBER, 0}, // a bad exponent
        {"1ex", -2, QMR_E_NOTNUMBER, 0},
        {".", -2, QMR_E_NOTNUMBER, 0}, // no digit at all
        {"e5", -2, QMR_E_NOTNUMBER, 0},
        {"- 5", -2, QMR_E_NOTNUMBER, 0},
        {"\xC3\xA9", -2, QMR_E_NOTNUMBER, 0},
        {"1\xFF", -2, QMR_E_NOTNUMBER, 0},
        {"9223372036854775807", -2, 0, INT64_MAX},
        {"-9223372036854775807", -2, 0, -INT64_MAX},
        {"-9223372036854775808", -2, QMR_E_NOFIT, 0},
        {"9999999999999999999", -2, QMR_E_NOFIT, 0},
        {"0000000000000000000000000000000000042", -2, 0, 42},
        {"1.23456789012345678901234", -2, 0, 1},            // 25 characters
        {"1.234567890123456789012345", -2, QMR_E_NOFIT, 0}, // 26 characters
        {"", -2, 0, kNull},
        {"   ", -2, 0, kNull},
        {"123", 2, 0, 12},
        {"123", -1, 0, 123},
        {"123", 0, 0, kNull},
        {"123", -7, 0, kNull},
        {"12\0"
         "34",
         5, 0, 12}, // a NUL ends the text
    };
    for (const Row &row : rows) {
        const int len = row.len == -2 ? static_cast<int>(std::strlen(row.text)) : row.len;
        std::int64_t v = 4242;
        EXPECT_EQ(bigintcvasc(row.text, len, &v), row.rc) << "'" << row.text << "' " << len;
        EXPECT_EQ(v, row.rc == 0 ? row.v : 4242) << "'" << row.text << "'";
    }
    std::int64_t v;
    EXPECT_EQ(bigintcvasc(nullptr, 3, &v), QMR_E_NOTNUMBER);
    const std::string huge(10000, '7'), zeros = std::string(10000, '0') + "5";
    EXPECT_EQ(bigintcvasc(huge.c_str(), static_cast<int>(huge.size()), &v), QMR_E_NOFIT);
    EXPECT_TRUE(bigintcvasc(zeros.c_str(), static_cast<int>(zeros.size()), &v) == 0 && v == 5);
}

// Every count of digits up to 21, signed or not, in a buffer of exactly the
// text's size, against std::from_chars: the value, or "does not fit" where
// from_chars finds it out of range.
TEST(BigintText, EveryDigitCountAgreesWithFromChars)
{
    std::mt19937_64 rng(21);
    for (int count = 1; count <= 21; ++count) {
        for (int i = 0; i < 200; ++i) {
            std::string text = i % 4 == 0 ? "-" : "";
            text += static_cast<char>('1' + rng() % 9);
            for (int k = 1; k < count; ++k)
                text += static_cast<char>('0' + rng() % 10);
            if (i % 50 == 0)
                text = (count > 18 ? "-9223372036854775808" : "9223372036854775807");
            const std::vector<char> exact(text.begin(), text.end());
            std::int64_t want = 0;
            const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), want);
            std::int64_t got = 4242;
            const int rc = bigintcvasc(exact.data(), static_cast<int>(exact.size()), &got);
            if (ec == std::errc() && want != kNull) {
                ASSERT_EQ(rc, 0) << text;
                ASSERT_EQ(got, want) << text;
            } else {
                ASSERT_EQ(rc, QMR_E_NOFIT) << text;
            }
        }
    }
}

TEST(BigintText, DecoratedRoundTrips)
{
    std::mt19937_64 rng(16);
    for (int i = 0; i < 30000; ++i) {
        const std::int64_t v = next(rng);
        char text[40];
        std::int64_t back = 0;
        ASSERT_EQ(biginttoasc(v, text, 30, (v >= 0 && i % 2) ? 16 : 10), 0);
        ASSERT_EQ(bigintcvasc(text, -1, &back), 0) << text;
        ASSERT_EQ(back, v);
        // the same value with a sign, leading zeros, a fraction and blanks; and
        // with its point moved by an exponent
        const std::string digits = std::to_string(v < 0 ? -v : v);
        const std::string sign = v < 0 ? "-" : "+";
        const std::string decorated = "  " + sign + "00" + digits + ".99 ";
        ASSERT_EQ(bigintcvasc(decorated.c_str(), static_cast<int>(decorated.size()), &back), 0);
        ASSERT_EQ(back, v) << decorated;
        const std::string e = sign + digits.substr(0, 1) + "." + digits.substr(1) + "e" +
                              std::to_string(digits.size() - 1);
        back = 0;
        ASSERT_EQ(bigintcvasc(e.c_str(), -1, &back), 0) << e;
        ASSERT_EQ(back, v) << e;
    }
}

TEST(BigintText, FailedLocaleIsReported)
{
    int status = 0;
    qmr_glsenv_t *broken = qmr_glsenv_create("xx_XX.nosuchset", &status);
    ASSERT_NE(broken, nullptr);
    SetGlsEnv(broken);
    std::int64_t v = 4242;
    EXPECT_LT(bigintcvasc("12", 2, &v), -20000);
    EXPECT_EQ(v, 4242);
    EXPECT_EQ(bigintcvasc("", 0, &v), 0); // empty text needs no locale
    EXPECT_EQ(v, kNull);
    qmr_glsenv_free(broken);
}

} // namespace
