// The record layouts callers depend on: sizes and offsets that other code
// reads by position, and that every header compiles in C as well (see
// headers_c.c).
#include <gtest/gtest.h>

#include <cstddef>

#include "zdaapi.h"

static_assert(sizeof(api_VVObj_t) == 1096, "volume records are 1096 bytes apart");
static_assert(offsetof(api_VVObj_t, wwnText) == 102, "the WWN text is at byte 102");
static_assert(sizeof(((api_VVObj_t*)nullptr)->wwnText) == API_WWN_TEXT_LEN, "WWN text size");
static_assert(sizeof(rm_target) == 1136, "targets are 1136 bytes apart");
static_assert(sizeof(rm_group_target) == 196, "group targets are 196 bytes apart");
static_assert(offsetof(rm_group_target, rm_target) == 0, "a group target opens with the target name");
static_assert(sizeof(api_rcopy_t) == 448, "the remote copy record is 448 bytes");
static_assert(offsetof(rm_config_base, rm_ID) == 34, "the number is a u16 at byte 34");
static_assert(sizeof(api_keyvalue_query_t) == 24, "the key-value query is 24 bytes");
static_assert(offsetof(api_keyvalue_query_t, objType) == 0 && offsetof(api_keyvalue_query_t, objId) == 4 &&
        offsetof(api_keyvalue_query_t, found) == 8,
    "type, object number, then the found count");
static_assert(sizeof(api_sets_t) == 16, "the sets list is 16 bytes");
static_assert(sizeof(api_name_t) == 32, "names are 32 characters");
static_assert(offsetof(api_Status_t, code) == 0, "the code comes first");
static_assert(sizeof(((api_set_t*)nullptr)->comment) == 257, "set comments hold 256 characters");
static_assert(sizeof(((api_groupsv_t*)nullptr)->comment) == 513, "snapshot comments hold 512 characters");
static_assert(sizeof(((api_evtparam_t*)nullptr)->addr) == 46, "event address field");
static_assert(sizeof(((api_evtparam_t*)nullptr)->inst_param) == 256, "event parameter field");
static_assert(sizeof(api_u64_t) == 8 && sizeof(time_t) == 8, "64-bit quantities");

extern "C" int zdaapi_headers_compile_as_c(void);

TEST(Layout, HeadersCompileAsC)
{
    EXPECT_EQ(zdaapi_headers_compile_as_c(), 1096);
}
