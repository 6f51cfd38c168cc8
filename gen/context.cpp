// The thread context: the root block behind the context key, its areas made on
// first use, the entry CheckAlltcbInit with its fast path, and the thread-end
// destructor that frees it all.
#include "gen/context.hpp"

#include <cstddef>

#include "platform/alloc.hpp"
#include "qmr/os.h"
#include "qmr/sqlhooks.h"

namespace qmr
{
namespace
{

struct SlotShape {
    std::size_t size;
    std::ptrdiff_t back_pointer; // offset of the root pointer, -1 for none
};

constexpr SlotShape slot_shapes[] = {
    {sizeof(qmr_genarea), offsetof(qmr_genarea, root)},
    {sizeof(qmr_osarea_t), offsetof(qmr_osarea_t, root)},
    {sizeof(qmr_globarea_t), offsetof(qmr_globarea_t, root)},
    {QMR_LOCALEBLOCK_SIZE, -1},
    {sizeof(qmr_savearea), offsetof(qmr_savearea, root)},
};
static_assert(sizeof(qmr_osarea_t) == QMR_OSAREA_SIZE);
static_assert(sizeof(qmr_globarea_t) == QMR_GLOBAREA_SIZE);
static_assert(offsetof(qmr_osarea_t, root) == QMR_OSAREA_SIZE - sizeof(void *));
static_assert(offsetof(qmr_globarea_t, root) == QMR_GLOBAREA_SIZE - sizeof(void *));

void **slot_of(qmr_tcb_t *root, int slot) noexcept
{
    switch (slot) {
    case QMR_SLOT_GEN:
        return reinterpret_cast<void **>(&root->gen);
    case QMR_SLOT_OS:
        return reinterpret_cast<void **>(&root->os);
    case QMR_SLOT_GLOB:
        return reinterpret_cast<void **>(&root->glob);
    case QMR_SLOT_GLSENV:
        return reinterpret_cast<void **>(&root->glsenv);
    default:
        return reinterpret_cast<void **>(&root->save);
    }
}

} // namespace

// The key is only ever set in this file, which keeps the copy in step; the key
// stays the authority for everything else.
constinit thread_local qmr_tcb_t *cached_root __attribute__((tls_model("initial-exec"))) = nullptr;

namespace
{

void set_context_key(qmr_tcb_t *root) noexcept
{
    qmrOS_th_setspecific(process().context_key, root);
    cached_root = root;
}

qmr_tcb_t *current_root() noexcept
{
    void *value = nullptr;
    qmrOS_th_getspecific(process().context_key, &value);
    cached_root = static_cast<qmr_tcb_t *>(value);
    return cached_root;
}

// A sibling library may ask for a slot before anything else in the process
// has: the keys are made then. Without the context key (a failed start-up)
// no context can be kept.
bool context_key_ready() noexcept
{
    if (process().context_key_made.load(std::memory_order_acquire))
        return true;
    bool made = false;
    ensure_keys(&made);
    return process().context_key_made.load(std::memory_order_acquire);
}

// A zero-filled root, stored in the context key; null when either step fails.
qmr_tcb_t *make_root() noexcept
{
    auto *root = static_cast<qmr_tcb_t *>(mem_calloc(1, sizeof(qmr_tcb_t)));
    if (root == nullptr)
        return nullptr;
    if (qmrOS_th_setspecific(process().context_key, root) != 0) {
        mem_free(root);
        return nullptr;
    }
    cached_root = root;
    return root;
}

// A zero-filled area for slot, pointing back at root where the area has room.
void *make_area(qmr_tcb_t *root, int slot) noexcept
{
    const SlotShape &shape = slot_shapes[slot];
    void *area = mem_calloc(1, shape.size);
    if (area != nullptr && shape.back_pointer >= 0) {
        auto *at = static_cast<unsigned char *>(area) + shape.back_pointer;
        *reinterpret_cast<qmr_tcb_t **>(at) = root;
    }
    if (area != nullptr && slot == QMR_SLOT_GLSENV)
        root->glsenv_owned = 1;
    return area;
}

// Makes the missing areas in their fixed order; false at the first failure.
bool build_areas(qmr_tcb_t *root, bool made_keys, int api_result) noexcept
{
    if (root->gen == nullptr && gen_area_of(root, made_keys, api_result) == nullptr)
        return false;
    if (root->os == nullptr && CheckAllOsInit(root) == nullptr)
        return false;
    if (root->glob == nullptr && CheckAllGlobInit(root) == nullptr)
        return false;
    if (root->save == nullptr && CheckAllSaveAreaInit(root) == nullptr)
        return false;
    root->initialised = 1;
    return true;
}

// Drops a root this call made and could not complete: no partial context stays.
void discard_new_root(qmr_tcb_t *root) noexcept
{
    AllDestructor(root);
    set_context_key(nullptr);
}

} // namespace

int start_checks(bool *made_keys, int *api_result) noexcept
{
    *made_keys = false;
    *api_result = 0;
    if (THR_FUNC_INIT == 0 && ThreadInit() == -1)
        return -1;
    if (process().keys_created.load(std::memory_order_acquire) != 0)
        return 0;
    if (ensure_keys(made_keys) != 0)
        return -1;
    if (*made_keys)
        *api_result = checkGenApi();
    return 0;
}

qmr_genarea_t *gen_area_of(qmr_tcb_t *root, bool made_keys, int api_result) noexcept
{
    (void)root; // the area belongs to the calling thread, whose root this is
    void *area = nullptr;
    int created = 0;
    if (get_thread_context(&created, QMR_SLOT_GEN, &area) != 0)
        return nullptr;
    auto *gen = static_cast<qmr_genarea_t *>(area);
    if (created) {
        genfill(gen);
        if (made_keys)
            gen->generr = api_result;
    }
    return gen;
}

qmr_tcb_t *tcb_slow() noexcept
{
    bool made_keys = false;
    int api_result = 0;
    if (start_checks(&made_keys, &api_result) != 0)
        return nullptr;
    void *out = nullptr;
    int created = 0;
    if (get_thread_context(&created, QMR_SLOT_ROOT, &out) != 0)
        return nullptr;
    auto *root = static_cast<qmr_tcb_t *>(out);
    // kept on purpose: a root that a sibling library made for one slot is
    // handed back as it stands until it is initialised.
    if (!created && root->initialised == 0)
        return root;
    if (build_areas(root, made_keys, api_result))
        return root;
    if (created)
        discard_new_root(root);
    return nullptr;
}

} // namespace qmr

