// The environment lookup: gputenv values in front of the process environment,
// per-index caching and its invalidation, thread safety, out-of-memory paths.
// The cache is process-wide, so every test uses its own names and slots.
#include "qmr/env.h"

#include "platform/alloc.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

// The library reserves slots from 0 upwards; tests take them from the top.
constexpr int kSlotFirst = QMR_ENV_CACHE_SLOTS - 1;
constexpr int kSlotAbsent = QMR_ENV_CACHE_SLOTS - 2;
constexpr int kSlotNoAlloc = QMR_ENV_CACHE_SLOTS - 3;
constexpr int kSlotFillOom = QMR_ENV_CACHE_SLOTS - 4;
constexpr int kSlotRace = QMR_ENV_CACHE_SLOTS - 5;

std::string show(const char *s)
{
    return s == nullptr ? "(null)" : '"' + std::string(s) + '"';
}

// Sets name in the process environment (null: unsets it) and drops any
// gputenv value and cached lookup of it, so that a repeated run starts afresh.
void start_with(const char *name, const char *env_value)
{
    if (env_value != nullptr)
        setenv(name, env_value, 1);
    else
        unsetenv(name);
    gputenv(name, nullptr);
}

TEST(Env, OverlayOverridesProcessEnvironmentUncached)
{
    const char *name = "QMRT_ENV_OVERLAY";
    auto expect_all = [&](const char *want) {
        for (int index : {-1, -7, INT_MIN, QMR_ENV_CACHE_SLOTS, INT_MAX})
            EXPECT_EQ(show(idx_ggetenv(index, name)), show(want)) << "index " << index;
    };
    setenv(name, "from-env", 1);
    expect_all("from-env");
    ASSERT_EQ(gputenv(name, "mine"), 0);
    expect_all("mine");
    EXPECT_STREQ(getenv(name), "from-env"); // the process environment is left alone
    setenv(name, "changed", 1);
    expect_all("mine");
    ASSERT_EQ(gputenv(name, nullptr), 0);
    expect_all("changed");
    unsetenv(name);
    expect_all(nullptr);

    ASSERT_EQ(gputenv("QMRT_ENV_ONLY_MINE", ""), 0);
    EXPECT_EQ(show(idx_ggetenv(-1, "QMRT_ENV_ONLY_MINE")), "\"\"");
    EXPECT_EQ(gputenv("QMRT_ENV_NEVER_SET", nullptr), 0);
    EXPECT_EQ(idx_ggetenv(-1, "QMRT_ENV_NEVER_SET"), nullptr);
    // Null and empty names.
    EXPECT_EQ(idx_ggetenv(-1, nullptr), nullptr);
    EXPECT_EQ(idx_ggetenv(kSlotFirst, nullptr), nullptr);
    EXPECT_EQ(gputenv(nullptr, "x"), -1);
    EXPECT_EQ(gputenv("", "x"), 0);
    EXPECT_EQ(idx_ggetenv(-1, ""), nullptr);
}

TEST(Env, CachedSlotKeepsFirstAnswerOrAbsenceUntilGputenvOfThatName)
{
    const char *name = "QMRT_ENV_CACHED";
    start_with(name, "first");
    const char *p = idx_ggetenv(kSlotFirst, name);
    ASSERT_STREQ(p, "first");
    EXPECT_NE(p, getenv(name)) << "the cached value must be the library's own copy";
    setenv(name, "second", 1);
    EXPECT_EQ(idx_ggetenv(kSlotFirst, name), p);
    EXPECT_STREQ(p, "first");
    EXPECT_STREQ(idx_ggetenv(-1, name), "second");
    ASSERT_EQ(gputenv("QMRT_ENV_CACHED_OTHER", "z"), 0);
    EXPECT_STREQ(idx_ggetenv(kSlotFirst, name), "first") << "another name must not invalidate";
    ASSERT_EQ(gputenv(name, "mine"), 0);
    EXPECT_STREQ(idx_ggetenv(kSlotFirst, name), "mine");
    ASSERT_EQ(gputenv(name, nullptr), 0);
    EXPECT_STREQ(idx_ggetenv(kSlotFirst, name), "second");
    unsetenv(name);

    const char *absent = "QMRT_ENV_ABSENT";
    start_with(absent, nullptr);
    EXPECT_EQ(idx_ggetenv(kSlotAbsent, absent), nullptr);
    setenv(absent, "late", 1);
    EXPECT_EQ(idx_ggetenv(kSlotAbsent, absent), nullptr);
    ASSERT_EQ(gputenv(absent, "x"), 0);
    EXPECT_STREQ(idx_ggetenv(kSlotAbsent, absent), "x");
    unsetenv(absent);
}

