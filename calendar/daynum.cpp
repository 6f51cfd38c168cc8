// Day numbers: the closed-form conversions between day numbers and month,
// day and year, leap years, weekdays and month lengths.
#include "calendar/calendar.hpp"

#include <cstdint>
#include <cstdlib>

#include "platform/env_slots.hpp"

namespace qmr
{

// The conversions count from 1 March of a year shifted far enough back that
// every quantity is unsigned (year 1 - 82*400 - 1 = -32800 here), so that the
// leap day ends each year and needs no test, and each division by a constant
// is a multiply and a shift. Day numbers count from 31 December 1899; 1 March
// of the shifted year 0 is day -shift_days.
inline constexpr unsigned shift_years = 82 * 400;
inline constexpr unsigned shift_days = 693900 + 82 * 146097;

int mdy_to_day(int month, int day, int year, int *jdate) noexcept
{
    if (year < 1 || year > 9999)
        return QMR_E_BADYEAR;
    if (month < 1 || month > 12)
        return QMR_E_BADMONTH;
    // the leap-year test only for 29 February
    if ((day < 1 || day > daymon[month]) && !(month == 2 && day == 29 && leap(year)))
        return QMR_E_BADDAY;
    // January and February count as months 13 and 14 of the year before.
    const bool early = month <= 2;
    const unsigned y = static_cast<unsigned>(year) + shift_years - (early ? 1 : 0);
    const unsigned m = static_cast<unsigned>(month) + (early ? 12 : 0);
    const unsigned century = y / 100;
    const unsigned year_days = 1461 * y / 4 - century + century / 4;
    const unsigned month_days = (979 * m - 2919) / 32; // days from 1 March to month m
    *jdate = static_cast<int>(year_days + month_days + static_cast<unsigned>(day) - 1 - shift_days);
    return 0;
}

int record(int code, qmr_tcb_t *ctx) noexcept
{
    if (ctx != nullptr)
        set_toerrno_tcb(code, ctx);
    return code;
}

} // namespace qmr

using namespace qmr;

int rleapyear(int year) noexcept
{
    return leap(year) ? 1 : 0;
}

int rdayofweek(int jdate) noexcept
{
    if (jdate == QMR_DATE_NULL)
        return 0;
    // Day 0, 31 December 1899, was a Sunday.
    long long n = static_cast<long long>(jdate);
    long long w = n % 7;
    return static_cast<int>(w < 0 ? w + 7 : w);
}

int rjulmdy(int jdate, short mdy[3]) noexcept
{
    // One unsigned comparison takes the valid range; the null date lies
    // outside it and is told apart only there.
    constexpr unsigned span = QMR_DATE_MAX - QMR_DATE_MIN;
    if (static_cast<unsigned>(jdate) - static_cast<unsigned>(QMR_DATE_MIN) > span) {
        mdy[0] = mdy[1] = mdy[2] = 0;
        return jdate == QMR_DATE_NULL ? 0 : QMR_E_DATERANGE;
    }
    // The century and the day in it from four times the day count (a century
    // is 36524.25 days), then the year in the century and the day of the year
    // from one 64-bit product (the fraction of 2939745/2^32 per quarter-day),
    // then the month and day from one product (2141/65536 months per day).
    const unsigned n = 4 * (static_cast<unsigned>(jdate) + shift_days) + 3;
    const unsigned century = n / 146097;
    const unsigned in_century = (n % 146097) | 3;
    const std::uint64_t product = std::uint64_t{2939745} * in_century;
    const auto year_in_century = static_cast<unsigned>(product >> 32);
    const unsigned day_of_year = static_cast<unsigned>(product) / 2939745 / 4; // from 1 March
    const unsigned md = 2141 * day_of_year + 197913;
    const bool early = day_of_year >= 306; // January or February of the next year
    mdy[0] = static_cast<short>(md / 65536 - (early ? 12 : 0));
    mdy[1] = static_cast<short>(md % 65536 / 2141 + 1);
    mdy[2] = static_cast<short>(100 * century + year_in_century - shift_years + (early ? 1 : 0));
    return 0;
}

namespace
{

// rmdyjul_tcb's body, inline in both entry points (a call from one exported
// function to another goes through the symbol table).
inline int mdy_to_jdate(const short mdy[3], int *jdate, qmr_tcb_t *ctx) noexcept
{
    int month = mdy[0], day = mdy[1], year = mdy[2];
    if (month == 0 && day == 0 && year == 0) {
        const char *value = idx_ggetenv(kEnvSlotNOZEROMDY, "QMR_NOZEROMDY");
        if (value != nullptr && std::strtol(value, nullptr, 10) == 1)
            return QMR_E_BADDAY;
        *jdate = QMR_DATE_NULL;
        return 0;
    }
    int status = mdy_to_day(month, day, year, jdate);
    if (status == 0 && (cal(ctx)->today_flags & todayflag_converting) != 0) {
        unsigned char *parts = cal(ctx)->dbtoday_parts;
        parts[0] = static_cast<unsigned char>(year / 100);
        parts[1] = static_cast<unsigned char>(year % 100);
        parts[2] = static_cast<unsigned char>(month);
        parts[3] = static_cast<unsigned char>(day);
    }
    return status;
}

} // namespace

int rmdyjul_tcb(const short mdy[3], int *jdate, qmr_tcb_t *ctx) noexcept
{
    return mdy_to_jdate(mdy, jdate, ctx);
}

int rmdyjul(const short mdy[3], int *jdate) noexcept
{
    qmr_tcb_t *ctx = qmr::thread_root();
    if (ctx == nullptr || ctx->gen == nullptr)
        return 0;
    return mdy_to_jdate(mdy, jdate, ctx);
}

int checkyear(const char cy[2]) noexcept
{
    int year = static_cast<signed char>(cy[0]) * 100 + static_cast<signed char>(cy[1]);
    return year >= 1 && year <= 9999 ? 0 : -1;
}

int daysinmonth(const char *pairs, int mode) noexcept
{
    if (mode == 0)
        return 31;
    if (mode == 1) {
        int month = pairs[0];
        if (month < 1 || month > 12)
            return 0;
        return month == 2 ? 29 : daymon[month];
    }
    int month = pairs[2];
    if (month < 1 || month > 12)
        return 0;
    return month_length(month, pairs[0] * 100 + pairs[1]);
}
