// Day numbers over the whole valid range against std::chrono, the rejections
// of rmdyjul, today's date and its per-thread cache, DBTODAY, and the
// process-wide DBDATE and DBCENTURY settings (each in its own process).
#include "cal_test_util.hpp"

#include <clocale>
#include <ctime>
#include <string>

using namespace caltest;

namespace
{

int clock_day()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return chrono_day(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
}

std::string mask()
{
    char buf[32];
    return fmtstr(buf);
}

} // namespace

TEST(DayNumbers, EveryDayAgainstChrono)
{
    int failures = 0;
    for (int j = QMR_DATE_MIN; j <= QMR_DATE_MAX && failures < 5; ++j) {
        short mdy[3];
        ASSERT_EQ(rjulmdy(j, mdy), 0);
        auto want = chrono_date(j);
        if (mdy[2] != static_cast<int>(want.year()) ||
            mdy[0] != static_cast<int>(unsigned(want.month())) ||
            mdy[1] != static_cast<int>(unsigned(want.day()))) {
            ADD_FAILURE() << "rjulmdy(" << j << ") = " << mdy[0] << "/" << mdy[1] << "/" << mdy[2];
            ++failures;
        }
        int back = 0;
        if (rmdyjul(mdy, &back) != 0 || back != j) {
            ADD_FAILURE() << "rmdyjul back from " << j << " gives " << back;
            ++failures;
        }
        unsigned weekday = std::chrono::weekday(std::chrono::sys_days(want)).c_encoding();
        if (rdayofweek(j) != static_cast<int>(weekday)) {
            ADD_FAILURE() << "rdayofweek(" << j << ") = " << rdayofweek(j);
            ++failures;
        }
    }
}

TEST(DayNumbers, RangeEndsAndNull)
{
    short mdy[3] = {9, 9, 9};
    EXPECT_EQ(rjulmdy(QMR_DATE_NULL, mdy), 0);
    EXPECT_EQ(mdy[0] + mdy[1] + mdy[2], 0);
    for (int bad : {QMR_DATE_MIN - 1, QMR_DATE_MAX + 1, QMR_DATE_NULL + 1, 2147483647}) {
        mdy[0] = mdy[1] = mdy[2] = 7;
        EXPECT_EQ(rjulmdy(bad, mdy), QMR_E_DATERANGE) << bad;
        EXPECT_EQ(mdy[0] + mdy[1] + mdy[2], 0);
    }
    struct Row {
        int j, m, d, y;
    } rows[] = {
        {0, 12, 31, 1899}, {1, 1, 1, 1900}, {QMR_DATE_MIN, 1, 1, 1}, {QMR_DATE_MAX, 12, 31, 9999}};
    for (const Row &r : rows) {
        ASSERT_EQ(rjulmdy(r.j, mdy), 0);
        EXPECT_EQ(mdy[0], r.m);
        EXPECT_EQ(mdy[1], r.d);
        EXPECT_EQ(mdy[2], r.y);
    }
    EXPECT_EQ(rdayofweek(0), 0);
    EXPECT_EQ(rdayofweek(QMR_DATE_NULL), 0);
}

TEST(DayNumbers, RmdyjulRejectsInOrder)
{
    struct Row {
        short m, d, y;
        int code;
    } rows[] = {
        {2, 29, 1900, QMR_E_BADDAY},
        {2, 29, 2000, 0},
        {2, 29, 2023, QMR_E_BADDAY},
        {4, 31, 2024, QMR_E_BADDAY},
        {1, 0, 2024, QMR_E_BADDAY},
        {1, -3, 2024, QMR_E_BADDAY},
        {0, 1, 2024, QMR_E_BADMONTH},
        {13, 1, 2024, QMR_E_BADMONTH},
        {-1, 1, 2024, QMR_E_BADMONTH},
        {1, 1, 0, QMR_E_BADYEAR},
        {1, 1, 10000, QMR_E_BADYEAR},
        {13, 40, 0, QMR_E_BADYEAR},
        {13, 40, 2024, QMR_E_BADMONTH},
        {0, 0, 1, QMR_E_BADMONTH},
        {12, 31, 9999, 0},
    };
    for (const Row &r : rows) {
        short mdy[3] = {r.m, r.d, r.y};
        int j = 12345;
        EXPECT_EQ(rmdyjul(mdy, &j), r.code) << r.m << "/" << r.d << "/" << r.y;
        if (r.code != 0) {
            EXPECT_EQ(j, 12345) << "output changed on failure";
        } else {
            EXPECT_EQ(j, chrono_day(r.y, r.m, r.d));
        }
    }
}

