// Fuzz target for rtuqual: any text is read without a crash or an over-read;
// a qualifier read is valid, and its text from rtudesc reads back the same.
#include "calendar_fuzz.hpp"

#include "qmr/types.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0 || size > 4096)
        return 0;
    int type = data[0] % 2 == 0 ? QMR_SQL_DATETIME : QMR_SQL_INTERVAL;
    auto text = calfuzz::text_of(data + 1, size - 1);
    int qual = 0;
    if (rtuqual(type, text.get(), &qual) != 0)
        return 0;
    if (_chk_qual(type == QMR_SQL_INTERVAL ? 1 : 0, qual) != 0)
        std::abort();
    char desc[64];
    int n = rtudesc(type, qual, desc);
    if (n <= 0 || n >= 64)
        std::abort();
    desc[n] = '\0';
    int back = -1;
    if (rtuqual(type, desc, &back) != 0 || back != qual)
        std::abort();
    return 0;
}
