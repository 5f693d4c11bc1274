// Out-of-line constructors and destructors of the provider interfaces, so
// that their virtual tables live in this library.
#include <Pegasus/Provider/CIMProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMProvider::CIMProvider() {}
CIMProvider::~CIMProvider() {}

CIMInstanceProvider::CIMInstanceProvider() {}
CIMInstanceProvider::~CIMInstanceProvider() {}

CIMMethodProvider::CIMMethodProvider() {}
CIMMethodProvider::~CIMMethodProvider() {}

CIMAssociationProvider::CIMAssociationProvider() {}
CIMAssociationProvider::~CIMAssociationProvider() {}

PEGASUS_NAMESPACE_END
