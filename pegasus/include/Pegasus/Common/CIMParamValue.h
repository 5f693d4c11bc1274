// CIMParamValue: one named parameter value of a method call, input or
// output.
//
// A reference handle: copies share one parameter value; clone() makes an
// independent copy. A default-constructed handle is uninitialized: every
// member except isUninitialized(), assignment and destruction throws
// UninitializedObjectException. Reference counts are atomic.
//
// Unlike a property, a parameter value may hold a reference array. isTyped()
// false means the value arrived as untyped text and still has to be
// converted to the parameter's declared type.
#ifndef Pegasus_CIMParamValue_h
#define Pegasus_CIMParamValue_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMValue;
class CIMParamValue;
class CIMParamValueRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMParamValue
{
public:
    CIMParamValue();
    CIMParamValue(const CIMParamValue& x);
    // Takes over x's object; x is left uninitialized.
    CIMParamValue(CIMParamValue&& x) noexcept;
    // An empty name throws UninitializedObjectException.
    CIMParamValue(String parameterName, CIMValue value, Boolean isTyped = true);
    ~CIMParamValue();
    CIMParamValue& operator=(const CIMParamValue& x);
    CIMParamValue& operator=(CIMParamValue&& x) noexcept;

    String getParameterName() const;
    CIMValue getValue() const;
    Boolean isTyped() const;

    // An empty name throws UninitializedObjectException.
    void setParameterName(String& parameterName);
    void setValue(CIMValue& value);
    void setIsTyped(Boolean isTyped = true);

    Boolean isUninitialized() const;
    CIMParamValue clone() const;

private:
    explicit CIMParamValue(CIMParamValueRep* rep);
    CIMParamValueRep* _rep;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
