// Fuzz target for dtcvasc and dttoasc, the record forms of the datetime text
// conversions: read, written and read back the same.
#include "calendar_fuzz.hpp"

namespace
{

int read_record(const char *text, dec_t *out, int qual)
{
    dtime_t dt;
    dt.qualifier = static_cast<short>(qual);
    int status = dtcvasc(text, &dt);
    *out = dt.value;
    return status;
}

int write_record(const dec_t *value, int qual, char *out)
{
    dtime_t dt{static_cast<short>(qual), *value};
    return dttoasc(&dt, out);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    calfuzz::read_write_read(data, size, false, read_record, write_record);
    return 0;
}
