// Null values: every C type's null written into a garbage-filled variable and
// recognised, SQL codes going through their C type, and the null test of the
// stored big-endian forms with their minimum lengths.
#include "qmr/types.h"

#include "qmr/coll.h"
#include "qmr/int8.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;

// Neither 0, 1 nor 0xFF, and without the flag values 2 and 4.
constexpr unsigned char kGarbage = 0x91;

struct Patch {
    std::size_t offset;
    Bytes bytes;
};

using Buffer = std::array<unsigned char, 128>;

// A garbage-filled variable with the given bytes written over it.
Buffer garbage(const std::vector<Patch> &patches = {})
{
    Buffer b;
    b.fill(kGarbage);
    for (const Patch &p : patches)
        std::memcpy(b.data() + p.offset, p.bytes.data(), p.bytes.size());
    return b;
}

char *chars(Buffer &b)
{
    return reinterpret_cast<char *>(b.data());
}

constexpr std::size_t kFlags = offsetof(qmr_collection_t, cl_flags);
constexpr std::size_t kIndicator = offsetof(qmr_loc_t, loc_indicator);
constexpr std::size_t kInt8Sign = offsetof(qmr_int8_t, sign);
const Bytes kFF8(8, 0xFF);

struct NullRow {
    int code;
    std::vector<Patch> null;     // the garbage variable after rsetnull
    std::vector<Patch> not_null; // a value that is not the null
};

// Byte images are little-endian, as the native integers of the test hosts.
const std::vector<NullRow> kNullRows = {
    {100, {{0, {0}}}, {{0, {'a'}}}},
    {101, {{0, {0x00, 0x80}}}, {{0, {0x01, 0x80}}}},
    {102, {{0, {0, 0, 0, 0x80}}}, {{0, {0, 0, 0, 0x81}}}},
    {103, {{0, {0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}}}, {{0, {0, 0, 0, 0x80, 0, 0, 0, 0}}}},
    {104, {{0, {0xFF, 0xFF, 0xFF, 0xFF}}}, {{0, {0xFF, 0xFF, 0xFF, 0xFE}}}},
    {105, {{0, kFF8}}, {{0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}}}},
    {106, {}, {}},
    {107, {{0, {0, 0, 0xFF, 0xFF, 0, 0}}}, {{2, {1, 0}}}},
    {108, {{0, {0}}}, {{0, {' '}}}},
    {109, {{0, {0}}}, {{0, {'a'}}}},
    {110, {{0, {0, 0, 0, 0x80}}}, {{0, {0, 0, 0, 0}}}},
    {111, {{0, {0, 0, 0xFF, 0xFF, 0, 0}}}, {{2, {0, 0}}}},
    {112, {{2, {0, 0, 0xFF, 0xFF, 0, 0}}}, {{4, {1, 0}}}}, // qualifier kept
    {113, {{kIndicator, {0xFF, 0xFF, 0xFF, 0xFF}}}, {{kIndicator, {0, 0, 0, 0}}}},
    {114, {{0, {0}}}, {{0, {'v'}}}},
    {115, {{2, {0, 0, 0xFF, 0xFF, 0, 0}}}, {{4, {0, 0}}}},
    {116, {{0, {0}}}, {{0, {'/'}}}},
    {117, {{0, {0, 0, 0, 0, 0, 0, 0, 0}}, {kInt8Sign, {0, 0}}}, {{kInt8Sign, {1, 0}}}},
    {118, {{kFlags, {kGarbage | 4, kGarbage, kGarbage, kGarbage}}}, {}},
    {119, {{0, {0}}}, {{0, {'l'}}}},
    {120, {}, {}},
    {121, {{0, {kGarbage | 2, kGarbage}}}, {}},
    {122, {{0, {0xFF}}}, {{0, {1}}}},
    {123, {{kFlags, {kGarbage | 4, kGarbage, kGarbage, kGarbage}}}, {}},
    {124, {{0, {kGarbage | 2, kGarbage}}}, {}},
    {125, {{0, {0, 0, 0, 0, 0, 0, 0, 0x80}}}, {{0, {0, 0, 0, 0, 0, 0, 0, 0x7F}}}},
};

