/* A pure C99 client of the library: includes every public header, links the
 * shared library and calls through the interface as a C program would. */
#include <stdio.h>
#include <string.h>

#include "qmr/qmr.h"

static int failures = 0;

#define CHECK(cond)                                                                                \
    do {                                                                                           \
        if (!(cond)) {                                                                             \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);               \
            ++failures;                                                                            \
        }                                                                                          \
    } while (0)

static void catalogue(void)
{
    char word[] = "smallint";
    char buf[32];
    CHECK(strcmp(rtypname(QMR_SQL_INTEGER), "integer") == 0);
    CHECK(rstr2type(word) == QMR_SQL_SMALLINT && strcmp(word, "SMALLINT") == 0);
    CHECK(sqlctype[QMR_SQL_DECIMAL] == QMR_C_DECIMAL);
    CHECK(sqlstype[QMR_C_INT - 100] == 1 && rtosqltype(QMR_C_INT) == 2);
    CHECK(rsetnull(QMR_C_DECIMAL, buf) == 0 && risnull(QMR_C_DECIMAL, buf) == 1);
    CHECK(sizeof(dec_t) == 22 && sizeof(qmr_int8_t) == 12 && sizeof(dtime_t) == 24);
}

static void context(void)
{
    qmr_tcb_t *root = CheckAlltcbInit();
    CHECK(root != NULL && root->initialised == 1);
    CHECK(set_toerrno(-1213) == 0 && get_toerrno() == QMR_E_NOTNUMBER);
    gset_dbver();
    CHECK(gget_dbver() == 16);
    CHECK(CheckGlsEnv() != NULL);
}

struct entry {
    const char *key;
    int value;
};

static void helpers(void)
{
    char stored[4];
    struct entry a = {"alpha", 1}, b = {"beta", 2};
    qmr_hashtab_t *table = ghashcreat(7);
    CHECK(table != NULL && ghashins(table, &a) == 1 && ghashins(table, &b) == 1);
    CHECK(ghashlook(table, "beta") == &b);
    ghashremove(table);
    stlong(-2, stored);
    CHECK(ldlong(stored) == -2 && ld4(stored) == -2);
    CHECK(cl_ext_putenv("QMR_C99_CLIENT=yes") == 0);
    CHECK(strcmp(cl_ext_getenv("QMR_C99_CLIENT"), "yes") == 0);
}

static void decimal_conversions(void)
{
    dec_t d;
    double x = 0;
    long l = 0;
    int decpt = 0, sign = 0;
    char digits[8];
    CHECK(deccvdbl(0.1, &d) == 0 && d.exponent == 0 && d.ndigits == 1 && d.digits[0] == 10);
    CHECK(dectodbl(&d, &x) == 0 && x == 0.1);
    CHECK(strcmp(decfcvt(&d, 2, &decpt, &sign), "10") == 0 && decpt == 0 && sign == 0);
    CHECK(qmr_decfcvt(&d, 6, &decpt, &sign, digits, 6) == QMR_E_BUFTOOSMALL);
    CHECK(rstol(" -42 ", &l) == 0 && deccvlong(l, &d) == 0 && dectolong(&d, &l) == 0 && l == -42);
}

int main(void)
{
    catalogue();
    context();
    helpers();
    decimal_conversions();
    FreeAllTcbs();
    if (failures == 0)
        printf("c99 client: all checks passed\n");
    return failures == 0 ? 0 : 1;
}
