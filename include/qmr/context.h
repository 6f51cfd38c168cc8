/* The per-thread context: a root block reached through one thread key, holding
 * the areas that this library and its sibling libraries fill on first use, the
 * process start-up (keys and locks), the per-thread error state and the thread's
 * locale environment. Exported functions get the context once (CheckAlltcbInit)
 * and hand it to their _tcb worker. */
#ifndef QMR_CONTEXT_H
#define QMR_CONTEXT_H

#include "qmr/export.h"
#include "qmr/hash.h"

QMR_BEGIN_DECLS

/* Sizes agreed with the sibling libraries that own the OS and global areas, and
 * the size of a locale block made on request for slot 3. */
#define QMR_OSAREA_SIZE      2904
#define QMR_GLOBAREA_SIZE    2312
#define QMR_LOCALEBLOCK_SIZE 1392

/* Slot numbers of get_thread_context; QMR_SLOT_ROOT means the root itself. */
enum qmr_slot {
    QMR_SLOT_GEN = 0,
    QMR_SLOT_OS = 1,
    QMR_SLOT_GLOB = 2,
    QMR_SLOT_GLSENV = 3,
    QMR_SLOT_SAVE = 4,
    QMR_SLOT_ROOT = 5
};

struct qmr_tcb;
typedef struct qmr_genarea qmr_genarea_t;   /* this library's general area */
typedef struct qmr_savearea qmr_savearea_t; /* the locale save area */
typedef struct qmr_glsenv qmr_glsenv_t;     /* a locale environment */

/* The OS layer's area: 2904 bytes, the root's address in its last pointer. */
typedef struct qmr_osarea {
    void *owned_buffer; /* freed at thread end */
    void *debug_file;   /* FILE * of the trace file; close_sqdbgfile closes it */
    char reserved[QMR_OSAREA_SIZE - 3 * sizeof(void *)];
    struct qmr_tcb *root; /* back-pointer */
} qmr_osarea_t;

/* The SQL-interface library's area: 2312 bytes, back-pointer last. */
#define QMR_GLOB_OWNED 4
typedef struct qmr_globarea {
    int cleanup_hook; /* nonzero: _sqThreadCleanup runs at thread end */
    int reserved_word;
    void *owned[QMR_GLOB_OWNED]; /* buffers freed at thread end */
    qmr_hashtab_t *table;        /* released with ghashremove at thread end */
    qmr_hashtab_t *file_table;   /* emptied by _iqfremoveall, then released */
    char reserved[QMR_GLOBAREA_SIZE - 8 - (QMR_GLOB_OWNED + 3) * sizeof(void *)];
    struct qmr_tcb *root; /* back-pointer */
} qmr_globarea_t;

/* The root block of a thread's context, zero-filled when made. */
typedef struct qmr_tcb {
    qmr_genarea_t *gen;   /* slot 0: general area, owned */
    qmr_osarea_t *os;     /* slot 1: OS area, owned */
    qmr_globarea_t *glob; /* slot 2: global area, owned */
    qmr_glsenv_t *glsenv; /* slot 3: the thread's locale environment, not owned */
    qmr_savearea_t *save; /* slot 4: locale save area, owned */
    void *extra;          /* set by sibling libraries, owned (freed at thread end) */
    short initialised;    /* 1 once slots 0, 1, 2 and 4 all exist */
    short glsenv_owned;   /* 1 while slot 3 holds a locale block made on request
                             for it; such a block is freed with the context */
} qmr_tcb_t;

/* The ANSI-mode switch: process-wide, set by the connection layer, read without
 * a lock by design. */
QMR_API extern short ansidb;
QMR_API void gen_setansidb(int flag) QMR_NOEXCEPT;

/* Context and start-up ------------------------------------------------------ */

/* Finds this thread's root (making it if absent) and, for slots 0..4, the slot's
 * area (making it if empty). *out gets the area, or the root for slot 5; *created
 * becomes 1 when this call made what it returns (a new root for slot 5). A slot
 * above 5 stores nothing and returns 0. Returns 0, or -1 when memory runs out
 * (nothing stored, the slot left empty). created may be null. */
QMR_API int get_thread_context(int *created, int slot, void **out) QMR_NOEXCEPT;

/* The entry to the context: makes the keys and locks on the first call in the
 * process, the root and its areas on the first call in a thread. Returns the
 * root, or null when it cannot be made. A root made by a single-slot request
 * and not yet initialised is returned as it stands. */
