// Building a locale environment: the names resolved from CLIENT_LOCALE and
// its kin, the locale object found or made for them, the record filled once;
// chkglsinit with its one-load fast path, and environments made for hosts.
#include "locale/environment.hpp"

#include <cstring>
#include <pthread.h>

#include "gen/context.hpp"
#include "locale/locale_data.hpp"
#include "platform/env_slots.hpp"
#include "qmr/env.h"
#include "qmr/errors.h"
#include "qmr/gl.h"

namespace qmr
{
namespace
{

// Serialises builds, and with them the locale cache. Builds are rare (once per
// environment), so one process-wide lock is enough.
pthread_mutex_t build_lock = PTHREAD_MUTEX_INITIALIZER;

constexpr char kDefaultLocale[] = "en_US.8859-1";

struct CategoryVar {
    Category category;
    int slot;
    const char *name;
};
constexpr CategoryVar category_vars[] = {
    {kCatCtype, kEnvSlotLCCTYPE, "LC_CTYPE"},
    {kCatCollate, kEnvSlotLCCOLLATE, "LC_COLLATE"},
    {kCatNumeric, kEnvSlotLCNUMERIC, "LC_NUMERIC"},
    {kCatMonetary, kEnvSlotLCMONETARY, "LC_MONETARY"},
    {kCatTime, kEnvSlotLCTIME, "LC_TIME"},
    {kCatMessages, kEnvSlotLCMESSAGES, "LC_MESSAGES"},
};
static_assert(sizeof category_vars / sizeof category_vars[0] == kCatCount);

// A variable's value, or null when it is unset or empty.
const char *read_var(int slot, const char *name) noexcept
{
    const char *value = idx_ggetenv(slot, name);
    return value != nullptr && value[0] != '\0' ? value : nullptr;
}

// The values that name the C library's own default rather than a locale:
// C, POSIX and C.<codeset> (as C.UTF-8, common in a host's environment).
bool is_c_locale(const char *value) noexcept
{
    return std::strcmp(value, "C") == 0 || std::strcmp(value, "POSIX") == 0 ||
           std::strncmp(value, "C.", 2) == 0;
}

struct Resolved {
    LocaleRequest request;
    LocaleName db;
    LocaleName server;
    int nls;
};

// Categories from other locales, read only under DBNLS: without it the LC_
// variables belong to the host's C library. LC_ALL wins over the others.
int resolve_categories(Resolved &r) noexcept
{
    const char *all = read_var(kEnvSlotLCALL, "LC_ALL");
    for (const CategoryVar &var : category_vars) {
        const char *value = all != nullptr ? all : read_var(var.slot, var.name);
        if (value == nullptr || is_c_locale(value))
            continue;
        LocaleName name{};
        if (int status = parse_locale_name(value, &name); status != 0)
            return status;
        // One environment has one code set: a category cannot bring another.
        if (name.codeset != r.request.client.codeset)
            return QMR_E_GLS_CATEGORIES;
        r.request.category[var.category] = name;
    }
    return 0;
}

int resolve(const qmr_glsenv_t *env, Resolved &r) noexcept
{
    const char *client = env->requested[0] != '\0'
                             ? env->requested
                             : read_var(kEnvSlotCLIENTLOCALE, "CLIENT_LOCALE");
    if (int status =
            parse_locale_name(client != nullptr ? client : kDefaultLocale, &r.request.client);
        status != 0)
        return status;
    for (LocaleName &name : r.request.category)
        name = r.request.client;
    const char *db = read_var(kEnvSlotDBLOCALE, "DB_LOCALE");
    r.db = r.request.client;
    if (db != nullptr)
        if (int status = parse_locale_name(db, &r.db); status != 0)
            return status;
    const char *server = read_var(kEnvSlotSERVERLOCALE, "SERVER_LOCALE");
    if (int status = parse_locale_name(server != nullptr ? server : kDefaultLocale, &r.server);
        status != 0)
        return status;
    r.nls = DBNLSset();
    return r.nls != 0 ? resolve_categories(r) : 0;
}

void fill_record(qmr_glsenv_t *env, const Resolved &r, const Locale &loc) noexcept
{
    env->locale = const_cast<Locale *>(&loc);
    format_locale_name(r.request.client, env->name, sizeof env->name);
    format_locale_name(r.db, env->db_name, sizeof env->db_name);
    format_locale_name(r.server, env->server_name, sizeof env->server_name);
    env->single_byte = loc.single_byte;
    env->gregorian = loc.gregorian;
    env->nls = static_cast<unsigned char>(r.nls);
    env->max_char_len = loc.max_char_len;
    env->codeset_number = loc.codeset->number;
    env->ctype = loc.single_byte ? loc.ctype : nullptr;
    env->tolower_map = loc.single_byte ? loc.lower : nullptr;
    env->toupper_map = loc.single_byte ? loc.upper : nullptr;
    unsigned flags = env->flags & QMR_GLSFLAG_BUILTIN_MONEY;
    if (loc.single_byte)
        flags |= QMR_GLSFLAG_SINGLEBYTE;
    if (loc.gregorian)
        flags |= QMR_GLSFLAG_GREGORIAN;
    if (loc.builtin)
        flags |= QMR_GLSFLAG_BUILTIN;
    if (std::strchr(loc.key, ';') != nullptr)
        flags |= QMR_GLSFLAG_CATEGORIES;
    env->flags = flags;
}

int build_environment(qmr_glsenv_t *env) noexcept
{
    Resolved r{};
    if (int status = resolve(env, r); status != 0)
        return status;
    const Locale *loc = nullptr;
    if (int status = find_or_make_locale(r.request, &loc); status != 0)
        return status;
    fill_record(env, r, *loc);
    return 0;
}

bool is_built(const qmr_glsenv_t *env) noexcept
{
    return __atomic_load_n(&env->built, __ATOMIC_ACQUIRE) != 0;
}

int build_once(qmr_glsenv_t *env) noexcept
{
    pthread_mutex_lock(&build_lock);
    int status = 0;
    if (!is_built(env)) {
        status = build_environment(env);
        if (status == 0)
            __atomic_store_n(&env->built, 1, __ATOMIC_RELEASE);
    }
    pthread_mutex_unlock(&build_lock);
    if (status != 0)
        set_glserror(status);
    return status;
}

// Environments besides the default are counted so that CheckGlsEnv looks at
// each thread's slot while any exists; the count never drops below 1 (the
// default alone).
void count_environment(int delta) noexcept
{
    ProcessState &ps = process();
    // The unlock is issued even if the lock failed: the lock is recursive and
    // an unlock of a lock not held is refused harmlessly.
    qmrOS_recursive_mutexLock(&ps.locks.gls_env_mutex);
    int count = ps.glsenv_count.load(std::memory_order_relaxed);
    count = count < 1 ? 1 : count;
    ps.glsenv_count.store(count + delta < 1 ? 1 : count + delta, std::memory_order_release);
    qmrOS_recursive_mutexUnLock(&ps.locks.gls_env_mutex);
}

} // namespace

qmr_glsenv_t *ready_glsenv(int *status) noexcept
{
    const int result = chkglsinit();
    if (status != nullptr)
        *status = result;
    return result == 0 ? CheckGlsEnv() : nullptr;
}

} // namespace qmr

