// ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider:
// ZDA_ReplicationServiceAffectsRemoteReplicationGroup in root/zda (answering
// also to CIM_ServiceAffectsElement), the replication service
// (AffectingElement) with each remote copy group (AffectedElement). Both
// ends are read through the server.
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_REPLICATION_SERVICE_AFFECTS_REMOTE_REPLICATION_GROUP_PROVIDER_H
#define ZDA_REPLICATION_SERVICE_AFFECTS_REMOTE_REPLICATION_GROUP_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider : public CIMAssociationProvider,
                                                                    public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the host name of the association paths.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider)

    // Every pair: the service with each remote replication group the server enumerates; false
    // when the server cannot say.
    bool _getInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
