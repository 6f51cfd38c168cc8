// The standard text forms of datetimes and intervals: writing
// "2024-01-31 12:34:56.789" and "  -3 04", and reading them back with the
// field checks of chk_dtinv.
#include "calendar/counts.hpp"

#include <cstring>

#include "platform/env_slots.hpp"

using namespace qmr;

namespace
{

// The delimiter written before each unit, indexed by unit / 2 - 1.
constexpr char dtdelim[] = "-- ::. ";

char delimiter_of(int unit) noexcept
{
    return unit > QMR_TU_SECOND ? '.' : dtdelim[unit / 2 - 1];
}

bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

char *put_number(char *p, long long value, int width) noexcept
{
    for (int i = width - 1; i >= 0; --i) {
        p[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return p + width;
}

int first_width(int qual) noexcept
{
    return QMR_TU_LEN(qual) - (QMR_TU_END(qual) - QMR_TU_START(qual));
}

// Writes the fields of f in qual's layout with the first field `width`
// digits wide; returns the end of the text (terminated).
char *write_fields(const Fields &f, int qual, int width, char *out) noexcept
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    char *p = out;
    if (start <= QMR_TU_SECOND) {
        p = put_number(p, f.v[start / 2], width);
        for (int u = start + 2; u <= end && u <= QMR_TU_SECOND; u += 2) {
            *p++ = delimiter_of(u);
            p = put_number(p, f.v[u / 2], 2);
        }
    }
    if (end > QMR_TU_SECOND) {
        int digits = frac_digits(end);
        *p++ = '.';
        long long frac = f.frac;
        for (int i = digits; i < 5; ++i)
            frac /= 10;
        p = put_number(p, frac, digits);
    }
    *p = '\0';
    return p;
}

bool gl_datetime_set() noexcept
{
    return idx_ggetenv(kEnvSlotGLDATETIME, "GL_DATETIME") != nullptr;
}

const char *skip_blanks(const char *p) noexcept
{
    while (*p == ' ' || *p == '\t')
        ++p;
    return p;
}

// Reads up to `max` digits; more gives false. *count gets how many were read.
bool read_digits(const char **pos, int max, long long *value, int *count) noexcept
{
    const char *p = *pos;
    long long v = 0;
    int n = 0;
    while (is_digit(*p)) {
        if (n == max)
            return false;
        v = v * 10 + (*p++ - '0');
        ++n;
    }
    *value = v;
    *count = n;
    *pos = p;
    return true;
}

// The fraction after '.': up to `digits` digits, as 10^-5 seconds.
long long read_fraction(const char **pos, int digits) noexcept
{
    const char *p = *pos;
    long long frac = 0;
    int n = 0;
    for (; n < digits && is_digit(*p); ++n)
        frac = frac * 10 + (*p++ - '0');
    for (; n < 5; ++n)
        frac *= 10;
    *pos = p;
    return frac;
}

// The century of a two-digit year: month and day as read, or today's.
int full_year(Fields *f, int qual, qmr_tcb_t *ctx) noexcept
{
    int end = QMR_TU_END(qual);
    int month = static_cast<int>(f->v[1]), day = static_cast<int>(f->v[2]);
    if (end >= QMR_TU_MONTH && month > 12)
        return QMR_E_BADFIELD;
    if (end < QMR_TU_DAY) {
        int today = 0;
        rtoday_tcb(&today, ctx);
        short mdy[3];
        rjulmdy(today, mdy);
        if (end < QMR_TU_MONTH)
            month = mdy[0];
        int year = mdy[2] / 100 * 100 + static_cast<int>(f->v[0]);
        day = mdy[1];
        if (month >= 1 && month <= 12 && day > month_length(month, year))
            day = month_length(month, year);
    }
    int century = century_of(month, day, static_cast<int>(f->v[0]), ctx);
    if (century < 0)
        return century;
    if (century > 99)
        return QMR_E_BADDATEFMT;
    f->v[0] = f->v[0] % 100 + 100 * century;
    return 0;
}

// Parses the text after its leading blanks into f; 0 or a code.
int parse_value(const char *p, int qual, bool datetime, Fields *f, bool *two_digit_year) noexcept
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    std::memset(f, 0, sizeof *f);
    f->sign = 1;
    *two_digit_year = false;
    if (start == QMR_TU_FRACTION) {
        while (is_digit(*p))
            if (*p++ != '0')
                return QMR_E_BADFIELD;
        if (*p != '.')
            return QMR_E_NOPOINT;
        ++p;
        f->frac = read_fraction(&p, frac_digits(end));
    } else {
        int count = 0;
        if (!is_digit(*p))
            return QMR_E_QUALNOTNUM;
        if (!read_digits(&p, first_width(qual), &f->v[start / 2], &count))
            return QMR_E_QUALPRECISION;
        *two_digit_year = datetime && start == QMR_TU_YEAR && count <= 2;
        int last = end < QMR_TU_SECOND ? end : QMR_TU_SECOND;
        for (int u = start + 2; u <= last; u += 2) {
            if (*p != delimiter_of(u))
                return is_digit(*p) ? QMR_E_BADFIELD : QMR_E_QUALNOTNUM;
            p = skip_blanks(p + 1);
            if (!is_digit(*p))
                return QMR_E_QUALNOTNUM;
            read_digits(&p, 2, &f->v[u / 2], &count);
            if (is_digit(*p))
                return QMR_E_BADFIELD;
        }
        if (end > QMR_TU_SECOND) {
            if (*p == '.') {
                ++p;
                f->frac = read_fraction(&p, frac_digits(end));
            } else if (*skip_blanks(p) != '\0' || last != QMR_TU_SECOND) {
                // Only a text that ends right after SECOND may leave out the fraction.
                return is_digit(*p) ? QMR_E_BADFIELD : QMR_E_QUALNOTNUM;
            }
        }
    }
    if (*skip_blanks(p) != '\0')
        return QMR_E_EXTRATEXT;
    return 0;
}

int negate(dec_t *d) noexcept
{
    if (!is_null(d) && d->ndigits > 0)
        d->sign = d->sign == 0 ? 1 : 0;
    return 0;
}

// Runs work with the century letter `letter` in force, then restores it.
template <typename Work> int with_century(int letter, Work &&work) noexcept
{
    getdbcentury();
    char saved = dbcentury;
    // An unset letter (an invalid DBCENTURY) falls back to 'R' as the default.
    dbcentury = static_cast<char>(validate_dbcentury(letter, saved != 0 ? saved : 'R'));
    int status = work();
    dbcentury = saved;
    return status;
}

} // namespace

