// Display widths of the SQL types: the catalogue's table for most, and the
// rules for DECIMAL and MONEY, which depend on the numeric and money
// conventions of the thread's locale environment.
#include "qmr/types.h"

#include "numeric/money.hpp"
#include "types/catalog.hpp"

#include <cstring>

namespace
{

constexpr int kFloatingScale = 255;

// Precision and scale of a DECIMAL or MONEY length argument.
struct PrecScale {
    int p;
    int s;
};

constexpr PrecScale prec_scale(int len)
{
    return {(len >> 8) & 0xFF, len & 0xFF};
}

// Digits, the point, and a leading zero when every digit is a fraction digit;
// a floating decimal may show an exponent.
int decimal_width(const qmr_numconv &conv, int len) noexcept
{
    const auto [p, s] = prec_scale(len);
    const int n = qmr::decimal_width_allowance(conv);
    if (s == kFloatingScale)
        return n + p + 6;
    return n + p + (p == s ? 2 : 1);
}

// Digits, the point, the currency symbols, and a leading zero when every
// digit is a fraction digit.
int money_width(const qmr_glsenv_t &env, int len) noexcept
{
    const auto [p, s] = prec_scale(len);
    const int m = qmr::money_width_allowance(env.local_conv);
    const int front = static_cast<int>(strnlen(env.money.front, sizeof env.money.front));
    const int back = static_cast<int>(strnlen(env.money.back, sizeof env.money.back));
    return m + p + 1 + front + back + (p == s ? 1 : 0);
}

} // namespace

int rtypwidth(int type, int len) noexcept
{
    const int code = type & 0xFF;
    if (code > QMR_SQL_MAXTYPE)
        return 0;
    int status = 0;
    qmr_glsenv_t *env = qmr::ready_glsenv(&status);
    if (env == nullptr)
        return 0;
    switch (code) {
    case QMR_SQL_DECIMAL:
        qmr::money_load(env);
        return decimal_width(env->local_conv, len);
    case QMR_SQL_MONEY:
        qmr::money_load(env);
        return money_width(*env, len);
    default:
        return qmr::table_width(type, len);
    }
}
