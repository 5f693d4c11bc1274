// The entry of libZDA_StorageVolumeProvider: the providers it creates by name.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

// The provider of that name (compared without case), or null for a name the
// library does not know. The caller owns the provider until it calls
// terminate(), which deletes it.
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "ZDA_StorageVolumeProvider"))
        return new ZDA_StorageVolumeProvider();
    return 0;
}

PEGASUS_NAMESPACE_END
