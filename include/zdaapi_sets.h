/*
 * zdaapi_sets.h - the array management library: volume sets (vvsets),
 * their key-values and the option sets that carry key-values.
 */
#ifndef ZDAAPI_SETS_H
#define ZDAAPI_SETS_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

/* Set types. */
#define API_SET_TYPE_VV 1

    /* One vvset. */
    typedef struct api_set
    {
        int type;    /* API_SET_TYPE_VV */
        uint32_t id; /* vvset number */
        char name[API_NAME_LEN];
        char comment[257];         /* "" for none */
        char domain[API_NAME_LEN]; /* "" for none */
        int memberCount;
        api_name_t* members; /* memberCount volume names */
    } api_set_t;

    /* The answer of api_getVVSets. Clear it before the call; release it with
 * api_freeSets on every path, also after a failure. */
    typedef struct api_sets
    {
        int type;       /* API_SET_TYPE_VV */
        uint32_t count; /* sets in `sets` */
        api_set_t* sets;
    } api_sets_t;

    /* ---- key-value option sets ------------------------------------------------ */

#define API_OKV_KEY_LEN 64
#define API_OKV_VALUE_LEN 256
#define API_OKV_SET 1 /* store the key with the value */
#define API_OKV_IF 2  /* condition: the object's key equals the value */

    typedef struct api_okv_entry
    {
        int op; /* API_OKV_SET or API_OKV_IF */
        char key[API_OKV_KEY_LEN];
        char value[API_OKV_VALUE_LEN];
    } api_okv_entry_t;

    /* An option set. Zero it before the first add; release it with
 * api_free_okv_opts (which leaves it zeroed and reusable). */
    typedef struct api_okv_opts
    {
        int count;
        int capacity;
        api_okv_entry_t* entries;
    } api_okv_opts_t;

    /* Add a key-value to store (SetKV) or to require (IfKV). Key: 1..63
 * characters; value: at most 255. 0 on success, API_E_INVALID otherwise. */
    int api_okv_addSetKV(api_okv_opts_t* opts, const char* key, const char* value);
    int api_okv_addIfKV(api_okv_opts_t* opts, const char* key, const char* value);
    void api_free_okv_opts(api_okv_opts_t* opts);

    /* ---- vvset calls -------------------------------------------------------------- */

    /* Lists vvsets: the one named `name`, or all of them (name NULL) in id
 * order, keeping only those that meet every API_OKV_IF condition of
 * `conditions` (may be NULL). `flags` is reserved (0). A name that does
 * not exist gives API_E_NOT_FOUND; conditions that nothing meets give
 * status 0 and count 0. Fills *list (type, count, sets). Status form. */
    api_Status_t api_getVVSets(
        const char* name, const api_okv_opts_t* conditions, int flags, api_sets_t* list);
    /* Releases what api_getVVSets put in *list and clears it; a cleared or
 * already released list is fine. */
    void api_freeSets(api_sets_t* list);

    /* Creates vvset `name` with `count` members (0 allowed) and a comment
 * (NULL or ""), storing the API_OKV_SET entries of okv (may be NULL) as
 * its key-values. `flags` is reserved (0). The set takes the domain of its
 * members; members of two domains are refused. Fails with API_E_EXISTS,
 * API_E_NOT_FOUND (a member), API_E_INVALID or API_E_LIMIT. */
    api_Status_t api_createVVSet(_api_evtparam_t* event, const char* name, api_name_t* vvNames, int count,
        int flags, const char* comment, const api_okv_opts_t* okv);

    /* Renames a vvset (renameFlag 1: to newName) and/or sets its comment
 * (commentFlag 1); a string counts only where its flag is 1. */
    api_Status_t api_setVVSet(_api_evtparam_t* event, const char* setName, const char* newName,
        const char* comment, int renameFlag, int commentFlag);

    /* Removes a vvset; its volumes stay. */
    api_Status_t api_removeVVSet(_api_evtparam_t* event, const char* setName);

    /* Add volumes to / take volumes out of a vvset. Adding a member twice or
 * taking out a volume that is not a member fails and changes nothing. */
    api_Status_t api_addToVVSet(_api_evtparam_t* event, const char* setName, api_name_t* names, int count);
    api_Status_t api_removeFromVVSet(
        _api_evtparam_t* event, const char* setName, api_name_t* names, int count);

/* ---- key-value queries ----------------------------------------------------------- */

/* Object types of a key-value query. */
#define API_KV_OBJ_VVSET 1

    typedef struct api_kv_result
    {
        char key[API_OKV_KEY_LEN];
        char value[API_OKV_VALUE_LEN];
        int present; /* 1 when the object has the key */
    } api_kv_result_t;

    /* A key-value query (24 bytes). Clear it, set objType and objId, add keys
 * with api_addKeyValueOpt, call api_getKeyValues, read `found` (the number
 * of asked keys the object has) and keys[i], release with
 * api_freeKeyValueOpt. */
    typedef struct api_keyvalue_query
    {
        int objType;    /* API_KV_OBJ_VVSET */
        uint32_t objId; /* the vvset's id */
        int found;      /* out */
        int keyCount;
        api_kv_result_t* keys;
    } api_keyvalue_query_t;

    api_Status_t api_addKeyValueOpt(api_keyvalue_query_t* query, const char* key);
    /* Fails with API_E_NOT_FOUND (found 0) when the object does not exist. */
    api_Status_t api_getKeyValues(api_keyvalue_query_t* query);
    void api_freeKeyValueOpt(api_keyvalue_query_t* query);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_SETS_H */
