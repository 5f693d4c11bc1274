// ZDA_RemoteGroupSynchronizedProvider: the pairs of a remote copy group and
// its counterpart group on one target, and of a remote copy group and a
// local vvset of its snapshots (ZDA_RemoteGroupSynchronized in root/zda).
//
// Here: which side of a group's copy is the source, which the volume and
// group mappings rest on. Reads only the records it is given.
#ifndef ZDA_REMOTE_GROUP_SYNCHRONIZED_PROVIDER_H
#define ZDA_REMOTE_GROUP_SYNCHRONIZED_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_RemoteGroupSynchronizedProvider : public CIMAssociationProvider,
                                            public CIMInstanceProvider
{
public:
    // True when the local side of the group `groupInfo` is the source of its
    // copy to `target`. A group target flagged 0x400000 decides by mode: the
    // local side is the source when any target of the group is synchronous.
    // Otherwise the group's natural direction decides (rm_natural).
    static Boolean isPrimary(rm_group_wrapper* groupInfo, rm_group_target* target);
};

PEGASUS_NAMESPACE_END

#endif
