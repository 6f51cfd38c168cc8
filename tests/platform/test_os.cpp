// The OS layer: keys with their destructors, mutex records that refuse what
// was never made, recursive locking, conditions, and the file calls.
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "qmr/os.h"

namespace
{

void count_destructor(void *value)
{
    *static_cast<int *>(value) += 1;
}

int init_runs = 0;
int count_init()
{
    return ++init_runs == 1 ? 0 : -1;
}

TEST(OsLayer, KeysHoldAValuePerThreadAndRunTheirDestructor)
{
    EXPECT_EQ(ThreadInit(), 0);
    EXPECT_EQ(THR_FUNC_INIT, 1);
    qmrOS_th_key_t key;
    ASSERT_EQ(qmrOS_th_keycreate(&key, count_destructor), 0);
    EXPECT_EQ(qmrOS_th_keycreate(nullptr, nullptr), -1);
    int value = 0;
    std::thread([&] {
        void *out = &value;
        EXPECT_EQ(qmrOS_th_getspecific(key, &out), 0);
        EXPECT_EQ(out, nullptr) << "a new thread has no value";
        EXPECT_EQ(qmrOS_th_setspecific(key, &value), 0);
        EXPECT_EQ(qmrOS_th_getspecific(key, &out), 0);
        EXPECT_EQ(out, &value);
    }).join();
    EXPECT_EQ(value, 1) << "the destructor ran once at thread end";
    void *mine = &value;
    EXPECT_EQ(qmrOS_th_getspecific(key, &mine), 0);
    EXPECT_EQ(mine, nullptr) << "this thread never set it";
    EXPECT_EQ(qmrOS_th_getspecific(key, nullptr), -1);

    // Init_keys runs the given routine and passes its result on.
    EXPECT_EQ(qmrOS_th_Init_keys(nullptr), -1);
    EXPECT_EQ(qmrOS_th_Init_keys(count_init), 0);
    EXPECT_EQ(qmrOS_th_Init_keys(count_init), -1);
}

TEST(OsLayer, LockRecordsRefuseWhatWasNeverMade)
{
    qmrOS_mutex_t m{};
    EXPECT_EQ(qmrOS_mutexLock(&m), -1);
    EXPECT_EQ(qmrOS_mutexDestroy(&m), -1);
    EXPECT_EQ(qmrOS_mutexInit(&m, 1, 1), -1) << "process-shared locks are not offered";
    ASSERT_EQ(qmrOS_mutexInit(&m, 0, 1), 0);
    EXPECT_EQ(m.lock_class, 1);
    EXPECT_EQ(qmrOS_mutexLock(&m), 0);
    EXPECT_EQ(qmrOS_mutexUnLock(&m), 0);
    EXPECT_EQ(qmrOS_mutexDestroy(&m), 0);
    EXPECT_EQ(qmrOS_mutexDestroy(&m), -1) << "destroyed once only";
    EXPECT_EQ(qmrOS_mutexInit(nullptr, 0, 1), -1);

    // A recursive mutex may be retaken by its owner.
    ASSERT_EQ(qmrOS_recursive_mutexInit(&m, 0, 2), 0);
    EXPECT_EQ(m.recursive, 1);
    EXPECT_EQ(qmrOS_recursive_mutexLock(&m), 0);
    EXPECT_EQ(qmrOS_recursive_mutexLock(&m), 0);
    EXPECT_EQ(qmrOS_recursive_mutexUnLock(&m), 0);
    EXPECT_EQ(qmrOS_recursive_mutexUnLock(&m), 0);
    EXPECT_EQ(qmrOS_recursive_mutexUnLock(&m), -1) << "not held any more";
    EXPECT_EQ(qmrOS_recursive_mutexDestroy(&m), 0);

    // A condition keeps the caller's name.
    qmrOS_cond_t c{};
    EXPECT_EQ(qmrOS_condDestroy(&c), -1);
    ASSERT_EQ(qmrOS_condInit(&c, "sleep condition"), 0);
    EXPECT_STREQ(c.name, "sleep condition");
    EXPECT_EQ(qmrOS_condDestroy(&c), 0);
    EXPECT_EQ(qmrOS_condDestroy(&c), -1);
    EXPECT_EQ(qmrOS_condInit(nullptr, "x"), -1);
}

TEST(OsLayer, FileCalls)
{
    char path[] = "/tmp/qmr_os_XXXXXX";
    int made = mkstemp(path);
    ASSERT_GE(made, 0);
    ASSERT_EQ(write(made, "0123456789", 10), 10);
    close(made);
    int fd = qmr_open(path, 0, 0);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(qmr_lseek(fd, 4, SEEK_SET), 4);
    char buf[8] = {};
    EXPECT_EQ(qmr_read(fd, buf, 3), 3);
    EXPECT_STREQ(buf, "456");
    EXPECT_EQ(qmr_lseek(fd, 0, SEEK_END), 10);
    EXPECT_EQ(qmr_read(fd, buf, 3), 0) << "end of file";
    EXPECT_EQ(qmr_close(fd), 0);
    EXPECT_EQ(qmr_close(fd), -1) << "already closed";
    EXPECT_EQ(qmr_close(-1), -1);
    EXPECT_EQ(qmr_read(-1, buf, 1), -1);
    EXPECT_EQ(qmr_lseek(-1, 0, SEEK_SET), -1);
    EXPECT_EQ(qmr_open("/nonexistent/qmr", 0, 0), -1);
    EXPECT_EQ(qmr_open(nullptr, 0, 0), -1);

    EXPECT_EQ(_ofreadable(path), 0);
    EXPECT_EQ(_ofreadable("/tmp"), -1) << "a directory is not a readable file";
    EXPECT_EQ(_ofreadable("/nonexistent/qmr"), -1);
    EXPECT_EQ(_ofreadable(nullptr), -1);
    unlink(path);
}

} // namespace
