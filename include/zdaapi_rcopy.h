/*
 * zdaapi_rcopy.h - the array management library: remote copy records,
 * their states and the remote copy calls.
 *
 * api_getRCopy hands out a private snapshot of the whole remote copy
 * configuration; it stays valid after the call and is released whole with
 * api_freeRCopy. Strings are NUL-terminated.
 */
#ifndef ZDAAPI_RCOPY_H
#define ZDAAPI_RCOPY_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

    /* ---- enumerations ---------------------------------------------------------- */

    /* rm_group_vv_map.rm_status */
    enum
    {
        RM_GROUP_VV_NEW = 0,
        RM_GROUP_VV_SYNCING = 1,
        RM_GROUP_VV_SYNCED = 2,
        RM_GROUP_VV_UNSYNC = 3,
        RM_GROUP_VV_REMOTE = 4,
        RM_GROUP_VV_REMOTE_SYNCING = 5,
        RM_GROUP_VV_REMOTE_SYNCED = 6,
        RM_GROUP_VV_REMOTE_UNSYNC = 7,
        RM_GROUP_VV_STALE = 8,
        RM_GROUP_VV_REMOTE_STALE = 9,
        RM_GROUP_VV_LD_CHECKING = 10,
        RM_GROUP_VV_REMOTE_LD_CHECKING = 11,
        RM_GROUP_VV_NEW_NO_SYNC = 12,
        RM_GROUP_VV_NEW_SYNC = 13,
        RM_GROUP_VV_REPAIRING = 14,
        RM_GROUP_VV_REMOTE_REPAIRING = 15,
        RM_GROUP_VV_STOPPED = 153,
        RM_GROUP_VV_FAILSAFE = 154
    };

    /* rm_target.rm_status */
    enum
    {
        RM_TARGET_NEW = 0,
        RM_TARGET_READY = 1,
        RM_TARGET_RELEASE_UNSUPPORTED = 2,
        RM_TARGET_FAILING = 3,
        RM_TARGET_FAILED = 4,
        RM_TARGET_DISABLED = 153
    };

    /* rm_group_target.rm_mode */
    enum
    {
        RM_TARGET_MODE_SYNC = 1,
        RM_TARGET_MODE_ASYNC = 2,
        RM_TARGET_MODE_SEMISYNC = 4,
        RM_TARGET_MODE_PERIODIC = 8
    };

    /* rm_group.rm_dr_state */
    typedef enum rm_dr_state
    {
        RM_DR_NONE = 0,
        RM_DR_FAILOVER_IN_PROGRESS = 1,
        RM_DR_FAILOVER_DONE = 2,
        RM_DR_FAILOVER_FAIL = 3,
        RM_DR_RECOVER_IN_PROGRESS = 4,
        RM_DR_RECOVER_DONE = 5,
        RM_DR_RECOVER_FAIL = 6,
        RM_DR_RESTORE_IN_PROGRESS = 7,
        RM_DR_RESTORE_DONE = 8,
        RM_DR_RESTORE_FAIL = 9,
        RM_DR_REVERSE_CURRENT = 10,
        RM_DR_REVERSE_NATURAL = 11,
        RM_DR_REVERSE = 12,
        RM_DR_REVERSE_FAIL = 13,
        RM_DR_REVERSE_CURRENT_IN_PROGRESS = 14,
        RM_DR_REVERSE_NATURAL_IN_PROGRESS = 15,
        RM_DR_REVERSE_IN_PROGRESS = 16,
        RM_DR_IN_PROGRESS = 17,
        RM_DR_SWITCHOVER_IN_PROGRESS = 18,
        RM_DR_SWITCHOVER_FAIL = 19,
        RM_DR_FAILSAFE_IN_PROGRESS = 20,
        RM_DR_FAILSAFE_DONE = 21,
        RM_DR_FAILSAFE_FAIL = 22
    } rm_dr_state_t;

    /* rm_group_vv_map.rm_wwn_status: any non-zero value is a usable WWN. */
    enum
    {
        RM_VV_WWN_INVALID = 0,
        RM_VV_WWN_VALID = 1,
        RM_VV_WWN_COMPUTED = 2
    };

    /* rm_system_config.rm_sys_mode; RM_SYS_MODE_ON | RM_SYS_MODE_STOP (51) is
 * on and stopped at both ends. */
    enum
    {
        RM_SYS_MODE_NONE = 0,
        RM_SYS_MODE_LOCAL = 1,
        RM_SYS_MODE_REMOTE = 2,
        RM_SYS_MODE_ON = 3,
        RM_SYS_STOP_LOCAL = 16,
        RM_SYS_STOP_REMOTE = 32,
        RM_SYS_MODE_STOP = 48
    };

