// The thread context: first use in a thread, areas and back-pointers, roots
// made for one slot, allocation failures, thread-end teardown, start-up and
// tear-down of keys and locks, and the replaceable SQL-interface hooks.
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <tuple>
#include <unistd.h>
#include <vector>

#include "gen/context.hpp"
#include "gen/test_support.hpp"
#include "platform/alloc.hpp"
#include "platform/os_testhooks.hpp"
#include "qmr/clib.h"
#include "qmr/sqlhooks.h"

namespace
{
// What the replaced qmr_checkAPI answers and last saw, and how often the
// replaced _sqThreadCleanup ran.
int check_api_answer = 0, check_api_last_level = 0, check_api_last_flag = 0;
int thread_cleanup_calls = 0;
} // namespace

// Strong definitions replace the library's weak defaults, as a host program's
// own SQL-interface library would.
extern "C" int qmr_checkAPI(int level, int flag) noexcept
{
    check_api_last_level = level;
    check_api_last_flag = flag;
    return check_api_answer;
}
extern "C" void _sqThreadCleanup(qmr_globarea_t *glob) noexcept
{
    ++thread_cleanup_calls;
    glob->cleanup_hook = 0;
}

namespace
{
using qmrtest::on_new_thread;

// A hash-table entry as the file table holds them, made with the library's
// allocator so that the table's teardown may free it.
void *file_entry(const char *key)
{
    auto *entry = static_cast<const char **>(cl_ext_malloc(sizeof(const char *)));
    *entry = key;
    return entry;
}

TEST(ThreadContext, FirstCallInANewThreadLeavesAFullContext)
{
    on_new_thread([] {
        EXPECT_EQ(get_toerrno(), 0);
        qmr_tcb_t *root = CheckAlltcbInit();
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(root->initialised, 1);
        ASSERT_TRUE(root->gen && root->os && root->glob && root->save);
        EXPECT_EQ(root->gen->root, root);
        EXPECT_EQ(root->os->root, root);
        EXPECT_EQ(root->glob->root, root);
        EXPECT_EQ(root->save->root, root);
        EXPECT_EQ(root->gen->msgfd, -1);
        EXPECT_EQ(root->gen->second_minus1, -1);
        EXPECT_EQ(root->extra, nullptr);
        EXPECT_EQ(CheckAlltcbInit(), root) << "later calls find the same root";
        EXPECT_EQ(CheckGenInit(), root->gen);
        EXPECT_EQ(CheckSaveAreaInit(), root->save);
    });
    // gentcb_alloc fills a general area the same way, detached from any root.
    qmr_genarea_t *area = gentcb_alloc();
    ASSERT_NE(area, nullptr);
    EXPECT_EQ(area->msgfd, -1);
    EXPECT_EQ(area->second_minus1, -1);
    EXPECT_EQ(area->toerrno, 0);
    EXPECT_EQ(area->root, nullptr);
    cl_ext_free(area);
    genfill(nullptr);
}

TEST(ThreadContext, AreaSizesAndBackPointerPlaces)
{
    static_assert(sizeof(qmr_osarea_t) == 2904);
    static_assert(sizeof(qmr_globarea_t) == 2312);
    static_assert(offsetof(qmr_osarea_t, root) == 2904 - sizeof(void *));
    static_assert(offsetof(qmr_globarea_t, root) == 2312 - sizeof(void *));
    static_assert(offsetof(qmr_tcb_t, gen) == 0);
    static_assert(offsetof(qmr_tcb_t, save) == 4 * sizeof(void *));
    static_assert(offsetof(qmr_tcb_t, extra) == 5 * sizeof(void *));
    static_assert(offsetof(qmr_tcb_t, initialised) == 6 * sizeof(void *));
    static_assert(sizeof(qmr_tcb_t) == 7 * sizeof(void *));
    on_new_thread([] {
        void *block = nullptr;
        int created = 0;
        ASSERT_EQ(get_thread_context(&created, QMR_SLOT_GLSENV, &block), 0);
        EXPECT_EQ(created, 1);
        auto *bytes = static_cast<unsigned char *>(block);
        for (int i = 0; i < QMR_LOCALEBLOCK_SIZE; ++i)
            ASSERT_EQ(bytes[i], 0) << "locale block zero-filled, no back-pointer, at " << i;
        ASSERT_EQ(get_thread_context(&created, QMR_SLOT_GLSENV, &block), 0);
        EXPECT_EQ(created, 0) << "an existing area is not made again";
        void *untouched = &created;
        EXPECT_EQ(get_thread_context(&created, 6, &untouched), 0);
        EXPECT_EQ(untouched, &created) << "a slot above 5 stores nothing";
        // The block made for slot 3 is owned by the context: freed at thread end.
    });
}

// What each worker answers, in this order, for a root made for one slot (no
// general area) and when there is no context at all (memory runs out).
const std::tuple<const char *, int (*)(), int, int> kWorkers[] = {
    {"get_toerrno", get_toerrno, 0, -406},
    {"set_toerrno", [] { return set_toerrno(-1211); }, 0, 0},
    {"get_toerrno", get_toerrno, 0, -406},
    {"getgenerr", getgenerr, 0, -406},
    {"get_glserror", get_glserror, 0, -406},
    {"set_glserror", [] { return set_glserror(-23101); }, -23101, -406},
    {"qmrGEN_getFloatType", qmrGEN_getFloatType, -1, -1},
    {"qmrGEN_setFloatType", [] { return qmrGEN_setFloatType(7), qmrGEN_getFloatType(); }, -1, -1},
    {"gget_dbver", gget_dbver, 0, 0},
    {"gset_dbver", [] { return gset_dbver(), gget_dbver(); }, 0, 0}};

TEST(ThreadContext, WorkersGiveNeutralResultsWithoutAGeneralArea)
{
    on_new_thread([] {
        void *os = nullptr;
        int created = 0;
        ASSERT_EQ(get_thread_context(&created, QMR_SLOT_OS, &os), 0);
        qmr_tcb_t *root = CheckAlltcbInit();
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(root->initialised, 0);
        EXPECT_EQ(root->os, os);
        EXPECT_EQ(root->gen, nullptr) << "an uninitialised root is handed back unchanged";
        for (const auto &[call, run, partial, none] : kWorkers)
            EXPECT_EQ(run(), partial) << call;
    });
    on_new_thread([] {
        qmr::test_fail_alloc_after(1, true);
        for (const auto &[call, run, partial, none] : kWorkers)
            EXPECT_EQ(run(), none) << call;
        EXPECT_EQ(CheckGenInit(), nullptr);
        EXPECT_EQ(CheckSaveAreaInit(), nullptr);
        EXPECT_EQ(gentcb_alloc(), nullptr);
        void *out = nullptr;
        EXPECT_EQ(get_thread_context(nullptr, QMR_SLOT_ROOT, &out), -1);
        EXPECT_EQ(out, nullptr);
        qmr::test_fail_alloc_after(0);
        EXPECT_EQ(get_toerrno(), 0) << "the context is made once memory is back";
    });
}

TEST(ThreadContext, FailedAllocationsLeaveNoPartialContext)
{
    // The root, then the general, OS, global and save areas: five allocations.
    for (int failing = 1; failing <= 5; ++failing) {
        on_new_thread([failing] {
            qmr::test_fail_alloc_after(failing);
            EXPECT_EQ(CheckAlltcbInit(), nullptr) << "allocation " << failing;
            void *root = nullptr;
            int created = 0;
            ASSERT_EQ(get_thread_context(&created, QMR_SLOT_ROOT, &root), 0);
            EXPECT_EQ(created, 1) << "no root stayed behind after allocation " << failing;
            EXPECT_EQ(static_cast<qmr_tcb_t *>(root)->gen, nullptr);
        });
    }
    on_new_thread([] {
        qmr::test_fail_alloc_after(3);
        EXPECT_EQ(CheckAlltcbInit(), nullptr);
        qmr_tcb_t *root = CheckAlltcbInit();
        ASSERT_NE(root, nullptr) << "the next call starts afresh and succeeds";
        EXPECT_EQ(root->initialised, 1);
    });
}

TEST(ThreadContext, ThreadEndFreesEveryOwnedResource)
{
    int fd = -1;
    thread_cleanup_calls = 0;
    on_new_thread([&fd] {
        qmr_tcb_t *root = CheckAlltcbInit();
        ASSERT_NE(root, nullptr);
        fd = ::open("/dev/null", O_RDONLY);
        root->gen->msgfd = fd;
        root->gen->owned[0] = cl_ext_malloc(16);
        root->gen->owned[3] = cl_ext_malloc(16);
        root->os->owned_buffer = cl_ext_malloc(32);
        root->os->debug_file = std::fopen("/dev/null", "w");
        root->glob->cleanup_hook = 1;
        root->glob->owned[1] = cl_ext_malloc(8);
        root->glob->table = ghashcreat(3);
        root->glob->file_table = ghashcreat(5);
        ghashins(root->glob->file_table, file_entry("k"));
        root->save->owned[2] = cl_ext_malloc(8);
        root->extra = cl_ext_malloc(24);
        // Everything above is released by the key's destructor; a leak or a
        // double free shows under the sanitizers.
    });
    EXPECT_EQ(thread_cleanup_calls, 1);
    errno = 0;
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1) << "the message file was closed at thread end";
    EXPECT_EQ(errno, EBADF);

