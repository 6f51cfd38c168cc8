// Money and numeric conventions: loading the currency symbols, decimal point
// and separators of a locale environment from DBMONEY or the locale, the
// default conventions record, and the DBMONEY-style text splitter.
#include "qmr/money.h"

#include "gen/context.hpp"
#include "numeric/money.hpp"
#include "platform/alloc.hpp"
#include "platform/env_slots.hpp"
#include "qmr/env.h"
#include "qmr/gl.h"

#include <atomic>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::size_t kSymbolMax = QMR_MONEY_SYMBOL_MAX;
static_assert(sizeof(qmr_moneystate::front) == kSymbolMax + 1);
static_assert(sizeof(qmr_moneystate::back) == kSymbolMax + 1);

enum LoadState : int { kNotLoaded = 0, kFromText = 1, kFromLocale = 2 };

constexpr int kClassSpace = 8;              // the locale's white-space class
constexpr const char kBuiltinText[] = "$."; // DBMONEY's stand-in in en_US

// The load state is read without the lock on every call, and written under it.
std::atomic_ref<int> load_state(qmr_glsenv_t *env) noexcept
{
    return std::atomic_ref<int>(env->money.load_state);
}

// Holds the process's locale-environment lock for one scope. The unlock is
// issued even if the lock failed: the lock is recursive and an unlock of a
// lock not held is refused harmlessly.
class EnvLock
{
  public:
    EnvLock() noexcept { qmrOS_recursive_mutexLock(&qmr::process().locks.gls_env_mutex); }
    ~EnvLock() { qmrOS_recursive_mutexUnLock(&qmr::process().locks.gls_env_mutex); }
    EnvLock(const EnvLock &) = delete;
    EnvLock &operator=(const EnvLock &) = delete;
};

// The locale library's error cell is scratch while the conventions are read:
// rmoninit reports nothing, so the caller finds the cell as it left it.
class KeepGlErrno
{
  public:
    KeepGlErrno() noexcept : saved_(_gl_ext_errno) {}
    ~KeepGlErrno() { _gl_ext_errno = saved_; }
    KeepGlErrno(const KeepGlErrno &) = delete;
    KeepGlErrno &operator=(const KeepGlErrno &) = delete;

  private:
    int saved_;
};

// Copies the first n bytes of text into a fixed field, zero-filling the rest.
template <std::size_t N> void set_bytes(char (&field)[N], const char *text, std::size_t n) noexcept
{
    static_assert(N > 1);
    if (n > N - 1)
        n = N - 1;
    std::memset(field, 0, N);
    if (n > 0)
        std::memcpy(field, text, n);
}

// Copies a NUL-terminated text (null: empty) cut to the field's size.
template <std::size_t N> void set_text(char (&field)[N], const char *text) noexcept
{
    set_bytes(field, text, text == nullptr ? 0 : strnlen(text, N - 1));
}

// Byte length of the character at s, n >= 1 bytes being left: 1 in a
// single-byte locale; a sequence that is not a character counts as one byte.
int char_len(const qmr_glsenv_t &env, const char *s, std::size_t n) noexcept
{
    if (env.single_byte)
        return 1;
    const int len = gl_full_mblen(env.locale, s, n > 4 ? 4 : static_cast<int>(n));
    return len > 0 ? len : 1;
}

bool is_space(const qmr_glsenv_t &env, const char *s, int len) noexcept
{
    return _gl_im_ismctype(env.locale, s, len, kClassSpace) != 0;
}

// The first character of a field: its byte length (0 empty, -1 invalid) and
// its display width.
struct FirstChar {
    int len;
    int width;
};

template <std::size_t N>
FirstChar first_char(const qmr_glsenv_t &env, const char (&field)[N]) noexcept
{
    const std::size_t n = strnlen(field, N);
    if (n == 0)
        return {0, 0};
    if (env.single_byte)
        return {1, 1};
    const int len = gl_full_mblen(env.locale, field, static_cast<int>(n));
    if (len <= 0)
        return {-1, 0};
    const int width = gl_mbwidth(env.locale, field, len);
    if (width < 0)
        return {-1, 0};
    return {len, width};
}

// A decimal point must be a character: an empty or invalid one becomes ".".
template <std::size_t N>
void check_point(const qmr_glsenv_t &env, char (&field)[N], unsigned char &len,
                 unsigned char &width) noexcept
{
    const FirstChar c = first_char(env, field);
    if (c.len <= 0) {
        set_text(field, ".");
        len = 1;
        width = 1;
        return;
    }
    len = static_cast<unsigned char>(c.len);
    width = static_cast<unsigned char>(c.width);
}

