// The cache indexes of idx_ggetenv that the library's own lookups reserve. A
// slot remembers the first answer for the whole process and stands for one
// variable, so every variable read on a hot path gets its own entry here.
#pragma once

#include "qmr/env.h"

namespace qmr
{

// Append new variables before kEnvSlotCount and never renumber an entry: a
// slot shared by two names would answer one with the other's value. The test
// programs take their slots from the top (QMR_ENV_CACHE_SLOTS - 1 downwards),
// so the library's entries must stay well below that.
enum EnvSlot : int {
    kEnvSlotDBNLS = 0,    // DBNLSset
    kEnvSlotNOZEROMDY,    // calendar: rmdyjul of an all-zero triple
    kEnvSlotDBCENTURY,    // calendar: getdbcentury
    kEnvSlotDBDATE,       // calendar: getfmt
    kEnvSlotDBTODAY,      // calendar: getdbtoday
    kEnvSlotUSEDTENV,     // calendar: get_usedtenv
    kEnvSlotGLDATETIME,   // calendar: rdtimestr
    kEnvSlotDBMONEY,      // rmoninit, read while the money state is not loaded
    kEnvSlotCLIENTLOCALE, // locale: the client locale of an environment build
    kEnvSlotDBLOCALE,     // locale: DB_LOCALE
    kEnvSlotSERVERLOCALE, // locale: SERVER_LOCALE
    kEnvSlotLCALL,        // locale: LC_ALL, then one slot per category variable
    kEnvSlotLCCTYPE,
    kEnvSlotLCCOLLATE,
    kEnvSlotLCNUMERIC,
    kEnvSlotLCMONETARY,
    kEnvSlotLCTIME,
    kEnvSlotLCMESSAGES,
    kEnvSlotNOTSTRICTTHOUSSEP, // decimal text: QMR_NOT_STRICT_THOUS_SEP
    kEnvSlotCount
};

static_assert(kEnvSlotCount <= QMR_ENV_CACHE_SLOTS / 2,
              "the library's cached variables must leave the upper slots free");

} // namespace qmr