TEST(Env, HotLookupsAndRepeatedValuesDoNotAllocate)
{
    const char *name = "QMRT_ENV_HOT";
    start_with(name, "hot");
    ASSERT_STREQ(idx_ggetenv(kSlotNoAlloc, name), "hot");
    qmr::test_reset_alloc_count();
    for (int i = 0; i < 1000; ++i)
        ASSERT_STREQ(idx_ggetenv(kSlotNoAlloc, name), "hot");
    EXPECT_EQ(qmr::test_alloc_count(), 0);

    // A value replaced by gputenv stays readable, and setting it again
    // reuses the copy already made.
    ASSERT_EQ(gputenv(name, "one"), 0);
    const char *one = idx_ggetenv(-1, name);
    ASSERT_EQ(gputenv(name, "two"), 0);
    EXPECT_STREQ(one, "one");
    qmr::test_reset_alloc_count();
    ASSERT_EQ(gputenv(name, "one"), 0);
    EXPECT_EQ(qmr::test_alloc_count(), 0);
    EXPECT_EQ(idx_ggetenv(-1, name), one);
    unsetenv(name);
}

TEST(Env, OutOfMemory)
{
    // gputenv: fail the k-th allocation for k = 1, 2, ... until it succeeds;
    // every failed call returns -1 and leaves the visible value as it was.
    const char *name = "QMRT_ENV_OOM";
    start_with(name, nullptr);
    auto expect_atomic = [name](const char *value, const char *before) {
        for (int k = 1;; ++k) {
            ASSERT_LT(k, 10) << "gputenv never succeeded";
            qmr::test_fail_alloc_after(k);
            int rc = gputenv(name, value);
            qmr::test_fail_alloc_after(0);
            if (rc == 0)
                break;
            EXPECT_EQ(rc, -1);
            EXPECT_EQ(show(idx_ggetenv(-1, name)), show(before)) << "failing allocation " << k;
        }
        EXPECT_STREQ(idx_ggetenv(-1, name), value);
    };
    expect_atomic("first", nullptr);  // a new name
    expect_atomic("second", "first"); // a new value for a known name

    // A cached lookup that cannot allocate answers uncached and retries later.
    const char *fill = "QMRT_ENV_FILL_OOM";
    start_with(fill, "a");
    qmr::test_fail_alloc_after(1, true);
    EXPECT_STREQ(idx_ggetenv(kSlotFillOom, fill), "a");
    setenv(fill, "b", 1);
    EXPECT_STREQ(idx_ggetenv(kSlotFillOom, fill), "b") << "nothing was cached";
    qmr::test_fail_alloc_after(0);
    EXPECT_STREQ(idx_ggetenv(kSlotFillOom, fill), "b");
    setenv(fill, "c", 1);
    EXPECT_STREQ(idx_ggetenv(kSlotFillOom, fill), "b");
    unsetenv(fill);
}

TEST(Env, CachedLookupsRaceWithGputenv)
{
    const char *name = "QMRT_ENV_RACE";
    const char *values[] = {"v0", "v1", "v2", "env"}; // gputenv sets the first three
    start_with(name, "env");
    std::atomic<bool> done{false};
    std::atomic<int> running{0};
    std::atomic<long> bad{0};
    auto valid = [&values](const char *s) {
        return s != nullptr && std::any_of(std::begin(values), std::end(values),
                                           [s](const char *v) { return std::strcmp(s, v) == 0; });
    };
    std::vector<std::thread> readers;
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([&] {
            running.fetch_add(1);
            while (!done.load(std::memory_order_relaxed)) {
                if (!valid(idx_ggetenv(kSlotRace, name)) || !valid(idx_ggetenv(-1, name)))
                    bad.fetch_add(1);
            }
        });
    while (running.load() < 4)
        std::this_thread::yield();
    for (int i = 0; i < 20000; ++i)
        gputenv(name, i % 7 == 6 ? nullptr : values[i % 3]);
    ASSERT_EQ(gputenv(name, "v2"), 0);
    done = true;
    for (std::thread &r : readers)
        r.join();
    EXPECT_EQ(bad.load(), 0);
    EXPECT_STREQ(idx_ggetenv(kSlotRace, name), "v2");
    gputenv(name, nullptr);
    unsetenv(name);
}

TEST(Env, DBNLSsetReadsOneTwoOrThreeOnce)
{
    const std::pair<const char *, int> rows[] = {{"1", 1},  {"2", 2}, {"3", 3},  {"0", 0},
                                                 {"4", 0},  {"", 0},  {"12", 0}, {" 1", 0},
                                                 {"1 ", 0}, {"x", 0}};
    for (const auto &[value, want] : rows) {
        ASSERT_EQ(gputenv("DBNLS", value), 0);
        EXPECT_EQ(DBNLSset(), want) << show(value);
    }
    ASSERT_EQ(gputenv("DBNLS", nullptr), 0);
    unsetenv("DBNLS");
    EXPECT_EQ(DBNLSset(), 0);
    setenv("DBNLS", "2", 1);
    EXPECT_EQ(DBNLSset(), 0) << "read once: a later change of the process environment is not seen";
    ASSERT_EQ(gputenv("DBNLS", nullptr), 0);
    EXPECT_EQ(DBNLSset(), 2);
    unsetenv("DBNLS");
}

} // namespace
