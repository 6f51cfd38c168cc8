/* The exact decimal record dec_t: up to 16 base-100 digits with a power-of-100
 * exponent. Arithmetic and conversions are declared here as they are built. */
#ifndef QMR_DECIMAL_H
#define QMR_DECIMAL_H

#include "qmr/errors.h"
#include "qmr/export.h"

#define QMR_DECSIZE 16
/* The most digits after the point (decfcvt) or significant digits (dececvt)
 * that the per-thread digit-string routines produce. */
#define QMR_DECCVT_MAXNDIGIT 160

/* Value: (sign 0: minus, 1: plus) x 0.d0 d1 ... d(ndigits-1) x 100^exponent.
 * Zero is ndigits 0, exponent -64, sign 1; null is ndigits 0, exponent 0,
 * sign -1. The record is 22 bytes and is copied whole. */
typedef struct dec_t {
    short exponent;           /* power of 100 of the first digit, -64..63 */
    short sign;               /* 1 positive, 0 negative, -1 null */
    short ndigits;            /* significant base-100 digits held, 0..16 */
    char digits[QMR_DECSIZE]; /* base-100 digits 0..99, most significant first */
} dec_t;

QMR_BEGIN_DECLS

/* Arithmetic. Every result pointer may be the same as an operand: operands are
 * read whole before the result is written. A null operand gives a null result
 * and 0. Results pass through decload, so they are rounded half away from zero
 * on the 17th base-100 digit and clamped at the exponent limits. */

/* result = a + b. The sign of a sum is that of the larger magnitude; x + (-x)
 * is zero with sign 1. An addend lying wholly beyond 17 base-100 digits below
 * the other is dropped without rounding.
 * Returns: 0, QMR_E_DECOVERFLOW (exponent 63 kept), QMR_E_DECUNDERFLOW
 * (exponent -64 kept). */
QMR_API int decadd(const dec_t *a, const dec_t *b, dec_t *result) QMR_NOEXCEPT;
/* result = a - b; as decadd.
 * Returns: 0, QMR_E_DECOVERFLOW, QMR_E_DECUNDERFLOW. */
QMR_API int decsub(const dec_t *a, const dec_t *b, dec_t *result) QMR_NOEXCEPT;
/* result = a * b: the full product rounded once.
 * Returns: 0, QMR_E_DECOVERFLOW, QMR_E_DECUNDERFLOW. */
QMR_API int decmul(const dec_t *a, const dec_t *b, dec_t *result) QMR_NOEXCEPT;
/* result = a / b from 18 quotient digits rounded to 16. A zero divisor sets
 * result to zero (a null operand still gives null and 0).
 * Returns: 0, QMR_E_DECOVERFLOW, QMR_E_DECUNDERFLOW, QMR_E_DIVZERO. */
QMR_API int decdiv(const dec_t *a, const dec_t *b, dec_t *result) QMR_NOEXCEPT;
/* Rounds d in place, half away from zero, to s decimal places (s < 0 rounds
 * left of the point: -1 to tens, -2 to hundreds). A null d is left alone. */
QMR_API void decround(dec_t *d, int s) QMR_NOEXCEPT;
/* Truncates d in place towards zero to s decimal places (same s as decround).
 * A null d is left alone; a value that loses every digit becomes zero. */
QMR_API void dectrunc(dec_t *d, int s) QMR_NOEXCEPT;
/* Returns: -1, 0, 1 as a is less than, equal to, greater than b; -2 if either
 * is null. A trailing zero digit counts: {1, 50, 0} is above {1, 50}. */
QMR_API int deccmp(const dec_t *a, const dec_t *b) QMR_NOEXCEPT;
/* Copies the whole record, all 16 digit bytes. from may equal to. */
QMR_API void deccopy(const dec_t *from, dec_t *to) QMR_NOEXCEPT;
/* Returns: 1 if d has no digits and exponent -64 (the sign is not read), else 0. */
QMR_API int dec_is_zero(const dec_t *d) QMR_NOEXCEPT;
/* result = square root of x by Newton steps until two successive values are
 * equal. A negative x gives zero; a null x gives null. result may be x.
 * Returns: 0. */
QMR_API int decsqrt(const dec_t *x, dec_t *result) QMR_NOEXCEPT;

/* Stores count base-100 digit bytes (most significant first; the first has the
 * power exponent) with sign 1, 0 or -1 (null) into result, normalised: leading
 * and trailing zero digits dropped, more than 16 digits rounded half-up on the
 * 17th (a carry that leaves zeros at the end keeps all 16 digits), no digits
 * giving zero with sign 1. bytes is only read and may overlap result.
 * Returns: 0; QMR_E_DECOVERFLOW with exponent stored as 63, QMR_E_DECUNDERFLOW
 * with exponent stored as -64 (digits kept in both). */
QMR_API int decload(dec_t *result, int sign, int exponent, const char *bytes,
                    int count) QMR_NOEXCEPT;
/* Returns: 0 if d is a well-formed value or null, -1 otherwise (also for a
 * null pointer). */
