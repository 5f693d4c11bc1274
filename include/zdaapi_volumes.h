/*
 * zdaapi_volumes.h - the array management library: CPGs, volumes (VVs),
 * volume queries and filters, removal, WWN texts and group snapshots.
 */
#ifndef ZDAAPI_VOLUMES_H
#define ZDAAPI_VOLUMES_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

    /* ---- CPGs (common provisioning groups) ------------------------------------ */

    typedef struct api_cpg
    {
        uint32_t id;
        char name[API_NAME_LEN];
        char domain[API_NAME_LEN]; /* "" when the CPG has no domain */
        api_u64_t totalMiB;        /* capacity the CPG may grow to */
        api_u64_t usedMiB;         /* user and snapshot space in use */
        int raidType;              /* 1 RAID-0, 2 RAID-1, 3 RAID-5, 4 RAID-6 */
        int volumeCount;           /* volumes using it for user space */
    } api_cpg_t;

    /* Lists every CPG. 0 with *count records in *cpgs (NULL when none),
 * released with free_if_not_null. Int form of the semaphore. */
    int api_getCPGs(int* count, api_cpg_t** cpgs);

/* ---- the volume record --------------------------------------------------------- */

/* Volume types. */
#define API_VV_TYPE_INVALID 0
#define API_VV_TYPE_BASE 1
#define API_VV_TYPE_PHYSICAL_COPY 2
#define API_VV_TYPE_VIRTUAL_COPY 3
#define API_VV_TYPE_OTHER 4

/* Volume policy bits. */
#define VV_POLICY_STALE_SS_OK 0x00000001u /* snapshots may go stale */
#define VV_POLICY_ZERO_DETECT 0x00000002u
#define VV_POLICY_THIN 0x00000004u   /* thinly provisioned */
#define VV_POLICY_SYSTEM 0x20000000u /* a system volume */

/* Volume state bits. */
#define API_VV_STATE_NORMAL 0x1u
#define API_VV_STATE_COPYING 0x2u       /* a physical copy is being made */
#define API_VV_STATE_IN_RCOPY 0x4u      /* admitted to a remote copy group */
#define API_VV_STATE_COPY_INACTIVE 0x8u /* a physical copy left inactive once written */
#define API_VV_STATE_RESTORING 0x10u    /* the parent is being restored from this copy */

    /* One volume. The layout is fixed: records come back as a contiguous
 * array, 1096 bytes apart, and the WWN text is at byte 102. The WWN text
 * is the form api_wwnIntToString writes for (wwn_re, wwn). */
    typedef struct api_VVObj
    {
        uint32_t id;                    /*   0 volume number */
        int32_t type;                   /*   4 API_VV_TYPE_* */
        uint32_t policy;                /*   8 VV_POLICY_* */
        uint32_t baseId;                /*  12 id of the base volume (own id for a base) */
        uint32_t copyOfId;              /*  16 id of the parent of a copy (0 for a base) */
        uint32_t state;                 /*  20 API_VV_STATE_* */
        api_u64_t sizeMiB;              /*  24 virtual size */
        api_u64_t usedMiB;              /*  32 user space in use */
        api_u64_t snapUsedMiB;          /*  40 snapshot space in use */
        api_u64_t wwn;                  /*  48 low 64 bits of the WWN */
        api_u64_t wwn_re;               /*  56 high 64 bits of the WWN */
        time_t creationTime;            /*  64 seconds since the epoch */
        time_t curWhenSynced;           /*  72 last time a copy was synchronised, 0 never */
        uint32_t expirationTime;        /*  80 seconds since the epoch, 0 none */
        uint32_t retentionTime;         /*  84 seconds since the epoch, 0 none */
        uint32_t snapCount;             /*  88 number of virtual copies of this volume */
        uint8_t readOnly;               /*  92 1 for a read-only copy */
        uint8_t copyProgress;           /*  93 percent done of a physical copy */
        uint8_t reserved0[8];           /*  94 */
        char wwnText[API_WWN_TEXT_LEN]; /* 102 WWN text */
        char name[API_NAME_LEN];        /* 135 volume name */
        char usrCpgName[API_NAME_LEN];  /* 167 CPG of user space */
        char cpgName[API_NAME_LEN];     /* 199 CPG of snapshot space ("" none) */
        char domain[API_NAME_LEN];      /* 231 domain ("" none) */
        char baseName[API_NAME_LEN];    /* 263 name of the base volume */
        char copyOfName[API_NAME_LEN];  /* 295 name of the parent of a copy */
        char comment[512];              /* 327 */
        char reserved1[257];            /* 839 */
    } api_VVObj_t;

    /* Looks volumes up. With `name` (wwn NULL): the volume of that name. With
 * `wwn` (name NULL): the volume whose WWN text equals it (case-insensitive).
 * With both NULL: every volume in id order. `max` limits the number of
 * records (0: no limit). On success returns 0 with *count records in *vv;
 * a name or WWN that does not exist returns API_E_NOT_FOUND with *count 0
 * and *vv NULL. The list is released with free_if_not_null.
 * Int form of the semaphore. */
    int api_getVVs(const char* name, const char* wwn, int* count, api_VVObj_t** vv, int max);

/* ---- volume filters and chunked queries ---------------------------------------- */

