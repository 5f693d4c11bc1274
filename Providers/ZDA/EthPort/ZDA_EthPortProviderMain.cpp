// The entry of libZDA_EthPortProvider: the providers it creates by name.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ZDA_IPProtocolEndpointProvider.h"

PEGASUS_NAMESPACE_BEGIN

// The provider of that name (compared without case), or null for a name the
// library does not know. The provider deletes itself in terminate().
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "ZDA_IPProtocolEndpointProvider"))
        return new ZDA_IPProtocolEndpointProvider();
    return 0;
}

PEGASUS_NAMESPACE_END
