// The two special decimal records every decimal routine hands back: the null
// (sign -1) and the normal zero (exponent -64, no digits).
#pragma once

#include "qmr/decimal.h"

namespace qmr
{

inline void set_dec_null(dec_t *d) noexcept
{
    d->sign = -1;
    d->exponent = 0;
    d->ndigits = 0;
}

inline void set_dec_zero(dec_t *d) noexcept
{
    d->sign = 1;
    d->exponent = -64;
    d->ndigits = 0;
}

} // namespace qmr
