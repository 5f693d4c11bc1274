/*
 * zdaapi_system.h - the array management library: sessions, rights,
 * system identity and limits.
 */
#ifndef ZDAAPI_SYSTEM_H
#define ZDAAPI_SYSTEM_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

    /* ---- sessions and rights ----------------------------------------------- */

    /* Opens the array for a user of the management interface. Returns 0 when
 * the user may go on, non-zero (API_E_ACCESS) for an unknown or refused
 * user. May be called again at every operation; there is no close. */
    int api_zdaOpenForCimserver(const char* userName);

/* Answers whether `user` (connecting from ipAddress, which is recorded but
 * not checked) has the right named by `key`. Keys are matched exactly,
 * byte for byte, trailing blanks included. Results: 0 allowed; 1 refused
 * (the user's role lacks the right); 2 refused (unknown user); any other
 * value: the array does not support the key for that role. Takes no
 * semaphore. */
#define API_AUTH_ALLOWED 0
#define API_AUTH_DENIED 1
#define API_AUTH_UNKNOWN_USER 2
#define API_AUTH_UNSUPPORTED 3
    int api_authorizeCIMUser(const char* user, const char* ipAddress, const char* key);

/* ---- system identity ---------------------------------------------------- */

/* Policy flag bits of the array (the bit of value 2: no replication entity
 * objects; remote elements with a known WWN are shown as their own class). */
#define API_POLICY_NO_REPLICATION_ENTITY 0x2u

    /* A snapshot of the system's identity. Strings are NUL-terminated. */
    typedef struct api_system_info
    {
        char name[API_NAME_LEN];    /* system name */
        uint32_t id;                /* system id (serial number) */
        int type;                   /* system model number */
        char wwn[API_WWN_TEXT_LEN]; /* node WWN text */
        char hostName[256];         /* management host name */
        char contact[256];
        char owner[256];
        uint8_t isQuadPort;
        uint32_t policyFlags; /* API_POLICY_* bits */
        int nodesAlive;
        int nodesTotal;
    } api_system_info_t;

    /* Fills *info. Returns 0. (For the system providers; int form.) */
    int api_getSystemInfo(api_system_info_t* info);

    /* Copy the system contact / owner name into buffer (256 bytes). 0 on
 * success; the int form of the array semaphore applies. */
    int api_getSystemContact(char* buffer);
    int api_getOwnerName(char* buffer);

    /* The system's management addresses. ipv4_addr is in network byte order
 * (as struct in_addr.s_addr); dual_flag 2 means ipv6_addr is valid too. */
    typedef struct _api_ipaddr
    {
        int dual_flag;
        uint32_t ipv4_addr;
        uint8_t ipv6_addr[16];
    } _api_ipaddr_t;
    typedef _api_ipaddr_t api_ipaddr_t;

    /* Fills *addr; 0 on success. Takes no semaphore. */
    int api_getSystemDualIP(_api_ipaddr_t* addr);

    /* ---- limits --------------------------------------------------------------- */

    /* Volume limits of the system; returns 0. Takes no semaphore. */
    int api_getMaxVolumeNumbers(
        uint32_t* maxVol, uint32_t* maxBaseVol, uint32_t* maxSnapshotPerBase, uint32_t* maxRWSnapshots);

    /* Remote copy limits, by variable. */
    typedef enum api_mvar
    {
        ZDA_RM_MAX_GROUPS_SYNC = 0,
        ZDA_RM_MAX_GROUPS_PERIODIC = 1,
        ZDA_RM_MAX_GROUPS_ASYNC = 2,
        ZDA_RM_MAX_VOLUMES_SYNC = 3,
        ZDA_RM_MAX_VOLUMES_PERIODIC = 4,
        ZDA_RM_MAX_VOLUMES_ASYNC = 5,
        ZDA_RM_GROUP_MAX_VOLUMES = 6
    } api_mvar_t;

    /* Stores the limit `vartype` (api_mvar_t) in *value. 0 on success,
 * API_E_INVALID (and *value 0) for an unknown vartype. Takes no semaphore. */
    int api_getmvar(int vartype, uint32_t* value);

/* ---- ports ----------------------------------------------------------------- */

/* Port protocols. */
#define API_PORT_FC 1
#define API_PORT_ISCSI 2
#define API_PORT_RCIP 3

    /* One host or remote copy port of the system. */
    typedef struct api_port
    {
        int protocol;             /* API_PORT_* */
        uint8_t node, slot, port; /* position n:s:p */
        uint8_t linkUp;           /* 1 when the link is up */
        int lpid;                 /* logical port id */
        api_u64_t wwn;            /* FC port WWN; 0 otherwise */
        char iscsiName[224];      /* iSCSI name; "" otherwise */
        char ipAddr[46];          /* iSCSI or RCIP address; "" for FC */
    } api_port_t;

    /* The logical port id of the FC port with WWN portWWN, or of the iSCSI
 * port named iscsiName (at most 223 characters); -1 when there is none. */
    int api_getFCPortLPID(api_u64_t portWWN);
    int api_getiSCSIPortLPID(const char* iscsiName);

    /* Lists the FC ports, or the remote copy IP ports, of the system. On
 * success returns 0 with *count entries in *ports (NULL when there are
 * none), released with free_if_not_null. Int form of the semaphore. */
    int api_getFCPorts(int* count, api_port_t** ports);
    int api_getRCIPPorts(int* count, api_port_t** ports);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_SYSTEM_H */
