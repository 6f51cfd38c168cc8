// Character classes and case mapping: the built-in Latin-1 tables against the
// Unicode character database for all 256 bytes, a single-byte code set built
// from a converter (KOI8-R), the selectors on multibyte and wide characters,
// and case mapping of strings whose length changes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <unicode/uchar.h>

#include "locale_test_util.hpp"

namespace
{

// The documented classes, from the Unicode character database directly.
unsigned short expected_classes(UChar32 c)
{
    const int8_t type = u_charType(c);
    unsigned short bits = 0;
    if (type == U_UPPERCASE_LETTER)
        bits |= QMR_GLCT_UPPER;
    if (type == U_LOWERCASE_LETTER)
        bits |= QMR_GLCT_LOWER;
    if (u_isalpha(c))
        bits |= QMR_GLCT_ALPHA;
    if (c >= '0' && c <= '9')
        bits |= QMR_GLCT_DIGIT;
    if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'))
        bits |= QMR_GLCT_XDIGIT;
    if (u_hasBinaryProperty(c, UCHAR_WHITE_SPACE))
        bits |= QMR_GLCT_SPACE;
    if (c == '\t' || type == U_SPACE_SEPARATOR)
        bits |= QMR_GLCT_BLANK;
    if (type == U_CONTROL_CHAR)
        bits |= QMR_GLCT_CNTRL;
    else if (type != U_UNASSIGNED && type != U_SURROGATE)
        bits |= QMR_GLCT_PRINT;
    if ((bits & QMR_GLCT_PRINT) && !(bits & QMR_GLCT_SPACE))
        bits |= QMR_GLCT_GRAPH;
    if ((bits & QMR_GLCT_GRAPH) && !(bits & (QMR_GLCT_ALPHA | QMR_GLCT_DIGIT)))
        bits |= QMR_GLCT_PUNCT;
    return bits;
}

// The simple case mapping of c when it stays within Latin-1, else c.
unsigned latin1_mapped(UChar32 c, bool lower)
{
    const UChar32 m = lower ? u_tolower(c) : u_toupper(c);
    return m <= 0xFF ? static_cast<unsigned>(m) : static_cast<unsigned>(c);
}

TEST(SingleByteTables, Latin1AgreesWithTheUnicodeDatabase)
{
    void *loc = loctest::handle("en_US.8859-1");
    ASSERT_NE(loc, nullptr);
    const unsigned short *table = qmr_gl_ctype_table(loc);
    ASSERT_NE(table, nullptr);
    qmr_glsenv_t *env = loctest::build("en_US.8859-1").env;
    EXPECT_EQ(env->ctype, table) << "the record points at the locale's table";
    for (unsigned b = 1; b < 256; ++b) {
        ASSERT_EQ(table[b], expected_classes(static_cast<UChar32>(b))) << std::hex << b;
        ASSERT_EQ(env->tolower_map[b], latin1_mapped(static_cast<UChar32>(b), true))
            << std::hex << b;
        ASSERT_EQ(env->toupper_map[b], latin1_mapped(static_cast<UChar32>(b), false))
            << std::hex << b;
    }
    EXPECT_EQ(table[0x20] & 0x400, 0x400) << "the blank bit";
    EXPECT_EQ(table[0x0A] & 0x400, 0);
}

TEST(SingleByteTables, Koi8rIsBuiltFromItsConverter)
{
    void *loc = loctest::handle("ru_RU.koi8-r");
    ASSERT_NE(loc, nullptr);
    const unsigned short *table = qmr_gl_ctype_table(loc);
    ASSERT_NE(table, nullptr);
    // E1 is CYRILLIC CAPITAL A (U+0410), C1 its small letter; 9A NO-BREAK SPACE.
    EXPECT_EQ(table[0xE1], expected_classes(0x0410));
    EXPECT_EQ(table[0xC1], expected_classes(0x0430));
    EXPECT_NE(table[0x9A] & QMR_GLCT_BLANK, 0);
    char out[4];
    wchar_t wc = 0;
    EXPECT_EQ(gl_mbtowc(loc, &wc, "\xE1", 1), 1);
    EXPECT_EQ(wc, 0x0410);
    EXPECT_EQ(_gl_im_towlower(loc, 0x0410), 0x0430);
    EXPECT_EQ(_gl_im_towupper(loc, 0x00E9), 0x00E9) << "not in KOI8-R: left alone";
    EXPECT_EQ(gl_wctomb(loc, out, 0x0430), 1);
    EXPECT_EQ(out[0], '\xC1');
}

struct ClassRow {
    const char *text;
    int selector;
    int in;
};

// Selectors, not masks: 8 and 16 both mean white space, 12 letter or digit,
// 1024 the blank class.
const ClassRow class_rows[] = {
    {"A", 1, 1},    {"A", 2, 0},     {"a", 2, 1},  {"A", 3, 1},     {"5", 3, 0},    {"5", 4, 1},
    {"5", 12, 1},   {"A", 12, 1},    {"-", 12, 0}, {"-", 6, 1},     {" ", 8, 1},    {" ", 16, 1},
    {" ", 1024, 1}, {"\t", 1024, 1}, {"\n", 8, 1}, {"\n", 1024, 0}, {"\n", 7, 1},   {"f", 5, 1},
    {"g", 5, 0},    {"~", 10, 1},    {" ", 10, 0}, {" ", 9, 1},     {"\x01", 9, 0},
};

TEST(Classes, SelectorsOnAsciiInEveryKindOfCodeSet)
{
    for (const char *name : {"en_US.8859-1", "en_US.utf8", "ru_RU.koi8-r", "ja_JP.sjis"}) {
        SCOPED_TRACE(name);
        void *loc = loctest::handle(name);
        ASSERT_NE(loc, nullptr);
        for (const ClassRow &r : class_rows) {
            EXPECT_EQ(_gl_im_ismctype(loc, r.text, 1, r.selector), r.in)
                << '"' << r.text << "\" selector " << r.selector;
            EXPECT_EQ(_gl_im_iswctype(loc, static_cast<wchar_t>(r.text[0]), r.selector), r.in)
                << "wide \"" << r.text << "\" selector " << r.selector;
        }
        _gl_ext_errno = 0;
        EXPECT_EQ(_gl_im_ismctype(loc, "a", 1, 11), 0);
        EXPECT_EQ(_gl_ext_errno, QMR_GLE_INVAL) << "11 selects nothing";
    }
}

TEST(Classes, BeyondAscii)
{
    void *u8 = loctest::handle("en_US.utf8");
    void *l1 = loctest::handle("en_US.8859-1");
    struct Row {
        void *loc;
        const char *text;
        int selector;
        int in;
    };
    // E3 80 80 is IDEOGRAPHIC SPACE, E6 97 A5 a CJK ideograph (a letter), D9 A3
    // ARABIC-INDIC DIGIT THREE (digits are 0-9 only).
    // clang-format off
    const Row rows[] = {
        {u8, "\xC3\xA9", 2, 1},     {u8, "\xC3\x89", 1, 1},        {u8, "\xC3\xA9", 4, 0},
        {u8, "\xE3\x80\x80", 8, 1}, {u8, "\xE3\x80\x80", 1024, 1}, {u8, "\xE6\x97\xA5", 3, 1},
        {u8, "\xD9\xA3", 4, 0},     {u8, "\xC2\xA0", 1024, 1},     {l1, "\xA0", 1024, 1},
        {l1, "\xE9", 2, 1},         {l1, "\xD7", 6, 1},            {l1, "\xAA", 3, 1},
        {l1, "\xAA", 1, 0}};
    // clang-format on
    for (const Row &r : rows)
        EXPECT_EQ(_gl_im_ismctype(r.loc, r.text, static_cast<int>(std::strlen(r.text)), r.selector),
                  r.in)
            << r.text << " selector " << r.selector;
    EXPECT_EQ(_gl_im_iswctype(u8, 0x3000, 1024), 1);
    EXPECT_EQ(_gl_im_iswctype(l1, 0x3000, 1024), 0) << "not a Latin-1 character";
    EXPECT_EQ(_gl_im_iswctype(l1, 0xE9, 2), 1);
}

TEST(CaseMapping, StringsWhoseLengthChanges)
{
    void *u8 = loctest::handle("en_US.utf8");
    char out[32];
    // The count returned, a colon, and the text written.
    auto map = [&out](void *loc, bool lower, const char *in, int len) {
        const int n = lower ? _gl_im_tomlower(loc, out, sizeof out, in, len)
                            : _gl_im_tomupper(loc, out, sizeof out, in, len);
        return std::to_string(n) + ':' + out;
    };
    EXPECT_EQ(map(u8, true, "\xC3\x84\xC3\x96\xC3\x9C ABC", -1), "10:\xC3\xA4\xC3\xB6\xC3\xBC abc");
    EXPECT_EQ(map(u8, false, "stra\xC3\x9F\x65", -1), "7:STRA\xC3\x9F\x45")
        << "sharp s has no simple upper case";
    // U+1E9E (3 bytes) lowers to U+00DF (2); U+023A (2) to U+2C65 (3).
    EXPECT_EQ(map(u8, true, "\xE1\xBA\x9E\xC8\xBA", -1), "5:\xC3\x9F\xE2\xB1\xA5");
    EXPECT_EQ(map(u8, true, "ABCD", 2), "2:ab") << "the length bounds the input";
    EXPECT_EQ(map(u8, true, "", -1), "0:");
    char small[4];
    _gl_ext_errno = 0;
    EXPECT_EQ(_gl_im_tomlower(u8, small, sizeof small, "ABCD", -1), -1);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_NOROOM);

    void *l1 = loctest::handle("en_US.8859-1");
    char latin[8] = "\xC4q\xDF\xFF";
    EXPECT_EQ(_gl_im_tomupper(l1, latin, sizeof latin, latin, -1), 4) << "in place";
    EXPECT_STREQ(latin, "\xC4Q\xDF\xFF") << "sharp s and y diaeresis stay";
    EXPECT_EQ(_gl_im_towlower(l1, 0xC4), 0xE4);
    EXPECT_EQ(_gl_im_towupper(u8, 0x3B1), 0x391);
    EXPECT_EQ(map(loctest::handle("ru_RU.koi8-r"), true, "\xE1Q", -1), "2:\xC1q");
}

} // namespace
