/* A minimal string-keyed chained hash table of caller-owned entries. An entry is
 * any record whose first field points to its NUL-terminated key; the table never
 * copies or frees entries or keys, only its own nodes. */
#ifndef QMR_HASH_H
#define QMR_HASH_H

#include "qmr/export.h"

QMR_BEGIN_DECLS

typedef struct qmr_hashnode {
    struct qmr_hashnode *next; /* next node of the chain */
    void *entry;               /* the caller's entry; its first field is its key */
} qmr_hashnode_t;

typedef struct qmr_hashtab {
    int nbuckets;             /* at least 1 */
    qmr_hashnode_t **buckets; /* nbuckets chain heads */
} qmr_hashtab_t;

/* A table of n empty buckets; null when n < 1 or memory runs out. */
QMR_API qmr_hashtab_t *ghashcreat(int n) QMR_NOEXCEPT;
/* Puts entry at the front of its key's chain (an equal key is not checked for:
 * the newer entry hides the older). Returns 1, or 0 for a null table or entry
 * or when no node can be allocated. */
QMR_API int ghashins(qmr_hashtab_t *table, void *entry) QMR_NOEXCEPT;
/* The first entry whose key equals key, or null (also for a null table/key). */
QMR_API void *ghashlook(qmr_hashtab_t *table, const char *key) QMR_NOEXCEPT;
/* Unlinks the first entry whose key equals key and returns it (the caller
 * disposes of it); null when there is none or the table is null. */
QMR_API void *ghashdel(qmr_hashtab_t *table, const char *key) QMR_NOEXCEPT;
/* Frees the nodes, the bucket array and the table, not the entries. Null is
 * ignored. */
QMR_API void ghashremove(qmr_hashtab_t *table) QMR_NOEXCEPT;
/* Bucket index of key for n buckets: a 16-bit Weinberger hash, mod n. */
QMR_API int hashpjw(const char *key, int n) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_HASH_H */
