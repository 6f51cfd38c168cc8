// The OS layer's thread functions: keys, mutexes and conditions on POSIX
// threads, with records that refuse a lock that was never made.
#include "qmr/os.h"

#include "platform/os_testhooks.hpp"

int THR_FUNC_INIT = 0;

namespace
{
pthread_mutex_t startup_lock = PTHREAD_MUTEX_INITIALIZER;

int make_mutex(qmrOS_mutex_t *m, int shared, int lock_class, bool recursive) noexcept
{
    if (m == nullptr || shared != 0 || qmr::os_test_init_fails())
        return -1;
    pthread_mutexattr_t attr;
    if (pthread_mutexattr_init(&attr) != 0)
        return -1;
    int rc = pthread_mutexattr_settype(&attr,
                                       recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_DEFAULT);
    if (rc == 0)
        rc = pthread_mutex_init(&m->mutex, &attr);
    pthread_mutexattr_destroy(&attr);
    if (rc != 0)
        return -1;
    m->initialised = 1;
    m->recursive = recursive ? 1 : 0;
    m->lock_class = lock_class;
    return 0;
}

int destroy_mutex(qmrOS_mutex_t *m) noexcept
{
    if (m == nullptr || m->initialised != 1)
        return -1;
    qmr::os_test_note_destroy(m);
    m->initialised = 0;
    return pthread_mutex_destroy(&m->mutex) == 0 ? 0 : -1;
}

int lock_mutex(qmrOS_mutex_t *m) noexcept
{
    if (m == nullptr || m->initialised != 1)
        return -1;
    return pthread_mutex_lock(&m->mutex) == 0 ? 0 : -1;
}

int unlock_mutex(qmrOS_mutex_t *m) noexcept
{
    if (m == nullptr || m->initialised != 1)
        return -1;
    return pthread_mutex_unlock(&m->mutex) == 0 ? 0 : -1;
}
} // namespace

int ThreadInit(void) noexcept
{
    // Nothing to load on POSIX: the thread functions are the C library's.
    THR_FUNC_INIT = 1;
    return 0;
}

int qmrOS_th_keycreate(qmrOS_th_key_t *key, void (*destructor)(void *)) noexcept
{
    if (key == nullptr || qmr::os_test_init_fails())
        return -1;
    return pthread_key_create(key, destructor) == 0 ? 0 : -1;
}

int qmrOS_th_getspecific(qmrOS_th_key_t key, void **out) noexcept
{
    if (out == nullptr)
        return -1;
    *out = pthread_getspecific(key);
    return 0;
}

int qmrOS_th_setspecific(qmrOS_th_key_t key, const void *value) noexcept
{
    return pthread_setspecific(key, value) == 0 ? 0 : -1;
}

int qmrOS_th_Init_keys(int (*make_keys)(void)) noexcept
{
    if (make_keys == nullptr)
        return -1;
    pthread_mutex_lock(&startup_lock);
    int rc = make_keys();
    pthread_mutex_unlock(&startup_lock);
    return rc;
}

int qmrOS_mutexInit(qmrOS_mutex_t *m, int shared, int lock_class) noexcept
{
    return make_mutex(m, shared, lock_class, false);
}
int qmrOS_mutexDestroy(qmrOS_mutex_t *m) noexcept
{
    return destroy_mutex(m);
}
int qmrOS_mutexLock(qmrOS_mutex_t *m) noexcept
{
    return lock_mutex(m);
}
int qmrOS_mutexUnLock(qmrOS_mutex_t *m) noexcept
{
    return unlock_mutex(m);
}

int qmrOS_recursive_mutexInit(qmrOS_mutex_t *m, int shared, int lock_class) noexcept
{
    return make_mutex(m, shared, lock_class, true);
}
int qmrOS_recursive_mutexDestroy(qmrOS_mutex_t *m) noexcept
{
    return destroy_mutex(m);
}
int qmrOS_recursive_mutexLock(qmrOS_mutex_t *m) noexcept
{
    return lock_mutex(m);
}
int qmrOS_recursive_mutexUnLock(qmrOS_mutex_t *m) noexcept
{
    return unlock_mutex(m);
}

int qmrOS_condInit(qmrOS_cond_t *c, const char *name) noexcept
{
    if (c == nullptr || qmr::os_test_init_fails())
        return -1;
    if (pthread_cond_init(&c->cond, nullptr) != 0)
        return -1;
    c->initialised = 1;
    c->name = name;
    return 0;
}

int qmrOS_condDestroy(qmrOS_cond_t *c) noexcept
{
    if (c == nullptr || c->initialised != 1)
        return -1;
    qmr::os_test_note_destroy(c);
    c->initialised = 0;
    return pthread_cond_destroy(&c->cond) == 0 ? 0 : -1;
}