using namespace qmr;

int get_thread_context(int *created, int slot, void **out) noexcept
{
    if (created != nullptr)
        *created = 0;
    if (slot < QMR_SLOT_GEN || slot > QMR_SLOT_ROOT || out == nullptr)
        return 0;
    if (!context_key_ready())
        return -1;
    qmr_tcb_t *root = current_root();
    bool new_root = false;
    if (root == nullptr) {
        root = make_root();
        if (root == nullptr)
            return -1;
        new_root = true;
    }
    if (slot == QMR_SLOT_ROOT) {
        if (new_root && created != nullptr)
            *created = 1;
        *out = root;
        return 0;
    }
    void **at = slot_of(root, slot);
    if (*at == nullptr) {
        void *area = make_area(root, slot);
        if (area == nullptr)
            return -1;
        *at = area;
        if (created != nullptr)
            *created = 1;
    }
    *out = *at;
    return 0;
}

qmr_tcb_t *CheckAlltcbInit(void) noexcept
{
    qmr_tcb_t *root = tcb_fast();
    return root != nullptr ? root : tcb_slow();
}

qmr_genarea_t *CheckAllGenInit(qmr_tcb_t *root) noexcept
{
    bool made_keys = false;
    int api_result = 0;
    if (start_checks(&made_keys, &api_result) != 0)
        return nullptr;
    return gen_area_of(root, made_keys, api_result);
}

qmr_savearea_t *CheckAllSaveAreaInit(qmr_tcb_t *root) noexcept
{
    (void)root;
    bool made_keys = false;
    int api_result = 0;
    if (start_checks(&made_keys, &api_result) != 0)
        return nullptr;
    void *area = nullptr;
    if (get_thread_context(nullptr, QMR_SLOT_SAVE, &area) != 0)
        return nullptr;
    return static_cast<qmr_savearea_t *>(area); // made zero-filled
}

qmr_genarea_t *CheckGenInit(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? root->gen : nullptr;
}

qmr_savearea_t *CheckSaveAreaInit(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? root->save : nullptr;
}

void genfill(qmr_genarea_t *area) noexcept
{
    if (area == nullptr)
        return;
    area->msgfd = -1;
    area->second_minus1 = -1;
}

qmr_genarea_t *gentcb_alloc(void) noexcept
{
    auto *area = static_cast<qmr_genarea_t *>(mem_calloc(1, sizeof(qmr_genarea_t)));
    genfill(area);
    return area;
}

namespace
{

void free_glob_area(qmr_globarea_t *&glob) noexcept
{
    if (glob == nullptr)
        return;
    if (glob->cleanup_hook != 0)
        _sqThreadCleanup(glob);
    for (void *&buffer : glob->owned)
        mem_release(buffer);
    ghashremove(glob->table);
    glob->table = nullptr;
    _iqfremoveall(glob);
    ghashremove(glob->file_table);
    glob->file_table = nullptr;
    mem_release(glob);
}

void free_gen_area(qmr_genarea_t *&gen) noexcept
{
    if (gen == nullptr)
        return;
    for (void *&buffer : gen->owned)
        mem_release(buffer);
    if (gen->msgfd >= 0) {
        qmr_close(gen->msgfd);
        gen->msgfd = -1;
    }
    mem_release(gen);
}

void free_os_area(qmr_osarea_t *&os) noexcept
{
    if (os == nullptr)
        return;
    mem_release(os->owned_buffer);
    close_sqdbgfile(os);
    mem_release(os);
}

// The save area's destructor: its owned buffers, then the area itself.
void GlsenvSaveAreaDestructor(qmr_savearea_t *&save) noexcept
{
    if (save == nullptr)
        return;
    for (void *&buffer : save->owned)
        mem_release(buffer);
    mem_release(save);
}

} // namespace

void AllDestructor(void *context) noexcept
{
    auto *root = static_cast<qmr_tcb_t *>(context);
    if (root == nullptr)
        return;
    if (cached_root == root)
        cached_root = nullptr; // run in the root's own thread: at its end or by FreeAllTcbs
    free_glob_area(root->glob);
    free_gen_area(root->gen);
    free_os_area(root->os);
    GlsenvSaveAreaDestructor(root->save);
    mem_release(root->extra);
    if (root->glsenv_owned != 0) {
        glsenv_release_members(root->glsenv);
        mem_release(root->glsenv);
    }
    mem_free(root);
}

void FreeAllTcbs(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    if (root == nullptr)
        return;
    AllDestructor(root);
    // Cleared so that the key's destructor does not free the root again at
    // thread end, and the next call makes a fresh context.
    set_context_key(nullptr);
}
