// Qualifiers: their text both ways over every valid code, the validity rule,
// the digit layout of dtpack and dtunpack, extension of datetimes, DATE and
// interval conversions, and entry points without a thread context.
#include "cal_test_util.hpp"

#include <random>
#include <tuple>

#include "platform/alloc.hpp"

using namespace caltest;

namespace
{

constexpr int DT = 10, INV = 14;

// Every qualifier code that a text can name.
template <typename F> void each_valid(bool interval, F f)
{
    for (int q = 1; q <= 0x7FFF; ++q)
        if (qmr::valid_qual(interval, q))
            f(q);
}

} // namespace

TEST(Qualifiers, TextExamples)
{
    struct Row {
        int type;
        const char *text;
        int want;
    };
    constexpr int bad = QMR_E_BADQUALIFIER, field = QMR_E_BADFIELD, prec = QMR_E_QUALPRECISION,
                  notnum = QMR_E_QUALNOTNUM;
    // A datetime ignores the precision of its first field.
    // clang-format off
    const Row rows[] = {
        {INV, "day(5) to fraction(3)", 0x0E4D},       {DT, "year to fraction", 0x110D},
        {DT, "year to second", QMR_YEAR_TO_SECOND},   {DT, "YEAR TO DAY", QMR_YEAR_TO_DAY},
        {DT, "  hour   to minute  ", 0x0468},         {INV, "day(9) to second", QMR_DAY9_TO_SECOND},
        {INV, "year(9) to month", 0x0B02},            {DT, "year(2) to day", QMR_YEAR_TO_DAY},
        {DT, "fraction to fraction(3)", 0x03CD},      {DT, "fraction to fraction", 0x03CD},
        {DT, "fraction to fraction(1)", 0x01CB},      {DT, "fraction to fraction(5)", 0x05CF},
        {INV, "second(4) to fraction(5)", 0x09AF},    {INV, "fraction(5) to fraction(3)", 0x06CD},
        {INV, "month to day", bad},                   {INV, "year to hour", bad},
        {DT, "second to hour", bad},                  {DT, "fraction to second", bad},
        {DT, "year to day x", QMR_E_EXTRATEXT},       {DT, "year day", field},
        {DT, "years to day", field},                  {DT, "year to days", field},
        {DT, "year to", field},                       {DT, "", field},
        {INV, "day(0) to hour", prec},                {INV, "day(10) to hour", prec},
        {INV, "day(x) to hour", notnum},              {INV, "day() to hour", notnum},
        {DT, "year to fraction(6)", prec},            {DT, "year to fraction(0)", prec},
        {DT, "year to fraction(a)", notnum},          {DT, "year to second(2)", bad},
        {DT, "year to fraction(3", bad},              {DT, "yearyearyear to day", bad},
        {INV, "day(12345678901) to hour", bad},       {INV, "fraction(1) to fraction(1)", bad}};
    // clang-format on
    for (const Row &r : rows) {
        int q = -7;
        const int status = rtuqual(r.type, r.text, &q);
        EXPECT_EQ(status, r.want < 0 ? r.want : 0) << r.text;
        EXPECT_EQ(q, r.want < 0 ? -7 : r.want) << r.text;
    }
    char buf[64];
    for (auto [type, q, text] : {std::tuple{INV, 0x0E4D, "day(5) to fraction(3)"},
                                 {INV, QMR_DAY9_TO_SECOND, "day(9) to second"},
                                 {DT, 0x0468, "hour to minute"}})
        EXPECT_EQ(std::string(buf, rtudesc(type, q, buf)), text);
    EXPECT_EQ(rtudesc(INV, 0x0624, buf), QMR_E_BADQUALIFIER);
    EXPECT_EQ(get_toerrno(), QMR_E_BADQUALIFIER);
}

TEST(Qualifiers, EveryValidCodeRoundTripsThroughText)
{
    for (bool interval : {false, true}) {
        int count = 0;
        each_valid(interval, [&](int q) {
            char buf[64];
            int n = rtudesc(interval ? INV : DT, q, buf);
            buf[n] = '\0';
            int back = -1;
            ASSERT_EQ(rtuqual(interval ? INV : DT, buf, &back), 0) << buf;
            EXPECT_EQ(back, q) << buf;
            ++count;
        });
        // 21 datetime and 21 + 9 * (24 + 21 + 12) ... counted by the rule.
        EXPECT_GT(count, interval ? 300 : 20);
    }
    EXPECT_STREQ(rtuname(0), "year");
    EXPECT_STREQ(rtuname(10), "second");
    EXPECT_STREQ(rtuname(13), "fraction");
    EXPECT_STREQ(rtuname(3), "fraction");
    EXPECT_EQ(rtuval("fraction"), 12);
    EXPECT_EQ(rtuval("minute"), 8);
    EXPECT_EQ(rtuval("Minute"), -1);
    EXPECT_EQ(rtuval(""), -1);
}

