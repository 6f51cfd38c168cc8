// The locale's names and conventions as the gl_ interface hands them out:
// gl_localeconv, gl_nl_langinfo and the message directory of a locale name.
#include <cstdio>
#include <cstring>

#include "locale/mbchar.hpp"
#include "qmr/gl.h"

const struct lconv *gl_localeconv(void *locale) noexcept
{
    const qmr::Locale *loc = qmr::locale_of(locale);
    return loc != nullptr ? &loc->conv : nullptr;
}

const char *gl_nl_langinfo(void *locale, int item) noexcept
{
    const qmr::Locale *loc = qmr::locale_of(locale);
    if (loc == nullptr)
        return "";
    if (item >= QMR_GLI_ABDAY_1 && item < QMR_GLI_ABDAY_1 + 7)
        return loc->day_abbr[item - QMR_GLI_ABDAY_1];
    if (item >= QMR_GLI_DAY_1 && item < QMR_GLI_DAY_1 + 7)
        return loc->day_full[item - QMR_GLI_DAY_1];
    if (item >= QMR_GLI_ABMON_1 && item < QMR_GLI_ABMON_1 + 12)
        return loc->month_abbr[item - QMR_GLI_ABMON_1];
    if (item >= QMR_GLI_MON_1 && item < QMR_GLI_MON_1 + 12)
        return loc->month_full[item - QMR_GLI_MON_1];
    switch (item) {
    case QMR_GLI_RADIXCHAR:
        return loc->conv.decimal_point;
    case QMR_GLI_THOUSEP:
        return loc->conv.thousands_sep;
    case QMR_GLI_CODESET:
        return loc->codeset->canonical;
    case QMR_GLI_CRNCYSTR:
        return loc->conv.currency_symbol;
    case QMR_GLI_LOCALE:
        return loc->name;
    case QMR_GLI_ERA:
        return ""; // no era information is held yet
    default:
        qmr::set_gl_errno(QMR_GLE_INVAL);
        return "";
    }
}

int gl_lc_spec2msg_dname(void *locale, const char *locale_name, char *out, int room) noexcept
{
    if (locale_name == nullptr) {
        const qmr::Locale *loc = qmr::locale_of(locale);
        if (loc == nullptr)
            return -1;
        locale_name = loc->name;
    }
    qmr::LocaleName name{};
    if (out == nullptr || qmr::parse_locale_name(locale_name, &name) != 0) {
        qmr::set_gl_errno(QMR_GLE_INVAL);
        return -1;
    }
    char text[24];
    const int len = std::snprintf(text, sizeof text, "%s_%c%c/%04x", name.lang, name.terr[0] | 0x20,
                                  name.terr[1] | 0x20, static_cast<unsigned>(name.codeset->number));
    if (room <= len) {
        qmr::set_gl_errno(QMR_GLE_NOROOM);
        return -1;
    }
    std::memcpy(out, text, static_cast<std::size_t>(len) + 1);
    return 0;
}
