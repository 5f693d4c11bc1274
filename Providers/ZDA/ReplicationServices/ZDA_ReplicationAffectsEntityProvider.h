// ZDA_ReplicationAffectsEntityProvider: ZDA_ReplicationAffectsEntity in
// root/zda (answering also to CIM_ServiceAffectsElement), the replication
// service (AffectingElement) with each replication entity, the far side's
// groups and volumes of the remote copy groups (AffectedElement). The
// entities are read from the array as the entity provider walks them; a
// failed read leaves the answer without complete().
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_REPLICATION_AFFECTS_ENTITY_PROVIDER_H
#define ZDA_REPLICATION_AFFECTS_ENTITY_PROVIDER_H

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

class ZDA_ReplicationAffectsEntityProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the host name and the service's path.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_ReplicationAffectsEntityProvider)

    // Every pair: the service with each entity of the remote copy configuration, far groups
    // first, then far volumes; false when the array cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
    CIMObjectPath _servicePath;
};

PEGASUS_NAMESPACE_END

#endif
