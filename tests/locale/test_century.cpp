// The century rules against an independent oracle: every two-digit year, on
// dates around today, with the candidate years weighed by real day counts
// (std::chrono); and the error numbers of bad arguments.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <utility>
#include <vector>

#include "qmr/gl.h"

namespace
{

using namespace std::chrono;

year_month_day local_today()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return year_month_day{year{parts.tm_year + 1900}, month{unsigned(parts.tm_mon + 1)},
                          day{unsigned(parts.tm_mday)}};
}

// Signed days from today to month/day of `full_year`; February 29 of a common
// year counts as March 1, as the day arithmetic carries it.
long days_from_today(const year_month_day &today, int full_year, unsigned m, unsigned d)
{
    const sys_days date = sys_days{year{full_year} / month{m} / day{1}} + days{d - 1};
    return (date - sys_days{today}).count();
}

// The century each rule gives, found by searching every year from 1 to 9999
// that ends in year2.
int oracle(char rule, const year_month_day &today, unsigned m, unsigned d, int year2)
{
    const int this_year = int(today.year());
    if (rule == 'R')
        return this_year / 100;
    int best = -1;
    long best_score = 0;
    for (int y = year2 == 0 ? 100 : year2; y <= 9999; y += 100) {
        const long delta = days_from_today(today, y, m, d);
        long score;
        if (rule == 'F') {
            if (delta < 0)
                continue;
            score = delta;
        } else if (rule == 'P') {
            if (delta > 0)
                continue;
            score = -delta;
        } else { // 'C': the nearest year; at 50 years either way, the one
                 // whose date is nearer, which is the past one when month/day
                 // falls on or after today's
            const long years = y > this_year ? y - this_year : this_year - y;
            const bool on_or_after =
                std::pair{m, d} >= std::pair{unsigned(today.month()), unsigned(today.day())};
            score = years * 2 + ((delta <= 0) == on_or_after ? 0 : 1);
        }
        if (best < 0 || score < best_score)
            best = y, best_score = score;
    }
    return best / 100;
}

TEST(Century, FourRulesAroundToday)
{
    const year_month_day today = local_today();
    std::vector<std::pair<unsigned, unsigned>> dates = {{1, 1}, {12, 31}, {2, 28}, {6, 15}};
    for (int shift : {-40, -1, 0, 1, 40}) {
        const year_month_day near{sys_days{today} + days{shift}};
        dates.emplace_back(unsigned(near.month()), unsigned(near.day()));
    }
    const int mon = int(unsigned(today.month())), mday = int(unsigned(today.day()));
    for (char rule : {'R', 'C', 'F', 'P'}) {
        for (auto [m, d] : dates)
            for (int year2 = 0; year2 <= 99; ++year2)
                ASSERT_EQ(gl_getcenturyloc(nullptr, int(m), int(d), year2, rule, 0),
                          oracle(rule, today, m, d, year2))
                    << rule << ' ' << m << '/' << d << '/' << year2;
        EXPECT_EQ(gl_getcenturyloc(nullptr, mon, mday, int(today.year()) % 100, rule, 0),
                  int(today.year()) / 100)
            << rule << ": today itself";
        // February 29 passes the day check in any year; the rules still apply.
        EXPECT_GE(gl_getcenturyloc(nullptr, 2, 29, 23, rule, 0), 0) << rule;
    }
}

TEST(Century, BadArgumentsSetTheirErrorNumbers)
{
    struct Row {
        int month, day, year2, letter, err;
    };
    constexpr int kMon = QMR_GLE_BADMONTH, kYear = QMR_GLE_BADYEAR, kDay = QMR_GLE_BADDAY,
                  kInval = QMR_GLE_INVAL;
    // Checked in this order: month, year, day, then the letter.
    const Row rows[] = {{0, 1, 24, 'R', kMon},  {13, 1, 24, 'C', kMon},  {-1, 1, 24, 'R', kMon},
                        {0, 0, 100, 'X', kMon}, {1, 1, -1, 'R', kYear},  {1, 1, 100, 'F', kYear},
                        {1, 0, 24, 'P', kDay},  {1, 32, 24, 'R', kDay},  {4, 31, 24, 'R', kDay},
                        {2, 30, 24, 'R', kDay}, {1, 1, 24, 'X', kInval}, {1, 1, 24, 0, kInval},
                        {1, 1, 24, 'r', kInval}};
    for (const Row &r : rows) {
        _gl_ext_errno = 0;
        EXPECT_EQ(gl_getcenturyloc(nullptr, r.month, r.day, r.year2, r.letter, 0), -1)
            << r.month << '/' << r.day << '/' << r.year2 << ' ' << r.letter;
        EXPECT_EQ(_gl_ext_errno, r.err) << r.month << '/' << r.day << '/' << r.year2;
    }
}

} // namespace
