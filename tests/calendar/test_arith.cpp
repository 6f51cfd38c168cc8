// Datetime and interval arithmetic: month ends in every month of a leap and a
// common year, random additions and differences against std::chrono and day
// numbers, the worked edge cases, and scaling and ratios of intervals.
#include "cal_test_util.hpp"

#include <random>

using namespace caltest;

namespace
{

long long seconds_of(const dec_t &interval_value, int qual)
{
    dec_t count;
    EXPECT_EQ(rinvtodec(&interval_value, qual, &count), 0);
    double d = 0;
    dectodbl(&count, &d);
    return static_cast<long long>(d);
}

} // namespace

TEST(Arithmetic, MonthEndsInEveryMonth)
{
    using namespace std::chrono;
    auto length = [](int y, int m) { return int(unsigned((year(y) / month(m) / last).day())); };
    const auto mq = static_cast<short>(qual_of("month(3) to month", true));
    for (int y : {2023, 2024})
        for (int m = 1; m <= 12; ++m)
            for (int d = 1; d <= length(y, m); ++d)
                for (int step : {1, -1, 13, -25}) {
                    const int total = y * 12 + (m - 1) + step, ty = total / 12, tm = total % 12 + 1;
                    dtime_t dt{QMR_YEAR_TO_DAY, make(QMR_YEAR_TO_DAY, {y, m, d})}, out, back;
                    intrvl_t inv{mq, make(mq, {0, std::abs(step)}, 0, step < 0 ? 0 : 1)};
                    ASSERT_EQ(dtaddinv(&dt, &inv, &out), 0);
                    qmr::Fields f = fields(out.value, QMR_YEAR_TO_DAY);
                    EXPECT_EQ((std::vector<long long>{f.v[0], f.v[1], f.v[2]}),
                              (std::vector<long long>{ty, tm, std::min(d, length(ty, tm))}))
                        << y << "-" << m << "-" << d << " + " << step;
                    // dtsubinv is the addition of the negated interval.
                    inv.value.sign = step < 0 ? 1 : 0;
                    ASSERT_EQ(dtsubinv(&dt, &inv, &back), 0);
                    EXPECT_TRUE(same(back.value, out.value));
                }
}

TEST(Arithmetic, WorkedCases)
{
    struct Row {
        const char *dq, *dtext, *iq, *itext;
        int direction;
        const char *want;
        int status;
    };
    constexpr int dt = QMR_E_BADDATETIME, yr = QMR_E_BADYEAR, qu = QMR_E_BADQUALIFIERS;
    const char *ytd = "year to day", *yts = "year to second", *htm = "hour to minute";
    // clang-format off
    const Row rows[] = {
        {ytd, "2024-01-31", "month to month", "1", 1, "2024-02-29", 0},
        {ytd, "2023-01-31", "month to month", "1", 1, "2023-02-28", 0},
        {ytd, "2024-03-01", "day to day", "1", -1, "2024-02-29", 0},
        {"month to day", "01-31", "month to month", "1", 1, "02-29", 0}, // no year: 29 days
        {"month to day", "12-31", "day to day", "1", 1, "", dt},
        {ytd, "9999-12-31", "day to day", "1", 1, "", yr},
        {ytd, "0001-01-01", "day to day", "1", -1, "", yr},
        {ytd, "2024-01-31", htm, "1:00", 1, "", qu},
        {htm, "23:00", "hour to hour", "2", 1, "", dt},
        {htm, "23:00", "hour to hour", "23", -1, "00:00", 0},
        {htm, "10:00", "day to hour", "0 1", 1, "", qu},
        {"minute to second", "59:00", "second(5) to second", "59", 1, "59:59", 0},
        {"minute to second", "59:00", "second(5) to second", "60", 1, "", dt},
        {"day to hour", "30 23", "hour to hour", "1", 1, "31 00", 0},
        {"day to hour", "31 23", "hour to hour", "1", 1, "", dt},
        {yts, "2024-12-31 23:59:59", "second to second", "1", 1, "2025-01-01 00:00:00", 0},
        {"year to fraction(3)", "2024-02-28 23:59:59.999", "second to fraction(3)", "0.001", 1,
         "2024-02-29 00:00:00.000", 0},
        {yts, "2024-03-31 00:00:00", "day(9) to second", "1 00:00:01", -1, "2024-03-29 23:59:59",
         0},
        {"year to month", "9999-12", "month to month", "1", 1, "", dt},
        {"year to month", "2024-12", "year to month", "1-01", 1, "2026-01", 0},
        {"month to day", "11-30", "month to month", "2", 1, "", dt},
        {"year to year", "2024", "year to year", "10", -1, "2014", 0},
        {yts, "2024-01-31 12:00:00", "day to day", "1", 1, "2024-02-01 12:00:00", 0},
        {"day to day", "15", "year to month", "0-01", 1, "", qu},
        {ytd, "2024-01-31", "day(9) to day", "999999999", 1, "", yr}};
    // clang-format on
    for (const Row &r : rows) {
        dtime_t in = datetime(r.dq, r.dtext), out;
        intrvl_t inv = interval(r.iq, r.itext);
        int status = r.direction > 0 ? dtaddinv(&in, &inv, &out) : dtsubinv(&in, &inv, &out);
        EXPECT_EQ(status, r.status) << r.dtext << (r.direction > 0 ? " + " : " - ") << r.itext;
        EXPECT_EQ(out.qualifier, in.qualifier);
        if (r.status == 0) {
            EXPECT_EQ(dt_text(out.value, out.qualifier), r.want) << r.dtext << " +- " << r.itext;
        } else {
            EXPECT_EQ(out.value.sign, -1) << "a failure leaves null";
        }
    }
}

