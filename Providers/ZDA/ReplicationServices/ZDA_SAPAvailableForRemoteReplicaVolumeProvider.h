// ZDA_SAPAvailableForRemoteReplicaVolumeProvider:
// ZDA_SAPAvailableForRemoteReplicaVolume in root/zda (answering also to
// CIM_SAPAvailableForElement), each volume of a remote copy group
// (ManagedElement) with the access points and port endpoints available to
// its group (AvailableSAP). The pairs are gathered through the server: from
// a volume to its remote copy group by
// ZDA_OrderedMemberOfRemoteReplicationGroup, then from the group by
// ZDA_SAPAvailableForRemoteReplicationGroup. A volume in no remote copy
// group has none. A failed read answers empty and complete.
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_SAP_AVAILABLE_FOR_REMOTE_REPLICA_VOLUME_PROVIDER_H
#define ZDA_SAP_AVAILABLE_FOR_REMOTE_REPLICA_VOLUME_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_SAPAvailableForRemoteReplicaVolumeProvider : public CIMAssociationProvider,
                                                       public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the system's names.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_SAPAvailableForRemoteReplicaVolumeProvider)

    // The pairs of the object's volume when it is one, else every pair;
    // false when the server cannot answer.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
