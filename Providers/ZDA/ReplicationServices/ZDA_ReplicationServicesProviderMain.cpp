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
    if (String::equalNoCase(providerName, "ZDA_RemoteStorageSynchronizedProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteStorageSynchronizedProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteReplicationGroupProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteReplicationGroupProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteGroupSynchronizedProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteGroupSynchronizedProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteReplicationCollectionProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteReplicationCollectionProvider());
    if (String::equalNoCase(providerName, "ZDA_ReplicationEntityProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicationEntityProvider());
    if (String::equalNoCase(providerName, "ZDA_RemoteServiceAccessPointProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_RemoteServiceAccessPointProvider());
    return 0;
}

PEGASUS_NAMESPACE_END
