// Decimal arithmetic on 30-digit and short operands beside the libstdc++
// decimal128 class and an __int128 floor; the other peers are in
// bench_decimal_peers.cpp.
#include <benchmark/benchmark.h>

#include "qmr/decimal.h"

#if defined(__GNUC__) && !defined(__clang__)
#include <decimal/decimal>
#endif

namespace
{

// Builds a decimal from base-100 digit pairs through the library's normaliser.
dec_t make(int sign, int exponent, std::initializer_list<int> pairs)
{
    char bytes[16];
    int n = 0;
    for (int p : pairs)
        bytes[n++] = static_cast<char>(p);
    dec_t d;
    decload(&d, sign, exponent, bytes, n);
    return d;
}

// 123456789012345.678901234567890 and 987654321098765.432109876543210
const dec_t long_a = make(1, 8, {1, 23, 45, 67, 89, 1, 23, 45, 67, 89, 1, 23, 45, 67, 89});
const dec_t long_b = make(1, 8, {9, 87, 65, 43, 21, 9, 87, 65, 43, 21, 9, 87, 65, 43, 21});
const dec_t short_a = make(1, 2, {1, 23, 45}); // 123.45
const dec_t short_b = make(1, 1, {67, 89});    // 67.89

using DecOp = int (*)(const dec_t *, const dec_t *, dec_t *);

void BM_Dec(benchmark::State &state, DecOp op, const dec_t &a, const dec_t &b)
{
    dec_t r;
    for (auto _ : state) {
        benchmark::DoNotOptimize(op(&a, &b, &r));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_Dec, add_30digits, decadd, long_a, long_b);
BENCHMARK_CAPTURE(BM_Dec, sub_30digits, decsub, long_a, long_b);
BENCHMARK_CAPTURE(BM_Dec, mul_30digits, decmul, long_a, long_b);
BENCHMARK_CAPTURE(BM_Dec, div_30digits, decdiv, long_a, long_b);
BENCHMARK_CAPTURE(BM_Dec, add_short, decadd, short_a, short_b);
BENCHMARK_CAPTURE(BM_Dec, sub_short, decsub, short_a, short_b);
BENCHMARK_CAPTURE(BM_Dec, mul_short, decmul, short_a, short_b);
BENCHMARK_CAPTURE(BM_Dec, div_short, decdiv, short_a, short_b);

void BM_DecCmp(benchmark::State &state, const dec_t &a, const dec_t &b)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(deccmp(&a, &b));
}
BENCHMARK_CAPTURE(BM_DecCmp, cmp_30digits, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecCmp, cmp_short, short_a, short_b);

// Rounding to 2 decimal places (half away from zero) of a copy of the operand.
void BM_DecRound(benchmark::State &state, const dec_t &a)
{
    for (auto _ : state) {
        dec_t d = a;
        decround(&d, 2);
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK_CAPTURE(BM_DecRound, round2_30digits, long_a);
BENCHMARK_CAPTURE(BM_DecRound, round2_short, short_a);

// A DECIMAL(32) column's 17 stored bytes written and read back.
void BM_DecStoreLoad(benchmark::State &state, const dec_t &a)
{
    char stored[17];
    dec_t d;
    for (auto _ : state) {
        stdecimal(&a, stored, sizeof stored);
        benchmark::DoNotOptimize(lddecimal(stored, sizeof stored, &d));
    }
}
BENCHMARK_CAPTURE(BM_DecStoreLoad, storeload_30digits, long_a);
BENCHMARK_CAPTURE(BM_DecStoreLoad, storeload_short, short_a);

#if defined(__GNUC__) && !defined(__clang__)
using std::decimal::decimal128;

// decimal128 holds 34 digits: the same 30-digit operands fit exactly.
decimal128 d128(long long whole, long long fraction_15_digits)
{
    return std::decimal::make_decimal128(whole, 0) +
           std::decimal::make_decimal128(fraction_15_digits, -15);
}

template <typename Op> void BM_D128(benchmark::State &state, Op op)
{
    decimal128 a = d128(123456789012345LL, 678901234567890LL);
    decimal128 b = d128(987654321098765LL, 432109876543210LL);
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        decimal128 r = op(a, b);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_D128, add_30digits, [](decimal128 x, decimal128 y) { return x + y; });
BENCHMARK_CAPTURE(BM_D128, sub_30digits, [](decimal128 x, decimal128 y) { return x - y; });
BENCHMARK_CAPTURE(BM_D128, mul_30digits, [](decimal128 x, decimal128 y) { return x * y; });
BENCHMARK_CAPTURE(BM_D128, div_30digits, [](decimal128 x, decimal128 y) { return x / y; });
BENCHMARK_CAPTURE(BM_D128, cmp_30digits, [](decimal128 x, decimal128 y) { return x < y ? x : y; });
#endif

// The floor: the same magnitudes as scaled 128-bit integers.
template <typename Op> void BM_Int128(benchmark::State &state, Op op)
{
    volatile __int128 a = static_cast<__int128>(123456789012345678ULL) * 1000000000000ULL;
    volatile __int128 b = static_cast<__int128>(987654321098765432ULL) * 1000000000000ULL;
    for (auto _ : state) {
        __int128 r = op(a, b);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_Int128, add, [](__int128 x, __int128 y) { return x + y; });
BENCHMARK_CAPTURE(BM_Int128, mul, [](__int128 x, __int128 y) { return x * (y >> 64); });
BENCHMARK_CAPTURE(BM_Int128, div, [](__int128 x, __int128 y) { return y / (x >> 40); });

} // namespace
