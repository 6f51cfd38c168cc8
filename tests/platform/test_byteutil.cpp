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
#include <cstring>
#include <string>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;

// A buffer that places a stored number at an odd address between guard bytes,
// so that misaligned access and stray writes both show up.
struct Field {
    std::array<char, 16> buf;
    Field() { buf.fill('#'); }
    char *at() { return buf.data() + 1; }
    Bytes bytes(std::size_t n) const { return Bytes(buf.begin() + 1, buf.begin() + 1 + n); }
    bool guards_intact(std::size_t n) const { return buf[0] == '#' && buf[1 + n] == '#'; }
    void put(const Bytes &b) { std::memcpy(at(), b.data(), b.size()); }
};

TEST(ByteUtil, SixteenBitIntegersRoundTripBigEndian)
{
    struct Row {
        int value;
        Bytes stored;
        int loaded; // the low 16 bits, sign-extended
    };
    const Row rows[] = {
        {0, {0x00, 0x00}, 0},
        {1, {0x00, 0x01}, 1},
        {-1, {0xFF, 0xFF}, -1},
        {0x1234, {0x12, 0x34}, 0x1234},
        {INT16_MAX, {0x7F, 0xFF}, INT16_MAX},
        {INT16_MIN, {0x80, 0x00}, INT16_MIN},
        {0x12345, {0x23, 0x45}, 0x2345},
        {INT16_MIN - 1, {0x7F, 0xFF}, INT16_MAX},
        {INT_MIN, {0x00, 0x00}, 0},
    };
    for (const Row &r : rows) {
        Field f;
        stint(r.value, f.at());
        EXPECT_EQ(f.bytes(2), r.stored) << r.value;
        EXPECT_TRUE(f.guards_intact(2)) << r.value;
        EXPECT_EQ(ldint(f.at()), r.loaded) << r.value;
    }
}

TEST(ByteUtil, ThirtyTwoBitIntegersRoundTripSignExtended)
{
    struct Row {
        long value;
        Bytes stored;
        long loaded;
    };
    const Row rows[] = {
        {0, {0, 0, 0, 0}, 0},
        {1, {0, 0, 0, 1}, 1},
        {-1, {0xFF, 0xFF, 0xFF, 0xFF}, -1},
        {0x12345678, {0x12, 0x34, 0x56, 0x78}, 0x12345678},
        {INT32_MAX, {0x7F, 0xFF, 0xFF, 0xFF}, INT32_MAX},
        {INT32_MIN, {0x80, 0, 0, 0}, INT32_MIN},
        {-2, {0xFF, 0xFF, 0xFF, 0xFE}, -2},
        {static_cast<long>(0x123456789LL), {0x23, 0x45, 0x67, 0x89}, 0x23456789},
        {static_cast<long>(INT32_MAX) + 1, {0x80, 0, 0, 0}, INT32_MIN},
    };
    for (const Row &r : rows) {
        Field f;
        stlong(r.value, f.at());
        EXPECT_EQ(f.bytes(4), r.stored) << r.value;
        EXPECT_TRUE(f.guards_intact(4)) << r.value;
        EXPECT_EQ(ldlong(f.at()), r.loaded) << r.value;
    }
}

TEST(ByteUtil, DoublesKeepTheirExactBitPattern)
{
    const std::uint64_t patterns[] = {
        0x0000000000000000, // 0.0
        0x8000000000000000, // -0.0
        0x3FF0000000000000, // 1.0
        0xBFF0000000000000, // -1.0
        0x7FEFFFFFFFFFFFFF, // DBL_MAX
        0x0000000000000001, // smallest subnormal
        0x7FF0000000000000, // +inf
        0x7FF8000000000001, // quiet NaN with a payload
        0xFFF8000000000000, // negative quiet NaN
        0xFFFFFFFFFFFFFFFF, // all 0xFF: the stored null
        0x0102030405060708, // byte order
    };
    for (std::uint64_t bits : patterns) {
        Bytes stored(8);
        for (int i = 0; i < 8; ++i)
            stored[i] = static_cast<unsigned char>(bits >> (56 - 8 * i));
        Field f;
        f.put(stored);
        double d = lddbl(f.at());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(d), bits) << std::hex << bits;
        Field g;
        stdbl(d, g.at());
        EXPECT_EQ(g.bytes(8), stored) << std::hex << bits;
        EXPECT_TRUE(g.guards_intact(8));
    }
}

