// Decimal text: reading by rule (signs, points, separators and grouping,
// exponents, hexadecimal, the 32-digit cut, hostile bytes, the heap copy) and
// writing (fixed and exponent forms, "*" fill), with round trips against the
// test's own parser, under the built-in and a comma-point locale.
#include "qmr/decimal.h"

#include "locale/environment.hpp"
#include "numeric/money.hpp"
#include "platform/alloc.hpp"
#include "qmr/env.h"
#include "qmr/gl.h"
#include "qmr/money.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "numeric/dec_testutil.h"

namespace
{

using dectest::dec;
using dectest::same;
using dectest::show;

// An environment of its own for the calling thread while in scope.
class ThreadLocale
{
  public:
    explicit ThreadLocale(const char *name)
    {
        int status = 0;
        env_ = qmr_glsenv_create(name, &status);
        EXPECT_EQ(status, 0) << name;
        SetGlsEnv(env_);
    }
    ~ThreadLocale() { qmr_glsenv_free(env_); }
    ThreadLocale(const ThreadLocale &) = delete;
    ThreadLocale &operator=(const ThreadLocale &) = delete;

  private:
    qmr_glsenv_t *env_;
};

// Every test starts with DBMONEY and the relaxed separator check unset, so the
// built-in locale gives point ".", separator "," and groups of three.
class DecText : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        unsetenv("DBMONEY");
        gputenv("DBMONEY", nullptr);
        gputenv("QMR_NOT_STRICT_THOUS_SEP", nullptr);
        qmr_money_reset();
    }
    void TearDown() override { SetUp(); }
};

dec_t garbage()
{
    dec_t d;
    std::memset(&d, 0x5A, sizeof d);
    return d;
}

struct ReadRow {
    const char *text;
    int rc;
    const char *value; // plain decimal text when rc is 0, null for the null decimal
};

void expect_read(const ReadRow &row, int len = -2, bool net = false)
{
    if (len == -2)
        len = static_cast<int>(std::strlen(row.text));
    dec_t d = garbage();
    const int rc = net ? deccvasc_net(row.text, len, &d) : deccvasc(row.text, len, &d);
    EXPECT_EQ(rc, row.rc) << "'" << row.text << "'";
    if (row.rc != 0) {
        EXPECT_TRUE(same(d, dectest::zero_dec())) << "'" << row.text << "' " << show(d);
    } else if (row.value == nullptr) {
        EXPECT_TRUE(same(d, dectest::null_dec())) << "'" << row.text << "' " << show(d);
    } else {
        EXPECT_TRUE(same(d, dec(row.value))) << "'" << row.text << "' " << show(d);
        EXPECT_EQ(decverify(&d), 0);
    }
}

std::string field(const dec_t &d, int len, int right, bool net = false)
{
    std::string out(static_cast<std::size_t>(len) + 4, '#');
    const int rc =
        net ? dectoasc_net(&d, out.data(), len, right) : dectoasc(&d, out.data(), len, right);
    EXPECT_EQ(out.substr(static_cast<std::size_t>(len)), "####") << "wrote past the field";
    return std::to_string(rc) + ":" + out.substr(0, static_cast<std::size_t>(len));
}

