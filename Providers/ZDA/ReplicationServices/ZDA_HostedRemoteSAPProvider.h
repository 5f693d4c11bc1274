// ZDA_HostedRemoteSAPProvider: ZDA_HostedRemoteSAP in root/zda (answering
// also to CIM_HostedAccessPoint), the storage system (Antecedent) with each
// remote service access point, one per remote copy target (Dependent). The
// targets are read from the array. An access point carries the system's
// host name as its SystemName, as its own provider serves it, so the two
// ends of a pair name the system differently.
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_HOSTED_REMOTE_SAP_PROVIDER_H
#define ZDA_HOSTED_REMOTE_SAP_PROVIDER_H

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

class ZDA_HostedRemoteSAPProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the host name and the storage system's path.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_HostedRemoteSAPProvider)

    // Every pair: the system with the access point of each remote copy target; false when the
    // array cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
    CIMObjectPath _systemPath;
};

PEGASUS_NAMESPACE_END

#endif
