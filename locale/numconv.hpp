// The numeric and monetary conventions records embedded in the locale
// environment: one lconv-shaped record with fixed arrays, the state of the
// currency symbols taken from DBMONEY or the locale, and its flag bit.
#pragma once

#include <type_traits>

struct qmr_numconv { // one numeric-conventions record (C lconv shape, fixed arrays)
    char decimal_point[8];
    unsigned char decimal_point_len, decimal_point_width;
    char thousands_sep[8];
    unsigned char thousands_sep_len;
    char grouping[8];
    char currency_symbol[32];
    char mon_decimal_point[8];
    unsigned char mon_decimal_point_len, mon_decimal_point_width;
    char mon_thousands_sep[8];
    unsigned char mon_thousands_sep_len;
    char mon_grouping[8];
    char positive_sign[8];
    unsigned char positive_sign_len;
    char negative_sign[8];
    unsigned char negative_sign_len;
    signed char int_frac_digits, frac_digits;
    signed char p_cs_precedes, p_sep_by_space, n_cs_precedes, n_sep_by_space, p_sign_posn,
        n_sign_posn;
    char decimal_point2[8];
    unsigned char decimal_point2_len;
};

struct qmr_moneystate {
    char front[29];     // front currency symbol, up to 28 bytes + NUL
    char back[29];      // back currency symbol
    char *dbmoney_copy; // heap copy (qmr::mem_alloc) of the DBMONEY text last applied
    int load_state;     // 0 not loaded, 1 DBMONEY/built-in, 2 locale
};

constexpr unsigned QMR_GLSFLAG_BUILTIN_MONEY = 0x800; // bit in the record's `flags` word

static_assert(std::is_trivially_copyable_v<qmr_numconv>);
static_assert(std::is_trivially_copyable_v<qmr_moneystate>);
