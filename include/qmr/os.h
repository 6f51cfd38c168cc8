/* The OS layer the library stands on: thread keys, mutexes, recursive mutexes
 * and conditions on POSIX threads, and plain file descriptors. Every function
 * returns 0 on success and -1 on failure unless it says otherwise. */
#ifndef QMR_OS_H
#define QMR_OS_H

#include <pthread.h>

#include "qmr/export.h"

QMR_BEGIN_DECLS

typedef pthread_key_t qmrOS_th_key_t;

/* A mutex record; `initialised` is 1 between Init and Destroy, so a record that
 * was never made is refused instead of being handed to the thread library. */
typedef struct qmrOS_mutex {
    pthread_mutex_t mutex;
    int initialised;
    int recursive;  /* 1 for a recursive mutex */
    int lock_class; /* the caller's class tag, kept for diagnostics */
} qmrOS_mutex_t;

typedef struct qmrOS_cond {
    pthread_cond_t cond;
    int initialised;
    const char *name; /* the caller's name for it, not copied */
} qmrOS_cond_t;

/* 1 once ThreadInit has set up the layer's thread functions. */
QMR_API extern int THR_FUNC_INIT;

/* Sets up the layer's thread functions and raises THR_FUNC_INIT. Idempotent. */
QMR_API int ThreadInit(void) QMR_NOEXCEPT;

/* Creates a thread key whose destructor runs at thread end for a non-null value. */
QMR_API int qmrOS_th_keycreate(qmrOS_th_key_t *key, void (*destructor)(void *)) QMR_NOEXCEPT;
/* Stores this thread's value of key in *out (null when unset). */
QMR_API int qmrOS_th_getspecific(qmrOS_th_key_t key, void **out) QMR_NOEXCEPT;
/* Sets this thread's value of key. */
QMR_API int qmrOS_th_setspecific(qmrOS_th_key_t key, const void *value) QMR_NOEXCEPT;
/* Runs make_keys, the caller's routine that creates its keys and locks, under
 * the layer's start-up lock so that two first calls cannot both run it; returns
 * its result (-1 for a null make_keys). */
QMR_API int qmrOS_th_Init_keys(int (*make_keys)(void)) QMR_NOEXCEPT;

/* Makes a mutex. shared: 0 for a process-private lock (the only kind offered;
 * anything else fails). lock_class: the caller's tag, kept for diagnostics. */
QMR_API int qmrOS_mutexInit(qmrOS_mutex_t *m, int shared, int lock_class) QMR_NOEXCEPT;
QMR_API int qmrOS_mutexDestroy(qmrOS_mutex_t *m) QMR_NOEXCEPT;
QMR_API int qmrOS_mutexLock(qmrOS_mutex_t *m) QMR_NOEXCEPT;
QMR_API int qmrOS_mutexUnLock(qmrOS_mutex_t *m) QMR_NOEXCEPT;
/* As above for a mutex that its owner may lock again. */
QMR_API int qmrOS_recursive_mutexInit(qmrOS_mutex_t *m, int shared, int lock_class) QMR_NOEXCEPT;
QMR_API int qmrOS_recursive_mutexDestroy(qmrOS_mutex_t *m) QMR_NOEXCEPT;
QMR_API int qmrOS_recursive_mutexLock(qmrOS_mutex_t *m) QMR_NOEXCEPT;
QMR_API int qmrOS_recursive_mutexUnLock(qmrOS_mutex_t *m) QMR_NOEXCEPT;
/* Makes a condition variable named name (the pointer is kept, not copied). */
QMR_API int qmrOS_condInit(qmrOS_cond_t *c, const char *name) QMR_NOEXCEPT;
QMR_API int qmrOS_condDestroy(qmrOS_cond_t *c) QMR_NOEXCEPT;

/* open(2) with close-on-exec: the descriptor, or -1. */
QMR_API int qmr_open(const char *path, int flags, int mode) QMR_NOEXCEPT;
/* read(2), retried on interruption: the bytes read (0 at end of file), or -1. */
QMR_API int qmr_read(int fd, void *buf, unsigned int count) QMR_NOEXCEPT;
/* lseek(2): the new offset, or -1. */
QMR_API long qmr_lseek(int fd, long offset, int whence) QMR_NOEXCEPT;
/* close(2): 0, or -1 (also for a negative descriptor). */
QMR_API int qmr_close(int fd) QMR_NOEXCEPT;
/* 0 when path names a regular file this process may read, else -1. */
QMR_API int _ofreadable(const char *path) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_OS_H */
