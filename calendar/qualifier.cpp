// Datetime and interval qualifiers: unit names, the qualifier text, the
// validity rule, and the placing of field digits into the decimal (dtpack,
// dtunpack) with the field form built on them.
#include "calendar/calendar.hpp"

#include <cstring>

#include "qmr/byteutil.h"
#include "qmr/types.h"

namespace qmr
{
namespace
{

constexpr const char *unit_names[] = {"year", "month", "day", "hour", "minute", "second"};

bool is_blank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n';
}

char lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// A precision argument: decimal digits only, at most 2 of them significant.
bool read_precision(const char *arg, int *value) noexcept
{
    if (*arg == '\0')
        return false;
    int v = 0;
    for (const char *p = arg; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9')
            return false;
        v = v * 10 + (*p - '0');
        if (v > 99)
            v = 99;
    }
    *value = v;
    return true;
}

int digit_at(const char *pairs, int index) noexcept
{
    int pair = static_cast<unsigned char>(pairs[index / 2]);
    return index % 2 == 0 ? pair / 10 : pair % 10;
}

long long pow10(int n) noexcept
{
    long long v = 1;
    while (n-- > 0)
        v *= 10;
    return v;
}

// The unit whose digits include place p >= 0, for a qualifier starting at
// start (every place at or above the first field's last belongs to it).
int unit_of_place(int p, int start) noexcept
{
    int u = 10 - 2 * (p / 2); // 0,1 -> SECOND; 2,3 -> MINUTE; ...
    return u < start ? start : u;
}

// next_qual, telling also whether parentheses followed the word.
int read_unit(const char **pos, char *word, char *arg, bool *has_arg) noexcept
{
    const char *p = *pos;
    word[0] = arg[0] = '\0';
    while (is_blank(*p))
        ++p;
    int n = 0;
    for (; *p != '\0' && !is_blank(*p) && *p != '('; ++p) {
        if (n == 10)
            return -1;
        word[n++] = lower(*p);
    }
    word[n] = '\0';
    while (is_blank(*p))
        ++p;
    *has_arg = *p == '(';
    if (*has_arg) {
        ++p;
        n = 0;
        for (; *p != ')'; ++p) {
            if (*p == '\0' || n == 10)
                return -1;
            arg[n++] = lower(*p);
        }
        arg[n] = '\0';
        ++p;
    }
    *pos = p;
    return 0;
}

} // namespace

bool valid_qual(bool interval, int qual) noexcept
{
    if (qual <= 0 || qual > 0x7FFF)
        return false;
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual), total = QMR_TU_LEN(qual);
    if (total < 1 || total >= 25)
        return false;
    if (start == QMR_TU_FRACTION) {
        int first = total - (end - start); // as the text gives it: "fraction(n)"
        return end >= QMR_TU_F1 && (interval ? first >= 1 && first <= 9 : total == end - 10);
    }
    if (start > QMR_TU_SECOND || start % 2 != 0)
        return false;
    if (end < start || (end < QMR_TU_SECOND && end % 2 != 0))
        return false;
    if (interval) {
        if (start <= QMR_TU_MONTH && end >= QMR_TU_DAY)
            return false;
        int first = total - (end - start);
        return first >= 1 && first <= 9;
    }
    return total == standard_total(start, end);
}

int check_qual(bool interval, int qual, qmr_tcb_t *ctx) noexcept
{
    return valid_qual(interval, qual) ? 0 : record(QMR_E_BADQUALIFIER, ctx);
}

Layout layout_of(int qual) noexcept
{
    Layout l;
    l.start = QMR_TU_START(qual);
    l.end = QMR_TU_END(qual);
    l.total = QMR_TU_LEN(qual);
    l.npairs = ((l.end & 1) + l.total + 1) / 2;
    l.exponent = (l.total - l.end + 11) / 2;
    l.lpad = 2 * l.npairs - l.total - (l.end & 1);
    l.top = 10 - l.end + l.total - 1;
    return l;
}

void set_null(dec_t *d) noexcept
{
    std::memset(d, 0, sizeof *d);
    d->sign = -1;
}

void unpack_fields(const dec_t *d, int qual, Fields *f) noexcept
{
    std::memset(f, 0, sizeof *f);
    f->sign = d->sign == 0 ? 0 : 1;
    Layout l = layout_of(qual);
    char pairs[QMR_DTPAIRS];
    dtunpack(d, qual, pairs);
    for (int k = 0; k < l.total; ++k) {
        int place = l.top - k;
        int digit = digit_at(pairs, l.lpad + k);
        if (place < 0) {
            if (place >= -5)
                f->frac += digit * pow10(5 + place);
        } else if (l.start <= QMR_TU_SECOND) {
            int u = unit_of_place(place, l.start);
            f->v[u / 2] = f->v[u / 2] * 10 + digit;
        }
    }
}

bool first_field_fits(const Fields &f, int qual) noexcept
{
    Layout l = layout_of(qual);
    if (l.start > QMR_TU_SECOND)
        return true;
    int width = l.top - (10 - l.start) + 1;
    long long v = f.v[l.start / 2];
    return v >= 0 && v < pow10(width);
}

int pack_fields(const Fields &f, int qual, dec_t *out) noexcept
{
    Layout l = layout_of(qual);
    char pairs[QMR_DTPAIRS] = {};
    for (int k = 0; k < l.total; ++k) {
        int place = l.top - k;
        long long digit = 0;
        if (place < 0) {
            if (place >= -5)
                digit = f.frac / pow10(5 + place) % 10;
        } else if (l.start <= QMR_TU_SECOND) {
            int u = unit_of_place(place, l.start);
            digit = f.v[u / 2] / pow10(place - (10 - u)) % 10;
        }
        int index = l.lpad + k;
        pairs[index / 2] =
            static_cast<char>(pairs[index / 2] + (index % 2 == 0 ? 10 * digit : digit));
    }
    return dtpack(out, qual, pairs, f.sign);
}

} // namespace qmr

