// qmr dt: datetimes and intervals given as text with their qualifiers as
// text ("year to second", "day(5) to fraction(3)"): shown, extended, added,
// subtracted and converted, printed in the standard text forms.
#include <cstdio>
#include <cstring>

#include "qmr.hpp"
#include "qmr/date.h"
#include "qmr/datetime.h"
#include "qmr/types.h"

namespace qmrtool
{
namespace
{

void usage(std::FILE *out)
{
    std::fprintf(
        out, "usage: qmr dt show QUAL TEXT            a datetime read and written back\n"
             "       qmr dt interval IQUAL TEXT       an interval read and written back\n"
             "       qmr dt now [QUAL]                the current datetime (year to fraction(3))\n"
             "       qmr dt extend QUAL TEXT QUAL2    a datetime extended to QUAL2\n"
             "       qmr dt add QUAL TEXT IQUAL ITEXT a datetime plus an interval\n"
             "       qmr dt sub QUAL TEXT IQUAL ITEXT a datetime minus an interval\n"
             "       qmr dt diff QUAL A B [IQUAL]     datetime A minus datetime B\n"
             "       qmr dt convert IQUAL TEXT IQUAL2 an interval in another qualifier\n"
             "  QUAL and IQUAL are qualifier texts such as \"year to second\" or\n"
             "  \"day(5) to fraction(3)\"; TEXT is in the standard form, e.g.\n"
             "  \"2024-01-31 12:34:56.789\" or \"-5 10:30\".\n");
}

const char *describe(int code)
{
    switch (code) {
    case QMR_E_BADYEAR:
        return "year out of range";
    case QMR_E_BADMONTH:
        return "month out of range";
    case QMR_E_BADDAY:
        return "day out of range";
    case QMR_E_QUALPRECISION:
        return "precision out of range or first field too long";
    case QMR_E_QUALNOTNUM:
        return "a field or delimiter is missing";
    case QMR_E_BADFIELD:
        return "a field is out of range or a unit unknown";
    case QMR_E_EXTRATEXT:
        return "text after the value";
    case QMR_E_INTVOVERFLOW:
        return "the interval's first field cannot hold the value";
    case QMR_E_BADQUALIFIERS:
        return "the qualifiers do not fit together";
    case QMR_E_BADDATETIME:
        return "the result is not a valid datetime";
    case QMR_E_BADQUALIFIER:
        return "invalid qualifier";
    case QMR_E_NOPOINT:
        return "a decimal point is missing";
    case QMR_E_BADDATEFMT:
        return "no datetime format available";
    default:
        return "error";
    }
}

int fail(const char *what, const char *text, int code)
{
    std::fprintf(stderr, "qmr dt: %s '%s': %s (%d)\n", what, text, describe(code), code);
    return 1;
}

struct Value {
    int qual = 0;
    dec_t value{};
};

int read_qual(const char *text, bool interval, int *qual)
{
    int status = rtuqual(interval ? QMR_SQL_INTERVAL : QMR_SQL_DATETIME, text, qual);
    return status != 0 ? fail("cannot read the qualifier", text, status) : 0;
}

int read_value(const char *qual_text, const char *text, bool interval, Value *v)
{
    if (read_qual(qual_text, interval, &v->qual) != 0)
        return 1;
    int status = interval ? rstrinv(text, &v->value, v->qual) : rstrdtime(text, &v->value, v->qual);
    if (status != 0)
        return fail(interval ? "cannot read the interval" : "cannot read the datetime", text,
                    status);
    return 0;
}

int print(const Value &v, bool interval)
{
    char text[64], qual[64];
    int status = interval ? rinvstr(&v.value, v.qual, text) : rdtimestr(&v.value, v.qual, text);
    if (status != 0)
        return fail("cannot write the value", "", status);
    int n = rtudesc(interval ? QMR_SQL_INTERVAL : QMR_SQL_DATETIME, v.qual, qual);
    qual[n] = '\0';
    std::printf("%s\t%s %s\n", text, interval ? "interval" : "datetime", qual);
    return 0;
}

// The interval qualifier a difference is shown in by default: days and time
// when the datetime reaches DAY, else its own units, nine digits first.
int difference_qual(int qual)
{
    int start = QMR_TU_START(qual), end = QMR_TU_END(qual);
    if (start == QMR_TU_FRACTION)
        return qual;
    if (end > QMR_TU_MONTH && start < QMR_TU_DAY)
        start = QMR_TU_DAY;
    return QMR_TU_ENCODE(9 + end - start, start, end);
}

int add_or_sub(char **argv, bool subtract)
{
    Value dt, inv, out;
    if (read_value(argv[0], argv[1], false, &dt) != 0 ||
        read_value(argv[2], argv[3], true, &inv) != 0)
        return 1;
    dtime_t a{static_cast<short>(dt.qual), dt.value}, r{};
    intrvl_t i{static_cast<short>(inv.qual), inv.value};
    int status = subtract ? dtsubinv(&a, &i, &r) : dtaddinv(&a, &i, &r);
    if (status != 0)
        return fail(subtract ? "cannot subtract from" : "cannot add to", argv[1], status);
    out.qual = r.qualifier;
    out.value = r.value;
    return print(out, false);
}

// One line of the demo: a datetime plus an interval.
void demo_sum(const char *qual, const char *text, const char *iqual, const char *itext)
{
    Value dt, inv;
    char a[64], b[64];
    if (read_value(qual, text, false, &dt) != 0 || read_value(iqual, itext, true, &inv) != 0)
        return;
    dtime_t d{static_cast<short>(dt.qual), dt.value}, r{};
    intrvl_t i{static_cast<short>(inv.qual), inv.value};
    int status = dtaddinv(&d, &i, &r);
    rinvstr(&inv.value, inv.qual, b);
    const char *shown = b + std::strspn(b, " ");
    if (status == 0 && rdtimestr(&r.value, r.qualifier, a) == 0)
        std::printf("  %s + %s %s = %s\n", text, shown, iqual, a);
    else
        std::printf("  %s + %s %s: %s (%d)\n", text, shown, iqual, describe(status), status);
}

} // namespace

void print_calendar()
{
    int today = 0;
    short mdy[3] = {};
    rtoday(&today);
    rjulmdy(today, mdy);
    std::printf("\nCalendar: today is day %d, %04d-%02d-%02d, weekday %d (0 = Sunday)\n", today,
                mdy[2], mdy[0], mdy[1], rdayofweek(today));
    dtime_t now{QMR_YEAR_TO_F3, {}};
    dtcurrent(&now);
    char text[64];
    rdtimestr(&now.value, now.qualifier, text);
    std::printf("  now, year to fraction(3): %s\n", text);
    demo_sum("year to day", "2024-01-31", "month to month", "1");
    demo_sum("year to day", "2023-01-31", "month to month", "1");
    demo_sum("year to second", "2024-12-31 23:59:59", "second(5) to second", "1");
    demo_sum("month to day", "12-31", "day to day", "1");
    Value a, b;
    if (read_value("year to second", "2024-03-01 00:00:00", false, &a) == 0 &&
        read_value("year to second", "2023-12-25 18:30:00", false, &b) == 0) {
        dtime_t x{static_cast<short>(a.qual), a.value}, y{static_cast<short>(b.qual), b.value};
        intrvl_t d{static_cast<short>(QMR_DAY9_TO_SECOND), {}};
        if (dtsub(&x, &y, &d) == 0 && rinvstr(&d.value, d.qualifier, text) == 0)
            std::printf("  2024-03-01 00:00:00 - 2023-12-25 18:30:00 =%s (day(9) to second)\n",
                        text);
    }
}

int run_dt(int argc, char **argv)
{
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0) {
        usage(argc < 2 ? stderr : stdout);
        return argc < 2 ? 2 : 0;
    }
    const char *op = argv[1];
    int n = argc - 2;
    char **args = argv + 2;
    Value v, w;
    if (std::strcmp(op, "show") == 0 && n == 2) {
        return read_value(args[0], args[1], false, &v) != 0 ? 1 : print(v, false);
    }
    if (std::strcmp(op, "interval") == 0 && n == 2) {
        return read_value(args[0], args[1], true, &v) != 0 ? 1 : print(v, true);
    }
    if (std::strcmp(op, "now") == 0 && n <= 1) {
        dtime_t now{QMR_YEAR_TO_F3, {}};
        int qual = 0;
        if (n == 1 && read_qual(args[0], false, &qual) != 0)
            return 1;
        if (n == 1)
            now.qualifier = static_cast<short>(qual);
        dtcurrent(&now);
        v.qual = now.qualifier;
        v.value = now.value;
        return print(v, false);
    }
    if (std::strcmp(op, "extend") == 0 && n == 3) {
        if (read_value(args[0], args[1], false, &v) != 0 || read_qual(args[2], false, &w.qual) != 0)
            return 1;
        int status = rdtextend(&v.value, v.qual, &w.value, w.qual);
        return status != 0 ? fail("cannot extend", args[1], status) : print(w, false);
    }
    if ((std::strcmp(op, "add") == 0 || std::strcmp(op, "sub") == 0) && n == 4)
        return add_or_sub(args, op[0] == 's');
    if (std::strcmp(op, "diff") == 0 && (n == 3 || n == 4)) {
        Value b;
        if (read_value(args[0], args[1], false, &v) != 0 ||
            read_value(args[0], args[2], false, &b) != 0)
            return 1;
        w.qual = difference_qual(v.qual);
        if (n == 4 && read_qual(args[3], true, &w.qual) != 0)
            return 1;
        dtime_t a{static_cast<short>(v.qual), v.value}, c{static_cast<short>(b.qual), b.value};
        intrvl_t r{static_cast<short>(w.qual), {}};
        int status = dtsub(&a, &c, &r);
        if (status != 0)
            return fail("cannot subtract", args[2], status);
        w.value = r.value;
        return print(w, true);
    }
    if (std::strcmp(op, "convert") == 0 && n == 3) {
        if (read_value(args[0], args[1], true, &v) != 0 || read_qual(args[2], true, &w.qual) != 0)
            return 1;
        int status = rinvcopy(&v.value, v.qual, &w.value, w.qual);
        return status != 0 ? fail("cannot convert", args[1], status) : print(w, true);
    }
    usage(stderr);
    return 2;
}

} // namespace qmrtool
