/* The locale library: the thread's locale environment (built once, from
 * CLIENT_LOCALE and its kin) and the gl_ operations on the characters,
 * classes, names and conventions of a locale. Every gl_ function takes the
 * locale handle first: the `locale` field of a built environment
 * (qmr_get_gl_locale_thread() once chkglsinit() returned 0).
 *
 * Locale names are ll_CC.codeset: a language of two or three letters, a
 * territory of two letters and a code set, e.g. en_US.8859-1, de_DE.utf8,
 * ja_JP.sjis. en_US.8859-1 (the default) and en_US.utf8 are built in; every
 * other name is served from the Unicode library's locale data. Code-set
 * spellings accepted (case, '-' and '_' ignored), with their registry numbers:
 *   8859-1, iso8859-1, latin1, 819 ............................ 819   (built in)
 *   utf8, utf-8, 57372 ..................................... 57372   (built in)
 *   8859-2 (912), 8859-5 (915), 8859-7 (813), 8859-9 (920), 8859-15 (923),
 *   cp1250 (1250), cp1251 (1251), cp1252 (1252), koi8-r (878), ascii (367),
 *   sjis (932), eucjp/ujis (5050), gb18030 (5488), big5 (950), euckr (970);
 *   the number itself is accepted as a spelling of each.
 *
 * Errors of the stepping and conversion functions go to the per-thread cell
 * _gl_ext_errno (never cleared by a success); its values:
 *   1 QMR_GLE_BADSEQ   bytes that are not a character of the code set
 *   2 QMR_GLE_TRUNC    a character cut short by the length given or by a NUL
 *   3 QMR_GLE_NOMEM    no memory
 *   9 QMR_GLE_INVAL    an invalid argument (null pointer, unknown selector,
 *                      item or century letter, malformed locale name)
 *  12 QMR_GLE_NOLOCALE a null locale handle
 *  14 QMR_GLE_NOROOM   the output does not fit in the room given
 *  27, 30, 31          bad day, bad month, bad year (gl_getcenturyloc)
 * No function reads past a NUL or past the length it is given. */
#ifndef QMR_GL_H
#define QMR_GL_H

#include <locale.h>
#include <stddef.h>

#include "qmr/context.h"
#include "qmr/export.h"

QMR_BEGIN_DECLS

enum qmr_gl_errno {
    QMR_GLE_BADSEQ = 1,
    QMR_GLE_TRUNC = 2,
    QMR_GLE_NOMEM = 3,
    QMR_GLE_INVAL = 9,
    QMR_GLE_NOLOCALE = 12,
    QMR_GLE_NOROOM = 14,
    QMR_GLE_BADDAY = 27,
    QMR_GLE_BADMONTH = 30,
    QMR_GLE_BADYEAR = 31
};

/* The calling thread's locale error cell. */
QMR_API int *qmr_gl_errno_location(void) QMR_NOEXCEPT;
#define _gl_ext_errno (*qmr_gl_errno_location())

/* The environment ------------------------------------------------------------
 *
 * An environment is resolved from these variables, read through idx_ggetenv
 * when it is built:
 *   CLIENT_LOCALE  the client locale (unset or empty: en_US.8859-1);
 *   DB_LOCALE      the database locale (unset: the client locale);
 *   SERVER_LOCALE  the server locale (unset: en_US.8859-1);
 *   DBNLS          when set to 1, 2 or 3, the category variables LC_ALL, then
 *                  LC_CTYPE, LC_COLLATE, LC_NUMERIC, LC_MONETARY, LC_TIME and
 *                  LC_MESSAGES, take a category from another locale of the
 *                  same code set ("C", "POSIX" and "C.<codeset>" leave the
 *                  category to the client locale). Unset, they are not read,
 *                  since they then belong to the host's C library.
 * The database and server locales are checked (name and code set) and kept
 * by name; the client locale and the categories are loaded. */