    on_new_thread([] {
        ASSERT_EQ(set_toerrno(-1213), 0);
        CheckAlltcbInit()->extra = cl_ext_malloc(8);
        FreeAllTcbs();
        void *root = nullptr;
        int created = 0;
        ASSERT_EQ(get_thread_context(&created, QMR_SLOT_ROOT, &root), 0);
        EXPECT_EQ(created, 1) << "FreeAllTcbs: the key no longer points at the freed root";
        FreeAllTcbs();
        EXPECT_EQ(get_toerrno(), 0) << "a fresh context has a fresh error state";
        // Thread end frees the new context once (no double free).
    });
}

TEST(ThreadContext, ThreadsThatComeAndGoLeaveNothingBehind)
{
    std::vector<std::thread> threads;
    for (int round = 0; round < 4; ++round) {
        for (int i = 0; i < 16; ++i)
            threads.emplace_back([i] {
                set_toerrno(i);
                EXPECT_EQ(get_toerrno(), i);
                SetGlsEnv(CheckGlsEnv());
            });
        for (std::thread &t : threads)
            t.join();
        threads.clear();
    }
}

TEST(StartUp, InterfaceCheckBecomesTheFirstThreadsGeneralError)
{
    Destroy_keys();
    check_api_answer = -77;
    int seen = 0;
    on_new_thread([&seen] { seen = getgenerr(); });
    check_api_answer = 0;
    EXPECT_EQ(seen, -77);
    EXPECT_EQ(check_api_last_level, 710);
    EXPECT_EQ(check_api_last_flag, 1);
    on_new_thread([&seen] { seen = getgenerr(); });
    EXPECT_EQ(seen, 0) << "threads that did not make the keys keep 0";
}

