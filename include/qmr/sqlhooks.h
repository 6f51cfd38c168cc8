/* Hooks of the SQL-interface library that the context calls. The library
 * carries weak defaults; a host program that links the real SQL-interface
 * library gets that library's definitions instead. */
#ifndef QMR_SQLHOOKS_H
#define QMR_SQLHOOKS_H

#include "qmr/context.h"

QMR_BEGIN_DECLS

/* The OS area (slot 1) of root's thread, made when new; null on failure. */
QMR_API qmr_osarea_t *CheckAllOsInit(qmr_tcb_t *root) QMR_NOEXCEPT;
/* The global area (slot 2) of root's thread, made when new; null on failure. */
QMR_API qmr_globarea_t *CheckAllGlobInit(qmr_tcb_t *root) QMR_NOEXCEPT;
/* Checks that the caller's interface level is served: 0 when it is, else a
 * negative code. The default serves level 710, the only level there is. */
QMR_API int qmr_checkAPI(int level, int flag) QMR_NOEXCEPT;
/* Per-thread clean-up of the SQL-interface library, run at thread end before
 * the global area is freed when its cleanup_hook word is set. Default: clears
 * the word. */
QMR_API void _sqThreadCleanup(qmr_globarea_t *glob) QMR_NOEXCEPT;
/* Frees every entry of the global area's file table (entries made with
 * cl_ext_malloc) and leaves the table empty. */
QMR_API void _iqfremoveall(qmr_globarea_t *glob) QMR_NOEXCEPT;
/* Closes the OS area's trace file, if open, and clears it. */
QMR_API void close_sqdbgfile(qmr_osarea_t *os) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_SQLHOOKS_H */