TEST_F(DecText, ReadsNumbersByTheRules)
{
    const ReadRow rows[] = {
        {"123.45", 0, "123.45"},
        {"0.001", 0, "0.001"},
        {"  -1,234.5", 0, "-1234.5"},
        {"1.5e3", 0, "1500"},
        {"1.5E-3", 0, "0.0015"},
        {"-0", 0, "0"},
        {".5", 0, "0.5"},
        {"000123", 0, "123"},
        {"0.000", 0, "0"},
        {"12 \n", 0, "12"},
        {"12\nrest", 0, "12"}, // a newline ends the text
        {"1e", 0, "1"},
        {"0x1F", 0, "31"},
        {"-0x10", 0, "-16"},
        {"0xffffffff", 0, "4294967295"},
        {"0x100000001", 0, "1"}, // read modulo 2^32
        {"0x", 0, "0"},
        {"12abc", QMR_E_NOTNUMBER, nullptr},
        {"1.2.3", QMR_E_NOTNUMBER, nullptr},
        {"1e200", QMR_E_DECOVERFLOW, nullptr},
        {"1e-200", QMR_E_DECUNDERFLOW, nullptr},
        {"1e-131", QMR_E_DECUNDERFLOW, nullptr}, // below 10^-130 once packed
        {"0e999", 0, "0"},
        {"0x1G", QMR_E_NOTNUMBER, nullptr},
        {"-", QMR_E_NOTNUMBER, nullptr},
        {"+", QMR_E_NOTNUMBER, nullptr},
        {"- 5", QMR_E_NOTNUMBER, nullptr},
        {"1 2", QMR_E_NOTNUMBER, nullptr},
        {"1,23", QMR_E_NOTNUMBER, nullptr},     // a group of two
        {"1.5,000", QMR_E_NOTNUMBER, nullptr},  // a separator after the point
        {"\xC3\xA9", QMR_E_NOTNUMBER, nullptr}, // bytes of no number
        {"1\xFF", QMR_E_NOTNUMBER, nullptr},
        {"", 0, nullptr},
        {"   ", 0, nullptr},
        // 32 significant digits are kept, the rest dropped without rounding; an
        // odd point position leaves room for 31
        {"123456789012345678901234567890123456", 0, "123456789012345678901234567890120000"},
        {"99999999999999999999999999999999.99", 0, "99999999999999999999999999999999"},
        {"0.000123456789012345678901234567890129", 0, "0.0001234567890123456789012345678901"},
        {"1234567890123456789012345678901234567", 0, "1234567890123456789012345678901000000"},
    };
    for (const ReadRow &row : rows)
        expect_read(row);
    dec_t d = garbage();
    ASSERT_EQ(deccvasc("1e125", 5, &d), 0);
    EXPECT_TRUE(same(d, dectest::raw(1, 63, {10})));
    ASSERT_EQ(deccvasc("9.9e125", 7, &d), 0);
    EXPECT_TRUE(same(d, dectest::raw(1, 63, {99})));
    ASSERT_EQ(deccvasc("1e-129", 6, &d), 0);
    EXPECT_TRUE(same(d, dectest::raw(1, -64, {10})));
    ASSERT_EQ(deccvasc("1e-130", 6, &d), 0);
    EXPECT_TRUE(same(d, dectest::raw(1, -64, {1})));
    // a missing text is no number
    d = garbage();
    EXPECT_EQ(deccvasc(nullptr, 3, &d), QMR_E_NOTNUMBER);
    EXPECT_TRUE(same(d, dectest::zero_dec()));
}

// Hostile input: nothing is read past len, and each gives its code and record.
// Every count of integer and fraction digits, signed or not, blank-padded or
// not, in a buffer of exactly the text's size: the short forms and the
// general scan give what the test's own parser gives, and the text written
// back with as many decimals is the text read.
TEST_F(DecText, EveryDigitCountReadsAndWritesBack)
{
    const std::string digits = "9876543210";
    for (int ints = 1; ints <= 20; ++ints) {
        for (int fracs = 0; ints % 2 + ints + fracs <= 32; ++fracs) { // 16 pairs
            std::string number = std::to_string(ints % 9 + 1);
            for (int i = 1; i < ints + fracs; ++i)
                number += digits[static_cast<std::size_t>(i * 7 + ints) % 10];
            if (fracs > 0)
                number.insert(static_cast<std::size_t>(ints), ".");
            for (const char *sign : {"", "-"}) {
                const std::string plain = sign + number;
                const std::string text = (ints + fracs) % 3 == 0 ? "  " + plain + " " : plain;
                const std::vector<char> exact(text.begin(), text.end());
                dec_t d = garbage();
                ASSERT_EQ(deccvasc(exact.data(), static_cast<int>(exact.size()), &d), 0) << text;
                ASSERT_TRUE(same(d, dec(plain))) << text << " " << show(d);
                ASSERT_EQ(decverify(&d), 0) << text;
                std::vector<char> out(plain.size());
                ASSERT_EQ(dectoasc(&d, out.data(), static_cast<int>(out.size()), fracs), 0);
                ASSERT_EQ(std::string(out.begin(), out.end()), plain);
            }
        }
    }
}

