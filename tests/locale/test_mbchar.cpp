// Multibyte characters: UTF-8 decoding against the Unicode library over every
// short sequence and scalar value, stepping both ways, invalid and cut-short
// input under every operation (in exact-size buffers), copying, searching,
// widths, and the same steps in a double-byte code set.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <unicode/utf8.h>

#include "locale_test_util.hpp"

namespace
{

void *utf8()
{
    return loctest::handle("en_US.utf8");
}

// What the Unicode library's decoder says of bytes[0..n): the length and value
// of a well-formed character, or 0 with `consumed` the maximal ill-formed part.
struct Oracle {
    int len;
    UChar32 cp;
    int consumed;
};
Oracle oracle(const unsigned char *bytes, int n)
{
    int32_t i = 0;
    UChar32 c;
    U8_NEXT(bytes, i, n, c);
    return c < 0 ? Oracle{0, -1, i} : Oracle{i, c, i};
}

// Checks one byte sequence (no NUL inside) against the oracle.
void check_sequence(void *loc, const unsigned char *bytes, int n)
{
    // An exact-size copy: a read past n bytes is a heap overflow under ASan.
    std::unique_ptr<char[]> copy(new char[static_cast<std::size_t>(n)]);
    std::memcpy(copy.get(), bytes, static_cast<std::size_t>(n));
    const Oracle want = oracle(bytes, n);
    _gl_ext_errno = 0;
    wchar_t wc = -7;
    const int len = gl_mbtowc(loc, &wc, copy.get(), n);
    if (want.len > 0) {
        ASSERT_EQ(len, want.len) << std::hex << int(bytes[0]) << " n=" << n;
        ASSERT_EQ(wc, want.cp);
        return;
    }
    ASSERT_EQ(len, -1) << std::hex << int(bytes[0]) << ' ' << int(n > 1 ? bytes[1] : 0)
                       << " n=" << n;
    // Cut short: a valid lead whose continuation bytes so far are all valid.
    const bool valid_lead = bytes[0] >= 0xC2 && bytes[0] <= 0xF4;
    const int expected = valid_lead && want.consumed == n ? QMR_GLE_TRUNC : QMR_GLE_BADSEQ;
    ASSERT_EQ(_gl_ext_errno, expected) << std::hex << int(bytes[0]) << " n=" << n;
}

TEST(Utf8Decoding, AgreesWithTheUnicodeLibraryOnShortSequences)
{
    void *loc = utf8();
    ASSERT_NE(loc, nullptr);
    unsigned char b[4];
    for (int x = 1; x < 256; ++x) {
        b[0] = static_cast<unsigned char>(x);
        check_sequence(loc, b, 1);
        for (int y = 1; y < 256; ++y) {
            b[1] = static_cast<unsigned char>(y);
            check_sequence(loc, b, 2);
        }
    }
    const unsigned char thirds[] = {0x41, 0x7F, 0x80, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF};
    for (int x = 0xE0; x <= 0xF4; ++x)
        for (int y = 1; y < 256; ++y)
            for (unsigned char z : thirds) {
                b[0] = static_cast<unsigned char>(x), b[1] = static_cast<unsigned char>(y),
                b[2] = z;
                check_sequence(loc, b, 3);
                for (unsigned char w : thirds) {
                    b[3] = w;
                    check_sequence(loc, b, 4);
                }
            }
}

TEST(Utf8Decoding, EveryScalarValueRoundTrips)
{
    void *loc = utf8();
    for (UChar32 cp = 1; cp <= 0x10FFFF; ++cp) {
        char ours[4];
        const int n = gl_wctomb(loc, ours, static_cast<wchar_t>(cp));
        if (cp >= 0xD800 && cp <= 0xDFFF) {
            ASSERT_EQ(n, -1) << "surrogates have no encoding";
            continue;
        }
        uint8_t theirs[4];
        int32_t len = 0;
        U8_APPEND_UNSAFE(theirs, len, cp);
        ASSERT_EQ(n, len);
        ASSERT_EQ(std::memcmp(ours, theirs, static_cast<std::size_t>(len)), 0);
        wchar_t back = 0;
        ASSERT_EQ(gl_mbtowc(loc, &back, ours, n), n);
        ASSERT_EQ(back, cp);
    }
    char out[4];
    EXPECT_EQ(gl_wctomb(loc, out, 0x110000), -1);
    EXPECT_EQ(gl_wctomb(loc, out, -1), -1);
}

// "a", e acute, euro sign, a face: 1, 2, 3 and 4 bytes.
const char mixed[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";

TEST(Utf8Stepping, ForwardBackwardCountAndOffsets)
{
    void *loc = utf8();
    const int n = static_cast<int>(std::strlen(mixed));
    std::vector<int> starts;
    for (const char *p = mixed; *p != '\0';) {
        starts.push_back(static_cast<int>(p - mixed));
        const char *next = gl_full_mbsnext(loc, p, n - static_cast<int>(p - mixed));
        ASSERT_NE(next, nullptr);
        ASSERT_GT(next, p);
        p = next;
    }
    EXPECT_EQ(starts, (std::vector<int>{0, 1, 3, 6, 10}));
    std::vector<int> back;
    for (const char *p = mixed + n; p != mixed;) {
        p = gl_full_mbsprev(loc, mixed, p);
        ASSERT_NE(p, nullptr);
        back.insert(back.begin(), static_cast<int>(p - mixed));
    }
    EXPECT_EQ(back, starts);
    EXPECT_EQ(gl_mbsntslen(loc, mixed, -1), 5);
    EXPECT_EQ(gl_mbsntslen(loc, mixed, 6), 3) << "the length bounds the count";
    EXPECT_EQ(gl_full_charoffset(loc, mixed, n, 3), 6);
    EXPECT_EQ(gl_full_charoffset(loc, mixed, n, 99), n);
    EXPECT_EQ(gl_full_charoffset(loc, mixed, n, 0), 0);
    const int lengths[] = {1, 2, 3, 4, 1};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(gl_full_mblen(loc, mixed + starts[i], n - starts[i]), lengths[i]);

    // The end and the empty string.
    const char *empty = "";
    EXPECT_EQ(gl_full_mblen(loc, empty, 5), 0);
    EXPECT_EQ(gl_full_mblen(loc, mixed, 0), 0);
    EXPECT_EQ(gl_full_mblen(loc, mixed, -5), 0);
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_full_mbsprev(loc, mixed, mixed + 2), nullptr) << "from inside a character";
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_TRUNC) << "the bytes before it are a cut-short character";
    EXPECT_EQ(gl_full_mbsnext(loc, empty, 5), empty) << "no step at the end";
    EXPECT_EQ(gl_full_mbsprev(loc, empty, empty), nullptr);
    EXPECT_EQ(gl_mbsntslen(loc, empty, -1), 0);
    EXPECT_EQ(gl_full_charoffset(loc, empty, 0, 4), 0);
    EXPECT_EQ(gl_mbwidth(loc, empty, 1), 0);
    wchar_t wide[4] = {9, 9, 9, 9};
    EXPECT_EQ(gl_mbstowcs(loc, wide, empty, 4), 0);
    EXPECT_EQ(wide[0], 0);
    EXPECT_EQ(gl_mbstowcs(loc, nullptr, mixed, 0), 5) << "a null destination counts";
    EXPECT_EQ(gl_mbstowcs(loc, wide, mixed, 4), 4);
    EXPECT_EQ(wide[3], 0x1F600);
}

