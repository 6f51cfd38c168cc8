// The locale environment: the built-in locales and their facts without the
// Unicode library, locales served from its data (German, French, Japanese,
// Thai), names that cannot be served and their codes, the variables that
// resolve an environment, environments built lazily and separately per
// thread, the fast path, out of memory, and what thread end frees.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "gen/context.hpp"
#include "locale/locale_data.hpp"
#include "locale_test_util.hpp"
#include "platform/alloc.hpp"
#include "qmr/env.h"
#include "qmr/errors.h"

namespace
{

std::string month(void *loc, int m)
{
    return gl_nl_langinfo(loc, QMR_GLI_MON_1 + m - 1);
}

TEST(BuiltinLocales, FactsWithoutTheUnicodeLibrary)
{
    const long loads = qmr::unicode_data_loads();
    qmr_glsenv_t *latin1 = loctest::build("en_US.8859-1").env;
    qmr_glsenv_t *utf8 = loctest::build("en_US.utf8").env;
    ASSERT_EQ(loctest::build("en_US.8859-1").status, 0);
    ASSERT_EQ(loctest::build("en_US.utf8").status, 0);

    EXPECT_STREQ(latin1->name, "en_US.8859-1");
    EXPECT_TRUE(latin1->single_byte);
    EXPECT_EQ(latin1->max_char_len, 1);
    EXPECT_EQ(latin1->codeset_number, 819);
    EXPECT_TRUE(latin1->gregorian);
    EXPECT_NE(latin1->flags & QMR_GLSFLAG_BUILTIN, 0u);
    EXPECT_STREQ(utf8->name, "en_US.utf8");
    EXPECT_FALSE(utf8->single_byte);
    EXPECT_EQ(utf8->max_char_len, 4);
    EXPECT_EQ(utf8->codeset_number, 57372);
    EXPECT_EQ(utf8->ctype, nullptr) << "no byte table for a multibyte code set";

    for (qmr_glsenv_t *env : {latin1, utf8}) {
        const struct lconv *lc = gl_localeconv(env->locale);
        ASSERT_NE(lc, nullptr);
        EXPECT_STREQ(lc->decimal_point, ".");
        EXPECT_STREQ(lc->thousands_sep, ",");
        EXPECT_STREQ(lc->currency_symbol, "$");
        EXPECT_EQ(lc->frac_digits, 2);
        EXPECT_EQ(lc->p_cs_precedes, 1);
        EXPECT_EQ(month(env->locale, 1), "January");
        EXPECT_EQ(month(env->locale, 12), "December");
        EXPECT_STREQ(gl_nl_langinfo(env->locale, QMR_GLI_ABMON_1 + 8), "Sep");
        EXPECT_STREQ(gl_nl_langinfo(env->locale, QMR_GLI_DAY_1), "Sunday");
        EXPECT_STREQ(gl_nl_langinfo(env->locale, QMR_GLI_ABDAY_1 + 6), "Sat");
        EXPECT_STREQ(gl_nl_langinfo(env->locale, QMR_GLI_ERA), "");
        EXPECT_STREQ(gl_nl_langinfo(env->locale, QMR_GLI_RADIXCHAR), ".");
        // The money code's fields are left for it to fill.
        EXPECT_EQ(env->money.load_state, 0);
        EXPECT_EQ(env->local_conv.decimal_point[0], '\0');
        EXPECT_EQ(env->date.fmt, nullptr);
    }
    EXPECT_STREQ(gl_nl_langinfo(utf8->locale, QMR_GLI_CODESET), "utf8");
    char dir[16];
    EXPECT_EQ(gl_lc_spec2msg_dname(latin1->locale, nullptr, dir, sizeof dir), 0);
    EXPECT_STREQ(dir, "en_us/0333");
    EXPECT_EQ(gl_lc_spec2msg_dname(utf8->locale, nullptr, dir, sizeof dir), 0);
    EXPECT_STREQ(dir, "en_us/e01c");
    EXPECT_EQ(qmr::unicode_data_loads(), loads) << "no locale data or converter was loaded";
}

TEST(BuiltinLocales, MessageDirectoryNames)
{
    struct Row {
        const char *name;
        const char *dir;
    };
    const Row rows[] = {{"en_US.8859-1", "en_us/0333"}, {"ja_JP.utf8", "ja_jp/e01c"},
                        {"de_DE.UTF-8", "de_de/e01c"},  {"fr_FR.819", "fr_fr/0333"},
                        {"ru_RU.koi8-r", "ru_ru/036e"}, {"ja_JP.sjis", "ja_jp/03a4"}};
    char dir[16];
    for (const Row &r : rows) {
        EXPECT_EQ(gl_lc_spec2msg_dname(nullptr, r.name, dir, sizeof dir), 0) << r.name;
        EXPECT_STREQ(dir, r.dir);
    }
    for (const char *bad : {"en_US", "english", "en_US.ebcdic", ""}) {
        _gl_ext_errno = 0;
        EXPECT_EQ(gl_lc_spec2msg_dname(nullptr, bad, dir, sizeof dir), -1) << bad;
        EXPECT_EQ(_gl_ext_errno, QMR_GLE_INVAL);
    }
    _gl_ext_errno = 0;
    EXPECT_EQ(gl_lc_spec2msg_dname(nullptr, "en_US.utf8", dir, 10), -1);
    EXPECT_EQ(_gl_ext_errno, QMR_GLE_NOROOM);
}

TEST(UnicodeLocales, GermanInLatin1AndUtf8)
{
    const long loads = qmr::unicode_data_loads();
    loctest::Built de1 = loctest::build("de_DE.8859-1");
    ASSERT_EQ(de1.status, 0);
    EXPECT_GT(qmr::unicode_data_loads(), loads);
    void *loc = de1.env->locale;
    const struct lconv *lc = gl_localeconv(loc);
    EXPECT_STREQ(lc->decimal_point, ",");
    EXPECT_STREQ(lc->thousands_sep, ".");
    EXPECT_STREQ(lc->grouping, "\3");
    EXPECT_STREQ(lc->currency_symbol, "EUR") << "no euro sign in 8859-1: its ISO code";
    EXPECT_STREQ(lc->int_curr_symbol, "EUR ");
    EXPECT_EQ(lc->p_cs_precedes, 0);
    EXPECT_EQ(lc->p_sep_by_space, 1);
    EXPECT_EQ(lc->frac_digits, 2);
    EXPECT_EQ(month(loc, 1), "Januar");
    EXPECT_EQ(month(loc, 3), "M\xE4rz");
    EXPECT_STREQ(gl_nl_langinfo(loc, QMR_GLI_DAY_1 + 1), "Montag");
    EXPECT_TRUE(de1.env->single_byte);
    EXPECT_FALSE(de1.env->flags & QMR_GLSFLAG_BUILTIN);

    void *de8 = loctest::handle("de_DE.utf8");
    ASSERT_NE(de8, nullptr);
    EXPECT_EQ(month(de8, 3), "M\xC3\xA4rz");
    EXPECT_STREQ(gl_localeconv(de8)->currency_symbol, "\xE2\x82\xAC");
    void *de15 = loctest::handle("de_DE.8859-15");
    ASSERT_NE(de15, nullptr);
    EXPECT_STREQ(gl_localeconv(de15)->currency_symbol, "\xA4") << "the euro sign of 8859-15";
}

TEST(UnicodeLocales, FrenchJapaneseAndThai)
{
    void *fr = loctest::handle("fr_FR.utf8");
    ASSERT_NE(fr, nullptr);
    EXPECT_STREQ(gl_localeconv(fr)->decimal_point, ",");
    EXPECT_STREQ(gl_localeconv(fr)->thousands_sep, "\xE2\x80\xAF") << "NARROW NO-BREAK SPACE";
    EXPECT_EQ(month(fr, 1), "janvier");
    EXPECT_EQ(month(fr, 8), "ao\xC3\xBBt");
    void *fr1 = loctest::handle("fr_FR.8859-1");
    EXPECT_STREQ(gl_localeconv(fr1)->thousands_sep, "\xA0") << "the nearest space 8859-1 has";

    loctest::Built ja = loctest::build("ja_JP.utf8");
    ASSERT_EQ(ja.status, 0);
    EXPECT_FALSE(ja.env->single_byte);
    EXPECT_EQ(ja.env->max_char_len, 4);
    EXPECT_EQ(gl_localeconv(ja.env->locale)->frac_digits, 0);
    EXPECT_EQ(month(ja.env->locale, 1), "1\xE6\x9C\x88");
    EXPECT_EQ(gl_mbwidth(ja.env->locale, "\xE6\x9C\x88", 3), 2);
    loctest::Built sjis = loctest::build("ja_JP.sjis");
    ASSERT_EQ(sjis.status, 0);
    EXPECT_EQ(sjis.env->max_char_len, 2);
    EXPECT_EQ(month(sjis.env->locale, 1), "1\x8C\x8E") << "the month name in Shift-JIS";

    loctest::Built th = loctest::build("th_TH.utf8");
    ASSERT_EQ(th.status, 0);
    EXPECT_FALSE(th.env->gregorian) << "the Thai calendar is Buddhist";
    EXPECT_TRUE(loctest::build("de_DE.utf8").env->gregorian);
}

struct NameRow {
    const char *name;
    int status;
    const char *resolved;
};

const NameRow name_rows[] = {
    {"en_US.8859-1", 0, "en_US.8859-1"},
    {"en_US.UTF-8", 0, "en_US.utf8"},
    {"en_US.819", 0, "en_US.8859-1"},
    {"en_US.57372", 0, "en_US.utf8"},
    {"EN_us.Utf8", 0, "en_US.utf8"},
    {"en_US.iso8859-1", 0, "en_US.8859-1"},
    {"zh_CN.utf8", 0, "zh_CN.utf8"},
    {"xx_YY.8859-1", QMR_E_GLS_CATEGORIES, nullptr},
    {"en_ZZ.utf8", QMR_E_GLS_CATEGORIES, nullptr},
    {"ru_RU.8859-1", QMR_E_GLS_CATEGORIES, nullptr}, // Cyrillic names in Latin-1
    {"en_US.klingon", QMR_E_GLS_CONVERTER, nullptr},
    {"de_DE.1047", QMR_E_GLS_CONVERTER, nullptr},
    {"en_US", QMR_E_GLS_ENVVAR, nullptr},
    {"english", QMR_E_GLS_ENVVAR, nullptr},
    {"C", QMR_E_GLS_ENVVAR, nullptr},
    {"e_US.utf8", QMR_E_GLS_ENVVAR, nullptr},
    {"en_US.utf8@euro", QMR_E_GLS_ENVVAR, nullptr},
    {"en_US.", QMR_E_GLS_ENVVAR, nullptr},
};

TEST(LocaleNames, EachNameGivesItsCodeAndNothingFallsBack)
{
    for (const NameRow &r : name_rows) {
        SCOPED_TRACE(r.name);
        int status = 1, glserror = 1, rebuilt = 1;
        qmr_glsenv_t *env = nullptr;
        std::thread([&] {
            env = qmr_glsenv_create(r.name, nullptr);
            SetGlsEnv(env);
            status = chkglsinit();
            glserror = get_glserror();
            rebuilt = chkglsinit(); // a failure is not remembered: the build runs again
        }).join();
        ASSERT_NE(env, nullptr);
        EXPECT_EQ(status, r.status);
        EXPECT_EQ(rebuilt, r.status);
        if (r.status != 0) {
            EXPECT_EQ(glserror, r.status) << "the code is kept as the locale error";
            EXPECT_EQ(env->built, 0);
            EXPECT_EQ(env->locale, nullptr);
        } else {
            EXPECT_STREQ(env->name, r.resolved);
        }
        qmr_glsenv_free(env);
    }
    int status = 0;
    EXPECT_EQ(qmr_glsenv_create("aa_BB.utf8-with-a-name-of-forty-bytes-xx", &status), nullptr);
    EXPECT_EQ(status, QMR_E_GLS_ENVVAR);
}

// Builds an environment from the variables on a new thread: its status and,
// when built, its client name and decimal point.
struct FromVars {
    int status = 1;
    std::string name, point, month1, db, server;
};
FromVars build_from_variables()
{
    FromVars out;
    std::thread([&out] {
        qmr_glsenv_t *env = qmr_glsenv_create(nullptr, nullptr);
        SetGlsEnv(env);
        out.status = chkglsinit();
        if (out.status == 0) {
            out.name = env->name;
            out.db = env->db_name;
            out.server = env->server_name;
            out.point = gl_localeconv(env->locale)->decimal_point;
            out.month1 = month(env->locale, 1);
        }
        qmr_glsenv_free(env);
    }).join();
    return out;
}

// Sets variables for one scope and empties them after (an empty variable
// counts as unset), so that what the host's environment holds stays hidden.
class Vars
{
  public:
    Vars(std::initializer_list<std::pair<const char *, const char *>> vars) : vars_(vars)
    {
        for (const char *name : {"LC_ALL", "LC_CTYPE", "LC_COLLATE", "LC_NUMERIC", "LC_MONETARY",
                                 "LC_TIME", "LC_MESSAGES", "DBNLS", "DB_LOCALE", "SERVER_LOCALE"})
            gputenv(name, "");
        for (auto &[name, value] : vars_)
            gputenv(name, value);
    }
    ~Vars()
    {
        for (auto &[name, value] : vars_)
            gputenv(name, "");
    }