TEST(DayNumbers, LeapYearsAndMonthLengths)
{
    for (int y = -800; y <= 10400; ++y)
        ASSERT_EQ(rleapyear(y), std::chrono::year(y).is_leap() ? 1 : 0) << y;
    const char cy_ok[][2] = {{0, 1}, {99, 99}, {20, 24}, {19, 0}};
    const char cy_bad[][2] = {{0, 0}, {100, 0}, {-1, 99}};
    for (const auto &cy : cy_ok)
        EXPECT_EQ(checkyear(cy), 0);
    for (const auto &cy : cy_bad)
        EXPECT_EQ(checkyear(cy), -1);
    for (int m = 1; m <= 12; ++m) {
        char pairs[3] = {20, 23, static_cast<char>(m)};
        char leap_pairs[3] = {20, 24, static_cast<char>(m)};
        char century[3] = {19, 0, static_cast<char>(m)};
        char month_only[1] = {static_cast<char>(m)};
        using namespace std::chrono;
        auto len = [](int y, int mo) {
            return static_cast<int>(unsigned((year(y) / month(mo) / last).day()));
        };
        EXPECT_EQ(daysinmonth(pairs, 3), len(2023, m));
        EXPECT_EQ(daysinmonth(leap_pairs, 3), len(2024, m));
        EXPECT_EQ(daysinmonth(century, 3), len(1900, m));
        EXPECT_EQ(daysinmonth(month_only, 1), len(2024, m));
        EXPECT_EQ(daysinmonth(month_only, 0), 31);
    }
}

TEST(Today, ProgramSetDateAndClock)
{

    std::thread([] {
        int d = 0;
        int fixed = chrono_day(1999, 12, 31);
        rsettoday(&fixed);
        rtoday(&d);
        EXPECT_EQ(d, fixed);
        // Another thread still reads the clock.
        std::thread([] {
            int other = 0;
            rtoday(&other);
            EXPECT_EQ(other, clock_day());
        }).join();
        rsettoday(nullptr);
        rtoday(&d);
        EXPECT_EQ(d, clock_day());
        // The cached value serves calls in the same quarter hour.
        int again = 0;
        rtoday(&again);
        EXPECT_EQ(again, d);
    }).join();
}

TEST(Today, CurrentDatetimeOverrideStaysInItsThread)
{
    std::thread([] {
        dtime_t fixed;
        fixed.qualifier = QMR_YEAR_TO_F5;
        fixed.value = make(QMR_YEAR_TO_F5, {2001, 2, 3, 4, 5, 6}, 78900);
        rdtsetcurr(&fixed);
        dec_t now;
        rdtcurrent(&now);
        EXPECT_TRUE(same(now, fixed.value));
        dtime_t cur;
        cur.qualifier = 0; // invalid: becomes YEAR TO FRACTION(3)
        dtcurrent(&cur);
        EXPECT_EQ(cur.qualifier, QMR_YEAR_TO_F3);
        EXPECT_EQ(dt_text(cur.value, cur.qualifier), "2001-02-03 04:05:06.789");
        EXPECT_EQ(get_toerrno(), 0);
        std::thread([] {
            dtime_t mine;
            mine.qualifier = QMR_YEAR_TO_DAY;
            dtcurrent(&mine);
            qmr::Fields f = fields(mine.value, QMR_YEAR_TO_DAY);
            EXPECT_EQ(chrono_day(int(f.v[0]), int(f.v[1]), int(f.v[2])), clock_day());
        }).join();
        rdtsetcurr(nullptr);
        dtime_t back;
        back.qualifier = QMR_YEAR_TO_DAY;
        dtcurrent(&back);
        qmr::Fields f = fields(back.value, QMR_YEAR_TO_DAY);
        EXPECT_EQ(chrono_day(int(f.v[0]), int(f.v[1]), int(f.v[2])), clock_day());
    }).join();
}

