// The oracle for the decimal routines: the straightforward base-100 digit
// loops, under the same names in namespace ref, compared byte for byte with
// the library's optimised routines by the differential tests.
#ifndef QMR_TESTS_DECIMAL_REFERENCE_HPP
#define QMR_TESTS_DECIMAL_REFERENCE_HPP

#include "qmr/decimal.h"

namespace ref
{

int decload(dec_t *result, int sign, int exponent, const char *bytes, int count) noexcept;
int decadd(const dec_t *a, const dec_t *b, dec_t *result) noexcept;
int decsub(const dec_t *a, const dec_t *b, dec_t *result) noexcept;
int decmul(const dec_t *a, const dec_t *b, dec_t *result) noexcept;
int decdiv(const dec_t *a, const dec_t *b, dec_t *result) noexcept;
void dectrunc(dec_t *d, int s) noexcept;
void decround(dec_t *d, int s) noexcept;
int deccmp(const dec_t *a, const dec_t *b) noexcept;
int decsqrt(const dec_t *x, dec_t *result) noexcept;
void deccomplement(char *bytes, int n) noexcept;
void stdecimal(const dec_t *d, char *buffer, int len) noexcept;
int lddecimal(const char *buffer, int len, dec_t *d) noexcept;

} // namespace ref

#endif
