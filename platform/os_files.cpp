// The OS layer's file functions: thin POSIX descriptor calls, retried on
// interruption, with close-on-exec so that a host's children inherit nothing.
#include "qmr/os.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int qmr_open(const char *path, int flags, int mode) noexcept
{
    if (path == nullptr)
        return -1;
    int fd;
    do {
        fd = ::open(path, flags | O_CLOEXEC, static_cast<mode_t>(mode));
    } while (fd < 0 && errno == EINTR);
    return fd < 0 ? -1 : fd;
}

int qmr_read(int fd, void *buf, unsigned int count) noexcept
{
    if (buf == nullptr && count != 0)
        return -1;
    // The result is an int: a single read is capped so that it always fits.
    if (count > 0x7FFFF000u)
        count = 0x7FFFF000u;
    ssize_t n;
    do {
        n = ::read(fd, buf, count);
    } while (n < 0 && errno == EINTR);
    return n < 0 ? -1 : static_cast<int>(n);
}

long qmr_lseek(int fd, long offset, int whence) noexcept
{
    off_t at = ::lseek(fd, static_cast<off_t>(offset), whence);
    return at < 0 ? -1 : static_cast<long>(at);
}

int qmr_close(int fd) noexcept
{
    if (fd < 0)
        return -1;
    // Not retried on EINTR: on Linux the descriptor is released either way.
    return ::close(fd) == 0 ? 0 : -1;
}

int _ofreadable(const char *path) noexcept
{
    struct stat st;
    if (path == nullptr || ::stat(path, &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    return ::access(path, R_OK) == 0 ? 0 : -1;
}