// Records that are not in the normal form (zero pairs before or after the
// digits, more than 16 pairs, pairs of 100 and above) are written as the
// value they hold, read pair by pair modulo 100.
TEST_F(DecText, WritesRecordsOutOfTheNormalForm)
{
    struct Row {
        dec_t record;
        const char *same_as;
    };
    const Row rows[] = {
        {dectest::raw(1, 2, {0, 12, 0}), "12"},
        {dectest::raw(0, 1, {0, 0, 5, 50, 0, 0}), "-0.000550"},
        {dectest::raw(1, 1, {112, 7}), "12.07"},
        {dectest::raw(1, 0, {0, 0, 0}), "0"},
    };
    for (const Row &row : rows) {
        for (int right : {0, 3, 7})
            EXPECT_EQ(field(row.record, 30, right), field(dec(row.same_as), 30, right))
                << row.same_as << " " << right;
    }
    dec_t wide = dectest::raw(1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    wide.ndigits = 20; // only the 16 pairs held count
    EXPECT_EQ(field(wide, 32, 30), "0:1.020304050607080910111213141516");
}

TEST_F(DecText, SurvivesHostileInput)
{
    const char text[] = "12\0"
                        "34";
    expect_read({text, 0, "12"}, 5); // a NUL within len ends the text
    expect_read({"\0"
                 "12",
                 0, nullptr},
                3);                       // and may leave it empty
    expect_read({"123", 0, "12"}, 2);     // len cuts
    expect_read({"123", 0, nullptr}, 0);  // len 0 is empty
    expect_read({"123", 0, nullptr}, -1); // so is a negative len
    const std::string big(10000, '9');
    dec_t d = garbage();
    EXPECT_EQ(deccvasc(big.data(), static_cast<int>(big.size()), &d), QMR_E_DECOVERFLOW);
    EXPECT_TRUE(same(d, dectest::zero_dec()));
    const std::string small = "0." + std::string(10000, '0') + "1";
    EXPECT_EQ(deccvasc(small.data(), static_cast<int>(small.size()), &d), QMR_E_DECUNDERFLOW);
    const std::string long_ok = std::string(5000, ' ') + "42" + std::string(5000, ' ');
    EXPECT_EQ(deccvasc(long_ok.data(), static_cast<int>(long_ok.size()), &d), 0);
    EXPECT_TRUE(same(d, dec("42")));
    // a text read inside a larger buffer: the bytes after len are digits
    expect_read({"1234567", 0, "123"}, 3);
    expect_read({"1e55", 0, "100000"}, 3);
    expect_read({"0x1F", 0, "1"}, 3);
    // every single byte, alone and after a digit
    for (int b = 0; b < 256; ++b) {
        const char one[2] = {'7', static_cast<char>(b)};
        const int rc = deccvasc(one, 2, &d);
        const bool ends = b == 0 || b == ' ' || b == '\n' || (b >= '0' && b <= '9') || b == '.' ||
                          b == 'e' || b == 'E' || b == ',';
        if (b == ',') { // a separator with a group of nothing after it
            EXPECT_EQ(rc, QMR_E_NOTNUMBER);
        } else {
            EXPECT_EQ(rc, ends ? 0 : QMR_E_NOTNUMBER) << b;
        }
    }
}

TEST_F(DecText, LongTextIsCopiedToTheHeap)
{
    const std::string text = "   -" + std::string(36, '1') + ".5";
    ASSERT_GT(text.size(), 39u);
    dec_t d = garbage();
    ASSERT_EQ(deccvasc(text.data(), static_cast<int>(text.size()), &d), 0);
    EXPECT_TRUE(same(d, dec("-" + std::string(32, '1') + "0000")));
    // 39 bytes stay on the stack, 40 need memory
    const std::string at39(39, '5'), at40(40, '5');
    ASSERT_EQ(deccvasc("1", 1, &d), 0); // the conventions are loaded before
    qmr::test_fail_alloc_after(1, true);
    EXPECT_EQ(deccvasc(at39.data(), 39, &d), 0);
    d = garbage();
    EXPECT_EQ(deccvasc(at40.data(), 40, &d), QMR_E_NOMEM);
    qmr::test_fail_alloc_after(0);
    EXPECT_TRUE(same(d, dectest::zero_dec()));
    // the copy is freed on the error paths too (the leak checker watches)
    const std::string bad = std::string(50, '1') + "x";
    EXPECT_EQ(deccvasc(bad.data(), static_cast<int>(bad.size()), &d), QMR_E_NOTNUMBER);
    const std::string blank(60, ' ');
    EXPECT_EQ(deccvasc(blank.data(), 60, &d), 0);
    EXPECT_EQ(d.sign, -1);
}

TEST_F(DecText, GroupingOfThousands)
{
    const ReadRow strict[] = {
        {"1,234", 0, "1234"},
        {"12,345,678.25", 0, "12345678.25"},
        {"-123,456", 0, "-123456"},
        {"1,2345", QMR_E_NOTNUMBER, nullptr},
        {"1234,567", QMR_E_NOTNUMBER, nullptr},
        {",123", QMR_E_NOTNUMBER, nullptr},
        {"123,", QMR_E_NOTNUMBER, nullptr},
        {"1,,234", QMR_E_NOTNUMBER, nullptr},
        {"1,234,56", QMR_E_NOTNUMBER, nullptr},
        {"1,234e2", 0, "123400"},
    };
    for (const ReadRow &row : strict)
        expect_read(row);
    // relaxed: every separator before the point is skipped
    ASSERT_EQ(gputenv("QMR_NOT_STRICT_THOUS_SEP", "1"), 0);
    const ReadRow relaxed[] = {
        {"1,2345", 0, "12345"},
        {",123", QMR_E_NOTNUMBER, nullptr}, // a number starts with a digit or the point
        {"1,,2", 0, "12"},
        {"1.5,000", QMR_E_NOTNUMBER, nullptr}, // still not after the point
    };
    for (const ReadRow &row : relaxed)
        expect_read(row);
    ASSERT_EQ(gputenv("QMR_NOT_STRICT_THOUS_SEP", "yes"), 0); // only "1" relaxes
    expect_read({"1,2345", QMR_E_NOTNUMBER, nullptr});
    // the default record has no separator at all
    expect_read({"1,234", QMR_E_NOTNUMBER, nullptr}, -2, true);
}

// Grouping strings of other locales, set on the thread's own environment.
TEST_F(DecText, GroupingStringsOfTheLocale)
{
    ThreadLocale own("en_US.8859-1");
    int status = 0;
    qmr_glsenv_t *env = qmr::money_env(&status);
    ASSERT_NE(env, nullptr);
    struct Row {
        const char *grouping;
        const char *text;
        bool valid;
    };
    const Row rows[] = {
        {"\3\2", "12,34,567", true}, // threes, then twos repeated
        {"\3\2", "1,234,567", false},
        {"\3\xff", "1234567,890", true}, // grouping ends: any length on the left
        {"\3\xff", "1,234,567", false},
        {"\2", "1,23,45", true},
        {"", "1,234,567", true}, // empty: threes
        {"", "1,23", false},
        {"3", "1,234", true}, // the character '3' as in the default record
        {"\4", "1,2345", true},
        {"\4", "1,234", false},
    };
    for (const Row &row : rows) {
        std::memset(env->local_conv.grouping, 0, sizeof env->local_conv.grouping);
        std::memcpy(env->local_conv.grouping, row.grouping, std::strlen(row.grouping));
        dec_t d;
        EXPECT_EQ(deccvasc(row.text, static_cast<int>(std::strlen(row.text)), &d),
                  row.valid ? 0 : QMR_E_NOTNUMBER)
            << row.text;
    }
    // a blank separator may stand after the point; an empty one never matches
    std::strcpy(env->local_conv.thousands_sep, " ");
    env->local_conv.thousands_sep_len = 1;
    std::memset(env->local_conv.grouping, 0, sizeof env->local_conv.grouping);
    expect_read({"1 234.567 8", 0, "1234.5678"});
    expect_read({"1 23", QMR_E_NOTNUMBER, nullptr});
    env->local_conv.thousands_sep[0] = '\0';
    env->local_conv.thousands_sep_len = 0;
    expect_read({"1,234", QMR_E_NOTNUMBER, nullptr});
    expect_read({"1234.5", 0, "1234.5"});
}

TEST_F(DecText, WritesFixedForm)
{
    struct Row {
        const char *value;
        int len, right;
        const char *out; // rc ":" field
    };
    const Row rows[] = {
        {"123.45", 10, 2, "0:123.45    "},
        {"1.5", 10, -1, "0:1.5       "},
        {"100", 10, -1, "0:100.0     "},
        {"0", 5, -1, "0:0.0  "},
        {"0", 3, 0, "0:0  "},
        {"-2.345", 6, 2, "0:-2.35 "}, // half away from zero
        {"9.995", 6, 2, "0:10.00 "},
        {"0.25", 4, 1, "0:0.3 "},
        {"-0.001", 6, 2, "0:0.00  "}, // no negative zero
        {"-0.4", 3, 0, "0:0  "},
        {"0.05", 6, 3, "0:0.050 "},
        {"0.0004", 3, 2, "0:0.0"}, // fewer decimals when narrow
        {"123.456", 5, 3, "0:123.5"},
        {"123.456", 4, 3, "0:123 "}, // the point goes with the last decimal
        {"123.456", 3, 3, "0:123"},
        {"-123.456", 4, 3, "0:-123"},
        {"12.3456", 20, 30, "0:12.34560000000000000"},
        {"1.2", 7, -1, "0:1.2    "},
    };
    for (const Row &row : rows)
        EXPECT_EQ(field(dec(row.value), row.len, row.right), row.out)
            << row.value << " " << row.len << " " << row.right;
}

TEST_F(DecText, WritesExponentFormAndStars)
{
    struct Row {
        dec_t value;
        int len, right;
        const char *out;
    };
    const Row rows[] = {
        {dec("12345678901234"), 10, 2, "0:1.23457e13"},
        {dec("-12345678901234"), 10, 2, "0:-1.2346e13"},
        {dec("100000000000000000000"), 3, 0, "-1:***"},
        {dec("100000000000000000000"), 4, 0, "-1:****"},
        {dec("100000000000000000000"), 5, 0, "0:1e20 "},
        {dec("0.00001"), 5, -1, "-1:*****"},
        {dec("0.00001"), 6, -1, "0:1e-05 "},
        {dec("0.000012345"), 8, -1, "0:1.23e-05"},
        {dec("99999999999"), 6, 0, "0:1e11  "},
        {dec("15000000000000000000000000000000000000000"), 8, 0, "0:1.5e40  "}, // no "1.50"
        {dec("1.5"), 0, 2, "-1:"},
        {dectest::pow10(120), 6, 0, "0:1e120 "},
        {dectest::pow10(-120), 7, -1, "0:1e-120 "},
    };
    for (const Row &row : rows)
        EXPECT_EQ(field(row.value, row.len, row.right), row.out) << show(row.value);
    // 9.99..e99 rounds up to 1e100: the exponent gains its hundreds digit
    dec_t v = dectest::raw(1, 50, {99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99});
    EXPECT_EQ(field(v, 6, 0), "0:1e100 ");
    EXPECT_EQ(field(v, 5, 0), "0:1e100");
    EXPECT_EQ(field(v, 4, 0), "-1:****");
    dec_t n = dectest::null_dec();
    EXPECT_EQ(field(n, 4, 2), "0:    ");
    char buf[4] = {'q', 'q', 'q', 'q'};
    EXPECT_EQ(dectoasc(&v, buf, -1, 2), -1);
    EXPECT_EQ(buf[0], 'q');
}

// Whatever the width and decimals, the field is filled exactly, and its text
// reads back as the value rounded (decround) to the decimals it shows; 80
// bytes show any value exactly.
TEST_F(DecText, WrittenTextReadsBack)
{
    dectest::Gen gen(31);
    for (int i = 0; i < 30000; ++i) {
        const dec_t v = gen.value();
        const int len = i % 2 ? 80 : gen.uniform(0, 45);
        const int right = i % 2 ? -1 : gen.uniform(-1, 12);
        const bool net = i % 3 == 0;
        std::string out(static_cast<std::size_t>(len) + 1, '#');
        const int rc =
            net ? dectoasc_net(&v, out.data(), len, right) : dectoasc(&v, out.data(), len, right);
        ASSERT_EQ(out[static_cast<std::size_t>(len)], '#');
        out.resize(static_cast<std::size_t>(len));
        if (rc == -1) {
            ASSERT_EQ(out, std::string(out.size(), '*'));
            continue;
        }
        ASSERT_EQ(rc, 0);
        dec_t back;
        const int read =
            net ? deccvasc_net(out.data(), len, &back) : deccvasc(out.data(), len, &back);
        if (read == QMR_E_DECOVERFLOW && v.exponent == 63)
            continue; // rounded up past the largest magnitude: "1e126"
        ASSERT_EQ(read, 0) << out << " " << show(v);
        if (len == 80) {
            ASSERT_TRUE(same(back, v)) << out << " " << show(v);
        } else if (out.find('e') == std::string::npos) {
            const std::size_t point = out.find('.');
            const std::size_t end = out.find(' ');
            dec_t want = v;
            decround(&want,
                     point == std::string::npos
                         ? 0
                         : static_cast<int>((end == std::string::npos ? len : end) - point - 1));
            ASSERT_EQ(deccmp(&back, &want), 0) << out << " " << show(v);
        }
    }
}

// DBMONEY "DM," makes "," the point and "." the separator for the locale
// forms; the _net forms keep ".".
TEST_F(DecText, CommaPointFromDbmoney)
{
    ASSERT_EQ(gputenv("DBMONEY", "DM,"), 0);
    qmr_money_reset();
    expect_read({"1.234,5", 0, "1234.5"});
    expect_read({"-1.234.567,25", 0, "-1234567.25"});
    expect_read({"1,2,3", QMR_E_NOTNUMBER, nullptr});
    expect_read({"1.5", QMR_E_NOTNUMBER, nullptr}); // a group of one digit
    expect_read({"1.5", 0, "1.5"}, -2, true);
    EXPECT_EQ(field(dec("-1234.5"), 9, 2), "0:-1234,50 ");
    EXPECT_EQ(field(dec("-1234.5"), 9, 2, true), "0:-1234.50 ");
    EXPECT_EQ(field(dec("12345678901234"), 10, 2), "0:1,23457e13");
}

TEST_F(DecText, LocalesOfTheirOwn)
{
    {
        ThreadLocale german("de_DE.8859-1"); // point ",", separator "."
        expect_read({"1.234,5", 0, "1234.5"});
        expect_read({"12.75", 0, "12.75"}, -2, true);
        EXPECT_EQ(field(dec("0.5"), 5, -1), "0:0,5  ");
    }
    ThreadLocale utf8("en_US.utf8");
    expect_read({"\xC3\xA9", QMR_E_NOTNUMBER, nullptr});
    expect_read({"\xFF\xFE", QMR_E_NOTNUMBER, nullptr});
    expect_read({"-1,234.5", 0, "-1234.5"});
    EXPECT_EQ(field(dec("-1234.5"), 8, 1), "0:-1234.5 ");
}

TEST_F(DecText, FailedLocaleIsReported)
{
    ThreadLocale broken("xx_XX.nosuchset");
    dec_t d = garbage();
    const int rc = deccvasc("12", 2, &d);
    EXPECT_LT(rc, -20000);
    EXPECT_TRUE(same(d, dectest::zero_dec()));
    char out[6];
    dec_t v = dec("1");
    EXPECT_EQ(dectoasc(&v, out, 6, 0), rc);
    // blank text and null values need no locale
    EXPECT_EQ(deccvasc("  ", 2, &d), 0);
    dec_t n = dectest::null_dec();
    EXPECT_EQ(dectoasc(&n, out, 6, 0), 0);
}

TEST_F(DecText, NoThreadContext)
{
    int rc_asc = 0, rc_net = 0;
    std::string out(6, '#');
    std::thread worker([&] {
        qmr::test_fail_alloc_after(1, true);
        const dec_t v = dec("1.5");
        rc_asc = dectoasc(&v, out.data(), 6, 1);
        rc_net = dectoasc_net(&v, out.data(), 6, 1);
        qmr::test_fail_alloc_after(0);
    });
    worker.join();
    EXPECT_EQ(rc_asc, QMR_E_NOMEM);
    EXPECT_EQ(rc_net, QMR_E_NOMEM);
    EXPECT_EQ(out, "######");
    // given the context, the worker writes as dectoasc does
    const dec_t v = dec("-7.25");
    EXPECT_EQ(dectoasc_tcb(&v, out.data(), 6, 1, CheckAlltcbInit()), 0);
    EXPECT_EQ(out, "-7.3  ");
}

} // namespace
