// Process start-up and tear-down: the thread keys, the process-wide locks in
// their fixed order, the one-time lock, and the interface check.
#include "gen/context.hpp"

#include "platform/alloc.hpp"
#include "qmr/sqlhooks.h"

namespace qmr
{

namespace
{
constexpr int served_interface_level = 710;
constexpr int lock_class_general = 1;
constexpr int lock_class_once = 2;

// Frees the per-thread locale initialisation block at thread end.
void InitglsDestructor(void *block) noexcept
{
    mem_free(block);
}

// The thread keys are made once per process and kept across Destroy_keys, so
// that a re-initialisation neither leaks key slots nor orphans live contexts.
int make_context_key_once(ProcessState &ps) noexcept
{
    if (ps.context_key_made.load(std::memory_order_acquire))
        return 0;
    if (qmrOS_th_keycreate(&ps.context_key, AllDestructor) != 0)
        return -1;
    ps.context_key_made.store(true, std::memory_order_release);
    return 0;
}

int make_locale_key_once(ProcessState &ps) noexcept
{
    if (ps.locale_key_made)
        return 0;
    if (qmrOS_th_keycreate(&ps.locale_key, InitglsDestructor) != 0)
        return -1;
    ps.locale_key_made = true;
    return 0;
}

int make_locks(ProcessLocks &l) noexcept
{
    qmrOS_mutex_t *plain_before_env[] = {&l.conn_list_mutex, &l.global_mutex, &l.ns_mutex,
                                         &l.ostcb_mutex};
    for (qmrOS_mutex_t *m : plain_before_env)
        if (qmrOS_mutexInit(m, 0, lock_class_general) != 0)
            return -1;
    if (qmrOS_recursive_mutexInit(&l.env_mutex, 0, lock_class_general) != 0)
        return -1;
    qmrOS_mutex_t *plain_after_env[] = {&l.ldxtbl_mutex, &l.hashtbl_mutex, &l.dormant_mutex,
                                        &l.sleep_mutex};
    for (qmrOS_mutex_t *m : plain_after_env)
        if (qmrOS_mutexInit(m, 0, lock_class_general) != 0)
            return -1;
    if (qmrOS_condInit(&l.sleep_cond, "sleep condition") != 0)
        return -1;
    if (qmrOS_recursive_mutexInit(&l.initgls_once, 0, lock_class_once) != 0)
        return -1;
    return qmrOS_recursive_mutexInit(&l.gls_env_mutex, 0, lock_class_general);
}

// Destroys what make_locks made, each once; records never made are skipped
// by the OS layer, which refuses them.
void destroy_locks(ProcessLocks &l) noexcept
{
    qmrOS_mutex_t *plain[] = {&l.conn_list_mutex, &l.global_mutex, &l.ns_mutex, &l.ostcb_mutex};
    for (qmrOS_mutex_t *m : plain)
        qmrOS_mutexDestroy(m);
    qmrOS_recursive_mutexDestroy(&l.env_mutex);
    qmrOS_mutex_t *more[] = {&l.ldxtbl_mutex, &l.hashtbl_mutex, &l.dormant_mutex, &l.sleep_mutex};
    for (qmrOS_mutex_t *m : more)
        qmrOS_mutexDestroy(m);
    qmrOS_condDestroy(&l.sleep_cond);
    qmrOS_recursive_mutexDestroy(&l.gls_env_mutex);
    qmrOS_recursive_mutexDestroy(&l.initgls_once);
    if (l.once_mutex_made) {
        qmrOS_recursive_mutexDestroy(&l.once_mutex);
        l.once_mutex_made = false;
    }
}

int make_keys_and_locks(ProcessState &ps) noexcept
{
    if (make_context_key_once(ps) != 0)
        return -1;
    if (make_locks(ps.locks) != 0)
        return -1;
    return make_locale_key_once(ps);
}

bool keys_made_by_this_call = false;

// Runs under the OS layer's start-up lock: two first calls cannot both make.
int make_keys_if_absent() noexcept
{
    keys_made_by_this_call = false;
    if (process().keys_created.load(std::memory_order_acquire) != 0)
        return 0;
    keys_made_by_this_call = true;
    return Init_keys();
}
} // namespace

constinit ProcessState process_state;

int ensure_keys(bool *made_now) noexcept
{
    *made_now = false;
    if (process().keys_created.load(std::memory_order_acquire) != 0)
        return 0;
    // keys_made_by_this_call is only touched under the start-up lock.
    int rc = qmrOS_th_Init_keys(make_keys_if_absent);
    *made_now = keys_made_by_this_call;
    return rc;
}

int once_lock() noexcept
{
    ProcessLocks &l = process().locks;
    if (!l.once_mutex_made) {
        bool made = false;
        if (ensure_keys(&made) != 0)
            return -1;
        // Made under the environment lock so that two first users agree.
        qmrOS_recursive_mutexLock(&l.env_mutex);
        if (!l.once_mutex_made && qmrOS_recursive_mutexInit(&l.once_mutex, 0, lock_class_once) == 0)
            l.once_mutex_made = true;
        qmrOS_recursive_mutexUnLock(&l.env_mutex);
        if (!l.once_mutex_made)
            return -1;
    }
    return qmrOS_recursive_mutexLock(&l.once_mutex);
}

int once_unlock() noexcept
{
    return qmrOS_recursive_mutexUnLock(&process().locks.once_mutex);
}

} // namespace qmr

using qmr::process;

int Init_keys(void) noexcept
{
    qmr::ProcessState &ps = process();
    if (ps.keys_created.load(std::memory_order_acquire) != 0)
        return 0;
    int rc = qmr::make_keys_and_locks(ps);
    // Set in both cases: a failed start-up is not retried.
    ps.keys_created.store(1, std::memory_order_release);
    return rc == 0 ? 0 : -1;
}

void Destroy_keys(void) noexcept
{
    qmr::ProcessState &ps = process();
    if (ps.keys_created.load(std::memory_order_acquire) == 0)
        return;
    qmr::destroy_locks(ps.locks);
    ps.keys_created.store(0, std::memory_order_release);
}

int checkGenApi(void) noexcept
{
    return qmr_checkAPI(qmr::served_interface_level, 1);
}
