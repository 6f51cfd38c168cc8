// Decimal and double conversions beside the standard library's shortest
// std::to_chars and correctly rounded std::from_chars, on a short money-like
// value, a 17-digit double and a 32-digit decimal.
#include <benchmark/benchmark.h>

#include "qmr/decimal.h"

#include <charconv>

namespace
{

const double doubles[] = {123.45, 0.1 + 0.2, 6.02214076e23};

void BM_DecCvDbl(benchmark::State &state)
{
    const double v = doubles[state.range(0)];
    dec_t d;
    for (auto _ : state) {
        benchmark::DoNotOptimize(deccvdbl(v, &d));
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK(BM_DecCvDbl)->DenseRange(0, 2);

void BM_ToChars(benchmark::State &state)
{
    const double v = doubles[state.range(0)];
    char text[32];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::to_chars(text, text + sizeof text, v).ptr);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_ToChars)->DenseRange(0, 2);

// 123.45, 0.30000000000000004 and 1234567890123456.7890123456789012
dec_t decimal_of(int which)
{
    static const char pairs[][16] = {
        {1, 23, 45},
        {30, 0, 0, 0, 0, 0, 0, 0, 40},
        {12, 34, 56, 78, 90, 12, 34, 56, 78, 90, 12, 34, 56, 78, 90, 12}};
    static const int counts[] = {3, 9, 16}, exponents[] = {2, 0, 8};
    dec_t d;
    decload(&d, 1, exponents[which], pairs[which], counts[which]);
    return d;
}

const char *const texts[] = {"12345e-2", "30000000000000004e-17",
                             "12345678901234567890123456789012e-16"};

void BM_DecToDbl(benchmark::State &state)
{
    const dec_t d = decimal_of(static_cast<int>(state.range(0)));
    double v;
    for (auto _ : state) {
        benchmark::DoNotOptimize(dectodbl(&d, &v));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_DecToDbl)->DenseRange(0, 2);

void BM_FromChars(benchmark::State &state)
{
    const char *text = texts[state.range(0)];
    const char *end = text + std::char_traits<char>::length(text);
    double v;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(std::from_chars(text, end, v).ptr);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_FromChars)->DenseRange(0, 2);

void BM_DecFcvt(benchmark::State &state)
{
    const dec_t d = decimal_of(2);
    int decpt, sign;
    for (auto _ : state)
        benchmark::DoNotOptimize(decfcvt(&d, 4, &decpt, &sign));
}
BENCHMARK(BM_DecFcvt);

void BM_RsToD(benchmark::State &state)
{
    double v;
    for (auto _ : state) {
        benchmark::DoNotOptimize(rstod("  123.45 ", &v));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_RsToD);

} // namespace
