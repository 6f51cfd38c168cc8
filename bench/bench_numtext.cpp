// Number text and INT8 arithmetic beside their peers: deccvasc and dectoasc on
// 10- and 30-digit numbers next to std::from_chars/std::to_chars on double
// (and decNumber's string conversions when installed), the BIGINT text
// routines next to std::from_chars/std::to_chars on int64_t, and INT8
// add, multiply and compare next to native int64_t.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdint>
#include <cstring>

#include "qmr/bigint.h"
#include "qmr/decimal.h"
#include "qmr/int8.h"

#if defined(QMR_BENCH_DECNUMBER)
extern "C" {
#define DECNUMDIGITS 34
#include <decNumber.h>
}
#endif

namespace
{

const char text10[] = "12345.67890";
const char text30[] = "123456789012345.678901234567890";

void BM_deccvasc(benchmark::State &state, const char *text)
{
    const int len = static_cast<int>(std::strlen(text));
    dec_t d{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(deccvasc(text, len, &d));
        benchmark::DoNotOptimize(d);
    }
}
BENCHMARK_CAPTURE(BM_deccvasc, 10digits, text10);
BENCHMARK_CAPTURE(BM_deccvasc, 30digits, text30);

void BM_from_chars_double(benchmark::State &state, const char *text)
{
    const std::size_t len = std::strlen(text);
    double x = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::from_chars(text, text + len, x));
        benchmark::DoNotOptimize(x);
    }
}
BENCHMARK_CAPTURE(BM_from_chars_double, 10digits, text10);
BENCHMARK_CAPTURE(BM_from_chars_double, 30digits, text30);

void BM_dectoasc(benchmark::State &state, const char *text)
{
    dec_t d{};
    deccvasc(text, static_cast<int>(std::strlen(text)), &d);
    char out[40];
    for (auto _ : state) {
        benchmark::DoNotOptimize(dectoasc(&d, out, 40, -1));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK_CAPTURE(BM_dectoasc, 10digits, text10);
BENCHMARK_CAPTURE(BM_dectoasc, 30digits, text30);

void BM_to_chars_double(benchmark::State &state, const char *text)
{
    double x = 0;
    std::from_chars(text, text + std::strlen(text), x);
    char out[40];
    for (auto _ : state) {
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(std::to_chars(out, out + 40, x));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK_CAPTURE(BM_to_chars_double, 10digits, text10);
BENCHMARK_CAPTURE(BM_to_chars_double, 30digits, text30);

#if defined(QMR_BENCH_DECNUMBER)
void BM_decNumberFromString(benchmark::State &state, const char *text)
{
    decContext ctx;
    decContextDefault(&ctx, DEC_INIT_DECIMAL128);
    decNumber n;
    for (auto _ : state) {
        benchmark::DoNotOptimize(decNumberFromString(&n, text, &ctx));
        benchmark::DoNotOptimize(n);
    }
}
BENCHMARK_CAPTURE(BM_decNumberFromString, 10digits, text10);
BENCHMARK_CAPTURE(BM_decNumberFromString, 30digits, text30);

void BM_decNumberToString(benchmark::State &state, const char *text)
{
    decContext ctx;
    decContextDefault(&ctx, DEC_INIT_DECIMAL128);
    decNumber n;
    decNumberFromString(&n, text, &ctx);
    char out[DECNUMDIGITS + 14];
    for (auto _ : state) {
        benchmark::DoNotOptimize(decNumberToString(&n, out));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK_CAPTURE(BM_decNumberToString, 10digits, text10);
BENCHMARK_CAPTURE(BM_decNumberToString, 30digits, text30);
#endif

const char int_text[] = "-1234567890123456789";

void BM_bigintcvasc(benchmark::State &state)
{
    const int len = static_cast<int>(std::strlen(int_text));
    std::int64_t v = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bigintcvasc(int_text, len, &v));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_bigintcvasc);

void BM_from_chars_int64(benchmark::State &state)
{
    const std::size_t len = std::strlen(int_text);
    std::int64_t v = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::from_chars(int_text, int_text + len, v));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_from_chars_int64);

void BM_biginttoasc(benchmark::State &state)
{
    std::int64_t v = -1234567890123456789;
    char out[32];
    for (auto _ : state) {
        benchmark::DoNotOptimize(v);
        benchmark::DoNotOptimize(biginttoasc(v, out, 25, 10));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_biginttoasc);

void BM_to_chars_int64(benchmark::State &state)
{
    std::int64_t v = -1234567890123456789;
    char out[32];
    for (auto _ : state) {
        benchmark::DoNotOptimize(v);
        benchmark::DoNotOptimize(std::to_chars(out, out + 32, v));
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_to_chars_int64);

const qmr_int8_t int8_a = {{0x89ABCDEFu, 0x01234567u}, 1};
const qmr_int8_t int8_b = {{0x12345u, 0}, -1};

using Int8Op = int (*)(const qmr_int8_t *, const qmr_int8_t *, qmr_int8_t *);

void BM_int8(benchmark::State &state, Int8Op op)
{
    qmr_int8_t a = int8_a, b = int8_b, r;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(op(&a, &b, &r));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_int8, add, qmr_int8add);
BENCHMARK_CAPTURE(BM_int8, mul, qmr_int8mul);

void BM_int8cmp(benchmark::State &state)
{
    qmr_int8_t a = int8_a, b = int8_b;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(qmr_int8cmp(&a, &b));
    }
}
BENCHMARK(BM_int8cmp);

// Native int64_t with the same overflow checks a careful caller makes.
void BM_native(benchmark::State &state, int op)
{
    std::int64_t a = 0x0123456789ABCDEF, b = -0x12345, r = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        bool overflow;
        if (op == 0)
            overflow = __builtin_add_overflow(a, b, &r);
        else if (op == 1)
            overflow = __builtin_mul_overflow(a, b, &r);
        else
            r = (a > b) - (a < b), overflow = false;
        benchmark::DoNotOptimize(overflow);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_native, add, 0);
BENCHMARK_CAPTURE(BM_native, mul, 1);
BENCHMARK_CAPTURE(BM_native, cmp, 2);

// The same native work behind a function call of the INT8 routines' shape,
// reached through a pointer the optimiser cannot see through: the floor for
// any routine that is not inlined into its caller.
int native_add(const std::int64_t *a, const std::int64_t *b, std::int64_t *r)
{
    return __builtin_add_overflow(*a, *b, r) ? -1284 : 0;
}
int native_mul(const std::int64_t *a, const std::int64_t *b, std::int64_t *r)
{
    return __builtin_mul_overflow(*a, *b, r) ? -1284 : 0;
}
using NativeOp = int (*)(const std::int64_t *, const std::int64_t *, std::int64_t *);
NativeOp volatile native_ops[] = {native_add, native_mul};

void BM_native_call(benchmark::State &state, int op)
{
    std::int64_t a = 0x0123456789ABCDEF, b = -0x12345, r = 0;
    const NativeOp f = native_ops[op];
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(f(&a, &b, &r));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_native_call, add, 0);
BENCHMARK_CAPTURE(BM_native_call, mul, 1);

} // namespace
