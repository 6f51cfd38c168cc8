/* The library's environment lookup: values set with gputenv override the
 * process environment, and lookups may be cached per index so that hot paths
 * never re-read the environment. */
#ifndef QMR_ENV_H
#define QMR_ENV_H

#include "qmr/export.h"

QMR_BEGIN_DECLS

/* Number of cache slots of idx_ggetenv (indexes 0 .. QMR_ENV_CACHE_SLOTS - 1). */
#define QMR_ENV_CACHE_SLOTS 64

/* Looks name up, first among the values set by gputenv, then in the process
 * environment. index -1 (or any index outside the cache) looks up afresh each
 * time; an index in range remembers the first answer for the process (a found
 * value is copied once; absence is remembered too) until gputenv changes that
 * name. Returns the value or null; a null or empty name gives null. The
 * returned string stays valid until gputenv sets the same name again. */
QMR_API char *idx_ggetenv(int index, const char *name) QMR_NOEXCEPT;

/* Sets name to value in the library's own environment (the process
 * environment is not changed) and forgets the cached lookups of that name.
 * A null value removes the library's own setting. Returns 0, or -1 for a null
 * name or when memory runs out (nothing changes then). */
QMR_API int gputenv(const char *name, const char *value) QMR_NOEXCEPT;

/* The DBNLS setting as a number: 0 when unset or empty, 1 for "1", 2 for "2",
 * 3 for "3", and 0 for anything else. Read once per process. */
QMR_API int DBNLSset(void) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_ENV_H */
