// The library's environment: values set with gputenv in front of the process
// environment, and per-index caches of lookups whose hit path is one atomic
// load, so that hot paths can ask for a variable on every call.
#include "qmr/env.h"

#include "platform/alloc.hpp"
#include "platform/env_slots.hpp"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace
{

// Every string handed out here is immortal: a value that gputenv replaces
// stays allocated, reachable from `names`, until the process ends, so a
// pointer that a caller or another thread still holds never dangles. Each name
// keeps one copy per distinct value it has had, so setting a value seen before
// allocates nothing: memory grows with distinct values, not with calls.
struct ValueRec {
    ValueRec *next;
    // The NUL-terminated text follows the record in the same block.
    char *text() noexcept { return reinterpret_cast<char *>(this + 1); }
};

struct NameRec {
    NameRec *next;
    ValueRec *values;    // every value this name has had, newest first
    const char *overlay; // the gputenv value, or null when none is set
    // The NUL-terminated name follows the record in the same block.
    const char *name() const noexcept { return reinterpret_cast<const char *>(this + 1); }
};

// The answer a slot gives for a variable that was not set.
constexpr char absent_marker = '\0';

struct Slot {
    // Null until the first lookup; then the value, or &absent_marker.
    std::atomic<const char *> answer{nullptr};
    // The name whose lookup filled the slot; guarded by EnvState::lock.
    const NameRec *owner = nullptr;
};

struct EnvState {
    std::mutex lock;
    NameRec *names = nullptr; // guarded by lock
    // Set by the first gputenv that stores a value: until then an uncached
    // lookup goes straight to the process environment without locking.
    std::atomic<bool> overlay_used{false};
    Slot slots[QMR_ENV_CACHE_SLOTS];
};

// Constant-initialised, so a lookup from another static constructor finds it
// ready. Never freed: everything stays reachable from here until exit.
constinit EnvState state;

char *as_result(const char *answer) noexcept
{
    return answer == &absent_marker ? nullptr : const_cast<char *>(answer);
}

NameRec *find_name(const char *name) noexcept
{
    for (NameRec *rec = state.names; rec != nullptr; rec = rec->next)
        if (std::strcmp(rec->name(), name) == 0)
            return rec;
    return nullptr;
}

// A record for name, not yet linked into `names`.
NameRec *new_name(const char *name) noexcept
{
    std::size_t size = std::strlen(name) + 1;
    auto *rec = static_cast<NameRec *>(qmr::mem_alloc(sizeof(NameRec) + size));
    if (rec == nullptr)
        return nullptr;
    rec->next = nullptr;
    rec->values = nullptr;
    rec->overlay = nullptr;
    std::memcpy(const_cast<char *>(rec->name()), name, size);
    return rec;
}

void link_name(NameRec *rec) noexcept
{
    rec->next = state.names;
    state.names = rec;
}

// rec's copy of text, made on first use; null when memory runs out.
const char *intern_value(NameRec *rec, const char *text) noexcept
{
    for (ValueRec *v = rec->values; v != nullptr; v = v->next)
        if (std::strcmp(v->text(), text) == 0)
            return v->text();
    std::size_t size = std::strlen(text) + 1;
    auto *v = static_cast<ValueRec *>(qmr::mem_alloc(sizeof(ValueRec) + size));
    if (v == nullptr)
        return nullptr;
    std::memcpy(v->text(), text, size);
    v->next = rec->values;
    rec->values = v;
    return v->text();
}

// Drops the cached answers of rec's name; the next lookup refills them.
void forget_cached(const NameRec *rec) noexcept
{
    for (Slot &slot : state.slots)
        if (slot.owner == rec)
            slot.answer.store(nullptr, std::memory_order_release);
}

char *lookup_uncached(const char *name) noexcept
{
    if (state.overlay_used.load(std::memory_order_acquire)) {
        std::lock_guard guard(state.lock);
        const NameRec *rec = find_name(name);
        if (rec != nullptr && rec->overlay != nullptr)
            return const_cast<char *>(rec->overlay);
    }
    // The process environment's own pointer: valid as long as it stays unchanged.
    return std::getenv(name);
}

// The slow path of a cached lookup: resolve name and publish the answer. When
// memory runs out the answer is returned uncached, and a later call retries.
char *fill_slot(Slot &slot, const char *name) noexcept
{
    std::lock_guard guard(state.lock);
    // Another thread may have filled the slot while this one waited.
    if (const char *answer = slot.answer.load(std::memory_order_relaxed))
        return as_result(answer);
    NameRec *rec = find_name(name);
    if (rec == nullptr) {
        // The record owns the slot (so that gputenv can find it) and the copy.
        rec = new_name(name);
        if (rec == nullptr)
            return std::getenv(name);
        link_name(rec);
    }
    const char *answer = rec->overlay;
    if (answer == nullptr) {
        const char *env = std::getenv(name);
        answer = env == nullptr ? &absent_marker : intern_value(rec, env);
        if (answer == nullptr)
            return const_cast<char *>(env);
    }
    slot.owner = rec;
    slot.answer.store(answer, std::memory_order_release);
    return as_result(answer);
}

} // namespace

// An index of the cache stands for one variable: the fast path does not look
// at name, so a second name asked for under a filled index gets the answer of
// the first.
char *idx_ggetenv(int index, const char *name) noexcept
{
    if (name == nullptr || *name == '\0')
        return nullptr;
    if (static_cast<unsigned>(index) >= QMR_ENV_CACHE_SLOTS)
        return lookup_uncached(name);
    Slot &slot = state.slots[index];
    if (const char *answer = slot.answer.load(std::memory_order_acquire))
        return as_result(answer);
    return fill_slot(slot, name);
}

// An empty name is accepted and ignored (returns 0): no lookup can see it.
int gputenv(const char *name, const char *value) noexcept
{
    if (name == nullptr)
        return -1;
    if (*name == '\0')
        return 0;
    std::lock_guard guard(state.lock);
    NameRec *rec = find_name(name);
    if (value == nullptr) {
        if (rec != nullptr) {
            rec->overlay = nullptr;
            forget_cached(rec);
        }
        return 0;
    }
    // Make the record before the value, and link it only once both exist, so
    // that running out of memory leaves everything as it was.
    qmr::MemPtr<NameRec> fresh;
    if (rec == nullptr) {
        fresh.reset(new_name(name));
        if (fresh == nullptr)
            return -1;
        rec = fresh.get();
    }
    const char *text = intern_value(rec, value);
    if (text == nullptr)
        return -1;
    if (fresh != nullptr)
        link_name(fresh.release());
    rec->overlay = text;
    state.overlay_used.store(true, std::memory_order_release);
    forget_cached(rec);
    return 0;
}

int DBNLSset(void) noexcept
{
    const char *v = idx_ggetenv(qmr::kEnvSlotDBNLS, "DBNLS");
    if (v == nullptr || v[0] < '1' || v[0] > '3' || v[1] != '\0')
        return 0;
    return v[0] - '0';
}