using namespace qmr;

const char *rtuname(int code) noexcept
{
    if (code >= 0 && code <= QMR_TU_SECOND && code % 2 == 0)
        return unit_names[code / 2];
    return "fraction";
}

int rtuval(const char *name) noexcept
{
    for (int i = 0; i < 6; ++i)
        if (stcmpr(name, unit_names[i]) == 0)
            return 2 * i;
    return stcmpr(name, "fraction") == 0 ? QMR_TU_FRACTION : -1;
}

int rtudesc(int type, int qual, char *buf) noexcept
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual), total = QMR_TU_LEN(qual);
    bool interval = (type & 0xFF) == QMR_SQL_INTERVAL;
    if (interval && start <= QMR_TU_MONTH && end >= QMR_TU_DAY)
        return record(QMR_E_BADQUALIFIER, CheckAlltcbInit());
    char *p = buf;
    auto put = [&p](const char *s) {
        std::size_t n = std::strlen(s);
        std::memcpy(p, s, n);
        p += n;
    };
    put(rtuname(start));
    if (interval) {
        int first = total - (end - start);
        if (first != (start == QMR_TU_YEAR ? 4 : 2) && first >= 0 && first <= 9) {
            *p++ = '(';
            *p++ = static_cast<char>('0' + first);
            *p++ = ')';
        }
    }
    put(" to ");
    put(rtuname(end));
    if (end > QMR_TU_SECOND) {
        *p++ = '(';
        *p++ = static_cast<char>('0' + (end - 10));
        *p++ = ')';
    }
    return static_cast<int>(p - buf);
}

int next_qual(const char **pos, char *word, char *arg) noexcept
{
    bool has_arg = false;
    return read_unit(pos, word, arg, &has_arg);
}

int rtuqual(int type, const char *text, int *qual) noexcept
{
    bool interval = (type & 0xFF) == QMR_SQL_INTERVAL;
    const char *p = text;
    char word[11], arg[11];
    bool has_arg = false;
    if (read_unit(&p, word, arg, &has_arg) != 0)
        return QMR_E_BADQUALIFIER;
    int start = rtuval(word);
    if (start < 0)
        return QMR_E_BADFIELD;
    int start_arg = 0;
    if (interval && has_arg) {
        if (!read_precision(arg, &start_arg))
            return QMR_E_QUALNOTNUM;
        if (start_arg < 1 || start_arg > 9)
            return QMR_E_QUALPRECISION;
    }
    if (read_unit(&p, word, arg, &has_arg) != 0)
        return QMR_E_BADQUALIFIER;
    if (std::strcmp(word, "to") != 0 || has_arg)
        return QMR_E_BADFIELD;
    if (read_unit(&p, word, arg, &has_arg) != 0)
        return QMR_E_BADQUALIFIER;
    int end = rtuval(word);
    if (end < 0)
        return QMR_E_BADFIELD;
    if (has_arg) {
        if (end != QMR_TU_FRACTION)
            return QMR_E_BADQUALIFIER;
        int digits = 0;
        if (!read_precision(arg, &digits))
            return QMR_E_QUALNOTNUM;
        if (digits < 1 || digits > 5)
            return QMR_E_QUALPRECISION;
        end = 10 + digits;
    } else if (end == QMR_TU_FRACTION) {
        end = QMR_TU_F3;
    }
    // kept on purpose: a FRACTION start stays code 12 whatever the end, so
    // the text of every qualifier reads back to the same code.
    bool fraction_pair = start == QMR_TU_FRACTION && end > QMR_TU_SECOND;
    if (end < start && !fraction_pair)
        return QMR_E_BADQUALIFIER;
    if (interval && start <= QMR_TU_MONTH && end > QMR_TU_MONTH)
        return QMR_E_BADQUALIFIER;
    while (is_blank(*p))
        ++p;
    if (*p != '\0')
        return QMR_E_EXTRATEXT;
    int total = start_arg != 0 ? start_arg + (end - start) : standard_total(start, end);
    int result = QMR_TU_ENCODE(total, start, end);
    if (!valid_qual(interval, result))
        return QMR_E_BADQUALIFIER;
    *qual = result;
    return 0;
}

int _chk_qual(int is_interval, int qual) noexcept
{
    return check_qual(is_interval != 0, qual, CheckAlltcbInit());
}

int dtpack(dec_t *out, int qual, char *pairs, int sign) noexcept
{
    Layout l = layout_of(qual);
    int n = l.npairs;
    if (n > QMR_DTPAIRS)
        n = QMR_DTPAIRS;
    if (n < 1)
        n = 1;
    char saved = pairs[n - 1];
    if ((l.end & 1) != 0)
        pairs[n - 1] = static_cast<char>(pairs[n - 1] / 10 * 10);
    int status = decload(out, sign, l.exponent, pairs, n);
    pairs[n - 1] = saved;
    return status;
}

void dtunpack(const dec_t *in, int qual, char *pairs) noexcept
{
    std::memset(pairs, 0, QMR_DTPAIRS);
    int qexp = layout_of(qual).exponent;
    if (in->ndigits <= 0 || in->exponent > qexp)
        return;
    int offset = qexp - in->exponent;
    int count = in->ndigits < QMR_DTPAIRS - offset ? in->ndigits : QMR_DTPAIRS - offset;
    for (int i = 0; i < count; ++i)
        pairs[offset + i] = in->digits[i];
}