/* rm_system_config.rm_status bits */
#define RM_SYS_INVALID 16

/* rm_target.rm_options: the target is not connected or not usable. */
#define RM_TARGET_OPT_UNUSABLE 0x800000u
/* rm_target.rm_flags: modes a target suits (none of the three: any mode). */
#define RM_TARGET_FLAG_SYNC 0x01u
#define RM_TARGET_FLAG_ASYNC 0x80u
#define RM_TARGET_FLAG_MODE_MASK 0xC1u
/* rm_group_target.rm_options: the low 8 bits are the group's sync policy. */
#define RM_GTARGET_OPT_PRIMARY_BY_MODE 0x400000u
#define RM_GTARGET_OPT_POLICY_MASK 0xFFu

    /* ---- configuration records ------------------------------------------------- */

    /* Common header: name, record type and number (rm_ID at byte 34). */
    typedef struct rm_config_base
    {
        char rm_name[API_NAME_LEN];
        uint16_t rm_type;
        uint16_t rm_ID;
    } rm_config_base;

    /* The system's remote copy configuration (400 bytes). */
    typedef struct rm_system_config
    {
        rm_config_base rm_hdr;
        uint8_t rm_sys_mode; /* RM_SYS_* */
        uint8_t rm_status;   /* RM_SYS_INVALID and other bits */
        uint16_t rm_reserved0;
        uint32_t rm_local_sysID;
        char rm_local_sysname[API_NAME_LEN];
        char rm_node_wwn[64];
        uint32_t rm_max_targets;
        uint32_t rm_max_groups;
        uint32_t rm_max_vvs;
        char rm_reserved[248];
    } rm_system_config;

    /* A remote copy target (1136 bytes). */
    typedef struct rm_target
    {
        rm_config_base rm_hdr; /* rm_name: the target name */
        uint8_t rm_status;     /* RM_TARGET_* */
        uint8_t rm_flags;      /* RM_TARGET_FLAG_* */
        uint8_t rm_type;       /* 1 IP, 2 FC */
        uint8_t rm_reserved0;
        uint32_t rm_options; /* RM_TARGET_OPT_* */
        uint32_t rm_remote_sysID;
        char rm_remote_sysname[API_NAME_LEN];
        char rm_node_wwn[64];
        char rm_computed_remote_node_wwn[64];
        uint32_t rm_link_count;
        uint32_t rm_policy;
        char rm_reserved[920];
    } rm_target;
    typedef rm_target rm_target_t;

    /* A link to a target. */
    typedef struct rm_link
    {
        rm_config_base rm_hdr;
        char rm_target[API_NAME_LEN];
        char rm_local_port[16];  /* "n:s:p" */
        char rm_remote_addr[46]; /* IP address or port WWN text */
        uint8_t rm_status;       /* 1 up, 0 down */
        uint8_t rm_type;         /* 1 IP, 2 FC */
    } rm_link;
    typedef rm_link rm_link_t;

    /* One target of a group (196 bytes). */
    typedef struct rm_group_target
    {
        char rm_target[API_NAME_LEN];       /* target name */
        char rm_remote_group[API_NAME_LEN]; /* group name on the far system */
        uint32_t rm_mode;                   /* RM_TARGET_MODE_* */
        uint32_t rm_sync_period;            /* seconds (periodic mode) */
        uint8_t rm_state;                   /* the group's state on this target */
        uint8_t rm_reserved0[3];
        uint32_t rm_options;        /* RM_GTARGET_OPT_* and the sync policy */
        uint32_t rm_last_synctime;  /* seconds since the epoch, 0 never */
        char usercpg[API_NAME_LEN]; /* remote user CPG */
        char snapcpg[API_NAME_LEN]; /* remote snapshot CPG */
        uint32_t rm_remote_group_id;
        char rm_reserved[44];
    } rm_group_target;
    typedef rm_group_target rm_group_target_t;

    /* A remote copy group. */
    typedef struct rm_group
    {
        rm_config_base rm_hdr; /* name; rm_ID the group number (65535 unknown) */
        uint16_t rm_targets;   /* number of targets */
        uint8_t rm_primary;    /* 1 on the primary side */
        uint8_t rm_natural;    /* 1 when the natural direction holds */
        rm_dr_state_t rm_dr_state;
        char rm_domain_name[API_NAME_LEN];
        uint32_t rm_auto_set_id; /* see api_external_set_id */
        uint32_t rm_flags;
    } rm_group;
    typedef rm_group rm_group_t;

    /* A group volume's state on one target. */
    typedef struct rm_group_vv_map
    {
        char rm_target[API_NAME_LEN];
        char rm_remote_name[API_NAME_LEN];
        uint32_t rm_remote_vid;    /* 0xFFFFFFFE: not known */
        uint32_t rm_last_synctime; /* seconds since the epoch, 0 never */
        uint8_t rm_status;         /* RM_GROUP_VV_* */
        api_u64_t rm_sync_offset;
        api_u64_t rm_sync_length;
        api_u64_t rm_remote_wwn;
        api_u64_t rm_remote_wwn_re;
        uint8_t rm_wwn_status; /* RM_VV_WWN_* */
    } rm_group_vv_map;
    typedef rm_group_vv_map rm_group_vv_map_t;

    typedef struct rm_group_vv
    {
        char rm_local_name[API_NAME_LEN];
        api_u64_t rm_local_wwn;
        api_u64_t rm_local_wwn_re;
    } rm_group_vv;

    /* A group volume. `maps` holds a slot for each target of the group, in the
 * group's order; a volume without a map for a target has that slot zeroed
 * (an empty rm_target). */
    typedef struct rm_group_vv_wrapper
    {
        struct rm_group_vv_wrapper* next; /* NULL ends the list */
        rm_group_vv gvv;
        int map_count;
        rm_group_vv_map* maps;
    } rm_group_vv_wrapper;
    typedef rm_group_vv_wrapper rm_group_vv_wrapper_t;

    typedef struct rm_group_wrapper
    {
        struct rm_group_wrapper* next; /* NULL ends the list */
        rm_group group;
        int gtarget_count;
        rm_group_target* gtargets;
        rm_group_vv_wrapper* gvvs;
    } rm_group_wrapper;
    typedef rm_group_wrapper rm_group_wrapper_t;

    /* The whole configuration (448 bytes). Zero it before api_getRCopy. */
    typedef struct api_rcopy
    {
        rm_system_config sys;
        int target_count;
        rm_target* targets;
        int link_count;
        rm_link* links;
        rm_group_wrapper* groups;
        int group_count;
        int reserved;
    } api_rcopy_t;