  private:
    std::vector<std::pair<const char *, const char *>> vars_;
};

TEST(Variables, ClientDatabaseServerAndCategories)
{
    {
        Vars v{{"CLIENT_LOCALE", "de_DE.utf8"}, {"DB_LOCALE", "fr_FR.8859-1"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.name, "de_DE.utf8");
        EXPECT_EQ(r.db, "fr_FR.8859-1");
        EXPECT_EQ(r.server, "en_US.8859-1");
        EXPECT_EQ(r.point, ",");
    }
    {
        Vars v{{"CLIENT_LOCALE", ""}, {"SERVER_LOCALE", "ja_JP.UTF-8"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.name, "en_US.8859-1") << "empty means the default";
        EXPECT_EQ(r.db, "en_US.8859-1") << "the database locale follows the client's";
        EXPECT_EQ(r.server, "ja_JP.utf8");
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"}, {"DB_LOCALE", "en_US.ebcdic"}};
        EXPECT_EQ(build_from_variables().status, QMR_E_GLS_CONVERTER);
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"}, {"SERVER_LOCALE", "bad"}};
        EXPECT_EQ(build_from_variables().status, QMR_E_GLS_ENVVAR);
    }
    // The category variables count only under DBNLS.
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"}, {"LC_NUMERIC", "de_DE.8859-1"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.point, ".") << "without DBNLS the host's LC_ variables are not read";
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"},
               {"DBNLS", "1"},
               {"LC_ALL", "C"},
               {"LC_NUMERIC", "de_DE.8859-1"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.point, ".") << "LC_ALL=C leaves every category to the client locale";
    }
    for (const char *c_locale : {"POSIX", "C.UTF-8", "C.utf8"}) {
        Vars v{{"CLIENT_LOCALE", "de_DE.8859-1"}, {"DBNLS", "2"}, {"LC_NUMERIC", c_locale}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0) << c_locale;
        EXPECT_EQ(r.point, ",") << c_locale << " is the C library's default, not a locale";
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"},
               {"DBNLS", "1"},
               {"LC_NUMERIC", "de_DE.8859-1"},
               {"LC_TIME", "fr_FR.8859-1"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.name, "en_US.8859-1");
        EXPECT_EQ(r.point, ",");
        EXPECT_EQ(r.month1, "janvier");
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"}, {"DBNLS", "1"}, {"LC_TIME", "de_DE.utf8"}};
        EXPECT_EQ(build_from_variables().status, QMR_E_GLS_CATEGORIES)
            << "a category cannot bring another code set";
    }
    {
        Vars v{{"CLIENT_LOCALE", "en_US.8859-1"}, {"DBNLS", "1"}, {"LC_ALL", "de_DE.8859-1"}};
        FromVars r = build_from_variables();
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.point, ",");
        EXPECT_EQ(r.month1, "Januar");
    }
}

TEST(PerThread, EnvironmentsAreBuiltLazilyAndSeparately)
{
    struct Plan {
        const char *name;
        const char *point;
        const char *month3;
    };
    const Plan plans[] = {
        {"en_US.8859-1", ".", "March"},   {"en_US.utf8", ".", "March"},
        {"de_DE.8859-1", ",", "M\xE4rz"}, {"fr_FR.utf8", ",", "mars"},
        {"de_DE.8859-1", ",", "M\xE4rz"}, {"ja_JP.utf8", ".", "3\xE6\x9C\x88"},
    };
    constexpr int kThreads = sizeof plans / sizeof plans[0];
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    void *handles[kThreads] = {};
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            const Plan &p = plans[i];
            qmr_glsenv_t *env = qmr_glsenv_create(p.name, nullptr);
            SetGlsEnv(env);
            EXPECT_EQ(env->built, 0) << "nothing is built before chkglsinit";
            EXPECT_EQ(env->locale, nullptr);
            ready.fetch_add(1);
            while (ready.load() < kThreads)
                std::this_thread::yield(); // every thread builds at once
            ASSERT_EQ(chkglsinit(), 0) << p.name;
            EXPECT_EQ(CheckGlsEnv(), env);
            EXPECT_EQ(qmr_get_gl_locale_thread(), env->locale);
            EXPECT_STREQ(gl_localeconv(env->locale)->decimal_point, p.point) << p.name;
            EXPECT_EQ(month(env->locale, 3), p.month3) << p.name;
            handles[i] = env->locale;
            qmr::test_reset_alloc_count();
            for (int k = 0; k < 1000; ++k)
                ASSERT_EQ(chkglsinit(), 0);
            EXPECT_EQ(qmr::test_alloc_count(), 0) << "the built path never allocates";
            qmr_glsenv_free(env);
            EXPECT_EQ(qmr_get_glsenv_thread(), qmr::default_glsenv()) << "back on the default";
        });
    for (std::thread &t : threads)
        t.join();
    EXPECT_EQ(handles[2], handles[4]) << "one locale object per distinct locale";
    EXPECT_NE(handles[0], handles[1]);
}

