// The century of a two-digit year under the rules R, C, F and P, against
// today's local date.
#include <ctime>

#include "locale/mbchar.hpp"
#include "qmr/gl.h"

namespace
{

struct Ymd {
    int year, month, day;
};

bool before(const Ymd &a, const Ymd &b) noexcept
{
    if (a.year != b.year)
        return a.year < b.year;
    if (a.month != b.month)
        return a.month < b.month;
    return a.day < b.day;
}

Ymd local_today() noexcept
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday};
}

// February has 29 days here: the year, and with it leap years, is not known
// until the century is.
int longest_month(int month) noexcept
{
    static constexpr int days[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[month - 1];
}

int fail(int code) noexcept
{
    qmr::set_gl_errno(code);
    return -1;
}

// The full year the rule picks among the candidates a century apart around
// today's year.
int pick_year(int letter, const Ymd &today, int month, int day, int year2) noexcept
{
    const int base = today.year - today.year % 100 + year2; // in today's century
    const int candidates[3] = {base - 100, base, base + 100};
    const bool on_or_after_today_in_year =
        !before(Ymd{0, month, day}, Ymd{0, today.month, today.day});
    int chosen = base;
    switch (letter) {
    case 'C': {
        int best = -1;
        for (int year : candidates) {
            const int distance = year > today.year ? year - today.year : today.year - year;
            const int best_distance =
                best < 0 ? 1000 : (best > today.year ? best - today.year : today.year - best);
            // At 50 years either way the nearer date wins: the past year when
            // the date falls on or after today's month and day.
            const bool tie_to_this =
                distance == best_distance && ((year < today.year) == on_or_after_today_in_year);
            if (distance < best_distance || tie_to_this)
                best = year;
        }
        chosen = best;
        break;
    }
    case 'F':
        for (int i = 2; i >= 0; --i)
            if (!before(Ymd{candidates[i], month, day}, today))
                chosen = candidates[i];
        break;
    case 'P':
        for (int year : candidates)
            if (!before(today, Ymd{year, month, day}))
                chosen = year;
        break;
    default: // 'R'
        break;
    }
    return chosen;
}

} // namespace

int gl_getcenturyloc(void *, int month, int day, int year2, int letter, int) noexcept
{
    if (month < 1 || month > 12)
        return fail(QMR_GLE_BADMONTH);
    if (year2 < 0 || year2 > 99)
        return fail(QMR_GLE_BADYEAR);
    if (day < 1 || day > longest_month(month))
        return fail(QMR_GLE_BADDAY);
    if (letter != 'R' && letter != 'C' && letter != 'F' && letter != 'P')
        return fail(QMR_GLE_INVAL);
    const int year = pick_year(letter, local_today(), month, day, year2);
    if (year < 0 || year > 9999)
        return fail(QMR_GLE_BADYEAR);
    return year / 100;
}
