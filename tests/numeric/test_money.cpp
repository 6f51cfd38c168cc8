// Money conventions: DBMONEY texts in single-byte and multibyte locales, the
// locale's own conventions, reloading, the field checks, the default record,
// the fraction-digit cap and the DBMONEY-style splitter.
#include "qmr/money.h"

#include "locale/environment.hpp"
#include "numeric/money.hpp"
#include "platform/alloc.hpp"
#include "platform/env_slots.hpp"
#include "qmr/env.h"
#include "qmr/gl.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace
{

qmr_glsenv_t *thread_env()
{
    int status = 0;
    return qmr::ready_glsenv(&status);
}

// An environment of its own for the calling thread while in scope.
struct ThreadLocale {
    qmr_glsenv_t *env;
    explicit ThreadLocale(const char *name, bool builds = true)
        : env(qmr_glsenv_create(name, nullptr))
    {
        SetGlsEnv(env);
        EXPECT_EQ(chkglsinit() == 0, builds) << name;
    }
    ~ThreadLocale() { qmr_glsenv_free(env); }
};

// Sets DBMONEY in the library's own environment (null: back to the process
// environment) and loads the thread environment's money state afresh.
qmr_glsenv_t *load_with(const char *dbmoney)
{
    EXPECT_EQ(gputenv("DBMONEY", dbmoney), 0);
    qmr_money_reset();
    rmoninit();
    return thread_env();
}

// The money state in one line: front|back|point|separator|currency, with the
// monetary point and separator added only when they differ from the others.
std::string describe(const qmr_glsenv_t *env)
{
    const qmr_numconv &c = env->local_conv;
    std::string s = std::string(env->money.front) + "|" + env->money.back + "|" + c.decimal_point +
                    "|" + c.thousands_sep + "|" + c.currency_symbol;
    if (std::strcmp(c.decimal_point, c.mon_decimal_point) != 0 ||
        std::strcmp(c.thousands_sep, c.mon_thousands_sep) != 0)
        s += std::string(" mon ") + c.mon_decimal_point + "|" + c.mon_thousands_sep;
    return s;
}

// Every test starts with DBMONEY unset everywhere.
class Money : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        unsetenv("DBMONEY");
        gputenv("DBMONEY", nullptr);
        qmr_money_reset();
    }
    void TearDown() override { SetUp(); }
};

std::string rep(const std::string &s, int n)
{
    return n <= 1 ? s : s + rep(s, n - 1);
}

// Loads each DBMONEY text ("<unset>": not set at all) and checks the state as
// describe() shows it, the accessors and the lengths.
void run_texts(const std::vector<std::pair<std::string, std::string>> &cases)
{
    for (const auto &[dbmoney, want] : cases) {
        SCOPED_TRACE("DBMONEY \"" + dbmoney + "\"");
        const bool unset = dbmoney == "<unset>", builtin = unset || dbmoney.empty();
        qmr_glsenv_t *env = load_with(unset ? nullptr : dbmoney.c_str());
        ASSERT_NE(env, nullptr);
        EXPECT_EQ(describe(env), want);
        EXPECT_EQ(env->money.load_state, 1);
        EXPECT_EQ((env->flags & QMR_GLSFLAG_BUILTIN_MONEY) != 0, builtin);
        EXPECT_STREQ(env->money.dbmoney_copy, builtin ? "$." : dbmoney.c_str());
        EXPECT_EQ(rfrontlen() * 100 + rbacklen(),
                  std::strlen(env->money.front) * 100 + std::strlen(env->money.back));
        int len = 0;
        EXPECT_EQ(gdecimalpoint(&len), env->local_conv.decimal_point);
        EXPECT_EQ(len, static_cast<int>(std::strlen(env->local_conv.decimal_point)));
        EXPECT_EQ(env->local_conv.mon_decimal_point_len, len);
        EXPECT_EQ(env->local_conv.thousands_sep_len, std::strlen(env->local_conv.thousands_sep));
    }
}

