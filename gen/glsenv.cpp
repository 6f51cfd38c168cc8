// The thread's locale environment slot: the default environment shared by all
// threads, the count of other environments, and the slot-3 accessors.
#include "gen/context.hpp"

#include "platform/alloc.hpp"

namespace qmr
{

constinit qmr_glsenv default_glsenv_record{};

} // namespace qmr

namespace
{

// Puts env in slot 3, freeing a block made there on request first.
void store_glsenv(qmr_tcb_t *root, qmr_glsenv_t *env) noexcept
{
    if (root->glsenv_owned != 0 && root->glsenv != env) {
        qmr::glsenv_release_members(root->glsenv);
        qmr::mem_release(root->glsenv);
        root->glsenv_owned = 0;
    }
    root->glsenv = env;
}

void count_default_environment() noexcept
{
    qmr::ProcessState &ps = qmr::process();
    if (ps.glsenv_count.load(std::memory_order_acquire) != 0)
        return;
    // The unlock is issued even if the lock failed: the lock is recursive and
    // an unlock of a lock not held is refused harmlessly.
    qmrOS_recursive_mutexLock(&ps.locks.gls_env_mutex);
    if (ps.glsenv_count.load(std::memory_order_relaxed) == 0)
        ps.glsenv_count.store(1, std::memory_order_release);
    qmrOS_recursive_mutexUnLock(&ps.locks.gls_env_mutex);
}

bool single_environment() noexcept
{
    return qmr::process().glsenv_count.load(std::memory_order_acquire) == 1;
}

} // namespace

qmr_glsenv_t *CheckGlsEnv(void) noexcept
{
    if (single_environment())
        return qmr::default_glsenv();
    qmr_tcb_t *root = CheckAlltcbInit();
    if (root == nullptr)
        return qmr::default_glsenv();
    if (root->glsenv == nullptr) {
        store_glsenv(root, qmr::default_glsenv());
        count_default_environment();
    }
    return root->glsenv;
}

qmr_glsenv_t *qmr_get_glsenv_thread(void) noexcept
{
    if (single_environment())
        return qmr::default_glsenv();
    qmr_tcb_t *root = CheckAlltcbInit();
    if (root == nullptr)
        return nullptr;
    if (root->glsenv == nullptr)
        store_glsenv(root, qmr::default_glsenv());
    return root->glsenv;
}

void *qmr_get_gl_locale_thread(void) noexcept
{
    qmr_glsenv_t *env = qmr_get_glsenv_thread();
    return env != nullptr ? env->locale : nullptr;
}

void SetGlsEnv(qmr_glsenv_t *env) noexcept
{
    if (single_environment() && env == qmr::default_glsenv())
        return;
    if (qmr_tcb_t *root = CheckAlltcbInit())
        store_glsenv(root, env);
}
