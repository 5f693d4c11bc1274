// ZDA_OrderedMemberOfRemoteReplicationGroupProvider:
// ZDA_OrderedMemberOfRemoteReplicationGroup in root/zda (answering also to
// CIM_OrderedMemberOfCollection and CIM_MemberOfCollection), a group as
// Collection with each of its volumes as Member, in the group's order, the
// position (from 1) in AssignedSequence. The groups are the remote copy
// groups (ZDA_RemoteReplicationGroup) and the vvsets that stand for one, those
// with the key "parentRCGroup" (ZDA_ReplicationGroup), which the plain
// membership association leaves out: every vvset's members are thus reached
// through exactly one membership association. A reference of another class
// is refused by getInstance and the enumerations; a group reference without
// a name in its InstanceID answers nothing. A failed read leaves the answer
// without complete().
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_ORDERED_MEMBER_OF_REMOTE_REPLICATION_GROUP_PROVIDER_H
#define ZDA_ORDERED_MEMBER_OF_REMOTE_REPLICATION_GROUP_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_OrderedMemberOfRemoteReplicationGroupProvider : public CIMAssociationProvider,
                                                          public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the system's names.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_OrderedMemberOfRemoteReplicationGroupProvider)

    // Every pair, remote copy groups first (the array's order), then the
    // vvsets with "parentRCGroup"; only the groups of the object when it is
    // a group. False when the array cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    String _systemName;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
