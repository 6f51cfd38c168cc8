// Datetime and interval arithmetic: a datetime plus an interval, the
// difference of two datetimes, and intervals multiplied and divided.
#include "calendar/counts.hpp"

#include <cstring>

using namespace qmr;

namespace
{

long long floor_div(long long a, long long b) noexcept
{
    long long q = a / b;
    return a % b != 0 && ((a < 0) != (b < 0)) ? q - 1 : q;
}

// A day-time interval added to the fields of a datetime.
int add_day_time(Fields *d, int dtqual, const Fields &iv, int invqual, int direction,
                 qmr_tcb_t *ctx, const dec_t *dt) noexcept
{
    int start = QMR_TU_START(dtqual);
    // The interval as days and 10^-5 seconds; fields it lacks are 0.
    wide count = interval_count(iv, QMR_TU_START(invqual), QMR_TU_SECOND);
    long long days = 0, ticks = 0;
    if (QMR_TU_START(invqual) <= QMR_TU_SECOND) {
        wide seconds = count;
        days = static_cast<long long>(seconds / 86400);
        ticks = static_cast<long long>(seconds % 86400) * 100000;
    }
    ticks += iv.frac;
    days *= direction;
    ticks *= direction;
    long long time = time_ticks(*d) + ticks;
    if (start > QMR_TU_DAY) {
        // Nothing above the first field may change: the time must stay within
        // one unit of the field before it.
        long long room =
            start == QMR_TU_FRACTION ? unit_ticks[5] : unit_ticks[start / 2] * unit_base[start / 2];
        long long total = time + days * ticks_per_day;
        if (total < 0 || total >= room)
            return QMR_E_BADDATETIME;
        set_time(d, total);
        return 0;
    }
    long long carry = floor_div(time, ticks_per_day);
    set_time(d, time - carry * ticks_per_day);
    days += carry;
    if (start == QMR_TU_DAY) {
        long long day = d->v[2] + days;
        if (day < 1 || day > 31)
            return QMR_E_BADDATETIME;
        d->v[2] = day;
        return 0;
    }
    int jdate = 0;
    int status = datetime_to_day(dt, dtqual, &jdate, ctx);
    if (status != 0)
        return status;
    long long moved = jdate + days;
    short mdy[3];
    if (moved < QMR_DATE_MIN || moved > QMR_DATE_MAX || rjulmdy(static_cast<int>(moved), mdy) != 0)
        return QMR_E_BADYEAR;
    if (start == QMR_TU_MONTH) {
        Fields now;
        current_fields(&now, ctx);
        if (mdy[2] != now.v[0])
            return QMR_E_BADDATETIME; // a MONTH-start datetime keeps its year
    }
    d->v[0] = mdy[2];
    d->v[1] = mdy[0];
    d->v[2] = mdy[1];
    return 0;
}

// A year-month interval added to the fields of a datetime.
int add_year_month(Fields *d, int dtqual, const Fields &iv, int invqual, int direction) noexcept
{
    int start = QMR_TU_START(dtqual), end = QMR_TU_END(dtqual);
    long long months =
        static_cast<long long>(interval_count(iv, QMR_TU_START(invqual), QMR_TU_MONTH));
    months *= direction;
    if (end == QMR_TU_YEAR) {
        d->v[0] += months / 12;
    } else if (start == QMR_TU_YEAR) {
        long long total = d->v[0] * 12 + (d->v[1] - 1) + months;
        d->v[0] = floor_div(total, 12);
        d->v[1] = total - d->v[0] * 12 + 1;
    } else {
        long long month = d->v[1] + months;
        if (month < 1 || month > 12)
            return QMR_E_BADDATETIME; // a MONTH-start datetime keeps its year
        d->v[1] = month;
    }
    if (start == QMR_TU_YEAR && (d->v[0] < 1 || d->v[0] > 9999))
        return QMR_E_BADDATETIME;
    if (end >= QMR_TU_DAY) {
        // Month end: a day past the new month's end becomes its last day.
        int length = start == QMR_TU_YEAR
                         ? month_length(static_cast<int>(d->v[1]), static_cast<int>(d->v[0]))
                         : (d->v[1] == 2 ? 29 : daymon[d->v[1]]);
        if (d->v[2] > length)
            d->v[2] = length;
        if (d->v[2] < 1)
            return QMR_E_BADDATETIME;
    }
    return 0;
}

// The natural qualifier of a - b for a datetime qualifier (see datetime.h).
int natural_difference_qual(int aqual) noexcept
{
    int start = QMR_TU_START(aqual), end = QMR_TU_END(aqual);
    if (start == QMR_TU_FRACTION)
        return QMR_TU_ENCODE(standard_total(start, end), start, end);
    if (end <= QMR_TU_MONTH)
        return QMR_TU_ENCODE(9 + end - start, start, end);
    if (start <= QMR_TU_DAY)
        return QMR_TU_ENCODE(9 + end - QMR_TU_DAY, QMR_TU_DAY, end);
    return QMR_TU_ENCODE(9 + end - start, start, end);
}

int mul_or_div(const intrvl_t *in, const dec_t *operand, intrvl_t *out, bool divide) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    int status = check_qual(true, in->qualifier, ctx);
    if (status == 0)
        status = check_qual(true, out->qualifier, ctx);
    if (status != 0)
        return status;
    if (year_month(in->qualifier) != year_month(out->qualifier)) {
        set_null(&out->value);
        return record(QMR_E_BADQUALIFIERS, ctx);
    }
    if (is_null(&in->value) || is_null(operand)) {
        set_null(&out->value);
        return 0;
    }
    dec_t count;
    status = rinvtodec(&in->value, in->qualifier, &count);
    if (status == 0)
        status = divide ? decdiv(&count, operand, &count) : decmul(&count, operand, &count);
    if (status != 0) {
        set_null(&out->value);
        return status;
    }
    // The count is in the input's end unit: read it in a qualifier with that
    // end and the widest first field, then move it to the output's.
    int start = QMR_TU_START(in->qualifier) < QMR_TU_START(out->qualifier)
                    ? QMR_TU_START(in->qualifier)
                    : QMR_TU_START(out->qualifier);
    int end = QMR_TU_END(in->qualifier);
    int wide_qual =
        start == QMR_TU_FRACTION ? in->qualifier : QMR_TU_ENCODE(9 + end - start, start, end);
    dec_t value;
    status = rdectoinv(&count, &value, wide_qual);
    if (status == 0)
        status = interval_copy(&value, wide_qual, &value, out->qualifier, ctx);
    if (status != 0 && status != QMR_E_INTVOVERFLOW)
        set_null(&value);
    out->value = value;
    return status;
}

} // namespace