TEST(Nulls, EveryCTypeWrittenAndRecognised)
{
    if constexpr (std::endian::native != std::endian::little)
        GTEST_SKIP() << "byte images are little-endian";
    ASSERT_EQ(kNullRows.size(), 26u);
    for (const NullRow &r : kNullRows) {
        SCOPED_TRACE("C type " + std::to_string(r.code));
        const int want = r.null.empty() ? 0 : 1;
        Buffer b = garbage();
        EXPECT_EQ(rsetnull(r.code, chars(b)), 0);
        EXPECT_EQ(b, garbage(r.null)) << "bytes written";
        EXPECT_EQ(risnull(r.code, chars(b)), want);

        Buffer value = garbage(r.not_null);
        EXPECT_EQ(risnull(r.code, chars(value)), 0) << "a value taken for null";
        // The variable may sit at any address.
        std::array<unsigned char, 136> shifted{};
        std::memcpy(shifted.data() + 1, b.data(), b.size());
        EXPECT_EQ(risnull(r.code, reinterpret_cast<char *>(shifted.data() + 1)), want);
    }
}

TEST(Nulls, SqlCodesWriteTheNullOfTheirCType)
{
    // The code tables themselves are checked against the catalogue.
    for (int sql = 0; sql <= 53; ++sql) {
        const int c = sqlctype[sql];
        if (c < 0)
            continue; // no null: see below
        SCOPED_TRACE("SQL type " + std::to_string(sql));
        Buffer by_sql = garbage(), by_c = garbage();
        EXPECT_EQ(rsetnull(sql, chars(by_sql)), 0);
        rsetnull(c, chars(by_c));
        EXPECT_EQ(by_sql, by_c);
        EXPECT_EQ(risnull(sql, chars(by_sql)), risnull(c, chars(by_sql)));
    }
    // DATE and INTEGER write four bytes only.
    for (int sql : {2, 7}) {
        Buffer b = garbage();
        rsetnull(sql, chars(b));
        EXPECT_EQ(b, garbage({{0, {0, 0, 0, 0x80}}})) << sql;
        EXPECT_EQ(risnull(sql, chars(b)), 1);
    }
}

TEST(Nulls, CodesWithoutANullWriteAndRecogniseNothing)
{
    for (int type : {-1, 9, 24, 39, 46, 47, 48, 49, 50, 51, 54, 99, 106, 120, 126, 0x2002, 1000}) {
        SCOPED_TRACE("type " + std::to_string(type));
        Buffer b = garbage();
        EXPECT_EQ(rsetnull(type, chars(b)), 0);
        EXPECT_EQ(b, garbage());
        Buffer zeros{}, ones = garbage({{0, Bytes(128, 0xFF)}});
        EXPECT_EQ(risnull(type, chars(zeros)), 0);
        EXPECT_EQ(risnull(type, chars(ones)), 0);
    }
    EXPECT_EQ(rsetnull(2, nullptr), 0);
    EXPECT_EQ(risnull(2, nullptr), 0);
}

TEST(Nulls, LongAndIntegerShareTheLowWord)
{
    if constexpr (std::endian::native != std::endian::little)
        GTEST_SKIP() << "the low word comes first on little-endian hosts only";
    Buffer b = garbage();
    rsetnull(103, chars(b));
    EXPECT_EQ(risnull(103, chars(b)), 1);
    EXPECT_EQ(risnull(2, chars(b)), 1);

    b = garbage();
    rsetnull(2, chars(b));
    EXPECT_EQ(risnull(103, chars(b)), 0);
    b = garbage({{4, {0xFF, 0xFF, 0xFF, 0xFF}}});
    rsetnull(2, chars(b));
    EXPECT_EQ(risnull(103, chars(b)), 1);
}

TEST(Nulls, AnEmptyStringIsNull)
{
    for (int type : {0, 100, 108, 109, 114, 116, 119}) {
        EXPECT_EQ(risnull(type, ""), 1) << type;
        EXPECT_EQ(risnull(type, "x"), 0) << type;
    }
}

TEST(StoredForm, Ld2AndLd4AreSignedBigEndian)
{
    const char raw[] = "\x12\x34\x56\x78\xFF\xFE\x80\0\0";
    EXPECT_EQ(ld2(raw), 0x1234);
    EXPECT_EQ(ld2(raw + 1), 0x3456); // any address
    EXPECT_EQ(ld2(raw + 4), -2);
    EXPECT_EQ(ld2(raw + 6), -32768);
    EXPECT_EQ(ld4(raw), 0x12345678);
    EXPECT_EQ(ld4(raw + 3), 0x78FFFE80);
    EXPECT_EQ(ld4(raw + 4), static_cast<int>(0xFFFE8000u));
    EXPECT_EQ(ld4(raw + 6), -2147483647 - 1);
}

struct StoredCase {
    int type;
    Bytes bytes;
    int len;
    short isnull;
};

