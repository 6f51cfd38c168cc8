// The layouts of the records shared with host programs: sizes, field offsets
// and alignments are fixed, so a change to any of them breaks the build here.
#include <cstddef>
#include <gtest/gtest.h>

#include "qmr/coll.h"
#include "qmr/datetime.h"
#include "qmr/int8.h"
#include "qmr/types.h"

static_assert(sizeof(dec_t) == 22 && alignof(dec_t) == 2);
static_assert(offsetof(dec_t, exponent) == 0 && offsetof(dec_t, sign) == 2);
static_assert(offsetof(dec_t, ndigits) == 4 && offsetof(dec_t, digits) == 6);

static_assert(sizeof(qmr_int8_t) == 12 && alignof(qmr_int8_t) == 4);
static_assert(offsetof(qmr_int8_t, data) == 0 && offsetof(qmr_int8_t, sign) == 8);

static_assert(sizeof(dtime_t) == 24 && sizeof(intrvl_t) == 24);
static_assert(offsetof(dtime_t, qualifier) == 0 && offsetof(dtime_t, value) == 2);
static_assert(offsetof(intrvl_t, qualifier) == 0 && offsetof(intrvl_t, value) == 2);

static_assert(sizeof(qmr_loc_t) == 112 && alignof(qmr_loc_t) <= 8);
static_assert(offsetof(qmr_loc_t, loc_indicator) == 4);

static_assert(sizeof(qmr_collection_t) == 120 && alignof(qmr_collection_t) == 8);
static_assert(offsetof(qmr_collection_t, cl_curs) == 8);
static_assert(offsetof(qmr_collection_t, cl_flags) == 32);
static_assert(offsetof(qmr_collection_t, cl_lastlog) == 40);
static_assert(offsetof(qmr_collection_t, cl_data) == 56);
static_assert(offsetof(qmr_collection_t, cl_typed) == 72);
static_assert(offsetof(qmr_collection_t, cl_typelen) == 76);
static_assert(offsetof(qmr_collection_t, cl_typeinfo) == 88);

namespace
{

// The sizes the catalogue reports agree with the records themselves.
TEST(RecordLayouts, CatalogueSizesMatchTheRecords)
{
    EXPECT_EQ(rtypmsize(QMR_C_DECIMAL, 0), static_cast<int>(sizeof(dec_t)));
    EXPECT_EQ(rtypmsize(QMR_C_INT8, 0), static_cast<int>(sizeof(qmr_int8_t)));
    EXPECT_EQ(rtypmsize(QMR_C_DTIME, 0), static_cast<int>(sizeof(dtime_t)));
    EXPECT_EQ(rtypmsize(QMR_C_INTRVL, 0), static_cast<int>(sizeof(intrvl_t)));
    EXPECT_EQ(rtypmsize(QMR_C_LOCATOR, 0), static_cast<int>(sizeof(qmr_loc_t)));
    EXPECT_EQ(rtypmsize(QMR_C_COLL, 0), static_cast<int>(sizeof(qmr_collection_t)));
}

} // namespace