QMR_API qmr_tcb_t *CheckAlltcbInit(void) QMR_NOEXCEPT;
/* The general area of root's thread (made and filled when new), or null. */
QMR_API qmr_genarea_t *CheckAllGenInit(qmr_tcb_t *root) QMR_NOEXCEPT;
/* The save area of root's thread (made zero-filled when new), or null. */
QMR_API qmr_savearea_t *CheckAllSaveAreaInit(qmr_tcb_t *root) QMR_NOEXCEPT;
/* This thread's general area and save area through CheckAlltcbInit, or null. */
QMR_API qmr_genarea_t *CheckGenInit(void) QMR_NOEXCEPT;
QMR_API qmr_savearea_t *CheckSaveAreaInit(void) QMR_NOEXCEPT;
/* Sets a general area's message-file descriptor and its second -1 field to -1. */
QMR_API void genfill(qmr_genarea_t *area) QMR_NOEXCEPT;
/* A general area outside any context, filled by genfill; the caller frees it
 * with cl_ext_free. Null when memory runs out. */
QMR_API qmr_genarea_t *gentcb_alloc(void) QMR_NOEXCEPT;
/* The interface check of the library (level 710) against the SQL-interface
 * library: the result of qmr_checkAPI(710, 1). */
QMR_API int checkGenApi(void) QMR_NOEXCEPT;
/* Makes the context key, the process-wide locks and the locale key, stopping at
 * the first failure; marks the keys as made in both cases. 0 or -1. */
QMR_API int Init_keys(void) QMR_NOEXCEPT;
/* Destroys each lock made by Init_keys once, in the order made (the locale
 * environment lock before the locale start-up lock), then the one-time lock if
 * it was made, and marks the keys as not made; the next CheckAlltcbInit makes
 * them again. The thread keys themselves are kept. */
QMR_API void Destroy_keys(void) QMR_NOEXCEPT;
/* The context key's destructor, run at thread end: frees the global, general,
 * OS and save areas with what they own, the sixth pointer, then the root.
 * root must not be null. */
QMR_API void AllDestructor(void *root) QMR_NOEXCEPT;
/* Frees this thread's context now and clears the thread's key; the next call
 * into the library makes a new context. */
QMR_API void FreeAllTcbs(void) QMR_NOEXCEPT;

/* Locale environment of the thread ------------------------------------------ */

/* The thread's locale environment: the default one when only it exists or when
 * there is no context; otherwise slot 3, set to the default on first use. */
QMR_API qmr_glsenv_t *CheckGlsEnv(void) QMR_NOEXCEPT;
/* As CheckGlsEnv without counting environments; null without a context. */
QMR_API qmr_glsenv_t *qmr_get_glsenv_thread(void) QMR_NOEXCEPT;
/* The locale handle (first field) of the thread's environment, or null. */
QMR_API void *qmr_get_gl_locale_thread(void) QMR_NOEXCEPT;
/* Makes env this thread's locale environment (slot 3). */
QMR_API void SetGlsEnv(qmr_glsenv_t *env) QMR_NOEXCEPT;

/* Error state and settings (per thread) --------------------------------------
 * Each has a worker taking the root; the worker tolerates a root whose general
 * area is missing. The no-context results are those of the exported form. */

/* The operator error number; -406 without a context. */
QMR_API int get_toerrno(void) QMR_NOEXCEPT;
QMR_API int get_toerrno_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
/* Stores the operator error number; returns 0. */
QMR_API int set_toerrno(int code) QMR_NOEXCEPT;
QMR_API int set_toerrno_tcb(int code, qmr_tcb_t *root) QMR_NOEXCEPT;
/* The locale error number; -406 without a context. */
QMR_API int get_glserror(void) QMR_NOEXCEPT;
QMR_API int get_glserror_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
/* Stores the locale error number and returns it; -406 without a context. */
QMR_API int set_glserror(int code) QMR_NOEXCEPT;
QMR_API int set_glserror_tcb(int code, qmr_tcb_t *root) QMR_NOEXCEPT;
/* The general error: the interface check's result recorded when the first
 * thread's general area was made with the keys; 0 otherwise or if the area is
 * missing; -406 without a context. */
QMR_API int getgenerr(void) QMR_NOEXCEPT;
QMR_API int getgenerr_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
/* The database-version flag: 16 once set, else 0 (0 without a context). */
QMR_API int gget_dbver(void) QMR_NOEXCEPT;
QMR_API int gget_dbver_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
QMR_API void gset_dbver(void) QMR_NOEXCEPT;
QMR_API void gset_dbver_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
/* The float type kept for sibling libraries; -1 without a context or area. */
QMR_API int qmrGEN_getFloatType(void) QMR_NOEXCEPT;
QMR_API int qmrGEN_getFloatType_tcb(qmr_tcb_t *root) QMR_NOEXCEPT;
QMR_API void qmrGEN_setFloatType(int type) QMR_NOEXCEPT;
QMR_API void qmrGEN_setFloatType_tcb(int type, qmr_tcb_t *root) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_CONTEXT_H */
