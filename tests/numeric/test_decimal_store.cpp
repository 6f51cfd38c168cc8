// The stored decimal form: worked byte strings both ways, the base-100
// complement, round trips for every length against an independent rounding,
// the unsigned byte order of stored values, and the precision words.
#include "dec_testutil.h"

#include "qmr/errors.h"

#include <cstdio>
#include <vector>

using namespace dectest;

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes store(const dec_t &d, int len)
{
    Bytes b(static_cast<std::size_t>(len), 0xA5);
    stdecimal(&d, reinterpret_cast<char *>(b.data()), len);
    return b;
}

// What lddecimal gives for b, from a garbage-filled record.
std::pair<int, dec_t> load(const Bytes &b)
{
    dec_t d;
    std::memset(&d, 0xA5, sizeof d);
    const int code =
        lddecimal(reinterpret_cast<const char *>(b.data()), static_cast<int>(b.size()), &d);
    return {code, d};
}

std::string hex(const Bytes &b)
{
    std::string s;
    char buf[4];
    for (unsigned char c : b) {
        std::snprintf(buf, sizeof buf, "%02X ", c);
        s += buf;
    }
    return s;
}

// x rounded half-up on the magnitude to its first m digits, computed on an
// __int128 digit run; a carry out of the run raises the exponent.
dec_t rounded_to(const dec_t &x, int m, int &code)
{
    code = 0;
    if (x.ndigits <= m)
        return x;
    i128 run = 0, top = 1;
    for (int i = 0; i < m; ++i, top *= 100)
        run = run * 100 + static_cast<unsigned char>(x.digits[i]);
    int exponent = x.exponent;
    if (static_cast<unsigned char>(x.digits[m]) >= 50 && ++run == top) {
        run = top / 100;
        ++exponent;
    }
    char bytes[QMR_DECSIZE];
    for (int i = m - 1; i >= 0; --i, run /= 100)
        bytes[i] = static_cast<char>(run % 100);
    dec_t d;
    code = decload(&d, x.sign, exponent, bytes, m);
    return d;
}

} // namespace

TEST(DecStore, WorkedByteStrings)
{
    const struct {
        dec_t d;
        int len;
        Bytes want;
    } stores[] = {{dec("1"), 3, {0xC1, 0x01, 0x00}},
                  {dec("-1"), 3, {0x3E, 0x63, 0x00}},
                  {zero_dec(), 3, {0x80, 0x00, 0x00}},
                  {null_dec(), 3, {0x00, 0x00, 0x00}},
                  {dec("0.125"), 2, {0xC0, 0x0D}},
                  {dec("-0.125"), 2, {0x3F, 0x57}},
                  {dec("99.999"), 3, {0xC2, 0x01, 0x00}},
                  {dec("-99.999"), 3, {0x3D, 0x63, 0x00}},
                  {dec("123.45"), 5, {0xC2, 0x01, 0x17, 0x2D, 0x00}},
                  {dec("-123.45"), 5, {0x3D, 0x62, 0x4C, 0x37, 0x00}},
                  {dec("0.124"), 2, {0xC0, 0x0C}},
                  // the exponent byte is not checked: a carry at exponent 63 wraps into bit 7
                  {raw(1, 63, {99, 99, 50}), 3, {0x80, 0x01, 0x00}},
                  {raw(0, 63, {99, 99, 50}), 3, {0xFF, 0x63, 0x00}},
                  // negative, exponent 63, leading 99 with more digits: stored like null
                  {raw(0, 63, {99, 1}), 3, {0x00, 0x00, 0x63}},
                  {raw(0, 63, {99}), 3, {0x00, 0x01, 0x00}},
                  {raw(1, -64, {1}), 2, {0x80, 0x01}}};
    for (const auto &r : stores)
        EXPECT_EQ(store(r.d, r.len), r.want) << show(r.d) << " got " << hex(store(r.d, r.len));

    Bytes eighteen(18, 0), twenty(20, 0);
    eighteen[0] = twenty[0] = 0xC1;
    eighteen[1] = twenty[1] = 1;
    eighteen[17] = 50;            // the 17th digit rounds the 16th
    twenty[18] = twenty[19] = 99; // beyond the 17 digits read
    const struct {
        Bytes in;
        dec_t want;
        int code;
    } loads[] = {{{0x3E, 0x63, 0x00}, raw(0, 1, {1}), 0},
                 {{0xC1, 0x01, 0x00}, raw(1, 1, {1}), 0},
                 {{0x80, 0x00, 0x00}, zero_dec(), 0},
                 {{0x00, 0x00, 0x00}, null_dec(), 0},
                 {{0x00, 0x00, 0x07}, null_dec(), 0},
                 {{0xC2, 0x01, 0x17, 0x2D, 0x00}, dec("123.45"), 0},
                 {{0x3D, 0x62, 0x4C, 0x37, 0x00}, dec("-123.45"), 0},
                 {eighteen, raw(1, 1, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}), 0},
                 {twenty, raw(1, 1, {1}), 0},
                 {{0x80, 0x00, 0x05}, raw(1, -64, {5}), QMR_E_DECUNDERFLOW}};
    for (const auto &r : loads) {
        const auto [code, d] = load(r.in);
        EXPECT_EQ(code, r.code) << hex(r.in);
        EXPECT_TRUE(same(d, r.want)) << hex(r.in) << " gave " << show(d);
    }
}

