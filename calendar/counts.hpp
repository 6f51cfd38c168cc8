// Intervals as counts: exact conversions between a dec_t and a scaled
// 128-bit integer, and the unit sizes that day-time arithmetic works in.
#pragma once

#include "calendar/calendar.hpp"

namespace qmr
{

using wide = __int128;

// Size of each unit below DAY in 10^-5 seconds, indexed by unit / 2.
inline constexpr long long unit_ticks[6] = {
    0, 0, 86400LL * 100000, 3600LL * 100000, 60LL * 100000, 100000};
inline constexpr long long ticks_per_day = 86400LL * 100000;
// How many of a unit make one of the unit before it, indexed by unit / 2.
inline constexpr int unit_base[6] = {100, 12, 1, 24, 60, 60};

// floor(|d| * 10^scale); false when it reaches 10^36.
bool dec_to_scaled(const dec_t *d, int scale, wide *value) noexcept;
// value * 10^-scale with sign (1 or 0) into out; the decload status.
int scaled_to_dec(wide value, int scale, int sign, dec_t *out) noexcept;
// The time of day held by f from HOUR on, in 10^-5 seconds (fields the
// qualifier lacks are 0 in f).
long long time_ticks(const Fields &f) noexcept;
// Sets HOUR .. FRACTION of f from ticks in [0, one day).
void set_time(Fields *f, long long ticks) noexcept;
// Number of fraction digits of an end unit (0 up to SECOND).
inline int frac_digits(int end) noexcept
{
    return end > QMR_TU_SECOND ? end - 10 : 0;
}
// Whether a valid interval qualifier is of the year-month class.
inline bool year_month(int qual) noexcept
{
    return QMR_TU_START(qual) <= QMR_TU_MONTH;
}
// The interval held by f (units start..end of qual) as a count of its end
// unit scaled by 10^frac_digits(end), magnitude only.
wide interval_count(const Fields &f, int start, int end) noexcept;
// Splits a count of end units (scaled as above) into the fields of qual;
// false when the first field cannot hold what remains.
bool count_to_fields(wide count, int qual, Fields *f) noexcept;

} // namespace qmr
