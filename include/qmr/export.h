/* Export and linkage macros shared by every public header: QMR_API marks the
 * library's interface, QMR_NOEXCEPT keeps C++ declarations and definitions in
 * step, QMR_BEGIN_DECLS/QMR_END_DECLS give the headers C linkage in C++. */
#ifndef QMR_EXPORT_H
#define QMR_EXPORT_H

#if defined(QMR_BUILDING_LIBRARY)
#define QMR_API __attribute__((visibility("default")))
#else
#define QMR_API
#endif

/* A default that a host program's own sibling library may replace. */
#define QMR_WEAK __attribute__((weak))

#ifdef __cplusplus
#define QMR_BEGIN_DECLS extern "C" {
#define QMR_END_DECLS   }
#define QMR_NOEXCEPT    noexcept
#else
#define QMR_BEGIN_DECLS
#define QMR_END_DECLS
#define QMR_NOEXCEPT
#endif

#endif /* QMR_EXPORT_H */
