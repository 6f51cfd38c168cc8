/* DATETIME and INTERVAL records: a 16-bit qualifier followed by the decimal
 * whose base-100 units pair holds the seconds; their qualifiers, extension,
 * the current datetime, arithmetic and standard text forms. */
#ifndef QMR_DATETIME_H
#define QMR_DATETIME_H

#include <time.h>

#include "qmr/context.h"
#include "qmr/decimal.h"

/* Qualifier: total digits << 8 | start unit << 4 | end unit. 24 bytes each. */
typedef struct dtime_t {
    short qualifier; /* total digits << 8 | start unit << 4 | end unit */
    dec_t value;     /* value; its sign is the interval's sign, positive for datetimes */
} dtime_t;

typedef struct intrvl_t {
    short qualifier; /* as for dtime_t */
    dec_t value;     /* value; its sign is the interval's sign */
} intrvl_t;

/* Unit codes. The digits between two units are the difference of their codes;
 * FRACTION(n) ends at code 10 + n, and FRACTION as a start unit is code 12. */
#define QMR_TU_YEAR     0
#define QMR_TU_MONTH    2
#define QMR_TU_DAY      4
#define QMR_TU_HOUR     6
#define QMR_TU_MINUTE   8
#define QMR_TU_SECOND   10
#define QMR_TU_FRACTION 12
#define QMR_TU_F1       11
#define QMR_TU_F2       12
#define QMR_TU_F3       13
#define QMR_TU_F4       14
#define QMR_TU_F5       15

#define QMR_TU_ENCODE(total, start, end) (((total) << 8) | ((start) << 4) | (end))
#define QMR_TU_START(q)                  (((q) >> 4) & 0xF)
#define QMR_TU_END(q)                    ((q)&0xF)
#define QMR_TU_LEN(q)                    (((q) >> 8) & 0xFF)

/* Qualifiers the library itself uses. */
#define QMR_YEAR_TO_DAY    0x0804
#define QMR_YEAR_TO_SECOND 0x0E0A
#define QMR_YEAR_TO_F3     0x110D
#define QMR_YEAR_TO_F5     0x130F
#define QMR_DAY9_TO_SECOND 0x0F4A

/* Room for the digit pairs of any qualifier (dtpack, dtunpack). */
#define QMR_DTPAIRS 16

QMR_BEGIN_DECLS

/* Qualifiers -----------------------------------------------------------------
 * A valid qualifier: positive, start at or before end (or FRACTION to
 * FRACTION(1)), fewer than 25 digits, units of one class for an interval (a
 * YEAR or MONTH start ends at MONTH at the latest), a first field of 1..9
 * digits for an interval and of the standard width (4 for YEAR, else 2) for a
 * datetime. Every function that takes a qualifier refuses any other with
 * QMR_E_BADQUALIFIER, recorded as the operator error number. */

/* Returns: "year", "month", "day", "hour", "minute", "second" for codes 0, 2,
 * 4, 6, 8, 10 and "fraction" for any other code. */
QMR_API const char *rtuname(int code) QMR_NOEXCEPT;
/* Returns: the code of one of the seven unit names ("fraction" gives 12), else
 * -1. Case matters. */
QMR_API int rtuval(const char *name) QMR_NOEXCEPT;
/* Writes the text of qual ("day(5) to fraction(3)") into buf (no terminator;
 * 40 bytes suffice). type is QMR_SQL_INTERVAL (14) for an interval, anything
 * else for a datetime.
 * Returns: the length written; 0 with QMR_E_BADQUALIFIER recorded for an
 * interval mixing the two classes. */
QMR_API int rtudesc(int type, int qual, char *buf) QMR_NOEXCEPT;
/* Reads a qualifier text such as "year to fraction(3)" or "day(5) to second"
 * (any case; blanks around words) into *qual. type as for rtudesc; a start
 * precision counts for an interval only. A FRACTION start keeps code 12.
 * Returns: 0, QMR_E_BADQUALIFIER, QMR_E_QUALPRECISION, QMR_E_QUALNOTNUM,
 * QMR_E_BADFIELD (unknown unit, "to" missing), QMR_E_EXTRATEXT. */
QMR_API int rtuqual(int type, const char *text, int *qual) QMR_NOEXCEPT;
/* Reads one unit word (at most 10 characters, lower-cased into word) and an
 * optional "(argument)" (at most 10 characters, lower-cased into arg, empty
 * when absent) at *pos, advancing *pos. word and arg hold 11 bytes.
 * Returns: 0 (an empty word at the end of the text), -1 for a word or argument
 * too long or a missing ')'. */
