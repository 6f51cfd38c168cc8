// Small byte-scanning pieces the number readers share: the length of a text
// that may end at a NUL before its stated length, digit runs, and prefix tests
// against the locale's signs, points and separators.
#pragma once

#include <cstdint>
#include <cstring>

namespace qmr
{

inline bool is_digit_byte(char c) noexcept
{
    return static_cast<unsigned char>(c) - unsigned{'0'} <= 9;
}

// The first byte of [p, end) that is not a digit.
inline const char *digit_run_end(const char *p, const char *end) noexcept
{
    while (p < end && is_digit_byte(*p))
        ++p;
    return p;
}

// Whether [p, end) starts with the n bytes at s (never for n 0). The first
// byte decides almost every call, so it is compared inline.
inline bool starts_with(const char *p, const char *end, const char *s, int n) noexcept
{
    return n > 0 && end - p >= n && *p == *s &&
           (n == 1 || std::memcmp(p + 1, s + 1, static_cast<std::size_t>(n - 1)) == 0);
}

namespace detail
{

inline std::uint64_t load8(const char *p) noexcept
{
    std::uint64_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// Index of the first zero byte of the 8 bytes at p, or 8. The high bits of
// (v - 0x01..) & ~v mark every zero byte exactly up to the first one, which
// is all that is asked here.
inline int first_nul8(const char *p) noexcept
{
    const std::uint64_t v = load8(p);
    const std::uint64_t marks = (v - 0x0101010101010101u) & ~v & 0x8080808080808080u;
    if (marks == 0)
        return 8;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return __builtin_ctzll(marks) / 8;
#else
    for (int i = 0; i < 8; ++i)
        if (p[i] == '\0')
            return i;
    return 8;
#endif
}

} // namespace detail

// The number of digit bytes that start the 8 bytes in v (first byte lowest).
// A byte is a digit when its high nibble is 3 and adding 6 keeps it so; a
// carry out of a non-digit byte can only disturb the bytes after it.
inline int digit_prefix8(std::uint64_t v) noexcept
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    constexpr std::uint64_t high = 0xF0F0F0F0F0F0F0F0u;
    constexpr std::uint64_t threes = 0x3030303030303030u;
    const std::uint64_t bad = ((v & high) ^ threes) | (((v + 0x0606060606060606u) & high) ^ threes);
    return bad == 0 ? 8 : __builtin_ctzll(bad) / 8;
#else
    char b[8];
    std::memcpy(b, &v, 8);
    int n = 0;
    while (n < 8 && is_digit_byte(b[n]))
        ++n;
    return n;
#endif
}

// The four base-100 pairs of eight digit characters (first digit in the
// lowest byte), first pair in the lowest byte.
inline std::uint32_t digit_pairs8(std::uint64_t chars) noexcept
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    constexpr std::uint64_t lanes = 0x00FF00FF00FF00FFu;
    const std::uint64_t d = chars - 0x3030303030303030u; // no borrow: every byte is a digit
    const std::uint64_t p16 = (d & lanes) * 10 + ((d >> 8) & lanes); // a pair per 16 bits
    const std::uint64_t p32 = (p16 | (p16 >> 8)) & 0x0000FFFF0000FFFFu;
    return static_cast<std::uint32_t>(p32 | (p32 >> 16));
#else
    char b[8];
    std::memcpy(b, &chars, 8);
    unsigned char out[4];
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<unsigned char>((b[2 * i] - '0') * 10 + (b[2 * i + 1] - '0'));
    std::uint32_t r;
    std::memcpy(&r, out, 4);
    return r;
#endif
}

// The eight bytes at p (first byte lowest), reading nothing outside [begin,
// end): bytes past end read as 0. Near the end the eight bytes before it are
// read and shifted, so that only a text shorter than eight bytes is read one
// byte at a time.
inline std::uint64_t load_upto8(const char *p, const char *end, const char *begin) noexcept
{
    const long left = end - p;
    if (left >= 8)
        return detail::load8(p);
    if (left <= 0)
        return 0;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    if (end - begin >= 8)
        return detail::load8(end - 8) >> (8 * (8 - left));
#endif
    char b[8] = {};
    for (long i = 0; i < left; ++i)
        b[i] = p[i];
    return detail::load8(b);
}

// The value of the k (1 to 8) digit characters at the start of chunk (first
// digit in the lowest byte): they are moved up behind '0's and the eight are
// combined in three multiply steps: pairs, fours, then all eight.
inline std::uint64_t digits_value(std::uint64_t chunk, int k) noexcept
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    constexpr std::uint64_t zeros = 0x3030303030303030u;
    if (k < 8)
        chunk = chunk << (8 * (8 - k)) | zeros >> (8 * k);
    chunk = (chunk & 0x0F0F0F0F0F0F0F0Fu) * (256 * 10 + 1) >> 8;         // pairs
    chunk = (chunk & 0x00FF00FF00FF00FFu) * (65536 * 100 + 1) >> 16;     // fours
    return (chunk & 0x0000FFFF0000FFFFu) * ((10000ull << 32) + 1) >> 32; // eight
#else
    char b[8];
    std::memcpy(b, &chunk, 8);
    std::uint64_t v = 0;
    for (int i = 0; i < k; ++i)
        v = v * 10 + static_cast<unsigned>(b[i] - '0');
    return v;
#endif
}

// strnlen(text, len) for a non-negative len, reading only [text, text + len)
// and eight bytes at a time: the number texts are short and the call to the C
// library costs as much as the scan.
inline int text_length(const char *text, int len) noexcept
{
    int i = 0;
    for (; i + 8 <= len; i += 8) {
        const int z = detail::first_nul8(text + i);
        if (z < 8)
            return i + z;
    }
    if (i == len)
        return len;
    if (len >= 8) { // the last eight bytes again: those before i hold no NUL
        const int z = detail::first_nul8(text + len - 8);
        return z < 8 ? len - 8 + z : len;
    }
    for (; i < len; ++i)
        if (text[i] == '\0')
            return i;
    return len;
}

} // namespace qmr