TEST(ByteUtil, FloatsWidenOnLoadAndNarrowOnStore)
{
    struct Row {
        Bytes stored;
        double loaded; // compared by bits; NaNs by their single pattern below
    };
    const Row rows[] = {
        {{0x00, 0x00, 0x00, 0x00}, 0.0},      {{0x80, 0x00, 0x00, 0x00}, -0.0},
        {{0x3F, 0x80, 0x00, 0x00}, 1.0},      {{0xC0, 0x20, 0x00, 0x00}, -2.5},
        {{0x3D, 0xCC, 0xCC, 0xCD}, 0.1f},     {{0x7F, 0x7F, 0xFF, 0xFF}, FLT_MAX},
        {{0x7F, 0x80, 0x00, 0x00}, HUGE_VAL},
    };
    for (const Row &r : rows) {
        Field f;
        f.put(r.stored);
        double d = ldfloat(f.at());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(d), std::bit_cast<std::uint64_t>(r.loaded)) << d;
        Field g;
        stfloat(d, g.at());
        EXPECT_EQ(g.bytes(4), r.stored) << d;
        EXPECT_TRUE(g.guards_intact(4));
    }
    // Narrowing rounds to nearest and overflows to an infinity.
    Field g;
    stfloat(0.1, g.at());
    EXPECT_EQ(g.bytes(4), (Bytes{0x3D, 0xCC, 0xCC, 0xCD}));
    stfloat(-1e300, g.at());
    EXPECT_EQ(g.bytes(4), (Bytes{0xFF, 0x80, 0x00, 0x00}));
    // The all-0xFF null is a NaN that survives a load and a store unchanged.
    for (const Bytes &nan : {Bytes{0xFF, 0xFF, 0xFF, 0xFF}, Bytes{0x7F, 0xC0, 0x00, 0x01}}) {
        Field n;
        n.put(nan);
        double d = ldfloat(n.at());
        EXPECT_NE(d, d);
        Field s;
        stfloat(d, s.at());
        EXPECT_EQ(s.bytes(4), nan);
    }
}

TEST(ByteUtil, LdcharDropsTrailingBlanksAndTerminates)
{
    struct Row {
        std::string field;
        int len;
        std::string want;
    };
    const Row rows[] = {
        {"ab  ", 4, "ab"},
        {"    ", 4, ""},
        {"a b ", 4, "a b"},
        {"  ab", 4, "  ab"},
        {"abcd", 2, "ab"},
        {"ab\t ", 4, "ab\t"},
        {"", 0, ""},
        {"xyz", 0, ""},
        {"xyz", -3, ""},
        {std::string(40, ' ') + "x" + std::string(40, ' '), 81, std::string(40, ' ') + "x"},
    };
    for (const Row &r : rows) {
        std::vector<char> out(r.field.size() + 2, '#');
        ldchar(r.field.data(), r.len, out.data());
        EXPECT_STREQ(out.data(), r.want.c_str()) << '"' << r.field << "\" " << r.len;
        std::size_t end = r.len > 0 ? static_cast<std::size_t>(r.len) + 1 : 1;
        for (std::size_t i = end; i < out.size(); ++i)
            EXPECT_EQ(out[i], '#') << "wrote past the field: " << r.field;
    }
    char inplace[] = "abc   ";
    ldchar(inplace, 6, inplace);
    EXPECT_STREQ(inplace, "abc");
    char out[4] = "###";
    ldchar(nullptr, 3, out);
    EXPECT_STREQ(out, "");
    ldchar("abc", 3, nullptr); // ignored
}

