/* The INT8/SERIAL8 record qmr_int8_t: a 63-bit magnitude in two 32-bit words
 * with a separate sign, its constants, stored form, arithmetic with overflow
 * detection, comparisons and conversions. */
#ifndef QMR_INT8_H
#define QMR_INT8_H

#include <stdint.h>

#include "qmr/decimal.h"
#include "qmr/errors.h"
#include "qmr/export.h"

/* Range -(2^63-1)..2^63-1; zero is magnitude 0 with sign 1; null is sign 0
 * with both words 0. 12 bytes. */
typedef struct qmr_int8_t {
    unsigned int data[2]; /* data[0] the low 32 bits, data[1] the high 32 bits */
    short sign;           /* 1 positive, -1 negative, 0 null */
} qmr_int8_t;

/* The native signed 64-bit form of a file offset; 0x8000000000000000 is its null. */
typedef int64_t qmr_off_t;

/* Bytes of the stored form. */
#define QMR_INT8_STORED_SIZE 10

QMR_BEGIN_DECLS

/* Read-only records: 0, 1, -1, 2^63-1, -(2^63-1) and the null. */
QMR_API extern const qmr_int8_t const_int8zero;
QMR_API extern const qmr_int8_t const_int8one;
QMR_API extern const qmr_int8_t const_int8negone;
QMR_API extern const qmr_int8_t const_int8max;
QMR_API extern const qmr_int8_t const_int8min;
QMR_API extern const qmr_int8_t const_int8null;

/* Arithmetic. The result record may be an operand. A null operand gives a null
 * result and 0. On an error the result is not written. A malformed operand
 * (high word with its top bit set) gives QMR_E_NOFIT. */

/* r = a + b, a - b, a * b on the native 64-bit form. With check 0 the result
 * wraps silently (a wrapped 0x8000000000000000 comes back as null); otherwise
 * a result beyond -(2^63-1)..2^63-1 is QMR_E_NOFIT.
 * Returns: 0, QMR_E_NOFIT. */
QMR_API int gint8add(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r,
                     int check) QMR_NOEXCEPT;
QMR_API int gint8sub(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r,
                     int check) QMR_NOEXCEPT;
QMR_API int gint8mul(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r,
                     int check) QMR_NOEXCEPT;
/* gint8add, gint8sub, gint8mul with checking.
 * Returns: 0, QMR_E_NOFIT. */
QMR_API int qmr_int8add(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) QMR_NOEXCEPT;
QMR_API int qmr_int8sub(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) QMR_NOEXCEPT;
QMR_API int qmr_int8mul(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *r) QMR_NOEXCEPT;
/* q = a / b truncated toward zero; rem (when not null) = a - q * b, which has
 * the dividend's sign. A null operand makes q null and leaves rem alone.
 * q and rem may be operands.
 * Returns: 0, QMR_E_DIVZERO (b zero, whatever its sign), QMR_E_NOFIT. */
QMR_API int gint8div(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *q,
                     qmr_int8_t *rem) QMR_NOEXCEPT;
/* gint8div without a remainder.
 * Returns: 0, QMR_E_DIVZERO, QMR_E_NOFIT. */
QMR_API int qmr_int8div(const qmr_int8_t *a, const qmr_int8_t *b, qmr_int8_t *q) QMR_NOEXCEPT;
/* The next SERIAL8 value: r = a + 1, or 1 when a + 1 would overflow.
 * Returns: 0; -2 for a null a (r becomes null); QMR_E_NOFIT for a malformed a. */
QMR_API int serial8inc(const qmr_int8_t *a, qmr_int8_t *r) QMR_NOEXCEPT;
/* Copies the record. */
QMR_API void qmr_int8copy(const qmr_int8_t *from, qmr_int8_t *to) QMR_NOEXCEPT;

/* Comparison. */

/* Returns: -1, 0, 1 as a is below, equal to, above b; -2 if either is null. */
QMR_API int qmr_int8cmp(const qmr_int8_t *a, const qmr_int8_t *b) QMR_NOEXCEPT;
/* A total order with null first. Returns: -1, 0, 1 (two nulls are equal). */
QMR_API int qmr_int8cmp_det(const qmr_int8_t *a, const qmr_int8_t *b) QMR_NOEXCEPT;
/* Compares the magnitudes only, sign ignored. Returns: -1, 0, 1. */
QMR_API int int8ucmp(const qmr_int8_t *a, const qmr_int8_t *b) QMR_NOEXCEPT;
/* Returns: 1 for a non-null zero, else 0. */
QMR_API int qmr_int8iszero(const qmr_int8_t *a) QMR_NOEXCEPT;

/* Conversions with C integers. The narrow forms' own null (-2147483648,
 * -32768, 0x80000000) stands for an INT8 null both ways. */

/* r = l; -2147483648 gives null. Returns: 0. */
QMR_API int qmr_int8cvlong(int32_t l, qmr_int8_t *r) QMR_NOEXCEPT;
/* *l = a; null gives -2147483648.
 * Returns: 0, QMR_E_NOFIT unless the magnitude is below 2^31. */
QMR_API int qmr_int8tolong(const qmr_int8_t *a, int32_t *l) QMR_NOEXCEPT;
QMR_API int qmr_int8toint4(const qmr_int8_t *a, int32_t *l) QMR_NOEXCEPT;
/* r = i; -32768 gives null. Returns: 0. */
QMR_API int qmr_int8cvint(int i, qmr_int8_t *r) QMR_NOEXCEPT;
/* *i = a; null gives -32768.
 * Returns: 0, QMR_E_SMALLINTRANGE outside -32767..32767 (*i not written). */