TEST(Today, DbtodayShiftsTodayAndTheClock)
{
    isolated({{"DBTODAY", "2001-02-03 23:59:58"}}, [] {
        int d = 0;
        rtoday(&d);
        EXPECT_EQ(d, chrono_day(2001, 2, 3));
        dec_t now;
        rdtcurrent(&now);
        std::string text = dt_text(now, QMR_YEAR_TO_F5);
        // The clock runs on from the set moment (two seconds at most here).
        EXPECT_TRUE(text.rfind("2001-02-03 23:59:5", 0) == 0 ||
                    text.rfind("2001-02-04 00:00:0", 0) == 0)
            << text;
        // The flags are per thread: a new thread examines the variable again.
        std::thread([] {
            int other = 0;
            rtoday(&other);
            EXPECT_LE(std::abs(other - chrono_day(2001, 2, 3)), 1);
        }).join();
        // A program-set date still wins.
        int fixed = 5;
        rsettoday(&fixed);
        rtoday(&d);
        EXPECT_EQ(d, 5);
    });
    for (const char *bad : {"2001-02-30 00:00:00", "yesterday", "2001-02-03", ""}) {
        isolated({{"DBTODAY", bad}}, [] {
            int d = 0;
            rtoday(&d);
            EXPECT_EQ(d, clock_day());
        });
    }
}

TEST(Settings, DbdateMasks)
{
    isolated({{"DBDATE", nullptr}}, [] { EXPECT_EQ(mask(), "mm/dd/yyyy"); });
    isolated({}, [] {
        struct Row {
            const char *dbdate, *mask;
        } rows[] = {
            {"MDY4/", "mm/dd/yyyy"},    {"DMY4", "dd/mm/yyyy"},   {"DMY2.", "dd.mm.yy"},
            {"Y4MD-", "yyyy-mm-dd"},    {"MDY40", "mmddyyyy"},    {"y2md ", "yy/mm/dd"},
            {"DMY4/C1", "dd/mm/gyyyy"}, {"Y2MD-J2", "eyy-mm-dd"}, {"Y4DMj1", "gyyyy/dd/mm"},
            {"EY4MD.", "eyyyy.mm.dd"},  {"nY2DM", "gyy/dd/mm"},   {"NY4MD", "/yyyy/mm"},
        };
        for (const Row &r : rows) {
            gputenv("DBDATE", r.dbdate);
            qmr::initflg = 0;
            EXPECT_EQ(getfmt(), 0) << r.dbdate;
            EXPECT_EQ(mask(), r.mask) << r.dbdate;
            EXPECT_EQ(qmr::initflg, 1);
        }
        for (const char *bad : {"MDY3/", "MMDY4/", "YMD4", "", "MD/", "DMY4Y2", "Q"}) {
            gputenv("DBDATE", bad);
            qmr::initflg = 0;
            EXPECT_EQ(getfmt(), QMR_E_BADDATEFMT) << bad;
            EXPECT_EQ(qmr::initflg, 0);
            EXPECT_EQ(mask(), "") << bad;
        }
        // After a failure fmtstr tries the variable again on each call.
        gputenv("DBDATE", "DMY2-");
        EXPECT_EQ(mask(), "dd-mm-yy");
    });
    EXPECT_EQ(datesep('-'), '-');
    EXPECT_EQ(datesep('.'), '.');
    EXPECT_EQ(datesep('/'), '/');
    EXPECT_EQ(datesep(' '), ' ');
    EXPECT_EQ(datesep('0'), 0);
    EXPECT_EQ(datesep('x'), '/');
    EXPECT_EQ(datesep('4'), '/');
}

TEST(Settings, DbdateFromTheCLocale)
{
    std::setlocale(LC_TIME, "C");
    char buf[8];
    ASSERT_NE(getdbdate(buf), nullptr);
    EXPECT_STREQ(buf, "mdy4/");
}

TEST(Settings, DbcenturyIsReadUntilValid)
{
    isolated({{"DBCENTURY", nullptr}}, [] {
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 'R');
    });
    isolated({{"DBCENTURY", "p"}}, [] {
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 0);
        gputenv("DBCENTURY", "PP");
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 0);
        // Still unset, so the variable is read again.
        gputenv("DBCENTURY", "F");
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 'F');
        gputenv("DBCENTURY", "C");
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 'F');
        // An unset letter reaches the century rule, which refuses it.
        qmr::dbcentury = 0;
        gputenv("DBCENTURY", "X");
        EXPECT_EQ(getcentury(1, 1, 24), QMR_E_CENTURY);
    });
}

