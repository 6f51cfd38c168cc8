// Day numbers over the whole range against std::chrono, the rejections of
// rmdyjul, today's date and its per-thread cache, DBTODAY, and the process-wide
// DBDATE, DBCENTURY and QMR_NOZEROMDY settings (each in its own process).
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

// The day number of a datetime's YEAR TO DAY fields.
int day_of(const dec_t &value)
{
    const qmr::Fields f = fields(value, QMR_YEAR_TO_DAY);
    return chrono_day(int(f.v[0]), int(f.v[1]), int(f.v[2]));
}

std::string mask()
{
    char buf[32];
    return fmtstr(buf);
}

} // namespace

TEST(DayNumbers, EveryDayAgainstChrono)
{
    using namespace std::chrono;
    for (int j = QMR_DATE_MIN; j <= QMR_DATE_MAX; ++j) {
        short mdy[3];
        ASSERT_EQ(rjulmdy(j, mdy), 0);
        const year_month_day want = chrono_date(j);
        ASSERT_EQ((std::array<int, 3>{mdy[0], mdy[1], mdy[2]}),
                  (std::array<int, 3>{int(unsigned(want.month())), int(unsigned(want.day())),
                                      int(want.year())}))
            << "rjulmdy(" << j << ")";
        int back = 0;
        ASSERT_EQ(rmdyjul(mdy, &back), 0);
        ASSERT_EQ(back, j);
        ASSERT_EQ(rdayofweek(j), int(weekday(sys_days(want)).c_encoding())) << j;
    }
}

TEST(DayNumbers, RangeEndsNullAndRejections)
{
    short mdy[3] = {9, 9, 9};
    EXPECT_EQ(rjulmdy(QMR_DATE_NULL, mdy), 0);
    EXPECT_EQ(mdy[0] + mdy[1] + mdy[2], 0);
    for (int bad : {QMR_DATE_MIN - 1, QMR_DATE_MAX + 1, QMR_DATE_NULL + 1, 2147483647}) {
        mdy[0] = mdy[1] = mdy[2] = 7;
        EXPECT_EQ(rjulmdy(bad, mdy), QMR_E_DATERANGE) << bad;
        EXPECT_EQ(mdy[0] + mdy[1] + mdy[2], 0);
    }
    for (auto [j, m, d, y] : {std::array{0, 12, 31, 1899},
                              {1, 1, 1, 1900},
                              {QMR_DATE_MIN, 1, 1, 1},
                              {QMR_DATE_MAX, 12, 31, 9999}}) {
        ASSERT_EQ(rjulmdy(j, mdy), 0);
        EXPECT_EQ((std::array<int, 3>{mdy[0], mdy[1], mdy[2]}), (std::array{m, d, y})) << j;
    }
    EXPECT_EQ(rdayofweek(0), 0);
    EXPECT_EQ(rdayofweek(QMR_DATE_NULL), 0);

    // rmdyjul checks the year, then the month, then the day.
    struct Row {
        short m, d, y;
        int code;
    };
    constexpr int day = QMR_E_BADDAY, mon = QMR_E_BADMONTH, yr = QMR_E_BADYEAR;
    // clang-format off
    const Row rows[] = {
        {2, 29, 1900, day}, {2, 29, 2000, 0},   {2, 29, 2023, day}, {4, 31, 2024, day},
        {1, 0, 2024, day},  {1, -3, 2024, day}, {0, 1, 2024, mon},  {13, 1, 2024, mon},
        {-1, 1, 2024, mon}, {1, 1, 0, yr},      {1, 1, 10000, yr},  {13, 40, 0, yr},
        {13, 40, 2024, mon}, {0, 0, 1, mon},    {12, 31, 9999, 0}};
    // clang-format on
    for (const Row &r : rows) {
        short in[3] = {r.m, r.d, r.y};
        int j = 12345;
        EXPECT_EQ(rmdyjul(in, &j), r.code) << r.m << "/" << r.d << "/" << r.y;
        EXPECT_EQ(j, r.code != 0 ? 12345 : chrono_day(r.y, r.m, r.d)) << "output on failure kept";
    }
}

TEST(DayNumbers, LeapYearsAndMonthLengths)
{
    for (int y = -800; y <= 10400; ++y)
        ASSERT_EQ(rleapyear(y), std::chrono::year(y).is_leap() ? 1 : 0) << y;
    // Century and year pairs: the first four are valid.
    const char cy[][2] = {{0, 1}, {99, 99}, {20, 24}, {19, 0}, {0, 0}, {100, 0}, {-1, 99}};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(checkyear(cy[i]), i < 4 ? 0 : -1) << int(cy[i][0]) << ' ' << int(cy[i][1]);
    using namespace std::chrono;
    auto len = [](int y, int m) { return int(unsigned((year(y) / month(m) / last).day())); };
    for (int m = 1; m <= 12; ++m) {
        const char c = static_cast<char>(m);
        const char common[3] = {20, 23, c}, leap[3] = {20, 24, c}, century[3] = {19, 0, c};
        EXPECT_EQ(daysinmonth(common, 3), len(2023, m));
        EXPECT_EQ(daysinmonth(leap, 3), len(2024, m));
        EXPECT_EQ(daysinmonth(century, 3), len(1900, m));
        EXPECT_EQ(daysinmonth(&c, 1), len(2024, m)) << "the month alone: February has 29 days";
        EXPECT_EQ(daysinmonth(&c, 0), 31);
    }
}