/* Builds the calling thread's environment (the one CheckGlsEnv gives) on the
 * first call; later calls only look at a flag and never allocate.
 * Returns: 0, or (also stored with set_glserror)
 *   -23110 a malformed name (not ll_CC.codeset, longer than 39 bytes);
 *   -23104 a code set that is not in the list above, or that the Unicode
 *          library cannot convert;
 *   -23101 a language and territory without locale data, a language whose
 *          month or day names the code set cannot write (ru_RU.8859-1), or a
 *          category taken from a locale of another code set;
 *   -23108 no memory for the locale structures.
 * A failed build leaves the environment unbuilt; the next call tries again. */
QMR_API int chkglsinit(void) QMR_NOEXCEPT;

/* A new, unbuilt environment for the client locale `client_locale` (null: the
 * CLIENT_LOCALE variable, as the default environment). Make it a thread's
 * with SetGlsEnv; that thread's first chkglsinit builds it and reports the
 * errors above. *status (may be null) gets 0, -23110 for a name longer than
 * 39 bytes, or -23108 when memory runs out (null returned then). */
QMR_API qmr_glsenv_t *qmr_glsenv_create(const char *client_locale, int *status) QMR_NOEXCEPT;
/* Frees an environment made by qmr_glsenv_create, with what it owns. The
 * calling thread goes back to the default environment if it used env; other
 * threads must not use it any more. Null and the default environment are
 * ignored. */
QMR_API void qmr_glsenv_free(qmr_glsenv_t *env) QMR_NOEXCEPT;

/* Characters -------------------------------------------------------------------
 * s points at a character with n bytes available (n is also bounded by the
 * first NUL). Invalid bytes set QMR_GLE_BADSEQ, a cut-short character
 * QMR_GLE_TRUNC, a null handle QMR_GLE_NOLOCALE. */

/* Byte length (1..4) of the character at s; 0 when n <= 0 or *s is NUL;
 * -1 for an invalid or truncated sequence. */
QMR_API int gl_full_mblen(void *locale, const char *s, int n) QMR_NOEXCEPT;
/* The character after the one at s; s itself when n <= 0 or *s is NUL (the
 * end); null for an invalid or truncated sequence. */
QMR_API const char *gl_full_mbsnext(void *locale, const char *s, int n) QMR_NOEXCEPT;
/* The start of the character that ends at s, in the string that starts at
 * start; null when s is start or the bytes before s do not end a valid
 * character. Multibyte code sets other than UTF-8 rescan from start: linear. */
QMR_API const char *gl_full_mbsprev(void *locale, const char *start, const char *s) QMR_NOEXCEPT;
/* Bytes taken by the first `count` characters of s within n bytes (fewer
 * characters: the bytes up to the end); -1 for an invalid sequence. */
QMR_API int gl_full_charoffset(void *locale, const char *s, int n, int count) QMR_NOEXCEPT;
/* Number of characters of s up to its NUL or n bytes (n < 0: up to the NUL);
 * -1 for an invalid sequence. */
QMR_API int gl_mbsntslen(void *locale, const char *s, int n) QMR_NOEXCEPT;
/* Copies the whole characters of src that fit in n bytes (stopping at its
 * NUL) to dst and ends dst with a NUL: dst needs n + 1 bytes. src is read
 * up to the end of the first character that does not fit. Returns dst; null
 * for an invalid sequence (dst then holds the characters before it). */
QMR_API char *gl_mbsncpy(void *locale, char *dst, const char *src, int n) QMR_NOEXCEPT;
/* Appends the whole characters of src to the NUL-terminated dst as long as
 * the result and its NUL fit in `room` bytes (the size of dst). Returns dst;
 * null for an invalid sequence in src (dst keeps what was appended before
 * it) or when dst has no NUL within room (QMR_GLE_NOROOM). */
QMR_API char *gl_full_mbscat(void *locale, char *dst, const char *src, int room) QMR_NOEXCEPT;
/* The first occurrence in the NUL-terminated s of the character at ch; null
 * when there is none, or (with the cell set) when s or ch is invalid. */
