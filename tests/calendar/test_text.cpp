// The standard text forms: writing examples, every reader's codes for
// malformed text, round trips of random values of every valid qualifier, the
// century of two-digit years, and the format-environment switches.
#include "cal_test_util.hpp"

#include <random>

using namespace caltest;

namespace
{

// A random valid value of qual: fields in range (a datetime's date exists).
dec_t random_value(std::mt19937 &rng, int qual, bool interval)
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    auto pick = [&rng](long long lo, long long hi) {
        return std::uniform_int_distribution<long long>(lo, hi)(rng);
    };
    qmr::Fields f{};
    f.sign = interval && pick(0, 1) == 0 ? 0 : 1;
    long long first_max = 1;
    for (int i = 0; i < QMR_TU_LEN(qual) - (end - start); ++i)
        first_max *= 10;
    f.v[0] = pick(1, 9999);
    f.v[1] = interval ? pick(0, 11) : pick(1, 12);
    int length = start == QMR_TU_YEAR    ? qmr::month_length(int(f.v[1]), int(f.v[0]))
                 : start == QMR_TU_MONTH ? (f.v[1] == 2 ? 29 : qmr::daymon[f.v[1]])
                                         : 31;
    f.v[2] = pick(1, length);
    f.v[3] = pick(0, 23);
    f.v[4] = pick(0, 59);
    f.v[5] = pick(0, 59);
    if (interval && start <= QMR_TU_SECOND)
        f.v[start / 2] = pick(0, first_max - 1);
    int digits = end > QMR_TU_SECOND ? end - 10 : 0;
    long long scale = 1;
    for (int i = digits; i < 5; ++i)
        scale *= 10;
    f.frac = pick(0, 99999) / scale * scale;
    dec_t out;
    qmr::pack_fields(f, qual, &out);
    return out;
}

// The year read from text by qmr_rstrdtime under the letter (0: the setting).
long long year_read(const char *text, int letter = 0, int q = QMR_YEAR_TO_DAY)
{
    dec_t out;
    const int status = letter ? qmr_rstrdtime(text, &out, q, letter) : rstrdtime(text, &out, q);
    EXPECT_EQ(status, 0) << text;
    return status == 0 ? fields(out, q).v[0] : -1;
}

} // namespace

TEST(Text, WritingExamples)
{
    struct Row {
        const char *q;
        std::initializer_list<long long> v;
        long long frac;
        const char *want;
    };
    // clang-format off
    const Row rows[] = {
        {"year to fraction(3)", {2024, 1, 31, 12, 34, 56}, 78900, "2024-01-31 12:34:56.789"},
        {"hour to second", {0, 0, 0, 12, 34, 56}, 0, "12:34:56"},
        {"day to hour", {0, 0, 31, 12}, 0, "31 12"}, {"year to day", {24, 1, 1}, 0, "0024-01-01"},
        {"fraction to fraction(5)", {}, 1234, ".01234"},
        {"second to fraction(1)", {0, 0, 0, 0, 0, 7}, 90000, "07.9"}};
    // clang-format on
    for (const Row &r : rows) {
        const int q = qual_of(r.q, false);
        dtime_t dt{static_cast<short>(q), make(q, r.v, r.frac)};
        EXPECT_EQ(dt_text(dt.value, q), r.want);
        char buf[64];
        EXPECT_EQ(dttoasc(&dt, buf), 0);
        EXPECT_STREQ(buf, r.want);
    }
    int q5 = qual_of("day(5) to hour", true);
    std::string minus = inv_text(make(q5, {0, 0, 3, 4}, 0, 0), q5);
    EXPECT_EQ(minus, "    -3 04");
    EXPECT_EQ(minus.size(), 9u);
    EXPECT_EQ(inv_text(make(q5, {0, 0, 12345, 4}, 0, 0), q5), "-12345 04");
    EXPECT_EQ(inv_text(make(q5, {0, 0, 0, 4}, 0, 1), q5), "     0 04");
    intrvl_t inv{static_cast<short>(q5), make(q5, {0, 0, 3, 4}, 0, 0)};
    char buf[64];
    EXPECT_EQ(intoasc(&inv, buf), 0);
    EXPECT_STREQ(buf, "    -3 04");
    EXPECT_EQ(rdinstr(&inv.value, q5, buf), 0);
    EXPECT_STREQ(buf, "00003 04");
}

