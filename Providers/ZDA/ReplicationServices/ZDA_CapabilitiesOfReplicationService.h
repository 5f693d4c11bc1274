// ZDA_CapabilitiesOfReplicationService: the association of the same name in
// root/zda (answering also to CIM_ElementCapabilities), the replication
// service (ManagedElement) with its capabilities (Capabilities). Both ends
// are read through the server; the array has one of each.
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_CAPABILITIES_OF_REPLICATION_SERVICE_H
#define ZDA_CAPABILITIES_OF_REPLICATION_SERVICE_H

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

class ZDA_CapabilitiesOfReplicationService : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the host name of the association paths.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_CapabilitiesOfReplicationService)

    // Every pair: each service with each capabilities instance the server enumerates (one of
    // each); false when the server cannot say.
    bool _getInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
