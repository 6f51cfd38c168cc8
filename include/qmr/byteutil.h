/* Byte and string helpers: loads and stores of the server's stored (big-endian)
 * numbers, blank-padded character fields, byte and string comparison, case
 * shifting and trailing-blank length. None needs the thread context. */
#ifndef QMR_BYTEUTIL_H
#define QMR_BYTEUTIL_H

#include "qmr/export.h"

QMR_BEGIN_DECLS

/* Signed 16-bit integer from 2 big-endian bytes. */
QMR_API int ldint(const char *p) QMR_NOEXCEPT;
/* Stores the low 16 bits of i as 2 big-endian bytes. */
QMR_API void stint(int i, char *p) QMR_NOEXCEPT;
/* Signed 32-bit integer from 4 big-endian bytes (widened to long). */
QMR_API long ldlong(const char *p) QMR_NOEXCEPT;
/* Stores the low 32 bits of l as 4 big-endian bytes. */
QMR_API void stlong(long l, char *p) QMR_NOEXCEPT;
/* IEEE double from 8 big-endian bytes; all bytes 0xFF load as that bit pattern. */
QMR_API double lddbl(const char *p) QMR_NOEXCEPT;
/* Stores an IEEE double as 8 big-endian bytes. */
QMR_API void stdbl(double d, char *p) QMR_NOEXCEPT;
/* IEEE single from 4 big-endian bytes, widened to double. */
QMR_API double ldfloat(const char *p) QMR_NOEXCEPT;
/* Narrows f to single precision and stores it as 4 big-endian bytes. */
QMR_API void stfloat(double f, char *p) QMR_NOEXCEPT;

/* Copies a blank-padded field of len bytes into to, drops trailing blanks and
 * NUL-terminates (to holds len + 1 bytes). A len of 0 or less gives "". */
QMR_API void ldchar(const char *from, int len, char *to) QMR_NOEXCEPT;
/* Copies the string from into a field of len bytes, blank-padding the rest;
 * no terminator is written, and a longer string is cut at len. */
QMR_API void stchr(const char *from, char *to, int len) QMR_NOEXCEPT;

/* Compares len bytes as unsigned: -1, 0 or 1. len of 0 or less gives 0. */
QMR_API int bycmpr(const char *a, const char *b, int len) QMR_NOEXCEPT;
/* Compares NUL-terminated strings as unsigned bytes: negative, 0 or positive. */
QMR_API int stcmpr(const char *a, const char *b) QMR_NOEXCEPT;
/* As stcmpr, with ASCII letters folded to lower case first. */
QMR_API int stcmpri(const char *a, const char *b) QMR_NOEXCEPT;
/* Upper-cases (rupshift) or lower-cases (rdownshift) the ASCII letters of s in
 * place; other bytes, multibyte characters included, are left as they are. A
 * null s is ignored. */
QMR_API void rupshift(char *s) QMR_NOEXCEPT;
QMR_API void rdownshift(char *s) QMR_NOEXCEPT;
/* The length of the first len bytes of s without trailing blanks (' ' only). */
QMR_API int qmr_byleng(const char *s, int len) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_BYTEUTIL_H */
