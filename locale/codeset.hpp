// Code sets and locale names: the table of code sets the library serves, the
// parser of ll_CC.codeset names, UTF-8 decoding and encoding, and the class
// and case tables of the built-in Latin-1 code set.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qmr
{

// How the characters of a code set are read.
enum class CodesetKind : unsigned char {
    latin1, // built in: byte = Unicode value
    utf8,   // built in
    sbcs,   // single byte, decoded through a table made once from a converter
    mbcs,   // multibyte, decoded by a converter under a lock
};

struct CodesetInfo {
    const char *canonical; // the name written in resolved locale names
    int number;            // registry number (gl_lc_spec2msg_dname)
    const char *converter; // the Unicode library's converter name; null when built in
    CodesetKind kind;
    const char *aliases; // spellings, normalised (lower case, no '-' or '_'), '|'-separated
};

// The code set spelt `spelling` (case, '-' and '_' ignored, or its number),
// or null.
const CodesetInfo *find_codeset(std::string_view spelling) noexcept;

// A parsed locale name: language (lower case), territory (upper case), code set.
struct LocaleName {
    char lang[4];
    char terr[3];
    const CodesetInfo *codeset;
};

// Parses "ll_CC.codeset" (language of 2 or 3 letters, territory of 2, any
// case). Returns 0, -23110 for a malformed or over-long name, -23104 for an
// unknown code set.
int parse_locale_name(const char *text, LocaleName *out) noexcept;
// Writes the resolved form "ll_CC.canonical" into out (room for 40 bytes).
void format_locale_name(const LocaleName &name, char *out, std::size_t room) noexcept;

// Results of the decoders beside a length: the end (n <= 0 or NUL), bytes
// that are no character, a character cut short.
inline constexpr int kDecodeEnd = 0;
inline constexpr int kDecodeBad = -1;
inline constexpr int kDecodeTrunc = -2;

// Decodes the UTF-8 character at s within n bytes: its length (1..4) with
// *cp set, or kDecodeEnd / kDecodeBad / kDecodeTrunc. Overlong forms,
// surrogates and values above U+10FFFF are bad; a NUL inside a sequence
// truncates it. Never reads past s[n - 1] nor past a NUL.
// (Inline: it is the inner step of every UTF-8 walk.)
inline int utf8_decode(const char *s, int n, char32_t *cp) noexcept
{
    if (n <= 0 || s[0] == '\0')
        return kDecodeEnd;
    const auto lead = static_cast<unsigned char>(s[0]);
    if (lead < 0x80) {
        *cp = lead;
        return 1;
    }
    int len;
    char32_t value;
    char32_t min; // smallest value of that length: below it the form is overlong
    if (lead >= 0xC2 && lead <= 0xDF) {
        len = 2, value = lead & 0x1F, min = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        len = 3, value = lead & 0x0F, min = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        len = 4, value = lead & 0x07, min = 0x10000;
    } else {
        return kDecodeBad; // continuation byte, C0, C1 or F5..FF
    }
    for (int i = 1; i < len; ++i) {
        if (i >= n || s[i] == '\0')
            return kDecodeTrunc;
        const auto next = static_cast<unsigned char>(s[i]);
        if ((next & 0xC0) != 0x80)
            return kDecodeBad;
        value = (value << 6) | (next & 0x3F);
        // Decide as early as the second byte, so that an overlong or
        // out-of-range lead is bad even when the rest is cut short.
        if (i == 1 && len >= 3) {
            char32_t top = value << (6 * (len - 2)); // the smallest value that can follow
            if (top < min || top > 0x10FFFF || (top >= 0xD800 && top <= 0xDFFF))
                return kDecodeBad;
        }
    }
    if (value < min || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return kDecodeBad;
    *cp = value;
    return len;
}
// Writes cp as UTF-8 (room for 4 bytes); its length, or -1 for a surrogate
// or a value above U+10FFFF.
int utf8_encode(char32_t cp, char *out) noexcept;

// The class bits (QMR_GLCT_...) and case maps of the Latin-1 code set, kept
// as data so that the built-in locales need no Unicode-library call.
extern const std::array<unsigned short, 256> latin1_ctype;
extern const std::array<unsigned char, 256> latin1_lower;
extern const std::array<unsigned char, 256> latin1_upper;

} // namespace qmr
