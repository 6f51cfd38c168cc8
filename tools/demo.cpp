// qmr demo: a tour of what the library does on its built-in defaults. For now
// the type catalogue, as a table drawn entirely through the public interface.
#include <cstdio>

#include "qmr.hpp"
#include "qmr/context.h"
#include "qmr/types.h"

namespace qmrtool
{
namespace
{

// A representative length word for each SQL type, so that the length-
// dependent sizes show real numbers: 10 characters, DECIMAL(16,2),
// YEAR TO SECOND, DAY(5) TO SECOND.
int sample_length(int code)
{
    switch (code) {
    case QMR_SQL_DECIMAL:
    case QMR_SQL_MONEY:
        return 16 * 256 + 2;
    case QMR_SQL_DATETIME:
        return 0x0E0A;
    case QMR_SQL_INTERVAL:
        return 0x0B4A;
    default:
        return 10;
    }
}

void print_catalogue()
{
    std::printf("SQL types (length word shown in hex)\n");
    std::printf("%4s  %-22s %6s %6s %6s %5s %6s %6s\n", "code", "name", "len", "stored", "memory",
                "align", "width", "C type");
    for (int code = 0; code <= QMR_SQL_MAXTYPE; ++code) {
        const char *name = rtypname(code);
        if (name[0] == '\0' && code != QMR_SQL_NULL)
            continue;
        int len = sample_length(code);
        std::printf("%4d  %-22s %6x %6d %6d %5d %6d %6d\n", code,
                    name[0] != '\0' ? name : "(null type)", len, rtypsize(code, len),
                    rtypmsize(code, len), rtypalign(1, code), rtypwidth(code, len), rtoctype(code));
    }
    std::printf("\nC types\n%4s %6s %5s %8s\n", "code", "memory", "align", "SQL type");
    for (int code = 100; code <= QMR_C_MAXTYPE; ++code)
        std::printf("%4d %6d %5d %8d\n", code, rtypmsize(code, 10), rtypalign(1, code),
                    rtosqltype(code));
    std::printf("\n(align shows rtypalign(1, code): offset 1 rounded up; 0 marks the types that\n"
                " always start their own buffer)\n");
}

void print_context()
{
    std::printf("\nThread context: %s; operator error %d, locale error %d, general error %d\n",
                CheckAlltcbInit() != nullptr ? "made" : "unavailable", get_toerrno(),
                get_glserror(), getgenerr());
}

} // namespace

int run_demo(int, char **)
{
    print_catalogue();
    print_context();
    print_default_locale();
    print_calendar();
    return 0;
}

} // namespace qmrtool