TEST(Qualifiers, InvalidCodesAreRefusedAndRecorded)
{
    struct Row {
        int interval, qual;
        const char *why;
    };
    // clang-format off
    const Row rows[] = {
        {0, -1, ""},                            {0, 0, ""},
        {1, 0x8000, ""},                        {0, 0x0E0A | 0x10000, ""},
        {0, 0x0E0A + 0x0100, " datetime total not standard"},
        {1, 0x0E42, " start DAY after end MONTH"}, {1, 0x1A4A, " 26 digits"},
        {1, 0x1946, " 25 digits"},               {1, 0x0B04, " year-month start with a DAY end"},
        {1, 0x0624, " MONTH TO DAY"},            {1, 0x0B4A - 0x0500, " DAY(0) TO SECOND"},
        {1, 0x104A, " first field of 10 digits"}, {0, 0x0213, " odd start"},
        {0, 0x0305, " odd end before SECOND"}};
    // clang-format on
    for (const Row &r : rows) {
        set_toerrno(0);
        EXPECT_EQ(_chk_qual(r.interval, r.qual), QMR_E_BADQUALIFIER) << std::hex << r.qual << r.why;
        EXPECT_EQ(get_toerrno(), QMR_E_BADQUALIFIER) << std::hex << r.qual;
    }
    set_toerrno(0);
    EXPECT_EQ(_chk_qual(1, 0x0E4D), 0);
    EXPECT_EQ(_chk_qual(0, 0x01CB), 0);
    EXPECT_EQ(get_toerrno(), 0);
    // Entry points with a qualifier refuse it the same way.
    dec_t d = make(QMR_YEAR_TO_DAY, {2024, 1, 31});
    dec_t out;
    char buf[64];
    int jd = 0;
    EXPECT_EQ(rdtimestr(&d, 0x0F0A, buf), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rinvstr(&d, 0x0624, buf), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rstrdtime("2024-01-31", &out, 0x0802), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rstrinv("1", &out, 0x1946), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rdtextend(&d, QMR_YEAR_TO_DAY, &out, -5), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rdttodate(&d, 0x0880, &jd), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rinvcopy(&d, 0x0624, &out, QMR_DAY9_TO_SECOND), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rinvtodec(&d, 0x0624, &out), QMR_E_BADQUALIFIER);
    EXPECT_EQ(rdectoinv(&d, &out, 0x0624), QMR_E_BADQUALIFIER);
    EXPECT_EQ(chk_dtinv(&d, 0x0624, 0), QMR_E_BADQUALIFIER);
}

TEST(Qualifiers, NextQualWords)
{
    struct Row {
        const char *text;
        int status;
        const char *word = nullptr, *arg = nullptr, *rest = nullptr;
    };
    // clang-format off
    const Row rows[] = {
        {"  Day(5) to", 0, "day", "5", " to"}, {"fraction ( 3 )x", 0, "fraction", " 3 ", "x"},
        {"", 0, "", "", ""},                   {"abcdefghij", 0, "abcdefghij", "", ""},
        {"abcdefghijk", -1},                   {"day(12345678901)", -1},
        {"day(5", -1}};
    // clang-format on
    for (const Row &r : rows) {
        const char *p = r.text;
        char word[11], arg[11];
        EXPECT_EQ(next_qual(&p, word, arg), r.status) << r.text;
        if (r.status == 0) {
            EXPECT_STREQ(word, r.word);
            EXPECT_STREQ(arg, r.arg);
            EXPECT_STREQ(p, r.rest);
        }
    }
}

