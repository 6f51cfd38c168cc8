// Per-thread error state and settings: each thread sees only its own values,
// and the settings keep the values the accessors promise.
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "gen/context.hpp"
#include "gen/test_support.hpp"
#include "qmr/clib.h"

namespace
{
using qmrtest::on_new_thread;

TEST(ErrorState, EachThreadSeesOnlyItsOwnErrors)
{
    constexpr int thread_count = 8;
    std::atomic<int> written{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_count; ++i)
        threads.emplace_back([&written, i] {
            EXPECT_EQ(get_toerrno(), 0) << "a new thread starts clean";
            EXPECT_EQ(get_glserror(), 0);
            EXPECT_EQ(set_toerrno(-1200 - i), 0);
            EXPECT_EQ(set_glserror(-23100 - i), -23100 - i);
            written.fetch_add(1);
            while (written.load() < thread_count)
                std::this_thread::yield();
            // Every thread has written its own values by now.
            EXPECT_EQ(get_toerrno(), -1200 - i) << "thread " << i;
            EXPECT_EQ(get_glserror(), -23100 - i) << "thread " << i;
        });
    for (std::thread &t : threads)
        t.join();
    on_new_thread([] { EXPECT_EQ(get_toerrno(), 0) << "another thread still sees 0"; });
}

TEST(ErrorState, SettingsKeepTheirValues)
{
    on_new_thread([] {
        EXPECT_EQ(gget_dbver(), 0);
        gset_dbver();
        EXPECT_EQ(gget_dbver(), 16) << "the flag comes back masked, not as 1";
        EXPECT_EQ(qmrGEN_getFloatType(), 0);
        qmrGEN_setFloatType(-5);
        EXPECT_EQ(qmrGEN_getFloatType(), -5);
        EXPECT_EQ(getgenerr(), 0);
    });
    // The ANSI switch is process-wide.
    gen_setansidb(1);
    int seen = 0;
    on_new_thread([&seen] { seen = ansidb; });
    EXPECT_EQ(seen, 1);
    gen_setansidb(0);
    EXPECT_EQ(ansidb, 0);
}

TEST(ErrorState, WorkersUseTheRootTheyAreGiven)
{
    qmr_tcb_t *mine = CheckAlltcbInit();
    ASSERT_NE(mine, nullptr);
    qmr_tcb_t *other = nullptr;
    on_new_thread([&other] {
        // A root without a general area, as a sibling library could pass.
        other = static_cast<qmr_tcb_t *>(cl_ext_calloc(1, sizeof(qmr_tcb_t)));
    });
    EXPECT_EQ(set_toerrno_tcb(-9, mine), 0);
    EXPECT_EQ(get_toerrno_tcb(mine), -9);
    EXPECT_EQ(set_toerrno_tcb(-9, other), 0);
    EXPECT_EQ(get_toerrno_tcb(other), 0);
    EXPECT_EQ(getgenerr_tcb(other), 0);
    EXPECT_EQ(qmrGEN_getFloatType_tcb(other), -1);
    EXPECT_EQ(get_glserror_tcb(nullptr), 0);
    cl_ext_free(other);
    set_toerrno(0);
}

TEST(LocaleSlot, DefaultSeveralAndTheSingleEnvironmentFastPath)
{
    qmr::process().glsenv_count.store(0);
    on_new_thread([] {
        qmr_glsenv_t *env = CheckGlsEnv();
        EXPECT_EQ(env, qmr::default_glsenv());
        EXPECT_EQ(CheckAlltcbInit()->glsenv, env) << "slot 3 now holds the default";
        EXPECT_EQ(qmr::process().glsenv_count.load(), 1) << "the default is counted once";
        EXPECT_EQ(qmr_get_glsenv_thread(), env);
        EXPECT_EQ(qmr_get_gl_locale_thread(), nullptr);
    });
    // Several environments are kept per thread.
    static qmr_glsenv_t other{};
    static int handle;
    other.locale = &handle;
    qmr::process().glsenv_count.store(2);
    on_new_thread([] {
        EXPECT_EQ(qmr_get_glsenv_thread(), qmr::default_glsenv());
        SetGlsEnv(&other);
        EXPECT_EQ(CheckGlsEnv(), &other);
        EXPECT_EQ(qmr_get_gl_locale_thread(), &handle);
    });
    on_new_thread([] { EXPECT_EQ(CheckGlsEnv(), qmr::default_glsenv()); });
    on_new_thread([] {
        // A block made for slot 3 on request is owned, and freed when replaced.
        void *block = nullptr;
        ASSERT_EQ(get_thread_context(nullptr, QMR_SLOT_GLSENV, &block), 0);
        EXPECT_EQ(CheckAlltcbInit()->glsenv_owned, 1);
        SetGlsEnv(&other);
        EXPECT_EQ(CheckAlltcbInit()->glsenv_owned, 0);
    });
    qmr::process().glsenv_count.store(1);
    on_new_thread([] {
        SetGlsEnv(qmr::default_glsenv());
        EXPECT_EQ(CheckAlltcbInit()->glsenv, nullptr)
            << "with one environment, choosing the default changes nothing";
        SetGlsEnv(&other);
        EXPECT_EQ(CheckAlltcbInit()->glsenv, &other);
        EXPECT_EQ(CheckGlsEnv(), qmr::default_glsenv()) << "the fast path answers the default";
    });
}

} // namespace
