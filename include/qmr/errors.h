/* The library's status codes. Functions return 0 for success and one of these
 * negative codes for failure; 100 is the "not found" result of the walkers. */
#ifndef QMR_ERRORS_H
#define QMR_ERRORS_H

enum qmr_status {
    QMR_OK = 0,
    QMR_NOTFOUND = 100,            /* end of a collection, no such element */
    QMR_E_BADCHAR = -202,          /* bytes are not a character of the code set */
    QMR_E_NOMEM = -406,            /* no memory, or no thread context */
    QMR_E_DECOVERFLOW = -1200,     /* decimal overflow */
    QMR_E_DECUNDERFLOW = -1201,    /* decimal underflow */
    QMR_E_DIVZERO = -1202,         /* division by zero */
    QMR_E_MATCHNOMEM = -1211,      /* out of memory in a matcher, mask or locale step */
    QMR_E_NOTNUMBER = -1213,       /* text is not a number */
    QMR_E_FLOATRANGE = -1222,      /* value beyond the float range */
    QMR_E_INTVOVERFLOW = -1265,    /* interval overflow, or intervals of two classes */
    QMR_E_BADQUALIFIERS = -1266,   /* incompatible datetime or interval qualifiers */
    QMR_E_NOFIT = -1284,           /* value does not fit (INT8, BIGINT) */
    QMR_E_GLS_CATEGORIES = -23101, /* unknown locale categories */
    QMR_E_GLS_CONVERTER = -23104,  /* no converter for the code set */
    QMR_E_GLS_CREATE = -23108,     /* locale structure creation failed */
    QMR_E_GLS_ENVVAR = -23110      /* locale environment variable error */
};

#endif /* QMR_ERRORS_H */
