// Extension and conversion: datetimes to other datetime qualifiers and to and
// from DATE, intervals to other interval qualifiers and to and from decimal
// counts of their last unit.
#include "calendar/counts.hpp"

#include <cstring>

namespace qmr
{
namespace
{

wide pow10w(int n) noexcept
{
    wide v = 1;
    while (n-- > 0)
        v *= 10;
    return v;
}

} // namespace

bool dec_to_scaled(const dec_t *d, int scale, wide *value) noexcept
{
    const wide limit = pow10w(36);
    wide v = 0;
    for (int i = 0; i < d->ndigits; ++i) {
        int pair = static_cast<unsigned char>(d->digits[i]);
        int power = 2 * (d->exponent - 1 - i) + scale; // power of ten of the pair's units digit
        if (power + 1 < 0)
            break;
        if (power > 34)
            return false;
        if (power >= 0)
            v += pair * pow10w(power);
        else
            v += pair / 10; // power -1: only the tens digit stays
        if (v >= limit)
            return false;
    }
    *value = v;
    return true;
}

int scaled_to_dec(wide value, int scale, int sign, dec_t *out) noexcept
{
    if (scale % 2 != 0) {
        value *= 10;
        ++scale;
    }
    char pairs[24] = {};
    int n = 0;
    char reversed[24];
    for (wide v = value; v > 0; v /= 100)
        reversed[n++] = static_cast<char>(v % 100);
    for (int i = 0; i < n; ++i)
        pairs[i] = reversed[n - 1 - i];
    if (n == 0)
        return decload(out, 1, 0, pairs, 0);
    return decload(out, sign, n - scale / 2, pairs, n);
}

long long time_ticks(const Fields &f) noexcept
{
    return f.v[3] * unit_ticks[3] + f.v[4] * unit_ticks[4] + f.v[5] * unit_ticks[5] + f.frac;
}

void set_time(Fields *f, long long ticks) noexcept
{
    f->v[3] = ticks / unit_ticks[3];
    ticks %= unit_ticks[3];
    f->v[4] = ticks / unit_ticks[4];
    ticks %= unit_ticks[4];
    f->v[5] = ticks / unit_ticks[5];
    f->frac = ticks % unit_ticks[5];
}

wide interval_count(const Fields &f, int start, int end) noexcept
{
    wide count = 0;
    if (start <= QMR_TU_SECOND) {
        count = f.v[start / 2];
        int last = end < QMR_TU_SECOND ? end : QMR_TU_SECOND;
        for (int u = start + 2; u <= last; u += 2)
            count = count * unit_base[u / 2] + f.v[u / 2];
    }
    int digits = frac_digits(end);
    if (digits > 0)
        count = count * pow10w(digits) + f.frac / pow10w(5 - digits);
    return count;
}

bool count_to_fields(wide count, int qual, Fields *f) noexcept
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    int digits = frac_digits(end);
    std::memset(f->v, 0, sizeof f->v);
    f->frac = 0;
    if (digits > 0) {
        wide scale = pow10w(digits);
        f->frac = static_cast<long long>(count % scale * pow10w(5 - digits));
        count /= scale;
    }
    if (start > QMR_TU_SECOND)
        return count == 0;
    int last = end < QMR_TU_SECOND ? end : QMR_TU_SECOND;
    for (int u = last; u > start; u -= 2) {
        f->v[u / 2] = static_cast<long long>(count % unit_base[u / 2]);
        count /= unit_base[u / 2];
    }
    if (count >= pow10w(10))
        return false;
    f->v[start / 2] = static_cast<long long>(count);
    return first_field_fits(*f, qual);
}

} // namespace qmr

using namespace qmr;

int rdtextend_tcb(const dec_t *in, int inqual, dec_t *out, int outqual, qmr_tcb_t *ctx) noexcept
{
    int status = check_qual(false, inqual, ctx);
    if (status == 0)
        status = check_qual(false, outqual, ctx);
    if (status != 0)
        return status;
    if (is_null(in)) {
        set_null(out);
        return 0;
    }
    int instart = QMR_TU_START(inqual), inend = QMR_TU_END(inqual);
    int outstart = QMR_TU_START(outqual), outend = QMR_TU_END(outqual);
    Fields given, result;
    unpack_fields(in, inqual, &given);
    if (outstart >= instart) {
        result = given;
    } else {
        // Leading fields the input lacks come from the current date and time.
        current_fields(&result, ctx);
        for (int u = instart; u <= QMR_TU_SECOND && u <= inend; u += 2)
            result.v[u / 2] = given.v[u / 2];
        result.frac = given.frac;
    }
    for (int u = inend + 1; u <= QMR_TU_SECOND; ++u)
        if (u % 2 == 0)
            result.v[u / 2] = 0;
    if (inend <= QMR_TU_SECOND)
        result.frac = 0;
    if (outstart <= QMR_TU_DAY && outend >= QMR_TU_DAY && inend < QMR_TU_DAY)
        result.v[2] = 1;
    if (outstart <= QMR_TU_MONTH && outend >= QMR_TU_MONTH && inend == QMR_TU_YEAR)
        result.v[1] = 1;
    result.sign = 1;
    return pack_fields(result, outqual, out);
}

