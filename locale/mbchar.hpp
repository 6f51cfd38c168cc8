// Shared steps of the gl_ operations: the handle check, the error cell and
// the reporting character decoder.
#pragma once

#include "locale/locale_data.hpp"

namespace qmr
{

// The locale behind a handle; null (and the cell set to QMR_GLE_NOLOCALE)
// for a null handle.
const Locale *locale_of(void *handle) noexcept;
void set_gl_errno(int code) noexcept;
// Decodes the character at s within n bytes: its length, 0 at the end, or -1
// with the cell set (QMR_GLE_BADSEQ or QMR_GLE_TRUNC).
int step_char(const Locale &loc, const char *s, int n, char32_t *cp) noexcept;

} // namespace qmr