TEST_F(Money, DbmoneyTextsInTheSingleByteDefaultLocale)
{
    const std::string a28(28, 'A');
    run_texts({
        {"<unset>", "$||.|,|$"},
        {"", "$||.|,|$"}, // set but empty counts as unset
        {"$.", "$||.|,|$"},
        {"DM,", "DM||,|.|DM"},
        {".FF", "|FF|.|,|FF"},
        {",", "||,|.|$"},
        {".EUR", "|EUR|.|,|EUR"},
        {"DM", "DM||.|,|DM"},               // no point: the locale's stays
        {".", "||.|,|$"},                   // no symbol: the locale's stays
        {"$$,,", "$$|,|,|.|,"},             // the rest is the back symbol
        {"ab.cd.ef", "ab|cd.ef|.|,|cd.ef"}, // and the back wins the currency
        {" US $\t.", "*US*$*||.|,|*US*$*"},
        {". E U R ", "|EUR|.|,|EUR"},
        {a28 + ".x", a28 + "|x|.|,|x"},
        {a28 + "A.", a28 + "|.|A|,|."}, // byte 29 is the point, whatever it is
        {a28 + ",", a28 + "||,|.|" + a28},
        {std::string(27, 'B') + " X.", std::string(27, 'B') + "*|.|X|,|."},
        {a28, a28 + "||.|,|" + a28},
        {"." + std::string(40, 'C'), "|" + std::string(28, 'C') + "|.|,|" + std::string(28, 'C')},
    });
}

TEST_F(Money, DbmoneyTextsInAMultibyteLocale)
{
    ThreadLocale utf8("en_US.utf8");
    const std::string eur = "\xE2\x82\xAC", e9 = rep(eur, 9), a26(26, 'A');
    const std::string wide_stop = "\xEF\xBC\x8E"; // two columns
    run_texts({
        {"<unset>", "$||.|,|$"},
        {eur + ",", eur + "||,|.|" + eur},
        {"\xE3\x80\x80$.", "*$||.|,|*$"},                // ideographic space
        {rep(eur, 10) + ".", e9 + "|.|" + eur + "|,|."}, // the tenth does not fit
        {a26 + eur + "x", a26 + "|x|" + eur + "|,|x"},
        {"." + rep(eur, 10), "|" + e9 + "|.|,|" + e9},
        {"\xFF\xFE,", "\xFF\xFE||,|.|\xFF\xFE"}, // not characters: taken bytewise
    });
    _gl_ext_errno = 0; // the bytes that are not characters leave no trace
    load_with("\xFF,");
    EXPECT_EQ(_gl_ext_errno, 0);
    qmr_glsenv_t *env = load_with((std::string(28, 'A') + wide_stop).c_str());
    EXPECT_EQ(env->local_conv.decimal_point_len, 3);
    EXPECT_EQ(env->local_conv.decimal_point_width, 2);
    EXPECT_EQ(env->local_conv.mon_decimal_point_width, 2);
}