int chk_dtinv(const dec_t *value, int qual, int is_datetime) noexcept
{
    bool datetime = is_datetime != 0;
    int status = check_qual(!datetime, qual, CheckAlltcbInit());
    if (status != 0)
        return status;
    if (is_null(value))
        return 0;
    char pairs[QMR_DTPAIRS];
    dtunpack(value, qual, pairs);
    for (char pair : pairs)
        if (static_cast<unsigned char>(pair) > 99)
            return QMR_E_BADFIELD;
    if (datetime && value->sign == 0 && value->ndigits > 0)
        return QMR_E_BADFIELD;
    Fields f;
    unpack_fields(value, qual, &f);
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    int from = datetime ? start : start + 2;
    for (int u = from; u <= end && u <= QMR_TU_SECOND; u += 2) {
        long long v = f.v[u / 2];
        bool ok = true;
        switch (u) {
        case QMR_TU_YEAR:
            ok = v >= 1 && v <= 9999;
            break;
        case QMR_TU_MONTH:
            ok = datetime ? v >= 1 && v <= 12 : v >= 0 && v <= 11;
            break;
        case QMR_TU_DAY: {
            int length = 31;
            if (start <= QMR_TU_MONTH)
                length = start == QMR_TU_YEAR
                             ? month_length(static_cast<int>(f.v[1]), static_cast<int>(f.v[0]))
                             : (f.v[1] == 2 ? 29 : daymon[f.v[1]]);
            ok = v >= 1 && v <= length;
            break;
        }
        case QMR_TU_HOUR:
            ok = v < 24;
            break;
        default:
            ok = v < 60;
            break;
        }
        if (!ok)
            return QMR_E_BADFIELD;
    }
    return 0;
}

int rdtimestr(const dec_t *dt, int qual, char *out) noexcept
{
    out[0] = '\0';
    if (gl_datetime_set())
        return QMR_E_BADDATEFMT;
    int status = check_qual(false, qual, CheckAlltcbInit());
    if (status != 0 || is_null(dt))
        return status;
    Fields f;
    unpack_fields(dt, qual, &f);
    write_fields(f, qual, QMR_TU_START(qual) == QMR_TU_YEAR ? 4 : 2, out);
    return 0;
}

