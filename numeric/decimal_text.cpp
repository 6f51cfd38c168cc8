// Decimal text: reading a dec_t from text with the locale's signs, decimal
// point and thousands separators (or "0x" hexadecimal), and writing one into
// a fixed-width blank-padded field in fixed or exponent form.
#include "qmr/decimal.h"

#include <cstring>

#include "numeric/decimal_pairs.hpp"
#include "numeric/decimal_special.hpp"
#include "numeric/money.hpp"
#include "numeric/text_scan.hpp"
#include "platform/alloc.hpp"
#include "platform/env_slots.hpp"
#include "qmr/bigint.h"
#include "qmr/context.h"
#include "qmr/env.h"
#include "qmr/gl.h"

namespace
{

using qmr::set_dec_null;
using qmr::set_dec_zero;

// Texts longer than this are copied to the heap; shorter ones are read in place.
constexpr int stack_copy_max = 39;
// Significant decimal digits kept by the reader; later ones are dropped.
constexpr int max_kept = 32;
// Decimal exponents (digits before the point) of the smallest and largest
// magnitudes a dec_t holds.
constexpr long min_point = -130;
constexpr long max_point = 126;

using qmr::starts_with;

bool is_digit(char c)
{
    return qmr::is_digit_byte(c);
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

// What the digit scan keeps: up to 32 significant digits (as characters, from
// digits[1]; digits[0] is a '0' that aligns an odd exponent; the slots after
// them take eight-byte stores) and the decimal exponent E (digits before the
// point; negative for leading fraction zeros). begin is the start of the text,
// which bounds the eight-byte reads near its end.
struct Scan {
    char digits[48];
    int kept = 0;
    long point = 0;
    bool negative = false;
    const char *begin = nullptr;
};

// Leading zeros before the first significant digit only move the exponent,
// and only after the point. Returns the first byte that is not such a zero.
const char *skip_leading_zeros(const char *p, const char *end, bool fraction, Scan *s)
{
    if (s->kept != 0)
        return p;
    const char *first = p;
    while (first < end && *first == '0')
        ++first;
    if (fraction)
        s->point -= first - p;
    return first;
}

// Takes the run of digits that starts at p, eight bytes at a time, and
// returns its end: the first 32 significant digits are kept and every
// integer digit counts toward E.
const char *take_digits(const char *p, const char *end, bool fraction, Scan *s)
{
    p = skip_leading_zeros(p, end, fraction, s);
    char *dst = s->digits + 1 + s->kept;
    char *const last = s->digits + 1 + max_kept; // digits past 32 are stored here and dropped
    while (true) {
        const std::uint64_t chunk = qmr::load_upto8(p, end, s->begin);
        const int n = qmr::digit_prefix8(chunk);
        std::memcpy(dst, &chunk, 8);
        dst += n < last - dst ? n : last - dst;
        p += n;
        if (!fraction)
            s->point += n;
        if (n < 8)
            break;
    }
    s->kept = static_cast<int>(dst - (s->digits + 1));
    return p;
}

// One digit, for conventions whose point or separator starts with a digit.
const char *take_one_digit(const char *p, bool fraction, Scan *s)
{
    if (*p == '0' && s->kept == 0) { // a leading zero
        s->point -= fraction ? 1 : 0;
        return p + 1;
    }
    if (s->kept < max_kept)
        s->digits[1 + s->kept++] = *p;
    if (!fraction)
        ++s->point;
    return p + 1;
}

int scan_digits(const char *&p_io, const char *end, const Conventions &c, Scan *s)
{
    const qmr_numconv &rec = *c.rec;
    const char *p = p_io;
    const char *after_sign = p;
    bool seen_point = false;
    bool checked = false;
    // a point or separator that starts with a digit byte must be looked for
    // before the digits, one digit at a time
    const bool digits_first = !is_digit(rec.decimal_point[0]) && !is_digit(rec.thousands_sep[0]);
    // the separator is skipped by the local record's length, also when the
    // default record's separator matched
    const int sep_step =
        c.local->thousands_sep_len > 0 ? c.local->thousands_sep_len : rec.thousands_sep_len;
    while (p < end) {
        if (digits_first && is_digit(*p)) {
            p = take_digits(p, end, seen_point, s);
            continue;
        }
        if (starts_with(p, end, rec.decimal_point, rec.decimal_point_len)) {
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
        } else if (is_digit(*p)) { // a digit after a point or separator made of digits
            p = take_one_digit(p, seen_point, s);
        } else {
            break;
        }
    }
    p_io = p;
    return 0;
}

// Packs the kept digits into base-100 pairs aligned on the point and loads
// them: an odd E puts an implied zero in front, at most 32 positions go in.
int pack(Scan &s, dec_t *result)
{
    const int lead = static_cast<int>(s.point & 1); // the implied zero
    const int count = s.kept < max_kept - lead ? s.kept : max_kept - lead;
    const int npairs = (lead + count + 1) / 2;
    // a '0' before the digits for the implied zero and one after them for
    // the second half of an odd last pair
    s.digits[0] = '0';
    s.digits[1 + s.kept] = '0';
    const char *src = s.digits + 1 - lead;
    for (int i = 0; i < npairs && i < QMR_DECSIZE; ++i)
        result->digits[i] = static_cast<char>((src[2 * i] - '0') * 10 + (src[2 * i + 1] - '0'));
    // the normal form decload would give: the first pair is not zero and at
    // most 16 are packed, so only trailing zero pairs go
    int n = npairs;
    while (n > 0 && result->digits[n - 1] == 0)
        --n;
    if (n == 0) {
        set_dec_zero(result);
        return 0;
    }
    // floor((E + 1) / 2): the power of 100 of the first pair
    const long exponent = (s.point + 1) >> 1;
    if (exponent < -64 || exponent > 63)
        return exponent < 0 ? QMR_E_DECUNDERFLOW : QMR_E_DECOVERFLOW;
    result->ndigits = static_cast<short>(n);
    result->exponent = static_cast<short>(exponent);
    result->sign = s.negative ? 0 : 1;
    return 0;
}

#if defined(__SIZEOF_INT128__) && defined(__BYTE_ORDER__) &&                                       \
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
// The low k bytes of v (k below 8).
std::uint64_t low_bytes(std::uint64_t v, int k)
{
    return v & ((std::uint64_t{1} << (8 * k)) - 1);
}

// The digits of the common text "ddd[.ddd]" with one to seven digits before
// a one-byte point, the first not 0, and up to seven after it, read without
// the general scan: each run is found eight bytes at a time and the digits
// are packed eight at a time. False leaves the text to the general reader.
bool read_plain_digits(const char *p, const char *end, const char *begin, const qmr_numconv &rec,
                       bool negative, dec_t *result)
{
    if (rec.decimal_point_len != 1 || *p == '0')
        return false;
    const std::uint64_t int_chunk = qmr::load_upto8(p, end, begin);
    const int n = qmr::digit_prefix8(int_chunk);
    if (n == 0 || n == 8)
        return false;
    p += n;
    std::uint64_t frac_chunk = 0;
    int m = 0;
    if (p < end) {
        if (*p != rec.decimal_point[0])
            return false;
        ++p;
        frac_chunk = qmr::load_upto8(p, end, begin);
        m = qmr::digit_prefix8(frac_chunk);
        if (m == 8 || p + m != end) // more digits, an exponent or anything else
            return false;
    }
    // With the implied zero of an odd integer part, the integer digits fill
    // whole pairs, so each part is packed on its own: the integer digits
    // right-aligned behind '0's, the fraction digits followed by '0's.
    constexpr std::uint64_t zeros = 0x3030303030303030u;
    const int int_pairs = (n + 1) / 2;
    const std::uint64_t int_chars = int_chunk << (8 * (8 - n)) | zeros >> (8 * n);
    const std::uint64_t frac_chars = low_bytes(frac_chunk, m) | zeros << (8 * m);
    const std::uint64_t pairs = qmr::digit_pairs8(int_chars) >> (8 * (4 - int_pairs)) |
                                std::uint64_t{qmr::digit_pairs8(frac_chars)} << (8 * int_pairs);
    // the first pair is not zero; trailing zero pairs are not held
    const int npairs = int_pairs + (m + 1) / 2;
    const std::uint64_t held = npairs == 8 ? pairs : low_bytes(pairs, npairs);
    std::memcpy(result->digits, &pairs, 8);
    result->ndigits = static_cast<short>((63 - __builtin_clzll(held)) / 8 + 1);
    result->exponent = static_cast<short>((n + 1) / 2);
    result->sign = negative ? 0 : 1;
    return true;
}
#else
bool read_plain_digits(const char *, const char *, const char *, const qmr_numconv &, bool, dec_t *)
{
    return false;
}
#endif

// The common text, blanks around "[-]ddd[.ddd]" (see read_plain_digits), read
// before any of the general reader's set-up. A sign is taken only when it is
// the locale's one-byte "-"; a digit that could start a sign of the locale's
// leaves the text to the general reader, as does everything else.
bool read_short(const char *text, int len, bool net, dec_t *result)
{
    const char *p = text;
    const char *end = text + len;
    while (end > p && end[-1] == ' ')
        --end;
    while (p < end && *p == ' ')
        ++p;
    if (p == end)
        return false;
    int status = 0;
    const qmr_glsenv_t *env = qmr::money_env(&status);
    if (env == nullptr)
        return false;
    const qmr_numconv &rec = net ? env->default_conv : env->local_conv;
    bool negative = false;
    if (*p == '-' && rec.negative_sign_len == 1 && rec.negative_sign[0] == '-') {
        negative = true;
        ++p;
    } else if (*p == rec.negative_sign[0] || *p == rec.positive_sign[0]) {
        return false;
    }
    return p < end && read_plain_digits(p, end, text, rec, negative, result);
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
        set_dec_null(result);
        return 0;
    }
    Conventions c;
    if (const int status = load_conventions(net, &c); status != 0)
        return status;
    Scan s;
    s.begin = text;
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

// The general reader: a long text is read from a heap copy; any error leaves
// the normal zero.
__attribute__((noinline)) int read_general(const char *text, int len, bool net, dec_t *result)
{
    HeapCopy copy;
    bool nul_follows = false;
    if (len > stack_copy_max) {
        text = copy.make(text, len);
        if (text == nullptr) {
            set_dec_zero(result);
            return QMR_E_NOMEM;
        }
        nul_follows = true;
    }
    const int status = read_number(text, len, nul_follows, net, result);
    if (status != 0)
        set_dec_zero(result);
    return status;
}

int text_to_dec(const char *text, int len, bool net, dec_t *result)
{
    if (text == nullptr) {
        set_dec_zero(result);
        return QMR_E_NOTNUMBER;
    }
    // a NUL within len ends the text
    len = len > 0 ? qmr::text_length(text, len) : 0;
    if (read_short(text, len, net, result))
        return 0;
    return read_general(text, len, net, result);
}

// ---------------------------------------------------------------------------
// Writing.

// The step count is hidden from the optimiser, which would otherwise turn
// the short copy loops below into library calls.
inline void opaque(long &i)
{
    __asm__("" : "+r"(i));
}

// The significant decimal digits of |d| (up to 32, no leading or trailing
// zeros, as characters) and the number of places before the point of the
// first one.
struct Digits {
    char d[max_kept + 2];
    int n = 0;
    long point = 0;
    char at(long i) const { return i >= 0 && i < n ? d[i] : '0'; }
};

// The base-100 digit at i, read modulo 100 as a pair of decimal digits.
unsigned pair_at(const dec_t *d, int i)
{
    const unsigned b = static_cast<unsigned char>(d->digits[i]);
    return b < 100 ? b : b % 100;
}

// The digits come from the record's pairs; where they start and end is
// decided on the pairs too, not by reading back the characters just stored.
void value_digits(const dec_t *d, Digits *out)
{
    int held = d->ndigits < 0 ? 0 : d->ndigits;
    if (held > QMR_DECSIZE)
        held = QMR_DECSIZE;
    int first = 0;
    while (first < held && pair_at(d, first) == 0)
        ++first;
    if (first == held) // no digits, or all zero: the value zero
        return;
    int last = held - 1;
    while (pair_at(d, last) == 0)
        --last;
    // the first pair shows one digit when below 10
    const unsigned lead_pair = pair_at(d, first);
    const int lead_digits = lead_pair < 10 ? 1 : 2;
    out->point = 2L * (d->exponent - first) - (2 - lead_digits);
    const int n = lead_digits + 2 * (last - first);
    std::memcpy(out->d, qmr::pair_text + 2 * lead_pair + 2 - lead_digits, 2);
    for (int i = first + 1, at = lead_digits; i <= last; ++i, at += 2)
        std::memcpy(out->d + at, qmr::pair_text + 2 * pair_at(d, i), 2);
    out->n = n - (pair_at(d, last) % 10 == 0 ? 1 : 0); // a last pair like 50
}

// Keeps the first `keep` digits of v, rounding half away from zero on the
// next; a carry out of the first digit gives "1" one place higher. Nothing
// kept but a carry gives "1"; a value that rounds away entirely is zero
// (point 0).
void round_in_place(Digits &v, long keep)
{
    if (keep >= v.n)
        return;
    if (keep < 0 || (keep == 0 && v.d[0] < '5')) {
        v.n = 0;
        v.point = 0;
        return;
    }
    if (keep == 0) { // 0.5 units or more of the last place kept: one unit
        v.d[0] = '1';
        v.n = 1;
        ++v.point;
        return;
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
}

// all rounded to `keep` digits: all itself when nothing is cut, else a copy
// in *scratch.
const Digits &rounded(const Digits &all, long keep, Digits *scratch)
{
    if (keep >= all.n)
        return all;
    *scratch = all;
    round_in_place(*scratch, keep);
    return *scratch;
}

// Copies n bytes one at a time: the digits were just stored two at a time, and
// a wider load across such stores waits for them to reach the cache.
char *copy_bytes(char *dst, const char *src, long n)
{
    for (long i = 0; i < n; ++i) {
        opaque(i);
        dst[i] = src[i];
    }
    return dst + n;
}

char *fill_bytes(char *dst, char c, long n)
{
    for (long i = 0; i < n; ++i) {
        opaque(i);
        dst[i] = c;
    }
    return dst + n;
}

// Fields up to this length are blank-filled with 16-byte stores.
constexpr int short_field = 64;

void fill_blanks(char *buf, int len)
{
    if (len > short_field || len < 16) {
        std::memset(buf, ' ', static_cast<std::size_t>(len));
        return;
    }
    for (long i = 0; i + 16 <= len; i += 16) {
        opaque(i);
        std::memset(buf + i, ' ', 16);
    }
    std::memset(buf + len - 16, ' ', 16);
}

// The fixed form of v (rounded to r decimals) at the start of the blank field
// buf, which has room for it.
void write_fixed(char *buf, const Digits &v, bool negative, long r, const qmr_numconv &rec)
{
    char *o = buf;
    // no negative zero: the "0" takes the place of the "-"
    if (negative && v.n > 0 && v.point + r > 0)
        *o++ = '-';
    const long p = v.point;
    if (p <= 0) {
        *o++ = '0';
    } else if (p <= v.n) {
        o = copy_bytes(o, v.d, p);
    } else {
        o = copy_bytes(o, v.d, v.n);
        o = fill_bytes(o, '0', p - v.n);
    }
    if (r < 1)
        return;
    o = copy_bytes(o, rec.decimal_point, rec.decimal_point_len);
    // fraction place i shows digit p + i: zeros before the first digit and
    // after the last
    const long lead = p < 0 ? (-p < r ? -p : r) : 0;
    o = fill_bytes(o, '0', lead);
    const long from = p < 0 ? 0 : p;
    const long shown = v.n - from < r - lead ? v.n - from : r - lead;
    if (shown > 0)
        o = copy_bytes(o, v.d + from, shown);
    fill_bytes(o, '0', r - lead - (shown > 0 ? shown : 0));
}

int exponent_digits(long e)
{
    return (e < 0 ? 1 : 0) + ((e > 99 || e < -99) ? 3 : 2);
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
        Digits v = all;
        round_in_place(v, want);
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

char *put_pair(char *o, unsigned pair)
{
    std::memcpy(o, qmr::pair_text + 2 * pair, 2);
    return o + 2;
}

// The common case written straight from the pairs into the blank field: a
// normal record of at least 1 whose integer pairs are all held, with at
// least as many decimals asked for as it carries (nothing to round) and room
// for all of it. False leaves the field to the general writer.
bool write_plain(const dec_t *d, char *buf, int len, long r, bool negative, const qmr_numconv &rec)
{
    const int held = d->ndigits;
    const int e = d->exponent;
    if (held < 1 || held > QMR_DECSIZE || e < 1 || e > held)
        return false;
    const auto pair = [d](int i) { return static_cast<unsigned char>(d->digits[i]); };
    for (int i = 0; i < held; ++i)
        if (pair(i) >= 100)
            return false;
    if (pair(0) == 0 || pair(held - 1) == 0)
        return false;
    const bool short_first = pair(0) < 10;
    const long ints = 2L * e - (short_first ? 1 : 0);
    const long fracs = 2L * (held - e) - (held > e && pair(held - 1) % 10 == 0 ? 1 : 0);
    const long width = (negative ? 1 : 0) + ints + (r >= 1 ? rec.decimal_point_len : 0) + r;
    if (r < fracs || width > len)
        return false;
    char *o = buf;
    if (negative)
        *o++ = '-';
    // every byte written lies in the field: a pair shown by one digit is
    // written as one byte
    if (short_first)
        *o++ = static_cast<char>('0' + pair(0));
    else
        o = put_pair(o, pair(0));
    for (int i = 1; i < e; ++i)
        o = put_pair(o, pair(i));
    if (r < 1)
        return true;
    o = copy_bytes(o, rec.decimal_point, rec.decimal_point_len);
    for (int i = e; i < held - 1; ++i)
        o = put_pair(o, pair(i));
    if (held > e) {
        if (2L * (held - e) == fracs)
            o = put_pair(o, pair(held - 1));
        else
            *o++ = static_cast<char>('0' + pair(held - 1) / 10);
    }
    fill_bytes(o, '0', r - fracs);
    return true;
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
    fill_blanks(buf, len);
    if (write_plain(d, buf, len, r, negative, rec))
        return 0;
    Digits all;
    value_digits(d, &all);
    Digits scratch;
    while (true) {
        const Digits &v = rounded(all, all.point + r, &scratch);
        const long p = v.point;
        const long width =
            (negative ? 1 : 0) + (p > 1 ? p : 1) + (r >= 1 ? rec.decimal_point_len : 0) + r;
        if (width <= len) {
            write_fixed(buf, v, negative, r, rec);
            return 0;
        }
        Field f{buf, len};
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
    if (qmr::thread_root() == nullptr)
        return QMR_E_NOMEM;
    return dec_to_text(d, buf, len, right, false);
}

int dectoasc_net(const dec_t *d, char *buf, int len, int right) noexcept
{
    if (qmr::thread_root() == nullptr)
        return QMR_E_NOMEM;
    return dec_to_text(d, buf, len, right, true);
}
