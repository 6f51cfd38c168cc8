// Character classes and case mapping: class selectors on multibyte and wide
// characters, the single-byte class table, and lower- and upper-casing of
// strings and wide values.
#include "locale/mbchar.hpp"
#include "qmr/gl.h"

namespace
{

using qmr::CodesetKind;
using qmr::Locale;

// The class bits a selector asks for; 0 for an unknown selector.
unsigned short selector_mask(int cls) noexcept
{
    switch (cls) {
    case 1:
        return QMR_GLCT_UPPER;
    case 2:
        return QMR_GLCT_LOWER;
    case 3:
        return QMR_GLCT_ALPHA;
    case 4:
        return QMR_GLCT_DIGIT;
    case 5:
        return QMR_GLCT_XDIGIT;
    case 6:
        return QMR_GLCT_PUNCT;
    case 7:
        return QMR_GLCT_CNTRL;
    case 8:
    case 16:
        return QMR_GLCT_SPACE;
    case 9:
        return QMR_GLCT_PRINT;
    case 10:
        return QMR_GLCT_GRAPH;
    case 12:
        return QMR_GLCT_ALPHA | QMR_GLCT_DIGIT;
    case 1024:
        return QMR_GLCT_BLANK;
    default:
        return 0;
    }
}

// The byte of a single-byte code set that holds wc, or -1.
int byte_of(const Locale &loc, wchar_t wc) noexcept
{
    char out[4];
    return wc >= 0 && qmr::encode_char(loc, static_cast<char32_t>(wc), out) == 1
               ? static_cast<unsigned char>(out[0])
               : -1;
}

unsigned short wide_classes(const Locale &loc, wchar_t wc) noexcept
{
    if (loc.single_byte) {
        const int byte = byte_of(loc, wc);
        return byte < 0 || byte == 0 ? 0 : loc.ctype[byte];
    }
    return wc < 0 ? 0 : qmr::classify_unicode(static_cast<char32_t>(wc));
}

int class_test(unsigned short bits, int cls) noexcept
{
    const unsigned short mask = selector_mask(cls);
    if (mask == 0) {
        qmr::set_gl_errno(QMR_GLE_INVAL);
        return 0;
    }
    return (bits & mask) != 0 ? 1 : 0;
}

// Maps the case of one wide value: through the tables in a single-byte code
// set (which keeps a mapping the code set cannot write out), else through the
// Unicode character database.
wchar_t map_wide(const Locale &loc, wchar_t wc, bool lower) noexcept
{
    if (wc < 0)
        return wc;
    if (loc.single_byte) {
        const int byte = byte_of(loc, wc);
        if (byte < 0)
            return wc;
        const unsigned char mapped = lower ? loc.lower[byte] : loc.upper[byte];
        return static_cast<wchar_t>(loc.decode[mapped]);
    }
    const auto cp = static_cast<char32_t>(wc);
    return static_cast<wchar_t>(lower ? qmr::unicode_lower(cp) : qmr::unicode_upper(cp));
}

int map_string(void *locale, char *dst, int room, const char *src, int n, bool lower) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    if (loc == nullptr || dst == nullptr || src == nullptr || room <= 0) {
        if (loc != nullptr)
            qmr::set_gl_errno(QMR_GLE_INVAL);
        return -1;
    }
    const unsigned char *table = lower ? loc->lower : loc->upper;
    int in = 0, out = 0;
    for (;;) {
        char32_t cp;
        const int len = qmr::step_char(*loc, src + in, n < 0 ? loc->max_char_len : n - in, &cp);
        if (len < 0)
            return -1;
        if (len == 0)
            break;
        char bytes[4];
        int written;
        if (loc->single_byte) {
            bytes[0] = static_cast<char>(table[static_cast<unsigned char>(src[in])]);
            written = 1;
        } else {
            const char32_t mapped = lower ? qmr::unicode_lower(cp) : qmr::unicode_upper(cp);
            written = qmr::encode_char(*loc, mapped, bytes);
            if (written < 0) { // the code set lacks the other case: keep the character
                for (int i = 0; i < len; ++i)
                    bytes[i] = src[in + i];
                written = len;
            }
        }
        if (out + written >= room) {
            dst[out] = '\0';
            qmr::set_gl_errno(QMR_GLE_NOROOM);
            return -1;
        }
        for (int i = 0; i < written; ++i)
            dst[out + i] = bytes[i];
        out += written;
        in += len;
    }
    dst[out] = '\0';
    return out;
}

} // namespace

int _gl_im_ismctype(void *locale, const char *s, int n, int cls) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    if (loc == nullptr || s == nullptr)
        return 0;
    char32_t cp;
    const int len = qmr::step_char(*loc, s, n, &cp);
    if (len <= 0)
        return 0;
    const unsigned short bits =
        loc->single_byte ? loc->ctype[static_cast<unsigned char>(s[0])] : qmr::classify_unicode(cp);
    return class_test(bits, cls);
}

int _gl_im_iswctype(void *locale, wchar_t wc, int cls) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    if (loc == nullptr)
        return 0;
    return class_test(wide_classes(*loc, wc), cls);
}

const unsigned short *qmr_gl_ctype_table(void *locale) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    return loc != nullptr && loc->single_byte ? loc->ctype : nullptr;
}

int _gl_im_tomlower(void *locale, char *dst, int room, const char *src, int n) noexcept
{
    return map_string(locale, dst, room, src, n, true);
}

int _gl_im_tomupper(void *locale, char *dst, int room, const char *src, int n) noexcept
{
    return map_string(locale, dst, room, src, n, false);
}

wchar_t _gl_im_towlower(void *locale, wchar_t wc) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    return loc == nullptr ? wc : map_wide(*loc, wc, true);
}

wchar_t _gl_im_towupper(void *locale, wchar_t wc) noexcept
{
    const Locale *loc = qmr::locale_of(locale);
    return loc == nullptr ? wc : map_wide(*loc, wc, false);
}
