/* BIGINT: a native signed 64-bit integer whose most negative pattern
 * 0x8000000000000000 is the null, and its conversions to and from the 16- and
 * 32-bit integers, qmr_int8_t, dec_t, floating point, text and the 8-byte
 * big-endian stored form. */
#ifndef QMR_BIGINT_H
#define QMR_BIGINT_H

#include <stdint.h>

#include "qmr/decimal.h"
#include "qmr/errors.h"
#include "qmr/export.h"
#include "qmr/int8.h"

/* The null pattern; the values run from -(2^63-1) to 2^63-1. */
#define QMR_BIGINT_NULL INT64_MIN

QMR_BEGIN_DECLS

/* Every conversion returns 0 or a negative code and writes its result through
 * the pointer; on an error the result is not written unless stated. */

/* *s = v; null gives -32768.
 * Returns: 0, QMR_E_SMALLINTRANGE outside -32767..32767. */
QMR_API int biginttoint2(int64_t v, short *s) QMR_NOEXCEPT;
/* *v = s; -32768 gives null. Returns: 0. */
QMR_API int bigintcvint2(short s, int64_t *v) QMR_NOEXCEPT;
/* *l = v; null gives -2147483648.
 * Returns: 0, QMR_E_NOFIT outside -2147483647..2147483647. */
QMR_API int biginttoint4(int64_t v, int32_t *l) QMR_NOEXCEPT;
/* *v = l; -2147483648 gives null. Returns: 0. */
QMR_API int bigintcvint4(int32_t l, int64_t *v) QMR_NOEXCEPT;
/* *v = a; a null record gives null.
 * Returns: 0, QMR_E_NOFIT for a high word with its top bit set. */
QMR_API int bigintcvqmr_int8(const qmr_int8_t *a, int64_t *v) QMR_NOEXCEPT;
/* *a = v; null gives a null record. Returns: 0. */
QMR_API int biginttoqmr_int8(int64_t v, qmr_int8_t *a) QMR_NOEXCEPT;
/* *v = the integer part of d (truncated toward zero); null gives null. Digit
 * bytes beyond d's ndigits count as 0.
 * Returns: 0, QMR_E_NOFIT when the integer part is beyond 2^63-1. */
QMR_API int bigintcvdec(const dec_t *d, int64_t *v) QMR_NOEXCEPT;
/* *d = v exactly; null gives a null decimal. Returns: 0. */
QMR_API int biginttodec(int64_t v, dec_t *d) QMR_NOEXCEPT;
/* *v = x truncated toward zero. The FLOAT null (all bytes 0xFF) gives null; so
 * do a NaN and 2^63 itself, which the processor's conversion turns into the
 * null pattern.
 * Returns: 0, QMR_E_NOFIT below -2^63 or above 2^63 (infinities included). */
QMR_API int bigintcvdbl(double x, int64_t *v) QMR_NOEXCEPT;
/* As bigintcvdbl; the float's own four bytes all 0xFF (the SMALLFLOAT null)
 * give null. */
QMR_API int bigintcvflt(float x, int64_t *v) QMR_NOEXCEPT;
/* *x = v rounded to the nearest double; null gives the FLOAT null. Returns: 0. */
QMR_API int biginttodbl(int64_t v, double *x) QMR_NOEXCEPT;
/* *x = v narrowed to float; null sets the four bytes to 0xFF. A non-zero
 * magnitude outside the float range leaves *x unwritten. Returns: 0. */
QMR_API int biginttoflt(int64_t v, float *x) QMR_NOEXCEPT;

/* Reads the first len bytes of text (len -1: up to the NUL; a NUL within len
 * ends the text; any other len below 1 is empty). Empty or blank text, or a
 * lone sign, gives null. Leading white space, then either "0x" and hexadecimal
 * digits, or an optional sign, digits with the locale's thousands separators
 * and one decimal point, and an optional "e" exponent; trailing white space.
 * The fraction is dropped (truncation toward zero).
 * Returns: 0, QMR_E_NOTNUMBER (missing text, stray character, second point,
 * bad exponent, no digit), QMR_E_NOFIT (more than 25 characters, more than 19
 * integer digits, beyond 2^63-1), a negative locale code. */
QMR_API int bigintcvasc(const char *text, int len, int64_t *v) QMR_NOEXCEPT;
/* Writes v in base 16 when radix is 16 ("0x" and 16 lowercase digits, the
 * two's-complement pattern for a negative v), else in base 10 ("-" for a
 * negative v), and a NUL. A null writes len blanks and no NUL. A len of 0
 * writes nothing. A text longer than a non-zero len writes len "*" (no NUL).
 * A text exactly len long puts its NUL at text[len]: size the buffer for it.
 * Returns: 0, QMR_E_TEXTFIT. */
QMR_API int biginttoasc(int64_t v, char *text, int len, int radix) QMR_NOEXCEPT;

/* *v = the 8 big-endian stored bytes. Returns: 0. */
QMR_API int ldbigint(int64_t *v, const char *bytes) QMR_NOEXCEPT;
/* Stores v as 8 big-endian bytes (the null as 80 00 .. 00). Returns: 0. */
QMR_API int stbigint(int64_t v, char *bytes) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_BIGINT_H */