TEST(Arithmetic, AdditionAgainstChrono)
{
    using namespace std::chrono;
    std::mt19937_64 rng(77);
    std::uniform_int_distribution<long long> when(-62135596800LL + 86400LL * 366 * 301,
                                                  253402300799LL - 86400LL * 366 * 301);
    std::uniform_int_distribution<long long> delta(-86400LL * 365 * 300, 86400LL * 365 * 300);
    const int qual = QMR_YEAR_TO_SECOND, iq = qual_of("second(9) to second", true),
              dq = qual_of("day(6) to second", true);
    // A moment of qual: the day's fields and the seconds into it.
    auto moment = [](sys_seconds tp) {
        const auto day_point = floor<days>(tp);
        const year_month_day ymd(day_point);
        const hh_mm_ss hms(tp - day_point);
        return make(qual, {int(ymd.year()), unsigned(ymd.month()), unsigned(ymd.day()),
                           hms.hours().count(), hms.minutes().count(), hms.seconds().count()});
    };
    for (int i = 0; i < 20000; ++i) {
        const long long t = when(rng), s = delta(rng) / (i % 2 == 0 ? 1 : 1000);
        const auto tp = sys_seconds(seconds(t));
        dec_t dt = moment(tp), out;
        const long long mag = s < 0 ? -s : s;
        const int use = mag < 999999999 ? iq : dq, sign = s < 0 ? 0 : 1;
        dec_t inv =
            use == iq ? make(iq, {0, 0, 0, 0, 0, mag}, 0, sign)
                      : make(dq, {0, 0, mag / 86400, mag % 86400 / 3600, mag % 3600 / 60, mag % 60},
                             0, sign);
        ASSERT_EQ(rdtaddinv(&dt, qual, &inv, use, &out), 0);
        ASSERT_EQ(dt_text(out, qual), dt_text(moment(tp + seconds(s)), qual)) << t << " + " << s;
        // And the difference of the two gives the interval back.
        intrvl_t diff;
        diff.qualifier = static_cast<short>(qual_of("day(9) to second", true));
        dtime_t a{static_cast<short>(qual), out}, b{static_cast<short>(qual), dt};
        ASSERT_EQ(dtsub(&a, &b, &diff), 0);
        ASSERT_EQ(seconds_of(diff.value, diff.qualifier), s);
    }
}

TEST(Arithmetic, DifferencesAgainstDayNumbers)
{
    std::mt19937 rng(4242);
    std::uniform_int_distribution<int> day(QMR_DATE_MIN, QMR_DATE_MAX), sec(0, 86399),
        frac(0, 99999);
    const int out_q = qual_of("day(9) to fraction(5)", true);
    // The datetime of day number j, s seconds and f 10^-5 seconds into it.
    auto at = [](int j, int s, int f) {
        short mdy[3];
        rjulmdy(j, mdy);
        return dtime_t{
            QMR_YEAR_TO_F5,
            make(QMR_YEAR_TO_F5, {mdy[2], mdy[0], mdy[1], s / 3600, s / 60 % 60, s % 60}, f)};
    };
    for (int i = 0; i < 20000; ++i) {
        const int ja = day(rng), jb = day(rng), sa = sec(rng), sb = sec(rng), fa = frac(rng),
                  fb = frac(rng);
        dtime_t a = at(ja, sa, fa), b = at(jb, sb, fb);
        intrvl_t d;
        d.qualifier = static_cast<short>(out_q);
        ASSERT_EQ(dtsub(&a, &b, &d), 0);
        const __int128 want = (__int128(ja - jb) * 86400 + (sa - sb)) * 100000 + (fa - fb);
        const qmr::Fields f = fields(d.value, out_q);
        const __int128 got =
            ((__int128(f.v[2]) * 86400 + f.v[3] * 3600 + f.v[4] * 60 + f.v[5]) * 100000 + f.frac) *
            (f.sign == 0 ? -1 : 1);
        ASSERT_TRUE(got == want) << ja << " " << jb;
    }
}

