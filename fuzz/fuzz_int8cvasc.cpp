// Fuzz target for qmr_int8cvasc: any bytes are read without a crash, the value
// agrees with the BIGINT reader, and its text reads back to the same record.
#include <cstdint>
#include <cstdlib>

#include "qmr/bigint.h"
#include "qmr/int8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 100000)
        return 0;
    const char *text = reinterpret_cast<const char *>(data);
    const int len = static_cast<int>(size);
    qmr_int8_t r;
    const int rc = qmr_int8cvasc(text, len, &r);
    std::int64_t v;
    if (bigintcvasc(text, len, &v) != rc)
        std::abort();
    if (rc != 0 || r.sign == 0)
        return 0;
    std::int64_t native;
    if (int8toqmr_off_t(&r, &native) != 0 || native != v)
        std::abort();
    char out[32];
    if (qmr_int8tostr(&r, out, 25) != 0)
        std::abort();
    qmr_int8_t back;
    if (qmr_int8cvasc(out, -1, &back) != 0 || qmr_int8cmp(&back, &r) != 0 || back.sign != r.sign)
        std::abort();
    return 0;
}
