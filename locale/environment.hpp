// The locale environment record that hangs from slot 3 of the thread context,
// with the helpers that free what it owns. Header-only below the locale layer:
// the thread context (gen/) includes it to size and free records.
#pragma once

#include <cstddef>

#include "locale/numconv.hpp"
#include "platform/alloc.hpp"
#include "qmr/context.h"

// The date format in force, filled by the date-format code; zero: none.
struct qmr_glsdate {
    int in_force;
    char *fmt;
    int has_order;
    int order[3];
    int daterec;
};

// Bits of the record's `flags` word set by the build (0x800 is the money
// code's QMR_GLSFLAG_BUILTIN_MONEY).
constexpr unsigned QMR_GLSFLAG_SINGLEBYTE = 0x001; // the code set is single byte
constexpr unsigned QMR_GLSFLAG_GREGORIAN = 0x002;  // the calendar is Gregorian
constexpr unsigned QMR_GLSFLAG_BUILTIN = 0x004;    // a built-in locale: no Unicode-library data
constexpr unsigned QMR_GLSFLAG_CATEGORIES = 0x008; // some category comes from another locale

constexpr std::size_t QMR_GLSNAME_SIZE = 40; // locale names: up to 39 bytes and a NUL

// One locale environment. A zero-filled record is a valid, unbuilt one: the
// first chkglsinit in a thread that uses it builds it (`built` becomes 1,
// published with release order, read with acquire order).
struct qmr_glsenv {
    void *locale;   // the locale handle (qmr::Locale), null until built
    unsigned flags; // QMR_GLSFLAG_... bits
    int built;      // 0 not built, 1 built: read and written atomically

    // Names as resolved ("en_US.8859-1"): the client, database and server
    // locales; `requested` is the client name asked for by qmr_glsenv_create
    // ("" = the CLIENT_LOCALE variable).
    char name[QMR_GLSNAME_SIZE];
    char db_name[QMR_GLSNAME_SIZE];
    char server_name[QMR_GLSNAME_SIZE];
    char requested[QMR_GLSNAME_SIZE];

    // Code-set facts, copied from the locale for the text routines' fast paths.
    bool single_byte;
    bool gregorian;
    unsigned char nls; // DBNLS as the build read it (0..3)
    unsigned char spare_byte;
    int max_char_len;   // longest character in bytes (1..4)
    int codeset_number; // registry number: 819 for 8859-1, 57372 for utf8
    // Single-byte code sets only (else null): the 256-entry class table
    // (QMR_GLCT_ bits; 0x400 blank) and the case-mapping tables, owned by the
    // locale.
    const unsigned short *ctype;
    const unsigned char *tolower_map;
    const unsigned char *toupper_map;

    // Numeric and monetary conventions and the money state: left zero by the
    // build, filled by the money code on first use.
    qmr_numconv local_conv;
    qmr_numconv default_conv;
    qmr_moneystate money;
    qmr_glsdate date; // left zero: no date format in force

    // Room for what later builds add (time formatting and parsing, eras,
    // collation, normalisation, date and datetime formats, file conversion):
    // an extension block that the environment owns, freed through
    // ext_release, and reserved words that stay zero until then.
    void *ext;
    void (*ext_release)(void *ext) noexcept;
    void *reserved_ptr[8];
    int reserved_int[16];
};
static_assert(offsetof(qmr_glsenv, locale) == 0, "the locale handle is the first field");
static_assert(sizeof(qmr_glsenv) <= QMR_LOCALEBLOCK_SIZE,
              "a record must fit in the block made for slot 3");

namespace qmr
{

// Frees what a record owns (the DBMONEY copy, the extension block) and
// leaves those fields empty; the record itself is the caller's.
inline void glsenv_release_members(qmr_glsenv_t *env) noexcept
{
    if (env == nullptr)
        return;
    mem_release(env->money.dbmoney_copy);
    if (env->ext != nullptr && env->ext_release != nullptr)
        env->ext_release(env->ext);
    env->ext = nullptr;
}

// The calling thread's built environment (chkglsinit, then CheckGlsEnv), or
// null with *status the negative locale code.
qmr_glsenv_t *ready_glsenv(int *status) noexcept;

} // namespace qmr
