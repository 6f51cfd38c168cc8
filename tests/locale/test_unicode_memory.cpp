// Out of memory inside the Unicode library: each allocation an environment
// build makes there is failed in turn, in a child process of its own, and
// the build must give the structure-creation error or data equal to a clean
// build's, then succeed with those data once memory is back.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include "gen/context.hpp"
#include "locale/locale_data.hpp"
#include "platform/alloc.hpp"
#include "qmr/errors.h"
#include "qmr/gl.h"

#if defined(__SANITIZE_ADDRESS__)
#define LOCTEST_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LOCTEST_LEAK_CHECK 1
#endif
#endif
#ifdef LOCTEST_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace
{

TEST(UnicodeAllocator, ReallocBehavesAsRealloc)
{
    // The Unicode library's realloc is mem_realloc: a null block is a new
    // one, growing keeps the bytes, and a failure leaves the block alone.
    auto *p = static_cast<char *>(qmr::mem_realloc(nullptr, 4));
    ASSERT_NE(p, nullptr);
    std::memcpy(p, "abc", 4);
    p = static_cast<char *>(qmr::mem_realloc(p, 4096));
    ASSERT_NE(p, nullptr);
    EXPECT_STREQ(p, "abc");
    qmr::test_fail_alloc_after(1);
    EXPECT_EQ(qmr::mem_realloc(p, 1 << 20), nullptr);
    EXPECT_STREQ(p, "abc");
    p = static_cast<char *>(qmr::mem_realloc(p, 0));
    EXPECT_NE(p, nullptr);
    qmr::mem_free(p);
}

// How a build made under a failure compares with a clean one. The Unicode
// library's number code answers a currency's ISO code for its sign, and two
// digits, when it cannot look them up, and says nothing of it: kMoneyLost.
enum Match : int { kSame, kMoneyLost, kDifferent };

template <typename T> bool same_bytes(const T &a, const T &b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

Match compare(const qmr::Locale &a, const qmr::Locale &b)
{
    bool same = a.codeset == b.codeset && a.single_byte == b.single_byte &&
                a.gregorian == b.gregorian && a.max_char_len == b.max_char_len &&
                same_bytes(a.ctype, b.ctype) && same_bytes(a.lower, b.lower) &&
                same_bytes(a.upper, b.upper) && same_bytes(a.decode, b.decode) &&
                a.encode_count == b.encode_count && same_bytes(a.month_abbr, b.month_abbr) &&
                same_bytes(a.month_full, b.month_full) && same_bytes(a.day_abbr, b.day_abbr) &&
                same_bytes(a.day_full, b.day_full);
    for (int i = 0; same && i < a.encode_count; ++i)
        same = a.encode[i].cp == b.encode[i].cp && a.encode[i].byte == b.encode[i].byte;
    const lconv &x = a.conv, &y = b.conv;
    for (char *lconv::*text :
         {&lconv::decimal_point, &lconv::thousands_sep, &lconv::grouping, &lconv::int_curr_symbol,
          &lconv::mon_decimal_point, &lconv::mon_thousands_sep, &lconv::mon_grouping,
          &lconv::positive_sign, &lconv::negative_sign})
        same = same && std::strcmp(x.*text, y.*text) == 0;
    for (char lconv::*number :
         {&lconv::p_cs_precedes, &lconv::p_sep_by_space, &lconv::n_cs_precedes,
          &lconv::n_sep_by_space, &lconv::p_sign_posn, &lconv::n_sign_posn})
        same = same && x.*number == y.*number;
    if (!same)
        return kDifferent;
    const bool money = std::strcmp(x.currency_symbol, y.currency_symbol) == 0 &&
                       x.frac_digits == y.frac_digits && x.int_frac_digits == y.int_frac_digits;
    return money ? kSame : kMoneyLost;
}

// What a child tells of one failure point.
struct Outcome {
    bool reported; // false: the child died without a word
    bool fired;    // the hook failed an allocation of the build
    int status, glserror, built;
    Match match;         // the data built under the failure, when it succeeded
    int rebuilt;         // the build with memory back
    Match rebuilt_match; // ... and its data
    int leaks;           // the leak checker found some (sanitizer builds)
    int signal;          // the child died of this signal...
    bool in_unicode;     // ... at an instruction of the Unicode library
};

int report_fd = -1;

bool in_unicode_library(void *context)
{
    const auto &regs = static_cast<ucontext_t *>(context)->uc_mcontext;
#if defined(__x86_64__)
    const auto pc = reinterpret_cast<void *>(regs.gregs[REG_RIP]);
#elif defined(__aarch64__)
    const auto pc = reinterpret_cast<void *>(regs.pc);
#else
    const void *pc = nullptr;
    (void)regs;
#endif
    Dl_info info;
    return pc != nullptr && dladdr(pc, &info) != 0 && info.dli_fname != nullptr &&
           std::strstr(info.dli_fname, "libicu") != nullptr;
}

void on_fatal_signal(int sig, siginfo_t *, void *context)
{
    Outcome o{};
    o.reported = true;
    o.signal = sig;
    o.in_unicode = in_unicode_library(context);
    (void)!write(report_fd, &o, sizeof o);
    _exit(0);
}

void catch_fatal_signals()
{
    struct sigaction action {
    };
    action.sa_sigaction = on_fatal_signal;
    action.sa_flags = SA_SIGINFO | SA_RESETHAND;
    for (int sig : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
        sigaction(sig, &action, nullptr);
}

// The child's part: the build with its n-th allocation failing, then again
// with memory back.
Outcome build_failing_at(const char *name, int n, const qmr::Locale &reference)
{
    Outcome o{};
    o.reported = true;
    qmr_glsenv_t *env = qmr_glsenv_create(name, nullptr);
    SetGlsEnv(env);
    qmr::test_reset_alloc_count();
    qmr::test_fail_alloc_after(n);
    o.status = chkglsinit();
    qmr::test_fail_alloc_after(0);
    o.fired = qmr::test_alloc_count() >= n;
    o.glserror = get_glserror();
    o.built = env->built;
    if (o.status == 0)
        o.match = compare(*static_cast<qmr::Locale *>(env->locale), reference);
    o.rebuilt = chkglsinit();
    if (o.rebuilt == 0)
        o.rebuilt_match = compare(*static_cast<qmr::Locale *>(env->locale), reference);
    qmr_glsenv_free(env);
#ifdef LOCTEST_LEAK_CHECK
    o.leaks = __lsan_do_recoverable_leak_check();
#endif
    return o;
}

Outcome in_child(const char *name, int n, const qmr::Locale &reference)
{
    int fds[2];
    if (pipe(fds) != 0)
        return {};
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        report_fd = fds[1];
        catch_fatal_signals();
        const Outcome o = build_failing_at(name, n, reference);
        (void)!write(fds[1], &o, sizeof o);
        _exit(0);
    }
    close(fds[1]);
    Outcome o{};
    if (pid < 0 || read(fds[0], &o, sizeof o) != static_cast<ssize_t>(sizeof o))
        o.reported = false;
    close(fds[0]);
    if (pid > 0)
        waitpid(pid, nullptr, 0);
    return o;
}

TEST(OutOfMemory, EveryUnicodeLibraryAllocationFailsCleanly)
{
    if (!qmr::unicode_allocator_routed())
        GTEST_SKIP() << "the Unicode library allocated before the library could route it";
    CheckAlltcbInit();
    // One locale per kind of code set, and a calendar other than Gregorian;
    // none is built by another test, so no child finds it in the cache.
    struct Row {
        const char *name, *decimal_point, *int_curr_symbol;
        bool gregorian;
    };
    const Row rows[] = {{"nl_NL.8859-1", ",", "EUR ", true},
                        {"pl_PL.8859-2", ",", "PLN ", true},
                        {"ko_KR.euckr", ".", "KRW ", true},
                        {"fa_IR.utf8", "\xD9\xAB", "IRR ", false}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        // The reference build also loads the locale's data into the Unicode
        // library, which keeps a failure of a first load for the life of the
        // process: the points swept are those of every later build.
        qmr::LocaleRequest request{};
        ASSERT_EQ(qmr::parse_locale_name(row.name, &request.client), 0);
        for (qmr::LocaleName &category : request.category)
            category = request.client;
        qmr::Locale *reference = nullptr;
        ASSERT_EQ(qmr::make_locale(request, &reference), 0);
        EXPECT_STREQ(reference->conv.decimal_point, row.decimal_point);
        EXPECT_STREQ(reference->conv.int_curr_symbol, row.int_curr_symbol);
        EXPECT_EQ(reference->gregorian, row.gregorian);

        int failed = 0, absorbed = 0, money_lost = 0, crashed = 0, n = 1;
        for (;; ++n) {
            const Outcome o = in_child(row.name, n, *reference);
            SCOPED_TRACE("allocation " + std::to_string(n));
            ASSERT_TRUE(o.reported) << "the child died without a report";
            if (o.signal != 0) {
                EXPECT_TRUE(o.in_unicode)
                    << "signal " << o.signal << " outside the Unicode library";
                ++crashed;
                continue;
            }
            EXPECT_EQ(o.leaks, 0);
            EXPECT_EQ(o.rebuilt, 0) << "memory back, the build succeeds";
            if (!o.fired) { // the build made fewer than n allocations
                EXPECT_EQ(o.status, 0);
                EXPECT_EQ(o.match, kSame);
                break;
            }
            if (o.status == 0) {
                EXPECT_NE(o.match, kDifferent) << "the failure was absorbed with other data";
                ++(o.match == kSame ? absorbed : money_lost);
                continue;
            }
            EXPECT_EQ(o.status, QMR_E_GLS_CREATE);
            EXPECT_EQ(o.glserror, QMR_E_GLS_CREATE);
            EXPECT_EQ(o.built, 0) << "nothing half-built is kept";
            EXPECT_EQ(o.rebuilt_match, kSame);
            ++failed;
        }
        qmr::discard_locale(reference);
        EXPECT_GT(failed, 0);
        std::printf("%s: %d allocations: %d gave -23108, %d absorbed, %d with the currency "
                    "sign or digits lost, %d crashed in the Unicode library\n",
                    row.name, n - 1, failed, absorbed, money_lost, crashed);
    }
}

} // namespace