/* api_getRCopy selectors. Every selector fills the whole record; the
 * selector only says what the caller means to read. */
#define API_RCOPY_QUERY_TYPE_ALL 0
#define API_RCOPY_QUERY_TYPE_TARGETS 1
#define API_RCOPY_QUERY_TYPE_LINKS 2
#define API_RCOPY_QUERY_TYPE_GROUPS 3

    /* Fills *rcopy with a private snapshot. Status form of the semaphore. */
    api_Status_t api_getRCopy(int selector, api_rcopy_t* rcopy);
    /* Releases everything api_getRCopy put in *rcopy and zeroes it; also fine
 * after a failed call. */
    void api_freeRCopy(api_rcopy_t* rcopy);

    /* ---- requests ---------------------------------------------------------------------- */

    /* Create a group: one or more targets (numtargets, at most 4). */
    typedef struct api_rcopy_group
    {
        char name[API_NAME_LEN];
        char domain[API_NAME_LEN];
        rm_group_target_t targets[4];
        uint32_t numtargets;
        char usercpg[API_NAME_LEN]; /* local user CPG */
        char snapcpg[API_NAME_LEN]; /* local snapshot CPG */
    } api_rcopy_group_t;

    /* A task started by a group operation. */
    typedef struct api_rcopy_task_id
    {
        uint32_t tid;
        uint32_t reserved;
    } api_rcopy_task_id_t;

    /* A group operation (set, start, stop, sync). */
    typedef struct api_rcopy_groupop
    {
        char name[API_NAME_LEN];
        char target[API_NAME_LEN]; /* api_setRCopyGroup only */
        uint8_t flags;             /* start: 2; activate: 0; sync: 1 to force */
        uint8_t do_not_savesnap;
        uint32_t sync_task_num;            /* out */
        api_rcopy_task_id_t* sync_task_id; /* out; released by api_freeRCopyGroup */
    } api_rcopy_groupop_t;
    typedef api_rcopy_groupop_t api_rcopy_start_group;

    /* Admit one volume into a group, mapped on each target. */
    typedef struct api_rcopy_vv
    {
        char vvname[API_NAME_LEN];
        char group[API_NAME_LEN];
        uint32_t nummaps;
        rm_group_vv_map_t vvmaps[4];
        uint32_t vv_add_flags;
        char syncname[API_NAME_LEN];
    } api_rcopy_vv_t;

