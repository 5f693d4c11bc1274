// The entry of libZDA_StoragePoolProvider: the providers it creates by name.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ZDA_ReplicaPoolForStorageProvider.h"
#include "ZDA_StorageConfigurationServiceProvider.h"
#include "ZDA_StoragePoolProvider.h"
#include "ZDA_StorageSettingProvider.h"
#include "ZDA_StorageSynchronizedProvider.h"

PEGASUS_NAMESPACE_BEGIN

// The provider of that name (compared without case), or null for a name the
// library does not know. The caller owns the provider until it calls
// terminate(), which deletes it.
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "ZDA_StorageConfigurationServiceProvider"))
        return new ZDA_StorageConfigurationServiceProvider();
    if (String::equalNoCase(providerName, "ZDA_StorageSynchronizedProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_StorageSynchronizedProvider());
    if (String::equalNoCase(providerName, "ZDA_StoragePoolProvider"))
        return new ZDA_StoragePoolProvider();
    if (String::equalNoCase(providerName, "ZDA_ReplicaPoolForStorageProvider"))
        return static_cast<CIMInstanceProvider*>(new ZDA_ReplicaPoolForStorageProvider());
    if (String::equalNoCase(providerName, "ZDA_StorageSettingProvider"))
        return new ZDA_StorageSettingProvider();
    return 0;
}

PEGASUS_NAMESPACE_END
