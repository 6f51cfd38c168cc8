// The cl_ext_ C run-time wrappers: allocation through the library's allocator,
// plain stream calls, the environment through the library's lookup, and the
// clock as broken-down local time.
#include "qmr/clib.h"

#include <cstring>
#include <ctime>

#include "platform/alloc.hpp"
#include "qmr/env.h"

void *cl_ext_malloc(size_t size) noexcept
{
    return qmr::mem_alloc(size);
}
void *cl_ext_calloc(size_t count, size_t size) noexcept
{
    return qmr::mem_calloc(count, size);
}
void *cl_ext_realloc(void *ptr, size_t size) noexcept
{
    return qmr::mem_realloc(ptr, size);
}
void cl_ext_free(void *ptr) noexcept
{
    qmr::mem_free(ptr);
}

FILE *cl_ext_fopen(const char *path, const char *mode) noexcept
{
    return std::fopen(path, mode);
}
int cl_ext_fclose(FILE *stream) noexcept
{
    return std::fclose(stream);
}
int cl_ext_fgetc(FILE *stream) noexcept
{
    return std::fgetc(stream);
}
int cl_ext_getc(FILE *stream) noexcept
{
    return getc(stream);
}
int cl_ext_ungetc(int c, FILE *stream) noexcept
{
    return std::ungetc(c, stream);
}
char *cl_ext_fgets(char *buf, int size, FILE *stream) noexcept
{
    return std::fgets(buf, size, stream);
}
size_t cl_ext_fwrite(const void *data, size_t size, size_t count, FILE *stream) noexcept
{
    return std::fwrite(data, size, count, stream);
}
int cl_ext_feof(FILE *stream) noexcept
{
    return std::feof(stream);
}
int cl_ext_ferror(FILE *stream) noexcept
{
    return std::ferror(stream);
}
int cl_ext_fseek(FILE *stream, long offset, int whence) noexcept
{
    return std::fseek(stream, offset, whence);
}
long cl_ext_ftell(FILE *stream) noexcept
{
    return std::ftell(stream);
}

int *cl_ext_errno(int *p) noexcept
{
    static int private_error_word = 0;
    return p != nullptr ? p : &private_error_word;
}

char *cl_ext_getenv(const char *name) noexcept
{
    return idx_ggetenv(-1, name);
}

int cl_ext_putenv(const char *assignment) noexcept
{
    if (assignment == nullptr)
        return -1;
    const char *equals = std::strchr(assignment, '=');
    if (equals == nullptr)
        return -1;
    std::size_t name_len = static_cast<std::size_t>(equals - assignment);
    if (name_len > QMR_PUTENV_NAME_MAX)
        return -1;
    char name[QMR_PUTENV_NAME_MAX + 1];
    std::memcpy(name, assignment, name_len);
    name[name_len] = '\0';
    return gputenv(name, equals + 1);
}

namespace
{
bool local_now(std::tm *out) noexcept
{
    std::time_t now = std::time(nullptr);
    return now != static_cast<std::time_t>(-1) && localtime_r(&now, out) != nullptr;
}
} // namespace

int cl_ext_currtime(qmr_curtime_t *tm) noexcept
{
    std::tm now{};
    if (tm == nullptr || !local_now(&now))
        return -1;
    *tm = qmr_curtime_t{};
    tm->tm_sec = now.tm_sec;
    tm->tm_min = now.tm_min;
    tm->tm_hour = now.tm_hour;
    tm->tm_mday = now.tm_mday;
    tm->tm_mon = now.tm_mon;
    tm->tm_year = now.tm_year;
    tm->tm_wday = now.tm_wday;
    tm->tm_yday = now.tm_yday;
    tm->tm_isdst = now.tm_isdst;
    return 0;
}

int cl_ext_currdate(short mdy[3]) noexcept
{
    std::tm now{};
    if (mdy == nullptr)
        return 0;
    if (!local_now(&now))
        now = std::tm{};
    mdy[0] = static_cast<short>(now.tm_mon + 1);
    mdy[1] = static_cast<short>(now.tm_mday);
    mdy[2] = static_cast<short>(now.tm_year + 1900);
    return 0;
}
