// Decimal text: reading a dec_t from text with the locale's signs, decimal
// point and thousands separators (or "0x" hexadecimal), and writing one into
// a fixed-width blank-padded field in fixed or exponent form.
#include "qmr/decimal.h"

#include <cstring>

#include "numeric/money.hpp"
#include "platform/alloc.hpp"
#include "platform/env_slots.hpp"
#include "qmr/bigint.h"
#include "qmr/context.h"
#include "qmr/env.h"
#include "qmr/gl.h"

namespace
{

// Texts longer than this are copied to the heap; shorter ones are read in place.
constexpr int stack_copy_max = 39;
// Significant decimal digits kept by the reader; later ones are dropped.
constexpr int max_kept = 32;
// Decimal exponents (digits before the point) of the smallest and largest
// magnitudes a dec_t holds.
constexpr long min_point = -130;
constexpr long max_point = 126;

void set_zero(dec_t *d)
{
    d->sign = 1;
    d->exponent = -64;
    d->ndigits = 0;
}

void set_null(dec_t *d)
{
    d->sign = -1;
    d->exponent = 0;
    d->ndigits = 0;
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Whether [p, end) starts with the n bytes at s (never for n 0). The first
// byte decides almost every call, so it is compared inline.
inline bool starts_with(const char *p, const char *end, const char *s, int n)
{
    return n > 0 && end - p >= n && *p == *s &&
           (n == 1 || std::memcmp(p + 1, s + 1, static_cast<std::size_t>(n - 1)) == 0);
}

// The conventions a call works with: the record chosen (local or default),
// the thread's local record and the environment they live in.
struct Conventions {
    const qmr_glsenv_t *env;
    const qmr_numconv *rec;
    const qmr_numconv *local;
};

int load_conventions(bool net, Conventions *c)
{
    int status = 0;
    const qmr_glsenv_t *env = qmr::money_env(&status);
    if (env == nullptr)
        return status != 0 ? status : QMR_E_NOMEM;
    c->env = env;
    c->local = &env->local_conv;
    c->rec = net ? &env->default_conv : &env->local_conv;
    return 0;
}

// Byte length of the character at p: 1 in a single-byte code set; an invalid
// sequence counts as one byte.
int char_length(const Conventions &c, const char *p, const char *end)
{
    if (c.env->single_byte)
        return 1;
    const int n = gl_full_mblen(c.env->locale, p, static_cast<int>(end - p));
    return n > 0 ? n : 1;
}

// A long text is copied to the heap, NUL-terminated, and freed when the reader
// returns on any path. A short one is read in place; the few steps that read
// up to a terminator (the exponent, hexadecimal digits) copy their tail.
class HeapCopy
{
  public:
    ~HeapCopy()
    {
        if (heap_ != nullptr)
            qmr::mem_free(heap_);
    }
    char *make(const char *text, int len)
    {
        heap_ = static_cast<char *>(qmr::mem_alloc(static_cast<std::size_t>(len) + 1));
        if (heap_ != nullptr) {
            std::memcpy(heap_, text, static_cast<std::size_t>(len));
            heap_[len] = '\0';
        }
        return heap_;
    }

  private:
    char *heap_ = nullptr;
};

// [p, end) as a NUL-terminated string: in place when the text is, else copied
// into buf (a short text fits it).
const char *terminated(const char *p, const char *end, bool nul_follows,
                       char (&buf)[stack_copy_max + 1])
{
    if (nul_follows)
        return p;
    const auto n = static_cast<std::size_t>(end - p);
    std::memcpy(buf, p, n);
    buf[n] = '\0';
    return buf;
}

bool thousands_check_relaxed()
{
    const char *v = idx_ggetenv(qmr::kEnvSlotNOTSTRICTTHOUSSEP, "QMR_NOT_STRICT_THOUS_SEP");
    return v != nullptr && std::strcmp(v, "1") == 0;
}

// Group sizes from the right, read from a grouping string: a byte is a size
// (the characters '1'..'9' are read as their digit, as the default record
// holds the character "3"); 0 or the end of the string repeats the previous
// size; 255 or a negative byte ends grouping, leaving one group of any
// length on the left. An empty string means groups of three.
class GroupSizes
{
  public:
    explicit GroupSizes(const char *grouping) : g_(grouping) {}
    // The size of group i from the right, or 0 for "any length".
    int size(int i) const
    {
        int last = 3;
        for (int k = 0; k <= i; ++k) {
            if (k >= max_bytes || g_[k] == 0)
                return last;
            const auto b = static_cast<unsigned char>(g_[k]);
            if (b == 255 || b >= 128)
                return 0;
            last = (b >= '1' && b <= '9') ? b - '0' : b;
        }
        return last;
    }

  private:
    static constexpr int max_bytes = sizeof(qmr_numconv::grouping);
    const char *g_;
};

// The grouping check of the integer part at the start of [p, end): digits
// and separators up to the decimal point or any other character. Read from
// the right, every group between separators has the size the locale asks
// for; the leftmost group has 1 up to that size (any length once grouping has
// ended); no separator stands first, last or beside another.
bool grouping_valid(const char *p, const char *end, const qmr_numconv &rec)
{
    const char *sep = rec.thousands_sep;
    const int sep_len = rec.thousands_sep_len;
    const char *q = p;
    while (q < end) {
        if (is_digit(*q))
            ++q;
        else if (starts_with(q, end, sep, sep_len))
            q += sep_len;
        else
            break;
    }
    const GroupSizes sizes(rec.grouping);
    int group = 0;
    while (true) {
        int run = 0;
        while (q > p && is_digit(q[-1])) {
            --q;
            ++run;
        }
        const int want = sizes.size(group);
        if (q == p) // the leftmost group
            return run >= 1 && (want == 0 || run <= want);
        if (want == 0 || run != want)
            return false;
        q -= sep_len; // q[-1] is not a digit, so a separator ends here
        ++group;
    }
}

// What the digit scan keeps: up to 32 significant digits (values 0..9) and the decimal
// exponent E (digits before the point; negative for leading fraction zeros).
struct Scan {
    char digits[max_kept];
    int kept = 0;
    long point = 0;
    bool negative = false;
};

int scan_digits(const char *&p_io, const char *end, const Conventions &c, Scan *s)
{
    const qmr_numconv &rec = *c.rec;
    const char *p = p_io;
    const char *after_sign = p;
    bool seen_point = false;
    bool checked = false;
    int kept = 0;
    long point = 0;
    // a point or separator that starts with a digit byte must be looked for
    // before the digits
    const bool digits_first = !is_digit(rec.decimal_point[0]) && !is_digit(rec.thousands_sep[0]);
    // the separator is skipped by the local record's length, also when the
    // default record's separator matched
    const int sep_step =
        c.local->thousands_sep_len > 0 ? c.local->thousands_sep_len : rec.thousands_sep_len;
    while (p < end) {
        const auto digit = static_cast<unsigned>(static_cast<unsigned char>(*p) - '0');
        if (digit <= 9 && digits_first) {
            if (digit != 0 || kept != 0) {
                if (kept < max_kept)
                    s->digits[kept++] = static_cast<char>(digit);
                point += seen_point ? 0 : 1;
            } else if (seen_point) {
                --point; // a zero before the first significant digit
            }
            ++p;
        } else if (starts_with(p, end, rec.decimal_point, rec.decimal_point_len)) {
            if (seen_point)
                return QMR_E_NOTNUMBER;
            seen_point = true;
            p += rec.decimal_point_len;
        } else if (starts_with(p, end, rec.thousands_sep, rec.thousands_sep_len)) {
            if (seen_point) {
                if (!_gl_im_ismctype(c.env->locale, p, rec.thousands_sep_len, 1024))
                    return QMR_E_NOTNUMBER;
            } else if (!checked) {
                checked = true;
                if (!thousands_check_relaxed() && !grouping_valid(after_sign, end, rec))
                    return QMR_E_NOTNUMBER;
            }
            p += sep_step;
        } else if (digit <= 9) { // digits after a point or separator made of digits
            if (digit != 0 || kept != 0) {
                if (kept < max_kept)
                    s->digits[kept++] = static_cast<char>(digit);
                point += seen_point ? 0 : 1;
            } else if (seen_point) {
                --point;
            }
            ++p;
        } else {
            break;
        }
    }
    p_io = p;
    s->kept = kept;
    s->point = point;
    return 0;
}

// Packs the kept digits into base-100 pairs aligned on the point and loads
// them: an odd E puts an implied zero in front, at most 32 positions go in.
int pack(const Scan &s, dec_t *result)
{
    const int lead = static_cast<int>(s.point & 1); // the implied zero
    const int count = s.kept < max_kept - lead ? s.kept : max_kept - lead;
    const int npairs = (lead + count + 1) / 2;
    auto digit = [&](int k) { return k >= 0 && k < count ? s.digits[k] : 0; };
    char pairs[QMR_DECSIZE];
    for (int i = 0; i < npairs; ++i)
        pairs[i] = static_cast<char>(digit(2 * i - lead) * 10 + digit(2 * i - lead + 1));
    // floor((E + 1) / 2): the power of 100 of the first pair
    const long exponent = (s.point + 1) >> 1;
    // the normal form decload would give: the first pair is not zero and at
    // most 16 are packed, so only trailing zero pairs go
    int n = npairs;
    while (n > 0 && pairs[n - 1] == 0)
        --n;
    if (n == 0) {
        set_zero(result);
        return 0;
    }
    if (exponent < -64 || exponent > 63)
        return exponent < 0 ? QMR_E_DECUNDERFLOW : QMR_E_DECOVERFLOW;
    std::memcpy(result->digits, pairs, static_cast<std::size_t>(n));
    result->ndigits = static_cast<short>(n);
    result->exponent = static_cast<short>(exponent);
    result->sign = s.negative ? 0 : 1;
    return 0;
}

// Reads the sign the conventions allow at p.
void read_sign(const char *&p, const char *end, const Conventions &c, bool *negative)
{
    const qmr_numconv &rec = *c.rec;
    *negative = false;
    if (starts_with(p, end, rec.negative_sign, rec.negative_sign_len)) {
        // one character only, even for a longer negative sign
        *negative = true;
        p += char_length(c, p, end);
    } else if (rec.positive_sign_len == 0) {
        if (*p == '+') {
            ++p;
        } else if (*p == '-') {
            *negative = true;
            ++p;
        }
    } else if (!starts_with(p, end, rec.positive_sign, rec.positive_sign_len)) {
        if (*p == '-') {
            *negative = true;
            ++p;
        }
    } else {
        p += char_length(c, p, end);
    }
}

// "0x" and hexadecimal digits: a 32-bit value (wrapping as decxtoi does).
int read_hex(const char *digits, bool negative, dec_t *result)
{
    unsigned int u = 0;
    if (decxtoi(digits, &u) != 0)
        return QMR_E_NOTNUMBER;
    const std::int64_t v = negative ? -static_cast<std::int64_t>(u) : u;
    return biginttodec(v, result);
}

// The reader proper on [text, text + len), which holds no NUL; nul_follows tells
// whether a NUL follows it.
int read_number(const char *text, int len, bool nul_follows, bool net, dec_t *result)
{
    const char *p = text;
    const char *end = text + len;
    while (end > p && end[-1] == ' ') // trailing blanks
        --end;
    while (p < end && *p == ' ')
        ++p;
    if (p == end) {
        set_null(result);
        return 0;
    }
    Conventions c;
    if (const int status = load_conventions(net, &c); status != 0)
        return status;
    Scan s;
    read_sign(p, end, c, &s.negative);
    if (p >= end ||
        !(is_digit(*p) || starts_with(p, end, c.rec->decimal_point, c.rec->decimal_point_len)))
        return QMR_E_NOTNUMBER;
    char tail[stack_copy_max + 1];
    if (end - p > 1 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))
        return read_hex(terminated(p + 2, end, nul_follows, tail), s.negative, result);
    if (const int status = scan_digits(p, end, c, &s); status != 0)
        return status;
    if (p < end && (*p == 'e' || *p == 'E')) {
        int e = 0;
        const char *exponent = terminated(p + 1, end, nul_follows, tail);
        p += 1 + (decstoi(exponent, &e) - exponent);
        s.point += e;
    }
    // a text without a significant digit is zero, whatever its exponent
    if (s.kept > 0 && s.point < min_point)
        return QMR_E_DECUNDERFLOW;
    if (s.kept > 0 && s.point > max_point)
        return QMR_E_DECOVERFLOW;
    while (p < end && *p == ' ')
        ++p;
    if (p < end && *p != '\n')
        return QMR_E_NOTNUMBER;
    return pack(s, result);
}

int text_to_dec(const char *text, int len, bool net, dec_t *result)
{
    if (text == nullptr) {
        set_zero(result);
        return QMR_E_NOTNUMBER;
    }
    // a NUL within len ends the text
    len = len > 0 ? static_cast<int>(strnlen(text, static_cast<std::size_t>(len))) : 0;
    HeapCopy copy;
    bool nul_follows = false;
    if (len > stack_copy_max) {
        text = copy.make(text, len);
        if (text == nullptr) {
            set_zero(result);
            return QMR_E_NOMEM;
        }
        nul_follows = true;
    }
    const int status = read_number(text, len, nul_follows, net, result);
    if (status != 0)
        set_zero(result);
    return status;
}

// ---------------------------------------------------------------------------
// Writing.

// The significant decimal digits of |d| (up to 32, no leading or trailing
// zeros) and the number of places before the point of the first one.
struct Digits {
    char d[max_kept + 2];
    int n = 0;
    long point = 0;
    char at(long i) const { return i >= 0 && i < n ? d[i] : '0'; }
};

Digits value_digits(const dec_t *d)
{
    Digits out;
    int held = d->ndigits < 0 ? 0 : d->ndigits;
    if (held > QMR_DECSIZE)
        held = QMR_DECSIZE;
    if (held == 0)
        return out;
    for (int i = 0; i < held; ++i) {
        const unsigned pair = static_cast<unsigned char>(d->digits[i]) % 100;
        out.d[out.n++] = static_cast<char>('0' + pair / 10);
        out.d[out.n++] = static_cast<char>('0' + pair % 10);
    }
    out.point = 2L * d->exponent;
    int lead = 0;
    while (lead < out.n && out.d[lead] == '0')
        ++lead;
    if (lead == out.n) { // all digits zero: the value zero
        out.n = 0;
        out.point = 0;
        return out;
    }
    std::memmove(out.d, out.d + lead, static_cast<std::size_t>(out.n - lead));
    out.n -= lead;
    out.point -= lead;
    while (out.d[out.n - 1] == '0') // the second digit of a last pair like 50
        --out.n;
    return out;
}

// Keeps the first `keep` digits, rounding half away from zero on the next; a
// carry out of the first digit gives "1" one place higher. Nothing kept but
// a carry gives "1"; a value that rounds away entirely is zero (point 0).
Digits round_to(Digits v, long keep)
{
    if (keep >= v.n)
        return v;
    if (keep < 0 || (keep == 0 && v.d[0] < '5')) {
        v.n = 0;
        v.point = 0;
        return v;
    }
    if (keep == 0) { // 0.5 units or more of the last place kept: one unit
        v.d[0] = '1';
        v.n = 1;
        ++v.point;
        return v;
    }
    const bool up = v.d[keep] >= '5';
    v.n = static_cast<int>(keep);
    if (up) {
        int i = v.n - 1;
        while (i >= 0 && v.d[i] == '9')
            v.d[i--] = '0';
        if (i >= 0) {
            ++v.d[i];
        } else {
            v.d[0] = '1';
            v.n = 1;
            ++v.point;
        }
    }
    while (v.n > 0 && v.d[v.n - 1] == '0')
        --v.n;
    if (v.n == 0)
        v.point = 0;
    return v;
}

struct Field {
    char *buf;
    int len;
    int pos = 0;
    void put(char ch) { buf[pos++] = ch; }
    void put(const char *s, int n)
    {
        std::memcpy(buf + pos, s, static_cast<std::size_t>(n));
        pos += n;
    }
};

// Decimals shown when the caller leaves it to the value: those it carries,
// one fewer when its last pair ends in 0, at least one.
int natural_decimals(const dec_t *d)
{
    if (d->ndigits <= 0)
        return 1;
    const int n = d->ndigits > QMR_DECSIZE ? QMR_DECSIZE : d->ndigits;
    int r = 2 * (n - d->exponent);
    if (static_cast<unsigned char>(d->digits[n - 1]) % 10 == 0)
        --r;
    return r < 1 ? 1 : r;
}

void write_fixed(Field &f, const Digits &v, bool negative, long r, const qmr_numconv &rec)
{
    bool all_zero = true;
    for (long i = 0; i < v.point + r && all_zero; ++i)
        all_zero = v.at(i) == '0';
    // no negative zero: the "0" takes the place of the "-"
    if (negative && !all_zero)
        f.put('-');
    if (v.point <= 0)
        f.put('0');
    for (long i = 0; i < v.point; ++i)
        f.put(v.at(i));
    if (r >= 1) {
        f.put(rec.decimal_point, rec.decimal_point_len);
        for (long i = 0; i < r; ++i)
            f.put(v.at(v.point + i));
    }
}

int exponent_digits(long e)
{
    return (e < 0 ? 1 : 0) + ((e > 99 || e < -99) ? 3 : 2);
}

// d.ddde[-]XX with as many significant digits as the field allows.
int write_exponent(Field &f, const Digits &all, bool negative, long p, const qmr_numconv &rec)
{
    const long e = p - 1;
    const int sign_len = negative ? rec.negative_sign_len : 0;
    const int fixed_cost = sign_len + 4 + (e < 0 ? 1 : 0) + ((e > 99 || e < -99) ? 1 : 0);
    if (fixed_cost >= f.len) {
        std::memset(f.buf, '*', static_cast<std::size_t>(f.len));
        return -1;
    }
    const int point_len = rec.decimal_point_len;
    long want = f.len - fixed_cost;
    if (want > 1 && point_len > 1) // room for a point wider than one byte
        want = want - (point_len - 1) < 2 ? 1 : want - (point_len - 1);
    for (; want >= 1; --want) {
        Digits v = round_to(all, want);
        if (v.n == 0) { // the value zero
            v.d[0] = '0';
            v.n = 1;
            v.point = 1;
        }
        const long shown_e = v.point - 1;
        const long width =
            sign_len + 1 + (v.n > 1 ? point_len + v.n - 1 : 0) + 1 + exponent_digits(shown_e);
        if (width > f.len) // the rounding moved the exponent: one digit fewer
            continue;
        if (negative)
            f.put(rec.negative_sign, sign_len);
        f.put(v.d[0]);
        if (v.n > 1) {
            f.put(rec.decimal_point, point_len);
            f.put(v.d + 1, v.n - 1);
        }
        f.put('e');
        long ae = shown_e;
        if (ae < 0) {
            f.put('-');
            ae = -ae;
        }
        if (ae >= 100)
            f.put(static_cast<char>('0' + ae / 100));
        f.put(static_cast<char>('0' + ae / 10 % 10));
        f.put(static_cast<char>('0' + ae % 10));
        return 0;
    }
    std::memset(f.buf, '*', static_cast<std::size_t>(f.len));
    return -1;
}

int dec_to_text(const dec_t *d, char *buf, int len, int right, bool net)
{
    if (len < 0)
        return -1;
    if (d->sign == -1) {
        std::memset(buf, ' ', static_cast<std::size_t>(len));
        return 0;
    }
    Conventions c;
    if (const int status = load_conventions(net, &c); status != 0)
        return status;
    const qmr_numconv &rec = *c.rec;
    long r = right >= 0 ? right : natural_decimals(d);
    const bool negative = d->sign == 0;
    std::memset(buf, ' ', static_cast<std::size_t>(len));
    Field f{buf, len};
    const Digits all = value_digits(d);
    while (true) {
        const Digits v = round_to(all, all.point + r);
        const long p = v.point;
        const long width =
            (negative ? 1 : 0) + (p > 1 ? p : 1) + (r >= 1 ? rec.decimal_point_len : 0) + r;
        if (width <= len) {
            write_fixed(f, v, negative, r, rec);
            return 0;
        }
        if (p < -3 || p <= -r)
            return write_exponent(f, all, negative, p, rec);
        const long x = width - len;
        if (r >= x) {
            r -= x;
        } else if (x == r + 1 && r > 0) {
            r = 0; // dropping the decimals and the point fits exactly
        } else {
            return write_exponent(f, all, negative, p, rec);
        }
    }
}

} // namespace

int deccvasc(const char *text, int len, dec_t *result) noexcept
{
    return text_to_dec(text, len, false, result);
}

int deccvasc_net(const char *text, int len, dec_t *result) noexcept
{
    return text_to_dec(text, len, true, result);
}

int dectoasc_tcb(const dec_t *d, char *buf, int len, int right, qmr_tcb_t *context) noexcept
{
    (void)context; // the conventions come from the thread's environment
    return dec_to_text(d, buf, len, right, false);
}

int dectoasc(const dec_t *d, char *buf, int len, int right) noexcept
{
    qmr_tcb_t *context = CheckAlltcbInit();
    if (context == nullptr)
        return QMR_E_NOMEM;
    return dectoasc_tcb(d, buf, len, right, context);
}

int dectoasc_net(const dec_t *d, char *buf, int len, int right) noexcept
{
    if (CheckAlltcbInit() == nullptr)
        return QMR_E_NOMEM;
    return dec_to_text(d, buf, len, right, true);
}