TEST(Arithmetic, DifferenceQualifiers)
{
    struct Row {
        const char *q, *a, *b, *out_q, *want;
        int status;
    };
    // clang-format off
    const Row rows[] = {
        {"year to month", "2024-03", "1999-11", "year(9) to month", "        24-04", 0},
        {"year to month", "1999-11", "2024-03", "month(5) to month", "  -292", 0},
        {"year to year", "9999", "0001", "year(4) to year", " 9998", 0},
        {"month to month", "03", "11", "month to month", " -8", 0},
        {"year to day", "9999-12-31", "0001-01-01", "day(7) to day", " 3652058", 0},
        {"year to day", "9999-12-31", "0001-01-01", "day(6) to day", "", QMR_E_INTVOVERFLOW},
        {"hour to second", "01:00:00", "23:59:59", "hour to second", "-22:59:59", 0},
        {"day to minute", "31 00:00", "01 23:59", "day to minute", " 29 00:01", 0},
        {"fraction to fraction(3)", ".250", ".750", "fraction to fraction(3)", "-.500", 0},
        {"year to second", "2024-01-01 00:00:00", "2023-01-01 00:00:00", "year to month", "",
         QMR_E_BADQUALIFIERS},
        {"year to second", "2024-03-01 00:00:00", "2024-02-28 12:00:00", "hour(3) to minute",
         "  36:00", 0}};
    // clang-format on
    for (const Row &r : rows) {
        dtime_t a = datetime(r.q, r.a), b = datetime(r.q, r.b);
        intrvl_t out;
        out.qualifier = static_cast<short>(qual_of(r.out_q, true));
        EXPECT_EQ(dtsub(&a, &b, &out), r.status) << r.a << " - " << r.b;
        if (r.status == 0) {
            EXPECT_EQ(inv_text(out.value, out.qualifier), r.want) << r.a << " - " << r.b;
        }
    }
    // b is extended to a's qualifier first; fields it lacks come from now.
    dtime_t fixed{QMR_YEAR_TO_F5, make(QMR_YEAR_TO_F5, {2030, 6, 15, 12, 0, 0})};
    rdtsetcurr(&fixed);
    dtime_t a = datetime("year to hour", "2030-06-16 12"), b = datetime("hour to hour", "06");
    intrvl_t out;
    out.qualifier = static_cast<short>(qual_of("day to hour", true));
    EXPECT_EQ(dtsub(&a, &b, &out), 0);
    EXPECT_EQ(inv_text(out.value, out.qualifier), "  1 06");
    rdtsetcurr(nullptr);
}