TEST(Text, ReadingCodes)
{
    struct Read {
        const char *text;
        int status;
        const char *want = nullptr; // as written back, for a success; null: the text itself
    };
    struct Group {
        const char *q;
        bool interval;
        std::vector<Read> reads;
    };
    constexpr int field = QMR_E_BADFIELD, notnum = QMR_E_QUALNOTNUM, extra = QMR_E_EXTRATEXT,
                  prec = QMR_E_QUALPRECISION;
    // clang-format off
    const Group groups[] = {
        {"year to day", false, {
            {"2024-02-30", field},      {"2024-02-29", 0},          {"2023-02-29", field},
            {"2024-01", notnum},        {"2024-01-31 12", extra},   {"2024-01-31x", extra},
            {"2024-01/31", notnum},     {"2024-0131", field},       {"2024-001-31", field},
            {"12024-01-31", prec},      {"024-01-31", 0, "0024-01-31"}, {"2024-13-01", field},
            {"0000-01-01", field},      {"  2024-1-5  ", 0, "2024-01-05"},
            {"2024- 1- 5", 0, "2024-01-05"}, {"-2024-01-01", notnum}, {"", 0}, {"    ", 0, ""}}},
        {"fraction to fraction(3)", false, {
            {".123", 0},                {"000.5", 0, ".500"},       {"1.123", field},
            {"123", field},             {"0", QMR_E_NOPOINT},       {".1234", extra}}},
        {"hour to minute", false, {{"12:60", field}, {"24:00", field}, {"12:", notnum}}},
        {"hour to second", false, {{"12:34:56.5", extra}}},
        {"hour to fraction(3)", false, {
            {"12:34:56", 0, "12:34:56.000"}, {"12:34:56 ", 0, "12:34:56.000"},
            {"12:34:56.7", 0, "12:34:56.700"}, {"12:34", notnum}, {"12:34:56,7", notnum}}},
        {"year to fraction(5)", false, {{"2024-01-31 12:34:56.12345", 0}}},
        {"year to second", false, {
            {"2024-01-31   12:34:56", 0, "2024-01-31 12:34:56"}, {"2024-01-31-12:34:56", notnum}}},
        {"month to day", false, {{"02-29", 0}, {"04-31", field}}},
        {"day to day", false, {{"31", 0}, {"32", field}, {"0", field}}},
        {"day to hour", true, {
            {"-5 10", 0, " -5 10"},     {"  - 5 10", 0, " -5 10"},  {"5 24", field},
            {"100 1", prec}}},
        {"day(3) to hour", true, {{"100 1", 0, " 100 01"}}},
        {"year to month", true, {{"5-12", field}, {"5-11", 0, "    5-11"}}},
        {"hour(9) to minute", true, {{"999999999:59", 0, " 999999999:59"}}},
        {"second to fraction(2)", true, {{"-0.5", 0, " -0.50"}}},
        {"day to second", true, {
            {"1 2:3:4", 0, "  1 02:03:04"}, {"1 2:3:4.5", extra}, {"--1 00:00:00", notnum},
            {"", 0}}}};
    // clang-format on
    for (const Group &g : groups) {
        const int q = qual_of(g.q, g.interval);
        for (const Read &r : g.reads) {
            SCOPED_TRACE(std::string(g.q) + " '" + r.text + "'");
            dec_t out;
            std::memset(&out, 0x5A, sizeof out);
            if (g.interval) {
                intrvl_t inv{static_cast<short>(q), {}};
                EXPECT_EQ(incvasc(r.text, &inv), r.status);
                out = inv.value;
            } else {
                EXPECT_EQ(rstrdtime(r.text, &out, q), r.status);
            }
            if (r.status == 0) {
                EXPECT_EQ(g.interval ? inv_text(out, q) : dt_text(out, q),
                          r.want ? r.want : r.text);
            } else if (!g.interval) {
                EXPECT_EQ(out.sign, -1) << "a failed read leaves null";
            }
        }
    }
}

TEST(Text, RoundTripsOfEveryQualifier)
{
    std::mt19937 rng(31);
    for (bool interval : {false, true}) {
        for (int q = 1; q <= 0x7FFF; ++q) {
            if (!qmr::valid_qual(interval, q))
                continue;
            for (int i = 0; i < 40; ++i) {
                dec_t v = random_value(rng, q, interval);
                char text[64];
                dec_t back;
                if (interval) {
                    ASSERT_EQ(rinvstr(&v, q, text), 0);
                    ASSERT_EQ(rstrinv(text, &back, q), 0) << std::hex << q << " '" << text << "'";
                } else {
                    ASSERT_EQ(rdtimestr(&v, q, text), 0);
                    ASSERT_EQ(rstrdtime(text, &back, q), 0) << std::hex << q << " '" << text << "'";
                }
                ASSERT_TRUE(same(back, v)) << std::hex << q << " '" << text << "'";
            }
        }
    }
}

