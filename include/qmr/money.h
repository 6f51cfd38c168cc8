/* Money and numeric conventions: the decimal point, thousands separators and
 * currency symbols of the thread's locale environment, taken from DBMONEY when
 * it is set and otherwise from the locale, and the DBMONEY-style text splitter. */
#ifndef QMR_MONEY_H
#define QMR_MONEY_H

#include "qmr/export.h"

QMR_BEGIN_DECLS

/* A numeric-conventions record (the C lconv shape with fixed arrays). Two of
 * them live in every locale environment: the local one and the default one. */
struct qmr_numconv;

/* Byte limit of each currency symbol; longer symbols are cut. */
#define QMR_MONEY_SYMBOL_MAX 28

/* Loads the money state of the calling thread's locale environment unless it
 * is loaded already (then it returns at once). Nothing is reported: fields
 * that come out invalid fall back to the defaults listed below, and an
 * environment that cannot be built is left alone.
 *
 * DBMONEY is read on every load. Unset or empty, it is replaced by the text
 * "$." in a locale whose name starts with "en_US" (the environment's flag
 * 0x800 then marks the built-in default); in any other locale the
 * conventions come from the locale, its currency symbol becoming the front
 * symbol when the locale puts it in front and the back symbol otherwise.
 *
 * A DBMONEY text (or the built-in one) is applied over the locale's
 * conventions and read left to right:
 * - front symbol: every character up to the first "." or ","; white space is
 *   stored as "*", other characters whole. The symbol holds at most 28 bytes;
 *   once it can take no more (28 bytes, or a multibyte character that would
 *   cross byte 28) it ends there and the next character, whatever it is,
 *   becomes the decimal point;
 * - decimal point: the "." or "," that ended the front symbol becomes both
 *   the decimal point and the monetary decimal point. A text without one
 *   keeps the locale's points;
 * - back symbol: all the rest of the text, white space skipped, further "."
 *   and "," included ("$$,," gives front "$$", point ",", back ","; and
 *   "ab.cd.ef" gives front "ab", point ".", back "cd.ef"). It keeps the
 *   characters that fit whole in 28 bytes and drops the rest of the text;
 * - the currency symbol of the conventions becomes the front symbol (which
 *   also marks the symbol as standing in front) and then, when there is one,
 *   the back symbol. A text with neither (a lone ".") leaves the locale's
 *   currency symbol and placement in the record; the masks print none;
 * - both thousands separators become "." when the point is "," and ","
 *   otherwise.
 * Examples: "DM," gives front "DM", point ",", separator "."; ".EUR" gives
 * no front symbol, point ".", back "EUR"; "," gives point ",", separator ".".
 *
 * The DBMONEY text applied is remembered in the environment. When memory for
 * that copy runs out, the text is still applied; only the remembered copy is
 * left empty, and the next load makes it again.
 *
 * Every load then checks each text field of the local conventions from its
 * first character (its length and display width in columns): an empty or
 * invalid decimal point becomes "." (length 1, width 1), an invalid thousands
 * separator or second decimal point becomes empty, an invalid sign "+" or
 * "-". A byte sequence that is not a character of the code set is taken one
 * byte at a time by the symbol scan, and the locale library's error cell is
 * left as the caller had it. Finally the default record is reset.
 *
 * The first load of an environment shared by several threads is guarded by
 * the process's locale-environment lock. */
QMR_API void rmoninit(void) QMR_NOEXCEPT;

/* Puts the money state of the calling thread's environment back to "not
 * loaded", so that the next rmoninit reads DBMONEY and the locale again. The
 * remembered DBMONEY copy is kept (a reload with the same text does not copy
 * it again). Not to be called while another thread uses the same environment. */
QMR_API void qmr_money_reset(void) QMR_NOEXCEPT;

/* Refills the local conventions of the calling thread's environment from the
 * locale's own (the C lconv of the locale), each text cut to its field and
 * then checked as rmoninit checks it. The second decimal point field receives
 * the locale's decimal point, which DBMONEY never changes. The currency
 * symbols and the load state are left alone. */
QMR_API void getdbmoney(void) QMR_NOEXCEPT;

/* Fills the default conventions of the calling thread's environment:
 * init_dflt_lconv_int on its default record. */
QMR_API void init_dflt_lconv(void) QMR_NOEXCEPT;

/* Fills *conv with the default values: points "." (length 1, width 1), no
 * thousands separators, grouping "3" (the character '3', kept so on purpose),
 * no currency symbol, signs "+" and "-", every digit count and position byte
 * 0, second decimal point ".". A null conv is ignored. */
QMR_API void init_dflt_lconv_int(struct qmr_numconv *conv) QMR_NOEXCEPT;

/* The monetary fraction-digit count of the locale's conventions after
 * rmoninit, 0..31, with anything above 31 (a locale that does not say gives
 * the C library's CHAR_MAX) answered as 32. Returns 0 when the environment
 * cannot be built. */
QMR_API int genlcscale(void) QMR_NOEXCEPT;

/* Byte lengths of the front and back currency symbols after rmoninit, 0..28;
 * 0 when the environment cannot be built. */
QMR_API int rfrontlen(void) QMR_NOEXCEPT;
QMR_API int rbacklen(void) QMR_NOEXCEPT;

/* The decimal point of the local conventions after rmoninit. Returns the
 * address of its bytes inside the environment and stores in *len (when len
 * is not null) the byte length of the character, 1..4. The bytes stay in
 * place as long as the environment lives and change when the money state is
 * loaded again. Returns null (and *len 0) when the environment cannot be
 * built. */
QMR_API const char *gdecimalpoint(int *len) QMR_NOEXCEPT;

/* Splits a DBMONEY-style value into a front and a back part, each copied
 * NUL-terminated into its buffer of the given size:
 * - with an "@", the text before the first "@" is the front (it may be
 *   empty) and the text after it the back (at least one byte);
 * - else, after a leading "//" (*double_slash = 1), the text up to the next
 *   "/" is the back (at least one byte) and the text from that "/" on is the
 *   front; without a further "/", all the rest is the back;
 * - else the whole value is the front.
 * *has_slash is 1 when the front contains "/" (not counting its first
 * character when *double_slash is set). Both buffers are emptied and both
 * flags cleared first; a null flag pointer is skipped. A part must fit with
 * its NUL in its buffer; a null buffer counts as size 0.
 * Returns: 0, or -1 for a null or empty value or a part that does not fit
 * (both buffers are then left empty and both flags 0). */
QMR_API int _gpdbenv(const char *value, char *back, int back_size, char *front, int front_size,
                     int *has_slash, int *double_slash) QMR_NOEXCEPT;

QMR_END_DECLS

#endif /* QMR_MONEY_H */
