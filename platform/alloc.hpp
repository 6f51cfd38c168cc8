// The library's one allocator. Every allocation inside the library goes
// through these functions, so that a test build can make the N-th one fail
// and reach each out-of-memory path.
#pragma once

#include <cstddef>
#include <memory>

namespace qmr
{

void *mem_alloc(std::size_t size) noexcept;
void *mem_calloc(std::size_t count, std::size_t size) noexcept;
// As realloc: a null ptr makes a new block; size 0 keeps a one-byte block;
// on failure (null) the old block is left as it was. It serves as the
// Unicode library's realloc in test builds.
void *mem_realloc(void *ptr, std::size_t size) noexcept;
void mem_free(void *ptr) noexcept;

// Frees *slot when it is set and clears it: the rule for every owned pointer.
template <typename T> inline void mem_release(T *&slot) noexcept
{
    if (slot != nullptr) {
        mem_free(const_cast<void *>(static_cast<const void *>(slot)));
        slot = nullptr;
    }
}

struct MemDeleter {
    void operator()(void *p) const noexcept { mem_free(p); }
};
template <typename T> using MemPtr = std::unique_ptr<T, MemDeleter>;

#ifdef QMR_TESTING
// Test hook, per thread: the n-th allocation from now (1 = the next) fails,
// and so does every later one while `sticky` is set. 0 disarms the hook.
void test_fail_alloc_after(int n, bool sticky = false) noexcept;
// Allocations attempted in this thread since the counter was last reset.
long test_alloc_count() noexcept;
void test_reset_alloc_count() noexcept;
#endif

} // namespace qmr