TEST(Text, TwoDigitYearsTakeTheirCentury)
{
    isolated({{"DBCENTURY", nullptr}}, [] {
        const int year = this_year(), century = year / 100 * 100;
        dec_t out;
        ASSERT_EQ(rstrdtime("24-01-31", &out, QMR_YEAR_TO_DAY), 0);
        EXPECT_EQ(dt_text(out, QMR_YEAR_TO_DAY), std::to_string(century + 24) + "-01-31");
        EXPECT_EQ(year_read("7-01-31"), century + 7);
        // A year alone takes today's month and day for the rule.
        EXPECT_EQ(year_read("99", 0, qual_of("year to year", false)), century + 99);
        // P and F choose the past and the future for a year one ahead.
        char text[16];
        std::snprintf(text, sizeof text, "%02d-01-01", (year + 1) % 100);
        EXPECT_EQ(year_read(text, 'P'), year + 1 - 100);
        dtime_t dt{QMR_YEAR_TO_DAY, {}};
        ASSERT_EQ(qmr_dtcvasc(text, &dt, 'F'), 0);
        EXPECT_EQ(fields(dt.value, QMR_YEAR_TO_DAY).v[0], year + 1);
        // The letter lasts for the call only; a bad one means the setting.
        EXPECT_EQ(qmr::dbcentury, 'R');
        EXPECT_EQ(year_read(text, 'x'), year + 1);
        EXPECT_EQ(rstrdtime("24-13-01", &out, QMR_YEAR_TO_DAY), QMR_E_BADFIELD);
    });
    isolated({{"DBCENTURY", "P"}}, [] {
        char text[16];
        std::snprintf(text, sizeof text, "%02d-01-01", (this_year() + 1) % 100);
        EXPECT_EQ(year_read(text), this_year() + 1 - 100);
    });
}

TEST(Text, FormatEnvironmentSwitches)
{
    isolated({{"GL_DATETIME", "%Y"}}, [] {
        dec_t v = make(QMR_YEAR_TO_DAY, {2024, 1, 31});
        char buf[64] = "x";
        EXPECT_EQ(rdtimestr(&v, QMR_YEAR_TO_DAY, buf), QMR_E_BADDATEFMT);
        EXPECT_STREQ(buf, "");
        dec_t out;
        EXPECT_EQ(rstrdtime("2024-01-31", &out, QMR_YEAR_TO_DAY), 0);
    });
    isolated({{"USE_DTENV", "1"}}, [] {
        EXPECT_EQ(get_usedtenv(), 1);
        dec_t out = make(QMR_YEAR_TO_DAY, {2000, 1, 1}), keep = out;
        EXPECT_EQ(rstrdtime("2024-01-31", &out, QMR_YEAR_TO_DAY), QMR_E_BADDATEFMT);
        EXPECT_TRUE(same(out, keep));
        // Intervals are not affected.
        EXPECT_EQ(rstrinv("1", &out, qual_of("day to day", true)), 0);
    });
    for (const char *off : {"0", "11", "yes", ""})
        isolated({{"USE_DTENV", off}}, [] {
            EXPECT_EQ(get_usedtenv(), 0);
            EXPECT_EQ(year_read("2024-01-31"), 2024);
        });
}

TEST(Text, OtherConversions)
{
    std::time_t t = 1706704496; // some moment; compared with localtime_r itself
    std::tm parts{};
    ASSERT_EQ(qmr_localtime(&t, &parts), &parts);
    dec_t out;
    EXPECT_EQ(rdatetime(t, QMR_YEAR_TO_SECOND, &out), 0);
    char want[64];
    std::strftime(want, sizeof want, "%Y-%m-%d %H:%M:%S", &parts);
    EXPECT_EQ(dt_text(out, QMR_YEAR_TO_SECOND), want);
    std::time_t huge = static_cast<std::time_t>(1) << 62;
    EXPECT_EQ(qmr_localtime(&huge, &parts), nullptr);
    long now = rutccurrent();
    EXPECT_LE(std::labs(now - static_cast<long>(std::time(nullptr))), 1);
    // chk_dtinv on values that no reader makes.
    dec_t bad = make(QMR_YEAR_TO_DAY, {2024, 1, 31});
    bad.sign = 0;
    EXPECT_EQ(chk_dtinv(&bad, QMR_YEAR_TO_DAY, 1), QMR_E_BADFIELD);
    bad = make(QMR_YEAR_TO_DAY, {2024, 1, 31});
    bad.digits[2] = 100;
    EXPECT_EQ(chk_dtinv(&bad, QMR_YEAR_TO_DAY, 1), QMR_E_BADFIELD);
    int ym = qual_of("year to month", true);
    EXPECT_EQ(chk_dtinv(&bad, ym, 0), QMR_E_BADFIELD);
    dec_t ok = make(ym, {1234, 11}, 0, 0);
    EXPECT_EQ(chk_dtinv(&ok, ym, 0), 0);
}