QMR_API int qmr_int8toint(const qmr_int8_t *a, int *i) QMR_NOEXCEPT;
QMR_API int qmr_int8toint2(const qmr_int8_t *a, short *s) QMR_NOEXCEPT;
/* The high or low magnitude word, sign ignored; null gives 0x80000000.
 * Returns: 0. */
QMR_API int qmr_int8high(const qmr_int8_t *a, unsigned int *w) QMR_NOEXCEPT;
QMR_API int qmr_int8low(const qmr_int8_t *a, unsigned int *w) QMR_NOEXCEPT;
/* The native signed 64-bit value; null gives 0x8000000000000000.
 * Returns: 0, QMR_E_NOFIT for a malformed magnitude (*o not written). */
QMR_API int int8toqmr_off_t(const qmr_int8_t *a, qmr_off_t *o) QMR_NOEXCEPT;
QMR_API int qmr_int8tokps_int8(const qmr_int8_t *a, int64_t *o) QMR_NOEXCEPT;
/* r = o; 0x8000000000000000 gives null. int8cvqmr_off_t returns 0. */
QMR_API int int8cvqmr_off_t(qmr_off_t o, qmr_int8_t *r) QMR_NOEXCEPT;
QMR_API void qmr_int8cvkps_int8(int64_t o, qmr_int8_t *r) QMR_NOEXCEPT;

/* Text. */

/* Writes a as text in base 16 when radix is 16, else base 10, as biginttoasc
 * does: NUL-terminated when it fits; a null writes len blanks and no NUL; a
 * text longer than a non-zero len writes len "*" (no NUL).
 * Returns: 0, QMR_E_TEXTFIT, QMR_E_NOFIT (malformed magnitude). */
QMR_API int int8tostr(const qmr_int8_t *a, char *text, int len, int radix) QMR_NOEXCEPT;
QMR_API int qmr_int8tostr(const qmr_int8_t *a, char *text, int len) QMR_NOEXCEPT;
/* As int8tostr, then blanks from the end of the digits up to len (over the NUL
 * when the digits are shorter): a fixed-width, blank-padded field.
 * Returns: as int8tostr. */
QMR_API int int8toasc(const qmr_int8_t *a, char *text, int len, int radix) QMR_NOEXCEPT;
QMR_API int qmr_int8toasc(const qmr_int8_t *a, char *text, int len) QMR_NOEXCEPT;
/* Reads len bytes of text (len -1: up to the NUL) as bigintcvasc does; empty
 * or blank text gives null.
 * Returns: 0, QMR_E_NOTNUMBER, QMR_E_NOFIT, a negative locale code (r not
 * written on an error). */
QMR_API int qmr_int8cvasc(const char *text, int len, qmr_int8_t *r) QMR_NOEXCEPT;

/* Decimal and floating point. */

/* d = a exactly; null gives a null decimal.
 * Returns: 0, QMR_E_NOFIT for a malformed magnitude (d not written). */
QMR_API int qmr_int8todec(const qmr_int8_t *a, dec_t *d) QMR_NOEXCEPT;
QMR_API int deccvint8(const qmr_int8_t *a, dec_t *d) QMR_NOEXCEPT;
/* r = d truncated toward zero. The caller's d is truncated in place first (its
 * fraction digits dropped; a magnitude below 1 becomes the decimal zero); a null
 * d gives a null r.
 * Returns: 0, QMR_E_NOFIT (integer part beyond 2^63-1), QMR_E_NOMEM (no
 * thread context). */
QMR_API int qmr_int8cvdec(dec_t *d, qmr_int8_t *r) QMR_NOEXCEPT;
/* *x = a, rounded to the nearest double; null gives the FLOAT null (all bytes
 * 0xFF). Returns: 0, QMR_E_NOFIT for a malformed magnitude. */
QMR_API int qmr_int8todbl(const qmr_int8_t *a, double *x) QMR_NOEXCEPT;
/* *x = a narrowed to float (through the nearest double); null sets the four
 * bytes to 0xFF. Returns: 0, QMR_E_FLOATRANGE (*x not written), QMR_E_NOFIT for
 * a malformed magnitude. */
QMR_API int qmr_int8toflt(const qmr_int8_t *a, float *x) QMR_NOEXCEPT;
/* r = x truncated toward zero. The FLOAT null (resp. the SMALLFLOAT null, the
 * float's own four bytes all 0xFF) gives null; a negative x whose magnitude
 * truncates to 0 gives zero.
 * Returns: 0, QMR_E_BADFLOAT (NaN or infinity), QMR_E_NOFIT (|x| >= 2^63),
 * QMR_E_NOMEM (no thread context). */
QMR_API int qmr_int8cvdbl(double x, qmr_int8_t *r) QMR_NOEXCEPT;
QMR_API int qmr_int8cvflt(float x, qmr_int8_t *r) QMR_NOEXCEPT;

/* Stored form: bytes 0-1 the sign (big-endian), bytes 2-5 data[0], bytes 6-9
 * data[1], each word big-endian. A null stores sign 0. */

/* Loads 10 stored bytes into r. */
QMR_API void ldint8(const char *bytes, qmr_int8_t *r) QMR_NOEXCEPT;
/* Stores a into 10 bytes. */
QMR_API void stint8(const qmr_int8_t *a, char *bytes) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_INT8_H */
