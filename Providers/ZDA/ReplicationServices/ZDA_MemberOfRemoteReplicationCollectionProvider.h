// ZDA_MemberOfRemoteReplicationCollectionProvider:
// ZDA_MemberOfRemoteReplicationCollection in root/zda (answering also to
// CIM_MemberOfCollection), each remote copy target's collection
// (Collection) with the target's access point (Member). A reference of
// another class is refused by getInstance and enumerateInstances (not by
// enumerateInstanceNames). A failed read leaves the answer without
// complete().
//
// The association frame serves every operation from the row and the reader
// (ZDA_NAVIGATION_PROVIDER_OPERATIONS). Thread-safe: the members are written
// by initialize only.
#ifndef ZDA_MEMBER_OF_REMOTE_REPLICATION_COLLECTION_PROVIDER_H
#define ZDA_MEMBER_OF_REMOTE_REPLICATION_COLLECTION_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_MemberOfRemoteReplicationCollectionProvider : public CIMAssociationProvider,
                                                        public CIMInstanceProvider
{
public:
    // Keeps the handle and reads the system's names.
    virtual void initialize(CIMOMHandle& cimom);

    ZDA_NAVIGATION_PROVIDER_OPERATIONS(ZDA_MemberOfRemoteReplicationCollectionProvider)

    // Every pair, one per remote copy target in the array's order; false
    // when the array cannot be read.
    bool _getRelatedInstances(
        const ZDA_AssociationFrame::PairQuery& query, std::vector<ZDA_AssociationFrame::EndPair>& pairs);

    CIMOMHandle _cimom;
    String _systemAddress;
    CIMName _assoClassName;
};

PEGASUS_NAMESPACE_END

#endif
