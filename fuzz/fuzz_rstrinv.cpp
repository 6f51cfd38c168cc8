// Fuzz target for rstrinv: any text with any interval qualifier is read
// without a crash or an over-read, and what is read writes and reads back the
// same.
#include "calendar_fuzz.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    calfuzz::read_write_read(data, size, true, rstrinv, rinvstr);
    return 0;
}
