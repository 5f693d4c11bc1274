// The entry of libZDA_StorageSystemProvider: the providers it creates by name.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ZDA_InternalCacheProvider.h"
#include "ZDA_StorageSystemProvider.h"

PEGASUS_NAMESPACE_BEGIN

// The provider of that name (compared without case), or null for a name the
// library does not know. The caller owns the provider until it calls
// terminate(), which deletes it.
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "ZDA_StorageSystemProvider"))
        return new ZDA_StorageSystemProvider();
    if (String::equalNoCase(providerName, "ZDA_InternalCacheProvider"))
        return new ZDA_InternalCacheProvider();
    return 0;
}

PEGASUS_NAMESPACE_END