QMR_API const char *gl_full_mbschr(void *locale, const char *s, const char *ch) QMR_NOEXCEPT;
/* Compares two NUL-terminated strings character by character by wide value:
 * -1, 0 or 1. In Latin-1 and UTF-8 that is the order of the unsigned bytes,
 * which is what is compared (invalid bytes are not reported); in the other
 * code sets, from an invalid sequence on (cell set) the rest is compared as
 * unsigned bytes. */
QMR_API int gl_full_mbscmp(void *locale, const char *a, const char *b) QMR_NOEXCEPT;
/* Display columns of the character at s: 2 for East Asian wide and
 * full-width characters, 0 for controls, combining marks and format
 * characters, else 1; 0 when n <= 0 or *s is NUL; -1 invalid. */
QMR_API int gl_mbwidth(void *locale, const char *s, int n) QMR_NOEXCEPT;

/* Wide characters: a wide value is the character's Unicode scalar value. */

/* As gl_full_mblen, also storing the wide value in *wc (when wc is not null;
 * 0 for the NUL). */
QMR_API int gl_mbtowc(void *locale, wchar_t *wc, const char *s, int n) QMR_NOEXCEPT;
/* Converts the NUL-terminated src into at most `max` wide values (a NUL
 * added when room is left); dst may be null to count. Returns the number of
 * characters converted (without the NUL), -1 for an invalid sequence. */
QMR_API int gl_mbstowcs(void *locale, wchar_t *dst, const char *src, int max) QMR_NOEXCEPT;
/* Writes the character wc in the code set at s (room for 4 bytes): its byte
 * length, or -1 when the code set has no such character (QMR_GLE_BADSEQ). */
QMR_API int gl_wctomb(void *locale, char *s, wchar_t wc) QMR_NOEXCEPT;

/* Character classes ------------------------------------------------------------
 * Bits of the single-byte class table (qmr_gl_ctype_table) and of the
 * classification: */
#define QMR_GLCT_UPPER  0x0001 /* upper-case letter (Lu) */
#define QMR_GLCT_LOWER  0x0002 /* lower-case letter (Ll) */
#define QMR_GLCT_DIGIT  0x0004 /* '0'..'9' only */
#define QMR_GLCT_SPACE  0x0008 /* white space: TAB..CR, NEL and the space separators */
#define QMR_GLCT_PUNCT  0x0010 /* graphic, neither letter nor digit */
#define QMR_GLCT_CNTRL  0x0020 /* control (Cc) */
#define QMR_GLCT_PRINT  0x0040 /* not a control, surrogate or unassigned */
#define QMR_GLCT_GRAPH  0x0080 /* printable and not white space */
#define QMR_GLCT_XDIGIT 0x0100 /* 0-9, A-F, a-f */
#define QMR_GLCT_ALPHA  0x0200 /* letter (L*) */
#define QMR_GLCT_BLANK  0x0400 /* TAB and the space separators (Zs) */
/* Class selectors of _gl_im_ismctype and _gl_im_iswctype (selectors, not
 * masks): 1 upper, 2 lower, 3 alpha, 4 digit, 5 xdigit, 6 punct, 7 cntrl,
 * 8 and 16 white space, 9 print, 10 graph, 12 letter or digit, 1024 blank. */

/* 1 when the character at s (n bytes) is in class `cls`, else 0. An invalid
 * character or an unknown selector gives 0 and sets the cell. */
QMR_API int _gl_im_ismctype(void *locale, const char *s, int n, int cls) QMR_NOEXCEPT;
/* The same for a wide value. */
QMR_API int _gl_im_iswctype(void *locale, wchar_t wc, int cls) QMR_NOEXCEPT;
/* The locale's 256-entry class table (bits above) when its code set is single
 * byte, else null. */
QMR_API const unsigned short *qmr_gl_ctype_table(void *locale) QMR_NOEXCEPT;