// The lock records in the order Init_keys makes them.
std::vector<const void *> locks_in_making_order()
{
    qmr::ProcessLocks &l = qmr::process().locks;
    return {&l.conn_list_mutex, &l.global_mutex, &l.ns_mutex,      &l.ostcb_mutex,
            &l.env_mutex,       &l.ldxtbl_mutex, &l.hashtbl_mutex, &l.dormant_mutex,
            &l.sleep_mutex,     &l.sleep_cond,   &l.initgls_once,  &l.gls_env_mutex};
}

bool lock_made(const void *lock)
{
    if (lock == &qmr::process().locks.sleep_cond)
        return qmr::process().locks.sleep_cond.initialised == 1;
    return static_cast<const qmrOS_mutex_t *>(lock)->initialised == 1;
}

TEST(StartUp, DestroyKeysDestroysEachLockOnceInOrderAndStartUpMakesThemAgain)
{
    ASSERT_NE(CheckAlltcbInit(), nullptr);
    ASSERT_EQ(qmr::once_lock(), 0);
    ASSERT_EQ(qmr::once_unlock(), 0);
    qmr::os_test_reset_destroyed();
    Destroy_keys();
    const void *destroyed[qmr::os_test_max_destroyed];
    int n = qmr::os_test_destroyed(destroyed, qmr::os_test_max_destroyed);
    std::vector<const void *> expected = locks_in_making_order();
    std::swap(expected[10], expected[11]); // the locale environment lock goes first
    expected.push_back(&qmr::process().locks.once_mutex);
    ASSERT_EQ(n, static_cast<int>(expected.size()));
    for (int i = 0; i < n; ++i)
        EXPECT_EQ(destroyed[i], expected[i]) << "lock " << i;
    EXPECT_EQ(qmr::process().keys_created.load(), 0);
    Destroy_keys(); // a second call finds nothing to destroy
    EXPECT_EQ(qmr::os_test_destroyed(destroyed, qmr::os_test_max_destroyed), n);

    qmr_tcb_t *root = CheckAlltcbInit();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(qmr::process().keys_created.load(), 1);
    for (const void *lock : locks_in_making_order())
        EXPECT_TRUE(lock_made(lock));
    EXPECT_EQ(CheckAlltcbInit(), root) << "the thread keeps its context across a restart";
}

