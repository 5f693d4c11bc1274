// The entry of libZDA_ReplicationSvcsProvider: the providers it creates by
// name, tested in a fixed order.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ZDA_ReplicationServiceProvider.h"
#include "ZDA_MemberOfReplicationGroupProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_ReplicationServiceCapabilitiesProvider.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteReplicationCollectionProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_CapabilitiesOfReplicationService.h"
#include "ZDA_ReplicationAffectsElement.h"
#include "ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider.h"
#include "ZDA_HostedRemoteReplicationGroupProvider.h"
#include "ZDA_ReplicationAffectsRemoteCollectionProvider.h"
#include "ZDA_HostedReplicationGroupProvider.h"
#include "ZDA_HostedRemoteReplicationCollectionProvider.h"
#include "ZDA_ReplicationAffectsEntityProvider.h"
#include "ZDA_HostedRemoteSAPProvider.h"
#include "ZDA_SAPAvailableForRemoteReplicaVolumeProvider.h"
#include "ZDA_SAPAvailableForRemoteReplicationGroupProvider.h"
#include "ZDA_OrderedMemberOfRemoteReplicationGroupProvider.h"
#include "ZDA_MemberOfRemoteReplicationCollectionProvider.h"
#include "ZDA_AffectedJobElementProvider.h"
#include "ZDA_RemoteStorageSynchronizedProvider.h"
#include "ZDA_RemoteGroupSynchronizedProvider.h"

PEGASUS_NAMESPACE_BEGIN

// The provider of that name (compared without case), or null for a name the
// library does not know; nothing is logged or thrown then. The first name
// that matches wins. The caller owns nothing: a provider deletes itself in
// terminate(). An exception from a constructor passes on to the caller.
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "ZDA_ReplicationServiceProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationServiceProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_MemberOfReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_MemberOfReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationServiceCapabilitiesProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationServiceCapabilitiesProvider());
    if (String::equalNoCase(providerName, "ZDA_CapabilitiesOfReplicationService"))
        return static_cast<CIMInstanceProvider*>(new ZDA_CapabilitiesOfReplicationService());
    if (String::equalNoCase(providerName, "ZDA_ReplicationAffectsElement"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationAffectsElement());
    if (String::equalNoCase(providerName, "ZDA_RemoteStorageSynchronizedProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteStorageSynchronizedProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(
            new ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_HostedRemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_HostedRemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_SAPAvailableForRemoteReplicaVolumeProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_SAPAvailableForRemoteReplicaVolumeProvider());
    if (String::equalNoCase(providerName, "ZDA_SAPAvailableForRemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_SAPAvailableForRemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_OrderedMemberOfRemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_OrderedMemberOfRemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteGroupSynchronizedProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteGroupSynchronizedProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteReplicationCollectionProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteReplicationCollectionProvider());
    if (String::equalNoCase(providerName, "ZDA_MemberOfRemoteReplicationCollectionProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_MemberOfRemoteReplicationCollectionProvider());
    if (String::equalNoCase(providerName, "ZDA_HostedRemoteReplicationCollectionProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_HostedRemoteReplicationCollectionProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationAffectsRemoteCollectionProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationAffectsRemoteCollectionProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationEntityProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationEntityProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationAffectsEntityProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationAffectsEntityProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteServiceAccessPointProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteServiceAccessPointProvider());
    if (String::equalNoCase(providerName, "ZDA_HostedRemoteSAPProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_HostedRemoteSAPProvider());
    if (String::equalNoCase(providerName, "ZDA_AffectedJobElementProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_AffectedJobElementProvider());
    if (String::equalNoCase(providerName, "ZDA_HostedReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_HostedReplicationGroupProvider());
    return 0;
}

PEGASUS_NAMESPACE_END
