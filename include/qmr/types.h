/* The type catalogue: SQL type codes 0..53 and C type codes 100..125, their
 * names, stored and in-memory sizes, alignments, display widths, the tables that
 * map one family onto the other, and null values in memory and stored form. */
#ifndef QMR_TYPES_H
#define QMR_TYPES_H

#include "qmr/export.h"

QMR_BEGIN_DECLS

/* SQL type codes (the low 8 bits of a column's type code). */
enum qmr_sqltype {
    QMR_SQL_CHAR = 0,
    QMR_SQL_SMALLINT = 1,
    QMR_SQL_INTEGER = 2,
    QMR_SQL_FLOAT = 3,
    QMR_SQL_SMALLFLOAT = 4,
    QMR_SQL_DECIMAL = 5,
    QMR_SQL_SERIAL = 6,
    QMR_SQL_DATE = 7,
    QMR_SQL_MONEY = 8,
    QMR_SQL_NULL = 9,
    QMR_SQL_DATETIME = 10,
    QMR_SQL_BYTE = 11,
    QMR_SQL_TEXT = 12,
    QMR_SQL_VARCHAR = 13,
    QMR_SQL_INTERVAL = 14,
    QMR_SQL_NCHAR = 15,
    QMR_SQL_NVARCHAR = 16,
    QMR_SQL_INT8 = 17,
    QMR_SQL_SERIAL8 = 18,
    QMR_SQL_SET = 19,
    QMR_SQL_MULTISET = 20,
    QMR_SQL_LIST = 21,
    QMR_SQL_ROW = 22,
    QMR_SQL_COLLECTION = 23,
    QMR_SQL_UDTVAR = 40,
    QMR_SQL_UDTFIXED = 41,
    QMR_SQL_REFSER8 = 42,
    QMR_SQL_LVARCHAR = 43,
    QMR_SQL_SENDRECV = 44,
    QMR_SQL_BOOLEAN = 45,
    QMR_SQL_IMPEXP = 46,
    QMR_SQL_IMPEXPBIN = 47,
    QMR_SQL_UNUSED48 = 48,
    QMR_SQL_DBSENDRECV = 49,
    QMR_SQL_SRVSENDRECV = 50,
    QMR_SQL_UNUSED51 = 51,
    QMR_SQL_BIGINT = 52,
    QMR_SQL_BIGSERIAL = 53,
    QMR_SQL_MAXTYPE = 53
};

/* Attribute bits above the base code. */
#define QMR_SQL_DISTINCT_LVARCHAR 0x2000 /* distinct type represented as LVARCHAR */
#define QMR_SQL_DISTINCT_BOOLEAN  0x4000 /* distinct type represented as BOOLEAN */

/* C type codes: kinds of host-program variable. */
enum qmr_ctype {
    QMR_C_CHAR = 100,        /* character array, NUL-terminated */
    QMR_C_SHORT = 101,       /* 16-bit integer */
    QMR_C_INT = 102,         /* 32-bit integer */
    QMR_C_LONG = 103,        /* 64-bit platform long */
    QMR_C_FLOAT = 104,       /* single-precision float */
    QMR_C_DOUBLE = 105,      /* double-precision float */
    QMR_C_NONE = 106,        /* no type */
    QMR_C_DECIMAL = 107,     /* dec_t */
    QMR_C_FIXCHAR = 108,     /* blank-padded character array, no terminator */
    QMR_C_STRING = 109,      /* character string, NUL-terminated */
    QMR_C_DATE = 110,        /* 32-bit day number */
    QMR_C_MONEY = 111,       /* dec_t holding money */
    QMR_C_DTIME = 112,       /* dtime_t */
    QMR_C_LOCATOR = 113,     /* large-object locator, qmr_loc_t */
    QMR_C_VARCHAR = 114,     /* varchar, NUL-terminated */
    QMR_C_INTRVL = 115,      /* intrvl_t */
    QMR_C_FILE = 116,        /* file name of a large object */
    QMR_C_INT8 = 117,        /* qmr_int8_t */
    QMR_C_COLL = 118,        /* collection record, qmr_collection_t */
    QMR_C_LVARCHAR = 119,    /* lvarchar, NUL-terminated */
    QMR_C_FIXBIN = 120,      /* fixed binary (fixed-size opaque type) */
    QMR_C_VARBIN = 121,      /* variable binary (variable-size opaque type) */
    QMR_C_BOOL = 122,        /* boolean, one byte */
    QMR_C_ROW = 123,         /* row record, qmr_collection_t */
    QMR_C_LVARCHARPTR = 124, /* pointer-based lvarchar */
    QMR_C_BIGINT = 125,      /* 64-bit integer (BIGINT) */
    QMR_C_MAXTYPE = 125
};

