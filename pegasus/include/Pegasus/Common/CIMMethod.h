// CIMMethod, CIMConstMethod: the declaration of a class's extrinsic method
// (name, return type, parameters in order, qualifiers, class origin).
//
// Reference handles: copies share, clone() is deep, an uninitialized handle
// throws UninitializedObjectException from every member except
// isUninitialized(), assignment and destruction. Reference counts are
// atomic.
#ifndef Pegasus_CIMMethod_h
#define Pegasus_CIMMethod_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMMethod;
class CIMConstMethod;
class CIMMethodRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMParameter.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMMethod
{
public:
    CIMMethod();
    CIMMethod(const CIMMethod& x);
    // Takes over x's object; x is left uninitialized.
    CIMMethod(CIMMethod&& x) noexcept;
    // A null name throws UninitializedObjectException.
    CIMMethod(const CIMName& name, CIMType type, const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMMethod();
    CIMMethod& operator=(const CIMMethod& x);
    CIMMethod& operator=(CIMMethod&& x) noexcept;

    const CIMName& getName() const;
    // Throws Exception when the method already belongs to a class.
    void setName(const CIMName& name);
    CIMType getType() const;
    void setType(CIMType type);
    const CIMName& getClassOrigin() const;
    void setClassOrigin(const CIMName& classOrigin);
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    // Same contract as the qualifier members of CIMProperty.
    CIMMethod& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    // Parameters keep their declaration order. addParameter throws
    // UninitializedObjectException for an uninitialized parameter and
    // AlreadyExistsException for a second one of the same name (ignoring
    // case); findParameter returns PEG_NOT_FOUND when absent; a bad index
    // throws IndexOutOfBoundsException. getParameter shares the stored
    // parameter.
    CIMMethod& addParameter(const CIMParameter& x);
    Uint32 findParameter(const CIMName& name) const;
    CIMParameter getParameter(Uint32 index);
    CIMConstParameter getParameter(Uint32 index) const;
    void removeParameter(Uint32 index);
    Uint32 getParameterCount() const;

    Boolean isUninitialized() const;
    // Same name (ignoring case), type, qualifiers and parameters (in order).
    Boolean identical(const CIMConstMethod& x) const;
    CIMMethod clone() const;

private:
    explicit CIMMethod(CIMMethodRep* rep);
    CIMMethodRep* _rep;
    friend class CIMConstMethod;
    friend struct CIMHandleAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstMethod
{
public:
    CIMConstMethod();
    CIMConstMethod(const CIMConstMethod& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstMethod(CIMConstMethod&& x) noexcept;
    CIMConstMethod(const CIMMethod& x);
    CIMConstMethod(const CIMName& name, CIMType type, const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMConstMethod();
    CIMConstMethod& operator=(const CIMConstMethod& x);
    CIMConstMethod& operator=(CIMConstMethod&& x) noexcept;
    CIMConstMethod& operator=(const CIMMethod& x);

    const CIMName& getName() const;
    CIMType getType() const;
    const CIMName& getClassOrigin() const;
    Boolean getPropagated() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findParameter(const CIMName& name) const;
    CIMConstParameter getParameter(Uint32 index) const;
    Uint32 getParameterCount() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstMethod& x) const;
    CIMMethod clone() const;

private:
    CIMMethodRep* _rep;
    friend class CIMMethod;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
