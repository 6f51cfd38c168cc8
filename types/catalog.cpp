// The type catalogue: the SQL and C type rows (sqltypes.def, ctypes.def), the
// exported code tables sqlctype and sqlstype, and the lookups by code: names,
// type words, stored and in-memory sizes, alignments, display widths.
#include "types/catalog.hpp"
#include "qmr/types.h"

#include <cstddef>
#include <cstring>
#include <iterator>

namespace
{

enum class Kind : unsigned char {
    fixed,
    len,
    len_plus_1,
    var_len,
    var_len_plus_1,
    packed_decimal,
    packed_qualifier,
    decimal,
    money,
    date,
    datetime,
    interval,
};

// A count derived from a type's length argument: a size or a display width.
struct Rule {
    Kind kind;
    int n; // the count of a fixed rule
};

// The rule names the two .def files use.
namespace rule
{
constexpr Rule fixed(int n)
{
    return {Kind::fixed, n};
}
constexpr Rule len{Kind::len, 0};
constexpr Rule len_plus_1{Kind::len_plus_1, 0};
constexpr Rule var_len{Kind::var_len, 0};
constexpr Rule var_len_plus_1{Kind::var_len_plus_1, 0};
constexpr Rule packed_decimal{Kind::packed_decimal, 0};
constexpr Rule packed_qualifier{Kind::packed_qualifier, 0};
constexpr Rule decimal{Kind::decimal, 0};
constexpr Rule money{Kind::money, 0};
constexpr Rule date{Kind::date, 0};
constexpr Rule datetime{Kind::datetime, 0};
constexpr Rule interval{Kind::interval, 0};
} // namespace rule

struct SqlRow {
    int code;
    const char *name;
    Rule stored;
    Rule memory;
    int align;
    Rule width;
    short ctype;
};

struct CRow {
    int code;
    Rule memory;
    int align;
    short sqltype;
};

constexpr SqlRow kSqlRows[] = {
#define QMR_SQLTYPE(code, name, stored, memory, align, width, ctype)                               \
    {code, name, rule::stored, rule::memory, align, rule::width, ctype},
#include "types/sqltypes.def"
#undef QMR_SQLTYPE
};

constexpr CRow kCRows[] = {
#define QMR_CTYPE(code, memory, align, sqltype, null) {code, rule::memory, align, sqltype},
#include "types/ctypes.def"
#undef QMR_CTYPE
};

template <class Row, std::size_t N> constexpr bool in_code_order(const Row (&rows)[N], int first)
{
    for (std::size_t i = 0; i < N; ++i)
        if (rows[i].code != first + static_cast<int>(i))
            return false;
    return true;
}

static_assert(std::size(kSqlRows) == QMR_SQL_MAXTYPE + 1, "one row per SQL code 0..53");
static_assert(in_code_order(kSqlRows, 0), "SQL rows are indexed by code");
static_assert(std::size(kCRows) == QMR_C_MAXTYPE - QMR_C_CHAR + 1, "one row per C code 100..125");
static_assert(in_code_order(kCRows, QMR_C_CHAR), "C rows are indexed by code - 100");

// Rows of the code exactly as given (bare codes), or null.
constexpr const SqlRow *sql_row(int code)
{
    return code >= 0 && code <= QMR_SQL_MAXTYPE ? &kSqlRows[code] : nullptr;
}

constexpr const CRow *c_row(int code)
{
    return code >= QMR_C_CHAR && code <= QMR_C_MAXTYPE ? &kCRows[code - QMR_C_CHAR] : nullptr;
}

// What a column type code outside the catalogue answers: no name, no size.
constexpr SqlRow kNoType{-1, "", rule::fixed(0), rule::fixed(0), 1, rule::fixed(0), -1};

// The row of a column type code: attribute bits above the low byte are dropped.
constexpr const SqlRow &column_row(int type)
{
    const SqlRow *s = sql_row(type & 0xFF);
    return s != nullptr ? *s : kNoType;
}

// len + k without signed overflow (a huge length wraps as the stored int would).
constexpr int plus(int len, unsigned k)
{
    return static_cast<int>(static_cast<unsigned>(len) + k);
}

// Bytes of a packed base-100 value: `digits` decimal digits, one more when the
// last pair is half used, plus the exponent byte, rounded up to whole bytes.
constexpr int packed_bytes(int digits, int odd)
{
    return (digits + (odd & 1) + 3) / 2;
}

// INTERVAL text: the digits, a point before a leading FRACTION, one separator for
// each step of two units (all fraction end units count as FRACTION), and a sign.
constexpr int interval_width(int len)
{
    const int q = (len >> 8) & 0xFF;
    const int u = (len >> 4) & 0xF;
    const int e = len & 0xF;
    const int end = e >= 11 ? 12 : e;
    return q + (u == 12 ? 1 : 0) + (end - u) / 2 + 1;
}

constexpr int apply(Rule r, int len)
{
    switch (r.kind) {
    case Kind::fixed:
        return r.n;
    case Kind::len:
        return len;
    case Kind::len_plus_1:
        return plus(len, 1);
    case Kind::var_len:
        return len & 0xFF;
    case Kind::var_len_plus_1:
        return (len & 0xFF) + 1;
    case Kind::packed_decimal: // precision byte, scale byte (255: floating)
        return packed_bytes((len >> 8) & 0xFF, len & 0xFF);
    case Kind::packed_qualifier: // digit count, end unit
        return packed_bytes((len >> 8) & 0xFF, len & 0xF);
    case Kind::interval:
        return interval_width(len);
    case Kind::decimal:
    case Kind::money:
    case Kind::date:
    case Kind::datetime:
        // These widths come from the locale environment (numeric and money
        // conventions, the expanded date format, USE_DTENV and GL_DATETIME),
        // which the layers above this one answer.
        return 0;
    }
    return 0;
}

// Type words in the order they are tried within their first letter.
struct TypeWord {
    const char *word;
    int code;
};

// One group per first letter.
// clang-format off
constexpr TypeWord kTypeWords[] = {
    {"BIGINT", QMR_SQL_BIGINT}, {"BIGSERIAL", QMR_SQL_BIGSERIAL}, {"BYTE", QMR_SQL_BYTE},
        {"BOOLEAN", QMR_SQL_BOOLEAN},
    {"CHAR", QMR_SQL_CHAR}, {"CHARACTER", QMR_SQL_CHAR}, {"COLLECTION", QMR_SQL_COLLECTION},
    {"DATE", QMR_SQL_DATE}, {"DECIMAL", QMR_SQL_DECIMAL}, {"DATETIME", QMR_SQL_DATETIME},
    {"FLOAT", QMR_SQL_FLOAT},
    {"INT8", QMR_SQL_INT8}, {"INT", QMR_SQL_INTEGER}, {"INTEGER", QMR_SQL_INTEGER},
        {"INTERVAL", QMR_SQL_INTERVAL},
    {"LIST", QMR_SQL_LIST}, {"LVARCHAR", QMR_SQL_LVARCHAR},
    {"MONEY", QMR_SQL_MONEY}, {"MULTISET", QMR_SQL_MULTISET},
    {"NCHAR", QMR_SQL_NCHAR}, {"NVARCHAR", QMR_SQL_NVARCHAR}, {"NULL", QMR_SQL_NULL},
    {"ROW", QMR_SQL_ROW},
    {"SERIAL8", QMR_SQL_SERIAL8}, {"SERIAL", QMR_SQL_SERIAL}, {"SET", QMR_SQL_SET},
        {"SMALLFLOAT", QMR_SQL_SMALLFLOAT}, {"SMALLINT", QMR_SQL_SMALLINT},
    {"TEXT", QMR_SQL_TEXT},
    {"VARCHAR", QMR_SQL_VARCHAR},
};
// clang-format on
static_assert(std::size(kTypeWords) == 30, "every accepted type word once");

// ASCII upper case in place; other bytes are left as they are.
void upshift(char *s)
{
    for (; *s != '\0'; ++s)
        if (*s >= 'a' && *s <= 'z')
            *s = static_cast<char>(*s - 'a' + 'A');
}

} // namespace

