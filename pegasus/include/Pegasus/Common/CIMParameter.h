// CIMParameter, CIMConstParameter: the declaration of one parameter of a
// class's method (name, type, array-ness, reference class, qualifiers).
//
// Reference handles: copies share, clone() is deep, an uninitialized handle
// throws UninitializedObjectException from every member except
// isUninitialized(), assignment and destruction. Reference counts are
// atomic.
#ifndef Pegasus_CIMParameter_h
#define Pegasus_CIMParameter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMParameter;
class CIMConstParameter;
class CIMParameterRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMQualifier.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMParameter
{
public:
    CIMParameter();
    CIMParameter(const CIMParameter& x);
    // Takes over x's object; x is left uninitialized.
    CIMParameter(CIMParameter&& x) noexcept;
    // A null name throws UninitializedObjectException; a reference class
    // name on a non-reference type, or an array size on a scalar, throws
    // TypeMismatchException.
    CIMParameter(const CIMName& name, CIMType type, Boolean isArray = false, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName());
    ~CIMParameter();
    CIMParameter& operator=(const CIMParameter& x);
    CIMParameter& operator=(CIMParameter&& x) noexcept;

    const CIMName& getName() const;
    // Throws Exception when the parameter already belongs to a method.
    void setName(const CIMName& name);
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    CIMType getType() const;

    // Same contract as the qualifier members of CIMProperty.
    CIMParameter& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    Boolean isUninitialized() const;
    // Same name (ignoring case), type, array-ness, array size, reference
    // class and qualifiers.
    Boolean identical(const CIMConstParameter& x) const;
    CIMParameter clone() const;

private:
    explicit CIMParameter(CIMParameterRep* rep);
    CIMParameterRep* _rep;
    friend class CIMConstParameter;
    friend struct CIMHandleAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstParameter
{
public:
    CIMConstParameter();
    CIMConstParameter(const CIMConstParameter& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstParameter(CIMConstParameter&& x) noexcept;
    CIMConstParameter(const CIMParameter& x);
    CIMConstParameter(const CIMName& name, CIMType type, Boolean isArray = false, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName());
    ~CIMConstParameter();
    CIMConstParameter& operator=(const CIMConstParameter& x);
    CIMConstParameter& operator=(CIMConstParameter&& x) noexcept;
    CIMConstParameter& operator=(const CIMParameter& x);

    const CIMName& getName() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    CIMType getType() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstParameter& x) const;
    CIMParameter clone() const;

private:
    CIMParameterRep* _rep;
    friend class CIMParameter;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
