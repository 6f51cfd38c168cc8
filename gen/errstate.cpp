// The per-thread error state and settings: thin exported shells that get the
// context and call their _tcb workers, which read the general area.
#include "gen/context.hpp"
#include "qmr/errors.h"

short ansidb = 0;

void gen_setansidb(int flag) noexcept
{
    ansidb = static_cast<short>(flag);
}

namespace
{
// The general area of a root, or null: workers tolerate a missing area (a
// root made by a sibling library for another slot has none).
qmr_genarea_t *gen_of(qmr_tcb_t *root) noexcept
{
    return root != nullptr ? root->gen : nullptr;
}
} // namespace

int get_toerrno_tcb(qmr_tcb_t *root) noexcept
{
    qmr_genarea_t *gen = gen_of(root);
    return gen != nullptr ? gen->toerrno : 0;
}

int set_toerrno_tcb(int code, qmr_tcb_t *root) noexcept
{
    if (qmr_genarea_t *gen = gen_of(root))
        gen->toerrno = code;
    return 0;
}

int get_glserror_tcb(qmr_tcb_t *root) noexcept
{
    qmr_genarea_t *gen = gen_of(root);
    return gen != nullptr ? gen->glserror : 0;
}

// Returns the code whether or not it could be kept, so that a caller can
// record and return a locale error in one step.
int set_glserror_tcb(int code, qmr_tcb_t *root) noexcept
{
    if (qmr_genarea_t *gen = gen_of(root))
        gen->glserror = code;
    return code;
}

int getgenerr_tcb(qmr_tcb_t *root) noexcept
{
    qmr_genarea_t *gen = gen_of(root);
    return gen != nullptr ? gen->generr : 0;
}

int gget_dbver_tcb(qmr_tcb_t *root) noexcept
{
    qmr_genarea_t *gen = gen_of(root);
    return gen != nullptr ? (gen->flags & qmr::genflag_dbver) : 0;
}

void gset_dbver_tcb(qmr_tcb_t *root) noexcept
{
    if (qmr_genarea_t *gen = gen_of(root))
        gen->flags |= qmr::genflag_dbver;
}

int qmrGEN_getFloatType_tcb(qmr_tcb_t *root) noexcept
{
    qmr_genarea_t *gen = gen_of(root);
    return gen != nullptr ? gen->float_type : -1;
}

void qmrGEN_setFloatType_tcb(int type, qmr_tcb_t *root) noexcept
{
    if (qmr_genarea_t *gen = gen_of(root))
        gen->float_type = type;
}

int get_toerrno(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? get_toerrno_tcb(root) : QMR_E_NOMEM;
}

int set_toerrno(int code) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? set_toerrno_tcb(code, root) : 0;
}

int get_glserror(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? get_glserror_tcb(root) : QMR_E_NOMEM;
}

int set_glserror(int code) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? set_glserror_tcb(code, root) : QMR_E_NOMEM;
}

int getgenerr(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? getgenerr_tcb(root) : QMR_E_NOMEM;
}

int gget_dbver(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? gget_dbver_tcb(root) : 0;
}

void gset_dbver(void) noexcept
{
    if (qmr_tcb_t *root = CheckAlltcbInit())
        gset_dbver_tcb(root);
}

int qmrGEN_getFloatType(void) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? qmrGEN_getFloatType_tcb(root) : -1;
}

void qmrGEN_setFloatType(int type) noexcept
{
    if (qmr_tcb_t *root = CheckAlltcbInit())
        qmrGEN_setFloatType_tcb(type, root);
}
