/* The INT8/SERIAL8 record qmr_int8_t: a 63-bit magnitude in two 32-bit words
 * with a separate sign. Arithmetic and conversions are declared here as built. */
#ifndef QMR_INT8_H
#define QMR_INT8_H

#include "qmr/export.h"

/* Range -(2^63-1)..2^63-1; zero is magnitude 0 with sign 1; null is sign 0
 * with both words 0. 12 bytes. */
typedef struct qmr_int8_t {
    unsigned int data[2]; /* data[0] the low 32 bits, data[1] the high 32 bits */
    short sign;           /* 1 positive, -1 negative, 0 null */
} qmr_int8_t;

#endif /* QMR_INT8_H */
