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
    QMR_E_BADYEAR = -1204,         /* year outside 1..9999 */
    QMR_E_BADMONTH = -1205,        /* month outside 1..12 */
    QMR_E_BADDAY = -1206,          /* day outside its month */
    QMR_E_TEXTFIT = -1207,         /* converted text does not fit in the given length */
    QMR_E_DATERANGE = -1210,       /* day number outside 1 January 1 .. 31 December 9999 */
    QMR_E_MATCHNOMEM = -1211,      /* out of memory in a matcher, mask or locale step */
    QMR_E_BADDATEFMT = -1212,      /* bad date format or mask, or none in force */
    QMR_E_NOTNUMBER = -1213,       /* text is not a number */
    QMR_E_SMALLINTRANGE = -1214,   /* value beyond the 16-bit range -32767..32767 */
    QMR_E_INTEGERRANGE = -1215,    /* value beyond the 32-bit range -2147483647..2147483647 */
    QMR_E_BUFTOOSMALL = -1217,     /* output buffer too small */
    QMR_E_CENTURY = -1218,         /* the century of a two-digit year cannot be had */
    QMR_E_FLOATRANGE = -1222,      /* value beyond the float range */
    QMR_E_BADFLOAT = -1223,        /* not a valid floating-point value (NaN, infinity) */
    QMR_E_QUALPRECISION = -1261,   /* qualifier precision or first field too long */
    QMR_E_QUALNOTNUM = -1262,      /* qualifier precision not a number; field missing */
    QMR_E_BADFIELD = -1263,        /* unknown unit, wrong delimiter, field out of range */
    QMR_E_EXTRATEXT = -1264,       /* text after a qualifier or value */
    QMR_E_INTVOVERFLOW = -1265,    /* interval overflow, or intervals of two classes */
    QMR_E_BADQUALIFIERS = -1266,   /* incompatible datetime or interval qualifiers */
    QMR_E_BADDATETIME = -1267,     /* result is not a valid datetime */
    QMR_E_BADQUALIFIER = -1268,    /* invalid qualifier */
    QMR_E_NOPOINT = -1271,         /* decimal point missing before a fraction */
    QMR_E_NOFIT = -1284,           /* value does not fit (INT8, BIGINT) */
    QMR_E_GLS_CATEGORIES = -23101, /* unknown locale categories */
    QMR_E_GLS_CONVERTER = -23104,  /* no converter for the code set */
    QMR_E_GLS_CREATE = -23108,     /* locale structure creation failed */
    QMR_E_GLS_ENVVAR = -23110      /* locale environment variable error */
};

#endif /* QMR_ERRORS_H */
