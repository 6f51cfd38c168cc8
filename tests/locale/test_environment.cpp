// The locale environment: the facts of built-in and Unicode-data locales,
// names that cannot be served, the variables that resolve an environment,
// per-thread lazy builds, the fast path, out of memory, and what is freed.
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

TEST(LocaleFacts, RecordsConventionsAndNames)
{
    // Only locales outside the built-in en_US pair load Unicode data.
    long loads = qmr::unicode_data_loads();
    ASSERT_EQ(loctest::build("de_DE.8859-1").status, 0);
    EXPECT_GT(qmr::unicode_data_loads(), loads);
    struct Record {
        const char *name;
        bool single_byte;
        int max_len, codeset;
        bool gregorian, builtin;
    };
    const Record records[] = {
        {"en_US.8859-1", true, 1, 819, true, true},    {"en_US.utf8", false, 4, 57372, true, true},
        {"de_DE.8859-1", true, 1, 819, true, false},   {"de_DE.utf8", false, 4, 57372, true, false},
        {"ja_JP.utf8", false, 4, 57372, true, false},  {"ja_JP.sjis", false, 2, 932, true, false},
        {"th_TH.utf8", false, 4, 57372, false, false}, // the Thai calendar is Buddhist
    };
    for (const Record &r : records) {
        SCOPED_TRACE(r.name);
        loads = qmr::unicode_data_loads();
        loctest::Built b = loctest::build(r.name);
        ASSERT_EQ(b.status, 0);
        EXPECT_STREQ(b.env->name, r.name);
        EXPECT_EQ(b.env->single_byte, r.single_byte);
        EXPECT_EQ(b.env->max_char_len, r.max_len);
        EXPECT_EQ(b.env->codeset_number, r.codeset);
        EXPECT_EQ(b.env->gregorian, r.gregorian);
        EXPECT_EQ((b.env->flags & QMR_GLSFLAG_BUILTIN) != 0, r.builtin);
        EXPECT_EQ(b.env->ctype == nullptr, !r.single_byte) << "a byte table for single bytes only";
        // The money and date fields are left for their own code to fill.
        EXPECT_EQ(b.env->money.load_state, 0);
        EXPECT_EQ(b.env->local_conv.decimal_point[0], '\0');
        EXPECT_EQ(b.env->date.fmt, nullptr);
        if (r.builtin) { // nor do the queries on them (their answers are checked below)
            char dir[16];
            gl_localeconv(b.env->locale);
            gl_nl_langinfo(b.env->locale, QMR_GLI_MON_1);
            gl_lc_spec2msg_dname(b.env->locale, nullptr, dir, sizeof dir);
            EXPECT_EQ(qmr::unicode_data_loads(), loads) << "no data or converter was loaded";
        }
    }

    // A null locale in the tables below stands for both built-in locales.
    const char *de1 = "de_DE.8859-1", *de8 = "de_DE.utf8", *fr8 = "fr_FR.utf8";
    auto names = [](const char *name) {
        return name != nullptr ? std::vector<const char *>{name}
                               : std::vector<const char *>{"en_US.8859-1", "en_US.utf8"};
    };
    struct Info {
        const char *locale;
        int item;
        const char *text;
    };
    // clang-format off
    const Info infos[] = {
        {nullptr, QMR_GLI_MON_1, "January"}, {nullptr, QMR_GLI_MON_1 + 11, "December"},
        {nullptr, QMR_GLI_ABMON_1 + 8, "Sep"}, {nullptr, QMR_GLI_DAY_1, "Sunday"},
        {nullptr, QMR_GLI_ABDAY_1 + 6, "Sat"}, {nullptr, QMR_GLI_ERA, ""},
        {nullptr, QMR_GLI_RADIXCHAR, "."},   {"en_US.utf8", QMR_GLI_CODESET, "utf8"},
        {de1, QMR_GLI_MON_1, "Januar"},      {de1, QMR_GLI_MON_1 + 2, "M\xE4rz"},
        {de1, QMR_GLI_DAY_1 + 1, "Montag"},  {de8, QMR_GLI_MON_1 + 2, "M\xC3\xA4rz"},
        {fr8, QMR_GLI_MON_1, "janvier"},     {fr8, QMR_GLI_MON_1 + 7, "ao\xC3\xBBt"},
        {"ja_JP.utf8", QMR_GLI_MON_1, "1\xE6\x9C\x88"},
        {"ja_JP.sjis", QMR_GLI_MON_1, "1\x8C\x8E"}}; // the month name in Shift-JIS
    // clang-format on
    for (const Info &i : infos)
        for (const char *name : names(i.locale))
            EXPECT_STREQ(gl_nl_langinfo(loctest::handle(name), i.item), i.text) << name;

    using L = lconv;
    struct Conv {
        const char *locale;
        char *L::*field;
        const char *text;
    };
    // No euro sign in 8859-1: its ISO code; 8859-15 has one (A4). French
    // groups with NARROW NO-BREAK SPACE, or the nearest space 8859-1 has.
    // clang-format off
    const Conv convs[] = {
        {nullptr, &L::decimal_point, "."}, {nullptr, &L::thousands_sep, ","},
        {nullptr, &L::currency_symbol, "$"}, {de1, &L::decimal_point, ","},
        {de1, &L::thousands_sep, "."},     {de1, &L::grouping, "\3"},
        {de1, &L::currency_symbol, "EUR"}, {de1, &L::int_curr_symbol, "EUR "},
        {de8, &L::currency_symbol, "\xE2\x82\xAC"}, {"de_DE.8859-15", &L::currency_symbol, "\xA4"},
        {fr8, &L::decimal_point, ","},     {fr8, &L::thousands_sep, "\xE2\x80\xAF"},
        {"fr_FR.8859-1", &L::thousands_sep, "\xA0"}};
    // clang-format on
    for (const Conv &c : convs)
        for (const char *name : names(c.locale))
            EXPECT_STREQ(gl_localeconv(loctest::handle(name))->*c.field, c.text) << name;
    struct Number {
        const char *locale;
        char L::*field;
        int value;
    };
    const Number numbers[] = {{nullptr, &L::frac_digits, 2}, {nullptr, &L::p_cs_precedes, 1},
                              {de1, &L::frac_digits, 2},     {de1, &L::p_cs_precedes, 0},
                              {de1, &L::p_sep_by_space, 1},  {"ja_JP.utf8", &L::frac_digits, 0}};
    for (const Number &n : numbers)
        for (const char *name : names(n.locale))
            EXPECT_EQ(gl_localeconv(loctest::handle(name))->*n.field, n.value) << name;
    EXPECT_EQ(gl_mbwidth(loctest::handle("ja_JP.utf8"), "\xE6\x9C\x88", 3), 2);
}

