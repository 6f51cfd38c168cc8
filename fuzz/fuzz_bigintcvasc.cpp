// Fuzz target for bigintcvasc: any bytes are read without a crash, and a value
// written in base 10 (and in base 16 when not negative) reads back the same.
#include <cstdint>
#include <cstdlib>

#include "qmr/bigint.h"

namespace
{

void check_round_trip(std::int64_t v, int radix)
{
    char out[32];
    if (biginttoasc(v, out, 25, radix) != 0)
        std::abort();
    std::int64_t back;
    if (bigintcvasc(out, -1, &back) != 0 || back != v)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 100000)
        return 0;
    std::int64_t v;
    const int rc = bigintcvasc(reinterpret_cast<const char *>(data), static_cast<int>(size), &v);
    if (rc != 0 && rc != QMR_E_NOTNUMBER && rc != QMR_E_NOFIT)
        std::abort();
    if (rc != 0 || v == QMR_BIGINT_NULL)
        return 0;
    check_round_trip(v, 10);
    if (v >= 0)
        check_round_trip(v, 16);
    return 0;
}