struct BadCase {
    const char *what;
    std::vector<unsigned char> bytes; // exactly what the buffer holds
    int errno_value;
};

constexpr int kBad = QMR_GLE_BADSEQ, kCut = QMR_GLE_TRUNC;
// clang-format off
const std::vector<BadCase> bad_cases = {
    {"stray continuation", {0x80}, kBad},          {"C0 overlong lead", {0xC0, 0x80}, kBad},
    {"C1 overlong lead", {0xC1, 0xBF}, kBad},      {"3-byte overlong", {0xE0, 0x80, 0x80}, kBad},
    {"4-byte overlong", {0xF0, 0x8F, 0xBF, 0xBF}, kBad},
    {"high surrogate", {0xED, 0xA0, 0x80}, kBad},  {"low surrogate", {0xED, 0xBF, 0xBF}, kBad},
    {"above U+10FFFF", {0xF4, 0x90, 0x80, 0x80}, kBad},
    {"F5 lead", {0xF5, 0x80, 0x80, 0x80}, kBad},   {"FF", {0xFF}, kBad},
    {"lead then ASCII", {0xE2, 0x41, 0x41}, kBad}, {"2 of 3 bytes", {0xE2, 0x82}, kCut},
    {"3 of 4 bytes", {0xF0, 0x9F, 0x98}, kCut},    {"lead alone", {0xC3}, kCut},
    {"1 of 3 bytes", {0xE2}, kCut},                {"NUL inside", {0xE2, 0x82, 0x00}, kCut}};
// clang-format on

