// Test hooks of the OS layer: make the n-th key, lock or condition creation
// fail, and record the order in which locks are destroyed. Without QMR_TESTING
// they compile to nothing.
#pragma once

namespace qmr
{

#ifdef QMR_TESTING
// The n-th creation from now (1 = the next) fails; 0 disarms. Process-wide.
void os_test_fail_init_after(int n) noexcept;
bool os_test_init_fails() noexcept;
// Destroyed lock records, in order, up to os_test_max_destroyed entries.
inline constexpr int os_test_max_destroyed = 64;
void os_test_note_destroy(const void *lock) noexcept;
int os_test_destroyed(const void **out, int max) noexcept;
void os_test_reset_destroyed() noexcept;
#else
inline bool os_test_init_fails() noexcept
{
    return false;
}
inline void os_test_note_destroy(const void *) noexcept {}
#endif

} // namespace qmr