TEST_F(Money, ConventionsOfTheLocaleAndTheFractionDigitCap)
{
    const struct {
        const char *name, *point, *sep;
        bool in_front;
        int frac_digits;
    } cases[] = {
        {"de_DE.8859-1", ",", ".", false, 2},
        {"de_DE.utf8", ",", ".", false, 2},
        {"ja_JP.utf8", ".", ",", true, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ThreadLocale locale(c.name);
        qmr_glsenv_t *env = load_with(nullptr);
        ASSERT_NE(env, nullptr);
        const std::string sym = gl_localeconv(env->locale)->currency_symbol;
        ASSERT_FALSE(sym.empty());
        const std::string p = c.point, s = c.sep;
        EXPECT_EQ(describe(env),
                  (c.in_front ? sym + "||" : "|" + sym + "|") + p + "|" + s + "|" + sym);
        EXPECT_EQ(env->money.load_state, 2);
        EXPECT_EQ(env->flags & QMR_GLSFLAG_BUILTIN_MONEY, 0u);
        EXPECT_STREQ(env->local_conv.decimal_point2, c.point);
        EXPECT_EQ(genlcscale(), c.frac_digits);

        // DBMONEY wins; the locale's own point stays in the second field.
        env = load_with("DM.");
        EXPECT_EQ(describe(env), "DM||.|,|DM");
        EXPECT_EQ(env->money.load_state, 1);
        EXPECT_STREQ(env->local_conv.decimal_point2, c.point);
        gputenv("DBMONEY", nullptr);
    }
    // en_US has 2 fraction digits; the count is capped at 32
    qmr_glsenv_t *env = load_with(nullptr);
    EXPECT_EQ(genlcscale(), 2);
    const int fracs[][2] = {{0, 0}, {31, 31}, {32, 32}, {33, 32}, {127, 32}, {-1, 32}};
    for (const auto &[set, want] : fracs) {
        env->local_conv.frac_digits = static_cast<signed char>(set);
        EXPECT_EQ(genlcscale(), want) << set;
    }
}

TEST_F(Money, ChangesTakeEffectOnlyAfterAReset)
{
    qmr_glsenv_t *env = load_with("DM,");
    ASSERT_EQ(gputenv("DBMONEY", "ABC."), 0);
    rmoninit(); // loaded already: returns at once
    EXPECT_EQ(rfrontlen(), 2);
    qmr_money_reset();
    EXPECT_EQ(rfrontlen(), 3); // every user loads first
    EXPECT_STREQ(gdecimalpoint(nullptr), ".");

    // The same text again: the copy held is kept, nothing is allocated.
    qmr_money_reset();
    qmr::test_reset_alloc_count();
    rmoninit();
    EXPECT_EQ(qmr::test_alloc_count(), 0);
    EXPECT_STREQ(env->money.dbmoney_copy, "ABC.");

    // The process environment, once the cached lookup is dropped.
    setenv("DBMONEY", "XY,", 1);
    gputenv("DBMONEY", nullptr);
    qmr_money_reset();
    EXPECT_EQ(rfrontlen(), 2);
    EXPECT_EQ(describe(env), "XY||,|.|XY");

    // getdbmoney refills the conventions from the locale and nothing else.
    getdbmoney();
    EXPECT_EQ(describe(env), "XY||.|,|$");
    EXPECT_EQ(env->money.load_state, 1);
}

TEST_F(Money, OutOfMemoryForTheDbmoneyCopy)
{
    ASSERT_EQ(gputenv("DBMONEY", "OOM,"), 0);
    qmr_glsenv_t *env = thread_env();
    idx_ggetenv(qmr::kEnvSlotDBMONEY, "DBMONEY"); // the lookup's own copy first
    qmr_money_reset();
    qmr::test_fail_alloc_after(1, true);
    rmoninit();
    qmr::test_fail_alloc_after(0);
    EXPECT_EQ(env->money.dbmoney_copy, nullptr); // the text applied all the same
    EXPECT_EQ(describe(env), "OOM||,|.|OOM");
    qmr_money_reset();
    rmoninit();
    EXPECT_STREQ(env->money.dbmoney_copy, "OOM,");
}

struct lconv make_lconv(const char *point, const char *sep, const char *plus, const char *minus,
                        const char *currency)
{
    struct lconv lc {
    };
    lc.decimal_point = lc.mon_decimal_point = const_cast<char *>(point);
    lc.thousands_sep = lc.mon_thousands_sep = const_cast<char *>(sep);
    lc.grouping = lc.mon_grouping = const_cast<char *>("\3\3");
    lc.positive_sign = const_cast<char *>(plus);
    lc.negative_sign = const_cast<char *>(minus);
    lc.currency_symbol = const_cast<char *>(currency);
    return lc;
}

TEST_F(Money, FieldsAreCheckedFromTheirFirstCharacter)
{
    const std::string k40(40, 'K');
    {
        ThreadLocale utf8("en_US.utf8");
        qmr_glsenv_t *env = load_with(nullptr);
        qmr_numconv &c = env->local_conv;
        // Invalid fields fall back (a cut-short separator too); valid ones get
        // their first character's length.
        struct lconv bad = make_lconv("\xFF", "\xE2\x80", "\x80", "\xE2\x88\x92", k40.c_str());
        qmr::init_local_lconv(env, &bad);
        EXPECT_EQ(describe(env), "$||.||" + rep("K", 31)); // the symbol cut to its field
        EXPECT_EQ(c.decimal_point_len + c.decimal_point_width + c.mon_decimal_point_len, 3);
        EXPECT_EQ(c.thousands_sep_len + c.mon_thousands_sep_len, 0);
        EXPECT_STREQ(c.positive_sign, "+");
        EXPECT_EQ(c.negative_sign_len, 3);
        EXPECT_EQ(c.decimal_point2_len, 0); // the locale's invalid point
        EXPECT_STREQ(c.grouping, "\3\3");

        struct lconv arabic = make_lconv("\xD9\xAB", "\xE2\x80\xAF", "", "-", "");
        qmr::init_local_lconv(env, &arabic);
        EXPECT_EQ(c.decimal_point_len, 2);
        EXPECT_EQ(c.decimal_point_width, 1);
        EXPECT_EQ(c.thousands_sep_len, 3);
        EXPECT_EQ(c.positive_sign_len, 0); // empty is valid

        qmr::init_local_lconv(env, nullptr); // no conventions: the defaults
        qmr_numconv dflt;
        init_dflt_lconv_int(&dflt);
        EXPECT_EQ(std::memcmp(&c, &dflt, sizeof dflt), 0);
    }
    // In a single-byte code set every byte is a character of one column.
    qmr_glsenv_t *env = load_with(nullptr);
    struct lconv latin = make_lconv("\xFF", "\xA0", "", "-", "");
    qmr::init_local_lconv(env, &latin);
    EXPECT_EQ(describe(env), "$||\xFF|\xA0|");
    EXPECT_EQ(env->local_conv.decimal_point_len + env->local_conv.decimal_point_width, 2);
}

TEST_F(Money, DefaultRecord)
{
    qmr_numconv d;
    std::memset(&d, 0xA5, sizeof d);
    init_dflt_lconv_int(&d);
    qmr_numconv want{};
    for (char *f : {want.decimal_point, want.mon_decimal_point, want.decimal_point2})
        *f = '.';
    *want.grouping = *want.mon_grouping = '3';
    *want.positive_sign = '+';
    *want.negative_sign = '-';
    want.decimal_point_len = want.decimal_point_width = want.mon_decimal_point_len = 1;
    want.mon_decimal_point_width = want.positive_sign_len = want.negative_sign_len = 1;
    want.decimal_point2_len = 1;
    EXPECT_EQ(std::memcmp(&d, &want, sizeof d), 0);
    init_dflt_lconv_int(nullptr);

    // Every load and init_dflt_lconv reset the environment's default record.
    qmr_glsenv_t *env = thread_env();
    std::memset(&env->default_conv, 0xA5, sizeof env->default_conv);
    load_with("DM,");
    EXPECT_EQ(std::memcmp(&env->default_conv, &want, sizeof want), 0);
    std::memset(&env->default_conv, 0xA5, sizeof env->default_conv);
    init_dflt_lconv();
    EXPECT_EQ(std::memcmp(&env->default_conv, &want, sizeof want), 0);
}

TEST_F(Money, SharedEnvironmentAndNoEnvironment)
{
    ASSERT_EQ(gputenv("DBMONEY", "Fr. "), 0);
    qmr_money_reset();
    std::vector<std::thread> threads;
    std::vector<int> seen(4, -1);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&seen, i] { seen[i] = rfrontlen() * 10 + rbacklen(); });
    for (std::thread &t : threads)
        t.join();
    EXPECT_EQ(seen, std::vector<int>(4, 20)); // front "Fr", back empty

    std::thread([] {
        ThreadLocale broken("xx_XX.nosuchset", false);
        int len = 7;
        EXPECT_EQ(gdecimalpoint(&len), nullptr);
        EXPECT_EQ(rfrontlen() + rbacklen() + genlcscale() + len, 0);
        rmoninit(); // nothing to load, nothing reported
        getdbmoney();
        init_dflt_lconv();
        qmr_money_reset();
    }).join();
}

