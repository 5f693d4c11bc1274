// CIMQualifierDecl, CIMConstQualifierDecl: the declaration of a qualifier
// (name, type and default value, the scopes it may be applied to, its
// default flavor), as a MOF compiler or class store keeps them.
//
// Reference handles with the same rules as CIMQualifier: copies share,
// clone() is deep, an uninitialized handle throws
// UninitializedObjectException from every member except isUninitialized(),
// assignment and destruction.
#ifndef Pegasus_CIMQualifierDecl_h
#define Pegasus_CIMQualifierDecl_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMValue;
class CIMQualifierDecl;
class CIMConstQualifierDecl;
class CIMQualifierDeclRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMQualifierDecl
{
public:
    CIMQualifierDecl();
    CIMQualifierDecl(const CIMQualifierDecl& x);
    // Takes over x's object; x is left uninitialized.
    CIMQualifierDecl(CIMQualifierDecl&& x) noexcept;
    // The type comes from `value`. A null name throws
    // UninitializedObjectException; a non-zero arraySize with a scalar
    // value, or with an array value of another size, throws
    // TypeMismatchException.
    CIMQualifierDecl(const CIMName& name, const CIMValue& value, const CIMScope& scope,
        const CIMFlavor& flavor = CIMFlavor::DEFAULTS, Uint32 arraySize = 0);
    ~CIMQualifierDecl();
    CIMQualifierDecl& operator=(const CIMQualifierDecl& x);
    CIMQualifierDecl& operator=(CIMQualifierDecl&& x) noexcept;

    const CIMName& getName() const;
    void setName(const CIMName& name);
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    // Replaces the default value (and with it the type).
    void setValue(const CIMValue& value);
    const CIMScope& getScope() const;
    const CIMFlavor& getFlavor() const;
    // Fixed array size, 0 for a scalar or a variable-length array.
    Uint32 getArraySize() const;

    Boolean isUninitialized() const;
    // Same name (ignoring case), value, scope, flavor and array size.
    Boolean identical(const CIMConstQualifierDecl& x) const;
    CIMQualifierDecl clone() const;

private:
    explicit CIMQualifierDecl(CIMQualifierDeclRep* rep);
    CIMQualifierDeclRep* _rep;
    friend class CIMConstQualifierDecl;
    friend struct CIMHandleAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstQualifierDecl
{
public:
    CIMConstQualifierDecl();
    CIMConstQualifierDecl(const CIMConstQualifierDecl& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstQualifierDecl(CIMConstQualifierDecl&& x) noexcept;
    CIMConstQualifierDecl(const CIMQualifierDecl& x);
    CIMConstQualifierDecl(const CIMName& name, const CIMValue& value, const CIMScope& scope,
        const CIMFlavor& flavor = CIMFlavor::DEFAULTS, Uint32 arraySize = 0);
    ~CIMConstQualifierDecl();
    CIMConstQualifierDecl& operator=(const CIMConstQualifierDecl& x);
    CIMConstQualifierDecl& operator=(CIMConstQualifierDecl&& x) noexcept;
    CIMConstQualifierDecl& operator=(const CIMQualifierDecl& x);

    const CIMName& getName() const;
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    const CIMScope& getScope() const;
    const CIMFlavor& getFlavor() const;
    Uint32 getArraySize() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifierDecl& x) const;
    CIMQualifierDecl clone() const;

private:
    CIMQualifierDeclRep* _rep;
    friend class CIMQualifierDecl;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
