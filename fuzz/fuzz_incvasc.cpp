// Fuzz target for incvasc and intoasc, the record forms of the interval text
// conversions: read, written and read back the same.
#include "calendar_fuzz.hpp"

namespace
{

int read_record(const char *text, dec_t *out, int qual)
{
    intrvl_t inv;
    inv.qualifier = static_cast<short>(qual);
    int status = incvasc(text, &inv);
    *out = inv.value;
    return status;
}

int write_record(const dec_t *value, int qual, char *out)
{
    intrvl_t inv{static_cast<short>(qual), *value};
    return intoasc(&inv, out);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    calfuzz::read_write_read(data, size, true, read_record, write_record);
    return 0;
}
