// Lookups over a remote copy configuration shared by the providers that show
// remote copy state.
#include "ZDA_RemoteStorageSynchronizedProvider.h"

#include <cstring>

PEGASUS_NAMESPACE_BEGIN

rm_group_vv_map* ZDA_RemoteStorageSynchronizedProvider::findVVMap(rm_group_wrapper* grp,
    rm_group_target* gtarget, rm_group_vv_wrapper* gvvs)
{
    if (!grp || !gtarget || !gvvs || !gvvs->maps)
        return nullptr;
    for (Uint16 i = 0; i < grp->group.rm_targets; i++)
    {
        if (std::strcmp(gvvs->maps[i].rm_target, gtarget->rm_target) == 0)
            return &gvvs->maps[i];
    }
    return nullptr;
}

rm_target* ZDA_RemoteStorageSynchronizedProvider::findTarget(rm_group_target* gtarget,
    api_rcopy_t& rcopy)
{
    if (!gtarget || !rcopy.targets)
        return nullptr;
    for (int i = 0; i < rcopy.target_count; i++)
    {
        if (std::strcmp(rcopy.targets[i].rm_hdr.rm_name, gtarget->rm_target) == 0)
            return &rcopy.targets[i];
    }
    return nullptr;
}

String ZDA_RemoteStorageSynchronizedProvider::getRemoteSystemWWN(api_rcopy_t* pRcopy,
    rm_group_target* gtarget)
{
    const rm_target* target = pRcopy ? findTarget(gtarget, *pRcopy) : nullptr;
    return target ? String(target->rm_computed_remote_node_wwn) : String();
}

PEGASUS_NAMESPACE_END