TEST(ByteUtil, StchrBlankPadsOrCutsWithoutTerminator)
{
    struct Row {
        const char *from;
        int len;
        std::string want; // then guard bytes
    };
    const Row rows[] = {
        {"ab", 5, "ab   "}, {"abcdef", 3, "abc"}, {"", 3, "   "},  {"abc", 3, "abc"},
        {nullptr, 2, "  "}, {"abc", 0, ""},       {"abc", -1, ""},
    };
    for (const Row &r : rows) {
        std::string out(8, '#');
        stchr(r.from, out.data(), r.len);
        EXPECT_EQ(out, r.want + std::string(8 - r.want.size(), '#'))
            << (r.from ? r.from : "(null)") << ' ' << r.len;
    }
    stchr("abc", nullptr, 3); // ignored
}

TEST(ByteUtil, ComparisonsTreatBytesAsUnsigned)
{
    EXPECT_EQ(bycmpr("\x80", "\x7F", 1), 1);
    EXPECT_EQ(bycmpr("\x00", "\xFF", 1), -1);
    // Exactly -1/0/1, whatever the byte distance.
    EXPECT_EQ(bycmpr("a\xFF", "a\x01", 2), 1);
    EXPECT_EQ(bycmpr("abc", "abd", 3), -1);
    EXPECT_EQ(bycmpr("abc", "abd", 2), 0);
    EXPECT_EQ(bycmpr("a\0b", "a\0c", 3), -1); // NUL is just a byte
    EXPECT_EQ(bycmpr("x", "y", 0), 0);
    EXPECT_EQ(bycmpr("x", "y", -5), 0);

    EXPECT_GT(stcmpr("\x80", "\x7F"), 0);
    EXPECT_LT(stcmpr("a", "a\xE9"), 0);
    EXPECT_LT(stcmpr("", "a"), 0);
    EXPECT_EQ(stcmpr("same", "same"), 0);
    EXPECT_GT(stcmpr("b", "abc"), 0);

    EXPECT_EQ(stcmpri("ABC", "abc"), 0);
    EXPECT_LT(stcmpri("a", "B"), 0);       // plain bytes would say 'a' > 'B'
    EXPECT_LT(stcmpri("[", "A"), 0);       // folded to lower case, not upper
    EXPECT_LT(stcmpri("\xC0", "\xE0"), 0); // non-ASCII is not folded
    EXPECT_GT(stcmpri("\xFF", "z"), 0);
    EXPECT_LT(stcmpri("Ab", "aBc"), 0);
}

TEST(ByteUtil, NullOperandsOrderFirst)
{
    EXPECT_EQ(bycmpr(nullptr, nullptr, 3), 0);
    EXPECT_EQ(bycmpr(nullptr, "a", 1), -1);
    EXPECT_EQ(bycmpr("a", nullptr, 1), 1);
    EXPECT_EQ(stcmpr(nullptr, nullptr), 0);
    EXPECT_LT(stcmpr(nullptr, ""), 0);
    EXPECT_GT(stcmpri("", nullptr), 0);
    EXPECT_EQ(qmr_byleng(nullptr, 5), 0);
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
                s[static_cast<std::size_t>(i)] = (i % 3 == 0) ? ' ' : 'x';
            if (last >= 0)
                s[static_cast<std::size_t>(last)] = 'x';
            s += "zz"; // beyond len: must not be looked at
            EXPECT_EQ(qmr_byleng(s.data(), len), last + 1) << len << ' ' << last;
        }
    }
    EXPECT_EQ(qmr_byleng("ab\t", 3), 3); // only ' ' is a blank
    EXPECT_EQ(qmr_byleng("ab\0 ", 4), 3);
    EXPECT_EQ(qmr_byleng("abc", -1), 0);
}

} // namespace
