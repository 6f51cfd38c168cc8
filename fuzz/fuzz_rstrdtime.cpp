// Fuzz target for rstrdtime: any text with any datetime qualifier is read
// without a crash or an over-read, and what is read writes and reads back the
// same.
#include "calendar_fuzz.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    calfuzz::read_write_read(data, size, false, rstrdtime, rdtimestr);
    return 0;
}
