// Internal helpers of the calendar: the thread's calendar fields, the
// process-wide date settings, qualifier layout and the field form of datetime
// and interval values that the arithmetic and text code work on.
#pragma once

#include "gen/context.hpp"
#include "qmr/date.h"
#include "qmr/datetime.h"

namespace qmr
{

// Bits of the thread's today_flags word.
inline constexpr int todayflag_set = 1;        // rsettoday fixed today's date
inline constexpr int todayflag_converting = 2; // DBTODAY text being converted now
inline constexpr int todayflag_shift = 4;      // a DBTODAY shift is in force
inline constexpr int todayflag_nodbtoday = 8;  // DBTODAY absent or invalid
inline constexpr int todayflag_dtenv_read = 32;
inline constexpr int todayflag_dtenv_on = 64;

// Process-wide date settings, filled on first use and never freed.
extern char dbdatefmt[24];
extern int initflg;
extern char dbcentury;

// Cumulative days before each month of a non-leap year, index 0..12.
inline constexpr int days_before_month[13] = {0,   31,  59,  90,  120, 151, 181,
                                              212, 243, 273, 304, 334, 365};
// Month lengths, index 1..12 (index 0 is 0).
inline constexpr int daymon[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

constexpr bool leap(int year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}
constexpr int month_length(int month, int year) noexcept
{
    return month == 2 && leap(year) ? 29 : daymon[month];
}

// rmdyjul without the QMR_NOZEROMDY read, for callers whose triple is never
// all zero; the same codes.
int mdy_to_day(int month, int day, int year, int *jdate) noexcept;

// Records code as the thread's operator error number (when there is a
// context) and returns it.
int record(int code, qmr_tcb_t *ctx) noexcept;
// The qualifier check without recording.
bool valid_qual(bool interval, int qual) noexcept;
// The check that records: 0 or QMR_E_BADQUALIFIER.
int check_qual(bool interval, int qual, qmr_tcb_t *ctx) noexcept;

// Where a qualifier's digits lie: `total` digits whose last one has place
// 10 - end (place p is the 10^p digit of the value), packed into `npairs`
// base-100 pairs after `lpad` zero digits.
struct Layout {
    int start, end, total;
    int npairs, exponent, lpad;
    int top; // place of the first digit
};
Layout layout_of(int qual) noexcept;
// Standard total of a datetime qualifier from start to end.
constexpr int standard_total(int start, int end) noexcept
{
    return (start == QMR_TU_YEAR ? 4 : 2) + (end - start);
}

// A value broken into its fields: v[unit / 2] for YEAR .. SECOND (the first
// field may hold up to 9 digits), frac the fraction as a count of 10^-5
// seconds, sign 1 or 0.
struct Fields {
    long long v[6];
    long long frac;
    int sign;
};
// Reads the fields that qual holds; the others are 0. d must not be null.
void unpack_fields(const dec_t *d, int qual, Fields *f) noexcept;
// Packs the fields that qual holds. The first field must fit its digits.
int pack_fields(const Fields &f, int qual, dec_t *out) noexcept;
// Whether the first field of f fits qual's first field.
bool first_field_fits(const Fields &f, int qual) noexcept;
void set_null(dec_t *d) noexcept;
inline bool is_null(const dec_t *d) noexcept
{
    return d->sign == -1;
}

// The current datetime as YEAR TO FRACTION(5) fields (the program-set record
// is read in its own qualifier when set).
void current_fields(Fields *f, qmr_tcb_t *ctx) noexcept;
// Bucket of today's cache: quarter hours since 1970.
inline int quarter_hour(long long seconds) noexcept
{
    return static_cast<int>(seconds / 900);
}
// The calendar state of a context (the general area).
inline qmr_genarea *cal(qmr_tcb_t *ctx) noexcept
{
    return ctx->gen;
}
// getcentury's body, with the thread's context.
int century_of(int month, int day, int year2, qmr_tcb_t *ctx) noexcept;
// rdttodate and rinvcopy with the thread's context.
int datetime_to_day(const dec_t *in, int inqual, int *jdate, qmr_tcb_t *ctx) noexcept;
int interval_copy(const dec_t *in, int inqual, dec_t *out, int outqual, qmr_tcb_t *ctx) noexcept;
// Whether the locale environment can be used: 0 or its error.
int locale_ready(qmr_tcb_t *ctx) noexcept;
// The thread's context with a usable locale environment in *ctx: 0,
// QMR_E_NOMEM without a context, or the locale's error.
int context_with_locale(qmr_tcb_t **ctx) noexcept;

} // namespace qmr
