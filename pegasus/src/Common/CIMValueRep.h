// The representation of CIMValue (private to the library).
#ifndef Pegasus_CIMValueRep_h
#define Pegasus_CIMValueRep_h

#include <Pegasus/Common/CIMValue.h>

#include <memory>
#include <variant>

PEGASUS_NAMESPACE_BEGIN

// Object and instance values (scalar or array). Kept behind this interface
// so that the value code does not depend on the object model's classes;
// the implementations are next to the CIMValue members that take objects.
struct CIMValueObjects
{
    virtual ~CIMValueObjects() {}
    virtual Uint32 size() const = 0;  // element count; 0 for a scalar
    virtual bool equal(const CIMValueObjects& x) const = 0;
    virtual String toString() const = 0;  // with the array blanks
};

struct CIMValueRep
{
    typedef std::variant<std::monostate, Boolean, Uint8, Sint8, Uint16, Sint16, Uint32, Sint32, Uint64,
        Sint64, Real32, Real64, Char16, String, CIMDateTime, CIMObjectPath, Array<Boolean>, Array<Uint8>,
        Array<Sint8>, Array<Uint16>, Array<Sint16>, Array<Uint32>, Array<Sint32>, Array<Uint64>,
        Array<Sint64>, Array<Real32>, Array<Real64>, Array<Char16>, Array<String>, Array<CIMDateTime>,
        Array<CIMObjectPath>, std::shared_ptr<const CIMValueObjects>>
        Data;

    CIMType type = CIMTYPE_BOOLEAN;
    bool isArray = false;
    bool isNull = true;
    Uint32 nullArraySize = 0;
    Data data;
};

PEGASUS_NAMESPACE_END

#endif
