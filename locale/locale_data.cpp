// Locale objects: the two built-in en_US locales, the ones made from the
// Unicode library's data (code-set tables or converter, names, conventions),
// their process-wide cache, and the character decoders over every code set;
// in test builds, the Unicode library's allocator.
#include "locale/locale_data.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

#include <unicode/calendar.h>
#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>
#include <unicode/unistr.h>
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

#ifdef QMR_TESTING
// Test builds hand the Unicode library this library's allocator, so that the
// allocation-failure hook reaches the Unicode library's own allocations too.
// Never in a production build: the allocator is process-wide and would also
// serve the host program's own use of the Unicode library.
void *unicode_alloc(const void *, std::size_t size) noexcept
{
    return mem_alloc(size);
}
void *unicode_realloc(const void *, void *block, std::size_t size) noexcept
{
    return mem_realloc(block, size);
}
void unicode_free(const void *, void *block) noexcept
{
    mem_free(block);
}

// The Unicode library takes an allocator only before it has allocated
// anything (U_INVALID_STATE_ERROR after): when the host got there first, its
// own allocator stays, and the library carries on without the hook inside it.
bool route_unicode_allocator() noexcept
{
    static const bool routed = [] {
        UErrorCode status = U_ZERO_ERROR;
        u_setMemoryFunctions(nullptr, unicode_alloc, unicode_realloc, unicode_free, &status);
        return U_SUCCESS(status);
    }();
    return routed;
}

// Routed as the library is loaded, ahead of any use of the Unicode library
// by the program's own code.
[[maybe_unused]] const bool routed_at_load = route_unicode_allocator();
#endif

// The locale code of a failed call into the Unicode library: out of memory
// is -23108, and any other failure means the data asked for is not there.
int unicode_error(UErrorCode status, int otherwise) noexcept
{
    return status == U_MEMORY_ALLOCATION_ERROR ? QMR_E_GLS_CREATE : otherwise;
}

void unicode_id(const LocaleName &name, char (&id)[16]) noexcept
{
    std::strcpy(id, name.lang);
    std::strcat(id, "_");
    std::strcat(id, name.terr);
}

// Whether the Unicode library lists `id` among its locales. The list comes
// with a status (the plain count hides a failure to load it as "none").
UErrorCode find_available(const char *id, bool *found) noexcept
{
    *found = false;
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration *all = uloc_openAvailableByType(ULOC_AVAILABLE_DEFAULT, &status);
    while (U_SUCCESS(status) && !*found) {
        const char *next = uenum_next(all, nullptr, &status);
        if (next == nullptr)
            break;
        *found = std::strcmp(next, id) == 0;
    }
    if (all != nullptr)
        uenum_close(all);
    return status;
}

// Whether the Unicode library has data of its own for the language and
// territory (directly, or under its script, as zh_CN under zh_Hans_CN): 0,
// or -23101 for a name that would only fall back to the language or the
// root, or -23108 when memory ran out on the way.
int check_locale_data(const LocaleName &name) noexcept
{
    constexpr int kNoData = QMR_E_GLS_CATEGORIES;
    char id[16];
    unicode_id(name, id);
    bool found = false;
    UErrorCode status = find_available(id, &found);
    if (U_FAILURE(status) || found)
        return U_FAILURE(status) ? unicode_error(status, kNoData) : 0;
    char full[64];
    uloc_addLikelySubtags(id, full, sizeof full, &status);
    char region[8];
    uloc_getCountry(full, region, sizeof region, &status);
    if (U_FAILURE(status))
        return unicode_error(status, kNoData);
    if (std::strcmp(region, name.terr) != 0)
        return kNoData;
    status = find_available(full, &found);
    if (U_FAILURE(status))
        return unicode_error(status, kNoData);
    return found ? 0 : kNoData;
}

// Opens the code set's converter with stop callbacks, so that bytes that are
// no character are reported instead of replaced: 0 with *out set, -23104, or
// -23108.
int open_converter(const CodesetInfo *codeset, UConverter **out) noexcept
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter *conv = ucnv_open(codeset->converter, &status);
    if (U_FAILURE(status) || conv == nullptr) {
        if (conv != nullptr)
            ucnv_close(conv);
        return unicode_error(status, QMR_E_GLS_CONVERTER);
    }
    data_loads.fetch_add(1, std::memory_order_relaxed);
    ucnv_setToUCallBack(conv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(conv, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status)) {
        ucnv_close(conv);
        return unicode_error(status, QMR_E_GLS_CONVERTER);
    }
    *out = conv;
    return 0;
}

bool encode_less(const EncodePair &a, const EncodePair &b) noexcept
{
    return a.cp < b.cp;
}

