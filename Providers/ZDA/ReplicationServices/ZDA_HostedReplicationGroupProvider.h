// ZDA_HostedReplicationGroupProvider: ZDA_HostedReplicationGroup in root/zda
// (answering also to CIM_HostedCollection), the storage system (Antecedent)
// with each replication group, one per vvset (Dependent). The groups are
// read through the server.
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_HOSTED_REPLICATION_GROUP_PROVIDER_H
#define ZDA_HOSTED_REPLICATION_GROUP_PROVIDER_H

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

class ZDA_HostedReplicationGroupProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the host name and the storage system's path.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_HostedReplicationGroupProvider)

    // Every pair: the system with each replication group the server enumerates; false when the
    // server cannot say.
    bool _buildAssociationInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
    CIMObjectPath _systemPath;
};

PEGASUS_NAMESPACE_END

#endif
