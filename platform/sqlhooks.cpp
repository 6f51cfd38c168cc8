// Weak defaults of the SQL-interface library's hooks. They fill and clean the
// OS and global areas of the thread context; a host program's own library
// replaces them. Built with the context layer because they call back into it.
#include "qmr/sqlhooks.h"

#include <cstdio>

#include "platform/alloc.hpp"

namespace
{
constexpr int served_interface_level = 710;

template <typename Area> Area *area_of_slot(int slot) noexcept
{
    void *area = nullptr;
    int created = 0;
    if (get_thread_context(&created, slot, &area) != 0)
        return nullptr;
    return static_cast<Area *>(area);
}

// Frees the entries of every chain and the nodes, leaving all buckets empty.
void empty_table_freeing_entries(qmr_hashtab_t *table) noexcept
{
    for (int b = 0; b < table->nbuckets; ++b) {
        qmr_hashnode_t *node = table->buckets[b];
        while (node != nullptr) {
            qmr_hashnode_t *next = node->next;
            qmr::mem_free(node->entry);
            qmr::mem_free(node);
            node = next;
        }
        table->buckets[b] = nullptr;
    }
}
} // namespace

QMR_WEAK qmr_osarea_t *CheckAllOsInit(qmr_tcb_t *root) noexcept
{
    if (root == nullptr)
        return nullptr;
    return area_of_slot<qmr_osarea_t>(QMR_SLOT_OS);
}

QMR_WEAK qmr_globarea_t *CheckAllGlobInit(qmr_tcb_t *root) noexcept
{
    if (root == nullptr)
        return nullptr;
    return area_of_slot<qmr_globarea_t>(QMR_SLOT_GLOB);
}

QMR_WEAK int qmr_checkAPI(int level, int flag) noexcept
{
    (void)flag;
    return level == served_interface_level ? 0 : -1;
}

QMR_WEAK void _sqThreadCleanup(qmr_globarea_t *glob) noexcept
{
    if (glob != nullptr)
        glob->cleanup_hook = 0;
}

QMR_WEAK void _iqfremoveall(qmr_globarea_t *glob) noexcept
{
    if (glob != nullptr && glob->file_table != nullptr)
        empty_table_freeing_entries(glob->file_table);
}

QMR_WEAK void close_sqdbgfile(qmr_osarea_t *os) noexcept
{
    if (os == nullptr || os->debug_file == nullptr)
        return;
    std::fclose(static_cast<std::FILE *>(os->debug_file));
    os->debug_file = nullptr;
}
