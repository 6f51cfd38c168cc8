/* The whole public interface of the qmrgen runtime library. */
#ifndef QMR_QMR_H
#define QMR_QMR_H

#include "qmr/bigint.h"
#include "qmr/byteutil.h"
#include "qmr/clib.h"
#include "qmr/coll.h"
#include "qmr/context.h"
#include "qmr/date.h"
#include "qmr/datetime.h"
#include "qmr/decimal.h"
#include "qmr/env.h"
#include "qmr/errors.h"
#include "qmr/gl.h"
#include "qmr/hash.h"
#include "qmr/int8.h"
#include "qmr/money.h"
#include "qmr/os.h"
#include "qmr/sqlhooks.h"
#include "qmr/types.h"

#endif /* QMR_QMR_H */
