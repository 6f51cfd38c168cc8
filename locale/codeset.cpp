// The code sets the library serves, locale-name parsing, UTF-8 decoding and
// encoding, and the Latin-1 class and case tables of the built-in locales.
#include "locale/codeset.hpp"

#include <array>
#include <cstring>

#include "qmr/errors.h"
#include "qmr/gl.h"

namespace qmr
{
namespace
{

constexpr CodesetInfo codesets[] = {
    {"8859-1", 819, nullptr, CodesetKind::latin1, "88591|iso88591|latin1|819"},
    {"utf8", 57372, nullptr, CodesetKind::utf8, "utf8|57372"},
    {"8859-2", 912, "ISO-8859-2", CodesetKind::sbcs, "88592|iso88592|latin2|912"},
    {"8859-5", 915, "ISO-8859-5", CodesetKind::sbcs, "88595|iso88595|915"},
    {"8859-7", 813, "ISO-8859-7", CodesetKind::sbcs, "88597|iso88597|813"},
    {"8859-9", 920, "ISO-8859-9", CodesetKind::sbcs, "88599|iso88599|latin5|920"},
    {"8859-15", 923, "ISO-8859-15", CodesetKind::sbcs, "885915|iso885915|latin9|923"},
    {"cp1250", 1250, "windows-1250", CodesetKind::sbcs, "cp1250|windows1250|1250"},
    {"cp1251", 1251, "windows-1251", CodesetKind::sbcs, "cp1251|windows1251|1251"},
    {"cp1252", 1252, "windows-1252", CodesetKind::sbcs, "cp1252|windows1252|1252"},
    {"koi8-r", 878, "KOI8-R", CodesetKind::sbcs, "koi8r|878"},
    {"ascii", 367, "US-ASCII", CodesetKind::sbcs, "ascii|usascii|646|367"},
    {"sjis", 932, "Shift_JIS", CodesetKind::mbcs, "sjis|shiftjis|932"},
    {"eucjp", 5050, "EUC-JP", CodesetKind::mbcs, "eucjp|ujis|5050"},
    {"gb18030", 5488, "GB18030", CodesetKind::mbcs, "gb18030|5488"},
    {"big5", 950, "Big5", CodesetKind::mbcs, "big5|950"},
    {"euckr", 970, "EUC-KR", CodesetKind::mbcs, "euckr|970"},
};

char ascii_lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool is_letter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Whether `wanted` is one of the '|'-separated entries of `list`.
bool in_alias_list(std::string_view list, std::string_view wanted) noexcept
{
    while (!list.empty()) {
        std::size_t bar = list.find('|');
        if (list.substr(0, bar) == wanted)
            return true;
        if (bar == std::string_view::npos)
            break;
        list.remove_prefix(bar + 1);
    }
    return false;
}

} // namespace

const CodesetInfo *find_codeset(std::string_view spelling) noexcept
{
    char normal[24];
    std::size_t len = 0;
    for (char c : spelling) {
        if (c == '-' || c == '_')
            continue;
        if (len == sizeof normal)
            return nullptr;
        normal[len++] = ascii_lower(c);
    }
    if (len == 0)
        return nullptr;
    for (const CodesetInfo &info : codesets)
        if (in_alias_list(info.aliases, std::string_view(normal, len)))
            return &info;
    return nullptr;
}

int parse_locale_name(const char *text, LocaleName *out) noexcept
{
    if (text == nullptr)
        return QMR_E_GLS_ENVVAR;
    std::size_t total = strnlen(text, 40);
    if (total >= 40)
        return QMR_E_GLS_ENVVAR;
    std::string_view s(text, total);
    std::size_t under = s.find('_');
    std::size_t dot = s.find('.');
    if (under < 2 || under > 3 || dot != under + 3 || dot + 1 >= s.size())
        return QMR_E_GLS_ENVVAR;
    for (std::size_t i = 0; i < dot; ++i)
        if (i != under && !is_letter(s[i]))
            return QMR_E_GLS_ENVVAR;
    std::string_view cs = s.substr(dot + 1);
    for (char c : cs)
        if (!is_letter(c) && !(c >= '0' && c <= '9') && c != '-' && c != '_')
            return QMR_E_GLS_ENVVAR;
    const CodesetInfo *info = find_codeset(cs);
    if (info == nullptr)
        return QMR_E_GLS_CONVERTER;
    LocaleName name{};
    for (std::size_t i = 0; i < under; ++i)
        name.lang[i] = ascii_lower(s[i]);
    for (std::size_t i = 0; i < 2; ++i) {
        char c = s[under + 1 + i];
        name.terr[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    name.codeset = info;
    *out = name;
    return 0;
}

void format_locale_name(const LocaleName &name, char *out, std::size_t room) noexcept
{
    std::size_t at = 0;
    auto put = [&](const char *part) {
        for (; *part != '\0' && at + 1 < room; ++part)
            out[at++] = *part;
    };
    put(name.lang);
    put("_");
    put(name.terr);
    put(".");
    put(name.codeset->canonical);
    out[at] = '\0';
}

int utf8_encode(char32_t cp, char *out) noexcept
{
    auto byte = [](char32_t v) { return static_cast<char>(static_cast<unsigned char>(v)); };
    if (cp < 0x80) {
        out[0] = byte(cp);
        return 1;
    }
    if (cp < 0x800) {
        out[0] = byte(0xC0 | (cp >> 6));
        out[1] = byte(0x80 | (cp & 0x3F));
        return 2;
    }
    if ((cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF)
        return -1;
    if (cp < 0x10000) {
        out[0] = byte(0xE0 | (cp >> 12));
        out[1] = byte(0x80 | ((cp >> 6) & 0x3F));
        out[2] = byte(0x80 | (cp & 0x3F));
        return 3;
    }
    out[0] = byte(0xF0 | (cp >> 18));
    out[1] = byte(0x80 | ((cp >> 12) & 0x3F));
    out[2] = byte(0x80 | ((cp >> 6) & 0x3F));
    out[3] = byte(0x80 | (cp & 0x3F));
    return 4;
}

namespace
{

// Latin-1 as the Unicode character database classifies it: controls 00-1F and
// 7F-9F; white space TAB..CR, SPACE, NEL (85) and NO-BREAK SPACE (A0); the
// letters A-Z, a-z, the feminine and masculine ordinals AA and BA (letters
// without case), MICRO SIGN B5 (lower case), C0-DE upper case and DF-FF lower
// case except the signs D7 and F7; everything else graphic is punctuation.
constexpr unsigned short latin1_class(unsigned c) noexcept
{
    unsigned short bits = 0;
    if (c < 0x20 || (c >= 0x7F && c <= 0x9F))
        bits |= QMR_GLCT_CNTRL;
    if ((c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0)
        bits |= QMR_GLCT_SPACE;
    if (c == 0x09 || c == 0x20 || c == 0xA0)
        bits |= QMR_GLCT_BLANK;
    const bool upper = (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    const bool lower = (c >= 'a' && c <= 'z') || c == 0xB5 || (c >= 0xDF && c != 0xF7);
    const bool alpha = upper || lower || c == 0xAA || c == 0xBA;
    const bool digit = c >= '0' && c <= '9';
    if (upper)
        bits |= QMR_GLCT_UPPER;
    if (lower)
        bits |= QMR_GLCT_LOWER;
    if (alpha)
        bits |= QMR_GLCT_ALPHA;
    if (digit)
        bits |= QMR_GLCT_DIGIT | QMR_GLCT_XDIGIT;
    if ((c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'))
        bits |= QMR_GLCT_XDIGIT;
    if (!(bits & QMR_GLCT_CNTRL)) {
        bits |= QMR_GLCT_PRINT;
        if (!(bits & QMR_GLCT_SPACE)) {
            bits |= QMR_GLCT_GRAPH;
            if (!alpha && !digit)
                bits |= QMR_GLCT_PUNCT;
        }
    }
    return bits;
}

// Case pairs of Latin-1: A-Z with a-z and C0-DE with E0-FE, the signs D7 and
// F7 excepted. SHARP S, MICRO SIGN and Y WITH DIAERESIS have their other case
// outside Latin-1 and map to themselves.
constexpr unsigned char latin1_to_lower(unsigned c) noexcept
{
    const bool upper = (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    return static_cast<unsigned char>(upper ? c + 0x20 : c);
}

constexpr unsigned char latin1_to_upper(unsigned c) noexcept
{
    const bool lower = (c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7);
    return static_cast<unsigned char>(lower ? c - 0x20 : c);
}

template <typename T, typename F> constexpr std::array<T, 256> table_of(F f) noexcept
{
    std::array<T, 256> t{};
    for (unsigned c = 0; c < 256; ++c)
        t[c] = f(c);
    return t;
}

} // namespace

constexpr std::array<unsigned short, 256> latin1_ctype = table_of<unsigned short>(latin1_class);
constexpr std::array<unsigned char, 256> latin1_lower = table_of<unsigned char>(latin1_to_lower);
constexpr std::array<unsigned char, 256> latin1_upper = table_of<unsigned char>(latin1_to_upper);

static_assert(latin1_ctype[' '] & QMR_GLCT_BLANK, "the blank bit is 0x400 on SPACE");
static_assert(latin1_lower[0xC4] == 0xE4 && latin1_upper[0xE4] == 0xC4, "A WITH DIAERESIS pairs");

} // namespace qmr
