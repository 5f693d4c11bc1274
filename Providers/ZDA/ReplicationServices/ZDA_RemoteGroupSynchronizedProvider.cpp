// Which side of a remote copy group's copy is the source.
#include "ZDA_RemoteGroupSynchronizedProvider.h"

PEGASUS_NAMESPACE_BEGIN

Boolean ZDA_RemoteGroupSynchronizedProvider::isPrimary(rm_group_wrapper* groupInfo,
    rm_group_target* target)
{
    if (target->rm_options & RM_GTARGET_OPT_PRIMARY_BY_MODE)
    {
        for (int i = 0; i < groupInfo->gtarget_count; i++)
        {
            if (groupInfo->gtargets[i].rm_mode == RM_TARGET_MODE_SYNC)
                return true;
        }
        return false;
    }
    return groupInfo->group.rm_natural != 0;
}

PEGASUS_NAMESPACE_END
