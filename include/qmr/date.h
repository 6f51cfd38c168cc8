/* DATE values: signed 32-bit day numbers (day 0 is 31 December 1899, valid
 * days -693594 = 1 January 1 to 2958464 = 31 December 9999, proleptic
 * Gregorian), today's date, and the DBDATE, DBCENTURY and DBTODAY settings. */
#ifndef QMR_DATE_H
#define QMR_DATE_H

#include "qmr/context.h"
#include "qmr/errors.h"
#include "qmr/export.h"

/* The null DATE: the lowest 32-bit integer. */
#define QMR_DATE_NULL (-2147483647 - 1)
#define QMR_DATE_MIN  (-693594)
#define QMR_DATE_MAX  2958464

QMR_BEGIN_DECLS

/* Returns: 1 when year is a leap year (divisible by 4, and not by 100 unless
 * by 400), else 0. Years below 1 are not rejected. */
QMR_API int rleapyear(int year) QMR_NOEXCEPT;
/* Returns: the weekday of jdate, 0 = Sunday .. 6 = Saturday; 0 for the null
 * date. */
QMR_API int rdayofweek(int jdate) QMR_NOEXCEPT;
/* Splits jdate into mdy = {month, day, year}. The null date gives {0, 0, 0}.
 * Needs no thread context.
 * Returns: 0; QMR_E_DATERANGE with mdy cleared for a day number outside the
 * valid range. */
QMR_API int rjulmdy(int jdate, short mdy[3]) QMR_NOEXCEPT;
/* Builds the day number of mdy = {month, day, year} into *jdate. {0, 0, 0}
 * gives the null date, or QMR_E_BADDAY when QMR_NOZEROMDY is 1. *jdate is left
 * unchanged on failure. Without a thread context returns 0 and does nothing.
 * Returns: 0, QMR_E_BADYEAR, QMR_E_BADMONTH, QMR_E_BADDAY. */
QMR_API int rmdyjul(const short mdy[3], int *jdate) QMR_NOEXCEPT;
QMR_API int rmdyjul_tcb(const short mdy[3], int *jdate, qmr_tcb_t *ctx) QMR_NOEXCEPT;

/* Today's date as a day number: the date a program fixed with rsettoday, else
 * the DBTODAY-shifted date, else the local date of the clock, re-read only when
 * the clock enters a new quarter hour. Without a context *jdate is untouched. */
QMR_API void rtoday(int *jdate) QMR_NOEXCEPT;
QMR_API void rtoday_tcb(int *jdate, qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Fixes today's date for the calling thread to *jdate; a null pointer lets
 * the clock decide again from the next call on. */
QMR_API void rsettoday(const int *jdate) QMR_NOEXCEPT;
QMR_API void rsettoday_tcb(const int *jdate, qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Computes today as shifted by DBTODAY and makes it the cached today. */
QMR_API void initdbtoday(void) QMR_NOEXCEPT;
QMR_API void initdbtoday_tcb(qmr_tcb_t *ctx) QMR_NOEXCEPT;
/* Examines DBTODAY for the calling thread (a "yyyy-mm-dd hh:mm:ss" text): when
 * valid, its distance from the clock becomes the shift carried by every
 * current-datetime reading of the thread; an invalid one has no effect. */
QMR_API void getdbtoday(void) QMR_NOEXCEPT;
QMR_API void getdbtoday_tcb(qmr_tcb_t *ctx) QMR_NOEXCEPT;

/* Reads DBCENTURY into the process-wide century letter while that is unset:
 * unset gives 'R'; exactly "P", "F", "C" or "R" gives that letter; anything
 * else leaves it unset, so the variable is read again on the next call. */
QMR_API void getdbcentury(void) QMR_NOEXCEPT;
/* Returns: the century (0..99) of two-digit year year2 read with month and
 * day, under the DBCENTURY rule; QMR_E_BADMONTH, QMR_E_BADYEAR, QMR_E_BADDAY
 * or QMR_E_CENTURY when the century rule refuses; the locale error when the
 * locale environment cannot be built. */
QMR_API int getcentury(int month, int day, int year2) QMR_NOEXCEPT;
/* Returns: usrval when it is 'R', 'C', 'F' or 'P', else defval. defval must be
 * one of the four; the call aborts with an assertion failure otherwise. */
QMR_API int validate_dbcentury(int usrval, int defval) QMR_NOEXCEPT;
/* Returns: 0 when cy[0] * 100 + cy[1] (century, year in century) lies in
 * 1..9999, else -1. */
QMR_API int checkyear(const char cy[2]) QMR_NOEXCEPT;

/* Builds the process-wide default date mask from DBDATE ("MDY4/" when unset):
 * MDY4/ gives mm/dd/yyyy, DMY2. gives dd.mm.yy, Y4MD- gives yyyy-mm-dd.
 * Returns: 0, or QMR_E_BADDATEFMT for an invalid DBDATE (the mask stays empty
 * and the next call tries again). */
QMR_API int getfmt(void) QMR_NOEXCEPT;
/* Copies the default date mask (built first when not yet built) into dst,
 * which holds at least 16 bytes. Returns: dst. */
QMR_API char *fmtstr(char *dst) QMR_NOEXCEPT;
/* Returns: '-', '.', '/' and ' ' unchanged, 0 for '0' (no separator), '/' for
 * anything else. */
QMR_API int datesep(int c) QMR_NOEXCEPT;
/* Writes into buf (6 bytes) a DBDATE text made from the C library's date format
 * of the current locale (%m/%d/%y gives mdy4/). Returns: buf, or null when the
 * locale's format does not start with three day, month and year fields. */
QMR_API char *getdbdate(char *buf) QMR_NOEXCEPT;
/* Hands out the locale environment's date format: *fmt, and, when the
 * environment records a field order, order[0..2] and *extra.
 * Returns: 0; QMR_E_BADDATEFMT when no date format is in force; the locale
 * error when the locale environment cannot be built. */
QMR_API int gls_fmtstr(char **fmt, int order[3], int *extra) QMR_NOEXCEPT;
/* Returns: 0 when word (any case) is one of the 99 reserved words of the
 * standard query language that the library checks, else -1. */
QMR_API int a_kwcheck(const char *word) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_DATE_H */
