// Null values: rsetnull and risnull on host variables of every C type (SQL codes
// go through sqlctype first), and the null test of values in the server's stored
// big-endian row format (qmrcdc_valisnull) with its loads ld2 and ld4.
#include "qmr/types.h"

#include "qmr/coll.h"
#include "qmr/datetime.h"
#include "qmr/decimal.h"
#include "qmr/int8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

namespace
{

enum class NullKind : unsigned char {
    none,
    never,
    first_byte_zero,
    short_min,
    int_min,
    long_int_min,
    float_ones,
    double_ones,
    decimal,
    qualified_decimal,
    locator,
    int8,
    record_flag,
    binary_flag,
    bool_ones,
    bigint_min,
};

constexpr NullKind kNullOf[] = {
#define QMR_CTYPE(code, memory, align, sqltype, null) NullKind::null,
#include "types/ctypes.def"
#undef QMR_CTYPE
};
static_assert(std::size(kNullOf) == QMR_C_MAXTYPE - QMR_C_CHAR + 1, "one null per C code");

// The null flag of a variable-binary or pointer-based lvarchar variable.
constexpr std::uint16_t kBinaryNullFlag = 0x2;
// A platform-long variable's null is the 32-bit null widened to 64 bits.
constexpr std::int64_t kLongNull = std::numeric_limits<std::int32_t>::min();

// Host variables may sit at any address: every access goes through memcpy.
template <class T> T load(const char *p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T> void store(char *p, T v)
{
    std::memcpy(p, &v, sizeof v);
}

bool all_ones(const char *p, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i)
        if (static_cast<unsigned char>(p[i]) != 0xFF)
            return false;
    return true;
}

// The null kind of an SQL code (through sqlctype) or of a C code.
NullKind null_kind(int type)
{
    if (type >= 0 && type <= QMR_SQL_MAXTYPE)
        type = sqlctype[type];
    if (type < QMR_C_CHAR || type > QMR_C_MAXTYPE)
        return NullKind::none;
    return kNullOf[type - QMR_C_CHAR];
}

// The dec_t null: only exponent, sign and digit count are written; the digits
// are left as they are.
void set_decimal_null(char *d)
{
    store<short>(d + offsetof(dec_t, exponent), 0);
    store<short>(d + offsetof(dec_t, sign), -1);
    store<short>(d + offsetof(dec_t, ndigits), 0);
}

// The sign field alone marks a null decimal, as everywhere in the numeric layer.
bool is_decimal_null(const char *d)
{
    return load<short>(d + offsetof(dec_t, sign)) == -1;
}

// dtime_t and intrvl_t share one layout: the qualifier stays, the decimal is null.
static_assert(offsetof(dtime_t, value) == offsetof(intrvl_t, value));
constexpr std::size_t kQualifiedValue = offsetof(dtime_t, value);

void set_int8_null(char *p)
{
    store<unsigned>(p + offsetof(qmr_int8_t, data), 0);
    store<unsigned>(p + offsetof(qmr_int8_t, data) + sizeof(unsigned), 0);
    store<short>(p + offsetof(qmr_int8_t, sign), 0);
}

// Sign 0 alone marks a null INT8, as the INT8 routines read it.
bool is_int8_null(const char *p)
{
    return load<short>(p + offsetof(qmr_int8_t, sign)) == 0;
}

template <class T> void set_flag(char *p, T flag)
{
    store<T>(p, static_cast<T>(load<T>(p) | flag));
}

template <class T> bool has_flag(const char *p, T flag)
{
    return (load<T>(p) & flag) != 0;
}

constexpr std::size_t kCollFlags = offsetof(qmr_collection_t, cl_flags);
constexpr std::size_t kLocIndicator = offsetof(qmr_loc_t, loc_indicator);

void write_null(NullKind kind, char *p)
{
    switch (kind) {
    case NullKind::none:
    case NullKind::never: // kept on purpose: a fixed binary value is never null
        return;
    case NullKind::first_byte_zero:
        p[0] = '\0';
        return;
    case NullKind::short_min:
        store(p, std::numeric_limits<std::int16_t>::min());
        return;
    case NullKind::int_min:
        store(p, std::numeric_limits<std::int32_t>::min());
        return;
    case NullKind::long_int_min:
        store(p, kLongNull);
        return;
    case NullKind::float_ones:
        std::memset(p, 0xFF, 4);
        return;
    case NullKind::double_ones:
        std::memset(p, 0xFF, 8);
        return;
    case NullKind::decimal:
        set_decimal_null(p);
        return;
    case NullKind::qualified_decimal:
        set_decimal_null(p + kQualifiedValue);
        return;
    case NullKind::locator:
        store<int>(p + kLocIndicator, -1);
        return;
    case NullKind::int8:
        set_int8_null(p);
        return;
    case NullKind::record_flag:
        set_flag<std::uint32_t>(p + kCollFlags, QMR_COLL_ISNULL);
        return;
    case NullKind::binary_flag:
        set_flag<std::uint16_t>(p, kBinaryNullFlag);
        return;
    case NullKind::bool_ones:
        p[0] = static_cast<char>(0xFF);
        return;
    case NullKind::bigint_min:
        store(p, std::numeric_limits<std::int64_t>::min());
        return;
    }
}

bool holds_null(NullKind kind, const char *p)
{
    switch (kind) {
    case NullKind::none:
    case NullKind::never:
        return false;
    case NullKind::first_byte_zero:
        return p[0] == '\0';
    case NullKind::short_min:
        return load<std::int16_t>(p) == std::numeric_limits<std::int16_t>::min();
    case NullKind::int_min:
        return load<std::int32_t>(p) == std::numeric_limits<std::int32_t>::min();
    case NullKind::long_int_min:
        return load<std::int64_t>(p) == kLongNull;
    case NullKind::float_ones:
        return all_ones(p, 4);
    case NullKind::double_ones:
        return all_ones(p, 8);
    case NullKind::decimal:
        return is_decimal_null(p);
    case NullKind::qualified_decimal:
        return is_decimal_null(p + kQualifiedValue);
    case NullKind::locator:
        return load<int>(p + kLocIndicator) == -1;
    case NullKind::int8:
        return is_int8_null(p);
    case NullKind::record_flag:
        return has_flag<std::uint32_t>(p + kCollFlags, QMR_COLL_ISNULL);
    case NullKind::binary_flag:
        return has_flag<std::uint16_t>(p, kBinaryNullFlag);
    case NullKind::bool_ones:
        return static_cast<unsigned char>(p[0]) == 0xFF;
    case NullKind::bigint_min:
        return load<std::int64_t>(p) == std::numeric_limits<std::int64_t>::min();
    }
    return false;
}

// Big-endian unsigned loads of the stored row format.
std::uint64_t load_be(const char *p, int n)
{
    std::uint64_t v = 0;
    for (int i = 0; i < n; ++i)
        v = (v << 8) | static_cast<unsigned char>(p[i]);
    return v;
}

// How a stored value of an SQL type is judged null.
enum class Stored : unsigned char {
    never,
    first_byte_zero,
    short_min,
    int_min,
    float_ones,
    double_ones,
    packed_decimal,
    varchar_marker,
    int8_sign,
    lvarchar_bit,
    boolean_one,
    bigint_min,
};

struct StoredRule {
    int min_len; // shorter buffers are refused
    Stored judge;
};

constexpr StoredRule stored_rule(int base)
{
    switch (base) {
    case QMR_SQL_CHAR:
        return {1, Stored::first_byte_zero};
    case QMR_SQL_SMALLINT:
        // kept on purpose: a stored SMALLINT is read without a length check.
        return {std::numeric_limits<int>::min(), Stored::short_min};
    case QMR_SQL_INTEGER:
    case QMR_SQL_SERIAL:
    case QMR_SQL_DATE:
        return {4, Stored::int_min};
    case QMR_SQL_FLOAT:
        return {8, Stored::double_ones};
    case QMR_SQL_SMALLFLOAT:
        return {4, Stored::float_ones};
    case QMR_SQL_DECIMAL:
    case QMR_SQL_MONEY:
    case QMR_SQL_DATETIME:
    case QMR_SQL_INTERVAL:
        return {1, Stored::packed_decimal};
    case QMR_SQL_VARCHAR:
    case QMR_SQL_NVARCHAR:
        return {1, Stored::varchar_marker};
    case QMR_SQL_INT8:
    case QMR_SQL_SERIAL8:
        return {10, Stored::int8_sign};
    case QMR_SQL_LVARCHAR:
        return {3, Stored::lvarchar_bit};
    case QMR_SQL_BOOLEAN:
        return {2, Stored::boolean_one};
    case QMR_SQL_BIGINT:
        return {8, Stored::bigint_min};
    default:
        // kept on purpose: NCHAR, BIGSERIAL, the large, composite and opaque
        // types are never judged null in the stored form.
        return {0, Stored::never};
    }
}

// The null test proper: -1 null, 1 null LVARCHAR, 0 not null.
short judge_stored(Stored judge, const char *buf, int len)
{
    const auto byte = [buf](int i) { return static_cast<unsigned char>(buf[i]); };
    bool null = false;
    switch (judge) {
    case Stored::never:
        break;
    case Stored::first_byte_zero:
        null = byte(0) == 0;
        break;
    case Stored::short_min:
        null = ld2(buf) == std::numeric_limits<std::int16_t>::min();
        break;
    case Stored::int_min:
        null = ld4(buf) == std::numeric_limits<std::int32_t>::min();
        break;
    case Stored::float_ones:
        // The single-precision load widened and narrowed again keeps the null
        // pattern (a quiet NaN) bit for bit, so the stored bytes tell directly.
        null = all_ones(buf, 4);
        break;
    case Stored::double_ones:
        null = all_ones(buf, 8);
        break;
    case Stored::packed_decimal:
        // A stored decimal unpacks to the null decimal exactly when its first
        // two bytes are 0; a one-byte value is judged by the byte it has.
        null = byte(0) == 0 && (len < 2 || byte(1) == 0);
        break;
    case Stored::varchar_marker:
        // kept on purpose: only the two-byte form {1, 0} is a stored null.
        null = len == 2 && byte(0) == 1 && byte(1) == 0;
        break;
    case Stored::int8_sign:
        null = ld2(buf) == 0;
        break;
    case Stored::lvarchar_bit:
        // kept on purpose: a null LVARCHAR reports 1, not -1.
        return (byte(2) & 1) != 0 ? 1 : 0;
    case Stored::boolean_one:
        null = byte(0) == 1;
        break;
    case Stored::bigint_min:
        null = load_be(buf, 8) == std::uint64_t{1} << 63;
        break;
    }
    return null ? -1 : 0;
}

} // namespace

int rsetnull(int type, char *ptr) noexcept
{
    if (ptr != nullptr)
        write_null(null_kind(type), ptr);
    return 0;
}

int risnull(int type, const char *ptr) noexcept
{
    return ptr != nullptr && holds_null(null_kind(type), ptr) ? 1 : 0;
}

int ld2(const char *p) noexcept
{
    return static_cast<std::int16_t>(load_be(p, 2));
}

int ld4(const char *p) noexcept
{
    return static_cast<std::int32_t>(load_be(p, 4));
}

int qmrcdc_valisnull(const char *buf, int len, int type, short *isnull) noexcept
{
    if (isnull == nullptr)
        return -1;
    *isnull = 0;
    const int base = type & 0xFF;
    if (base > QMR_SQL_BIGINT)
        return 0;
    const StoredRule rule = stored_rule(base);
    if (rule.judge == Stored::never)
        return 0;
    if (buf == nullptr || len < rule.min_len)
        return -1;
    *isnull = judge_stored(rule.judge, buf, len);
    return 0;
}