/* Filter attributes and operators for api_getvv_filter_add. */
#define API_VVFILTER_ATTR_WWN 1  /* values are WWN texts */
#define API_VVFILTER_ATTR_NAME 2 /* values are volume names */
#define API_VVFILTER_OP_ANY 1    /* match any of the "|"-separated values */
/* Longest value list one filter entry takes. */
#define API_VVFILTER_MAX_VALUES 255

    typedef struct api_getvv_filter_entry
    {
        int attribute;                            /* API_VVFILTER_ATTR_* */
        int op;                                   /* API_VVFILTER_OP_* */
        char values[API_VVFILTER_MAX_VALUES + 1]; /* "|"-separated */
    } api_getvv_filter_entry_t;

    /* A volume filter. Declare it, initialise it with api_getvv_filter_init,
 * add entries, query, then release it with api_getvv_filter_free. Entries
 * with the same attribute widen the match (any of them); entries with
 * different attributes narrow it (all of them). */
    typedef struct _api_getvv_filter
    {
        int capacity;
        int count;
        api_getvv_filter_entry_t* entries;
    } _api_getvv_filter_t;
    typedef _api_getvv_filter_t api_getvv_filter_t;

    /* Prepares `filter` for up to `n` entries (n >= 1). 0 on success. */
    int api_getvv_filter_init(_api_getvv_filter_t* filter, int n);
    /* Adds one entry: attribute, operator and a "|"-separated list of at most
 * 255 characters (empty items are skipped). 0 on success; API_E_INVALID
 * for an unknown attribute or operator, a longer list or a full filter. */
    int api_getvv_filter_add(_api_getvv_filter_t* filter, int attribute, int op, const char* values);
    /* Releases the entries; the filter may be initialised again. */
    void api_getvv_filter_free(_api_getvv_filter_t* filter);

    /* The position of a chunked query. Zero it before the first call. */
    typedef struct api_getvv_cursor
    {
        uint32_t nextId; /* next volume id to look at */
        uint32_t done;   /* 1 when the query has returned everything */
        uint32_t reserved[2];
    } api_getvv_cursor_t;

/* Return every match in one answer. */
#define API_GETVV_ALL 1

    /* Queries volumes by filter (NULL or empty: every volume). `maxCount`
 * limits one answer (0: 256); with `flags` API_GETVV_ALL everything comes
 * in one answer. The cursor records where the next call goes on; it is
 * done when cursor->done is 1. On success returns 0 with *count records in
 * *list (NULL when none match: a query that matches nothing is not an
 * error). Volumes named by an exact filter come in the filter's order,
 * otherwise in id order. The list is released with free_if_not_null.
 * Int form of the semaphore. */
    int api_getVVs_chunk(api_getvv_cursor_t* cursor, int maxCount, const _api_getvv_filter_t* filter,
        int* count, api_VVObj_t** list, int flags);

/* ---- removal ------------------------------------------------------------------ */

/* Removal flags. */
#define API_REMOVEVV_WITH_COPIES 0x1u /* also remove the volumes' virtual copies */

    /* Removes `count` named volumes (and takes them out of their vvsets).
 * noWait 1 does not wait for background removal to end (the simulator
 * removes at once either way). Results: 0 all removed; API_E_BUSY (70) a
 * volume is busy and nothing was removed; API_E_PARTIAL_REMOVE (1119)
 * some were removed and some not; any other code: nothing was removed
 * (API_E_NOT_FOUND, API_E_IN_USE for a volume with copies or in a remote
 * copy group, API_E_ACCESS for a system volume, API_E_INVALID). The code
 * is that of the first volume that could not go. Int form of the
 * semaphore. */
    int api_removeVVs(_api_evtparam_t* event, api_name_t* names, int count, int noWait, int flags);

    /* ---- WWN texts ---------------------------------------------------------------- */

    /* Formats a WWN: 16 upper-case hex digits of wwn when wwn_re is 0, else 32
 * digits (wwn_re then wwn). buffer holds `size` bytes (33 is enough).
 * Returns 0, or API_E_INVALID when the buffer is too small. */
    int api_wwnIntToString(api_u64_t wwn_re, api_u64_t wwn, char* buffer, int size);

    /* Parses a WWN text of 16 or 32 hex digits (either case). 0 on success;
 * API_E_INVALID otherwise, with both outputs 0. Takes no semaphore. */
    int api_wwnStringToInt(const char* text, api_u64_t* wwn_re, api_u64_t* wwn);

/* ---- group snapshots ----------------------------------------------------------- */

/* Let the array choose the snapshots' ids. */
#define API_BASEID_ANY 0xFFFFFFFEu

    typedef struct api_groupsv_entry
    {
        char parentVolName[API_NAME_LEN];    /* in: volume to snapshot */
        char childVolName[API_NAME_LEN];     /* in: name of the snapshot */
        uint8_t readOnly;                    /* in: 1 for a read-only snapshot */
        char parentVolWWN[API_WWN_TEXT_LEN]; /* out */
        char childVolWWN[API_WWN_TEXT_LEN];  /* out */
    } api_groupsv_entry_t;

    typedef struct api_groupsv
    {
        dskid_t baseID;           /* id of the first snapshot (the next ones follow); API_BASEID_ANY */
        uint32_t expirationTime;  /* seconds from now, 0 none */
        uint32_t retentionTime;   /* seconds from now, 0 none */
        uint32_t extBlock;        /* reserved, 0 */
        char comment[513];        /* stored with each snapshot */
        uint32_t count;           /* entries in svs */
        api_groupsv_entry_t* svs; /* caller-owned */
    } api_groupsv_t;

    /* Makes one snapshot of each svs[i].parentVolName, named childVolName, all
 * at the same instant and all or nothing, and fills the WWNs. The parents
 * need snapshot space (a snap CPG). Fails with API_E_NOT_FOUND (a parent),
 * API_E_EXISTS (a child name or id), API_E_INVALID (names, times: retention
 * longer than expiration) or API_E_LIMIT. Status form of the semaphore. */
    api_Status_t api_createGroupSV(_api_evtparam_t* event, api_groupsv_t* groupsv);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_VOLUMES_H */
