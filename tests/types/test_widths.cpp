// Display widths of DECIMAL and MONEY under different money conventions and
// locales, and the width of every type when the locale cannot be built.
#include "qmr/types.h"

#include "qmr/context.h"
#include "qmr/env.h"
#include "qmr/gl.h"
#include "qmr/money.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace
{

// A precision/scale length argument.
constexpr auto pl = [](int p, int s) { return p << 8 | s; };

// Runs body on a new thread with a locale environment of its own.
template <typename Body> void in_locale(const char *name, Body body)
{
    std::thread([&] {
        qmr_glsenv_t *env = qmr_glsenv_create(name, nullptr);
        SetGlsEnv(env);
        body();
        qmr_glsenv_free(env);
    }).join();
}

void use_dbmoney(const char *text)
{
    unsetenv("DBMONEY");
    ASSERT_EQ(gputenv("DBMONEY", text), 0);
    qmr_money_reset();
}

TEST(Widths, DecimalAndMoneyFollowTheConventions)
{
    const std::string wide_point = std::string(28, 'A') + "\xEF\xBC\x8E" + "F";
    // Widths of DECIMAL(16,2), (5,5), (16) floating, then the same for MONEY.
    const struct {
        const char *locale, *dbmoney; // dbmoney null: unset
        int widths[6];
    } cases[] = {
        // en_US: N = M = 0, "$" in front.
        {"en_US.8859-1", nullptr, {17, 7, 22, 18, 8, 18}},
        {"en_US.8859-1", "DM,", {17, 7, 22, 19, 9, 19}},
        {"en_US.8859-1", ".EUR", {17, 7, 22, 20, 10, 20}},
        {"en_US.8859-1", "DM.EUR", {17, 7, 22, 22, 12, 22}},
        {"en_US.8859-1", ".", {17, 7, 22, 17, 7, 17}},
        {"en_US.utf8", "\xE2\x82\xAC.", {17, 7, 22, 20, 10, 20}}, // the euro's 3 bytes
        // The locale's own conventions: "EUR" behind, a point of one column.
        {"de_DE.8859-1", nullptr, {17, 7, 22, 20, 10, 20}},
        // A point two columns wide (after a full front symbol): N = M = 1.
        {"en_US.utf8", wide_point.c_str(), {18, 8, 23, 47, 37, 47}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " DBMONEY " + (c.dbmoney ? c.dbmoney : "unset"));
        in_locale(c.locale, [&c] {
            use_dbmoney(c.dbmoney);
            for (int attr : {0, 0x2000}) {
                int got[6], i = 0;
                for (int type : {5, 8})
                    for (int len : {pl(16, 2), pl(5, 5), pl(16, 255)})
                        got[i++] = rtypwidth(attr | type, len);
                EXPECT_EQ(std::vector<int>(got, got + 6), std::vector<int>(c.widths, c.widths + 6));
            }
            gputenv("DBMONEY", nullptr);
        });
    }
}

TEST(Widths, NothingWithoutALocaleEnvironment)
{
    in_locale("xx_XX.nosuchset", [] {
        for (int code = 0; code <= 53; ++code)
            EXPECT_EQ(rtypwidth(code, pl(16, 2)), 0) << "type " << code;
    });
}

} // namespace
