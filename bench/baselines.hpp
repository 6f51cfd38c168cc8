// Trivial baselines, compiled apart so the optimiser cannot fold them into
// the benchmark loops.
#pragma once

namespace qmrbench
{

// Reads a pointer from a plain thread_local, through a call like the library's.
void *thread_local_read();
// A switch over a table of names, as a trivial type-name lookup would be.
const char *plain_name_lookup(int code);
// A 4-byte compare against the integer null, as a trivial null test would be.
int plain_int_isnull(const char *p);

} // namespace qmrbench
