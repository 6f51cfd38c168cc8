// Helpers of the calendar tests: building datetime and interval values from
// fields, running a body in a child process with its own environment (the
// library reads its variables once), and an independent civil-date oracle.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "calendar/calendar.hpp"
#include "qmr/date.h"
#include "qmr/datetime.h"
#include "qmr/env.h"

// Present in coverage builds linked with -Wl,-u,__gcov_dump: lets a child
// write its counters, which _exit would otherwise drop.
extern "C" void __gcov_dump(void) __attribute__((weak));

namespace caltest
{

using EnvList = std::initializer_list<std::pair<const char *, const char *>>;

// Runs body in a forked child on a fresh thread (a thread without a context),
// after setting the variables (a null value unsets one) and forgetting the
// process-wide settings inherited from the parent. The child's failures are
// printed by it and make the parent's test fail.
template <typename Body> void isolated(EnvList env, Body body)
{
    std::fflush(stdout);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        for (const auto &[name, value] : env) {
            if (value != nullptr)
                setenv(name, value, 1);
            else
                unsetenv(name);
            gputenv(name, value);
        }
        qmr::dbcentury = 0;
        qmr::initflg = 0;
        qmr::dbdatefmt[0] = '\0';
        std::thread worker(body);
        worker.join();
        std::fflush(stdout);
        if (__gcov_dump != nullptr)
            __gcov_dump();
        _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child failed, status " << status;
}

// Day number of a civil date through std::chrono (day 0 is 1899-12-31).
inline int chrono_day(int y, int m, int d)
{
    using namespace std::chrono;
    constexpr int offset = 25568; // days from 1899-12-31 to 1970-01-01
    return static_cast<int>(
               sys_days(year(y) / month(static_cast<unsigned>(m)) / day(static_cast<unsigned>(d)))
                   .time_since_epoch()
                   .count()) +
           offset;
}

inline std::chrono::year_month_day chrono_date(int jdate)
{
    using namespace std::chrono;
    return year_month_day(sys_days(days(jdate - 25568)));
}

// A value of qual from fields: v = {year, month, day, hour, minute, second},
// frac in 10^-5 seconds.
inline dec_t make(int qual, std::initializer_list<long long> v, long long frac = 0, int sign = 1)
{
    qmr::Fields f{};
    int i = 0;
    for (long long x : v)
        f.v[i++] = x;
    f.frac = frac;
    f.sign = sign;
    dec_t out;
    qmr::pack_fields(f, qual, &out);
    return out;
}

inline qmr::Fields fields(const dec_t &d, int qual)
{
    qmr::Fields f;
    qmr::unpack_fields(&d, qual, &f);
    return f;
}

inline std::string dt_text(const dec_t &d, int qual)
{
    char buf[64];
    int status = rdtimestr(&d, qual, buf);
    return status == 0 ? std::string(buf) : "error " + std::to_string(status);
}

inline std::string inv_text(const dec_t &d, int qual)
{
    char buf[64];
    int status = rinvstr(&d, qual, buf);
    return status == 0 ? std::string(buf) : "error " + std::to_string(status);
}

inline int qual_of(const char *text, bool interval)
{
    int q = -1;
    int status = rtuqual(interval ? 14 : 10, text, &q);
    return status == 0 ? q : status;
}

// A value of the named qualifier read from text (the read must succeed).
inline intrvl_t interval(const char *qual, const char *text)
{
    intrvl_t v;
    v.qualifier = static_cast<short>(qual_of(qual, true));
    EXPECT_EQ(incvasc(text, &v), 0) << text;
    return v;
}

inline dtime_t datetime(const char *qual, const char *text)
{
    dtime_t v;
    v.qualifier = static_cast<short>(qual_of(qual, false));
    EXPECT_EQ(dtcvasc(text, &v), 0) << text;
    return v;
}

// The year of today's date as the library sees it.
inline int this_year()
{
    int today = 0;
    short mdy[3];
    rtoday(&today);
    rjulmdy(today, mdy);
    return mdy[2];
}

inline bool same(const dec_t &a, const dec_t &b)
{
    if (a.sign != b.sign || a.ndigits != b.ndigits)
        return false;
    if (a.ndigits == 0)
        return a.sign == -1 || a.exponent == b.exponent;
    return a.exponent == b.exponent && std::memcmp(a.digits, b.digits, a.ndigits) == 0;
}

} // namespace caltest
