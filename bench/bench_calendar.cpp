// The calendar beside std::chrono: day-number conversions both ways, today's
// date from its cache, the YEAR TO SECOND text both ways, and a datetime plus
// a day-time interval.
#include <benchmark/benchmark.h>

#include <chrono>

#include "qmr/date.h"
#include "qmr/datetime.h"

namespace
{

// A walk over day numbers with a large odd stride, so that every call sees a
// different date of the whole range.
constexpr int span = QMR_DATE_MAX - QMR_DATE_MIN + 1;
inline int next_day(int i)
{
    return QMR_DATE_MIN + static_cast<int>((static_cast<long long>(i) * 7919) % span);
}

void BM_rjulmdy(benchmark::State &state)
{
    int i = 0;
    short mdy[3];
    for (auto _ : state) {
        benchmark::DoNotOptimize(rjulmdy(next_day(i++), mdy));
        benchmark::DoNotOptimize(mdy);
    }
}
BENCHMARK(BM_rjulmdy);

void BM_chrono_civil_from_days(benchmark::State &state)
{
    using namespace std::chrono;
    int i = 0;
    for (auto _ : state) {
        year_month_day ymd(sys_days(days(next_day(i++) - 25568)));
        benchmark::DoNotOptimize(ymd);
    }
}
BENCHMARK(BM_chrono_civil_from_days);

void BM_rmdyjul(benchmark::State &state)
{
    short mdy[3] = {2, 29, 2024};
    int j = 0, i = 0;
    for (auto _ : state) {
        mdy[2] = static_cast<short>(1 + (i++ * 37) % 9999);
        mdy[0] = static_cast<short>(1 + i % 12);
        benchmark::DoNotOptimize(rmdyjul(mdy, &j));
        benchmark::DoNotOptimize(j);
    }
}
BENCHMARK(BM_rmdyjul);

void BM_chrono_days_from_civil(benchmark::State &state)
{
    using namespace std::chrono;
    int i = 0;
    for (auto _ : state) {
        int y = 1 + (i++ * 37) % 9999;
        unsigned m = static_cast<unsigned>(1 + i % 12);
        auto d = sys_days(year(y) / month(m) / day(29)).time_since_epoch().count();
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK(BM_chrono_days_from_civil);

void BM_rtoday_cached(benchmark::State &state)
{
    int j = 0;
    rtoday(&j);
    for (auto _ : state) {
        rtoday(&j);
        benchmark::DoNotOptimize(j);
    }
}
BENCHMARK(BM_rtoday_cached);

void BM_rstrdtime_year_to_second(benchmark::State &state)
{
    dec_t d;
    for (auto _ : state) {
        benchmark::DoNotOptimize(rstrdtime("2024-01-31 12:34:56", &d, QMR_YEAR_TO_SECOND));
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK(BM_rstrdtime_year_to_second);

void BM_rdtimestr_year_to_second(benchmark::State &state)
{
    dec_t d;
    rstrdtime("2024-01-31 12:34:56", &d, QMR_YEAR_TO_SECOND);
    char out[32];
    for (auto _ : state) {
        benchmark::DoNotOptimize(rdtimestr(&d, QMR_YEAR_TO_SECOND, out));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_rdtimestr_year_to_second);

void BM_dtaddinv_day_to_second(benchmark::State &state)
{
    dtime_t dt{QMR_YEAR_TO_SECOND, {}}, out;
    intrvl_t inv{QMR_DAY9_TO_SECOND, {}};
    rstrdtime("2024-01-31 12:34:56", &dt.value, QMR_YEAR_TO_SECOND);
    rstrinv("40 13:30:15", &inv.value, QMR_DAY9_TO_SECOND);
    for (auto _ : state) {
        benchmark::DoNotOptimize(dtaddinv(&dt, &inv, &out));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_dtaddinv_day_to_second);

void BM_chrono_add_seconds(benchmark::State &state)
{
    using namespace std::chrono;
    auto t = sys_days(year(2024) / 1 / 31) + hours(12) + minutes(34) + seconds(56);
    auto d = days(40) + hours(13) + minutes(30) + seconds(15);
    for (auto _ : state) {
        auto r = t + d;
        auto day_point = floor<days>(r);
        year_month_day ymd(day_point);
        hh_mm_ss hms(r - day_point);
        benchmark::DoNotOptimize(ymd);
        benchmark::DoNotOptimize(hms);
    }
}
BENCHMARK(BM_chrono_add_seconds);

} // namespace
