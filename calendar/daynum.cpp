// Day numbers: the closed-form conversions between day numbers and month,
// day and year, leap years, weekdays and month lengths.
#include "calendar/calendar.hpp"

#include <cstdlib>

#include "platform/env_slots.hpp"

namespace qmr
{

// The conversions count in 400-year eras of years that start on 1 March, so
// that the leap day ends each year and needs no test (day 0 of an era is
// 1 March of a year divisible by 400; jdate + 693900 counts from 1 March of
// year 0).
inline constexpr int era_offset = 693900;

int mdy_to_day(int month, int day, int year, int *jdate) noexcept
{
    if (year < 1 || year > 9999)
        return QMR_E_BADYEAR;
    if (month < 1 || month > 12)
        return QMR_E_BADMONTH;
    if (day < 1 || day > month_length(month, year))
        return QMR_E_BADDAY;
    unsigned y = static_cast<unsigned>(year - (month <= 2 ? 1 : 0)); // [0, 9999]
    unsigned era = y / 400;                                          // [0, 24]
    unsigned yoe = y - era * 400;                                    // [0, 399]
    unsigned mp = static_cast<unsigned>(month > 2 ? month - 3 : month + 9);
    unsigned doy = (153 * mp + 2) / 5 + static_cast<unsigned>(day) - 1; // [0, 365]
    unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;               // [0, 146096]
    *jdate = static_cast<int>(era * 146097 + doe) - era_offset;
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
    // Unsigned: every quantity is non-negative in range, and unsigned
    // division by a constant is a plain multiply and shift.
    unsigned z = static_cast<unsigned>(jdate + era_offset);               // [306, 3652364]
    unsigned era = z / 146097;                                            // [0, 24]
    unsigned doe = z - era * 146097;                                      // [0, 146096]
    unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365; // [0, 399]
    unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);               // [0, 365] from 1 March
    unsigned mp = (5 * doy + 2) / 153;                                    // [0, 11] from March
    unsigned month = mp < 10 ? mp + 3 : mp - 9;                           // [1, 12]
    mdy[0] = static_cast<short>(month);
    mdy[1] = static_cast<short>(doy - (153 * mp + 2) / 5 + 1);
    mdy[2] = static_cast<short>(yoe + era * 400 + (month <= 2 ? 1 : 0));
    return 0;
}

int rmdyjul_tcb(const short mdy[3], int *jdate, qmr_tcb_t *ctx) noexcept
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

int rmdyjul(const short mdy[3], int *jdate) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return 0;
    return rmdyjul_tcb(mdy, jdate, ctx);
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
