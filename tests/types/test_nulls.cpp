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

Buffer garbage()
{
    Buffer b;
    b.fill(kGarbage);
    return b;
}

Buffer patched(const std::vector<Patch> &patches)
{
    Buffer b = garbage();
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
const std::vector<NullRow> &null_rows()
{
    static const std::vector<NullRow> rows = {
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
    return rows;
}

bool has_null(const NullRow &r)
{
    return !r.null.empty();
}

TEST(Nulls, EveryCTypeWrittenAndRecognised)
{
    if constexpr (std::endian::native != std::endian::little)
        GTEST_SKIP() << "byte images are little-endian";
    ASSERT_EQ(null_rows().size(), 26u);
    for (const NullRow &r : null_rows()) {
        SCOPED_TRACE("C type " + std::to_string(r.code));
        Buffer b = garbage();
        EXPECT_EQ(rsetnull(r.code, chars(b)), 0);
        EXPECT_EQ(b, patched(r.null)) << "bytes written";
        EXPECT_EQ(risnull(r.code, chars(b)), has_null(r) ? 1 : 0);

        Buffer value = patched(r.not_null);
        EXPECT_EQ(risnull(r.code, chars(value)), 0) << "a value taken for null";
        // The variable may sit at any address.
        std::array<unsigned char, 136> shifted{};
        std::memcpy(shifted.data() + 1, b.data(), b.size());
        EXPECT_EQ(risnull(r.code, reinterpret_cast<char *>(shifted.data() + 1)),
                  has_null(r) ? 1 : 0);
    }
}

TEST(Nulls, SqlCodesWriteTheNullOfTheirCType)
{
    const struct {
        int sql, c;
    } map[] = {{0, 100},  {1, 101},  {2, 102},  {3, 105},  {4, 104},  {5, 107},  {6, 102},
               {7, 110},  {8, 111},  {10, 112}, {11, 113}, {12, 113}, {13, 114}, {14, 115},
               {15, 100}, {16, 114}, {17, 117}, {18, 117}, {19, 118}, {20, 118}, {21, 118},
               {22, 123}, {23, 118}, {40, 121}, {41, 120}, {42, 117}, {43, 119}, {44, 121},
               {45, 122}, {52, 125}, {53, 125}};
    for (const auto &m : map) {
        SCOPED_TRACE("SQL type " + std::to_string(m.sql));
        Buffer by_sql = garbage();
        Buffer by_c = garbage();
        EXPECT_EQ(rsetnull(m.sql, chars(by_sql)), 0);
        rsetnull(m.c, chars(by_c));
        EXPECT_EQ(by_sql, by_c);
        EXPECT_EQ(risnull(m.sql, chars(by_sql)), risnull(m.c, chars(by_sql)));
    }
    // DATE and INTEGER write four bytes only.
    for (int sql : {2, 7}) {
        Buffer b = garbage();
        rsetnull(sql, chars(b));
        EXPECT_EQ(b, patched({{0, {0, 0, 0, 0x80}}})) << sql;
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
        Buffer zeros{};
        Buffer ones;
        ones.fill(0xFF);
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
    b = patched({{4, {0xFF, 0xFF, 0xFF, 0xFF}}});
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
    int rc;
    short isnull;
};

// Each case's buffer is exactly its bytes, so a read past them is caught.
void check_stored(const StoredCase &c)
{
    auto buf = std::make_unique<char[]>(c.bytes.size());
    std::memcpy(buf.get(), c.bytes.data(), c.bytes.size());
    short isnull = 7;
    EXPECT_EQ(qmrcdc_valisnull(buf.get(), c.len, c.type, &isnull), c.rc);
    EXPECT_EQ(isnull, c.isnull);
}

TEST(StoredForm, NullJudgedPerType)
{
    const Bytes int_null = {0x80, 0, 0, 0};
    const Bytes big_null = {0x80, 0, 0, 0, 0, 0, 0, 0};
    const Bytes int8_null = {0, 0, 0, 0, 0, 5, 0, 0, 0, 7};
    const Bytes int8_value = {0, 1, 0, 0, 0, 5, 0, 0, 0, 7};
    const std::vector<StoredCase> cases = {
        {0, {0}, 1, 0, -1},
        {0, {'a'}, 1, 0, 0},
        {0x2000 | 0, {0}, 1, 0, -1}, // attribute bits ignored
        {1, {0x80, 0}, 2, 0, -1},
        {1, {0x80, 0}, 0, 0, -1}, // SMALLINT: no length check
        {1, {0x80, 1}, 2, 0, 0},
        {1, {0, 0x80}, 2, 0, 0},
        {2, int_null, 4, 0, -1},
        {6, int_null, 4, 0, -1},
        {7, int_null, 4, 0, -1},
        {7, {0, 0, 0, 0x80}, 4, 0, 0},
        {3, kFF8, 8, 0, -1},
        {3, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}, 8, 0, 0},
        {4, {0xFF, 0xFF, 0xFF, 0xFF}, 4, 0, -1},
        {4, {0x7F, 0xFF, 0xFF, 0xFF}, 4, 0, 0},
        {5, {0, 0, 0}, 3, 0, -1},
        {5, {0, 1, 0}, 3, 0, 0},
        {5, {0xC1, 0x01, 0}, 3, 0, 0},
        {5, {0}, 1, 0, -1},
        {5, {0, 5}, 1, 0, -1}, // only the bytes within len count
        {5, {0xC1}, 1, 0, 0},
        {8, {0, 0}, 2, 0, -1},
        {8, {0x80, 0}, 2, 0, 0},
        {10, {0, 0, 0, 0, 0}, 5, 0, -1},
        {10, {0xC7, 0x14, 0x01}, 3, 0, 0},
        {14, {0}, 1, 0, -1},
        {14, {0x3E, 0x63}, 2, 0, 0},
        {13, {1, 0}, 2, 0, -1},
        {13, {1, 0, 0}, 3, 0, 0},
        {13, {0, 0}, 2, 0, 0},
        {13, {1, 1}, 2, 0, 0},
        {13, {1}, 1, 0, 0},
        {16, {1, 0}, 2, 0, -1},
        {17, int8_null, 10, 0, -1}, // the sign alone decides
        {17, int8_value, 10, 0, 0},
        {18, int8_null, 10, 0, -1},
        {43, {0, 0, 1}, 3, 0, 1},
        {43, {0, 0, 3}, 3, 0, 1},
        {43, {1, 1, 0xFE}, 3, 0, 0},
        {45, {1, 0}, 2, 0, -1},
        {45, {0, 1}, 2, 0, 0},
        {45, {0xFF, 0}, 2, 0, 0},
        {52, big_null, 8, 0, -1},
        {52, {0x80, 0, 0, 0, 0, 0, 0, 1}, 8, 0, 0},
        {0x0100 | 52, big_null, 8, 0, -1},
    };
    for (const StoredCase &c : cases) {
        SCOPED_TRACE("type " + std::to_string(c.type) + " len " + std::to_string(c.len));
        check_stored(c);
    }
}

TEST(StoredForm, TooShortBuffersAreRefused)
{
    const struct {
        int type;
        int min_len;
    } mins[] = {{0, 1},  {2, 4},  {6, 4},  {7, 4},   {3, 8},   {4, 4},  {5, 1},  {8, 1}, {10, 1},
                {14, 1}, {13, 1}, {16, 1}, {17, 10}, {18, 10}, {43, 3}, {45, 2}, {52, 8}};
    for (const auto &m : mins) {
        SCOPED_TRACE("type " + std::to_string(m.type));
        // The result is cleared before the length is checked.
        check_stored({m.type, Bytes(16, 0), m.min_len - 1, -1, 0});
        short isnull = 7;
        const char zeros[16] = {};
        EXPECT_EQ(qmrcdc_valisnull(zeros, m.min_len, m.type, &isnull), 0);
    }
    EXPECT_EQ(qmrcdc_valisnull("\0\0\0", 3, 0, nullptr), -1);
}

TEST(StoredForm, TypesNeverJudgedNull)
{
    const Bytes big_null = {0x80, 0, 0, 0, 0, 0, 0, 0};
    for (int type : {15, 53, 9, 11, 12, 19, 20, 21, 22, 23, 40, 41, 42, 44, 200, 0x2000 | 53}) {
        SCOPED_TRACE("type " + std::to_string(type));
        check_stored({type, big_null, 8, 0, 0});
        check_stored({type, {0}, 0, 0, 0}); // no length needed
    }
}

} // namespace
