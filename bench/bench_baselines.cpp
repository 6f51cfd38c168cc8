// Trivial baselines beside which the library's calls are measured.
#include <cstring>

#include "baselines.hpp"

namespace qmrbench
{

namespace
{
thread_local int tls_anchor;
thread_local void *tls_pointer = nullptr;
constexpr const char *names[] = {"char", "smallint", "integer", "float", "smallfloat", "decimal"};
} // namespace

__attribute__((noinline)) void *thread_local_read()
{
    if (tls_pointer == nullptr)
        tls_pointer = &tls_anchor;
    return tls_pointer;
}

__attribute__((noinline)) const char *plain_name_lookup(int code)
{
    unsigned low = static_cast<unsigned>(code) & 0xFFu;
    return low < sizeof names / sizeof names[0] ? names[low] : "";
}

__attribute__((noinline)) int plain_int_isnull(const char *p)
{
    int v;
    std::memcpy(&v, p, sizeof v);
    return v == static_cast<int>(0x80000000u);
}

__attribute__((noinline)) int utf8_count_unchecked(const char *s, std::size_t n)
{
    int count = 0;
    for (std::size_t i = 0; i < n; ++count) {
        const auto lead = static_cast<unsigned char>(s[i]);
        i += lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    }
    return count;
}

__attribute__((noinline)) int byte_loop(const char *s, std::size_t n)
{
    int count = 0;
    for (std::size_t i = 0; i < n; ++i)
        count += (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80;
    return count;
}

} // namespace qmrbench
