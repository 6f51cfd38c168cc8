// The process-wide date settings: the DBCENTURY letter, the default date mask
// built from DBDATE, the DBDATE text derived from the C library's locale, and
// the check against the standard's reserved words.
#include "calendar/calendar.hpp"

#include <cstring>
#include <langinfo.h>

#include "platform/env_slots.hpp"

namespace qmr
{

char dbdatefmt[24];
int initflg;
char dbcentury;

} // namespace qmr

using namespace qmr;

// The C library's assertion report, called directly so that the check holds
// in every build, with or without NDEBUG.
extern "C" [[noreturn]] void __assert_fail(const char *assertion, const char *file,
                                           unsigned int line, const char *function) noexcept;

namespace
{

constexpr const char *ansi_keywords[] = {
#define QMR_ANSI_KEYWORD(index, word) word,
#include "calendar/ansi_keywords.def"
#undef QMR_ANSI_KEYWORD
};
static_assert(std::size(ansi_keywords) == 99, "the reserved-word table has 99 rows");

bool century_letter(int c) noexcept
{
    return c == 'R' || c == 'C' || c == 'F' || c == 'P';
}

bool is_separator(char c) noexcept
{
    return c == '/' || c == '-' || c == '.' || c == '0';
}

// The separator of a DBDATE text: its last character, or when that is none
// of the four, the nearest one before it (the scan stops at the second
// character, whose mapping then decides).
int dbdate_separator(const char *s, std::size_t len) noexcept
{
    if (len <= 1 || is_separator(s[len - 1]))
        return datesep(s[len - 1]);
    std::size_t i = len - 2;
    while (i > 1 && !is_separator(s[i]))
        --i;
    return datesep(s[i]);
}

// 1 for the C1 and J1 suffixes, 2 for J2, else 0 (trailing blanks skipped).
int era_form(const char *s, std::size_t len) noexcept
{
    while (len > 0 && s[len - 1] == ' ')
        --len;
    if (len < 2)
        return 0;
    char last = s[len - 1], before = s[len - 2];
    if (last == '1' && (before == 'C' || before == 'c' || before == 'J' || before == 'j'))
        return 1;
    if (last == '2' && (before == 'J' || before == 'j'))
        return 2;
    return 0;
}

// Day, month and year letters each once, the year followed by 2 or 4.
bool dbdate_valid(const char *s) noexcept
{
    if (*s == '\0')
        return false;
    int days = 0, months = 0, years = 0;
    for (const char *p = s; *p != '\0'; ++p) {
        if (*p == 'D' || *p == 'd') {
            ++days;
        } else if (*p == 'M' || *p == 'm') {
            ++months;
        } else if (*p == 'Y' || *p == 'y') {
            ++years;
            if (p[1] != '2' && p[1] != '4')
                return false;
            ++p;
        }
    }
    return days == 1 && months == 1 && years == 1;
}

bool is_y(char c) noexcept
{
    return c == 'Y' || c == 'y';
}

// Appends the mask of the field at s[*pos] and steps past what it read.
void append_field(const char *s, std::size_t *pos, int era, char *mask) noexcept
{
    const char *p = s + *pos;
    char c = *p;
    if (c == 'D' || c == 'd') {
        std::strcat(mask, "dd");
        *pos += 1;
    } else if (c == 'M' || c == 'm') {
        std::strcat(mask, "mm");
        *pos += 1;
    } else if (is_y(c)) {
        std::strcat(mask, era == 1 ? "gyy" : era == 2 ? "eyy" : "yy");
        if (p[1] == '4')
            std::strcat(mask, "yy");
        *pos += p[1] != '\0' ? 2 : 1;
    } else if ((c == 'E' || c == 'e' || c == 'G' || c == 'g' || c == 'n') && is_y(p[1]) &&
               (is_y(p[2]) || (p[2] >= '0' && p[2] <= '9'))) {
        // kept on purpose: upper-case 'N' does not introduce an era year.
        std::strcat(mask, c == 'E' || c == 'e' ? "eyy" : "gyy");
        if (p[2] == '4')
            std::strcat(mask, "yy");
        *pos += 3;
    } else if (c != '\0') {
        *pos += 1;
    }
}

} // namespace

