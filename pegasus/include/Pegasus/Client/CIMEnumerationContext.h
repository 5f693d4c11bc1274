// The enumeration context of a pulled enumeration, as a client holds it
// between an open, its pulls and the close: the server's name for it and
// the namespace it enumerates. Filled by CIMClient's open calls; null
// before an open and after the sequence ended or the context was closed.
#ifndef Pegasus_CIMEnumerationContext_h
#define Pegasus_CIMEnumerationContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_CLIENT_LINKAGE CIMEnumerationContext
{
public:
    CIMEnumerationContext() {}

    Boolean isNull() const { return _context.size() == 0; }
    const CIMNamespaceName& getNameSpace() const { return _nameSpace; }
    void clear()
    {
        _context.clear();
        _nameSpace.clear();
    }

private:
    friend class CIMClient;
    String _context;
    CIMNamespaceName _nameSpace;
};

PEGASUS_NAMESPACE_END

#endif