TEST(Arithmetic, IntervalCountsAndScaling)
{
    dec_t count, out;
    intrvl_t inv = interval("day to fraction(3)", "2 03:04:05.678");
    ASSERT_EQ(rinvtodec(&inv.value, inv.qualifier, &count), 0);
    double d = 0;
    dectodbl(&count, &d);
    EXPECT_DOUBLE_EQ(d, 183845.678);
    ASSERT_EQ(rdectoinv(&count, &out, inv.qualifier), 0);
    EXPECT_TRUE(same(out, inv.value));
    // 2400 hours do not fit DAY(2) TO HOUR.
    deccvlong(2400, &count);
    EXPECT_EQ(rdectoinv(&count, &out, qual_of("day to hour", true)), QMR_E_INTVOVERFLOW);
    EXPECT_TRUE(dec_is_zero(&out));
    deccvlong(2399, &count);
    EXPECT_EQ(rdectoinv(&count, &out, qual_of("day to hour", true)), 0);
    EXPECT_EQ(inv_text(out, qual_of("day to hour", true)), " 99 23");
    // Fraction digits past the qualifier are cut, not rounded.
    deccvdbl(-1.23999, &count);
    ASSERT_EQ(rdectoinv(&count, &out, qual_of("second to fraction(2)", true)), 0);
    EXPECT_EQ(inv_text(out, qual_of("second to fraction(2)", true)), " -1.23");

    struct Row {
        const char *q, *text;
        double factor;
        bool divide;
        const char *out_q, *want;
        int status;
    } rows[] = {
        {"day to hour", "1 12", 2, false, "day to hour", "  3 00", 0},
        {"day to hour", "1 12", 0.5, false, "hour(3) to minute", "  18:00", 0},
        {"hour to minute", "10:00", 3, true, "hour to second", "  3:20:00", 0},
        {"year to month", "1-06", 4, false, "year to month", "    6-00", 0},
        {"year to month", "1-06", -1, false, "month(3) to month", " -18", 0},
        {"day(9) to day", "999999999", 10, false, "day(9) to day", "", QMR_E_INTVOVERFLOW},
        {"hour(9) to hour", "999999999", 10, false, "day(9) to hour", " 416666666 06", 0},
        {"day to hour", "1 00", 0, true, "day to hour", "", QMR_E_DIVZERO},
        {"day to hour", "1 00", 1, false, "year to month", "", QMR_E_BADQUALIFIERS},
    };
    for (const Row &r : rows) {
        intrvl_t in = interval(r.q, r.text), res;
        res.qualifier = static_cast<short>(qual_of(r.out_q, true));
        int status = r.divide ? invdivdbl(&in, r.factor, &res) : invmuldbl(&in, r.factor, &res);
        EXPECT_EQ(status, r.status) << r.text << (r.divide ? " / " : " * ") << r.factor;
        if (r.status == 0 && status == 0) {
            EXPECT_EQ(inv_text(res.value, res.qualifier), r.want) << r.text << " * " << r.factor;
        }
    }
}

TEST(Arithmetic, RatiosInTheCommonQualifier)
{
    struct Row {
        const char *qa, *a, *qb, *b;
        double want;
        int status;
    } rows[] = {
        {"day to hour", "1 12", "minute to second", "30:00", 72, 0},
        {"day(9) to day", "999999999", "second to fraction(5)", "0.00001",
         999999999.0 * 86400 * 100000, 0},
        {"hour(9) to hour", "999999999", "day(9) to day", "999999999", 1.0 / 24, 0},
        {"year(9) to year", "999999999", "month to month", "1", 999999999.0 * 12, 0},
        {"year to month", "1-06", "day to day", "1", 0, QMR_E_BADQUALIFIERS},
        {"day to day", "1", "hour to hour", "0", 0, QMR_E_DIVZERO},
    };
    for (const Row &r : rows) {
        intrvl_t a = interval(r.qa, r.a), b = interval(r.qb, r.b);
        dec_t q;
        EXPECT_EQ(invdivinv(&a, &b, &q), r.status) << r.a << " / " << r.b;
        if (r.status == 0) {
            double d = 0;
            dectodbl(&q, &d);
            EXPECT_NEAR(d / r.want, 1.0, 1e-12) << r.a << " / " << r.b;
        }
    }
}

TEST(Arithmetic, NullsPropagate)
{
    dtime_t dt = datetime("year to day", "2024-01-31"), null_dt = dt, out;
    intrvl_t inv = interval("day to day", "1"), null_inv = inv, iout;
    qmr::set_null(&null_dt.value);
    qmr::set_null(&null_inv.value);
    // A call that succeeds with a null result.
    auto null_result = [](const char *what, int status, const dec_t &result) {
        EXPECT_EQ(status, 0) << what;
        EXPECT_EQ(result.sign, -1) << what;
    };
    null_result("null + interval", dtaddinv(&null_dt, &inv, &out), out.value);
    null_result("datetime + null", dtaddinv(&dt, &null_inv, &out), out.value);
    null_result("datetime - null", dtsubinv(&dt, &null_inv, &out), out.value);
    iout.qualifier = inv.qualifier;
    null_result("datetime - null datetime", dtsub(&dt, &null_dt, &iout), iout.value);
    dec_t two, q;
    deccvlong(2, &two);
    null_result("null * 2", invmuldec(&null_inv, &two, &iout), iout.value);
    null_result("interval / null", invdivinv(&inv, &null_inv, &q), q);
    null_result("null to decimal", rinvtodec(&null_inv.value, null_inv.qualifier, &q), q);
    null_result("null from decimal", rdectoinv(&q, &iout.value, iout.qualifier), iout.value);
    null_result("copy of null",
                rinvcopy(&null_inv.value, null_inv.qualifier, &q, QMR_DAY9_TO_SECOND), q);
    char buf[64] = "x";
    EXPECT_EQ(rdtimestr(&null_dt.value, null_dt.qualifier, buf), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_EQ(rinvstr(&null_inv.value, null_inv.qualifier, buf), 0);
    EXPECT_STREQ(buf, "");
}