TEST(Settings, CenturyErrorsMapToDateCodes)
{
    isolated({{"DBCENTURY", "R"}}, [] {
        EXPECT_EQ(getcentury(13, 1, 24), QMR_E_BADMONTH);
        EXPECT_EQ(getcentury(0, 1, 24), QMR_E_BADMONTH);
        EXPECT_EQ(getcentury(1, 1, 100), QMR_E_BADYEAR);
        EXPECT_EQ(getcentury(4, 31, 24), QMR_E_BADDAY);
        short mdy[3];
        int today = 0;
        rtoday(&today);
        rjulmdy(today, mdy);
        EXPECT_EQ(getcentury(1, 1, 24), mdy[2] / 100);
    });
    isolated({{"DBCENTURY", "P"}}, [] {
        // P: the nearest such date on or before today.
        short mdy[3];
        int today = 0;
        rtoday(&today);
        rjulmdy(today, mdy);
        int next_year = (mdy[2] + 1) % 100;
        EXPECT_EQ(getcentury(1, 1, next_year), (mdy[2] + 1) / 100 - 1);
    });
}

TEST(Settings, NoDateFormatInForce)
{
    char *fmt = nullptr;
    int order[3] = {7, 7, 7}, extra = 7;
    EXPECT_EQ(gls_fmtstr(&fmt, order, &extra), QMR_E_BADDATEFMT);
    EXPECT_EQ(fmt, nullptr);
    EXPECT_EQ(order[0], 7);
}

TEST(Settings, ValidateDbcentury)
{
    for (int def : {'R', 'C', 'F', 'P'}) {
        for (int user : {'R', 'C', 'F', 'P'})
            EXPECT_EQ(validate_dbcentury(user, def), user);
        for (int user : {0, int('r'), int('X'), int('p')})
            EXPECT_EQ(validate_dbcentury(user, def), def);
    }
    EXPECT_DEATH(
        validate_dbcentury('R', 'x'),
        "rdatefmt:452.*validate_dbcentury.*defval == 'R' \\|\\| defval == 'C' \\|\\| defval == 'F' "
        "\\|\\| defval == 'P'");
}

TEST(Settings, ZeroTripleUnderNozeromdy)
{
    struct Row {
        const char *value;
        bool rejected;
    } rows[] = {{nullptr, false}, {"1", true}, {"01", true}, {"1x", true},
                {"2", false},     {"", false}, {"x1", false}};
    for (const Row &r : rows) {
        isolated({{"QMR_NOZEROMDY", r.value}}, [r] {
            short zero[3] = {0, 0, 0};
            int j = 42;
            if (r.rejected) {
                EXPECT_EQ(rmdyjul(zero, &j), QMR_E_BADDAY) << (r.value ? r.value : "(unset)");
                EXPECT_EQ(j, 42);
            } else {
                EXPECT_EQ(rmdyjul(zero, &j), 0) << (r.value ? r.value : "(unset)");
                EXPECT_EQ(j, QMR_DATE_NULL);
            }
        });
    }
}

TEST(Settings, ReservedWords)
{
    static const char *const table[] = {
#define QMR_ANSI_KEYWORD(index, word) word,
#include "calendar/ansi_keywords.def"
#undef QMR_ANSI_KEYWORD
    };
    ASSERT_EQ(std::size(table), 99u);
    for (std::size_t i = 0; i < std::size(table); ++i) {
        if (i > 0) {
            EXPECT_LT(std::strcmp(table[i - 1], table[i]), 0) << table[i];
        }
        std::string upper = table[i];
        for (char &c : upper)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        EXPECT_EQ(a_kwcheck(table[i]), 0) << table[i];
        EXPECT_EQ(a_kwcheck(upper.c_str()), 0) << upper;
        // A word just beside each entry is not reserved.
        EXPECT_EQ(a_kwcheck((std::string(table[i]) + "x").c_str()), -1);
        EXPECT_EQ(a_kwcheck((std::string("_") + table[i]).c_str()), -1);
    }
    for (const char *word :
         {"", "a", "zzz", "select2", "hours", "abs", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"})
        EXPECT_EQ(a_kwcheck(word), -1) << word;
}
