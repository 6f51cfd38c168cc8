// The cost of reaching the thread context on the hot path, beside a plain
// thread_local read behind a function call.
#include <benchmark/benchmark.h>

#include "baselines.hpp"
#include "qmr/context.h"

namespace
{

void BM_ThreadLocalBaseline(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(qmrbench::thread_local_read());
}
BENCHMARK(BM_ThreadLocalBaseline);

void BM_CheckAlltcbInit(benchmark::State &state)
{
    CheckAlltcbInit(); // the first call makes the context; measured: later calls
    for (auto _ : state)
        benchmark::DoNotOptimize(CheckAlltcbInit());
}
BENCHMARK(BM_CheckAlltcbInit);

void BM_GetToerrno(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(get_toerrno());
}
BENCHMARK(BM_GetToerrno);

void BM_CheckAlltcbInitThreads(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CheckAlltcbInit());
}
BENCHMARK(BM_CheckAlltcbInitThreads)->Threads(2);

} // namespace
