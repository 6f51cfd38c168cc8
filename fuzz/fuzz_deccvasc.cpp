// Fuzz target for deccvasc and deccvasc_net: any bytes are read without a
// crash, and a value read, written back at full width and read again is the
// same value.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "qmr/decimal.h"

namespace
{

bool same(const dec_t &a, const dec_t &b)
{
    return a.sign == b.sign && a.exponent == b.exponent && a.ndigits == b.ndigits &&
           std::memcmp(a.digits, b.digits, static_cast<std::size_t>(a.ndigits)) == 0;
}

void check_round_trip(const dec_t &d, bool net)
{
    // 80 bytes show every digit of any value, in fixed or exponent form
    char text[80];
    const int rc = net ? dectoasc_net(&d, text, 80, -1) : dectoasc(&d, text, 80, -1);
    if (rc != 0)
        std::abort();
    dec_t back;
    const int read = net ? deccvasc_net(text, 80, &back) : deccvasc(text, 80, &back);
    if (read != 0 || !same(back, d))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 100000)
        return 0;
    const char *text = reinterpret_cast<const char *>(data);
    const int len = static_cast<int>(size);
    dec_t d;
    if (deccvasc(text, len, &d) == 0 && d.sign != -1) {
        if (decverify(&d) != 0)
            std::abort();
        check_round_trip(d, false);
        // any field width and decimals: never more than len bytes written
        char field[64];
        const int width = size > 0 ? data[0] % 40 : 0;
        field[width] = '#';
        dectoasc(&d, field, width, size > 1 ? data[1] % 20 - 1 : -1);
        if (field[width] != '#')
            std::abort();
    }
    if (deccvasc_net(text, len, &d) == 0 && d.sign != -1)
        check_round_trip(d, true);
    return 0;
}