// Every operation on a buffer that holds exactly the bad bytes and is given
// its exact length (operations on NUL-terminated text get the bytes at the
// end of a string, followed by its NUL).
TEST(Utf8Stepping, InvalidAndCutShortSequencesFailEverywhere)
{
    void *loc = utf8();
    for (const BadCase &c : bad_cases) {
        SCOPED_TRACE(c.what);
        const int n = static_cast<int>(c.bytes.size());
        std::unique_ptr<char[]> raw(new char[c.bytes.size()]);
        std::memcpy(raw.get(), c.bytes.data(), c.bytes.size());
        std::string text = "ok" + std::string(c.bytes.begin(), c.bytes.end());
        // The result, then the error number the operation left.
        auto check = [&c](const char *op, auto got, auto want) {
            EXPECT_EQ(got, want) << op;
            EXPECT_EQ(_gl_ext_errno, c.errno_value) << op;
            _gl_ext_errno = 0;
        };
        const char *none = nullptr;
        _gl_ext_errno = 0;
        check("mblen", gl_full_mblen(loc, raw.get(), n), -1);
        check("mbsnext", gl_full_mbsnext(loc, raw.get(), n), none);
        check("mbwidth", gl_mbwidth(loc, raw.get(), n), -1);
        check("ismctype", _gl_im_ismctype(loc, raw.get(), n, 3), 0);
        check("mbtowc", gl_mbtowc(loc, nullptr, raw.get(), n), -1);
        check("mbsntslen", gl_mbsntslen(loc, raw.get(), n), -1);
        check("charoffset", gl_full_charoffset(loc, raw.get(), n, 2), -1);
        // The NUL of `text` stands where the "NUL inside" case has its own.
        if (c.bytes.back() != 0) {
            char dst[16], cat[16] = "x", lower[16];
            check("mbstowcs", gl_mbstowcs(loc, nullptr, text.c_str(), 10), -1);
            check("mbsncpy", gl_mbsncpy(loc, dst, text.c_str(), 10), static_cast<char *>(nullptr));
            EXPECT_STREQ(dst, "ok") << "the characters before it are copied";
            check("mbscat", gl_full_mbscat(loc, cat, text.c_str(), sizeof cat),
                  static_cast<char *>(nullptr));
            EXPECT_STREQ(cat, "xok");
            check("mbschr", gl_full_mbschr(loc, text.c_str(), "z"), none);
            check("tomlower", _gl_im_tomlower(loc, lower, sizeof lower, text.c_str(), -1), -1);
        }
        // Stepping back onto the bad bytes, when the string ends inside them.
        if (c.bytes.back() >= 0x80) {
            EXPECT_EQ(gl_full_mbsprev(loc, text.c_str(), text.c_str() + text.size()), nullptr);
            EXPECT_NE(_gl_ext_errno, 0);
            _gl_ext_errno = 0;
        }
    }
}

TEST(Copying, WholeCharactersOnlyAndTheRoomIsKept)
{
    void *loc = utf8();
    char dst[16];
    std::memset(dst, '#', sizeof dst);
    // "a" + e acute + euro: a limit of 5 bytes cuts the euro sign, which is left out.
    EXPECT_EQ(gl_mbsncpy(loc, dst, mixed, 5), dst);
    EXPECT_STREQ(dst, "a\xC3\xA9");
    EXPECT_EQ(dst[4], '#') << "nothing written past the NUL";
    EXPECT_EQ(gl_mbsncpy(loc, dst, mixed, 6), dst);
    EXPECT_STREQ(dst, "a\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(gl_mbsncpy(loc, dst, "", 6), dst);
    EXPECT_STREQ(dst, "");

    char cat[7] = "ab";
    EXPECT_EQ(gl_full_mbscat(loc, cat, "\xC3\xA9\xE2\x82\xAC", sizeof cat), cat);
    EXPECT_STREQ(cat, "ab\xC3\xA9") << "the euro sign would leave no room for the NUL";
    EXPECT_EQ(gl_full_mbscat(loc, cat, "", sizeof cat), cat);
    char full[4] = {'a', 'b', 'c', 'd'};
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_full_mbscat(loc, full, "x", sizeof full), nullptr);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_NOROOM);
}

TEST(Searching, FindAndCompareByCharacter)
{
    for (const char *name : {"en_US.utf8", "en_US.8859-1", "de_DE.8859-15", "ja_JP.sjis"}) {
        SCOPED_TRACE(name);
        void *loc = loctest::handle(name);
        ASSERT_NE(loc, nullptr);
        const char text[] = "abcabc";
        EXPECT_EQ(gl_full_mbschr(loc, text, "c"), text + 2);
        EXPECT_EQ(gl_full_mbschr(loc, text, "q"), nullptr);
        EXPECT_EQ(gl_full_mbschr(loc, text, ""), text + 6) << "the NUL, as strchr";
        EXPECT_EQ(gl_full_mbschr(loc, "", "a"), nullptr);
        EXPECT_EQ(gl_full_mbscmp(loc, "abc", "abd"), -1);
        EXPECT_EQ(gl_full_mbscmp(loc, "abc", "abc"), 0);
        EXPECT_EQ(gl_full_mbscmp(loc, "abcd", "abc"), 1);
        EXPECT_EQ(gl_full_mbscmp(loc, "", ""), 0);
    }
    void *loc = utf8();
    // The euro sign's last byte AC is no match for a search of U+00AC.
    const char euro_not[] = "\xE2\x82\xAC\xC2\xAC";
    EXPECT_EQ(gl_full_mbschr(loc, euro_not, "\xC2\xAC"), euro_not + 3);
    EXPECT_LT(gl_full_mbscmp(loc, "\xC3\xA9", "\xE2\x82\xAC"), 0) << "U+00E9 before U+20AC";
}

