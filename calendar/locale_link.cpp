// What the calendar asks of the locale environment: the century of two-digit
// years (through the locale library's century rule) and the environment's
// date format.
#include "calendar/calendar.hpp"

#include "qmr/gl.h"

namespace qmr
{

int locale_ready(qmr_tcb_t *) noexcept
{
    int status = 0;
    return ready_glsenv(&status) != nullptr ? 0 : status;
}

int context_with_locale(qmr_tcb_t **ctx) noexcept
{
    *ctx = CheckAlltcbInit();
    if (*ctx == nullptr || (*ctx)->gen == nullptr)
        return QMR_E_NOMEM;
    return locale_ready(*ctx);
}

int century_of(int month, int day, int year2, qmr_tcb_t *) noexcept
{
    getdbcentury();
    int status = 0;
    qmr_glsenv_t *env = ready_glsenv(&status);
    if (env == nullptr)
        return status;
    int century = gl_getcenturyloc(env->locale, month, day, year2, dbcentury, env->date.daterec);
    if (century >= 0)
        return century;
    switch (_gl_ext_errno) {
    case QMR_GLE_BADMONTH:
        return QMR_E_BADMONTH;
    case QMR_GLE_BADYEAR:
        return QMR_E_BADYEAR;
    case QMR_GLE_BADDAY:
        return QMR_E_BADDAY;
    default:
        return QMR_E_CENTURY;
    }
}

} // namespace qmr

int getcentury(int month, int day, int year2) noexcept
{
    return qmr::century_of(month, day, year2, nullptr);
}

int gls_fmtstr(char **fmt, int order[3], int *extra) noexcept
{
    int status = 0;
    qmr_glsenv_t *env = qmr::ready_glsenv(&status);
    if (env == nullptr)
        return status;
    const qmr_glsdate &date = env->date;
    if (date.in_force == 0 || date.fmt == nullptr)
        return QMR_E_BADDATEFMT;
    *fmt = date.fmt;
    if (date.has_order != 0) {
        for (int i = 0; i < 3; ++i)
            order[i] = date.order[i];
        *extra = date.daterec;
    }
    return 0;
}
