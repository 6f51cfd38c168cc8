/* C run-time wrappers offered to the locale library and sibling libraries so
 * that they allocate, read files, see the environment and read the clock
 * through this library. */
#ifndef QMR_CLIB_H
#define QMR_CLIB_H

#include <stddef.h>
#include <stdio.h>

#include "qmr/export.h"

QMR_BEGIN_DECLS

/* The allocator: malloc, calloc, realloc and free through the library's own
 * allocator (so that memory taken here is released with cl_ext_free). */
QMR_API void *cl_ext_malloc(size_t size) QMR_NOEXCEPT;
QMR_API void *cl_ext_calloc(size_t count, size_t size) QMR_NOEXCEPT;
QMR_API void *cl_ext_realloc(void *ptr, size_t size) QMR_NOEXCEPT;
QMR_API void cl_ext_free(void *ptr) QMR_NOEXCEPT;

/* The stream functions, unchanged. */
QMR_API FILE *cl_ext_fopen(const char *path, const char *mode) QMR_NOEXCEPT;
QMR_API int cl_ext_fclose(FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_fgetc(FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_getc(FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_ungetc(int c, FILE *stream) QMR_NOEXCEPT;
QMR_API char *cl_ext_fgets(char *buf, int size, FILE *stream) QMR_NOEXCEPT;
QMR_API size_t cl_ext_fwrite(const void *data, size_t size, size_t count,
                             FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_feof(FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_ferror(FILE *stream) QMR_NOEXCEPT;
QMR_API int cl_ext_fseek(FILE *stream, long offset, int whence) QMR_NOEXCEPT;
QMR_API long cl_ext_ftell(FILE *stream) QMR_NOEXCEPT;

/* p when not null, else the address of a private process-wide error word. */
QMR_API int *cl_ext_errno(int *p) QMR_NOEXCEPT;
/* The library's uncached environment lookup (sees gputenv's values first). */
QMR_API char *cl_ext_getenv(const char *name) QMR_NOEXCEPT;
/* Longest variable name cl_ext_putenv accepts. */
#define QMR_PUTENV_NAME_MAX 80
/* Sets NAME=value through gputenv and returns its result; -1 when there is no
 * "=" or the name is longer than QMR_PUTENV_NAME_MAX characters. An empty name
 * is passed on as empty. */
QMR_API int cl_ext_putenv(const char *assignment) QMR_NOEXCEPT;

/* A broken-down local time as cl_ext_currtime fills it. */
typedef struct qmr_curtime {
    long long ct_reserved; /* always 0 */
    int tm_sec;            /* the nine fields as localtime gives them */
    int tm_min;
    int tm_hour;
    int tm_mday;
    int tm_mon;
    int tm_year;
    int tm_wday;
    int tm_yday;
    int tm_isdst;
    long ct_trailing[2]; /* always 0 */
} qmr_curtime_t;

/* Fills *tm with the local time now. 0, or -1 if the conversion fails. */
QMR_API int cl_ext_currtime(qmr_curtime_t *tm) QMR_NOEXCEPT;
/* Month, day and four-digit year of today's local date. Returns 0. */
QMR_API int cl_ext_currdate(short mdy[3]) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_CLIB_H */
