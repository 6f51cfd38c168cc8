// The current datetime: the local clock with microseconds plus the DBTODAY
// shift, or the record a program set with rdtsetcurr; USE_DTENV and the
// clock helpers.
#include "calendar/calendar.hpp"

#include <cstring>
#include <ctime>
#include <sys/time.h>

#include "platform/env_slots.hpp"

namespace qmr
{
namespace
{

void clock_fields(Fields *f) noexcept
{
    std::memset(f, 0, sizeof *f);
    f->sign = 1;
    timeval tv{};
    gettimeofday(&tv, nullptr);
    std::time_t seconds = tv.tv_sec;
    std::tm parts{};
    localtime_r(&seconds, &parts);
    f->v[0] = parts.tm_year + 1900;
    f->v[1] = parts.tm_mon + 1;
    f->v[2] = parts.tm_mday;
    f->v[3] = parts.tm_hour;
    f->v[4] = parts.tm_min;
    f->v[5] = parts.tm_sec > 59 ? 59 : parts.tm_sec; // a leap second stays in its minute
    f->frac = tv.tv_usec / 10;                       // the sixth digit is dropped
}

// Adds the DBTODAY shift to a YEAR TO FRACTION(5) reading.
void apply_shift(Fields *f, qmr_tcb_t *ctx) noexcept
{
    dec_t now;
    if (pack_fields(*f, QMR_YEAR_TO_F5, &now) != 0)
        return;
    const intrvl_t &shift = cal(ctx)->dbtoday_shift;
    if (rdtaddinv_tcb(&now, QMR_YEAR_TO_F5, &shift.value, shift.qualifier, &now, ctx) == 0)
        unpack_fields(&now, QMR_YEAR_TO_F5, f);
}

void examine_dbtoday(qmr_tcb_t *ctx) noexcept
{
    int flags = cal(ctx)->today_flags;
    if ((flags & (todayflag_converting | todayflag_shift | todayflag_nodbtoday)) == 0)
        getdbtoday_tcb(ctx);
}

} // namespace

void current_fields(Fields *f, qmr_tcb_t *ctx) noexcept
{
    examine_dbtoday(ctx);
    clock_fields(f);
    const dtime_t *set = cal(ctx)->current_dt;
    if (set != nullptr) {
        int qual = valid_qual(false, set->qualifier) ? set->qualifier : QMR_YEAR_TO_F5;
        Fields given;
        unpack_fields(&set->value, qual, &given);
        // The record's own fields; those before its start come from the clock.
        int start = QMR_TU_START(qual);
        for (int u = start; u <= QMR_TU_SECOND; u += 2)
            f->v[u / 2] = given.v[u / 2];
        f->frac = given.frac;
        return;
    }
    if ((cal(ctx)->today_flags & todayflag_shift) != 0)
        apply_shift(f, ctx);
}

} // namespace qmr

using namespace qmr;

void rdtcurrent_tcb(dec_t *out, qmr_tcb_t *ctx) noexcept
{
    tzset();
    examine_dbtoday(ctx);
    if (cal(ctx)->current_dt != nullptr) {
        *out = cal(ctx)->current_dt->value;
        return;
    }
    Fields f;
    current_fields(&f, ctx);
    pack_fields(f, QMR_YEAR_TO_F5, out);
}

void rdtcurrent(dec_t *out) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        rdtcurrent_tcb(out, ctx);
}

void dtcurrent(dtime_t *dt) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return;
    if (!valid_qual(false, dt->qualifier)) {
        dt->qualifier = QMR_YEAR_TO_F3;
        set_toerrno_tcb(0, ctx);
    }
    tzset();
    Fields f;
    current_fields(&f, ctx);
    pack_fields(f, dt->qualifier, &dt->value);
}

void rdtsetcurr_tcb(dtime_t *dt, qmr_tcb_t *ctx) noexcept
{
    cal(ctx)->current_dt = dt;
}

void rdtsetcurr(dtime_t *dt) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        rdtsetcurr_tcb(dt, ctx);
}

long rutccurrent(void) noexcept
{
    return static_cast<long>(std::time(nullptr));
}

int get_usedtenv_tcb(qmr_tcb_t *ctx) noexcept
{
    qmr_genarea *g = cal(ctx);
    if ((g->today_flags & todayflag_dtenv_read) == 0) {
        const char *value = idx_ggetenv(kEnvSlotUSEDTENV, "USE_DTENV");
        g->today_flags |= todayflag_dtenv_read;
        if (value != nullptr && std::strcmp(value, "1") == 0)
            g->today_flags |= todayflag_dtenv_on;
    }
    return (g->today_flags & todayflag_dtenv_on) != 0 ? 1 : 0;
}

int get_usedtenv(void) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return 0;
    return get_usedtenv_tcb(ctx);
}

int rdatetime(time_t seconds, int qual, dec_t *out) noexcept
{
    std::tm parts{};
    localtime_r(&seconds, &parts);
    int year = parts.tm_year + 1900;
    char pairs[QMR_DTPAIRS] = {
        static_cast<char>(year / 100),       static_cast<char>(year % 100),
        static_cast<char>(parts.tm_mon + 1), static_cast<char>(parts.tm_mday),
        static_cast<char>(parts.tm_hour),    static_cast<char>(parts.tm_min),
        static_cast<char>(parts.tm_sec)};
    dtpack(out, qual, pairs, 1);
    return 0;
}

struct tm *qmr_localtime(const time_t *time, struct tm *tm) noexcept
{
    return localtime_r(time, tm) == tm ? tm : nullptr;
}