const short sqlctype[54] = {
#define QMR_SQLTYPE(code, name, stored, memory, align, width, ctype) ctype,
#include "types/sqltypes.def"
#undef QMR_SQLTYPE
};

const short sqlstype[26] = {
#define QMR_CTYPE(code, memory, align, sqltype, null) sqltype,
#include "types/ctypes.def"
#undef QMR_CTYPE
};

const char *rtypname(int type) noexcept
{
    return column_row(type).name;
}

const char *qmr_typename(int type, int xid) noexcept
{
    if (const char *name = rtypname(type); name != nullptr)
        return name;
    // kept on purpose: names by extended identifier for a type without a base
    // name; rtypname always answers, so this is not reached today.
    switch (xid & 0xFF) {
    case 1:
    case 43:
        return "lvarchar";
    case 2:
    case 44:
        return "sendreceive";
    case 5:
    case 45:
        return "boolean";
    case 21:
    case 49:
        return "dbsendreceive";
    case 22:
    case 50:
        return "srvsendreceive";
    default:
        return "";
    }
}

int rstr2type(char *name) noexcept
{
    if (name == nullptr)
        return -1;
    // kept on purpose: the word is upper-cased in the caller's own buffer, and
    // callers read the upper-cased word back from it.
    upshift(name);
    if (name[0] < 'B' || name[0] > 'V')
        return -1;
    for (const TypeWord &w : kTypeWords)
        if (w.word[0] == name[0] && std::strcmp(w.word, name) == 0)
            return w.code;
    return -1;
}

int rtypsize(int type, int len) noexcept
{
    return apply(column_row(type).stored, len);
}

int rtypmsize(int type, int len) noexcept
{
    if (const SqlRow *s = sql_row(type))
        return apply(s->memory, len);
    if (const CRow *c = c_row(type))
        return apply(c->memory, len);
    return 0;
}

int rtypalign(int offset, int type) noexcept
{
    int a = 1;
    if (const SqlRow *s = sql_row(type))
        a = s->align;
    else if (const CRow *c = c_row(type))
        a = c->align;
    if (a == 0)
        return 0;
    const unsigned low = static_cast<unsigned>(a) - 1;
    return static_cast<int>((static_cast<unsigned>(offset) + low) & ~low);
}

namespace qmr
{

int table_width(int type, int len) noexcept
{
    return apply(column_row(type).width, len);
}

} // namespace qmr

int rtosqltype(int ctype) noexcept
{
    if (sql_row(ctype) != nullptr)
        return ctype;
    if (ctype == QMR_C_INT)
        return QMR_SQL_INTEGER;
    if (const CRow *c = c_row(ctype))
        return c->sqltype;
    return -1;
}

int rtoctype(int sqltype) noexcept
{
    // kept on purpose: a 32-bit integer variable is promoted to the long kind.
    if (sqltype == QMR_C_INT)
        return QMR_C_LONG;
    if (const SqlRow *s = sql_row(sqltype))
        return s->ctype;
    return sqltype;
}
