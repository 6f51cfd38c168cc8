// qmr locale [NAME]: builds a locale environment (for NAME, or from
// CLIENT_LOCALE and its kin) and prints what it holds, as UTF-8 text.
#include <cstdio>
#include <cstring>
#include <string>

#include "qmr.hpp"
#include "qmr/errors.h"
#include "qmr/gl.h"

namespace qmrtool
{
namespace
{

const char *locale_error_text(int code)
{
    switch (code) {
    case QMR_E_GLS_CATEGORIES:
        return "no locale data for this language and territory, or a category of another code set";
    case QMR_E_GLS_CONVERTER:
        return "no converter for the code set";
    case QMR_E_GLS_CREATE:
        return "out of memory while making the locale structures";
    case QMR_E_GLS_ENVVAR:
        return "malformed locale name (expected ll_CC.codeset)";
    default:
        return "locale error";
    }
}

void append_utf8(std::string &out, unsigned cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Text of the locale's code set as UTF-8, in quotes; bytes that are no
// character are shown as \xNN.
std::string shown(void *loc, const char *text)
{
    std::string out = "\"";
    const int n = static_cast<int>(std::strlen(text));
    for (int at = 0; at < n;) {
        wchar_t wc = 0;
        int len = gl_mbtowc(loc, &wc, text + at, n - at);
        if (len <= 0) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned char>(text[at]));
            out += hex;
            len = 1;
        } else {
            append_utf8(out, static_cast<unsigned>(wc));
        }
        at += len;
    }
    return out + "\"";
}

void print_names(void *loc, const char *label, int first, int count)
{
    std::printf("%-22s", label);
    for (int i = 0; i < count; ++i)
        std::printf(" %s", shown(loc, gl_nl_langinfo(loc, first + i)).c_str());
    std::printf("\n");
}

void print_environment(void *loc)
{
    const struct lconv *lc = gl_localeconv(loc);
    char dir[32] = "";
    gl_lc_spec2msg_dname(loc, nullptr, dir, sizeof dir);
    std::printf("%-22s %s\n", "locale", gl_nl_langinfo(loc, QMR_GLI_LOCALE));
    std::printf("%-22s %s (%s)\n", "code set", gl_nl_langinfo(loc, QMR_GLI_CODESET),
                qmr_gl_ctype_table(loc) != nullptr ? "single-byte" : "multibyte");
    std::printf("%-22s %s\n", "message directory", dir);
    std::printf("%-22s %s\n", "decimal point", shown(loc, lc->decimal_point).c_str());
    std::printf("%-22s %s\n", "thousands separator", shown(loc, lc->thousands_sep).c_str());
    std::printf("%-22s %s, international %s, %d decimals, %s the amount\n", "currency symbol",
                shown(loc, lc->currency_symbol).c_str(), shown(loc, lc->int_curr_symbol).c_str(),
                lc->frac_digits, lc->p_cs_precedes ? "before" : "after");
    std::printf("%-22s %s / %s\n", "monetary point / sep",
                shown(loc, lc->mon_decimal_point).c_str(),
                shown(loc, lc->mon_thousands_sep).c_str());
    print_names(loc, "months", QMR_GLI_MON_1, 12);
    print_names(loc, "months, abbreviated", QMR_GLI_ABMON_1, 12);
    print_names(loc, "days", QMR_GLI_DAY_1, 7);
    print_names(loc, "days, abbreviated", QMR_GLI_ABDAY_1, 7);
}

} // namespace

int run_locale(int argc, char **argv)
{
    if (argc > 2) {
        std::fprintf(stderr, "usage: qmr locale [ll_CC.codeset]\n");
        return 2;
    }
    const char *name = argc == 2 ? argv[1] : nullptr;
    int status = 0;
    qmr_glsenv_t *env = qmr_glsenv_create(name, &status);
    if (env != nullptr) {
        SetGlsEnv(env);
        status = chkglsinit();
    }
    if (status != 0) {
        std::fprintf(stderr, "qmr locale: cannot serve %s: %s (%d)\n",
                     name != nullptr ? name : "the client locale", locale_error_text(status),
                     status);
        qmr_glsenv_free(env);
        return 1;
    }
    print_environment(qmr_get_gl_locale_thread());
    qmr_glsenv_free(env);
    return 0;
}

void print_default_locale()
{
    const int status = chkglsinit();
    if (status != 0) {
        std::printf("\nLocale: cannot be served: %s (%d)\n", locale_error_text(status), status);
        return;
    }
    void *loc = qmr_get_gl_locale_thread();
    const struct lconv *lc = gl_localeconv(loc);
    std::printf("\nLocale: %s, code set %s (%s); decimal point %s, thousands separator %s, "
                "currency %s\n",
                gl_nl_langinfo(loc, QMR_GLI_LOCALE), gl_nl_langinfo(loc, QMR_GLI_CODESET),
                qmr_gl_ctype_table(loc) != nullptr ? "single-byte" : "multibyte",
                shown(loc, lc->decimal_point).c_str(), shown(loc, lc->thousands_sep).c_str(),
                shown(loc, lc->currency_symbol).c_str());
    std::printf("        first month %s (%s), first day %s (%s); 'qmr locale NAME' shows another\n",
                shown(loc, gl_nl_langinfo(loc, QMR_GLI_MON_1)).c_str(),
                shown(loc, gl_nl_langinfo(loc, QMR_GLI_ABMON_1)).c_str(),
                shown(loc, gl_nl_langinfo(loc, QMR_GLI_DAY_1)).c_str(),
                shown(loc, gl_nl_langinfo(loc, QMR_GLI_ABDAY_1)).c_str());
}

} // namespace qmrtool
