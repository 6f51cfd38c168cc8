/* The exact decimal record dec_t: up to 16 base-100 digits with a power-of-100
 * exponent. Arithmetic and conversions are declared here as they are built. */
#ifndef QMR_DECIMAL_H
#define QMR_DECIMAL_H

#include "qmr/export.h"

#define QMR_DECSIZE 16

/* Value: (sign 0: minus, 1: plus) x 0.d0 d1 ... d(ndigits-1) x 100^exponent.
 * Zero is ndigits 0, exponent -64, sign 1; null is ndigits 0, exponent 0,
 * sign -1. The record is 22 bytes and is copied whole. */
typedef struct dec_t {
    short exponent;           /* power of 100 of the first digit, -64..63 */
    short sign;               /* 1 positive, 0 negative, -1 null */
    short ndigits;            /* significant base-100 digits held, 0..16 */
    char digits[QMR_DECSIZE]; /* base-100 digits 0..99, most significant first */
} dec_t;

#endif /* QMR_DECIMAL_H */
