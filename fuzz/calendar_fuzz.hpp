// Shared by the calendar fuzz targets: the input as a NUL-terminated text in a
// buffer of exactly its size (so that a read past the end is caught), and the
// valid qualifiers that the first input byte chooses from.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "qmr/datetime.h"

namespace calfuzz
{

inline std::unique_ptr<char[]> text_of(const std::uint8_t *data, std::size_t size)
{
    std::unique_ptr<char[]> text(new char[size + 1]);
    std::memcpy(text.get(), data, size);
    text[size] = '\0';
    return text;
}

// Every valid datetime (interval) qualifier, in code order.
inline const std::vector<int> &qualifiers(bool interval)
{
    static const auto build = [](bool inv) {
        std::vector<int> list;
        for (int q = 1; q <= 0x7FFF; ++q)
            if (_chk_qual(inv ? 1 : 0, q) == 0)
                list.push_back(q);
        return list;
    };
    static const std::vector<int> datetimes = build(false), intervals = build(true);
    return interval ? intervals : datetimes;
}

inline bool same(const dec_t &a, const dec_t &b)
{
    return a.sign == b.sign && a.exponent == b.exponent && a.ndigits == b.ndigits &&
           std::memcmp(a.digits, b.digits, static_cast<std::size_t>(a.ndigits)) == 0;
}

// Reads data[1..] as a value of the qualifier chosen by data[0]; when it reads,
// the written text must read back to the same value and be written the same.
template <typename Read, typename Write>
void read_write_read(const std::uint8_t *data, std::size_t size, bool interval, Read read,
                     Write write)
{
    if (size == 0 || size > 4096)
        return;
    const std::vector<int> &quals = qualifiers(interval);
    int qual = quals[data[0] % quals.size()];
    auto text = text_of(data + 1, size - 1);
    dec_t value;
    if (read(text.get(), &value, qual) != 0 || value.sign == -1)
        return;
    if (decverify(&value) != 0 || chk_dtinv(&value, qual, interval ? 0 : 1) != 0)
        std::abort();
    char written[64], again[64];
    dec_t back;
    if (write(&value, qual, written) != 0 || read(written, &back, qual) != 0 || !same(back, value))
        std::abort();
    if (write(&back, qual, again) != 0 || std::strcmp(written, again) != 0)
        std::abort();
}

} // namespace calfuzz
