// The locale object behind a locale handle: code-set facts, class and case
// tables, month and day names and numeric conventions, made once per distinct
// locale and kept for the life of the process; and the character decoders
// that every gl_ operation stands on.
#pragma once

#include <clocale>
#include <pthread.h>

#include "locale/codeset.hpp"

namespace qmr
{

// The categories a locale can take from another locale of the same code set.
enum Category : int {
    kCatCtype,
    kCatCollate,
    kCatNumeric,
    kCatMonetary,
    kCatTime,
    kCatMessages,
    kCatCount
};

// What an environment asks for: the client locale and, per category, the
// locale it comes from (the client's unless overridden).
struct LocaleRequest {
    LocaleName client;
    LocaleName category[kCatCount];
};

struct EncodePair {
    char32_t cp;
    unsigned char byte;
};

struct Locale {
    char key[160]; // the request it answers: the client name, then ";cat=name" per override
    char name[40]; // the client locale as resolved
    const CodesetInfo *codeset;
    CodesetKind kind;
    bool single_byte;
    bool gregorian;
    bool builtin; // no Unicode-library data behind it
    int max_char_len;

    // Single-byte code sets: classes, case maps and the byte <-> Unicode
    // tables (decode: kUnmapped for bytes that are no character; encode:
    // sorted by cp). UTF-8 keeps the ASCII half of ctype for its fast path.
    unsigned short ctype[256];
    unsigned char lower[256];
    unsigned char upper[256];
    char32_t decode[256];
    EncodePair encode[256];
    int encode_count;

    // Multibyte code sets other than UTF-8: the converter (a UConverter) and
    // the lock it is used under.
    void *converter;
    mutable pthread_mutex_t converter_lock;

    // Names in the code set, as the locale writes them; day 0 is Sunday.
    char month_abbr[12][48];
    char month_full[12][96];
    char day_abbr[7][48];
    char day_full[7][96];

    // The conventions and the strings they point at.
    struct lconv conv;
    char conv_text[10][40];

    Locale *next; // the process-wide cache
};

inline constexpr char32_t kUnmapped = 0xFFFFFFFF;

// The built-in en_US locales, filled without the Unicode library.
const Locale *builtin_locale(CodesetKind kind) noexcept;

// The locale object for a request: a built-in one, one from the cache, or a
// new one (made under the caller's build lock). Returns 0 with *out set, or
// -23101 (no data for the language and territory), -23104 (no converter),
// -23108 (no memory).
int find_or_make_locale(const LocaleRequest &request, const Locale **out) noexcept;

// A new locale object for a request from the Unicode library's data, outside
// the cache: 0 with *out set, or the codes of find_or_make_locale. Nothing is
// left behind on failure; a made object is freed with discard_locale.
int make_locale(const LocaleRequest &request, Locale **out) noexcept;
void discard_locale(Locale *loc) noexcept;

// How often locale data or a converter was taken from the Unicode library:
// the built-in locales never add to it.
long unicode_data_loads() noexcept;

#ifdef QMR_TESTING
// Whether the Unicode library took the library's allocator (and with it the
// allocation-failure hook); false when it had allocated before it was asked.
bool unicode_allocator_routed() noexcept;
#endif

// Decodes the character at s within n bytes into its Unicode value: its
// length, or kDecodeEnd / kDecodeBad / kDecodeTrunc (codeset.hpp).
int decode_char(const Locale &loc, const char *s, int n, char32_t *cp) noexcept;
// Encodes cp in the locale's code set (room for 4 bytes): its length, or -1.
int encode_char(const Locale &loc, char32_t cp, char *out) noexcept;

// The QMR_GLCT_ bits of a Unicode value (the Unicode character database,
// ASCII from a table); the same rules made the single-byte tables.
unsigned short classify_unicode(char32_t cp) noexcept;
// Display columns of a Unicode value: 0, 1 or 2.
int unicode_width(char32_t cp) noexcept;
char32_t unicode_lower(char32_t cp) noexcept;
char32_t unicode_upper(char32_t cp) noexcept;

} // namespace qmr
