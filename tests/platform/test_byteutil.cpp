// Byte and string helpers: stored-number round trips at odd addresses, field
// padding and truncation, unsigned comparison signs, case shifts, blank length.
#include "qmr/byteutil.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace
{

// A buffer that places a stored number at an odd address between guard bytes,
// so that misaligned access and stray writes both show up. Bytes are spelt in
// hex ("7FFF").
struct Field {
    std::array<char, 16> buf;
    Field() { buf.fill('#'); }
    char *at() { return buf.data() + 1; }
    void put(const std::string &hex)
    {
        for (std::size_t i = 0; i < hex.size() / 2; ++i)
            at()[i] = static_cast<char>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
    }
    void expect(const std::string &hex) const
    {
        std::string got(hex.size(), '?');
        for (std::size_t i = 0; i < hex.size() / 2; ++i)
            std::snprintf(&got[2 * i], 3, "%02X", static_cast<unsigned char>(buf[1 + i]));
        EXPECT_EQ(got, hex);
        EXPECT_TRUE(buf[0] == '#' && buf[1 + hex.size() / 2] == '#') << "wrote outside the field";
    }
};

TEST(ByteUtil, IntegersRoundTripBigEndianSignExtended)
{
    // Width 2: stint/ldint, 4: stlong/ldlong; the value, its stored bytes, and
    // what loads back (the low 16 or 32 bits, sign-extended).
    // clang-format off
    const std::tuple<int, long, const char *, long> rows[] = {
        {2, 0, "0000", 0},                          {2, 1, "0001", 1},
        {2, -1, "FFFF", -1},                        {2, 0x1234, "1234", 0x1234},
        {2, INT16_MAX, "7FFF", INT16_MAX},          {2, INT16_MIN, "8000", INT16_MIN},
        {2, 0x12345, "2345", 0x2345},               {2, INT16_MIN - 1, "7FFF", INT16_MAX},
        {2, INT_MIN, "0000", 0},                    {4, 0, "00000000", 0},
        {4, 1, "00000001", 1},                      {4, -1, "FFFFFFFF", -1},
        {4, -2, "FFFFFFFE", -2},                    {4, 0x12345678, "12345678", 0x12345678},
        {4, INT32_MAX, "7FFFFFFF", INT32_MAX},      {4, INT32_MIN, "80000000", INT32_MIN},
        {4, 0x123456789L, "23456789", 0x23456789},  {4, INT32_MAX + 1L, "80000000", INT32_MIN}};
    // clang-format on
    for (const auto &[width, value, stored, loaded] : rows) {
        SCOPED_TRACE(value);
        Field f;
        if (width == 2)
            stint(static_cast<int>(value), f.at());
        else
            stlong(value, f.at());
        f.expect(stored);
        EXPECT_EQ(width == 2 ? ldint(f.at()) : ldlong(f.at()), loaded);
    }
}

TEST(ByteUtil, FloatingPointLoadsAndStoresKeepTheBits)
{
    // Doubles (16 hex digits) keep their exact pattern; singles widen on load
    // and narrow back to the same bytes, NaNs (the all-0xFF null too) included.
    // The second field is what a single loads as, compared by bits (NAN: any NaN).
    const std::pair<const char *, double> rows[] = {
        {"0000000000000000", 0}, {"8000000000000000", 0}, // 0.0, -0.0
        {"3FF0000000000000", 0}, {"BFF0000000000000", 0}, // 1.0, -1.0
        {"7FEFFFFFFFFFFFFF", 0}, {"0000000000000001", 0}, // DBL_MAX, the smallest subnormal
        {"7FF0000000000000", 0}, {"7FF8000000000001", 0}, // +inf, a quiet NaN with a payload
        {"FFF8000000000000", 0}, {"FFFFFFFFFFFFFFFF", 0}, // a negative quiet NaN, the null
        {"0102030405060708", 0},                          // byte order
        {"00000000", 0.0},       {"80000000", -0.0},      {"3F800000", 1.0},
        {"C0200000", -2.5},      {"3DCCCCCD", 0.1f},      {"7F7FFFFF", FLT_MAX},
        {"7F800000", HUGE_VAL},  {"FFFFFFFF", NAN},       {"7FC00001", NAN},
    };
    for (const auto &[stored, loaded] : rows) {
        SCOPED_TRACE(stored);
        const bool dbl = std::strlen(stored) == 16;
        Field f, g;
        f.put(stored);
        const double d = dbl ? lddbl(f.at()) : ldfloat(f.at());
        const auto bits = std::bit_cast<std::uint64_t>(d);
        if (dbl)
            EXPECT_EQ(bits, std::stoull(stored, nullptr, 16));
        else if (std::isnan(loaded))
            EXPECT_NE(d, d);
        else
            EXPECT_EQ(bits, std::bit_cast<std::uint64_t>(loaded));
        dbl ? stdbl(d, g.at()) : stfloat(d, g.at());
        g.expect(stored);
    }
    // Narrowing rounds to nearest and overflows to an infinity.
    Field g;
    stfloat(0.1, g.at());
    g.expect("3DCCCCCD");
    stfloat(-1e300, g.at());
    g.expect("FF800000");
}

TEST(ByteUtil, CharFieldsLoadWithoutAndStoreWithBlanks)
{
    const std::string pad(40, ' ');
    const std::tuple<std::string, int, std::string> loads[] = {
        {"ab  ", 4, "ab"},  {"    ", 4, ""},
        {"a b ", 4, "a b"}, {"  ab", 4, "  ab"},
        {"abcd", 2, "ab"},  {"ab\t ", 4, "ab\t"},
        {"", 0, ""},        {"xyz", 0, ""},
        {"xyz", -3, ""},    {pad + "x" + pad, 81, pad + "x"}};
    for (const auto &[field, len, want] : loads) {
        SCOPED_TRACE('"' + field + "\" " + std::to_string(len));
        std::vector<char> out(field.size() + 2, '#');
        ldchar(field.data(), len, out.data());
        EXPECT_STREQ(out.data(), want.c_str());
        std::size_t end = len > 0 ? static_cast<std::size_t>(len) + 1 : 1;
        for (std::size_t i = end; i < out.size(); ++i)
            EXPECT_EQ(out[i], '#') << "wrote past the field";
    }
    char inplace[] = "abc   ";
    ldchar(inplace, 6, inplace);
    EXPECT_STREQ(inplace, "abc");
    char out[4] = "###";
    ldchar(nullptr, 3, out);
    EXPECT_STREQ(out, "");
    ldchar("abc", 3, nullptr); // ignored

    // stchr blank-pads or cuts, and writes no terminator: the guard bytes stay.
    const std::tuple<const char *, int, std::string> stores[] = {
        {"ab", 5, "ab   "}, {"abcdef", 3, "abc"}, {"", 3, "   "}, {"abc", 3, "abc"},
        {nullptr, 2, "  "}, {"abc", 0, ""},       {"abc", -1, ""}};
    for (const auto &[from, len, want] : stores) {
        std::string field(8, '#');
        stchr(from, field.data(), len);
        EXPECT_EQ(field, want + std::string(8 - want.size(), '#'))
            << (from ? from : "(null)") << ' ' << len;
    }
    stchr("abc", nullptr, 3); // ignored
}

TEST(ByteUtil, ComparisonsTreatBytesAsUnsignedAndNullFirst)
{
    // bycmpr answers exactly -1/0/1 whatever the byte distance; NUL is just a byte.
    const std::tuple<const char *, const char *, int, int> by[] = {
        {"\x80", "\x7F", 1, 1}, {"\x00", "\xFF", 1, -1}, {"a\xFF", "a\x01", 2, 1},
        {"abc", "abd", 3, -1},  {"abc", "abd", 2, 0},    {"a\0b", "a\0c", 3, -1},
        {"x", "y", 0, 0},       {"x", "y", -5, 0},       {nullptr, nullptr, 3, 0},
        {nullptr, "a", 1, -1},  {"a", nullptr, 1, 1}};
    int row = 0;
    for (const auto &[a, b, len, want] : by)
        EXPECT_EQ(bycmpr(a, b, len), want) << "bycmpr row " << row++;
    // stcmpr and stcmpri promise only the sign; stcmpri folds ASCII to lower case.
    using Cmp = int (*)(const char *, const char *) noexcept;
    const std::tuple<Cmp, const char *, const char *, int> st[] = {
        {stcmpr, "\x80", "\x7F", 1}, {stcmpr, "a", "a\xE9", -1},    {stcmpr, "", "a", -1},
        {stcmpr, "same", "same", 0}, {stcmpr, "b", "abc", 1},       {stcmpr, nullptr, nullptr, 0},
        {stcmpr, nullptr, "", -1},   {stcmpri, "ABC", "abc", 0},    {stcmpri, "a", "B", -1},
        {stcmpri, "[", "A", -1},     {stcmpri, "\xC0", "\xE0", -1}, {stcmpri, "\xFF", "z", 1},
        {stcmpri, "Ab", "aBc", -1},  {stcmpri, "", nullptr, 1}};
    row = 0;
    for (const auto &[cmp, a, b, sign] : st) {
        const int got = cmp(a, b);
        EXPECT_EQ((got > 0) - (got < 0), sign) << "string row " << row++;
    }
}

TEST(ByteUtil, CaseShiftsTouchOnlyAsciiLetters)
{
    char up[] = "azAZ09@[`{\xE9\xC3\xA9 mIx";
    rupshift(up);
    EXPECT_STREQ(up, "AZAZ09@[`{\xE9\xC3\xA9 MIX");
    char down[] = "azAZ09@[`{\xC9\xC3\x89 mIx";
    rdownshift(down);
    EXPECT_STREQ(down, "azaz09@[`{\xC9\xC3\x89 mix");
    rupshift(nullptr);
    rdownshift(nullptr);
}

TEST(ByteUtil, BylengCountsUpToTheLastNonBlank)
{
    // Every length up to 40 with the last non-blank at every position,
    // so that the word-at-a-time skip meets every alignment.
    for (int len = 0; len <= 40; ++len) {
        for (int last = -1; last < len; ++last) {
            std::string s(static_cast<std::size_t>(len), ' ');
            for (int i = 0; i <= last; ++i)
                s[static_cast<std::size_t>(i)] = (i % 3 == 0 && i != last) ? ' ' : 'x';
            s += "zz"; // beyond len: must not be looked at
            EXPECT_EQ(qmr_byleng(s.data(), len), last + 1) << len << ' ' << last;
        }
    }
    EXPECT_EQ(qmr_byleng("ab\t", 3), 3); // only ' ' is a blank
    EXPECT_EQ(qmr_byleng("ab\0 ", 4), 3);
    EXPECT_EQ(qmr_byleng("abc", -1), 0);
    EXPECT_EQ(qmr_byleng(nullptr, 5), 0);
}

} // namespace