TEST(PerThread, DefaultEnvironmentIsSharedAndBuiltOnce)
{
    std::vector<std::thread> threads;
    void *seen[4] = {};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&seen, i] {
            ASSERT_EQ(chkglsinit(), 0);
            EXPECT_EQ(CheckGlsEnv(), qmr::default_glsenv());
            seen[i] = qmr_get_gl_locale_thread();
        });
    for (std::thread &t : threads)
        t.join();
    for (void *handle : seen) {
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(handle, seen[0]);
    }
    int status = 1;
    EXPECT_EQ(qmr::ready_glsenv(&status), qmr::default_glsenv());
    EXPECT_EQ(status, 0);
}

TEST(OutOfMemory, BuildingAndCreatingGiveStructureCreationError)
{
    std::thread([] {
        CheckAlltcbInit(); // the context itself is made before allocations fail
        qmr_glsenv_t *env = qmr_glsenv_create("it_IT.8859-1", nullptr);
        ASSERT_NE(env, nullptr);
        SetGlsEnv(env);
        qmr::test_fail_alloc_after(1, true);
        const int status = chkglsinit();
        int ready_status = 0;
        qmr_glsenv_t *ready = qmr::ready_glsenv(&ready_status);
        int create_status = 0;
        qmr_glsenv_t *other = qmr_glsenv_create("it_IT.utf8", &create_status);
        qmr::test_fail_alloc_after(0);
        EXPECT_EQ(status, QMR_E_GLS_CREATE);
        EXPECT_EQ(get_glserror(), QMR_E_GLS_CREATE);
        EXPECT_EQ(ready, nullptr);
        EXPECT_EQ(ready_status, QMR_E_GLS_CREATE);
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(create_status, QMR_E_GLS_CREATE);
        EXPECT_EQ(env->built, 0);
        EXPECT_EQ(chkglsinit(), 0) << "memory back: the build succeeds";
        EXPECT_STREQ(gl_localeconv(env->locale)->decimal_point, ",");
        qmr_glsenv_free(env);
    }).join();
}

TEST(Ownership, ThreadEndAndFreeReleaseWhatARecordOwns)
{
    // Under the leak checker, a DBMONEY copy left behind would be reported.
    qmr_glsenv_t *keep = qmr_glsenv_create("en_US.utf8", nullptr); // more than one environment
    std::thread([] {
        void *block = nullptr;
        ASSERT_EQ(get_thread_context(nullptr, QMR_SLOT_GLSENV, &block), 0);
        ASSERT_EQ(CheckGlsEnv(), block) << "an owned block made for slot 3 is used";
        ASSERT_EQ(chkglsinit(), 0) << "a zero-filled record is built like the default";
        auto *env = static_cast<qmr_glsenv_t *>(block);
        EXPECT_NE(env->locale, nullptr);
        env->money.dbmoney_copy = static_cast<char *>(qmr::mem_alloc(8));
    }).join();
    keep->money.dbmoney_copy = static_cast<char *>(qmr::mem_alloc(8));
    qmr_glsenv_free(keep);
    qmr_glsenv_free(nullptr);
    qmr_glsenv_free(qmr::default_glsenv()); // ignored
}

} // namespace