TEST(Layout, DigitsSitAroundTheSecondsPair)
{
    struct Row {
        int qual;
        std::initializer_list<long long> v;
        long long frac;
        int exponent;
        std::vector<int> digits;
    } rows[] = {
        {QMR_YEAR_TO_SECOND, {2024, 1, 31, 12, 34, 56}, 0, 7, {20, 24, 1, 31, 12, 34, 56}},
        {QMR_YEAR_TO_DAY, {2024, 1, 31}, 0, 7, {20, 24, 1, 31}},
        {0x0468, {0, 0, 0, 12, 34}, 0, 3, {12, 34}},
        {0x03CD, {}, 12300, 0, {12, 30}}, // FRACTION(3) .123 is 0.123
        {0x01CB, {}, 70000, 0, {70}},     // FRACTION(1)
        {QMR_YEAR_TO_F3, {2024, 1, 31, 12, 34, 56}, 78900, 7, {20, 24, 1, 31, 12, 34, 56, 78, 90}},
        {0x0F4A, {0, 0, 123456789, 1, 2, 3}, 0, 8, {1, 23, 45, 67, 89, 1, 2, 3}},
        {0x0746, {0, 0, 3, 4}, 0, 4, {3, 4}}, // DAY(5) TO HOUR
    };
    for (const Row &r : rows) {
        dec_t d = make(r.qual, r.v, r.frac);
        EXPECT_EQ(d.exponent, r.exponent) << std::hex << r.qual;
        EXPECT_EQ(std::vector<int>(d.digits, d.digits + d.ndigits), r.digits) << std::hex << r.qual;
        char pairs[QMR_DTPAIRS];
        dtunpack(&d, r.qual, pairs);
        dec_t again;
        ASSERT_EQ(dtpack(&again, r.qual, pairs, 1), 0);
        EXPECT_TRUE(same(again, d));
    }
    // An odd end drops the units digit of the last pair, and restores it.
    char pairs[QMR_DTPAIRS] = {12, 34, 56, 78, 99};
    dec_t d;
    ASSERT_EQ(dtpack(&d, 0x096D, pairs, 0), 0); // HOUR TO FRACTION(3): 5 pairs
    EXPECT_EQ(d.sign, 0);
    EXPECT_EQ(std::vector<int>(d.digits, d.digits + d.ndigits),
              (std::vector<int>{12, 34, 56, 78, 90}));
    EXPECT_EQ(pairs[4], 99);
    // A decimal whose exponent passes the qualifier's unpacks as zeros.
    dec_t big = make(QMR_YEAR_TO_SECOND, {2024, 1, 31, 12, 34, 56});
    char out[QMR_DTPAIRS];
    std::memset(out, 7, sizeof out);
    dtunpack(&big, 0x0468, out);
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, '\0'));
}

TEST(Extend, RulesForMissingFields)
{
    dtime_t fixed{QMR_YEAR_TO_F5, make(QMR_YEAR_TO_F5, {2031, 7, 19, 8, 9, 10}, 12345)};
    rdtsetcurr(&fixed);
    struct Row {
        const char *in_qual, *in_text, *out_qual, *want;
    } rows[] = {
        {"hour to minute", "10:30", "year to second", "2031-07-19 10:30:00"},
        {"year to year", "2024", "year to day", "2024-01-01"},
        {"year to fraction(5)", "2024-01-31 12:34:56.98765", "year to second",
         "2024-01-31 12:34:56"},
        {"year to fraction(5)", "2024-01-31 12:34:56.98765", "hour to fraction(2)", "12:34:56.98"},
        {"month to day", "02-29", "year to day", "2031-02-29"}, // not checked as a date
        {"month to month", "05", "day to hour", "01 00"},
        {"year to month", "2024-05", "year to minute", "2024-05-01 00:00"},
        {"day to day", "15", "year to month", "2031-07"},
        {"fraction to fraction(3)", ".123", "second to fraction(5)", "10.12300"},
        {"second to second", "42", "minute to fraction(1)", "09:42.0"},
        {"year to second", "2024-01-31 12:34:56", "year to second", "2024-01-31 12:34:56"},
    };
    for (const Row &r : rows) {
        const int oq = qual_of(r.out_qual, false);
        dtime_t in = datetime(r.in_qual, r.in_text), out;
        out.qualifier = static_cast<short>(oq);
        ASSERT_EQ(dtextend(&in, &out), 0);
        EXPECT_EQ(dt_text(out.value, oq), r.want) << r.in_qual << " -> " << r.out_qual;
        // In place as well.
        dec_t same_rec = in.value;
        ASSERT_EQ(rdtextend(&same_rec, in.qualifier, &same_rec, oq), 0);
        EXPECT_EQ(dt_text(same_rec, oq), r.want);
    }
    dec_t null_in, out;
    qmr::set_null(&null_in);
    EXPECT_EQ(rdtextend(&null_in, QMR_YEAR_TO_DAY, &out, QMR_YEAR_TO_SECOND), 0);
    EXPECT_EQ(out.sign, -1);
    rdtsetcurr(nullptr);
}