// Separators and signs may be empty; an invalid one becomes `fallback`.
template <std::size_t N>
void check_text(const qmr_glsenv_t &env, char (&field)[N], unsigned char &len,
                const char *fallback) noexcept
{
    const FirstChar c = first_char(env, field);
    if (c.len < 0) {
        set_text(field, fallback);
        len = static_cast<unsigned char>(std::strlen(fallback));
        return;
    }
    len = static_cast<unsigned char>(c.len);
}

// Copies whole characters of text into a symbol while they fit in 28 bytes.
void copy_symbol(const qmr_glsenv_t &env, char (&symbol)[kSymbolMax + 1], const char *text) noexcept
{
    std::memset(symbol, 0, sizeof symbol);
    std::size_t used = 0;
    for (std::size_t rest = std::strlen(text); rest > 0;) {
        const int n = char_len(env, text, rest);
        if (used + n > kSymbolMax)
            break;
        std::memcpy(symbol + used, text, n);
        used += n;
        text += n;
        rest -= n;
    }
}

// Keeps a copy of the text applied, replacing an older different one. When
// memory runs out the copy is left empty; the text is applied all the same.
void remember_text(qmr_moneystate &money, const char *text) noexcept
{
    if (money.dbmoney_copy != nullptr && std::strcmp(money.dbmoney_copy, text) == 0)
        return;
    qmr::mem_release(money.dbmoney_copy);
    const std::size_t size = std::strlen(text) + 1;
    if (auto *copy = static_cast<char *>(qmr::mem_alloc(size))) {
        std::memcpy(copy, text, size);
        money.dbmoney_copy = copy;
    }
}

// A cursor over the DBMONEY text.
struct Scan {
    const char *p;
    std::size_t rest;
    void advance(int n) noexcept
    {
        p += n;
        rest -= static_cast<std::size_t>(n);
    }
};

// The front symbol: characters up to the first "." or ",", white space as
// "*". Returns false when the symbol could take no more before that point.
bool scan_front(const qmr_glsenv_t &env, Scan &s, char (&front)[kSymbolMax + 1]) noexcept
{
    std::size_t used = 0;
    while (s.rest > 0 && *s.p != '.' && *s.p != ',') {
        const int n = char_len(env, s.p, s.rest);
        const bool space = is_space(env, s.p, n);
        const std::size_t need = space ? 1 : static_cast<std::size_t>(n);
        if (used + need > kSymbolMax)
            return false;
        if (space)
            front[used] = '*';
        else
            std::memcpy(front + used, s.p, need);
        used += need;
        s.advance(n);
    }
    return true;
}

// The back symbol: the rest of the text without its white space, whole
// characters while they fit; what does not fit is dropped.
void scan_back(const qmr_glsenv_t &env, Scan &s, char (&back)[kSymbolMax + 1]) noexcept
{
    std::size_t used = 0;
    for (; s.rest > 0; s.advance(char_len(env, s.p, s.rest))) {
        const int n = char_len(env, s.p, s.rest);
        if (is_space(env, s.p, n))
            continue;
        if (used + n > kSymbolMax)
            return;
        std::memcpy(back + used, s.p, n);
        used += n;
    }
}

// Applies a DBMONEY text over the locale's conventions.
void apply_text(qmr_glsenv_t *env, const char *text) noexcept
{
    qmr_numconv &c = env->local_conv;
    qmr_moneystate &m = env->money;
    std::memset(m.front, 0, sizeof m.front);
    std::memset(m.back, 0, sizeof m.back);

    Scan s{text, std::strlen(text)};
    const bool front_ended = scan_front(*env, s, m.front);
    if (s.rest > 0) {
        // A full front symbol hands over whatever character follows it.
        const int n = front_ended ? 1 : char_len(*env, s.p, s.rest);
        set_bytes(c.decimal_point, s.p, n);
        set_bytes(c.mon_decimal_point, s.p, n);
        s.advance(n);
    }
    scan_back(*env, s, m.back);

    if (m.front[0] != '\0') {
        c.p_cs_precedes = 1;
        set_text(c.currency_symbol, m.front);
    }
    if (m.back[0] != '\0')
        set_text(c.currency_symbol, m.back);
    const char *sep = std::strcmp(c.mon_decimal_point, ",") == 0 ? "." : ",";
    set_text(c.thousands_sep, sep);
    set_text(c.mon_thousands_sep, sep);
}

// Without DBMONEY: the locale's currency symbol on the side the locale puts it.
void take_locale_symbol(qmr_glsenv_t *env) noexcept
{
    qmr_moneystate &m = env->money;
    std::memset(m.front, 0, sizeof m.front);
    std::memset(m.back, 0, sizeof m.back);
    copy_symbol(*env, env->local_conv.p_cs_precedes == 1 ? m.front : m.back,
                env->local_conv.currency_symbol);
}

void refill_from_locale(qmr_glsenv_t *env) noexcept
{
    qmr::init_local_lconv(env, gl_localeconv(env->locale));
}

