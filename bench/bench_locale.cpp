// The locale environment's hot paths beside trivial baselines: chkglsinit once
// built against a thread_local read, and UTF-8 stepping with gl_full_mbsnext
// over mixed 1- to 4-byte text against a plain byte loop and a hand-written
// UTF-8 length loop.
#include <benchmark/benchmark.h>

#include <string>

#include "baselines.hpp"
#include "qmr/gl.h"

namespace
{

void BM_LocaleThreadLocalBaseline(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(qmrbench::thread_local_read());
}
BENCHMARK(BM_LocaleThreadLocalBaseline);

void BM_Chkglsinit(benchmark::State &state)
{
    chkglsinit(); // the first call builds the environment; measured: later calls
    for (auto _ : state)
        benchmark::DoNotOptimize(chkglsinit());
}
BENCHMARK(BM_Chkglsinit);

// 1000 characters cycling through widths 1, 2, 3 and 4 (2500 bytes).
const std::string &mixed_text()
{
    static const std::string text = [] {
        std::string s;
        const char *cycle[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
        for (int i = 0; i < 1000; ++i)
            s += cycle[i % 4];
        return s;
    }();
    return text;
}

void *utf8_locale()
{
    static void *handle = [] {
        qmr_glsenv_t *env = qmr_glsenv_create("en_US.utf8", nullptr);
        SetGlsEnv(env);
        chkglsinit();
        void *h = qmr_get_gl_locale_thread();
        SetGlsEnv(nullptr);
        return h;
    }();
    return handle;
}

void BM_Utf8StepMbsnext(benchmark::State &state)
{
    void *loc = utf8_locale();
    const std::string &text = mixed_text();
    const char *end = text.data() + text.size();
    for (auto _ : state) {
        int count = 0;
        for (const char *p = text.data(); p < end; ++count)
            p = gl_full_mbsnext(loc, p, static_cast<int>(end - p));
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_Utf8StepMbsnext);

void BM_Utf8StepHandWritten(benchmark::State &state)
{
    const std::string &text = mixed_text();
    for (auto _ : state)
        benchmark::DoNotOptimize(qmrbench::utf8_count_unchecked(text.data(), text.size()));
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_Utf8StepHandWritten);

void BM_ByteLoop(benchmark::State &state)
{
    const std::string &text = mixed_text();
    for (auto _ : state)
        benchmark::DoNotOptimize(qmrbench::byte_loop(text.data(), text.size()));
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_ByteLoop);

} // namespace