int rdtaddinv_tcb(const dec_t *dt, int dtqual, const dec_t *inv, int invqual, dec_t *out,
                  qmr_tcb_t *ctx) noexcept
{
    int status = check_qual(false, dtqual, ctx);
    if (status == 0)
        status = check_qual(true, invqual, ctx);
    if (status != 0) {
        set_null(out);
        return status;
    }
    if (is_null(dt) || is_null(inv)) {
        set_null(out);
        return 0;
    }
    int ds = QMR_TU_START(dtqual), de = QMR_TU_END(dtqual);
    int is = QMR_TU_START(invqual), ie = QMR_TU_END(invqual);
    if (de < ie || (ds > is && is != QMR_TU_SECOND)) {
        set_null(out);
        return QMR_E_BADQUALIFIERS;
    }
    Fields d, iv;
    unpack_fields(dt, dtqual, &d);
    unpack_fields(inv, invqual, &iv);
    int direction = iv.sign == 0 ? -1 : 1;
    status = year_month(invqual) ? add_year_month(&d, dtqual, iv, invqual, direction)
                                 : add_day_time(&d, dtqual, iv, invqual, direction, ctx, dt);
    if (status != 0) {
        set_null(out);
        return status;
    }
    d.sign = 1;
    return pack_fields(d, dtqual, out);
}

int rdtaddinv(const dec_t *dt, int dtqual, const dec_t *inv, int invqual, dec_t *out) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr) {
        set_null(out);
        return QMR_E_NOMEM;
    }
    return rdtaddinv_tcb(dt, dtqual, inv, invqual, out, ctx);
}

int dtaddinv(const dtime_t *dt, const intrvl_t *inv, dtime_t *out) noexcept
{
    short qual = dt->qualifier;
    dec_t value;
    int status = rdtaddinv(&dt->value, qual, &inv->value, inv->qualifier, &value);
    out->qualifier = qual;
    out->value = value;
    return status;
}

int dtsubinv(const dtime_t *dt, const intrvl_t *inv, dtime_t *out) noexcept
{
    intrvl_t negated = *inv;
    if (!is_null(&negated.value) && negated.value.ndigits > 0)
        negated.value.sign = negated.value.sign == 0 ? 1 : 0;
    return dtaddinv(dt, &negated, out);
}

