/*
 * zdaapi_copies.h - the array management library: copies of single
 * volumes. A physical copy is a full volume written from its parent by a
 * background task; a virtual copy (snapshot, see api_createGroupSV) shares
 * the parent's data through the parent's snapshot space. Both stay linked
 * to their parent (copyOfId) until they are promoted or removed.
 */
#ifndef ZDAAPI_COPIES_H
#define ZDAAPI_COPIES_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

/* Copy speed of the array: a physical copy, resync or restore of a volume
 * of n MiB takes n / API_COPY_MIB_PER_SECOND seconds (at least one). */
#define API_COPY_MIB_PER_SECOND 256

/* Flags of api_physcopy_t. */
#define API_PCOPY_CREATE_TARGET 0x1u /* make the copy volume (it must not exist) */
#define API_PCOPY_INACTIVE 0x2u      /* leave the copy inactive once written */

    typedef struct api_physcopy
    {
        char parentVolName[API_NAME_LEN];   /* in: volume to copy */
        char childVolName[API_NAME_LEN];    /* in: the copy volume */
        char userCpg[API_NAME_LEN];         /* in: CPG of a new copy's user space ("" the parent's) */
        char snapCpg[API_NAME_LEN];         /* in: CPG of a new copy's snapshot space ("" the parent's) */
        uint32_t flags;                     /* in: API_PCOPY_* */
        uint32_t tid;                       /* out: the copy task */
        char childVolWWN[API_WWN_TEXT_LEN]; /* out */
    } api_physcopy_t;

    /* Starts a physical copy of parentVolName into childVolName: a new volume
 * like the parent (API_PCOPY_CREATE_TARGET) or an existing base volume at
 * least as large as the parent, in the same domain, without copies of its
 * own and not a system volume. The copy runs as a task (tid); the volume
 * is a physical copy of the parent from now on, in state
 * API_VV_STATE_COPYING until the task ends. Fails with API_E_NOT_FOUND,
 * API_E_EXISTS (new name taken), API_E_IN_USE (the parent or the target
 * is being copied or restored, or the target is used elsewhere),
 * API_E_ACCESS (a system volume), API_E_INVALID (names, sizes, CPGs,
 * domains, a target that is not a base volume) or API_E_LIMIT. Status form. */
    api_Status_t api_createPhysicalCopy(_api_evtparam_t* event, api_physcopy_t* copy);

    /* Writes the parent's present data to its copy `copyName` again. A
 * physical copy is rewritten by a task (*tid); a virtual copy takes the
 * parent's present point in time at once (*tid 0). API_E_IN_USE while the
 * copy or its parent is being copied or restored; API_E_INVALID for a
 * volume that is not a copy. Status form. */
    api_Status_t api_resyncCopy(_api_evtparam_t* event, const char* copyName, uint32_t* tid);

    /* Writes the copy `copyName` back to its parent, by a task (*tid) for
 * either kind of copy. The copy shows API_VV_STATE_RESTORING until the
 * task ends. Errors as api_resyncCopy. Status form. */
    api_Status_t api_restoreCopy(_api_evtparam_t* event, const char* copyName, uint32_t* tid);

    /* Stops the copy or restore task working on `copyName`; a stopped
 * physical copy keeps what was written and needs a resync. API_E_INVALID
 * when no such task runs. Status form. */
    api_Status_t api_stopCopy(_api_evtparam_t* event, const char* copyName);

    /* Makes the finished physical copy `copyName` an independent base volume.
 * API_E_IN_USE while a task works on it; API_E_INVALID for a volume that
 * is not a physical copy. Status form. */
    api_Status_t api_promoteCopy(_api_evtparam_t* event, const char* copyName);

    /* Gives the volume `name` snapshot space in the CPG `cpg`. A volume that
 * has snapshot space keeps it (0, nothing changes). Errors: API_E_NOT_FOUND
 * (volume or CPG), API_E_INVALID (a CPG of another domain). Status form. */
    api_Status_t api_setSnapCPG(_api_evtparam_t* event, const char* name, const char* cpg);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_COPIES_H */