TEST(Width, ColumnsOfNarrowWideAndZeroWidthCharacters)
{
    void *ja = loctest::handle("ja_JP.utf8"), *l1 = loctest::handle("en_US.8859-1");
    ASSERT_NE(ja, nullptr);
    struct Row {
        void *loc;
        const char *text;
        int width;
    };
    // U+65E5 a CJK ideograph (also in Shift-JIS), U+FF21 full-width A, U+FF71
    // half-width katakana, U+0301 a combining acute accent, U+1F600 an emoji.
    // clang-format off
    const Row rows[] = {
        {ja, "a", 1}, {ja, "\xE6\x97\xA5", 2}, {ja, "\xEF\xBC\xA1", 2}, {ja, "\xEF\xBD\xB1", 1},
        {ja, "\xCC\x81", 0},  {ja, "\x07", 0}, {ja, "\xF0\x9F\x98\x80", 2}, {ja, "\xC3\xA9", 1},
        {l1, "\xE9", 1},      {l1, "\x85", 0}, {loctest::handle("ja_JP.sjis"), "\x93\xFA", 2}};
    // clang-format on
    for (const Row &r : rows)
        EXPECT_EQ(gl_mbwidth(r.loc, r.text, static_cast<int>(std::strlen(r.text))), r.width)
            << r.text;
}

// Shift-JIS: trailing bytes can look like ASCII, so stepping back rescans.
TEST(DoubleByteCodeSet, StepsOverShiftJisText)
{
    void *loc = loctest::handle("ja_JP.sjis");
    ASSERT_NE(loc, nullptr);
    // U+65E5 U+672C U+8A9E then "a\": the second byte of U+672C is '{'.
    const char text[] = "\x93\xFA\x96\x7B\x8C\xEA\x61\\";
    const int n = static_cast<int>(std::strlen(text));
    EXPECT_EQ(gl_mbsntslen(loc, text, -1), 5);
    EXPECT_EQ(gl_full_mblen(loc, text + 2, n - 2), 2);
    EXPECT_EQ(gl_full_mbsprev(loc, text, text + 4), text + 2);
    EXPECT_EQ(gl_full_mbsprev(loc, text, text + 7), text + 6);
    EXPECT_EQ(gl_full_mbsprev(loc, text, text + 3), nullptr) << "inside a character";
    EXPECT_EQ(gl_full_mbschr(loc, text, "{"), nullptr) << "a trailing byte is no character";
    wchar_t wide[8];
    ASSERT_EQ(gl_mbstowcs(loc, wide, text, 8), 5);
    EXPECT_EQ(std::vector<wchar_t>(wide, wide + 3), (std::vector<wchar_t>{0x65E5, 0x672C, 0x8A9E}));
    char back[4];
    EXPECT_EQ(gl_wctomb(loc, back, 0x672C), 2);
    EXPECT_EQ(std::memcmp(back, "\x96\x7B", 2), 0);
    EXPECT_EQ(gl_wctomb(loc, back, 0x20AC), -1) << "no euro sign in Shift-JIS";
    std::unique_ptr<char[]> lead(new char[1]{'\x93'});
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_full_mblen(loc, lead.get(), 1), -1);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_TRUNC);
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_full_mblen(loc, "\xFF", 1), -1);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_BADSEQ);
}

TEST(NullHandle, EveryOperationReportsIt)
{
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_full_mblen(nullptr, "a", 1), -1);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_NOLOCALE);
    EXPECT_EQ(gl_full_mbsnext(nullptr, "a", 1), nullptr);
    EXPECT_EQ(gl_localeconv(nullptr), nullptr);
    EXPECT_STREQ(gl_nl_langinfo(nullptr, QMR_GLI_MON_1), "");
    EXPECT_EQ(_gl_im_ismctype(nullptr, "a", 1, 3), 0);
    EXPECT_EQ(qmr_gl_ctype_table(nullptr), nullptr);
}

} // namespace