// A single-byte code set as tables: each byte decoded once, the classes and
// case maps taken from the Unicode values.
int fill_sbcs_tables(Locale &loc) noexcept
{
    UConverter *conv = nullptr;
    if (int error = open_converter(loc.codeset, &conv); error != 0)
        return error;
    loc.decode[0] = 0;
    for (unsigned b = 1; b < 256; ++b) {
        const char byte = static_cast<char>(b);
        UChar units[4];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_resetToUnicode(conv);
        int32_t len = ucnv_toUChars(conv, units, 4, &byte, 1, &status);
        // A byte that is no character fails with its own status; running out
        // of memory would leave a byte wrongly unmapped, so it fails the table.
        if (status == U_MEMORY_ALLOCATION_ERROR) {
            ucnv_close(conv);
            return QMR_E_GLS_CREATE;
        }
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
    UConverter *conv = nullptr;
    if (int error = open_converter(loc.codeset, &conv); error != 0)
        return error;
    // The converter is kept only with its lock: discard() destroys both.
    if (pthread_mutex_init(&loc.converter_lock, nullptr) != 0) {
        ucnv_close(conv);
        return QMR_E_GLS_CREATE;
    }
    loc.converter = conv;
    loc.max_char_len = ucnv_getMaxCharSize(conv);
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

// The month and day names of the locale's own calendar, from the symbols of
// a date format made for the locale. The format holds a copy of the symbols,
// and a copy that runs out of memory keeps its counts but loses its lists
// without saying so; the lists are therefore read from the symbols object
// (the C call would read through the missing list), and a missing list is
// taken as out of memory.
int fill_names(Locale &loc, const LocaleName &time) noexcept
{
    char id[16];
    unicode_id(time, id);
    const icu::Locale where(id);
    if (where.isBogus())
        return QMR_E_GLS_CREATE;
    UErrorCode status = U_ZERO_ERROR;
    const icu::SimpleDateFormat format(icu::UnicodeString(), where, status);
    if (U_FAILURE(status))
        return unicode_error(status, QMR_E_GLS_CATEGORIES);
    const icu::Calendar *calendar = format.getCalendar();
    const icu::DateFormatSymbols *names_of = format.getDateFormatSymbols();
    if (calendar == nullptr || names_of == nullptr)
        return QMR_E_GLS_CREATE;
    loc.gregorian = std::strcmp(calendar->getType(), "gregorian") == 0;
    data_loads.fetch_add(1, std::memory_order_relaxed);
    // A name the code set cannot write means the language cannot be served in
    // it (Russian names in Latin-1): the build fails rather than print '?'.
    int error = 0;
    auto names = [&](const icu::UnicodeString *list, int32_t count, int first, auto &out) {
        constexpr int n = static_cast<int>(sizeof out / sizeof out[0]);
        if (error != 0)
            return;
        if (list == nullptr || count < first + n) {
            error = list == nullptr ? QMR_E_GLS_CREATE : QMR_E_GLS_CATEGORIES;
            return;
        }
        for (int i = 0; i < n && error == 0; ++i) {
            const icu::UnicodeString &name = list[first + i];
            if (name.isBogus())
                error = QMR_E_GLS_CREATE;
            else if (!put_text(loc, name.getBuffer(), name.length(), out[i], sizeof out[i]))
                error = QMR_E_GLS_CATEGORIES;
        }
    };
    int32_t count = 0;
    const icu::UnicodeString *list = names_of->getShortMonths(count);
    names(list, count, 0, loc.month_abbr);
    list = names_of->getMonths(count);
    names(list, count, 0, loc.month_full);
    list = names_of->getShortWeekdays(count); // the weekdays count Sunday as 1
    names(list, count, 1, loc.day_abbr);
    list = names_of->getWeekdays(count);
    names(list, count, 1, loc.day_full);
    return error;
}

UNumberFormat *open_number_format(const LocaleName &name, UNumberFormatStyle style,
                                  int *error) noexcept
{
    char id[16];
    unicode_id(name, id);
    UErrorCode status = U_ZERO_ERROR;
    UNumberFormat *fmt = unum_open(style, nullptr, 0, id, nullptr, &status);
    if (U_FAILURE(status)) {
        if (fmt != nullptr)
            unum_close(fmt);
        *error = unicode_error(status, QMR_E_GLS_CATEGORIES);
        return nullptr;
    }
    data_loads.fetch_add(1, std::memory_order_relaxed);
    return fmt;
}

// A number symbol in the code set, or `fallback` when the code set cannot
// write it. A failed read leaves *status set for the caller to report.
void put_symbol(const Locale &loc, UNumberFormat *fmt, UNumberFormatSymbol which, char *out,
                std::size_t room, const char *fallback, UErrorCode *status) noexcept
{
    if (U_FAILURE(*status))
        return;
    UChar text[40];
    int32_t len = unum_getSymbol(fmt, which, text, 40, status);
    if (U_SUCCESS(*status) && !put_text(loc, text, std::min(len, int32_t{40}), out, room))
        std::strcpy(out, fallback);
}

// The ISO code of the currency the monetary format uses (room for 40 units).
// Every locale with a territory has one in the Unicode library's data; the
// library's number symbols lose it without an error when memory runs out on
// the way (the generic sign stands in), so a missing code counts as that.
bool iso_currency(UNumberFormat *fmt, UChar *code, UErrorCode *status) noexcept
{
    const int32_t len = unum_getSymbol(fmt, UNUM_INTL_CURRENCY_SYMBOL, code, 40, status);
    if (U_FAILURE(*status) || len != 3)
        return false;
    return std::all_of(code, code + 3, [](UChar c) { return c >= u'A' && c <= u'Z'; });
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
void currency_placement(UNumberFormat *fmt, struct lconv &c, UErrorCode *status) noexcept
{
    UChar pattern[96];
    int32_t len = unum_toPattern(fmt, false, pattern, 96, status);
    if (U_FAILURE(*status))
        return;
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
    UErrorCode status = U_ZERO_ERROR;
    put_symbol(loc, num, UNUM_DECIMAL_SEPARATOR_SYMBOL, loc.conv_text[kDecimalPoint], 40, ".",
               &status);
    put_symbol(loc, num, UNUM_GROUPING_SEPARATOR_SYMBOL, loc.conv_text[kThousandsSep], 40, "",
               &status);
    put_grouping(num, loc.conv_text[kGrouping]);
    unum_close(num);
    if (U_FAILURE(status))
        return unicode_error(status, QMR_E_GLS_CATEGORIES);

    UNumberFormat *mon = open_number_format(monetary, UNUM_CURRENCY, &error);
    if (mon == nullptr)
        return error;
    UChar currency[40];
    if (!iso_currency(mon, currency, &status)) {
        unum_close(mon);
        return U_FAILURE(status) ? unicode_error(status, QMR_E_GLS_CATEGORIES) : QMR_E_GLS_CREATE;
    }
    char *int_symbol = loc.conv_text[kIntCurrSymbol];
    char *symbol = loc.conv_text[kCurrencySymbol];
    put_symbol(loc, mon, UNUM_INTL_CURRENCY_SYMBOL, int_symbol, 36, "", &status);
    // The international symbol is followed by its separator, as in C.
    if (int_symbol[0] != '\0')
        std::strcat(int_symbol, " ");
    put_symbol(loc, mon, UNUM_CURRENCY_SYMBOL, symbol, 40, "", &status);
    // A sign the code set cannot write is replaced by the ISO code (EUR for
    // the euro sign in 8859-1), never by a stand-in character.
    if (symbol[0] == '\0')
        put_symbol(loc, mon, UNUM_INTL_CURRENCY_SYMBOL, symbol, 40, "", &status);
    put_symbol(loc, mon, UNUM_MONETARY_SEPARATOR_SYMBOL, loc.conv_text[kMonDecimalPoint], 40, ".",
               &status);
    put_symbol(loc, mon, UNUM_MONETARY_GROUPING_SEPARATOR_SYMBOL, loc.conv_text[kMonThousandsSep],
               40, "", &status);
    put_grouping(mon, loc.conv_text[kMonGrouping]);
    loc.conv_text[kPositiveSign][0] = '\0';
    put_symbol(loc, mon, UNUM_MINUS_SIGN_SYMBOL, loc.conv_text[kNegativeSign], 40, "-", &status);
    // The currency's own digits, asked of the currency data (which reports a
    // failure) rather than of the format (which falls back to 2 unannounced).
    const int32_t digits =
        U_SUCCESS(status) ? ucurr_getDefaultFractionDigits(currency, &status) : 0;
    loc.conv.int_frac_digits = loc.conv.frac_digits = static_cast<char>(std::clamp(digits, 0, 9));
    currency_placement(mon, loc.conv, &status);
    unum_close(mon);
    return U_FAILURE(status) ? unicode_error(status, QMR_E_GLS_CATEGORIES) : 0;
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
    Locale *loc = nullptr;
    if (int status = make_locale(request, &loc); status != 0)
        return status;
    loc->next = cache_head;
    cache_head = loc;
    *out = loc;
    return 0;
}

int make_locale(const LocaleRequest &request, Locale **out) noexcept
{
#ifdef QMR_TESTING
    route_unicode_allocator(); // in case a static constructor builds first
#endif
    // Every locale taken from the Unicode library needs data of its own there.
    if (int status = check_locale_data(request.client); status != 0)
        return status;
    for (const LocaleName &name : request.category)
        if (int status = check_locale_data(name); status != 0)
            return status;
    void *block = mem_calloc(1, sizeof(Locale));
    if (block == nullptr)
        return QMR_E_GLS_CREATE;
    auto *loc = new (block) Locale{};
    request_key(request, loc->key, sizeof loc->key);
    format_locale_name(request.client, loc->name, sizeof loc->name);
    // A failure anywhere leaves nothing behind: what the Unicode library
    // opened for the object is closed with it.
    if (int status = fill_from_unicode_data(*loc, request); status != 0) {
        discard_locale(loc);
        return status;
    }
    *out = loc;
    return 0;
}

void discard_locale(Locale *loc) noexcept
{
    if (loc->converter != nullptr) {
        ucnv_close(static_cast<UConverter *>(loc->converter));
        pthread_mutex_destroy(&loc->converter_lock);
    }
    loc->~Locale();
    mem_free(loc);
}

long unicode_data_loads() noexcept
{
    return data_loads.load(std::memory_order_relaxed);
}

#ifdef QMR_TESTING
bool unicode_allocator_routed() noexcept
{
    return route_unicode_allocator();
}
#endif

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
