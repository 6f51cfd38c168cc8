// qmr num: reads a number as DECIMAL, INT8 or BIGINT text in the locale of the
// environment and shows it in the other forms: decimal text in a field, the
// stored bytes of each type, and INT8 and BIGINT text.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qmr.hpp"
#include "qmr/bigint.h"
#include "qmr/decimal.h"
#include "qmr/int8.h"

namespace qmrtool
{
namespace
{

enum class Kind { decimal, int8, bigint };

struct Options {
    Kind kind = Kind::decimal;
    int width = 20;
    int scale = -1;
    const char *text = nullptr;
};

void usage(std::FILE *out)
{
    std::fprintf(out,
                 "usage: qmr num [--decimal | --int8 | --bigint] [-w WIDTH] [-s SCALE] TEXT\n"
                 "  Reads TEXT as a number of the given type (DECIMAL by default) with the\n"
                 "  decimal point and separators of the locale (CLIENT_LOCALE, DBMONEY) and\n"
                 "  prints it as decimal text in a field of WIDTH bytes (default 20) with\n"
                 "  SCALE decimals (default: as many as it carries), as INT8 and BIGINT text,\n"
                 "  and as the stored bytes of each type.\n");
}

bool read_int(const char *arg, int lo, int hi, int *out)
{
    char *end = nullptr;
    const long v = std::strtol(arg, &end, 10);
    if (end == arg || *end != '\0' || v < lo || v > hi)
        return false;
    *out = static_cast<int>(v);
    return true;
}

// 0 on success, 2 for bad usage (message printed).
int parse(int argc, char **argv, Options *o)
{
    for (int i = 1; i < argc; ++i) {
        const char *a = argv[i];
        if (std::strcmp(a, "--") == 0 && i + 1 < argc && o->text == nullptr) {
            o->text = argv[++i]; // a text that starts with "-"
        } else if (std::strcmp(a, "--decimal") == 0) {
            o->kind = Kind::decimal;
        } else if (std::strcmp(a, "--int8") == 0) {
            o->kind = Kind::int8;
        } else if (std::strcmp(a, "--bigint") == 0) {
            o->kind = Kind::bigint;
        } else if (std::strcmp(a, "-w") == 0 || std::strcmp(a, "-s") == 0) {
            const bool width = a[1] == 'w';
            if (i + 1 >= argc || !read_int(argv[++i], width ? 0 : -1, width ? 200 : 100,
                                           width ? &o->width : &o->scale)) {
                std::fprintf(stderr, "qmr num: %s wants a number (%s)\n", a,
                             width ? "0..200" : "-1..100");
                return 2;
            }
        } else if (std::strcmp(a, "--help") == 0 || std::strcmp(a, "-h") == 0) {
            usage(stdout);
            std::exit(0);
        } else if (o->text == nullptr &&
                   (a[0] != '-' || a[1] == '\0' || a[1] == '.' || (a[1] >= '0' && a[1] <= '9'))) {
            o->text = a;
        } else {
            std::fprintf(stderr, "qmr num: unexpected argument '%s'\n", a);
            return 2;
        }
    }
    if (o->text == nullptr) {
        usage(stderr);
        return 2;
    }
    return 0;
}

void print_bytes(const char *label, const char *bytes, int n)
{
    std::printf("%-14s", label);
    for (int i = 0; i < n; ++i)
        std::printf(" %02x", static_cast<unsigned char>(bytes[i]));
    std::printf("\n");
}

const char *describe(int status)
{
    switch (status) {
    case QMR_E_NOFIT:
        return "does not fit";
    case QMR_E_NOTNUMBER:
        return "not a number";
    case QMR_E_DECOVERFLOW:
        return "decimal overflow";
    case QMR_E_DECUNDERFLOW:
        return "decimal underflow";
    case QMR_E_TEXTFIT:
        return "text does not fit";
    case QMR_E_NOMEM:
        return "out of memory";
    default:
        return "error";
    }
}

void print_failure(const char *label, int status)
{
    std::printf("%-14s (%s, %d)\n", label, describe(status), status);
}

// Reads the text into a decimal, whatever its type.
int read_text(const Options &o, dec_t *d)
{
    const int len = static_cast<int>(std::strlen(o.text));
    int status = 0;
    if (o.kind == Kind::decimal)
        return deccvasc(o.text, len, d);
    if (o.kind == Kind::int8) {
        qmr_int8_t v;
        status = qmr_int8cvasc(o.text, len, &v);
        return status != 0 ? status : qmr_int8todec(&v, d);
    }
    int64_t v;
    status = bigintcvasc(o.text, len, &v);
    return status != 0 ? status : biginttodec(v, d);
}

void print_decimal(const dec_t &d, const Options &o)
{
    std::printf("%-14s sign %d, exponent %d, digits", "dec_t", d.sign, d.exponent);
    for (int i = 0; i < d.ndigits; ++i)
        std::printf(" %d", d.digits[i]);
    std::printf("\n");
    char field[201];
    int status = dectoasc(&d, field, o.width, o.scale);
    field[o.width] = '\0';
    std::printf("%-14s '%s' (width %d, scale %d)%s\n", "decimal text", field, o.width, o.scale,
                status == 0 ? "" : " does not fit");
    status = dectoasc_net(&d, field, o.width, o.scale);
    field[o.width] = '\0';
    std::printf("%-14s '%s'\n", "decimal net", field);
    // DECIMAL(32) holds every digit: one sign-and-exponent byte and 16 digit bytes
    char stored[17];
    stdecimal(&d, stored, static_cast<int>(sizeof stored));
    print_bytes("DECIMAL(32)", stored, static_cast<int>(sizeof stored));
}

void print_integers(dec_t d)
{
    qmr_int8_t i8;
    int status = qmr_int8cvdec(&d, &i8);
    if (status != 0) {
        print_failure("INT8", status);
    } else {
        char text[32];
        qmr_int8tostr(&i8, text, 25);
        std::printf("%-14s %s\n", "INT8", i8.sign == 0 ? "null" : text);
        char bytes[QMR_INT8_STORED_SIZE];
        stint8(&i8, bytes);
        print_bytes("INT8 stored", bytes, QMR_INT8_STORED_SIZE);
    }
    int64_t big;
    status = bigintcvdec(&d, &big);
    if (status != 0) {
        print_failure("BIGINT", status);
        return;
    }
    char dec_text[32], hex_text[32];
    biginttoasc(big, dec_text, 25, 10);
    biginttoasc(big, hex_text, 25, 16);
    if (big == QMR_BIGINT_NULL)
        std::printf("%-14s null\n", "BIGINT");
    else
        std::printf("%-14s %s  %s\n", "BIGINT", dec_text, hex_text);
    char bytes[8];
    stbigint(big, bytes);
    print_bytes("BIGINT stored", bytes, 8);
}

} // namespace

int run_num(int argc, char **argv)
{
    Options o;
    if (const int rc = parse(argc, argv, &o); rc != 0)
        return rc;
    dec_t d;
    const int status = read_text(o, &d);
    if (status != 0) {
        std::fprintf(stderr, "qmr num: '%s': %s (%d)\n", o.text, describe(status), status);
        return 1;
    }
    static const char *const kinds[] = {"DECIMAL", "INT8", "BIGINT"};
    std::printf("%-14s '%s' as %s\n", "input", o.text, kinds[static_cast<int>(o.kind)]);
    if (d.sign == -1) {
        std::printf("%-14s null\n", "value");
        return 0;
    }
    print_decimal(d, o);
    print_integers(d);
    return 0;
}

} // namespace qmrtool
