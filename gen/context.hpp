// Internal layout of the areas this library owns in the thread context, and
// the process-wide start-up state (keys, locks, counters) shared by the
// context, error-state and locale-slot code.
#pragma once

#include <atomic>

#include "qmr/context.h"
#include "qmr/datetime.h"
#include "qmr/os.h"

// The general area: the thread's error state and settings. Later families add
// their per-thread fields before the owned buffers; the back-pointer stays last.
struct qmr_genarea {
    int toerrno;       // operator error number, 0 when none
    int flags;         // bit values: qmr::genflag_...
    int generr;        // interface check result when made with the keys
    int glserror;      // locale error number
    int msgfd;         // open message file descriptor, -1 when none
    int float_type;    // kept for sibling libraries, not interpreted
    int second_minus1; // set to -1 by genfill; meaning left to sibling libraries
    int reserved_word;
    // Calendar state (calendar/today.cpp, calendar/current.cpp): the bits of
    // qmr::todayflag_..., the quarter-hour bucket of the last clock reading,
    // the cached or program-set today, today as shifted by DBTODAY, that
    // shift (DBTODAY minus the clock, DAY(9) TO SECOND), the century, year,
    // month and day last validated while DBTODAY was read, and the
    // program-supplied current datetime (not owned).
    int today_flags;
    int today_bucket;
    int today_day;
    int dbtoday_day;
    intrvl_t dbtoday_shift;
    unsigned char dbtoday_parts[4];
    dtime_t *current_dt;
    void *owned[4];  // buffers freed at thread end
    qmr_tcb_t *root; // back-pointer
};

// The locale save area: buffers the locale layer keeps per thread.
struct qmr_savearea {
    void *owned[4];  // freed at thread end
    qmr_tcb_t *root; // back-pointer
};

// A locale environment (locale/environment.hpp): the locale handle first, and
// small enough for the QMR_LOCALEBLOCK_SIZE zero bytes made for slot 3.
#include "locale/environment.hpp"

namespace qmr
{

inline constexpr int genflag_dbver = 16;

// The process-wide locks, in the order Init_keys makes them.
struct ProcessLocks {
    qmrOS_mutex_t conn_list_mutex;
    qmrOS_mutex_t global_mutex;
    qmrOS_mutex_t ns_mutex;
    qmrOS_mutex_t ostcb_mutex;
    qmrOS_mutex_t env_mutex; // recursive
    qmrOS_mutex_t ldxtbl_mutex;
    qmrOS_mutex_t hashtbl_mutex;
    qmrOS_mutex_t dormant_mutex;
    qmrOS_mutex_t sleep_mutex;
    qmrOS_cond_t sleep_cond;
    qmrOS_mutex_t initgls_once;  // recursive
    qmrOS_mutex_t gls_env_mutex; // recursive
    qmrOS_mutex_t once_mutex;    // made on demand by once_lock()
    bool once_mutex_made;
};

struct ProcessState {
    std::atomic<short> keys_created{0}; // 1 once Init_keys ran, even if it failed
    qmrOS_th_key_t context_key{};
    qmrOS_th_key_t locale_key{};
    std::atomic<bool> context_key_made{false}; // keys are made once per process
    bool locale_key_made = false;
    ProcessLocks locks{};
    std::atomic<int> glsenv_count{0}; // environments besides the default one
};

// The one process state and the default locale environment (shared by every
// thread that has not chosen another one) are zero-initialised at load time,
// so the accessors are plain address computations.
extern constinit ProcessState process_state;
extern constinit qmr_glsenv default_glsenv_record;

inline ProcessState &process() noexcept
{
    return process_state;
}

inline qmr_glsenv_t *default_glsenv() noexcept
{
    return &default_glsenv_record;
}

// Takes and releases the process's one-time lock, making it on first use.
int once_lock() noexcept;
int once_unlock() noexcept;

// The start checks of every initialiser: the OS layer's thread functions, then
// the keys and locks (and the interface check when this call made them).
int start_checks(bool *made_keys, int *api_result) noexcept;
// This thread's general area, made and filled when new; the interface check's
// result becomes its general error when made_keys is set.
qmr_genarea_t *gen_area_of(qmr_tcb_t *root, bool made_keys, int api_result) noexcept;
// A copy of this thread's context key value, so that the hot path is one
// thread-local load (kept in step with the key by gen/context.cpp only).
extern constinit thread_local qmr_tcb_t *cached_root __attribute__((tls_model("initial-exec")));

// The context when it is complete, or null: the hot path of CheckAlltcbInit.
inline qmr_tcb_t *tcb_fast() noexcept
{
    // An initialised root keeps all its areas until it is freed whole.
    qmr_tcb_t *root = cached_root;
    if (root != nullptr && root->initialised == 1 && THR_FUNC_INIT != 0 &&
        process().keys_created.load(std::memory_order_relaxed) != 0)
        return root;
    return nullptr;
}
qmr_tcb_t *tcb_slow() noexcept;

// CheckAlltcbInit without the call through the exported entry point, for the
// library's own hot paths.
inline qmr_tcb_t *thread_root() noexcept
{
    qmr_tcb_t *root = tcb_fast();
    return root != nullptr ? root : tcb_slow();
}

// The keys and locks, made once; `made_now` tells whether this call made them.
// Returns 0, or -1 when they could not be made (they are not retried).
int ensure_keys(bool *made_now) noexcept;

} // namespace qmr
