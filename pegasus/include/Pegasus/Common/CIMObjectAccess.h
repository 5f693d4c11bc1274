// In-place read access to the members of an instance, for the server's
// dispatcher and encoder. Not part of the provider API.
//
// getProperty() hands out a new handle; handles share one counted
// representation, so each one writes that count twice. A long answer reads
// millions of properties: reading them in place writes nothing.
#ifndef Pegasus_CIMObjectAccess_h
#define Pegasus_CIMObjectAccess_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>

PEGASUS_NAMESPACE_BEGIN

struct PEGASUS_COMMON_LINKAGE CIMObjectAccess
{
    // The property at `index` as the instance holds it, valid as long as
    // the instance holds it; IndexOutOfBoundsException past the end. The
    // property must not be changed through the reference.
    static const CIMProperty& property(const CIMConstInstance& instance, Uint32 index);
};

PEGASUS_NAMESPACE_END

#endif