TEST(DecStore, ComplementIsHundredPowerMinusRun)
{
    const std::pair<Bytes, Bytes> rows[] = {
        {{1, 0}, {99, 0}},  {{0, 0}, {0, 0}}, {{12, 50}, {87, 50}},     {{0, 1}, {99, 99}},
        {{99, 99}, {0, 1}}, {{5}, {95}},      {{50, 0, 0}, {50, 0, 0}},
    };
    for (const auto &[in, want] : rows) {
        Bytes b = in;
        deccomplement(reinterpret_cast<char *>(b.data()), static_cast<int>(b.size()));
        EXPECT_EQ(b, want) << hex(in);
    }
    Gen g(5);
    for (int iter = 0; iter < 5000; ++iter) {
        const int n = g.uniform(1, 16);
        Bytes b(static_cast<std::size_t>(n));
        i128 v = 0, top = 1, w = 0;
        for (auto &c : b) {
            c = static_cast<unsigned char>(g.digit());
            v = v * 100 + c;
            top *= 100;
        }
        Bytes c = b;
        deccomplement(reinterpret_cast<char *>(c.data()), n);
        for (unsigned char x : c)
            w = w * 100 + x;
        ASSERT_EQ(w, v == 0 ? 0 : top - v) << hex(b);
        deccomplement(reinterpret_cast<char *>(c.data()), n);
        ASSERT_EQ(c, b);
    }
}

TEST(DecStore, RoundTripEveryLength)
{
    Gen g(314159);
    for (int iter = 0; iter < 4000; ++iter) {
        const dec_t x = g.value();
        for (int len = 2; len <= 18; ++len) {
            const Bytes b = store(x, len);
            int code = 0;
            const dec_t want = rounded_to(x, len - 1, code);
            if (code == QMR_E_DECOVERFLOW || (b[0] == 0 && b[1] == 0)) {
                // exponent wrap, or the negative 99... form at exponent 63 that
                // reads as null
                ASSERT_EQ(x.exponent, 63) << show(x);
                continue;
            }
            const auto [back_code, back] = load(b);
            ASSERT_EQ(back_code, 0);
            ASSERT_TRUE(same(back, want))
                << show(x) << " len " << len << " bytes " << hex(b) << " back " << show(back);
        }
    }
}

TEST(DecStore, EqualLengthBytesSortInNumericOrder)
{
    const char *ladder[] = {"-2", "-1", "0", "1", "2"};
    for (int len = 2; len <= 17; ++len)
        for (int i = 0; i < 4; ++i)
            EXPECT_LT(store(dec(ladder[i]), len), store(dec(ladder[i + 1]), len))
                << ladder[i] << " len " << len;
    Gen g(271828);
    for (int iter = 0; iter < 20000; ++iter) {
        const int len = g.uniform(2, 17);
        dec_t x = g.value(), y = g.value();
        if (g.uniform(0, 1))
            y.exponent = x.exponent;
        if (g.uniform(0, 2) == 0)
            y.sign = x.sign;
        const Bytes bx = store(x, len), by = store(y, len);
        const dec_t lx = load(bx).second, ly = load(by).second;
        if (lx.sign == -1 || ly.sign == -1 || (x.exponent == 63 && lx.exponent != 63) ||
            (y.exponent == 63 && ly.exponent != 63))
            continue; // null forms and wrapped exponents sort apart on purpose
        const int bytes_order = bx < by ? -1 : bx > by ? 1 : 0;
        ASSERT_EQ(bytes_order, deccmp(&lx, &ly))
            << show(x) << " " << show(y) << " len " << len << ": " << hex(bx) << "/" << hex(by);
    }
}

// Digits in the high byte, decimals in the low one; decprec raises the
// precision to at least the scale.
TEST(DecPrec, PrecisionWords)
{
    const struct {
        dec_t d;
        int prec2, prec;
    } rows[] = {{dec("123.45"), 0x0502, 0x0502},
                {dec("0.001"), 1 * 256 + 3, 3 * 256 + 3},
                {dec("2500"), 4 * 256, 4 * 256},
                {zero_dec(), 0, 0},
                {null_dec(), 0, 0},
                {dec("0.5"), 1 * 256 + 1, 1 * 256 + 1},
                {dec("7"), 1 * 256, 1 * 256},
                {dec("100"), 3 * 256, 3 * 256},
                {dec("1000"), 4 * 256, 4 * 256},
                {dec("-12.5"), 3 * 256 + 1, 3 * 256 + 1},
                {dec("9.5"), 2 * 256 + 1, 2 * 256 + 1},
                {dec("10.5"), 3 * 256 + 1, 3 * 256 + 1},
                {dec("0.0000012"), 2 * 256 + 7, 7 * 256 + 7},
                {dec("99999999999999999999999999999999"), 32 * 256, 32 * 256}};
    for (const auto &r : rows)
        EXPECT_EQ(std::pair(dec2prec(&r.d), decprec(&r.d)), std::pair(r.prec2, r.prec))
            << show(r.d);
}