TEST(Extend, DatesToDatetimesAndBack)
{
    std::mt19937 rng(20240131);
    std::uniform_int_distribution<int> day(QMR_DATE_MIN, QMR_DATE_MAX);
    for (int i = 0; i < 20000; ++i) {
        int j = day(rng);
        dec_t dt;
        ASSERT_EQ(rdatedt(j, &dt, QMR_YEAR_TO_SECOND), 0);
        const auto ymd = chrono_date(j);
        char want[32];
        std::snprintf(want, sizeof want, "%04d-%02u-%02u 00:00:00", int(ymd.year()),
                      unsigned(ymd.month()), unsigned(ymd.day()));
        EXPECT_EQ(dt_text(dt, QMR_YEAR_TO_SECOND), want);
        int back = 0;
        ASSERT_EQ(rdttodate(&dt, QMR_YEAR_TO_SECOND, &back), 0);
        ASSERT_EQ(back, j);
    }
    dec_t dt;
    EXPECT_EQ(rdatedt(QMR_DATE_MAX + 1, &dt, QMR_YEAR_TO_DAY), QMR_E_DATERANGE);
    EXPECT_EQ(rdatedt(QMR_DATE_NULL, &dt, QMR_YEAR_TO_DAY), 0);
    EXPECT_EQ(dt.sign, -1);
    int j = 0;
    EXPECT_EQ(rdttodate(&dt, QMR_YEAR_TO_DAY, &j), 0);
    EXPECT_EQ(j, QMR_DATE_NULL);
    dec_t bad = make(QMR_YEAR_TO_DAY, {2023, 2, 29});
    EXPECT_EQ(rdttodate(&bad, QMR_YEAR_TO_DAY, &j), QMR_E_BADDAY);
}

TEST(Extend, IntervalConversion)
{
    struct Row {
        const char *in_qual, *in_text, *out_qual, *want;
        int status;
    } rows[] = {
        {"day to second", "1 12:30:00", "day to hour", "  1 12", 0},
        {"day to second", "1 12:30:00", "hour(3) to minute", "  36:30", 0},
        {"day(3) to hour", "-100 05", "hour(5) to second", " -2405:00:00", 0},
        {"year to month", "12-03", "month(3) to month", " 147", 0},
        {"month(3) to month", "147", "year to month", "   12-03", 0},
        {"hour(3) to hour", "999", "day(2) to hour", " 41 15", 0},
        {"second(6) to second", "100000", "day to second", "  1 03:46:40", 0},
        {"hour(3) to hour", "999", "hour to hour", "", QMR_E_INTVOVERFLOW},
        {"year to month", "1-00", "day to second", "", QMR_E_BADQUALIFIERS},
        {"minute to second", "3:00", "hour to hour", "", QMR_E_BADQUALIFIERS},
        {"second to fraction(5)", "1.23456", "second to fraction(2)", "  1.23", 0},
    };
    for (const Row &r : rows) {
        intrvl_t in = interval(r.in_qual, r.in_text), out;
        out.qualifier = static_cast<short>(qual_of(r.out_qual, true));
        set_toerrno(0);
        EXPECT_EQ(invextend(&in, &out), r.status) << r.in_qual << " -> " << r.out_qual;
        if (r.status == 0) {
            EXPECT_EQ(inv_text(out.value, out.qualifier), r.want)
                << r.in_qual << " -> " << r.out_qual;
        } else {
            EXPECT_EQ(get_toerrno(), r.status);
            if (r.status == QMR_E_BADQUALIFIERS) {
                EXPECT_EQ(out.value.sign, -1);
            } else {
                EXPECT_TRUE(dec_is_zero(&out.value));
            }
        }
    }
}

TEST(NoContext, EntryPointsGiveTheirNeutralResults)
{
    // On a new thread whose context cannot be made, every entry point that
    // needs one answers without touching its outputs.
    std::thread([] {
        qmr::test_fail_alloc_after(1, true);
        dec_t in = make(QMR_YEAR_TO_DAY, {2024, 1, 31}), out = in;
        int j = 77;
        short mdy[3] = {1, 31, 2024};
        EXPECT_EQ(rdtextend(&in, QMR_YEAR_TO_DAY, &out, QMR_YEAR_TO_SECOND), QMR_E_NOMEM);
        EXPECT_EQ(rdttodate(&in, QMR_YEAR_TO_DAY, &j), QMR_E_NOMEM);
        EXPECT_EQ(rstrdtime("2024-01-31", &out, QMR_YEAR_TO_DAY), QMR_E_NOMEM);
        EXPECT_EQ(rdtsub(&in, QMR_YEAR_TO_DAY, &in, QMR_YEAR_TO_DAY, &out, QMR_DAY9_TO_SECOND),
                  QMR_E_NOMEM);
        EXPECT_EQ(rmdyjul(mdy, &j), 0);
        EXPECT_EQ(rdatedt(5, &out, QMR_YEAR_TO_DAY), 0);
        EXPECT_TRUE(same(out, in));
        rtoday(&j);
        EXPECT_EQ(j, 77);
        EXPECT_EQ(get_usedtenv(), 0);
        qmr::test_fail_alloc_after(0);
    }).join();
}
