// The library's allocator: the C allocator, behind a per-thread failure hook
// in test builds.
#include "platform/alloc.hpp"

#include <cstdlib>

namespace qmr
{

#ifdef QMR_TESTING
namespace
{
thread_local int fail_countdown = 0;
thread_local bool fail_sticky = false;
thread_local long alloc_count = 0;

// True when this allocation is the one the test asked to fail.
bool should_fail() noexcept
{
    ++alloc_count;
    if (fail_countdown == 0)
        return false;
    if (fail_countdown > 1) {
        --fail_countdown;
        return false;
    }
    if (!fail_sticky)
        fail_countdown = 0;
    return true;
}
} // namespace

void test_fail_alloc_after(int n, bool sticky) noexcept
{
    fail_countdown = n < 0 ? 0 : n;
    fail_sticky = sticky;
}
long test_alloc_count() noexcept
{
    return alloc_count;
}
void test_reset_alloc_count() noexcept
{
    alloc_count = 0;
}
#define QMR_ALLOC_FAILS() should_fail()
#else
#define QMR_ALLOC_FAILS() false
#endif

void *mem_alloc(std::size_t size) noexcept
{
    if (QMR_ALLOC_FAILS())
        return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}

void *mem_calloc(std::size_t count, std::size_t size) noexcept
{
    if (QMR_ALLOC_FAILS())
        return nullptr;
    return std::calloc(count == 0 ? 1 : count, size == 0 ? 1 : size);
}

void *mem_realloc(void *ptr, std::size_t size) noexcept
{
    if (QMR_ALLOC_FAILS())
        return nullptr;
    return std::realloc(ptr, size == 0 ? 1 : size);
}

void mem_free(void *ptr) noexcept
{
    std::free(ptr);
}

} // namespace qmr
