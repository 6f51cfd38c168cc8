// The type catalogue checked row by row against an independent transcription of
// the SQL and C type tables, plus the type words, the code mappings and the
// display widths that follow from a value's text.
#include "qmr/types.h"

#include "qmr/env.h"
#include "qmr/money.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace
{

using LenFn = int (*)(int);

// The length rules, written out afresh: k<N> a fixed count, len the length,
// vlen the maximum of a VARCHAR max/min pair, the packed forms' byte counts.
template <int N> constexpr LenFn k = [](int) { return N; };
constexpr LenFn len = [](int l) { return l; };
constexpr LenFn len1 = [](int l) { return l + 1; };
constexpr LenFn vlen = [](int l) { return l & 255; };
constexpr LenFn vlen1 = [](int l) { return (l & 255) + 1; };
constexpr LenFn dec_bytes = [](int l) { return ((l >> 8) + ((l & 255) & 1) + 3) / 2; };
constexpr LenFn qual_bytes = [](int l) { return ((l >> 8) + ((l & 15) & 1) + 3) / 2; };
// DECIMAL and MONEY in en_US without DBMONEY: a point of one column, "$" in
// front, a leading zero when every digit is a fraction digit.
constexpr LenFn dec_width = [](int l) {
    const int p = (l >> 8) & 255, s = l & 255;
    return s == 255 ? p + 6 : p + (p == s ? 2 : 1);
};
constexpr LenFn money_width = [](int l) {
    const int p = (l >> 8) & 255, s = l & 255;
    return p + 1 + 1 + (p == s ? 1 : 0);
};

struct SqlRow {
    int code;
    const char *name;
    LenFn stored, memory;
    int align;
    LenFn width; // null: checked by its own test
    int ctype;
};

// The SQL type table, widths as in the default en_US environment; DATE and
// DATETIME widths are not built yet and give 0. Codes 24 to 39 are unused.
std::vector<SqlRow> sql_rows()
{
    // clang-format off
    std::vector<SqlRow> rows = {
        {0, "char", len, len1, 1, len, 100},            {1, "smallint", k<2>, k<2>, 2, k<6>, 101},
        {2, "integer", k<4>, k<4>, 4, k<11>, 102},      {3, "float", k<8>, k<8>, 8, k<14>, 105},
        {4, "smallfloat", k<4>, k<4>, 4, k<14>, 104},
        {5, "decimal", dec_bytes, k<22>, 2, dec_width, 107},
        {6, "serial", k<4>, k<4>, 4, k<11>, 102},       {7, "date", k<4>, k<4>, 4, k<0>, 110},
        {8, "money", dec_bytes, k<22>, 2, money_width, 111},
        {9, "", k<0>, k<0>, 1, k<0>, -1},
        {10, "datetime", qual_bytes, k<24>, 2, k<0>, 112},
        {11, "byte", k<56>, k<112>, 8, len, 113},       {12, "text", k<56>, k<112>, 8, len, 113},
        {13, "varchar", vlen, vlen1, 1, vlen, 114},
        {14, "interval", qual_bytes, k<24>, 2, nullptr, 115},
        {15, "nchar", len, len1, 1, len, 100},          {16, "nvarchar", vlen, vlen1, 1, vlen, 114},
        {17, "int8", k<10>, k<12>, 4, k<20>, 117},
        {18, "serial8", k<10>, k<12>, 4, k<20>, 117},   {19, "set", k<0>, k<120>, 8, len, 118},
        {20, "multiset", k<0>, k<120>, 8, len, 118},    {21, "list", k<0>, k<120>, 8, len, 118},
        {22, "row", k<0>, k<120>, 8, len, 123},
        {23, "collection", k<0>, k<120>, 8, len, 118}};
    for (int code = 24; code <= 39; ++code)
        rows.push_back({code, "", k<0>, k<0>, 1, k<0>, -1});
    rows.insert(rows.end(), {
        {40, "variable udt", len, len, 0, len, 121},    {41, "fixed udt", len, len, 0, len, 120},
        {42, "", k<0>, k<0>, 1, k<0>, 117},             {43, "lvarchar", len, len, 1, len, 119},
        {44, "send/receive", k<0>, k<0>, 1, k<0>, 121}, {45, "boolean", len, k<1>, 1, k<1>, 122},
        {46, "import/export", k<0>, k<0>, 1, k<0>, -1},
        {47, "import/export binary", k<0>, k<0>, 1, k<0>, -1},
        {48, "", k<0>, k<0>, 1, k<0>, -1},
        {49, "dbsend/dbreceive", k<0>, k<0>, 1, k<0>, -1},
        {50, "srvsend/srvreceive", k<0>, k<0>, 1, k<0>, -1},
        {51, "", k<0>, k<0>, 1, k<0>, -1},              {52, "bigint", k<8>, k<8>, 8, k<20>, 125},
        {53, "bigserial", k<8>, k<8>, 8, k<20>, 125}});
    // clang-format on
    return rows;
}

// The C type table: code, in-memory size, alignment, SQL type.
const std::tuple<int, LenFn, int, int> kCRows[] = {
    {100, len1, 1, 0},   {101, k<2>, 2, 1},    {102, k<4>, 4, 1},    {103, k<8>, 8, 2},
    {104, k<4>, 4, 4},   {105, k<8>, 8, 3},    {106, k<0>, 1, -1},   {107, k<22>, 2, 5},
    {108, len, 1, 0},    {109, len1, 1, 0},    {110, k<4>, 4, 7},    {111, k<22>, 2, 8},
    {112, k<24>, 2, 10}, {113, k<112>, 8, 11}, {114, vlen1, 1, 13},  {115, k<24>, 2, 14},
    {116, len1, 8, 11},  {117, k<12>, 4, 17},  {118, k<120>, 8, 23}, {119, len, 1, 43},
    {120, len, 0, 41},   {121, len, 0, 40},    {122, k<1>, 1, 45},   {123, k<120>, 8, 22},
    {124, len, 1, 43},   {125, k<8>, 8, 52},
};

// Length arguments: plain counts, VARCHAR max/min pairs, precision/scale pairs
// (5,2 6,3 16,floating 32,0) and qualifiers (14 digits YEAR TO SECOND, 17 digits
// YEAR TO FRACTION(3), 15 digits YEAR TO FRACTION(2)).
const int kLens[] = {0,      1,      2,      7,      254,    255,    256,    300,
                     0x0A14, 0x0502, 0x0603, 0x10FF, 0x2000, 0x0E0A, 0x110D, 0x0F0C};

// An alignment of 0 puts everything at offset 0.
constexpr auto round_up = [](int offset, int align) {
    return align == 0 ? 0 : (offset + align - 1) / align * align;
};

TEST(SqlCatalogue, EveryRowMatchesTheTable)
{
    unsetenv("DBMONEY");
    gputenv("DBMONEY", nullptr);
    qmr_money_reset();
    const std::vector<SqlRow> rows = sql_rows();
    ASSERT_EQ(rows.size(), 54u);
    for (const SqlRow &r : rows) {
        SCOPED_TRACE("SQL type " + std::to_string(r.code));
        EXPECT_STREQ(rtypname(r.code), r.name);
        EXPECT_EQ(sqlctype[r.code], r.ctype);
        EXPECT_EQ(rtoctype(r.code), r.ctype);
        EXPECT_EQ(rtosqltype(r.code), r.code);
        for (int l : kLens) {
            SCOPED_TRACE("len " + std::to_string(l));
            EXPECT_EQ(rtypsize(r.code, l), r.stored(l));
            EXPECT_EQ(rtypmsize(r.code, l), r.memory(l));
            if (r.width != nullptr) {
                EXPECT_EQ(rtypwidth(r.code, l), r.width(l));
            }
        }
        for (int offset = 0; offset <= 17; ++offset)
            EXPECT_EQ(rtypalign(offset, r.code), round_up(offset, r.align)) << "offset " << offset;
    }
    // The packed forms, worked by hand.
    EXPECT_EQ(rtypsize(5, 5 * 256 + 2), 4);
    EXPECT_EQ(rtypsize(5, 6 * 256 + 3), 5);
    EXPECT_EQ(rtypsize(8, 16 * 256 + 255), 10);         // floating: the odd scale counts
    EXPECT_EQ(rtypsize(10, 14 << 8 | 0 << 4 | 10), 8);  // YEAR TO SECOND
    EXPECT_EQ(rtypsize(10, 17 << 8 | 0 << 4 | 13), 10); // YEAR TO FRACTION(3)
    EXPECT_EQ(rtypsize(14, 9 << 8 | 4 << 4 | 10), 6);   // DAY(3) TO SECOND
}

TEST(CCatalogue, EveryRowMatchesTheTable)
{
    ASSERT_EQ(std::size(kCRows), 26u);
    for (const auto &[code, memory, align, sqltype] : kCRows) {
        SCOPED_TRACE("C type " + std::to_string(code));
        EXPECT_EQ(sqlstype[code - 100], sqltype);
        // 102 is answered directly: its table entry holds 1 on purpose.
        EXPECT_EQ(rtosqltype(code), code == 102 ? 2 : sqltype);
        for (int l : kLens)
            EXPECT_EQ(rtypmsize(code, l), memory(l)) << "len " << l;
        for (int offset = 0; offset <= 17; ++offset)
            EXPECT_EQ(rtypalign(offset, code), round_up(offset, align)) << "offset " << offset;
    }
}

TEST(SqlCatalogue, AttributeBitsCountOnlyForBareCodeFunctions)
{
    EXPECT_STREQ(rtypname(0x0102), "integer");
    EXPECT_STREQ(rtypname(0x4000 | 45), "boolean");
    for (int code = 0; code <= 53; ++code) {
        for (int attr : {0x0100, 0x2000, 0x4000, 0x7F00}) {
            SCOPED_TRACE(std::to_string(code) + " with attributes " + std::to_string(attr));
            EXPECT_STREQ(rtypname(attr | code), rtypname(code));
            EXPECT_EQ(rtypsize(attr | code, 0x0A14), rtypsize(code, 0x0A14));
            EXPECT_EQ(rtypwidth(attr | code, 0x0A14), rtypwidth(code, 0x0A14));
        }
    }
    // rtypmsize and rtypalign expect bare codes: 0x2002 is no type at all.
    EXPECT_EQ(rtypsize(0x2000 | 2, 0), 4);
    EXPECT_EQ(rtypwidth(0x2000 | 2, 0), 11);
    EXPECT_EQ(rtypmsize(0x2000 | 2, 0), 0);
    EXPECT_EQ(rtypalign(13, 0x2000 | 2), 13);
}

TEST(SqlCatalogue, CodesOutsideTheTables)
{
    for (int type : {-1, 54, 99, 126, 200, 255, 1000, 0x7FFF}) {
        SCOPED_TRACE("type " + std::to_string(type));
        EXPECT_EQ(rtypmsize(type, 10), 0);
        EXPECT_EQ(rtypalign(13, type), 13);
    }
    // Low byte above 53: no name, size or width.
    for (int type : {54, 99, 200, 255, 0x01FF}) {
        EXPECT_STREQ(rtypname(type), "") << type;
        EXPECT_EQ(rtypsize(type, 10), 0) << type;
        EXPECT_EQ(rtypwidth(type, 10), 0) << type;
    }
}

TEST(CodeMapping, RtosqltypeAndRtoctypeOverTheWholeRange)
{
    // 102 maps to SQL 2 and C 103, whatever its table entry holds.
    for (int code = -300; code <= 400; ++code) {
        SCOPED_TRACE("code " + std::to_string(code));
        if (code >= 0 && code <= 53) {
            EXPECT_EQ(rtosqltype(code), code);
        } else if (code >= 100 && code <= 125) {
            EXPECT_EQ(rtosqltype(code), code == 102 ? 2 : sqlstype[code - 100]);
            EXPECT_EQ(rtoctype(code), code == 102 ? 103 : code);
        } else {
            EXPECT_EQ(rtosqltype(code), -1);
            EXPECT_EQ(rtoctype(code), code);
        }
    }
}

TEST(TypeName, QmrTypenameAnswersTheBaseName)
{
    for (int type : {0, 2, 9, 24, 43, 45, 0x0102, 200})
        for (int xid : {0, 1, 2, 5, 21, 22, 43, 44, 45, 49, 50, 0x0101})
            EXPECT_STREQ(qmr_typename(type, xid), rtypname(type)) << type << " xid " << xid;
}

const std::pair<const char *, int> kWords[] = {
    {"CHAR", 0},        {"CHARACTER", 0},  {"SMALLINT", 1},  {"INT", 2},       {"INTEGER", 2},
    {"FLOAT", 3},       {"SMALLFLOAT", 4}, {"DECIMAL", 5},   {"SERIAL", 6},    {"DATE", 7},
    {"MONEY", 8},       {"NULL", 9},       {"DATETIME", 10}, {"BYTE", 11},     {"TEXT", 12},
    {"VARCHAR", 13},    {"INTERVAL", 14},  {"NCHAR", 15},    {"NVARCHAR", 16}, {"INT8", 17},
    {"SERIAL8", 18},    {"SET", 19},       {"MULTISET", 20}, {"LIST", 21},     {"ROW", 22},
    {"COLLECTION", 23}, {"LVARCHAR", 43},  {"BOOLEAN", 45},  {"BIGINT", 52},   {"BIGSERIAL", 53},
};

// Lower-cases every step-th letter from the first one on.
std::string lower(std::string s, std::size_t first = 0, std::size_t step = 1)
{
    for (std::size_t i = first; i < s.size(); i += step)
        if (s[i] >= 'A' && s[i] <= 'Z')
            s[i] = static_cast<char>(s[i] - 'A' + 'a');
    return s;
}

TEST(TypeWords, EveryAcceptedWordInAnyCaseUpperCasesTheBuffer)
{
    for (const auto &[word, code] : kWords)
        for (std::string text : {std::string(word), lower(word), lower(word, 1, 2)}) {
            SCOPED_TRACE(text);
            EXPECT_EQ(rstr2type(text.data()), code);
            EXPECT_EQ(text, word);
        }
}

TEST(TypeWords, OtherWordsAreRefused)
{
    for (const char *word : {"DEC", "NUMERIC", "REAL", "DOUBLE PRECISION", "int8x", "", "ARRAY",
                             "Abc", "Zeta", "WORD", "char(10)", " INT", "INT ", "INTE", "SERIAL 8",
                             "DATETIME YEAR TO DAY", "1INT", "VARCHARS", "BIGINT8"}) {
        std::string text = word;
        EXPECT_EQ(rstr2type(text.data()), -1) << word;
    }
    std::string numeric = "Numeric";
    EXPECT_EQ(rstr2type(numeric.data()), -1);
    EXPECT_EQ(numeric, "NUMERIC");
    EXPECT_EQ(rstr2type(nullptr), -1);
}

TEST(Widths, IntervalIsItsTextPlusASign)
{
    // Qualifier of a DATETIME/INTERVAL: digit count, start unit, end unit.
    constexpr auto qual = [](int digits, int start, int end) {
        return digits << 8 | start << 4 | end;
    };
    const std::pair<int, const char *> cases[] = {
        {qual(6, 0, 2), "yyyy-mm"},                          // YEAR(4) TO MONTH
        {qual(9, 4, 10), "ddd hh:mm:ss"},                    // DAY(3) TO SECOND
        {qual(9, 6, 13), "hh:mm:ss.fff"},                    // HOUR TO FRACTION(3)
        {qual(12, 8, 15), "mmmmm:ss.fffff"},                 // MINUTE(5) TO FRACTION(5)
        {qual(3, 12, 13), ".fff"},                           // FRACTION TO FRACTION(3)
        {qual(4, 10, 10), "ssss"},                           // SECOND(4) TO SECOND
        {qual(9, 4, 4), "ddddddddd"},                        // DAY(9) TO DAY
        {qual(24, 0, 15), "yyyyyyyyy-mm-dd hh:mm:ss.fffff"}, // YEAR(9) TO FRACTION(5)
        {qual(3, 10, 11), "ss.f"},                           // SECOND TO FRACTION(1)
    };
    for (const auto &[qualifier, text] : cases) {
        const int width = static_cast<int>(std::strlen(text)) + 1;
        EXPECT_EQ(rtypwidth(14, qualifier), width) << text;
        EXPECT_EQ(rtypwidth(0x2000 | 14, qualifier), width) << text;
    }
}

} // namespace
