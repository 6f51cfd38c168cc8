// Trivial baselines, compiled apart so the optimiser cannot fold them into
// the benchmark loops.
#pragma once

#include <cstddef>

namespace qmrbench
{

// Reads a pointer from a plain thread_local, through a call like the library's.
void *thread_local_read();
// A switch over a table of names, as a trivial type-name lookup would be.
const char *plain_name_lookup(int code);
// A 4-byte compare against the integer null, as a trivial null test would be.
int plain_int_isnull(const char *p);
// Counts the characters of UTF-8 text by the lengths their lead bytes give,
// without validating anything: a hand-written stepping loop.
int utf8_count_unchecked(const char *s, std::size_t n);
// Counts the bytes of text that are not UTF-8 continuation bytes, one byte at
// a time: a plain byte loop.
int byte_loop(const char *s, std::size_t n);

} // namespace qmrbench