// The DBMONEY text to apply: DBMONEY itself (empty counts as unset), else the
// built-in "$." in an en_US locale, else null (the locale's own conventions).
const char *money_text(qmr_glsenv_t *env) noexcept
{
    const char *text = idx_ggetenv(qmr::kEnvSlotDBMONEY, "DBMONEY");
    if (text != nullptr && *text != '\0')
        return text;
    if (std::strncmp(env->name, "en_US", 5) == 0) {
        env->flags |= QMR_GLSFLAG_BUILTIN_MONEY;
        return kBuiltinText;
    }
    return nullptr;
}

void load_locked(qmr_glsenv_t *env) noexcept
{
    KeepGlErrno keep;
    env->flags &= ~QMR_GLSFLAG_BUILTIN_MONEY;
    int state = kFromText;
    if (const char *text = money_text(env)) {
        remember_text(env->money, text);
        refill_from_locale(env);
        apply_text(env, text);
    } else {
        refill_from_locale(env);
        take_locale_symbol(env);
        state = kFromLocale;
    }
    qmr::money_check_fields(env);
    init_dflt_lconv_int(&env->default_conv);
    load_state(env).store(state, std::memory_order_release);
}

} // namespace

namespace qmr
{

void money_load(qmr_glsenv_t *env) noexcept
{
    if (env == nullptr || load_state(env).load(std::memory_order_acquire) != kNotLoaded)
        return;
    // The default environment is shared by every thread that chose no other.
    EnvLock lock;
    if (load_state(env).load(std::memory_order_relaxed) == kNotLoaded)
        load_locked(env);
}

qmr_glsenv_t *money_env_slow(int *status) noexcept
{
    qmr_glsenv_t *env = ready_glsenv(status);
    money_load(env);
    return env;
}

void money_check_fields(qmr_glsenv_t *env) noexcept
{
    qmr_numconv &c = env->local_conv;
    check_point(*env, c.decimal_point, c.decimal_point_len, c.decimal_point_width);
    check_point(*env, c.mon_decimal_point, c.mon_decimal_point_len, c.mon_decimal_point_width);
    check_text(*env, c.thousands_sep, c.thousands_sep_len, "");
    check_text(*env, c.mon_thousands_sep, c.mon_thousands_sep_len, "");
    check_text(*env, c.positive_sign, c.positive_sign_len, "+");
    check_text(*env, c.negative_sign, c.negative_sign_len, "-");
    check_text(*env, c.decimal_point2, c.decimal_point2_len, "");
}

void init_local_lconv(qmr_glsenv_t *env, const struct lconv *lc) noexcept
{
    qmr_numconv &c = env->local_conv;
    if (lc == nullptr) {
        init_dflt_lconv_int(&c);
        return;
    }
    set_text(c.decimal_point, lc->decimal_point);
    set_text(c.thousands_sep, lc->thousands_sep);
    set_text(c.grouping, lc->grouping);
    set_text(c.currency_symbol, lc->currency_symbol);
    set_text(c.mon_decimal_point, lc->mon_decimal_point);
    set_text(c.mon_thousands_sep, lc->mon_thousands_sep);
    set_text(c.mon_grouping, lc->mon_grouping);
    set_text(c.positive_sign, lc->positive_sign);
    set_text(c.negative_sign, lc->negative_sign);
    c.int_frac_digits = static_cast<signed char>(lc->int_frac_digits);
    c.frac_digits = static_cast<signed char>(lc->frac_digits);
    c.p_cs_precedes = static_cast<signed char>(lc->p_cs_precedes);
    c.p_sep_by_space = static_cast<signed char>(lc->p_sep_by_space);
    c.n_cs_precedes = static_cast<signed char>(lc->n_cs_precedes);
    c.n_sep_by_space = static_cast<signed char>(lc->n_sep_by_space);
    c.p_sign_posn = static_cast<signed char>(lc->p_sign_posn);
    c.n_sign_posn = static_cast<signed char>(lc->n_sign_posn);
    // The locale's own point, which a DBMONEY point never replaces.
    set_text(c.decimal_point2, lc->decimal_point);
    money_check_fields(env);
}

// The point is counted as one column; a wider one needs the difference.
int decimal_width_allowance(const qmr_numconv &conv) noexcept
{
    return conv.decimal_point_width > 1 ? conv.decimal_point_width - 1 : 0;
}

int money_width_allowance(const qmr_numconv &conv) noexcept
{
    return conv.mon_decimal_point_width > 1 ? conv.mon_decimal_point_width - 1 : 0;
}

} // namespace qmr

void rmoninit(void) noexcept
{
    int status = 0;
    qmr::money_env(&status);
}

void qmr_money_reset(void) noexcept
{
    int status = 0;
    if (qmr_glsenv_t *env = qmr::ready_glsenv(&status))
        load_state(env).store(kNotLoaded, std::memory_order_release);
}