QMR_API int next_qual(const char **pos, char *word, char *arg) QMR_NOEXCEPT;
/* Returns: 0 when qual is valid for an interval (is_interval non-zero) or a
 * datetime; QMR_E_BADQUALIFIER, also recorded, otherwise. */
QMR_API int _chk_qual(int is_interval, int qual) QMR_NOEXCEPT;
/* Loads ((end & 1) + total + 1) / 2 digit pairs with sign (1, 0) into out with
 * the qualifier's exponent (total - end + 11) / 2; an odd end drops the units
 * digit of the last pair. pairs is restored before returning.
 * Returns: the status of decload. */
QMR_API int dtpack(dec_t *out, int qual, char *pairs, int sign) QMR_NOEXCEPT;
/* Writes the digit pairs of in laid out for qual into pairs (16 bytes, all
 * cleared first; a value whose exponent passes the qualifier's gives zeros). */
QMR_API void dtunpack(const dec_t *in, int qual, char *pairs) QMR_NOEXCEPT;

/* Extension and the current datetime ----------------------------------------- */

/* Extends in to out's qualifier: leading fields missing from in come from the
 * current datetime, trailing ones are 0 (1 for MONTH and DAY after a YEAR or
 * MONTH end); digits past out's end are cut. The result is not checked as a
 * calendar date. out may be in.
 * Returns: 0, QMR_E_BADQUALIFIER, the locale error when the locale environment
 * cannot be built (dtextend), QMR_E_NOMEM without a thread context. */