int rdtsub_tcb(const dec_t *a, int aqual, const dec_t *b, int bqual, dec_t *out, int outqual,
               qmr_tcb_t *ctx) noexcept
{
    int status = check_qual(false, aqual, ctx);
    if (status == 0)
        status = check_qual(false, bqual, ctx);
    if (status == 0)
        status = check_qual(true, outqual, ctx);
    if (status != 0)
        return status;
    if (is_null(a) || is_null(b)) {
        set_null(out);
        return 0;
    }
    dec_t bx;
    status = rdtextend_tcb(b, bqual, &bx, aqual, ctx);
    if (status != 0) {
        set_null(out);
        return status;
    }
    int start = QMR_TU_START(aqual), end = QMR_TU_END(aqual);
    int natural = natural_difference_qual(aqual);
    Fields fa, fb, diff;
    unpack_fields(a, aqual, &fa);
    unpack_fields(&bx, aqual, &fb);
    wide count = 0;
    if (end <= QMR_TU_MONTH) {
        count = (fa.v[0] * 12 + fa.v[1]) - (fb.v[0] * 12 + fb.v[1]);
        if (end == QMR_TU_YEAR)
            count = fa.v[0] - fb.v[0];
    } else {
        long long days = 0;
        if (start == QMR_TU_DAY) {
            days = fa.v[2] - fb.v[2];
        } else if (start < QMR_TU_DAY) {
            int ja = 0, jb = 0;
            status = datetime_to_day(a, aqual, &ja, ctx);
            if (status == 0)
                status = datetime_to_day(&bx, aqual, &jb, ctx);
            if (status != 0) {
                set_null(out);
                return status;
            }
            days = static_cast<long long>(ja) - jb;
        }
        wide ticks = static_cast<wide>(days) * ticks_per_day + time_ticks(fa) - time_ticks(fb);
        // In units of the natural qualifier's end, scaled by its fraction digits.
        wide unit = unit_ticks[QMR_TU_SECOND / 2];
        if (end <= QMR_TU_SECOND)
            unit = unit_ticks[end / 2];
        for (int i = 0; i < frac_digits(end); ++i)
            unit /= 10;
        count = ticks / unit;
    }
    int sign = count < 0 ? 0 : 1;
    if (count < 0)
        count = -count;
    if (!count_to_fields(count, natural, &diff)) {
        set_null(out);
        return record(QMR_E_INTVOVERFLOW, ctx);
    }
    diff.sign = sign;
    dec_t value;
    pack_fields(diff, natural, &value);
    if (natural == outqual) {
        *out = value;
        return 0;
    }
    return interval_copy(&value, natural, out, outqual, ctx);
}

int rdtsub(const dec_t *a, int aqual, const dec_t *b, int bqual, dec_t *out, int outqual) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return QMR_E_NOMEM;
    return rdtsub_tcb(a, aqual, b, bqual, out, outqual, ctx);
}

int dtsub(const dtime_t *a, const dtime_t *b, intrvl_t *out) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return QMR_E_NOMEM;
    if (check_qual(false, a->qualifier, ctx) != 0)
        return QMR_E_BADQUALIFIER;
    int natural = natural_difference_qual(a->qualifier);
    dec_t diff;
    int status = rdtsub_tcb(&a->value, a->qualifier, &b->value, b->qualifier, &diff, natural, ctx);
    if (status != 0)
        return status;
    dec_t value;
    status = interval_copy(&diff, natural, &value, out->qualifier, ctx);
    if (status == 0 || status == QMR_E_BADQUALIFIERS || status == QMR_E_INTVOVERFLOW)
        out->value = value;
    return status;
}

int invmuldec(const intrvl_t *in, const dec_t *factor, intrvl_t *out) noexcept
{
    return mul_or_div(in, factor, out, false);
}

int invdivdec(const intrvl_t *in, const dec_t *divisor, intrvl_t *out) noexcept
{
    return mul_or_div(in, divisor, out, true);
}

int invmuldbl(const intrvl_t *in, double factor, intrvl_t *out) noexcept
{
    dec_t d;
    int status = deccvdbl(factor, &d);
    return status != 0 ? status : mul_or_div(in, &d, out, false);
}

int invdivdbl(const intrvl_t *in, double divisor, intrvl_t *out) noexcept
{
    dec_t d;
    int status = deccvdbl(divisor, &d);
    return status != 0 ? status : mul_or_div(in, &d, out, true);
}

int invdivinv(const intrvl_t *a, const intrvl_t *b, dec_t *quotient) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    int status = check_qual(true, a->qualifier, ctx);
    if (status == 0)
        status = check_qual(true, b->qualifier, ctx);
    if (status != 0)
        return status;
    if (year_month(a->qualifier) != year_month(b->qualifier)) {
        set_null(quotient);
        return record(QMR_E_BADQUALIFIERS, ctx);
    }
    if (is_null(&a->value) || is_null(&b->value)) {
        set_null(quotient);
        return 0;
    }
    int sa = QMR_TU_START(a->qualifier), sb = QMR_TU_START(b->qualifier);
    int ea = QMR_TU_END(a->qualifier), eb = QMR_TU_END(b->qualifier);
    int start = sa < sb ? sa : sb;
    int end = ea > eb ? ea : eb;
    int common = start == QMR_TU_FRACTION ? QMR_TU_ENCODE(end - 10, start, end)
                                          : QMR_TU_ENCODE(9 + end - start, start, end);
    dec_t x, y;
    status = interval_copy(&a->value, a->qualifier, &x, common, ctx);
    if (status == 0)
        status = interval_copy(&b->value, b->qualifier, &y, common, ctx);
    if (status == 0)
        status = rinvtodec(&x, common, &x);
    if (status == 0)
        status = rinvtodec(&y, common, &y);
    if (status == 0)
        status = decdiv(&x, &y, quotient);
    return status;
}
