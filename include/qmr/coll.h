/* The collection and row header shared with host programs (SET, MULTISET, LIST,
 * ROW). Only the record is declared so far; the operations come as built. */
#ifndef QMR_COLL_H
#define QMR_COLL_H

#include "qmr/export.h"

/* Flag bits of cl_flags. */
#define QMR_COLL_ISNULL       0x4       /* the value is null */
#define QMR_COLL_FORWARD_ONLY 0x40      /* a cursor may only step forward */
#define QMR_COLL_HASH_VALID   0x100     /* cl_hashvalue is valid */
#define QMR_COLL_OWNS_TYPES   0x1000000 /* the type descriptors belong to the header */
#define QMR_COLL_OWNS_DATA    0x2000000 /* cl_data belongs to the header */
#define QMR_COLL_DATA_OFFSET4 0x4000000 /* owned data block starts 4 bytes before cl_data */

/* 120 bytes, 8-aligned; the fields up to cl_typeinfo are fixed, the tail is
 * reserved for the collection machinery. */
typedef struct qmr_collection_t {
    unsigned int cl_marker;    /* 0xDBDBDBDB once initialised */
    int cl_handle;             /* handle number */
    void *cl_curs;             /* first open cursor */
    int cl_len;                /* logical length of the value in bytes */
    int cl_cardinality;        /* number of elements (ROW: top-level fields) */
    int cl_isfixed;            /* 1 when every element is cl_elsize bytes */
    int cl_elsize;             /* element size of fixed-size elements */
    unsigned int cl_flags;     /* QMR_COLL_... bits */
    void *cl_lastlog;          /* last change-log entry */
    void *cl_log;              /* first change-log entry */
    char *cl_data;             /* stored element data */
    unsigned int cl_hashvalue; /* hash of the elements (QMR_COLL_HASH_VALID) */
    int cl_datalen;            /* bytes at cl_data */
    short cl_typed;            /* nonzero: cl_typeinfo describes the value */
    int cl_typelen;            /* size of the type descriptor */
    void *cl_svr_typeinfo;     /* server type descriptor */
    void *cl_typeinfo;         /* client type descriptor */
    void *cl_reserved[3];      /* for the collection machinery */
} qmr_collection_t;

#endif /* QMR_COLL_H */