QMR_API int dtextend(const dtime_t *in, dtime_t *out) QMR_NOEXCEPT;
QMR_API int rdtextend(const dec_t *in, int inqual, dec_t *out, int outqual) QMR_NOEXCEPT;
QMR_API int rdtextend_tcb(const dec_t *in, int inqual, dec_t *out, int outqual,
                          qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Fills dt with the current datetime in its own qualifier; an invalid
 * qualifier becomes YEAR TO FRACTION(3) and the recorded error is cleared. */
QMR_API void dtcurrent(dtime_t *dt) QMR_NOEXCEPT;
/* The current datetime as YEAR TO FRACTION(5): the program-set record when
 * there is one (copied as it stands), else the local clock plus the DBTODAY
 * shift. */
QMR_API void rdtcurrent(dec_t *out) QMR_NOEXCEPT;
QMR_API void rdtcurrent_tcb(dec_t *out, qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Makes *dt the calling thread's current datetime until called with null; the
 * record is used in place and must stay alive. */
QMR_API void rdtsetcurr(dtime_t *dt) QMR_NOEXCEPT;
QMR_API void rdtsetcurr_tcb(dtime_t *dt, qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Returns: the clock's seconds since 1970. */
QMR_API long rutccurrent(void) QMR_NOEXCEPT;
/* Returns: 1 when USE_DTENV is exactly "1" (read once per thread), else 0. */
QMR_API int get_usedtenv(void) QMR_NOEXCEPT;
QMR_API int get_usedtenv_tcb(qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* The date jdate as a datetime of outqual (the fields after DAY are 0).
 * Returns: the extension's status; QMR_E_DATERANGE for a day number out of
 * range; 0 with out untouched without a thread context. */
QMR_API int rdatedt(int jdate, dec_t *out, int outqual) QMR_NOEXCEPT;
/* The date part of a datetime (fields before its start from today).
 * Returns: 0, QMR_E_BADQUALIFIER, the codes of rmdyjul, QMR_E_NOMEM. */
QMR_API int rdttodate(const dec_t *in, int inqual, int *jdate) QMR_NOEXCEPT;
/* Converts an interval to another interval qualifier of the same class whose
 * end is not before in's start; fields past outqual's end are cut. out may
 * be in.
 * Returns: 0; QMR_E_BADQUALIFIER; QMR_E_BADQUALIFIERS with out null;
 * QMR_E_INTVOVERFLOW with out zero when the first field cannot hold it. */
QMR_API int rinvcopy(const dec_t *in, int inqual, dec_t *out, int outqual) QMR_NOEXCEPT;
/* rinvcopy of in into out's qualifier. Returns: the recorded error, 0 when
 * none. */
QMR_API int invextend(const intrvl_t *in, intrvl_t *out) QMR_NOEXCEPT;

/* Arithmetic -------------------------------------------------------------------
 * A null operand gives a null result and 0. Results may alias operands. */

/* out = dt + inv in dt's qualifier. Fields below DAY carry by their bases;
 * days go through day numbers when dt has a YEAR or MONTH; a year-month
 * interval moves the month and a day past the new month's end becomes its
 * last day (February has 29 days when dt has no year).
 * Returns: 0; QMR_E_BADQUALIFIER; QMR_E_BADQUALIFIERS when dt does not cover
 * inv (dt must reach inv's end and not start after inv's start unless inv
 * starts at SECOND); QMR_E_BADDATETIME for a result that is no datetime of the
 * qualifier (a carry out of a first field below YEAR, a DAY-start day outside
 * 1..31, a year outside 1..9999 after a year-month interval); QMR_E_BADYEAR
 * for a date past 9999 or before 1 after a day-time interval; the codes of
 * rdttodate for a date that does not exist. out is null on failure. */
QMR_API int dtaddinv(const dtime_t *dt, const intrvl_t *inv, dtime_t *out) QMR_NOEXCEPT;
QMR_API int rdtaddinv(const dec_t *dt, int dtqual, const dec_t *inv, int invqual,
                      dec_t *out) QMR_NOEXCEPT;
QMR_API int rdtaddinv_tcb(const dec_t *dt, int dtqual, const dec_t *inv, int invqual, dec_t *out,
                          qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* out = dt - inv; as dtaddinv. */
QMR_API int dtsubinv(const dtime_t *dt, const intrvl_t *inv, dtime_t *out) QMR_NOEXCEPT;
/* out = a - b converted to out's own interval qualifier. The difference is
 * first formed in the natural qualifier of a, which no difference of two valid
 * datetimes overflows:
 *   a ends at YEAR or MONTH:          <a's start>(9) TO <a's end>  (years, months)
 *   a starts at or before DAY and
 *   ends at DAY or later:             DAY(9) TO <a's end>
 *   a starts after DAY:               <a's start>(9) TO <a's end>
 *   a starts at FRACTION:             FRACTION TO <a's end>
 * b is first extended to a's qualifier.
 * Returns: 0 or the recorded error (QMR_E_BADQUALIFIER, QMR_E_BADQUALIFIERS,
 * QMR_E_INTVOVERFLOW when out's first field is too narrow, the codes of
 * rdttodate). */
QMR_API int dtsub(const dtime_t *a, const dtime_t *b, intrvl_t *out) QMR_NOEXCEPT;
/* out = a - b in interval qualifier outqual (any qualifier of the class of the
 * natural one above). Returns: as dtsub; QMR_E_NOMEM without a context. */
QMR_API int rdtsub(const dec_t *a, int aqual, const dec_t *b, int bqual, dec_t *out,
                   int outqual) QMR_NOEXCEPT;
QMR_API int rdtsub_tcb(const dec_t *a, int aqual, const dec_t *b, int bqual, dec_t *out,
                       int outqual, qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* out = the interval as a count of its end unit (fractions of a second as a
 * decimal fraction). Returns: 0, QMR_E_BADQUALIFIER, decimal overflow codes. */
QMR_API int rinvtodec(const dec_t *inv, int qual, dec_t *out) QMR_NOEXCEPT;
/* out = the count in of qual's end unit as an interval (fraction digits past
 * the qualifier's are cut). Returns: 0, QMR_E_BADQUALIFIER, QMR_E_INTVOVERFLOW
 * (out zero) when the first field cannot hold the value. */
QMR_API int rdectoinv(const dec_t *in, dec_t *out, int qual) QMR_NOEXCEPT;
/* out = in * factor and in / divisor in out's qualifier (of in's class).
 * Returns: 0, QMR_E_BADQUALIFIER, QMR_E_BADQUALIFIERS, QMR_E_INTVOVERFLOW,
 * QMR_E_DIVZERO, decimal overflow codes. */
QMR_API int invmuldec(const intrvl_t *in, const dec_t *factor, intrvl_t *out) QMR_NOEXCEPT;
QMR_API int invdivdec(const intrvl_t *in, const dec_t *divisor, intrvl_t *out) QMR_NOEXCEPT;
QMR_API int invmuldbl(const intrvl_t *in, double factor, intrvl_t *out) QMR_NOEXCEPT;
QMR_API int invdivdbl(const intrvl_t *in, double divisor, intrvl_t *out) QMR_NOEXCEPT;
/* quotient = a / b for intervals of one class. Both are first brought to
 * their common qualifier: the earlier start with a 9-digit first field TO the
 * later end (for example DAY TO HOUR and MINUTE TO SECOND meet in DAY(9) TO
 * SECOND), which holds every valid interval of either.
 * Returns: 0, QMR_E_BADQUALIFIER, QMR_E_BADQUALIFIERS (classes differ),
 * QMR_E_DIVZERO, decimal overflow codes. */
QMR_API int invdivinv(const intrvl_t *a, const intrvl_t *b, dec_t *quotient) QMR_NOEXCEPT;
/* Returns: the length of a month: mode 0 gives 31; mode 1 that of month
 * pairs[0] with a 29-day February; mode 3 that of month pairs[2] in the year
 * pairs[0] * 100 + pairs[1]. A month outside 1..12 gives 0 in modes 1 and 3. */
QMR_API int daysinmonth(const char *pairs, int mode) QMR_NOEXCEPT;

/* Text --------------------------------------------------------------------------
 * Datetimes read and write as "2024-01-31 12:34:56.789" restricted to their
 * fields; intervals as "  -3 04" (a leading blank, the first field with its
 * precision, leading zeros blanked, the sign before the first digit). A null
 * value writes an empty text; an empty or blank text reads as null.
 * Output buffers of 40 bytes hold every standard text. While GL_DATETIME is
 * set (writing) or USE_DTENV is on (reading) datetimes would go through the
 * datetime format masks, which this library does not provide yet: those calls
 * return QMR_E_BADDATEFMT, write an empty text and leave a read value
 * unchanged. */

/* Returns: 0, QMR_E_BADQUALIFIER, QMR_E_BADDATEFMT (see above), the locale
 * error (dttoasc). */
QMR_API int dttoasc(const dtime_t *dt, char *out) QMR_NOEXCEPT;
QMR_API int rdtimestr(const dec_t *dt, int qual, char *out) QMR_NOEXCEPT;
/* Returns: 0, QMR_E_BADQUALIFIER. rdinstr writes the digits and delimiters
 * without the leading blank and sign, leading zeros kept. */
QMR_API int intoasc(const intrvl_t *inv, char *out) QMR_NOEXCEPT;
QMR_API int rinvstr(const dec_t *inv, int qual, char *out) QMR_NOEXCEPT;
QMR_API int rdinstr(const dec_t *inv, int qual, char *out) QMR_NOEXCEPT;
/* Reads a datetime of qual (dtcvasc: of dt's qualifier). A one- or two-digit
 * year takes its century from DBCENTURY (the qmr_ forms from the letter
 * century for this call); a three-digit year is taken as written.
 * Returns: 0, QMR_E_BADQUALIFIER, QMR_E_QUALPRECISION (first field too long),
 * QMR_E_QUALNOTNUM / QMR_E_BADFIELD (missing or wrong field or delimiter, a
 * field out of range), QMR_E_EXTRATEXT, QMR_E_NOPOINT, the century codes,
 * QMR_E_BADDATEFMT (see above), QMR_E_NOMEM without a context. */
QMR_API int dtcvasc(const char *text, dtime_t *dt) QMR_NOEXCEPT;
QMR_API int dtcvasc_tcb(const char *text, dtime_t *dt, qmr_tcb_t *ctx) QMR_NOEXCEPT;
QMR_API int rstrdtime(const char *text, dec_t *out, int qual) QMR_NOEXCEPT;
QMR_API int rstrdtime_tcb(const char *text, dec_t *out, int qual, qmr_tcb_t *ctx) QMR_NOEXCEPT;
QMR_API int qmr_rstrdtime(const char *text, dec_t *out, int qual, int century) QMR_NOEXCEPT;
QMR_API int qmr_dtcvasc(const char *text, dtime_t *dt, int century) QMR_NOEXCEPT;
/* Reads an interval of qual; a '-' before the first digit makes it negative.
 * Returns: as rstrdtime. */
QMR_API int incvasc(const char *text, intrvl_t *inv) QMR_NOEXCEPT;
QMR_API int rstrinv(const char *text, dec_t *out, int qual) QMR_NOEXCEPT;
/* The common reader of both (is_datetime 1 or 0), without the interval sign. */
QMR_API int rstrdinv(const char *text, dec_t *out, int qual, int is_datetime) QMR_NOEXCEPT;
QMR_API int rstrdinv_tcb(const char *text, dec_t *out, int qual, int is_datetime,
                         qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Returns: 0 when every field of value lies in its range (a datetime's date
 * exists), QMR_E_BADFIELD otherwise, QMR_E_BADQUALIFIER. */
QMR_API int chk_dtinv(const dec_t *value, int qual, int is_datetime) QMR_NOEXCEPT;
/* The local time of seconds packed with qual (expected to start at YEAR;
 * fractions 0). Returns: 0. */
QMR_API int rdatetime(time_t seconds, int qual, dec_t *out) QMR_NOEXCEPT;
/* localtime_r(time, tm). Returns: tm when the call filled it, else null. */
QMR_API struct tm *qmr_localtime(const time_t *time, struct tm *tm) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_DATETIME_H */
