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

// A field of root's general area, or `missing` when there is no area: a root
// made by a sibling library for another slot has none, and workers tolerate it.
int read_gen(qmr_tcb_t *root, int qmr_genarea::*field, int missing) noexcept
{
    return root != nullptr && root->gen != nullptr ? root->gen->*field : missing;
}

void write_gen(qmr_tcb_t *root, int qmr_genarea::*field, int value) noexcept
{
    if (root != nullptr && root->gen != nullptr)
        root->gen->*field = value;
}

// The shape of every exported shell: the worker's result with a context, the
// stated neutral value without one.
template <typename Worker, typename... Args>
int with_context(int no_context, Worker worker, Args... args) noexcept
{
    qmr_tcb_t *root = CheckAlltcbInit();
    return root != nullptr ? worker(args..., root) : no_context;
}

} // namespace

int get_toerrno_tcb(qmr_tcb_t *root) noexcept
{
    return read_gen(root, &qmr_genarea::toerrno, 0);
}

int set_toerrno_tcb(int code, qmr_tcb_t *root) noexcept
{
    write_gen(root, &qmr_genarea::toerrno, code);
    return 0;
}

int get_glserror_tcb(qmr_tcb_t *root) noexcept
{
    return read_gen(root, &qmr_genarea::glserror, 0);
}

// Returns the code whether or not it could be kept, so that a caller can
// record and return a locale error in one step.
int set_glserror_tcb(int code, qmr_tcb_t *root) noexcept
{
    write_gen(root, &qmr_genarea::glserror, code);
    return code;
}

int getgenerr_tcb(qmr_tcb_t *root) noexcept
{
    return read_gen(root, &qmr_genarea::generr, 0);
}

int gget_dbver_tcb(qmr_tcb_t *root) noexcept
{
    return read_gen(root, &qmr_genarea::flags, 0) & qmr::genflag_dbver;
}

void gset_dbver_tcb(qmr_tcb_t *root) noexcept
{
    write_gen(root, &qmr_genarea::flags,
              read_gen(root, &qmr_genarea::flags, 0) | qmr::genflag_dbver);
}

int qmrGEN_getFloatType_tcb(qmr_tcb_t *root) noexcept
{
    return read_gen(root, &qmr_genarea::float_type, -1);
}

void qmrGEN_setFloatType_tcb(int type, qmr_tcb_t *root) noexcept
{
    write_gen(root, &qmr_genarea::float_type, type);
}

int get_toerrno(void) noexcept
{
    return with_context(QMR_E_NOMEM, get_toerrno_tcb);
}
int set_toerrno(int code) noexcept
{
    return with_context(0, set_toerrno_tcb, code);
}
int get_glserror(void) noexcept
{
    return with_context(QMR_E_NOMEM, get_glserror_tcb);
}
int set_glserror(int code) noexcept
{
    return with_context(QMR_E_NOMEM, set_glserror_tcb, code);
}
int getgenerr(void) noexcept
{
    return with_context(QMR_E_NOMEM, getgenerr_tcb);
}
int gget_dbver(void) noexcept
{
    return with_context(0, gget_dbver_tcb);
}
int qmrGEN_getFloatType(void) noexcept
{
    return with_context(-1, qmrGEN_getFloatType_tcb);
}

void gset_dbver(void) noexcept
{
    if (qmr_tcb_t *root = CheckAlltcbInit())
        gset_dbver_tcb(root);
}

void qmrGEN_setFloatType(int type) noexcept
{
    if (qmr_tcb_t *root = CheckAlltcbInit())
        qmrGEN_setFloatType_tcb(type, root);
}