/* Writes the lower-case (upper-case) form of src, up to its NUL or n bytes (n
 * < 0: up to the NUL), into dst of `room` bytes and ends it with a NUL. A
 * character whose mapped form the code set lacks is copied as it is. Returns
 * the bytes written without the NUL; -1 for an invalid sequence or when dst
 * is too small (QMR_GLE_NOROOM). dst may be src when the code set is single
 * byte. */
QMR_API int _gl_im_tomlower(void *locale, char *dst, int room, const char *src, int n) QMR_NOEXCEPT;
QMR_API int _gl_im_tomupper(void *locale, char *dst, int room, const char *src, int n) QMR_NOEXCEPT;
/* Simple case mapping of a wide value (itself when it has none). */
QMR_API wchar_t _gl_im_towlower(void *locale, wchar_t wc) QMR_NOEXCEPT;
QMR_API wchar_t _gl_im_towupper(void *locale, wchar_t wc) QMR_NOEXCEPT;

/* Names and conventions --------------------------------------------------------- */

/* The locale's numeric and monetary conventions as the C library's struct
 * lconv; the strings belong to the locale and live as long as the process.
 * Null for a null handle. */
QMR_API const struct lconv *gl_localeconv(void *locale) QMR_NOEXCEPT;

/* Items of gl_nl_langinfo. */
#define QMR_GLI_ABDAY_1   1  /* abbreviated day names, Sunday .. Saturday: 1..7 */
#define QMR_GLI_DAY_1     8  /* full day names: 8..14 */
#define QMR_GLI_ABMON_1   15 /* abbreviated month names, January ..: 15..26 */
#define QMR_GLI_MON_1     27 /* full month names: 27..38 */
#define QMR_GLI_RADIXCHAR 50 /* decimal point */
#define QMR_GLI_THOUSEP   51 /* thousands separator */
#define QMR_GLI_CODESET   52 /* code set name, e.g. "8859-1", "utf8" */
#define QMR_GLI_CRNCYSTR  53 /* currency symbol */
#define QMR_GLI_LOCALE    54 /* the locale's name */
#define QMR_GLI_ERA       66 /* era strings: "" (no era information held) */

/* The text of an item in the locale's code set, as the locale writes it
 * (names from the locale's format context, e.g. "März" in de_DE). An unknown
 * item gives "" and sets QMR_GLE_INVAL; a null handle gives "". */
QMR_API const char *gl_nl_langinfo(void *locale, int item) QMR_NOEXCEPT;

/* The message directory of the locale name `name` (null: the locale's own
 * name): the language and territory lower-cased, '/', and the code set's
 * registry number in four lower-case hexadecimal digits: en_US.8859-1 gives
 * "en_us/0333", ja_JP.utf8 "ja_jp/e01c". Writes it with its NUL into out of
 * `room` bytes; returns 0, or -1 with the cell set (QMR_GLE_INVAL for a
 * malformed name or unknown code set, QMR_GLE_NOROOM). */
QMR_API int gl_lc_spec2msg_dname(void *locale, const char *name, char *out, int room) QMR_NOEXCEPT;

/* The century (0..99) of the two-digit year `year2` dated month/day under the
 * rule `letter`, against today's local date:
 *   'R' today's century;
 *   'C' the year closest to today's year (at 50 years either way, the past
 *       one when month/day falls after today's month/day or on it, else the
 *       future one: the closer date);
 *   'F' the nearest such date on or after today;
 *   'P' the nearest such date on or before today.
 * February 29 is accepted for any year here (the century is not known yet).
 * `daterec` is the environment's date-record value, kept for era calendars
 * and not used by the Gregorian rules. The locale handle may be null.
 * Returns -1 with the cell set: 30 month outside 1..12, 31 year2 outside
 * 0..99, 27 day outside the month, 9 another letter. */
QMR_API int gl_getcenturyloc(void *locale, int month, int day, int year2, int letter,
                             int daterec) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_GL_H */
