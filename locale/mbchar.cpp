// The multibyte character operations of the locale library: length, stepping
// both ways, counting, copying, appending, searching, comparing, display
// width and conversion to and from wide values; and the per-thread error cell.
#include <climits>
#include <cstring>

#include "locale/locale_data.hpp"
#include "locale/mbchar.hpp"
#include "qmr/gl.h"

namespace
{

thread_local int gl_errno = 0;

} // namespace

int *qmr_gl_errno_location(void) noexcept
{
    return &gl_errno;
}

namespace qmr
{

const Locale *locale_of(void *handle) noexcept
{
    if (handle == nullptr)
        gl_errno = QMR_GLE_NOLOCALE;
    return static_cast<const Locale *>(handle);
}

void set_gl_errno(int code) noexcept
{
    gl_errno = code;
}

int step_char(const Locale &loc, const char *s, int n, char32_t *cp) noexcept
{
    // The common cases first: a single byte of Latin-1, ASCII in UTF-8.
    if (n > 0 && s[0] != '\0') {
        const auto byte = static_cast<unsigned char>(s[0]);
        if (loc.kind == CodesetKind::latin1 || (byte < 0x80 && loc.kind == CodesetKind::utf8)) {
            *cp = byte;
            return 1;
        }
    }
    const int len =
        loc.kind == CodesetKind::utf8 ? utf8_decode(s, n, cp) : decode_char(loc, s, n, cp);
    if (len < 0)
        gl_errno = len == kDecodeTrunc ? QMR_GLE_TRUNC : QMR_GLE_BADSEQ;
    return len < 0 ? -1 : len;
}

} // namespace qmr

using qmr::Locale;
using qmr::locale_of;
using qmr::step_char;

int gl_full_mblen(void *locale, const char *s, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    if (s == nullptr)
        return 0;
    char32_t cp;
    return step_char(*loc, s, n, &cp);
}

const char *gl_full_mbsnext(void *locale, const char *s, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || s == nullptr)
        return nullptr;
    char32_t cp;
    const int len = step_char(*loc, s, n, &cp);
    return len < 0 ? nullptr : s + len;
}

namespace
{

// Scans forward from start to find the character that ends at s: the only way
// for code sets whose trailing bytes can look like leading ones.
const char *prev_by_scan(const Locale &loc, const char *start, const char *s) noexcept
{
    const char *p = start;
    const char *prev = nullptr;
    while (p < s) {
        char32_t cp;
        const int len = step_char(loc, p, static_cast<int>(s - p), &cp);
        if (len <= 0) {
            if (len == 0)
                qmr::set_gl_errno(QMR_GLE_BADSEQ); // a NUL before s
            return nullptr;
        }
        prev = p;
        p += len;
    }
    return prev;
}

// UTF-8 marks its continuation bytes, so the character before s starts at
// most three bytes back; it must then end exactly at s.
const char *prev_utf8(const Locale &loc, const char *start, const char *s) noexcept
{
    const char *p = s - 1;
    while (p > start && s - p < 4 && (static_cast<unsigned char>(*p) & 0xC0) == 0x80)
        --p;
    char32_t cp;
    const int len = step_char(loc, p, static_cast<int>(s - p), &cp);
    if (len == static_cast<int>(s - p))
        return p;
    if (len >= 0)
        qmr::set_gl_errno(QMR_GLE_BADSEQ); // s is inside a character, or after a NUL
    return nullptr;
}

} // namespace

const char *gl_full_mbsprev(void *locale, const char *start, const char *s) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || start == nullptr || s == nullptr || s <= start)
        return nullptr;
    if (loc->single_byte) {
        char32_t cp;
        return step_char(*loc, s - 1, 1, &cp) == 1 ? s - 1 : nullptr;
    }
    if (loc->kind == qmr::CodesetKind::utf8)
        return prev_utf8(*loc, start, s);
    return prev_by_scan(*loc, start, s);
}

int gl_full_charoffset(void *locale, const char *s, int n, int count) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    if (s == nullptr)
        return 0;
    int offset = 0;
    for (int i = 0; i < count; ++i) {
        char32_t cp;
        const int len = step_char(*loc, s + offset, n - offset, &cp);
        if (len < 0)
            return -1;
        if (len == 0)
            break;
        offset += len;
    }
    return offset;
}

int gl_mbsntslen(void *locale, const char *s, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    if (s == nullptr)
        return 0;
    if (n < 0)
        n = INT_MAX;
    if (loc->kind == qmr::CodesetKind::latin1)
        return static_cast<int>(strnlen(s, static_cast<std::size_t>(n)));
    int count = 0;
    for (int offset = 0;;) {
        char32_t cp;
        const int len = step_char(*loc, s + offset, n - offset, &cp);
        if (len <= 0)
            return len < 0 ? -1 : count;
        offset += len;
        ++count;
    }
}

