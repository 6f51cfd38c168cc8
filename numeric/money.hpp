// The money conventions inside the library: loading them into a given locale
// environment, and the environment-taking forms the number formatters and
// the display widths use instead of the exported per-thread calls.
#pragma once

#include "gen/context.hpp"
#include "locale/environment.hpp"

#include <clocale>

namespace qmr
{

// The calling thread's environment with its money state loaded, or null with
// *status the negative locale code when the environment cannot be built.
qmr_glsenv_t *money_env_slow(int *status) noexcept;

// money_env_slow with the common case inline: every number reader and writer
// asks, and with one environment that is built and loaded the answer is the
// default environment after three loads.
inline qmr_glsenv_t *money_env(int *status) noexcept
{
    qmr_glsenv_t *env = default_glsenv();
    if (process().glsenv_count.load(std::memory_order_acquire) == 1 &&
        __atomic_load_n(&env->built, __ATOMIC_ACQUIRE) != 0 &&
        __atomic_load_n(&env->money.load_state, __ATOMIC_ACQUIRE) != 0) {
        if (status != nullptr)
            *status = 0;
        return env;
    }
    return money_env_slow(status);
}

// rmoninit on env: loads its money state unless loaded already.
void money_load(qmr_glsenv_t *env) noexcept;

// Refills env's local conventions from lc (null: the default values), each
// text cut to its field, then checks every text field (money_check_fields).
void init_local_lconv(qmr_glsenv_t *env, const struct lconv *lc) noexcept;

// Sets each text field's length and width from its first character and
// replaces the invalid ones by their defaults.
void money_check_fields(qmr_glsenv_t *env) noexcept;

// The extra display columns that the decimal point takes beyond the one that
// every DECIMAL (N) and MONEY (M) width already counts for it: 0 for a point
// one column wide.
int decimal_width_allowance(const qmr_numconv &conv) noexcept;
int money_width_allowance(const qmr_numconv &conv) noexcept;

} // namespace qmr
