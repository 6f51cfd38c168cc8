// The string-keyed chained hash table: buckets chosen by a 16-bit Weinberger
// hash, nodes owned by the table, entries and their keys owned by the caller.
#include "qmr/hash.h"

#include "platform/alloc.hpp"
#include "qmr/byteutil.h"

#include <cstring>

namespace
{

// An entry's first field points to its key; read it without assuming the
// entry's type.
const char *key_of(const void *entry) noexcept
{
    const char *key;
    std::memcpy(&key, entry, sizeof key);
    return key;
}

bool same_key(const void *entry, const char *key) noexcept
{
    return stcmpr(key_of(entry), key) == 0;
}

qmr_hashnode_t **chain_of(qmr_hashtab_t *table, const char *key) noexcept
{
    return &table->buckets[hashpjw(key, table->nbuckets)];
}

} // namespace

qmr_hashtab_t *ghashcreat(int n) noexcept
{
    // n is checked before anything is allocated, so a bad size cannot leak.
    if (n < 1)
        return nullptr;
    qmr::MemPtr<qmr_hashtab_t> table(
        static_cast<qmr_hashtab_t *>(qmr::mem_alloc(sizeof(qmr_hashtab_t))));
    if (table == nullptr)
        return nullptr;
    table->nbuckets = n;
    table->buckets = static_cast<qmr_hashnode_t **>(
        qmr::mem_calloc(static_cast<std::size_t>(n), sizeof(qmr_hashnode_t *)));
    if (table->buckets == nullptr)
        return nullptr;
    return table.release();
}

// An entry whose key is null goes to bucket 0, where no lookup finds it;
// ghashremove still frees its node.
int ghashins(qmr_hashtab_t *table, void *entry) noexcept
{
    if (table == nullptr || entry == nullptr)
        return 0;
    auto *node = static_cast<qmr_hashnode_t *>(qmr::mem_alloc(sizeof(qmr_hashnode_t)));
    if (node == nullptr)
        return 0;
    qmr_hashnode_t **chain = chain_of(table, key_of(entry));
    node->entry = entry;
    node->next = *chain;
    *chain = node;
    return 1;
}

void *ghashlook(qmr_hashtab_t *table, const char *key) noexcept
{
    if (table == nullptr || key == nullptr)
        return nullptr;
    for (qmr_hashnode_t *node = *chain_of(table, key); node != nullptr; node = node->next)
        if (same_key(node->entry, key))
            return node->entry;
    return nullptr;
}

void *ghashdel(qmr_hashtab_t *table, const char *key) noexcept
{
    if (table == nullptr || key == nullptr)
        return nullptr;
    for (qmr_hashnode_t **link = chain_of(table, key); *link != nullptr; link = &(*link)->next) {
        qmr_hashnode_t *node = *link;
        if (same_key(node->entry, key)) {
            *link = node->next;
            void *entry = node->entry;
            qmr::mem_free(node);
            return entry;
        }
    }
    return nullptr;
}

void ghashremove(qmr_hashtab_t *table) noexcept
{
    if (table == nullptr)
        return;
    for (int i = 0; i < table->nbuckets; ++i) {
        qmr_hashnode_t *node = table->buckets[i];
        while (node != nullptr) {
            qmr_hashnode_t *next = node->next;
            qmr::mem_free(node);
            node = next;
        }
    }
    qmr::mem_release(table->buckets);
    qmr::mem_free(table);
}

// A null key hashes like the empty one, and n below 1 (no buckets) gives 0.
int hashpjw(const char *key, int n) noexcept
{
    if (key == nullptr || n < 1)
        return 0;
    unsigned h = 0;
    for (const auto *p = reinterpret_cast<const unsigned char *>(key); *p != '\0'; ++p) {
        h = ((h << 4) + *p) & 0xFFFFu;
        unsigned g = h & 0xF000u;
        if (g != 0)
            h ^= g ^ (g >> 8);
    }
    return static_cast<int>(h % static_cast<unsigned>(n));
}