char *gl_mbsncpy(void *locale, char *dst, const char *src, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || dst == nullptr)
        return nullptr;
    int offset = 0;
    char *result = dst;
    while (src != nullptr && offset < n) {
        // Decoded without the bound n, so that a character that does not fit
        // is told apart from one that is cut short in src.
        char32_t cp;
        const int len = step_char(*loc, src + offset, loc->max_char_len, &cp);
        if (len < 0)
            result = nullptr;
        if (len <= 0 || offset + len > n)
            break;
        std::memcpy(dst + offset, src + offset, static_cast<std::size_t>(len));
        offset += len;
    }
    dst[offset] = '\0';
    return result;
}

char *gl_full_mbscat(void *locale, char *dst, const char *src, int room) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || dst == nullptr || room <= 0)
        return nullptr;
    std::size_t used = strnlen(dst, static_cast<std::size_t>(room));
    if (used == static_cast<std::size_t>(room)) {
        qmr::set_gl_errno(QMR_GLE_NOROOM);
        return nullptr;
    }
    char *result = dst;
    for (const char *p = src; p != nullptr;) {
        char32_t cp;
        const int len = step_char(*loc, p, loc->max_char_len, &cp);
        if (len < 0)
            result = nullptr;
        if (len <= 0 || used + static_cast<std::size_t>(len) >= static_cast<std::size_t>(room))
            break;
        std::memcpy(dst + used, p, static_cast<std::size_t>(len));
        used += static_cast<std::size_t>(len);
        p += len;
    }
    dst[used] = '\0';
    return result;
}

const char *gl_full_mbschr(void *locale, const char *s, const char *ch) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || s == nullptr || ch == nullptr)
        return nullptr;
    char32_t wanted;
    const int wanted_len = step_char(*loc, ch, loc->max_char_len, &wanted);
    if (wanted_len < 0)
        return nullptr;
    if (wanted_len == 0)
        return s + std::strlen(s); // the NUL itself, as strchr finds it
    if (loc->kind == qmr::CodesetKind::latin1)
        return std::strchr(s, ch[0]);
    for (const char *p = s;;) {
        char32_t cp;
        const int len = step_char(*loc, p, loc->max_char_len, &cp);
        if (len <= 0)
            return nullptr;
        if (cp == wanted)
            return p;
        p += len;
    }
}

namespace
{

int compare_bytes(const char *a, const char *b) noexcept
{
    const int order = std::strcmp(a, b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

} // namespace

int gl_full_mbscmp(void *locale, const char *a, const char *b) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || loc->kind == qmr::CodesetKind::latin1 ||
        loc->kind == qmr::CodesetKind::utf8)
        return compare_bytes(a, b); // byte order is code order in both
    for (;;) {
        char32_t ca = 0, cb = 0;
        const int la = step_char(*loc, a, loc->max_char_len, &ca);
        const int lb = step_char(*loc, b, loc->max_char_len, &cb);
        if (la < 0 || lb < 0)
            return compare_bytes(a, b);
        if (la == 0 || lb == 0)
            return la == lb ? 0 : la == 0 ? -1 : 1;
        if (ca != cb)
            return ca < cb ? -1 : 1;
        a += la;
        b += lb;
    }
}

int gl_mbwidth(void *locale, const char *s, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    if (s == nullptr)
        return 0;
    char32_t cp;
    const int len = step_char(*loc, s, n, &cp);
    if (len <= 0)
        return len;
    if (loc->single_byte)
        return (loc->ctype[static_cast<unsigned char>(s[0])] & QMR_GLCT_CNTRL) != 0 ? 0 : 1;
    return qmr::unicode_width(cp);
}

int gl_mbtowc(void *locale, wchar_t *wc, const char *s, int n) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    char32_t cp = 0;
    const int len = s == nullptr ? 0 : step_char(*loc, s, n, &cp);
    if (len >= 0 && wc != nullptr)
        *wc = len == 0 ? 0 : static_cast<wchar_t>(cp);
    return len;
}

int gl_mbstowcs(void *locale, wchar_t *dst, const char *src, int max) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr)
        return -1;
    int count = 0;
    while (src != nullptr && (dst == nullptr || count < max)) {
        char32_t cp;
        const int len = step_char(*loc, src, loc->max_char_len, &cp);
        if (len < 0)
            return -1;
        if (len == 0)
            break;
        if (dst != nullptr)
            dst[count] = static_cast<wchar_t>(cp);
        ++count;
        src += len;
    }
    if (dst != nullptr && count < max)
        dst[count] = 0;
    return count;
}

int gl_wctomb(void *locale, char *s, wchar_t wc) noexcept
{
    const Locale *loc = locale_of(locale);
    if (loc == nullptr || s == nullptr)
        return -1;
    const int len = wc < 0 ? -1 : qmr::encode_char(*loc, static_cast<char32_t>(wc), s);
    if (len < 0)
        qmr::set_gl_errno(QMR_GLE_BADSEQ);
    return len;
}