QMR_API int decverify(const dec_t *d) QMR_NOEXCEPT;
/* Writes n base-100 digits as 2n decimal characters ("07" for 7) and a NUL.
 * Returns: a pointer to that NUL. */
QMR_API char *dec1to2(const char *digits, int n, char *out) QMR_NOEXCEPT;
/* Reads an optional "+" or "-" and decimal digits into *value (negated after
 * "-"; wraps modulo 2^32 without a check; no digits gives 0).
 * Returns: a pointer to the first character not consumed. */
QMR_API char *decstoi(const char *text, int *value) QMR_NOEXCEPT;
/* Reads hexadecimal digits into *value (modulo 2^32), then skips blanks.
 * Returns: 0 and stores the value if the end of the string or a newline
 * follows; -1 otherwise, leaving *value unchanged. */
QMR_API int decxtoi(const char *text, unsigned int *value) QMR_NOEXCEPT;

/* Stored form of L bytes whose unsigned byte strings sort in numeric order:
 * byte 0 holds the sign bit (set for positive and zero) and the exponent
 * excess 64 (ones' complemented for negatives), bytes 1..L-1 the first L-1
 * digits (base-100 complemented for negatives). Null is all bytes 0.
 * A negative value of exponent 63 whose leading digit 99 is followed by further
 * non-zero stored digits stores bytes 0 and 1 as 0, and so reads back as null. */

/* Writes d into L bytes (L >= 2), rounding half-up on the magnitude at the
 * first digit not stored. Nothing is checked: a value of exponent 63 that
 * rounds up at the cut carries into the sign bit. */
QMR_API void stdecimal(const dec_t *d, char *buffer, int len) QMR_NOEXCEPT;
/* Reads L stored bytes into d (at most 17 digits are read). Bytes 0 and 1
 * both 0 give null.
 * Returns: 0; QMR_E_DECOVERFLOW or QMR_E_DECUNDERFLOW for malformed bytes. */
QMR_API int lddecimal(const char *buffer, int len, dec_t *d) QMR_NOEXCEPT;
/* Replaces n digit bytes by their base-100 complement 100^n - run (zero stays
 * zero); applying it twice gives the bytes back. */
QMR_API void deccomplement(char *bytes, int n) QMR_NOEXCEPT;
/* Returns: the precision word p * 256 + s that exactly fits d: p decimal
 * digits, s fractional digits; an integer with zeros left of the units place
 * counts them in p with s 0. 0 for zero or null. */
QMR_API int dec2prec(const dec_t *d) QMR_NOEXCEPT;
/* Returns: dec2prec(d) with the precision raised to at least the scale. */
QMR_API int decprec(const dec_t *d) QMR_NOEXCEPT;

/* Binary numbers. The FLOAT null is a double whose 8 bytes are all 0xFF; the
 * long null is -2147483648 and the int null -32768 (the SMALLINT null). */

/* result = the shortest digit string (at most 17 significant digits) that
 * reads back as value, so 0.1 becomes exactly 0.1; -0.0 gives zero. The FLOAT
 * null gives the null decimal. When those digits reach 10^126 result is left
 * untouched; when they lie below 10^-130 it is set to zero.
 * Returns: 0, QMR_E_DECOVERFLOW, QMR_E_DECUNDERFLOW, QMR_E_BADFLOAT (NaN or
 * infinity other than the null; result untouched). */
QMR_API int deccvdbl(double value, dec_t *result) QMR_NOEXCEPT;
/* *result = d correctly rounded to the nearest double (ties to even); every
 * decimal lies inside the double range. The null decimal writes the FLOAT null.
 * Returns: 0. */
QMR_API int dectodbl(const dec_t *d, double *result) QMR_NOEXCEPT;
/* result = value exactly (any long, beyond 32 bits too); the long null gives
 * the null decimal. Returns: 0. */
QMR_API int deccvlong(long value, dec_t *result) QMR_NOEXCEPT;
/* *result = d with its fraction truncated toward zero. A truncated value
 * outside -2147483647..2147483647 leaves *result untouched; the null decimal
 * writes the long null. Returns: 0, QMR_E_DECOVERFLOW. */
QMR_API int dectolong(const dec_t *d, long *result) QMR_NOEXCEPT;
/* result = value exactly; -32768 (the int null) gives the null decimal.
 * Returns: 0. */
QMR_API int deccvint(int value, dec_t *result) QMR_NOEXCEPT;
/* *result = d truncated toward zero; outside -32767..32767 *result is left
 * untouched; the null decimal writes -32768. Returns: 0, QMR_E_DECOVERFLOW. */
QMR_API int dectoint(const dec_t *d, int *result) QMR_NOEXCEPT;

/* Digit strings: the decimal digits of |d| alone, rounded half away from zero,
 * with *decpt the number of digits before the point (0 or negative when the
 * first digit lies right of it: "12" with *decpt -1 is 0.012) and *sign 1 for a
 * negative value, else 0 (also when the digits round to zero). The text lives
 * in a per-thread buffer that the next call of deccvt, dececvt or decfcvt in
 * the same thread overwrites. The null decimal gives "" with *decpt and *sign
 * 0. Zero gives ndigit "0" digits with *decpt 0. */

