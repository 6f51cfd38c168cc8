// Locale objects: the two built-in en_US locales, the ones made from the
// Unicode library's data (code-set tables or converter, names, conventions),
// their process-wide cache, and the character decoders over every code set.
#include "locale/locale_data.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

#include <unicode/ucal.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>
#include <unicode/ustring.h>

#include "platform/alloc.hpp"
#include "qmr/errors.h"
#include "qmr/gl.h"

namespace qmr
{
namespace
{

std::atomic<long> data_loads{0};
Locale *cache_head = nullptr; // guarded by the caller's build lock

constexpr const char *english_month_abbr[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char *english_month_full[12] = {"January",   "February", "March",    "April",
                                                "May",       "June",     "July",     "August",
                                                "September", "October",  "November", "December"};
constexpr const char *english_day_abbr[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char *english_day_full[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                             "Thursday", "Friday", "Saturday"};

template <std::size_t N> void copy_text(char (&dst)[N], const char *src) noexcept
{
    std::size_t len = strnlen(src, N - 1);
    std::memcpy(dst, src, len);
    dst[len] = '\0';
}

// The conventions' strings, one slot each in conv_text.
enum ConvText : int {
    kDecimalPoint,
    kThousandsSep,
    kGrouping,
    kIntCurrSymbol,
    kCurrencySymbol,
    kMonDecimalPoint,
    kMonThousandsSep,
    kMonGrouping,
    kPositiveSign,
    kNegativeSign,
};

// Points the lconv strings at their slots; the numbers are set by the caller.
void wire_conv(Locale &loc) noexcept
{
    struct lconv &c = loc.conv;
    c.decimal_point = loc.conv_text[kDecimalPoint];
    c.thousands_sep = loc.conv_text[kThousandsSep];
    c.grouping = loc.conv_text[kGrouping];
    c.int_curr_symbol = loc.conv_text[kIntCurrSymbol];
    c.currency_symbol = loc.conv_text[kCurrencySymbol];
    c.mon_decimal_point = loc.conv_text[kMonDecimalPoint];
    c.mon_thousands_sep = loc.conv_text[kMonThousandsSep];
    c.mon_grouping = loc.conv_text[kMonGrouping];
    c.positive_sign = loc.conv_text[kPositiveSign];
    c.negative_sign = loc.conv_text[kNegativeSign];
}

void set_sign_positions(struct lconv &c, int cs_precedes, int sep_by_space, int neg_posn) noexcept
{
    c.p_cs_precedes = c.n_cs_precedes = static_cast<char>(cs_precedes);
    c.p_sep_by_space = c.n_sep_by_space = static_cast<char>(sep_by_space);
    c.p_sign_posn = 1;
    c.n_sign_posn = static_cast<char>(neg_posn);
    c.int_p_cs_precedes = c.int_n_cs_precedes = c.p_cs_precedes;
    c.int_p_sep_by_space = c.int_n_sep_by_space = c.p_sep_by_space;
    c.int_p_sign_posn = c.p_sign_posn;
    c.int_n_sign_posn = c.n_sign_posn;
}

void fill_english(Locale &loc) noexcept
{
    for (int m = 0; m < 12; ++m) {
        copy_text(loc.month_abbr[m], english_month_abbr[m]);
        copy_text(loc.month_full[m], english_month_full[m]);
    }
    for (int d = 0; d < 7; ++d) {
        copy_text(loc.day_abbr[d], english_day_abbr[d]);
        copy_text(loc.day_full[d], english_day_full[d]);
    }
    wire_conv(loc);
    const char *texts[] = {".", ",", "\3\3", "USD ", "$", ".", ",", "\3\3", "", "-"};
    for (int i = 0; i < 10; ++i)
        copy_text(loc.conv_text[i], texts[i]);
    loc.conv.int_frac_digits = loc.conv.frac_digits = 2;
    set_sign_positions(loc.conv, 1, 0, 1);
}

void fill_latin1_tables(Locale &loc) noexcept
{
    std::copy(latin1_ctype.begin(), latin1_ctype.end(), loc.ctype);
    std::copy(latin1_lower.begin(), latin1_lower.end(), loc.lower);
    std::copy(latin1_upper.begin(), latin1_upper.end(), loc.upper);
    for (unsigned b = 0; b < 256; ++b)
        loc.decode[b] = b;
}

// UTF-8 keeps the ASCII half of the tables for its fast paths; the rest is
// answered from the Unicode character database.
void fill_utf8_tables(Locale &loc) noexcept
{
    for (unsigned b = 0; b < 128; ++b) {
        loc.ctype[b] = latin1_ctype[b];
        loc.lower[b] = latin1_lower[b];
        loc.upper[b] = latin1_upper[b];
        loc.decode[b] = b;
    }
    for (unsigned b = 128; b < 256; ++b)
        loc.decode[b] = kUnmapped;
}

void fill_codeset_facts(Locale &loc, const CodesetInfo *codeset) noexcept
{
    loc.codeset = codeset;
    loc.kind = codeset->kind;
    loc.single_byte = codeset->kind != CodesetKind::utf8 && codeset->kind != CodesetKind::mbcs;
    loc.max_char_len = codeset->kind == CodesetKind::utf8 ? 4 : 1;
    loc.gregorian = true;
}

Locale *make_builtin(Locale &loc, const CodesetInfo *codeset) noexcept
{
    fill_codeset_facts(loc, codeset);
    loc.builtin = true;
    if (codeset->kind == CodesetKind::latin1)
        fill_latin1_tables(loc);
    else
        fill_utf8_tables(loc);
    copy_text(loc.name, codeset->kind == CodesetKind::latin1 ? "en_US.8859-1" : "en_US.utf8");
    copy_text(loc.key, loc.name);
    fill_english(loc);
    return &loc;
}

bool same_name(const LocaleName &a, const LocaleName &b) noexcept
{
    return std::strcmp(a.lang, b.lang) == 0 && std::strcmp(a.terr, b.terr) == 0 &&
           a.codeset == b.codeset;
}

// The cache key: the client name, then ";category=name" for each category
// taken from another locale.
void request_key(const LocaleRequest &request, char *key, std::size_t room) noexcept
{
    static constexpr const char *labels[kCatCount] = {"ctype",    "collate", "numeric",
                                                      "monetary", "time",    "messages"};
    format_locale_name(request.client, key, room);
    for (int c = 0; c < kCatCount; ++c) {
        if (same_name(request.category[c], request.client))
            continue;
        char part[64];
        std::size_t at = std::strlen(key);
        part[0] = ';';
        std::strcpy(part + 1, labels[c]);
        std::strcat(part, "=");
        format_locale_name(request.category[c], part + std::strlen(part), 40);
        if (at + std::strlen(part) < room)
            std::strcpy(key + at, part);
    }
}

// ---- the Unicode library's data -------------------------------------------

void unicode_id(const LocaleName &name, char (&id)[16]) noexcept
{
    std::strcpy(id, name.lang);
    std::strcat(id, "_");
    std::strcat(id, name.terr);
}

bool is_available(const char *id) noexcept
{
    const int32_t count = uloc_countAvailable();
    for (int32_t i = 0; i < count; ++i)
        if (std::strcmp(uloc_getAvailable(i), id) == 0)
            return true;
    return false;
}

// Whether the Unicode library has data of its own for the language and
// territory (directly, or under its script, as zh_CN under zh_Hans_CN): a
// name that would only fall back to the language or the root is not served.
bool has_locale_data(const LocaleName &name) noexcept
{
    char id[16];
    unicode_id(name, id);
    if (is_available(id))
        return true;
    char full[64];
    UErrorCode status = U_ZERO_ERROR;
    uloc_addLikelySubtags(id, full, sizeof full, &status);
    if (U_FAILURE(status))
        return false;
    char region[8];
    uloc_getCountry(full, region, sizeof region, &status);
    return U_SUCCESS(status) && std::strcmp(region, name.terr) == 0 && is_available(full);
}

// Opens the code set's converter with stop callbacks, so that bytes that are
// no character are reported instead of replaced.
UConverter *open_converter(const CodesetInfo *codeset) noexcept
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter *conv = ucnv_open(codeset->converter, &status);
    if (U_FAILURE(status) || conv == nullptr)
        return nullptr;
    data_loads.fetch_add(1, std::memory_order_relaxed);
    ucnv_setToUCallBack(conv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(conv, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status)) {
        ucnv_close(conv);
        return nullptr;
    }
    return conv;
}

bool encode_less(const EncodePair &a, const EncodePair &b) noexcept
{
    return a.cp < b.cp;
}

// A single-byte code set as tables: each byte decoded once, the classes and
// case maps taken from the Unicode values.
int fill_sbcs_tables(Locale &loc) noexcept
{
    UConverter *conv = open_converter(loc.codeset);
    if (conv == nullptr)
        return QMR_E_GLS_CONVERTER;
    loc.decode[0] = 0;
    for (unsigned b = 1; b < 256; ++b) {
        const char byte = static_cast<char>(b);
        UChar units[4];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_resetToUnicode(conv);
        int32_t len = ucnv_toUChars(conv, units, 4, &byte, 1, &status);
        UChar32 cp = kUnmapped;
        if (U_SUCCESS(status) && len > 0)
            U16_GET(units, 0, 0, len, cp);
        loc.decode[b] = len > 0 && U_SUCCESS(status) ? static_cast<char32_t>(cp) : kUnmapped;
    }
    ucnv_close(conv);
    loc.encode_count = 0;
    for (unsigned b = 0; b < 256; ++b)
        if (loc.decode[b] != kUnmapped)
            loc.encode[loc.encode_count++] = {loc.decode[b], static_cast<unsigned char>(b)};
    std::stable_sort(loc.encode, loc.encode + loc.encode_count, encode_less);
    for (unsigned b = 0; b < 256; ++b) {
        const char32_t cp = loc.decode[b];
        loc.ctype[b] = cp == kUnmapped ? 0 : classify_unicode(cp);
        char out[4];
        loc.lower[b] = cp != kUnmapped && encode_char(loc, unicode_lower(cp), out) == 1
                           ? static_cast<unsigned char>(out[0])
                           : static_cast<unsigned char>(b);
        loc.upper[b] = cp != kUnmapped && encode_char(loc, unicode_upper(cp), out) == 1
                           ? static_cast<unsigned char>(out[0])
                           : static_cast<unsigned char>(b);
    }
    return 0;
}

int open_mbcs(Locale &loc) noexcept
{
    UConverter *conv = open_converter(loc.codeset);
    if (conv == nullptr)
        return QMR_E_GLS_CONVERTER;
    loc.converter = conv;
    loc.max_char_len = ucnv_getMaxCharSize(conv);
    pthread_mutex_init(&loc.converter_lock, nullptr);
    for (unsigned b = 0; b < 256; ++b)
        loc.decode[b] = kUnmapped;
    return 0;
}

// Writes a text of the Unicode library in the locale's code set. A space
// the code set lacks becomes NO-BREAK SPACE, or SPACE; any other missing
// character fails the text (false), and the caller decides what that means.
bool put_text(const Locale &loc, const UChar *text, int32_t len, char *out,
              std::size_t room) noexcept
{
    std::size_t at = 0;
    for (int32_t i = 0; i < len;) {
        UChar32 cp;
        U16_NEXT(text, i, len, cp);
        char bytes[4];
        int n = encode_char(loc, static_cast<char32_t>(cp), bytes);
        if (n < 0 && u_charType(cp) == U_SPACE_SEPARATOR) {
            n = encode_char(loc, 0xA0, bytes);
            if (n < 0)
                n = encode_char(loc, ' ', bytes);
        }
        if (n < 0)
            return false;
        if (at + static_cast<std::size_t>(n) >= room)
            break; // the names and symbols are short; cut at a character
        std::memcpy(out + at, bytes, static_cast<std::size_t>(n));
        at += static_cast<std::size_t>(n);
    }
    out[at] = '\0';
    return true;
}

int fill_names(Locale &loc, const LocaleName &time) noexcept
{
    char id[16];
    unicode_id(time, id);
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat *fmt = udat_open(UDAT_DEFAULT, UDAT_DEFAULT, id, nullptr, 0, nullptr, 0, &status);
    if (U_FAILURE(status))
        return status == U_MEMORY_ALLOCATION_ERROR ? QMR_E_GLS_CREATE : QMR_E_GLS_CATEGORIES;
    data_loads.fetch_add(1, std::memory_order_relaxed);
    UChar text[96];
    // A name the code set cannot write means the language cannot be served in
    // it (Russian names in Latin-1): the build fails rather than print '?'.
    bool writable = true;
    auto symbol = [&](UDateFormatSymbolType type, int index, char *out, std::size_t room) {
        UErrorCode st = U_ZERO_ERROR;
        int32_t len = udat_getSymbols(fmt, type, index, text, 96, &st);
        if (!put_text(loc, text, U_SUCCESS(st) ? std::min(len, int32_t{96}) : 0, out, room))
            writable = false;
    };
    for (int m = 0; m < 12; ++m) {
        symbol(UDAT_SHORT_MONTHS, m, loc.month_abbr[m], sizeof loc.month_abbr[m]);
        symbol(UDAT_MONTHS, m, loc.month_full[m], sizeof loc.month_full[m]);
    }
    for (int d = 0; d < 7; ++d) { // the weekday symbols count Sunday as 1
        symbol(UDAT_SHORT_WEEKDAYS, d + 1, loc.day_abbr[d], sizeof loc.day_abbr[d]);
        symbol(UDAT_WEEKDAYS, d + 1, loc.day_full[d], sizeof loc.day_full[d]);
    }
    const char *calendar = ucal_getType(udat_getCalendar(fmt), &status);
    loc.gregorian =
        U_SUCCESS(status) && calendar != nullptr && std::strcmp(calendar, "gregorian") == 0;
    udat_close(fmt);
    return writable ? 0 : QMR_E_GLS_CATEGORIES;
}

UNumberFormat *open_number_format(const LocaleName &name, UNumberFormatStyle style,
                                  int *error) noexcept
{
    char id[16];
    unicode_id(name, id);
    UErrorCode status = U_ZERO_ERROR;
    UNumberFormat *fmt = unum_open(style, nullptr, 0, id, nullptr, &status);
    if (U_FAILURE(status)) {
        *error = status == U_MEMORY_ALLOCATION_ERROR ? QMR_E_GLS_CREATE : QMR_E_GLS_CATEGORIES;
        return nullptr;
    }
    data_loads.fetch_add(1, std::memory_order_relaxed);
    return fmt;
}

void put_symbol(const Locale &loc, UNumberFormat *fmt, UNumberFormatSymbol which, char *out,
                std::size_t room, const char *fallback) noexcept
{
    UChar text[40];
    UErrorCode status = U_ZERO_ERROR;
    int32_t len = unum_getSymbol(fmt, which, text, 40, &status);
    if (U_FAILURE(status) || !put_text(loc, text, std::min(len, int32_t{40}), out, room))
        std::strcpy(out, fallback);
}

// Group sizes as the C library writes them: the primary size, then the
// secondary one when it differs (the last size repeats); none without grouping.
void put_grouping(UNumberFormat *fmt, char *out) noexcept
{
    out[0] = '\0';
    if (unum_getAttribute(fmt, UNUM_GROUPING_USED) == 0)
        return;
    const int32_t primary = unum_getAttribute(fmt, UNUM_GROUPING_SIZE);
    const int32_t secondary = unum_getAttribute(fmt, UNUM_SECONDARY_GROUPING_SIZE);
    if (primary <= 0 || primary > 9)
        return;
    out[0] = static_cast<char>(primary);
    out[1] = '\0';
    if (secondary > 0 && secondary <= 9 && secondary != primary) {
        out[1] = static_cast<char>(secondary);
        out[2] = '\0';
    }
}

// Where the currency sign stands in the monetary pattern, and whether a
// space separates it from the number.
void currency_placement(UNumberFormat *fmt, struct lconv &c) noexcept
{
    UChar pattern[96];
    UErrorCode status = U_ZERO_ERROR;
    int32_t len = unum_toPattern(fmt, false, pattern, 96, &status);
    if (U_FAILURE(status))
        len = 0;
    len = std::min(len, int32_t{96});
    int32_t end = len;
    for (int32_t i = 0; i < len; ++i)
        if (pattern[i] == u';')
            end = i;
    int32_t sign = -1, first_digit = -1, last_digit = -1;
    for (int32_t i = 0; i < end; ++i) {
        if (pattern[i] == 0x00A4 && sign < 0)
            sign = i;
        if (pattern[i] == u'#' || pattern[i] == u'0') {
            if (first_digit < 0)
                first_digit = i;
            last_digit = i;
        }
    }
    const bool precedes = sign >= 0 && sign < first_digit;
    bool spaced = false;
    if (sign >= 0) {
        const int32_t from = precedes ? sign + 1 : last_digit + 1;
        const int32_t to = precedes ? first_digit : sign;
        for (int32_t i = from; i < to; ++i)
            spaced = spaced || u_charType(pattern[i]) == U_SPACE_SEPARATOR;
    }
    bool parentheses = false;
    for (int32_t i = end; i < len; ++i)
        parentheses = parentheses || pattern[i] == u'(';
    set_sign_positions(c, precedes ? 1 : 0, spaced ? 1 : 0, parentheses ? 0 : 1);
}

int fill_conventions(Locale &loc, const LocaleName &numeric, const LocaleName &monetary) noexcept
{
    wire_conv(loc);
    int error = 0;
    UNumberFormat *num = open_number_format(numeric, UNUM_DECIMAL, &error);
    if (num == nullptr)
        return error;
    put_symbol(loc, num, UNUM_DECIMAL_SEPARATOR_SYMBOL, loc.conv_text[kDecimalPoint], 40, ".");
    put_symbol(loc, num, UNUM_GROUPING_SEPARATOR_SYMBOL, loc.conv_text[kThousandsSep], 40, "");
    put_grouping(num, loc.conv_text[kGrouping]);
    unum_close(num);

    UNumberFormat *mon = open_number_format(monetary, UNUM_CURRENCY, &error);
    if (mon == nullptr)
        return error;
    put_symbol(loc, mon, UNUM_INTL_CURRENCY_SYMBOL, loc.conv_text[kIntCurrSymbol], 36, "");
    // The international symbol is followed by its separator, as in C.
    if (loc.conv_text[kIntCurrSymbol][0] != '\0')
        std::strcat(loc.conv_text[kIntCurrSymbol], " ");
    put_symbol(loc, mon, UNUM_CURRENCY_SYMBOL, loc.conv_text[kCurrencySymbol], 40, "");
    // A sign the code set cannot write is replaced by the ISO code (EUR for
    // the euro sign in 8859-1), never by a stand-in character.
    if (loc.conv_text[kCurrencySymbol][0] == '\0')
        put_symbol(loc, mon, UNUM_INTL_CURRENCY_SYMBOL, loc.conv_text[kCurrencySymbol], 40, "");
    put_symbol(loc, mon, UNUM_MONETARY_SEPARATOR_SYMBOL, loc.conv_text[kMonDecimalPoint], 40, ".");
    put_symbol(loc, mon, UNUM_MONETARY_GROUPING_SEPARATOR_SYMBOL, loc.conv_text[kMonThousandsSep],
               40, "");
    put_grouping(mon, loc.conv_text[kMonGrouping]);
    loc.conv_text[kPositiveSign][0] = '\0';
    put_symbol(loc, mon, UNUM_MINUS_SIGN_SYMBOL, loc.conv_text[kNegativeSign], 40, "-");
    const int32_t digits = unum_getAttribute(mon, UNUM_MAX_FRACTION_DIGITS);
    loc.conv.int_frac_digits = loc.conv.frac_digits = static_cast<char>(std::clamp(digits, 0, 9));
    currency_placement(mon, loc.conv);
    unum_close(mon);
    return 0;
}

int fill_from_unicode_data(Locale &loc, const LocaleRequest &request) noexcept
{
    fill_codeset_facts(loc, request.client.codeset);
    int status = 0;
    switch (loc.kind) {
    case CodesetKind::latin1:
        fill_latin1_tables(loc);
        break;
    case CodesetKind::utf8:
        fill_utf8_tables(loc);
        break;
    case CodesetKind::sbcs:
        status = fill_sbcs_tables(loc);
        break;
    case CodesetKind::mbcs:
        status = open_mbcs(loc);
        break;
    }
    if (status == 0)
        status = fill_names(loc, request.category[kCatTime]);
    if (status == 0)
        status =
            fill_conventions(loc, request.category[kCatNumeric], request.category[kCatMonetary]);
    return status;
}

void discard(Locale *loc) noexcept
{
    if (loc->converter != nullptr) {
        ucnv_close(static_cast<UConverter *>(loc->converter));
        pthread_mutex_destroy(&loc->converter_lock);
    }
    loc->~Locale();
    mem_free(loc);
}

bool is_builtin_request(const LocaleRequest &request) noexcept
{
    const CodesetKind kind = request.client.codeset->kind;
    if (kind != CodesetKind::latin1 && kind != CodesetKind::utf8)
        return false;
    if (std::strcmp(request.client.lang, "en") != 0 || std::strcmp(request.client.terr, "US") != 0)
        return false;
    for (const LocaleName &name : request.category)
        if (!same_name(name, request.client))
            return false;
    return true;
}

} // namespace

const Locale *builtin_locale(CodesetKind kind) noexcept
{
    static Locale latin1_storage{};
    static Locale utf8_storage{};
    static const Locale *latin1 = make_builtin(latin1_storage, find_codeset("8859-1"));
    static const Locale *utf8 = make_builtin(utf8_storage, find_codeset("utf8"));
    return kind == CodesetKind::utf8 ? utf8 : latin1;
}

int find_or_make_locale(const LocaleRequest &request, const Locale **out) noexcept
{
    if (is_builtin_request(request)) {
        *out = builtin_locale(request.client.codeset->kind);
        return 0;
    }
    char key[sizeof(Locale::key)];
    request_key(request, key, sizeof key);
    for (Locale *loc = cache_head; loc != nullptr; loc = loc->next)
        if (std::strcmp(loc->key, key) == 0) {
            *out = loc;
            return 0;
        }
    // Every locale taken from the Unicode library needs data of its own there.
    if (!has_locale_data(request.client))
        return QMR_E_GLS_CATEGORIES;
    for (const LocaleName &name : request.category)
        if (!has_locale_data(name))
            return QMR_E_GLS_CATEGORIES;
    void *block = mem_calloc(1, sizeof(Locale));
    if (block == nullptr)
        return QMR_E_GLS_CREATE;
    auto *loc = new (block) Locale{};
    std::strcpy(loc->key, key);
    format_locale_name(request.client, loc->name, sizeof loc->name);
    int status = fill_from_unicode_data(*loc, request);
    if (status != 0) {
        discard(loc);
        return status;
    }
    loc->next = cache_head;
    cache_head = loc;
    *out = loc;
    return 0;
}

long unicode_data_loads() noexcept
{
    return data_loads.load(std::memory_order_relaxed);
}

// ---- characters -------------------------------------------------------------

namespace
{

// One character through the converter, which is shared: under its lock, from
// a reset state. The limit stops at the first NUL so that nothing past it is
// read even by a converter that looks ahead.
int decode_mbcs(const Locale &loc, const char *s, int n, char32_t *cp) noexcept
{
    const int limit =
        static_cast<int>(strnlen(s, static_cast<std::size_t>(std::min(n, loc.max_char_len))));
    auto *conv = static_cast<UConverter *>(loc.converter);
    pthread_mutex_t &lock = loc.converter_lock;
    pthread_mutex_lock(&lock);
    ucnv_resetToUnicode(conv);
    const char *src = s;
    UErrorCode status = U_ZERO_ERROR;
    UChar32 value = ucnv_getNextUChar(conv, &src, s + limit, &status);
    pthread_mutex_unlock(&lock);
    if (status == U_TRUNCATED_CHAR_FOUND || status == U_INDEX_OUTOFBOUNDS_ERROR)
        return kDecodeTrunc;
    if (U_FAILURE(status) || value < 0)
        return kDecodeBad;
    *cp = static_cast<char32_t>(value);
    return static_cast<int>(src - s);
}

int encode_mbcs(const Locale &loc, char32_t cp, char *out) noexcept
{
    UChar units[2];
    int32_t len = 0;
    UBool error = false;
    U16_APPEND(units, len, 2, static_cast<UChar32>(cp), error);
    if (error)
        return -1;
    auto *conv = static_cast<UConverter *>(loc.converter);
    pthread_mutex_t &lock = loc.converter_lock;
    char bytes[8];
    UErrorCode status = U_ZERO_ERROR;
    pthread_mutex_lock(&lock);
    ucnv_resetFromUnicode(conv);
    int32_t n = ucnv_fromUChars(conv, bytes, sizeof bytes, units, len, &status);
    pthread_mutex_unlock(&lock);
    if (U_FAILURE(status) || n <= 0 || n > 4)
        return -1;
    std::memcpy(out, bytes, static_cast<std::size_t>(n));
    return n;
}

} // namespace

int decode_char(const Locale &loc, const char *s, int n, char32_t *cp) noexcept
{
    if (n <= 0 || s[0] == '\0')
        return kDecodeEnd;
    switch (loc.kind) {
    case CodesetKind::utf8:
        return utf8_decode(s, n, cp);
    case CodesetKind::mbcs:
        return decode_mbcs(loc, s, n, cp);
    default: {
        const char32_t value = loc.decode[static_cast<unsigned char>(s[0])];
        if (value == kUnmapped)
            return kDecodeBad;
        *cp = value;
        return 1;
    }
    }
}

int encode_char(const Locale &loc, char32_t cp, char *out) noexcept
{
    switch (loc.kind) {
    case CodesetKind::latin1:
        if (cp > 0xFF)
            return -1;
        out[0] = static_cast<char>(static_cast<unsigned char>(cp));
        return 1;
    case CodesetKind::utf8:
        return utf8_encode(cp, out);
    case CodesetKind::mbcs:
        return encode_mbcs(loc, cp, out);
    case CodesetKind::sbcs:
        break;
    }
    const EncodePair *end = loc.encode + loc.encode_count;
    const EncodePair *at = std::lower_bound(loc.encode, end, EncodePair{cp, 0}, encode_less);
    if (at == end || at->cp != cp)
        return -1;
    out[0] = static_cast<char>(at->byte);
    return 1;
}

unsigned short classify_unicode(char32_t cp) noexcept
{
    if (cp < 0x80)
        return latin1_ctype[cp];
    const auto c = static_cast<UChar32>(cp);
    const int8_t type = u_charType(c);
    unsigned short bits = 0;
    if (type == U_UPPERCASE_LETTER)
        bits |= QMR_GLCT_UPPER;
    if (type == U_LOWERCASE_LETTER)
        bits |= QMR_GLCT_LOWER;
    if (u_isalpha(c))
        bits |= QMR_GLCT_ALPHA;
    if (u_isUWhiteSpace(c))
        bits |= QMR_GLCT_SPACE;
    if (u_isblank(c))
        bits |= QMR_GLCT_BLANK;
    if (type == U_CONTROL_CHAR)
        bits |= QMR_GLCT_CNTRL;
    if (type != U_CONTROL_CHAR && type != U_SURROGATE && type != U_UNASSIGNED) {
        bits |= QMR_GLCT_PRINT;
        if (!(bits & QMR_GLCT_SPACE)) {
            bits |= QMR_GLCT_GRAPH;
            if (!(bits & QMR_GLCT_ALPHA))
                bits |= QMR_GLCT_PUNCT;
        }
    }
    return bits;
}

int unicode_width(char32_t cp) noexcept
{
    if (cp >= 0x20 && cp < 0x7F)
        return 1;
    const auto c = static_cast<UChar32>(cp);
    const int8_t type = u_charType(c);
    if (type == U_CONTROL_CHAR || type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK ||
        type == U_FORMAT_CHAR)
        return 0;
    const int32_t east_asian = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return east_asian == U_EA_WIDE || east_asian == U_EA_FULLWIDTH ? 2 : 1;
}

char32_t unicode_lower(char32_t cp) noexcept
{
    if (cp < 0x80)
        return latin1_lower[cp];
    return static_cast<char32_t>(u_tolower(static_cast<UChar32>(cp)));
}

char32_t unicode_upper(char32_t cp) noexcept
{
    if (cp < 0x80)
        return latin1_upper[cp];
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(cp)));
}

} // namespace qmr
