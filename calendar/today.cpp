// Today's date: the per-thread quarter-hour cache, the date a program fixes
// with rsettoday, and the DBTODAY setting examined once per thread whose
// shift moves every clock reading.
#include "calendar/calendar.hpp"

#include <ctime>

#include "platform/env_slots.hpp"

using namespace qmr;

namespace
{

// The date of the clock's local time, read again only in a new quarter hour.
int clock_today(qmr_genarea *g, qmr_tcb_t *ctx) noexcept
{
    std::time_t now = std::time(nullptr);
    int bucket = quarter_hour(now);
    if (bucket == g->today_bucket)
        return g->today_day;
    std::tm parts{};
    if (localtime_r(&now, &parts) == nullptr)
        return g->today_day;
    short mdy[3] = {static_cast<short>(parts.tm_mon + 1), static_cast<short>(parts.tm_mday),
                    static_cast<short>(parts.tm_year + 1900)};
    int day = g->today_day;
    if (rmdyjul_tcb(mdy, &day, ctx) == 0) {
        g->today_bucket = bucket;
        g->today_day = day;
    }
    return g->today_day;
}

} // namespace

void rtoday_tcb(int *jdate, qmr_tcb_t *ctx) noexcept
{
    qmr_genarea *g = cal(ctx);
    if ((g->today_flags & todayflag_set) != 0) {
        *jdate = g->today_day;
        return;
    }
    if ((g->today_flags & todayflag_shift) == 0 &&
        (g->today_flags & (todayflag_converting | todayflag_nodbtoday)) == 0)
        getdbtoday_tcb(ctx);
    if ((g->today_flags & todayflag_shift) != 0) {
        initdbtoday_tcb(ctx);
        *jdate = g->dbtoday_day;
        return;
    }
    *jdate = clock_today(g, ctx);
}

void rtoday(int *jdate) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        rtoday_tcb(jdate, ctx);
}

void rsettoday_tcb(const int *jdate, qmr_tcb_t *ctx) noexcept
{
    qmr_genarea *g = cal(ctx);
    if (jdate != nullptr) {
        g->today_day = *jdate;
        g->today_flags |= todayflag_set;
    } else {
        g->today_flags &= ~todayflag_set;
        g->today_bucket = 0;
    }
}

void rsettoday(const int *jdate) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        rsettoday_tcb(jdate, ctx);
}

void initdbtoday_tcb(qmr_tcb_t *ctx) noexcept
{
    qmr_genarea *g = cal(ctx);
    Fields now;
    current_fields(&now, ctx);
    int day = g->dbtoday_day;
    if (mdy_to_day(static_cast<int>(now.v[1]), static_cast<int>(now.v[2]),
                   static_cast<int>(now.v[0]), &day) == 0)
        g->dbtoday_day = day;
    g->today_day = g->dbtoday_day;
}

void initdbtoday(void) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        initdbtoday_tcb(ctx);
}

void getdbtoday_tcb(qmr_tcb_t *ctx) noexcept
{
    qmr_genarea *g = cal(ctx);
    g->today_flags &= ~(todayflag_converting | todayflag_shift | todayflag_nodbtoday);
    const char *text = idx_ggetenv(kEnvSlotDBTODAY, "DBTODAY");
    if (text == nullptr) {
        g->today_flags |= todayflag_nodbtoday;
        return;
    }
    g->today_flags |= todayflag_converting;
    dec_t set, now, shift;
    bool ok = rstrdinv_tcb(text, &set, QMR_YEAR_TO_SECOND, 1, ctx) == 0 && !is_null(&set);
    if (ok) {
        // The converting flag keeps this reading from examining DBTODAY again.
        rdtcurrent_tcb(&now, ctx);
        ok = rdtextend_tcb(&now, QMR_YEAR_TO_F5, &now, QMR_YEAR_TO_SECOND, ctx) == 0 &&
             rdtsub_tcb(&set, QMR_YEAR_TO_SECOND, &now, QMR_YEAR_TO_SECOND, &shift,
                        QMR_DAY9_TO_SECOND, ctx) == 0;
    }
    g->today_flags &= ~todayflag_converting;
    if (ok) {
        g->dbtoday_shift.qualifier = QMR_DAY9_TO_SECOND;
        g->dbtoday_shift.value = shift;
        g->today_flags |= todayflag_shift;
    } else {
        g->today_flags |= todayflag_nodbtoday;
    }
}

void getdbtoday(void) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        getdbtoday_tcb(ctx);
}