TEST(StartUp, InitKeysMakesTheLocksInOrderAndStopsAtTheFirstFailure)
{
    ASSERT_NE(CheckAlltcbInit(), nullptr) << "the thread keys exist from here on";
    std::vector<const void *> order = locks_in_making_order();
    for (std::size_t failing = 1; failing <= order.size(); ++failing) {
        Destroy_keys();
        qmr::os_test_fail_init_after(static_cast<int>(failing));
        on_new_thread([] { EXPECT_EQ(CheckAlltcbInit(), nullptr); });
        qmr::os_test_fail_init_after(0);
        for (std::size_t i = 0; i < order.size(); ++i)
            EXPECT_EQ(lock_made(order[i]), i + 1 < failing)
                << "failing " << failing << " lock " << i;
        EXPECT_EQ(qmr::process().keys_created.load(), 1) << "a failed start-up is not retried";
        on_new_thread([] { EXPECT_NE(CheckAlltcbInit(), nullptr); });
    }
    Destroy_keys();
    ASSERT_NE(CheckAlltcbInit(), nullptr);
    for (const void *lock : order)
        EXPECT_TRUE(lock_made(lock));
    EXPECT_EQ(Init_keys(), 0) << "a second Init_keys makes nothing twice";
}

TEST(StartUp, FirstCallsFromManyThreadsMakeTheKeysOnce)
{
    Destroy_keys();
    qmr::os_test_reset_destroyed();
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&ready] {
            ready.fetch_add(1);
            while (ready.load() < 8) {
            }
            EXPECT_NE(CheckAlltcbInit(), nullptr);
        });
    for (std::thread &t : threads)
        t.join();
    Destroy_keys();
    const void *destroyed[qmr::os_test_max_destroyed];
    EXPECT_EQ(qmr::os_test_destroyed(destroyed, qmr::os_test_max_destroyed), 12)
        << "each lock was made once, so it is destroyed once";
    ASSERT_NE(CheckAlltcbInit(), nullptr);
}

TEST(SqlHooks, DefaultsEmptyTheFileTableAndCloseTheTraceFile)
{
    qmr_globarea_t glob{};
    glob.file_table = ghashcreat(2);
    for (const char *key : {"a", "b", "c"})
        ASSERT_EQ(ghashins(glob.file_table, file_entry(key)), 1);
    _iqfremoveall(&glob);
    EXPECT_EQ(ghashlook(glob.file_table, "a"), nullptr);
    EXPECT_EQ(ghashlook(glob.file_table, "c"), nullptr);
    ghashremove(glob.file_table);
    _iqfremoveall(nullptr);

    qmr_osarea_t os{};
    os.debug_file = std::fopen("/dev/null", "w");
    close_sqdbgfile(&os);
    EXPECT_EQ(os.debug_file, nullptr);
    close_sqdbgfile(&os);
    close_sqdbgfile(nullptr);
    EXPECT_EQ(CheckAllOsInit(nullptr), nullptr);
    EXPECT_EQ(CheckAllGlobInit(nullptr), nullptr);
}

} // namespace