/* The first ndigit significant digits (ndigit below 1 counts as 1, above
 * QMR_DECCVT_MAXNDIGIT as that); a carry out of the first digit gives "10..0"
 * with *decpt one higher. Returns: the digit string. */
QMR_API char *deccvt(const dec_t *d, int ndigit, int *decpt, int *sign) QMR_NOEXCEPT;
/* The same as deccvt. */
QMR_API char *dececvt(const dec_t *d, int ndigit, int *decpt, int *sign) QMR_NOEXCEPT;
/* The digits down to ndigit places after the point (ndigit below 0 counts as 0,
 * above QMR_DECCVT_MAXNDIGIT as that): *decpt + ndigit of them. A value that
 * rounds to zero gives ndigit "0" digits with *decpt 0.
 * Returns: the digit string. */
QMR_API char *decfcvt(const dec_t *d, int ndigit, int *decpt, int *sign) QMR_NOEXCEPT;
/* decfcvt into the caller's buf of buflen bytes, NUL-terminated, with no upper
 * limit on ndigit. On failure nothing is written.
 * Returns: 0; QMR_E_BUFTOOSMALL when the digits and the NUL do not fit. */
QMR_API int qmr_decfcvt(const dec_t *d, int ndigit, int *decpt, int *sign, char *buf,
                        int buflen) QMR_NOEXCEPT;

/* Text to number: optional blanks (space, tab), an optional "+" or "-", digits
 * with at most one ".", an optional exponent ("e" or "E", optional sign,
 * digits), optional blanks. Empty or all-blank text stores the type's null.
 * On failure *result is left untouched. */

/* *result = the double nearest the text (ties to even).
 * Returns: 0; QMR_E_NOTNUMBER; QMR_E_FLOATRANGE when a non-zero value rounds
 * to infinity or to zero. */
QMR_API int rstod(const char *text, double *result) QMR_NOEXCEPT;
/* *result = the text's value with any fraction truncated toward zero.
 * Returns: 0; QMR_E_NOTNUMBER; QMR_E_INTEGERRANGE outside
 * -2147483647..2147483647. */
QMR_API int rstol(const char *text, long *result) QMR_NOEXCEPT;
/* As rstol, for -32767..32767; the blank text stores -32768.
 * Returns: 0; QMR_E_NOTNUMBER; QMR_E_SMALLINTRANGE. */
QMR_API int rstoi(const char *text, int *result) QMR_NOEXCEPT;

/* Decimal text in the locale's conventions. deccvasc, dectoasc and
 * dectoasc_tcb use the thread's local numeric conventions (the locale, or
 * DBMONEY); the _net forms the fixed default ones (point ".", no thousands
 * separator, signs "+" and "-"), for text exchanged between machines. */

/* Reads len bytes of text (a NUL within len ends it; len below 1 is empty)
 * into result: blanks, a sign, digits with one decimal point, thousands
 * separators and an "e" exponent, or "0x" and hexadecimal digits (read
 * modulo 2^32);
 * trailing blanks, then the end or a newline. Digits past the 32nd
 * significant one are dropped without rounding. In strict mode (unless
 * QMR_NOT_STRICT_THOUS_SEP is "1") the first thousands separator checks the
 * integer part's grouping against the locale's: every group the locale's
 * size, read from the right (an empty grouping means threes), the leftmost
 * one 1 up to that size. Empty or all-blank text gives the null decimal; on
 * any error result is the decimal zero. Text longer than 39 bytes is copied
 * to the heap.
 * Returns: 0, QMR_E_NOTNUMBER, QMR_E_DECOVERFLOW, QMR_E_DECUNDERFLOW,
 * QMR_E_NOMEM (no memory for the copy), a negative locale code. */
QMR_API int deccvasc(const char *text, int len, dec_t *result) QMR_NOEXCEPT;
QMR_API int deccvasc_net(const char *text, int len, dec_t *result) QMR_NOEXCEPT;

struct qmr_tcb;
/* Writes d into the len bytes of buf (blank-padded, never NUL-terminated) with
 * right decimals (right below 0: as many as d carries, at least one), rounded
 * half away from zero; fewer decimals, then none, when the field is too
 * narrow, then the exponent form "d.ddde[-]XX"; no negative zero is written.
 * A null d gives len blanks.
 * Returns: 0; -1 for a negative len or when even the exponent form does not
 * fit (buf is then all "*"); QMR_E_NOMEM without a thread context; a negative
 * locale code. dectoasc_tcb is given the calling thread's context. */
QMR_API int dectoasc(const dec_t *d, char *buf, int len, int right) QMR_NOEXCEPT;
QMR_API int dectoasc_net(const dec_t *d, char *buf, int len, int right) QMR_NOEXCEPT;
QMR_API int dectoasc_tcb(const dec_t *d, char *buf, int len, int right,
                         struct qmr_tcb *context) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_DECIMAL_H */
