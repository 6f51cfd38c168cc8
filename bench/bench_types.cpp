// Type catalogue calls beside trivial baselines: rtypname against a plain
// table lookup, risnull against a plain 4-byte compare.
#include <benchmark/benchmark.h>

#include "baselines.hpp"
#include "qmr/types.h"

namespace
{

void BM_PlainNameLookup(benchmark::State &state)
{
    int code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qmrbench::plain_name_lookup(code));
        code = (code + 1) & 7;
    }
}
BENCHMARK(BM_PlainNameLookup);

void BM_Rtypname(benchmark::State &state)
{
    int code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(rtypname(code));
        code = (code + 1) & 7;
    }
}
BENCHMARK(BM_Rtypname);

void BM_PlainIntIsnull(benchmark::State &state)
{
    char buf[4] = {static_cast<char>(0x80), 0, 0, 0};
    for (auto _ : state)
        benchmark::DoNotOptimize(qmrbench::plain_int_isnull(buf));
}
BENCHMARK(BM_PlainIntIsnull);

void BM_RisnullInteger(benchmark::State &state)
{
    char buf[4];
    rsetnull(QMR_SQL_INTEGER, buf);
    for (auto _ : state)
        benchmark::DoNotOptimize(risnull(QMR_SQL_INTEGER, buf));
}
BENCHMARK(BM_RisnullInteger);

void BM_RisnullDecimal(benchmark::State &state)
{
    char buf[22];
    rsetnull(QMR_C_DECIMAL, buf);
    for (auto _ : state)
        benchmark::DoNotOptimize(risnull(QMR_C_DECIMAL, buf));
}
BENCHMARK(BM_RisnullDecimal);

} // namespace