int rdtextend(const dec_t *in, int inqual, dec_t *out, int outqual) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return QMR_E_NOMEM;
    return rdtextend_tcb(in, inqual, out, outqual, ctx);
}

int dtextend(const dtime_t *in, dtime_t *out) noexcept
{
    qmr_tcb_t *ctx = nullptr;
    int status = context_with_locale(&ctx);
    if (status != 0)
        return status;
    dec_t value;
    status = rdtextend_tcb(&in->value, in->qualifier, &value, out->qualifier, ctx);
    if (status == 0)
        out->value = value;
    return status;
}

int rdatedt(int jdate, dec_t *out, int outqual) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return 0;
    if (jdate == QMR_DATE_NULL) {
        int status = check_qual(false, outqual, ctx);
        if (status == 0)
            set_null(out);
        return status;
    }
    short mdy[3];
    int status = rjulmdy(jdate, mdy);
    if (status != 0)
        return status;
    Fields f{};
    f.sign = 1;
    f.v[0] = mdy[2];
    f.v[1] = mdy[0];
    f.v[2] = mdy[1];
    dec_t date;
    pack_fields(f, QMR_YEAR_TO_DAY, &date);
    return rdtextend_tcb(&date, QMR_YEAR_TO_DAY, out, outqual, ctx);
}

namespace qmr
{

int datetime_to_day(const dec_t *in, int inqual, int *jdate, qmr_tcb_t *ctx) noexcept
{
    int status = check_qual(false, inqual, ctx);
    if (status != 0)
        return status;
    if (is_null(in)) {
        *jdate = QMR_DATE_NULL;
        return 0;
    }
    dec_t date;
    status = rdtextend_tcb(in, inqual, &date, QMR_YEAR_TO_DAY, ctx);
    if (status != 0)
        return status;
    Fields f;
    unpack_fields(&date, QMR_YEAR_TO_DAY, &f);
    short mdy[3] = {static_cast<short>(f.v[1]), static_cast<short>(f.v[2]),
                    static_cast<short>(f.v[0])};
    return rmdyjul_tcb(mdy, jdate, ctx);
}

} // namespace qmr

int rdttodate(const dec_t *in, int inqual, int *jdate) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return QMR_E_NOMEM;
    return datetime_to_day(in, inqual, jdate, ctx);
}

namespace qmr
{

int interval_copy(const dec_t *in, int inqual, dec_t *out, int outqual, qmr_tcb_t *ctx) noexcept
{
    int status = check_qual(true, inqual, ctx);
    if (status == 0)
        status = check_qual(true, outqual, ctx);
    if (status != 0)
        return status;
    if (is_null(in)) {
        set_null(out);
        return 0;
    }
    if (inqual == outqual) {
        *out = *in;
        return 0;
    }
    if (year_month(inqual) != year_month(outqual) || QMR_TU_START(inqual) > QMR_TU_END(outqual)) {
        set_null(out);
        return record(QMR_E_BADQUALIFIERS, ctx);
    }
    Fields f, result;
    unpack_fields(in, inqual, &f);
    wide count = interval_count(f, QMR_TU_START(inqual), QMR_TU_END(outqual));
    if (!count_to_fields(count, outqual, &result)) {
        scaled_to_dec(0, 0, 1, out);
        return record(QMR_E_INTVOVERFLOW, ctx);
    }
    result.sign = count == 0 ? 1 : f.sign;
    return pack_fields(result, outqual, out);
}

} // namespace qmr

int rinvcopy(const dec_t *in, int inqual, dec_t *out, int outqual) noexcept
{
    return interval_copy(in, inqual, out, outqual, CheckAlltcbInit());
}

int invextend(const intrvl_t *in, intrvl_t *out) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx != nullptr && ctx->gen != nullptr)
        set_toerrno_tcb(0, ctx);
    dec_t value;
    int status = interval_copy(&in->value, in->qualifier, &value, out->qualifier, ctx);
    if (status == 0 || status == QMR_E_BADQUALIFIERS || status == QMR_E_INTVOVERFLOW)
        out->value = value;
    return status;
}

int rinvtodec(const dec_t *inv, int qual, dec_t *out) noexcept
{
    int status = check_qual(true, qual, CheckAlltcbInit());
    if (status != 0)
        return status;
    if (is_null(inv)) {
        set_null(out);
        return 0;
    }
    Fields f;
    unpack_fields(inv, qual, &f);
    wide count = interval_count(f, QMR_TU_START(qual), QMR_TU_END(qual));
    return scaled_to_dec(count, frac_digits(QMR_TU_END(qual)), f.sign, out);
}

int rdectoinv(const dec_t *in, dec_t *out, int qual) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    int status = check_qual(true, qual, ctx);
    if (status != 0)
        return status;
    if (is_null(in)) {
        set_null(out);
        return 0;
    }
    wide count = 0;
    Fields f;
    if (!dec_to_scaled(in, frac_digits(QMR_TU_END(qual)), &count) ||
        !count_to_fields(count, qual, &f)) {
        scaled_to_dec(0, 0, 1, out);
        return record(QMR_E_INTVOVERFLOW, ctx);
    }
    f.sign = count == 0 ? 1 : (in->sign == 0 ? 0 : 1);
    return pack_fields(f, qual, out);
}