void getdbmoney(void) noexcept
{
    int status = 0;
    if (qmr_glsenv_t *env = qmr::ready_glsenv(&status)) {
        EnvLock lock;
        KeepGlErrno keep;
        refill_from_locale(env);
    }
}

void init_dflt_lconv(void) noexcept
{
    int status = 0;
    if (qmr_glsenv_t *env = qmr::ready_glsenv(&status)) {
        EnvLock lock;
        init_dflt_lconv_int(&env->default_conv);
    }
}

void init_dflt_lconv_int(struct qmr_numconv *conv) noexcept
{
    if (conv == nullptr)
        return;
    std::memset(conv, 0, sizeof *conv);
    set_text(conv->decimal_point, ".");
    conv->decimal_point_len = 1;
    conv->decimal_point_width = 1;
    // kept on purpose: the group size is the character '3', not the byte 3.
    set_text(conv->grouping, "3");
    set_text(conv->mon_decimal_point, ".");
    conv->mon_decimal_point_len = 1;
    conv->mon_decimal_point_width = 1;
    set_text(conv->mon_grouping, "3");
    set_text(conv->positive_sign, "+");
    conv->positive_sign_len = 1;
    set_text(conv->negative_sign, "-");
    conv->negative_sign_len = 1;
    set_text(conv->decimal_point2, ".");
    conv->decimal_point2_len = 1;
}

int genlcscale(void) noexcept
{
    int status = 0;
    qmr_glsenv_t *env = qmr::money_env(&status);
    if (env == nullptr)
        return 0;
    // A locale that does not say gives CHAR_MAX, which lands above 31 whether
    // plain char is signed (127) or not (255, read back here as -1).
    const int digits = static_cast<unsigned char>(env->local_conv.frac_digits);
    return digits > 31 ? 32 : digits;
}

int rfrontlen(void) noexcept
{
    int status = 0;
    qmr_glsenv_t *env = qmr::money_env(&status);
    return env == nullptr ? 0 : static_cast<int>(strnlen(env->money.front, kSymbolMax));
}

int rbacklen(void) noexcept
{
    int status = 0;
    qmr_glsenv_t *env = qmr::money_env(&status);
    return env == nullptr ? 0 : static_cast<int>(strnlen(env->money.back, kSymbolMax));
}

const char *gdecimalpoint(int *len) noexcept
{
    int status = 0;
    qmr_glsenv_t *env = qmr::money_env(&status);
    if (len != nullptr)
        *len = env == nullptr ? 0 : env->local_conv.decimal_point_len;
    return env == nullptr ? nullptr : env->local_conv.decimal_point;
}

namespace
{

// Whether part fits with its NUL in a buffer of `size` bytes (null: none).
bool fits(std::string_view part, const char *buffer, int size) noexcept
{
    return buffer != nullptr && size > 0 && part.size() < static_cast<std::size_t>(size);
}

void put(std::string_view part, char *buffer) noexcept
{
    std::memcpy(buffer, part.data(), part.size());
    buffer[part.size()] = '\0';
}

} // namespace

int _gpdbenv(const char *value, char *back, int back_size, char *front, int front_size,
             int *has_slash, int *double_slash) noexcept
{
    if (back != nullptr && back_size > 0)
        back[0] = '\0';
    if (front != nullptr && front_size > 0)
        front[0] = '\0';
    if (has_slash != nullptr)
        *has_slash = 0;
    if (double_slash != nullptr)
        *double_slash = 0;
    if (value == nullptr || *value == '\0')
        return -1;

    const std::string_view v(value);
    std::string_view f, b;
    bool has_front = true, has_back = true, dbl = false;
    if (const std::size_t at = v.find('@'); at != std::string_view::npos) {
        f = v.substr(0, at);
        b = v.substr(at + 1);
    } else if (v.starts_with("//")) {
        dbl = true;
        const std::string_view rest = v.substr(2);
        const std::size_t slash = rest.find('/');
        b = rest.substr(0, slash);
        if (slash != std::string_view::npos)
            f = rest.substr(slash);
        else
            has_front = false;
    } else {
        f = v;
        has_back = false;
    }
    if (has_back && (b.empty() || !fits(b, back, back_size)))
        return -1;
    if (has_front && !fits(f, front, front_size))
        return -1;

    if (has_back)
        put(b, back);
    if (has_front)
        put(f, front);
    if (double_slash != nullptr)
        *double_slash = dbl ? 1 : 0;
    if (has_slash != nullptr) {
        std::string_view inner = f;
        if (dbl && !inner.empty())
            inner.remove_prefix(1);
        *has_slash = inner.find('/') != std::string_view::npos ? 1 : 0;
    }
    return 0;
}