// Each case's buffer is exactly its bytes, so a read past them is caught.
void check_stored(const StoredCase &c, int rc = 0)
{
    SCOPED_TRACE("type " + std::to_string(c.type) + " len " + std::to_string(c.len));
    auto buf = std::make_unique<char[]>(c.bytes.size());
    std::memcpy(buf.get(), c.bytes.data(), c.bytes.size());
    short isnull = 7;
    EXPECT_EQ(qmrcdc_valisnull(buf.get(), c.len, c.type, &isnull), rc);
    EXPECT_EQ(isnull, c.isnull);
}

TEST(StoredForm, NullJudgedPerType)
{
    const Bytes int_null = {0x80, 0, 0, 0};
    const Bytes big_null = {0x80, 0, 0, 0, 0, 0, 0, 0};
    const Bytes int8_null = {0, 0, 0, 0, 0, 5, 0, 0, 0, 7}; // the sign alone decides
    const Bytes int8_value = {0, 1, 0, 0, 0, 5, 0, 0, 0, 7};
    const Bytes not_ff8 = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    // Attribute bits are ignored; SMALLINT has no length check; for DECIMAL
    // only the bytes within len count.
    // clang-format off
    const StoredCase cases[] = {
        {0, {0}, 1, -1},               {0, {'a'}, 1, 0},              {0x2000 | 0, {0}, 1, -1},
        {1, {0x80, 0}, 2, -1},         {1, {0x80, 0}, 0, -1},         {1, {0x80, 1}, 2, 0},
        {1, {0, 0x80}, 2, 0},          {2, int_null, 4, -1},          {6, int_null, 4, -1},
        {7, int_null, 4, -1},          {7, {0, 0, 0, 0x80}, 4, 0},    {3, kFF8, 8, -1},
        {3, not_ff8, 8, 0},            {4, {0xFF, 0xFF, 0xFF, 0xFF}, 4, -1},
        {4, {0x7F, 0xFF, 0xFF, 0xFF}, 4, 0},                          {5, {0, 0, 0}, 3, -1},
        {5, {0, 1, 0}, 3, 0},          {5, {0xC1, 0x01, 0}, 3, 0},    {5, {0}, 1, -1},
        {5, {0, 5}, 1, -1},            {5, {0xC1}, 1, 0},             {8, {0, 0}, 2, -1},
        {8, {0x80, 0}, 2, 0},          {10, {0, 0, 0, 0, 0}, 5, -1},
        {10, {0xC7, 0x14, 0x01}, 3, 0},                               {14, {0}, 1, -1},
        {14, {0x3E, 0x63}, 2, 0},      {13, {1, 0}, 2, -1},           {13, {1, 0, 0}, 3, 0},
        {13, {0, 0}, 2, 0},            {13, {1, 1}, 2, 0},            {13, {1}, 1, 0},
        {16, {1, 0}, 2, -1},           {17, int8_null, 10, -1},       {17, int8_value, 10, 0},
        {18, int8_null, 10, -1},       {43, {0, 0, 1}, 3, 1},         {43, {0, 0, 3}, 3, 1},
        {43, {1, 1, 0xFE}, 3, 0},      {45, {1, 0}, 2, -1},           {45, {0, 1}, 2, 0},
        {45, {0xFF, 0}, 2, 0},         {52, big_null, 8, -1},
        {52, {0x80, 0, 0, 0, 0, 0, 0, 1}, 8, 0},
        {0x0100 | 52, big_null, 8, -1}};
    // clang-format on
    for (const StoredCase &c : cases)
        check_stored(c);
    // Types never judged null, whatever the bytes, and without a length check.
    for (int type : {15, 53, 9, 11, 12, 19, 20, 21, 22, 23, 40, 41, 42, 44, 200, 0x2000 | 53}) {
        check_stored({type, big_null, 8, 0});
        check_stored({type, {0}, 0, 0});
    }
}

TEST(StoredForm, TooShortBuffersAreRefused)
{
    // Each type with its minimum length.
    const std::pair<int, int> mins[] = {{0, 1},   {2, 4},   {6, 4},  {7, 4},  {3, 8},  {4, 4},
                                        {5, 1},   {8, 1},   {10, 1}, {14, 1}, {13, 1}, {16, 1},
                                        {17, 10}, {18, 10}, {43, 3}, {45, 2}, {52, 8}};
    for (const auto &[type, min_len] : mins) {
        // The result is cleared before the length is checked.
        check_stored({type, Bytes(16, 0), min_len - 1, 0}, -1);
        short isnull = 7;
        const char zeros[16] = {};
        EXPECT_EQ(qmrcdc_valisnull(zeros, min_len, type, &isnull), 0) << type;
    }
    EXPECT_EQ(qmrcdc_valisnull("\0\0\0", 3, 0, nullptr), -1);
}

} // namespace
