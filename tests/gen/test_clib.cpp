// The cl_ext_ wrappers: the putenv name rules, the environment they share with
// the library's lookup, the error word, the clock, and allocation failure.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <string>

#include "platform/alloc.hpp"
#include "qmr/clib.h"
#include "qmr/env.h"

namespace
{

TEST(ClibWrappers, PutenvNameRulesAndAllocationFailure)
{
    EXPECT_EQ(cl_ext_putenv("A"), -1) << "no '='";
    EXPECT_EQ(cl_ext_putenv(nullptr), -1);
    EXPECT_EQ(cl_ext_putenv("QMR_CLIB_T1=one"), 0);
    EXPECT_STREQ(cl_ext_getenv("QMR_CLIB_T1"), "one");
    EXPECT_EQ(cl_ext_putenv("QMR_CLIB_T1="), 0);
    EXPECT_STREQ(cl_ext_getenv("QMR_CLIB_T1"), "") << "an empty value is a value";

    std::string longest(80, 'N');
    EXPECT_EQ(cl_ext_putenv((longest + "=v").c_str()), 0) << "80 characters fit";
    EXPECT_STREQ(cl_ext_getenv(longest.c_str()), "v");
    EXPECT_EQ(cl_ext_putenv((longest + "N=v").c_str()), -1) << "81 do not";
    EXPECT_EQ(cl_ext_putenv("=x"), gputenv("", "x")) << "an empty name is passed on";

    qmr::test_fail_alloc_after(1, true);
    int rc = cl_ext_putenv("QMR_CLIB_T2=two");
    qmr::test_fail_alloc_after(0);
    EXPECT_EQ(rc, -1) << "out of memory";
    EXPECT_EQ(cl_ext_getenv("QMR_CLIB_T2"), nullptr) << "nothing was set";
}

TEST(ClibWrappers, ErrnoWordIsPrivateAndStable)
{
    int mine = 0;
    EXPECT_EQ(cl_ext_errno(&mine), &mine);
    int *shared = cl_ext_errno(nullptr);
    ASSERT_NE(shared, nullptr);
    EXPECT_EQ(cl_ext_errno(nullptr), shared);
}

TEST(ClibWrappers, ClockMatchesLocaltime)
{
    qmr_curtime_t now;
    std::memset(&now, 0x5A, sizeof now);
    std::time_t before = std::time(nullptr);
    ASSERT_EQ(cl_ext_currtime(&now), 0);
    std::tm expected{};
    localtime_r(&before, &expected);
    EXPECT_EQ(now.ct_reserved, 0);
    EXPECT_EQ(now.ct_trailing[0], 0);
    EXPECT_EQ(now.ct_trailing[1], 0);
    EXPECT_EQ(now.tm_year, expected.tm_year);
    EXPECT_EQ(now.tm_yday, expected.tm_yday);
    EXPECT_LT(now.tm_sec, 62);
    EXPECT_EQ(cl_ext_currtime(nullptr), -1);

    short mdy[3] = {0, 0, 0};
    EXPECT_EQ(cl_ext_currdate(mdy), 0);
    EXPECT_EQ(mdy[0], expected.tm_mon + 1);
    EXPECT_EQ(mdy[1], expected.tm_mday);
    EXPECT_EQ(mdy[2], expected.tm_year + 1900);
}

TEST(ClibWrappers, AllocatorAndStreams)
{
    qmr::test_fail_alloc_after(1);
    EXPECT_EQ(cl_ext_malloc(8), nullptr);
    void *p = cl_ext_calloc(4, 4);
    ASSERT_NE(p, nullptr);
    p = cl_ext_realloc(p, 64);
    ASSERT_NE(p, nullptr);
    cl_ext_free(p);

    FILE *f = cl_ext_fopen("/proc/self/exe", "rb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(cl_ext_fgetc(f), 0x7F) << "an ELF file starts with 0x7F";
    EXPECT_EQ(cl_ext_getc(f), 'E');
    EXPECT_EQ(cl_ext_ungetc('E', f), 'E');
    char head[4];
    ASSERT_NE(cl_ext_fgets(head, sizeof head, f), nullptr);
    EXPECT_STREQ(head, "ELF");
    EXPECT_EQ(cl_ext_ftell(f), 4);
    EXPECT_EQ(cl_ext_fseek(f, 0, SEEK_SET), 0);
    EXPECT_EQ(cl_ext_feof(f), 0);
    EXPECT_EQ(cl_ext_ferror(f), 0);
    EXPECT_EQ(cl_ext_fclose(f), 0);
}

} // namespace