/* removevv_flag bit (value 1) of api_dismissRCopyVV and api_deleteRCopyGroup:
 * also remove the far array's volumes that mirror the local ones. The local
 * volumes always stay; they only leave the group. */
#define API_RCOPY_REMOVE_VVS 0x1u

    typedef struct api_rcopy_delete
    {
        char name[API_NAME_LEN];
        uint8_t options;
        uint8_t removevv_flag;
        uint32_t keepsnap;
    } api_rcopy_delete;

    typedef struct api_rcopy_dismiss_vv
    {
        char vvname[API_NAME_LEN];
        char group[API_NAME_LEN];
        uint8_t removevv_flag;
        uint32_t keepsnap;
    } api_rcopy_dismiss_vv;

/* api_setRCopyGroup selectors. */
#define API_RCOPY_SET_PERIOD 3  /* value: sync period in seconds, on `target` */
#define API_RCOPY_SET_REVERSE 4 /* value: reverse options */
#define API_RCOPY_SET_FAILOVER 5
#define API_RCOPY_SET_RECOVER 6
#define API_RCOPY_SET_FAILBACK 7

    /* ---- calls (each takes the array semaphore, status form) ---------------------------- */

    api_Status_t api_createRCopyGroup(_api_evtparam_t* event, api_rcopy_group_t* group);
    api_Status_t api_setRCopyGroup(
        _api_evtparam_t* event, api_rcopy_groupop_t* rcopygroup, int selector, int value);
    api_Status_t api_admitRCopyVV(_api_evtparam_t* event, api_rcopy_vv_t* rcvv);
    api_Status_t api_startRCopyGroup(_api_evtparam_t* event, api_rcopy_start_group* startGroup);
    api_Status_t api_stopRCopyGroup(_api_evtparam_t* event, api_rcopy_groupop_t* group);
    /* A group that is not started fails with a text containing "isn't started". */
    api_Status_t api_syncrcopy(_api_evtparam_t* event, api_rcopy_groupop_t* group);
    api_Status_t api_deleteRCopyGroup(_api_evtparam_t* event, api_rcopy_delete* rcdelgroup);
    api_Status_t api_dismissRCopyVV(_api_evtparam_t* event, api_rcopy_dismiss_vv* vv);

    /* Releases what a group operation left in the record (sync_task_id) and
 * clears those fields. Takes no semaphore. */
    void api_freeRCopyGroup(api_rcopy_groupop_t* group);

    /* The id of the vvset that backs a group, from the group's rm_auto_set_id.
 * Takes no semaphore. */
    uint32_t api_external_set_id(uint32_t rm_auto_set_id);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_RCOPY_H */
