// The catalogue's own display widths, for the layer above that answers
// rtypwidth: the types whose width needs no locale conventions.
#pragma once

namespace qmr
{

// The display width that the catalogue row of the column type (attribute bits
// dropped) gives for len; 0 for DECIMAL, MONEY, DATE and DATETIME, whose
// widths come from the locale environment, and for codes above 53.
int table_width(int type, int len) noexcept;

} // namespace qmr