/* The large-object locator shared with host programs: 112 bytes, 8-aligned.
 * Only loc_indicator is interpreted here (-1 marks a null value). */
typedef struct qmr_loc_t {
    short loc_type;        /* where the object lives */
    int loc_indicator;     /* -1 null, otherwise 0 */
    int loc_size;          /* size of the object in bytes */
    int loc_status;        /* status of the last operation */
    char loc_reserved[96]; /* for the large-object machinery */
} qmr_loc_t;

/* SQL type code -> C type code (-1 where none), 54 entries. */
QMR_API extern const short sqlctype[54];
/* C type code - 100 -> SQL type code (-1 where none), 26 entries. The entry for
 * 102 holds 1 on purpose; rtosqltype answers 2 for 102 without reading it. */
QMR_API extern const short sqlstype[26];

/* Name of the SQL type in the low 8 bits of type; "" for unnamed codes and
 * codes above 53; never null. */
QMR_API const char *rtypname(int type) QMR_NOEXCEPT;
/* rtypname(type); the mapping of xid is reached only if that were null, which it
 * never is, so this is the base type's name or "". */
QMR_API const char *qmr_typename(int type, int xid) QMR_NOEXCEPT;
/* SQL code of a type word. Upper-cases name in place first (the caller sees its
 * buffer changed); only the exact words of the catalogue are accepted. -1 for
 * null or an unknown word. */
QMR_API int rstr2type(char *name) QMR_NOEXCEPT;
/* Stored size in bytes of the SQL type in the low 8 bits of type; 0 if none. */
QMR_API int rtypsize(int type, int len) QMR_NOEXCEPT;
/* In-memory size of a bare SQL or C type code; 0 for unknown codes. */
QMR_API int rtypmsize(int type, int len) QMR_NOEXCEPT;
/* offset rounded up to the type's alignment; 0 for types 40, 41, 120 and 121
 * (always placed at the start of their own buffer); unknown codes align to 1. */
QMR_API int rtypalign(int offset, int type) QMR_NOEXCEPT;
/* Display width in characters of the SQL type in the low 8 bits of type; 0 for
 * codes above 53 and when the thread's locale environment cannot be built.
 * With p the precision (len >> 8) and s the scale (len & 255), after loading
 * the money conventions (rmoninit):
 *   DECIMAL  N + p + 6 for a floating decimal (s 255), else N + p + 1, and
 *            N + p + 2 when p equals s (room for a leading zero);
 *   MONEY    M + p + 1 + F + B, plus 1 when p equals s, F and B being the
 *            byte lengths of the front and back currency symbols;
 * where N and M are the columns that the decimal point and the monetary
 * decimal point take beyond one (0 for a point one column wide, as in
 * en_US, where DECIMAL(16,2) is 17 wide and MONEY(16,2) with "$" 18).
 * DATE and DATETIME give 0 for now. */
QMR_API int rtypwidth(int type, int len) QMR_NOEXCEPT;
/* SQL code for a C code: 0..53 unchanged, 102 gives 2, 100..125 the sqlstype
 * entry, all else -1. */
QMR_API int rtosqltype(int ctype) QMR_NOEXCEPT;
/* C code for an SQL code: 102 gives 103 (a 32-bit variable is promoted to the
 * long kind), 0..53 the sqlctype entry, every other value unchanged. */
QMR_API int rtoctype(int sqltype) QMR_NOEXCEPT;
/* Writes the null of an SQL or C type code into *ptr (an SQL code is mapped
 * through sqlctype first); codes without a null write nothing. Returns 0. */
QMR_API int rsetnull(int type, char *ptr) QMR_NOEXCEPT;
/* 1 if *ptr holds the null of the type, else 0 (also for codes without one). */
QMR_API int risnull(int type, const char *ptr) QMR_NOEXCEPT;
/* Signed 16-bit and 32-bit integers stored big-endian. */
QMR_API int ld2(const char *p) QMR_NOEXCEPT;
QMR_API int ld4(const char *p) QMR_NOEXCEPT;
/* Whether a value in the stored (big-endian) row format is null: *isnull
 * becomes 0 (not null), -1 (null), or 1 for a null LVARCHAR. Returns 0, or -1
 * for a null isnull or a len too short for the type. NCHAR, BIGSERIAL and the
 * large and composite types are never judged null; SMALLINT is read without a
 * length check. */
QMR_API int qmrcdc_valisnull(const char *buf, int len, int type, short *isnull) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_TYPES_H */