TEST(LocaleFacts, MessageDirectoryNames)
{
    struct Row {
        void *loc;
        const char *name;
        const char *dir;
    };
    const Row rows[] = {{loctest::handle("en_US.8859-1"), nullptr, "en_us/0333"},
                        {loctest::handle("en_US.utf8"), nullptr, "en_us/e01c"},
                        {nullptr, "en_US.8859-1", "en_us/0333"},
                        {nullptr, "ja_JP.utf8", "ja_jp/e01c"},
                        {nullptr, "de_DE.UTF-8", "de_de/e01c"},
                        {nullptr, "fr_FR.819", "fr_fr/0333"},
                        {nullptr, "ru_RU.koi8-r", "ru_ru/036e"},
                        {nullptr, "ja_JP.sjis", "ja_jp/03a4"}};
    char dir[16];
    for (const Row &r : rows) {
        EXPECT_EQ(gl_lc_spec2msg_dname(r.loc, r.name, dir, sizeof dir), 0) << r.dir;
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

TEST(LocaleNames, EachNameGivesItsCodeAndNothingFallsBack)
{
    struct Row {
        const char *name;
        int status;
        const char *resolved;
    };
    constexpr int cat = QMR_E_GLS_CATEGORIES, conv = QMR_E_GLS_CONVERTER, var = QMR_E_GLS_ENVVAR;
    // No Cyrillic names in Latin-1; no modifiers, no plain language names.
    // clang-format off
    const Row rows[] = {
        {"en_US.8859-1", 0, "en_US.8859-1"},   {"en_US.UTF-8", 0, "en_US.utf8"},
        {"en_US.819", 0, "en_US.8859-1"},      {"en_US.57372", 0, "en_US.utf8"},
        {"EN_us.Utf8", 0, "en_US.utf8"},       {"en_US.iso8859-1", 0, "en_US.8859-1"},
        {"zh_CN.utf8", 0, "zh_CN.utf8"},       {"xx_YY.8859-1", cat, nullptr},
        {"en_ZZ.utf8", cat, nullptr},          {"ru_RU.8859-1", cat, nullptr},
        {"en_US.klingon", conv, nullptr},      {"de_DE.1047", conv, nullptr},
        {"en_US", var, nullptr},               {"english", var, nullptr},
        {"C", var, nullptr},                   {"e_US.utf8", var, nullptr},
        {"en_US.utf8@euro", var, nullptr},     {"en_US.", var, nullptr}};
    // clang-format on
    for (const Row &r : rows) {
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

TEST(Variables, ClientDatabaseServerAndCategories)
{
    struct Row {
        const char *client;
        std::vector<std::pair<const char *, const char *>> vars;
        int status;
        // What the built environment shows; null: not looked at.
        const char *point = nullptr, *month1 = nullptr, *name = nullptr, *db = nullptr,
                   *server = nullptr;
    };
    const char *en = "en_US.8859-1", *de = "de_DE.8859-1", *nls = "DBNLS", *num = "LC_NUMERIC";
    // Empty means the default; the database locale follows the client's. The
    // category variables count only under DBNLS; LC_ALL=C leaves every category
    // to the client locale, and so do the C library's defaults. A category
    // cannot bring another code set.
    // clang-format off
    const Row rows[] = {
        {"de_DE.utf8", {{"DB_LOCALE", "fr_FR.8859-1"}}, 0, ",", nullptr, "de_DE.utf8",
         "fr_FR.8859-1", en},
        {"", {{"SERVER_LOCALE", "ja_JP.UTF-8"}}, 0, nullptr, nullptr, en, en, "ja_JP.utf8"},
        {en, {{"DB_LOCALE", "en_US.ebcdic"}}, QMR_E_GLS_CONVERTER},
        {en, {{"SERVER_LOCALE", "bad"}}, QMR_E_GLS_ENVVAR},
        {en, {{num, de}}, 0, "."},
        {en, {{nls, "1"}, {"LC_ALL", "C"}, {num, de}}, 0, "."},
        {de, {{nls, "2"}, {num, "POSIX"}}, 0, ","},
        {de, {{nls, "2"}, {num, "C.UTF-8"}}, 0, ","},
        {de, {{nls, "2"}, {num, "C.utf8"}}, 0, ","},
        {en, {{nls, "1"}, {num, de}, {"LC_TIME", "fr_FR.8859-1"}}, 0, ",", "janvier", en},
        {en, {{nls, "1"}, {"LC_TIME", "de_DE.utf8"}}, QMR_E_GLS_CATEGORIES},
        {en, {{nls, "1"}, {"LC_ALL", de}}, 0, ",", "Januar"}};
    // clang-format on
    const char *all[] = {"CLIENT_LOCALE", "LC_ALL",    "LC_CTYPE",     "LC_COLLATE",
                         "LC_NUMERIC",    "LC_TIME",   "LC_MONETARY",  "LC_MESSAGES",
                         "DBNLS",         "DB_LOCALE", "SERVER_LOCALE"};
    for (const Row &r : rows) {
        // An empty variable counts as unset: what the host's environment
        // holds stays hidden.
        for (const char *name : all)
            gputenv(name, "");
        gputenv("CLIENT_LOCALE", r.client);
        std::string trace = std::string("CLIENT_LOCALE=") + r.client;
        for (auto &[name, value] : r.vars) {
            gputenv(name, value);
            trace += std::string(" ") + name + '=' + value;
        }
        std::thread([&r, &trace] {
            SCOPED_TRACE(trace); // traces are per thread
            qmr_glsenv_t *env = qmr_glsenv_create(nullptr, nullptr);
            SetGlsEnv(env);
            const int status = chkglsinit();
            EXPECT_EQ(status, r.status);
            auto check = [](const char *want, const std::string &got) {
                if (want != nullptr) {
                    EXPECT_EQ(got, want);
                }
            };
            if (status == 0) {
                check(r.point, gl_localeconv(env->locale)->decimal_point);
                check(r.month1, month(env->locale, 1));
                check(r.name, env->name);
                check(r.db, env->db_name);
                check(r.server, env->server_name);
            }
            qmr_glsenv_free(env);
        }).join();
    }
    for (const char *name : all)
        gputenv(name, "");
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
    // The Unicode library keeps a failure of its first loads for the life of
    // the process, so it is given those loads (with another locale) first.
    ASSERT_EQ(loctest::build("fr_FR.8859-1").status, 0);
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
        ASSERT_EQ(chkglsinit(), 0) << "memory back: the build succeeds";
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