int dttoasc(const dtime_t *dt, char *out) noexcept
{
    qmr_tcb_t *ctx = nullptr;
    int status = context_with_locale(&ctx);
    if (status != 0)
        return status;
    return rdtimestr(&dt->value, dt->qualifier, out);
}

int rdinstr(const dec_t *inv, int qual, char *out) noexcept
{
    out[0] = '\0';
    int status = check_qual(true, qual, CheckAlltcbInit());
    if (status != 0 || is_null(inv))
        return status;
    Fields f;
    unpack_fields(inv, qual, &f);
    write_fields(f, qual, first_width(qual), out);
    return 0;
}

int rinvstr(const dec_t *inv, int qual, char *out) noexcept
{
    out[0] = '\0';
    int status = check_qual(true, qual, CheckAlltcbInit());
    if (status != 0 || is_null(inv))
        return status;
    out[0] = ' ';
    rdinstr(inv, qual, out + 1);
    // Leading zeros of the first field become blanks; its last digit stays.
    int width = QMR_TU_START(qual) == QMR_TU_FRACTION ? 0 : first_width(qual);
    int lead = 1;
    while (lead < width && out[lead] == '0')
        out[lead++] = ' ';
    if (inv->sign == 0 && inv->ndigits > 0)
        out[lead - 1] = '-';
    return 0;
}

int intoasc(const intrvl_t *inv, char *out) noexcept
{
    return rinvstr(&inv->value, inv->qualifier, out);
}

int rstrdinv_tcb(const char *text, dec_t *out, int qual, int is_datetime, qmr_tcb_t *ctx) noexcept
{
    bool datetime = is_datetime != 0;
    int status = check_qual(!datetime, qual, ctx);
    if (status != 0)
        return status;
    if (datetime && get_usedtenv_tcb(ctx) != 0)
        return QMR_E_BADDATEFMT; // the datetime format masks are not available
    set_null(out);
    const char *p = skip_blanks(text);
    if (*p == '\0')
        return 0;
    Fields f;
    bool two_digit_year = false;
    status = parse_value(p, qual, datetime, &f, &two_digit_year);
    if (status == 0 && two_digit_year)
        status = full_year(&f, qual, ctx);
    if (status != 0)
        return status;
    dec_t value;
    pack_fields(f, qual, &value);
    status = chk_dtinv(&value, qual, is_datetime);
    if (status == 0)
        *out = value;
    return status;
}

int rstrdinv(const char *text, dec_t *out, int qual, int is_datetime) noexcept
{
    qmr_tcb_t *ctx = CheckAlltcbInit();
    if (ctx == nullptr || ctx->gen == nullptr)
        return QMR_E_NOMEM;
    return rstrdinv_tcb(text, out, qual, is_datetime, ctx);
}

int rstrdtime_tcb(const char *text, dec_t *out, int qual, qmr_tcb_t *ctx) noexcept
{
    return rstrdinv_tcb(text, out, qual, 1, ctx);
}

int rstrdtime(const char *text, dec_t *out, int qual) noexcept
{
    return rstrdinv(text, out, qual, 1);
}

int dtcvasc_tcb(const char *text, dtime_t *dt, qmr_tcb_t *ctx) noexcept
{
    return rstrdinv_tcb(text, &dt->value, dt->qualifier, 1, ctx);
}

int dtcvasc(const char *text, dtime_t *dt) noexcept
{
    return rstrdinv(text, &dt->value, dt->qualifier, 1);
}

int qmr_rstrdtime(const char *text, dec_t *out, int qual, int century) noexcept
{
    return with_century(century, [&]() noexcept { return rstrdtime(text, out, qual); });
}

int qmr_dtcvasc(const char *text, dtime_t *dt, int century) noexcept
{
    return with_century(century, [&]() noexcept { return dtcvasc(text, dt); });
}

int rstrinv(const char *text, dec_t *out, int qual) noexcept
{
    const char *p = skip_blanks(text);
    bool minus = *p == '-';
    int status = rstrdinv(minus ? p + 1 : p, out, qual, 0);
    if (status == 0 && minus)
        negate(out);
    return status;
}

int incvasc(const char *text, intrvl_t *inv) noexcept
{
    return rstrinv(text, &inv->value, inv->qualifier);
}