void getdbcentury(void) noexcept
{
    if (dbcentury != 0)
        return;
    const char *value = idx_ggetenv(kEnvSlotDBCENTURY, "DBCENTURY");
    if (value == nullptr) {
        dbcentury = 'R';
        return;
    }
    // kept on purpose: any other value leaves the letter unset, so that the
    // variable is read again on the next call.
    if (century_letter(value[0]) && value[1] == '\0')
        dbcentury = value[0];
}

int validate_dbcentury(int usrval, int defval) noexcept
{
    if (!century_letter(defval))
        __assert_fail("defval == 'R' || defval == 'C' || defval == 'F' || defval == 'P'",
                      "../rdatefmt", 452, "validate_dbcentury");
    int chosen = century_letter(usrval) ? usrval : defval;
    if (!century_letter(chosen))
        __assert_fail("usrval == 'R' || usrval == 'C' || usrval == 'F' || usrval == 'P'",
                      "../rdatefmt", 466, "validate_dbcentury");
    return chosen;
}

int datesep(int c) noexcept
{
    switch (c) {
    case '-':
    case '.':
    case '/':
    case ' ':
        return c;
    case '0':
        return 0;
    default:
        return '/';
    }
}

int getfmt(void) noexcept
{
    dbdatefmt[0] = '\0';
    const char *s = idx_ggetenv(kEnvSlotDBDATE, "DBDATE");
    if (s == nullptr)
        s = "MDY4/";
    std::size_t len = std::strlen(s);
    if (!dbdate_valid(s))
        return QMR_E_BADDATEFMT;
    int sep = dbdate_separator(s, len);
    int era = era_form(s, len);
    initflg = 1;
    char mask[sizeof dbdatefmt] = {};
    std::size_t pos = 0;
    for (int field = 0; field < 3; ++field) {
        if (pos < len)
            append_field(s, &pos, era, mask);
        if (field < 2 && sep != 0) {
            char sep_text[2] = {static_cast<char>(sep), '\0'};
            std::strcat(mask, sep_text);
        }
    }
    std::memcpy(dbdatefmt, mask, sizeof mask);
    return 0;
}

char *fmtstr(char *dst) noexcept
{
    if (initflg == 0)
        getfmt();
    std::strcpy(dst, dbdatefmt);
    return dst;
}

char *getdbdate(char *buf) noexcept
{
    const char *fmt = nl_langinfo(D_FMT);
    if (fmt == nullptr || fmt[0] == '\0' || fmt[1] == '\0' || fmt[2] == '\0')
        return nullptr;
    char lead = fmt[0], sep = fmt[2];
    char letters[3];
    int count = 0;
    for (const char *p = fmt; *p != '\0' && count < 3; ++p)
        if (*p != lead && *p != sep)
            letters[count++] = *p;
    if (count < 3)
        return nullptr;
    int n = 0;
    for (char c : letters) {
        if (std::strchr("DMYdmy", c) == nullptr)
            return nullptr;
        buf[n++] = c;
        if (c == 'Y' || c == 'y')
            buf[n++] = '4'; // the year is always written with four digits
    }
    buf[n++] = sep;
    buf[n] = '\0';
    return buf;
}

int a_kwcheck(const char *word) noexcept
{
    char lowered[32];
    std::size_t n = std::strlen(word);
    if (n >= sizeof lowered)
        return -1;
    for (std::size_t i = 0; i <= n; ++i) {
        char c = word[i];
        lowered[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    int low = 0, high = static_cast<int>(std::size(ansi_keywords)) - 1;
    while (low <= high) {
        int mid = (low + high) / 2;
        int order = std::strcmp(lowered, ansi_keywords[mid]);
        if (order == 0)
            return 0;
        if (order < 0)
            high = mid - 1;
        else
            low = mid + 1;
    }
    return -1;
}