TEST(SplitDbmoneyStyle, PartsFlagsAndLimits)
{
    const struct {
        const char *value;
        int back_size, front_size, rc;
        const char *back, *front;
        int has_slash, double_slash;
    } cases[] = {
        // clang-format off
        {"pre@post", 8, 8, 0, "post", "pre", 0, 0}, {"@post", 8, 8, 0, "post", "", 0, 0},
        {"a/b@c", 8, 8, 0, "c", "a/b", 1, 0},
        {"//x@y", 8, 8, 0, "y", "//x", 1, 0}, // "@" before "//"
        {"abc@", 8, 8, -1, "", "", 0, 0}, // empty back
        {"abcd@x", 8, 4, -1, "", "", 0, 0}, // a part must be below its size
        {"a@wxyz", 4, 8, -1, "", "", 0, 0}, {"@x", 8, 0, -1, "", "", 0, 0},
        {"//back/front", 8, 8, 0, "back", "/front", 0, 1},
        {"//back/fr/nt", 8, 8, 0, "back", "/fr/nt", 1, 1},
        {"//back", 8, 0, 0, "back", "", 0, 1}, // no front part: its size unread
        {"//b/front", 8, 6, -1, "", "", 0, 0}, {"//b/fron", 8, 6, 0, "b", "/fron", 0, 1},
        {"//", 8, 8, -1, "", "", 0, 0}, {"///x", 8, 8, -1, "", "", 0, 0},
        {"fr/nt", 8, 8, 0, "", "fr/nt", 1, 0},
        {"/front", 8, 8, 0, "", "/front", 1, 0}, // only "//" skips the first
        {"front", 8, 5, -1, "", "", 0, 0}, {"fron", 0, 5, 0, "", "fron", 0, 0},
        {nullptr, 8, 8, -1, "", "", 0, 0},
        // clang-format on
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value == nullptr ? "(null)" : c.value);
        char back[16], front[16];
        std::memset(back, 'Z', sizeof back);
        std::memset(front, 'Z', sizeof front);
        int has_slash = 7, dbl = 7;
        EXPECT_EQ(_gpdbenv(c.value, back, c.back_size, front, c.front_size, &has_slash, &dbl),
                  c.rc);
        // A buffer of no size is never written.
        EXPECT_STREQ(c.back_size > 0 ? back : "", c.back);
        EXPECT_EQ(back[0] == 'Z', c.back_size == 0);
        EXPECT_STREQ(c.front_size > 0 ? front : "", c.front);
        EXPECT_EQ(front[0] == 'Z', c.front_size == 0);
        EXPECT_EQ(has_slash * 10 + dbl, c.has_slash * 10 + c.double_slash);
    }
    char buf[8]; // null buffers hold nothing; null flag pointers are skipped
    EXPECT_EQ(_gpdbenv("front", nullptr, 8, nullptr, 8, nullptr, nullptr), -1);
    EXPECT_EQ(_gpdbenv("//back", buf, 8, nullptr, 8, nullptr, nullptr), 0);
    EXPECT_STREQ(buf, "back");
    EXPECT_EQ(_gpdbenv("a@b", nullptr, 8, buf, 8, nullptr, nullptr), -1);
}

} // namespace
