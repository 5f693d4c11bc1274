// ZDA_SAPAvailableForRemoteReplicationGroupProvider:
// ZDA_SAPAvailableForRemoteReplicationGroup in root/zda (answering also to
// CIM_SAPAvailableForElement), each remote copy group (ManagedElement) with
// what it replicates over (AvailableSAP): for each of its targets, the
// target's access point, then the local port of each link to that target,
// as the FC endpoint of the FC port at the link's position or the IP
// endpoint of the remote copy IP port there. A port two links share is
// listed once per group; a link whose port the array does not list is
// passed over. A failed read leaves the answer without complete().
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_SAP_AVAILABLE_FOR_REMOTE_REPLICATION_GROUP_PROVIDER_H
#define ZDA_SAP_AVAILABLE_FOR_REMOTE_REPLICATION_GROUP_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_SAPAvailableForRemoteReplicationGroupProvider : public CIMAssociationProvider,
                                                          public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the system's names.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_SAPAvailableForRemoteReplicationGroupProvider)

    // Every pair, groups in the array's order; false when the remote copy
    // configuration or a port list cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    String _systemName;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
