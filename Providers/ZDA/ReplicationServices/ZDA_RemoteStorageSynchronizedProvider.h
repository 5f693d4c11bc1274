// ZDA_RemoteStorageSynchronizedProvider: the pairs of a local volume in a
// remote copy group and its counterpart on one target of the group
// (ZDA_RemoteStorageSynchronized in root/zda).
//
// Here: the lookups over a remote copy configuration (api_getRCopy) that
// every provider showing remote copy state shares. They read the snapshot
// they are given and nothing else: no array call, no semaphore, callable on
// any thread.
#ifndef ZDA_REMOTE_STORAGE_SYNCHRONIZED_PROVIDER_H
#define ZDA_REMOTE_STORAGE_SYNCHRONIZED_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_RemoteStorageSynchronizedProvider : public CIMAssociationProvider,
                                              public CIMInstanceProvider
{
public:
    // The map of the group volume `gvvs` for the group target `gtarget`:
    // the first of the volume's maps whose target name is the group
    // target's, walking as many maps as the group has targets
    // (grp->group.rm_targets, not the volume's map_count: a volume holds a
    // slot for every target of its group). Null when the volume has no map
    // for that target; a map slot the array left empty names no target.
    static rm_group_vv_map* findVVMap(rm_group_wrapper* grp, rm_group_target* gtarget,
        rm_group_vv_wrapper* gvvs);

    // The configured target that the group target `gtarget` names; null for
    // a null `gtarget` or a name no target of `rcopy` has.
    static rm_target* findTarget(rm_group_target* gtarget, api_rcopy_t& rcopy);

    // The node WWN of the remote system behind the group target `gtarget`,
    // as the array works it out (the target's computed WWN); "" when no
    // configured target has that name or the WWN is not known, which
    // callers read as a remote system of unknown WWN.
    static String getRemoteSystemWWN(api_rcopy_t* pRcopy, rm_group_target* gtarget);
};

PEGASUS_NAMESPACE_END

#endif
