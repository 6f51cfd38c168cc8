// Byte and string helpers: big-endian loads and stores of stored numbers,
// blank-padded character fields, unsigned comparisons, ASCII case shifting and
// trailing-blank length. All of them sit on hot paths, so none allocates.
#include "qmr/byteutil.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace
{

// Stored numbers are big-endian and may sit at any address: assemble them a
// byte at a time from unsigned chars (compilers turn this into one load and a
// byte swap), never through a cast pointer.
inline std::uint16_t load_be16(const char *p) noexcept
{
    const auto *b = reinterpret_cast<const unsigned char *>(p);
    return static_cast<std::uint16_t>(b[0] << 8 | b[1]);
}

inline std::uint32_t load_be32(const char *p) noexcept
{
    const auto *b = reinterpret_cast<const unsigned char *>(p);
    return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 |
           std::uint32_t{b[3]};
}

inline std::uint64_t load_be64(const char *p) noexcept
{
    return std::uint64_t{load_be32(p)} << 32 | load_be32(p + 4);
}

inline void store_be16(std::uint16_t v, char *p) noexcept
{
    const unsigned char b[2] = {static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
    std::memcpy(p, b, sizeof b);
}

inline void store_be32(std::uint32_t v, char *p) noexcept
{
    const unsigned char b[4] = {static_cast<unsigned char>(v >> 24),
                                static_cast<unsigned char>(v >> 16),
                                static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
    std::memcpy(p, b, sizeof b);
}

inline void store_be64(std::uint64_t v, char *p) noexcept
{
    store_be32(static_cast<std::uint32_t>(v >> 32), p);
    store_be32(static_cast<std::uint32_t>(v), p + 4);
}

inline unsigned char to_lower_ascii(unsigned char c) noexcept
{
    return static_cast<unsigned char>(static_cast<unsigned>(c - 'A') < 26u ? c + ('a' - 'A') : c);
}

inline unsigned char to_upper_ascii(unsigned char c) noexcept
{
    return static_cast<unsigned char>(static_cast<unsigned>(c - 'a') < 26u ? c - ('a' - 'A') : c);
}

// A null pointer orders before every string, the empty one included, and two
// nulls are equal: callers comparing optional keys get a total order instead
// of a crash. Returns 2 when neither is null and the caller must compare.
inline int order_nulls(const void *a, const void *b) noexcept
{
    if (a != nullptr && b != nullptr)
        return 2;
    if (a == b)
        return 0;
    return a == nullptr ? -1 : 1;
}

} // namespace

int ldint(const char *p) noexcept
{
    return static_cast<std::int16_t>(load_be16(p));
}

void stint(int i, char *p) noexcept
{
    store_be16(static_cast<std::uint16_t>(static_cast<unsigned>(i)), p);
}

long ldlong(const char *p) noexcept
{
    return static_cast<std::int32_t>(load_be32(p));
}

void stlong(long l, char *p) noexcept
{
    store_be32(static_cast<std::uint32_t>(static_cast<unsigned long>(l)), p);
}

double lddbl(const char *p) noexcept
{
    return std::bit_cast<double>(load_be64(p));
}

void stdbl(double d, char *p) noexcept
{
    store_be64(std::bit_cast<std::uint64_t>(d), p);
}

double ldfloat(const char *p) noexcept
{
    return std::bit_cast<float>(load_be32(p));
}

void stfloat(double f, char *p) noexcept
{
    // IEEE floats cover [-inf, +inf], so narrowing a huge double is defined:
    // it rounds to an infinity.
    store_be32(std::bit_cast<std::uint32_t>(static_cast<float>(f)), p);
}

// A null `from` reads as an all-blank field; a null `to` is ignored.
void ldchar(const char *from, int len, char *to) noexcept
{
    if (to == nullptr)
        return;
    int n = from == nullptr ? 0 : qmr_byleng(from, len);
    // memmove: callers unpack fields in place (to == from).
    if (n > 0)
        std::memmove(to, from, static_cast<std::size_t>(n));
    to[n] = '\0';
}

// A null `from` stores an all-blank field; a null `to` is ignored.
void stchr(const char *from, char *to, int len) noexcept
{
    if (to == nullptr || len <= 0)
        return;
    auto field = static_cast<std::size_t>(len);
    std::size_t n = 0;
    if (from != nullptr) {
        const void *nul = std::memchr(from, '\0', field);
        n = nul == nullptr ? field
                           : static_cast<std::size_t>(static_cast<const char *>(nul) - from);
        std::memmove(to, from, n);
    }
    std::memset(to + n, ' ', field - n);
}

int bycmpr(const char *a, const char *b, int len) noexcept
{
    if (len <= 0)
        return 0;
    if (int r = order_nulls(a, b); r != 2)
        return r;
    int r = std::memcmp(a, b, static_cast<std::size_t>(len));
    return (r > 0) - (r < 0);
}

int stcmpr(const char *a, const char *b) noexcept
{
    if (int r = order_nulls(a, b); r != 2)
        return r;
    // strcmp compares as unsigned char, which is the order wanted here.
    return std::strcmp(a, b);
}

int stcmpri(const char *a, const char *b) noexcept
{
    if (int r = order_nulls(a, b); r != 2)
        return r;
    const auto *x = reinterpret_cast<const unsigned char *>(a);
    const auto *y = reinterpret_cast<const unsigned char *>(b);
    for (;; ++x, ++y) {
        unsigned char cx = to_lower_ascii(*x);
        unsigned char cy = to_lower_ascii(*y);
        if (cx != cy)
            return cx - cy;
        if (cx == '\0')
            return 0;
    }
}

void rupshift(char *s) noexcept
{
    if (s == nullptr)
        return;
    for (; *s != '\0'; ++s)
        *s = static_cast<char>(to_upper_ascii(static_cast<unsigned char>(*s)));
}

void rdownshift(char *s) noexcept
{
    if (s == nullptr)
        return;
    for (; *s != '\0'; ++s)
        *s = static_cast<char>(to_lower_ascii(static_cast<unsigned char>(*s)));
}

// A null s has no length.
int qmr_byleng(const char *s, int len) noexcept
{
    if (s == nullptr || len <= 0)
        return 0;
    // Wide CHAR columns are mostly padding: skip it eight bytes at a time.
    constexpr std::uint64_t blanks = 0x2020202020202020u;
    while (len >= 8) {
        std::uint64_t word;
        std::memcpy(&word, s + len - 8, sizeof word);
        if (word != blanks)
            break;
        len -= 8;
    }
    while (len > 0 && s[len - 1] == ' ')
        --len;
    return len;
}
