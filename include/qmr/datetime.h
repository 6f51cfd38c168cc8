/* DATETIME and INTERVAL records: a 16-bit qualifier followed by the decimal
 * whose base-100 units pair holds the seconds. Operations come as built. */
#ifndef QMR_DATETIME_H
#define QMR_DATETIME_H

#include "qmr/decimal.h"

/* Qualifier: total digits << 8 | start unit << 4 | end unit. 24 bytes each. */
typedef struct dtime_t {
    short qualifier; /* total digits << 8 | start unit << 4 | end unit */
    dec_t value;     /* value; its sign is the interval's sign, positive for datetimes */
} dtime_t;

typedef struct intrvl_t {
    short qualifier; /* as for dtime_t */
    dec_t value;     /* value; its sign is the interval's sign */
} intrvl_t;

#endif /* QMR_DATETIME_H */