int chkglsinit(void) noexcept
{
    // The common case without a call: one environment, the default, built.
    if (qmr::process().glsenv_count.load(std::memory_order_acquire) == 1 &&
        qmr::is_built(qmr::default_glsenv()))
        return 0;
    qmr_glsenv_t *env = CheckGlsEnv();
    if (qmr::is_built(env))
        return 0;
    return qmr::build_once(env);
}

qmr_glsenv_t *qmr_glsenv_create(const char *client_locale, int *status) noexcept
{
    int ignored = 0;
    int &result = status != nullptr ? *status : ignored;
    if (client_locale != nullptr && strnlen(client_locale, QMR_GLSNAME_SIZE) >= QMR_GLSNAME_SIZE) {
        result = QMR_E_GLS_ENVVAR;
        return nullptr;
    }
    auto *env = static_cast<qmr_glsenv_t *>(qmr::mem_calloc(1, sizeof(qmr_glsenv_t)));
    if (env == nullptr) {
        result = QMR_E_GLS_CREATE;
        return nullptr;
    }
    if (client_locale != nullptr)
        std::strcpy(env->requested, client_locale);
    qmr::count_environment(+1);
    result = 0;
    return env;
}

void qmr_glsenv_free(qmr_glsenv_t *env) noexcept
{
    if (env == nullptr || env == qmr::default_glsenv())
        return;
    if (qmr_get_glsenv_thread() == env)
        SetGlsEnv(qmr::default_glsenv());
    qmr::count_environment(-1);
    qmr::glsenv_release_members(env);
    qmr::mem_free(env);
}
