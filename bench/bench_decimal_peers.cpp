// Peers of the decimal arithmetic, on the same 30-digit and short operands as
// the library's decimals in bench_decimal.cpp: decNumber with a 34-digit
// context, GCC's built-in 128-bit decimal floating type (the type beneath the
// libstdc++ decimal128 class) and Boost.Multiprecision cpp_dec_float<32>.
// Each is compiled only where its package or compiler support is present.
#include <benchmark/benchmark.h>

#if defined(QMR_BENCH_DECNUMBER)
#define DECNUMDIGITS 34
extern "C" {
#include <decNumber.h>
}
#endif

#if defined(QMR_BENCH_BOOST)
#include <boost/multiprecision/cpp_dec_float.hpp>
#endif

#include <string>

namespace
{

// 123456789012345.678901234567890 and 987654321098765.432109876543210, and
// the short pair 123.45 and 67.89: the operands of bench_decimal.cpp.
constexpr const char *long_a = "123456789012345.678901234567890";
constexpr const char *long_b = "987654321098765.432109876543210";
constexpr const char *short_a = "123.45";
constexpr const char *short_b = "67.89";

#if defined(QMR_BENCH_DECNUMBER)

// 34 digits, half-up rounding like the library's decround, no traps.
decContext context34()
{
    decContext set;
    decContextDefault(&set, DEC_INIT_DECIMAL128);
    set.traps = 0;
    set.round = DEC_ROUND_HALF_UP;
    return set;
}

using DecNumberOp = decNumber *(*)(decNumber *, const decNumber *, const decNumber *, decContext *);

void BM_DecNumber(benchmark::State &state, DecNumberOp op, const char *x, const char *y)
{
    decContext set = context34();
    decNumber a, b, r;
    decNumberFromString(&a, x, &set);
    decNumberFromString(&b, y, &set);
    for (auto _ : state) {
        benchmark::DoNotOptimize(op(&r, &a, &b, &set));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_DecNumber, add_30digits, decNumberAdd, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecNumber, sub_30digits, decNumberSubtract, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecNumber, mul_30digits, decNumberMultiply, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecNumber, div_30digits, decNumberDivide, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecNumber, add_short, decNumberAdd, short_a, short_b);
BENCHMARK_CAPTURE(BM_DecNumber, sub_short, decNumberSubtract, short_a, short_b);
BENCHMARK_CAPTURE(BM_DecNumber, mul_short, decNumberMultiply, short_a, short_b);
BENCHMARK_CAPTURE(BM_DecNumber, div_short, decNumberDivide, short_a, short_b);

// The order as an int, as deccmp gives it: compare, then read the result.
void BM_DecNumberCmp(benchmark::State &state, const char *x, const char *y)
{
    decContext set = context34();
    decNumber a, b, r;
    decNumberFromString(&a, x, &set);
    decNumberFromString(&b, y, &set);
    for (auto _ : state) {
        decNumberCompare(&r, &a, &b, &set);
        benchmark::DoNotOptimize(decNumberIsZero(&r) ? 0 : decNumberIsNegative(&r) ? -1 : 1);
    }
}
BENCHMARK_CAPTURE(BM_DecNumberCmp, cmp_30digits, long_a, long_b);
BENCHMARK_CAPTURE(BM_DecNumberCmp, cmp_short, short_a, short_b);

// Rounding to 2 decimal places, half up: quantize to 0.01.
void BM_DecNumberRound(benchmark::State &state, const char *x)
{
    decContext set = context34();
    decNumber a, q, r;
    decNumberFromString(&a, x, &set);
    decNumberFromString(&q, "0.01", &set);
    for (auto _ : state) {
        benchmark::DoNotOptimize(decNumberQuantize(&r, &a, &q, &set));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK_CAPTURE(BM_DecNumberRound, round2_30digits, long_a);
BENCHMARK_CAPTURE(BM_DecNumberRound, round2_short, short_a);

#endif

#if defined(__GNUC__) && !defined(__clang__)

// The compiler's own 128-bit decimal type (C's _Decimal128), the type the
// libstdc++ class wraps; its arithmetic is a call into the compiler runtime.
typedef float builtin_d128 __attribute__((mode(TD)));

// whole + fraction * 10^-15, exactly, from two integers
builtin_d128 builtin(long long whole, long long fraction, int places)
{
    builtin_d128 f = static_cast<builtin_d128>(fraction);
    for (int i = 0; i < places; ++i)
        f /= static_cast<builtin_d128>(10);
    return static_cast<builtin_d128>(whole) + f;
}

template <typename Op> void BM_Builtin128(benchmark::State &state, Op op, bool is_short)
{
    builtin_d128 a =
        is_short ? builtin(123, 45, 2) : builtin(123456789012345LL, 678901234567890LL, 15);
    builtin_d128 b =
        is_short ? builtin(67, 89, 2) : builtin(987654321098765LL, 432109876543210LL, 15);
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        auto r = op(a, b);
        benchmark::DoNotOptimize(r);
    }
}
constexpr auto b_add = [](builtin_d128 x, builtin_d128 y) { return x + y; };
constexpr auto b_sub = [](builtin_d128 x, builtin_d128 y) { return x - y; };
constexpr auto b_mul = [](builtin_d128 x, builtin_d128 y) { return x * y; };
constexpr auto b_div = [](builtin_d128 x, builtin_d128 y) { return x / y; };
constexpr auto b_cmp = [](builtin_d128 x, builtin_d128 y) { return x < y ? -1 : x > y ? 1 : 0; };
BENCHMARK_CAPTURE(BM_Builtin128, add_30digits, b_add, false);
BENCHMARK_CAPTURE(BM_Builtin128, sub_30digits, b_sub, false);
BENCHMARK_CAPTURE(BM_Builtin128, mul_30digits, b_mul, false);
BENCHMARK_CAPTURE(BM_Builtin128, div_30digits, b_div, false);
BENCHMARK_CAPTURE(BM_Builtin128, cmp_30digits, b_cmp, false);
BENCHMARK_CAPTURE(BM_Builtin128, add_short, b_add, true);
BENCHMARK_CAPTURE(BM_Builtin128, sub_short, b_sub, true);
BENCHMARK_CAPTURE(BM_Builtin128, mul_short, b_mul, true);
BENCHMARK_CAPTURE(BM_Builtin128, div_short, b_div, true);
BENCHMARK_CAPTURE(BM_Builtin128, cmp_short, b_cmp, true);

#endif

#if defined(QMR_BENCH_BOOST)

using cpp_dec32 = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<32>>;

template <typename Op>
void BM_CppDecFloat(benchmark::State &state, Op op, const char *x, const char *y)
{
    const cpp_dec32 a(x), b(y);
    cpp_dec32 r;
    for (auto _ : state) {
        op(r, a, b);
        benchmark::DoNotOptimize(r);
    }
}
constexpr auto c_add = [](cpp_dec32 &r, const cpp_dec32 &x, const cpp_dec32 &y) { r = x + y; };
constexpr auto c_sub = [](cpp_dec32 &r, const cpp_dec32 &x, const cpp_dec32 &y) { r = x - y; };
constexpr auto c_mul = [](cpp_dec32 &r, const cpp_dec32 &x, const cpp_dec32 &y) { r = x * y; };
constexpr auto c_div = [](cpp_dec32 &r, const cpp_dec32 &x, const cpp_dec32 &y) { r = x / y; };
BENCHMARK_CAPTURE(BM_CppDecFloat, add_30digits, c_add, long_a, long_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, sub_30digits, c_sub, long_a, long_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, mul_30digits, c_mul, long_a, long_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, div_30digits, c_div, long_a, long_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, add_short, c_add, short_a, short_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, sub_short, c_sub, short_a, short_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, mul_short, c_mul, short_a, short_b);
BENCHMARK_CAPTURE(BM_CppDecFloat, div_short, c_div, short_a, short_b);

void BM_CppDecFloatCmp(benchmark::State &state, const char *x, const char *y)
{
    cpp_dec32 a(x), b(y);
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a.compare(b));
    }
}
BENCHMARK_CAPTURE(BM_CppDecFloatCmp, cmp_30digits, long_a, long_b);
BENCHMARK_CAPTURE(BM_CppDecFloatCmp, cmp_short, short_a, short_b);

#endif

} // namespace