TEST(Today, ProgramSetValuesStayInTheirThread)
{
    std::thread([] {
        int d = 0, fixed = chrono_day(1999, 12, 31);
        rsettoday(&fixed);
        rtoday(&d);
        EXPECT_EQ(d, fixed);
        dtime_t now{QMR_YEAR_TO_F5, make(QMR_YEAR_TO_F5, {2001, 2, 3, 4, 5, 6}, 78900)};
        rdtsetcurr(&now);
        dec_t cur;
        rdtcurrent(&cur);
        EXPECT_TRUE(same(cur, now.value));
        dtime_t any{0, {}}; // an invalid qualifier becomes YEAR TO FRACTION(3)
        dtcurrent(&any);
        EXPECT_EQ(any.qualifier, QMR_YEAR_TO_F3);
        EXPECT_EQ(dt_text(any.value, any.qualifier), "2001-02-03 04:05:06.789");
        EXPECT_EQ(get_toerrno(), 0);
        // Another thread still reads the clock.
        std::thread([] {
            int other = 0;
            rtoday(&other);
            EXPECT_EQ(other, clock_day());
            dtime_t mine{QMR_YEAR_TO_DAY, {}};
            dtcurrent(&mine);
            EXPECT_EQ(day_of(mine.value), clock_day());
        }).join();
        rsettoday(nullptr);
        rtoday(&d);
        EXPECT_EQ(d, clock_day());
        // The cached value serves calls in the same quarter hour.
        int again = 0;
        rtoday(&again);
        EXPECT_EQ(again, d);
        rdtsetcurr(nullptr);
        dtime_t back{QMR_YEAR_TO_DAY, {}};
        dtcurrent(&back);
        EXPECT_EQ(day_of(back.value), clock_day());
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
    // A separator stays, '0' means none, anything else is '/'.
    const char in[] = "-./ 0x4", out[] = "-./ \0//";
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(datesep(in[i]), out[i]) << in[i];
}

TEST(Settings, DefaultsWithoutAFormat)
{
    std::setlocale(LC_TIME, "C");
    char buf[8];
    ASSERT_NE(getdbdate(buf), nullptr);
    EXPECT_STREQ(buf, "mdy4/") << "the C locale's order";
    char *fmt = nullptr;
    int order[3] = {7, 7, 7}, extra = 7;
    EXPECT_EQ(gls_fmtstr(&fmt, order, &extra), QMR_E_BADDATEFMT) << "no date format in force";
    EXPECT_EQ(fmt, nullptr);
    EXPECT_EQ(order[0], 7);
}

TEST(Settings, DbcenturyIsReadUntilValidAndMapsErrors)
{
    isolated({{"DBCENTURY", nullptr}}, [] {
        getdbcentury();
        EXPECT_EQ(qmr::dbcentury, 'R');
    });
    isolated({{"DBCENTURY", "p"}}, [] {
        auto read = [](const char *value) {
            gputenv("DBCENTURY", value);
            getdbcentury();
            return qmr::dbcentury;
        };
        EXPECT_EQ(read("p"), 0);
        EXPECT_EQ(read("PP"), 0);
        EXPECT_EQ(read("F"), 'F') << "still unset, so the variable is read again";
        EXPECT_EQ(read("C"), 'F');
        // An unset letter reaches the century rule, which refuses it.
        qmr::dbcentury = 0;
        gputenv("DBCENTURY", "X");
        EXPECT_EQ(getcentury(1, 1, 24), QMR_E_CENTURY);
    });
    isolated({{"DBCENTURY", "R"}}, [] {
        EXPECT_EQ(getcentury(13, 1, 24), QMR_E_BADMONTH);
        EXPECT_EQ(getcentury(0, 1, 24), QMR_E_BADMONTH);
        EXPECT_EQ(getcentury(1, 1, 100), QMR_E_BADYEAR);
        EXPECT_EQ(getcentury(4, 31, 24), QMR_E_BADDAY);
        EXPECT_EQ(getcentury(1, 1, 24), this_year() / 100);
    });
    // P: the nearest such date on or before today.
    isolated({{"DBCENTURY", "P"}}, [] {
        EXPECT_EQ(getcentury(1, 1, (this_year() + 1) % 100), (this_year() + 1) / 100 - 1);
    });
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
    const std::pair<const char *, bool> rows[] = {{nullptr, false}, {"1", true},  {"01", true},
                                                  {"1x", true},     {"2", false}, {"", false},
                                                  {"x1", false}};
    for (auto [value, rejected] : rows)
        isolated({{"QMR_NOZEROMDY", value}}, [value = value, rejected = rejected] {
            short zero[3] = {0, 0, 0};
            int j = 42;
            EXPECT_EQ(rmdyjul(zero, &j), rejected ? QMR_E_BADDAY : 0) << (value ? value : "unset");
            EXPECT_EQ(j, rejected ? 42 : QMR_DATE_NULL);
        });
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
