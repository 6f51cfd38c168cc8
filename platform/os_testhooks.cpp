// Test hooks of the OS layer (test builds only).
#include "platform/os_testhooks.hpp"

#ifdef QMR_TESTING
#include <atomic>

namespace qmr
{
namespace
{
std::atomic<int> init_countdown{0};
const void *destroyed[os_test_max_destroyed];
std::atomic<int> destroyed_count{0};
} // namespace

void os_test_fail_init_after(int n) noexcept
{
    init_countdown = n < 0 ? 0 : n;
}

bool os_test_init_fails() noexcept
{
    int left = init_countdown.load();
    while (left > 0) {
        if (init_countdown.compare_exchange_weak(left, left - 1))
            return left == 1;
    }
    return false;
}

void os_test_note_destroy(const void *lock) noexcept
{
    int at = destroyed_count.fetch_add(1);
    if (at < os_test_max_destroyed)
        destroyed[at] = lock;
}

int os_test_destroyed(const void **out, int max) noexcept
{
    int n = destroyed_count.load();
    if (n > os_test_max_destroyed)
        n = os_test_max_destroyed;
    for (int i = 0; i < n && i < max; ++i)
        out[i] = destroyed[i];
    return n;
}

void os_test_reset_destroyed() noexcept
{
    destroyed_count = 0;
}

} // namespace qmr
#endif
