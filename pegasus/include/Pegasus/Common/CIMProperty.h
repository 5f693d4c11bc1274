// CIMProperty, CIMConstProperty: a named, typed value of a class or
// instance, with its qualifiers.
//
// Reference handles: copies share one property, so a change made through
// any copy is seen by all (a property taken from an instance with
// getProperty writes through into that instance); clone() makes an
// independent deep copy. A default-constructed handle is uninitialized:
// every member except isUninitialized(), assignment and destruction throws
// UninitializedObjectException. Reference counts are atomic, so handles may
// be copied and destroyed on several threads at once; changing one shared
// property from several threads needs the caller's own locking.
#ifndef Pegasus_CIMProperty_h
#define Pegasus_CIMProperty_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMValue;
class CIMProperty;
class CIMConstProperty;
class CIMPropertyRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMProperty
{
public:
    CIMProperty();
    CIMProperty(const CIMProperty& x);
    // Takes over x's object; x is left uninitialized.
    CIMProperty(CIMProperty&& x) noexcept;
    // The property's type and array-ness come from `value` and stay fixed.
    // Throws UninitializedObjectException for a null name and
    // TypeMismatchException for a reference array, for a non-null
    // referenceClassName on a non-reference value, and for a non-zero
    // arraySize that the value contradicts (a scalar, or a non-null array of
    // another size).
    CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName(), const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMProperty();
    CIMProperty& operator=(const CIMProperty& x);
    CIMProperty& operator=(CIMProperty&& x) noexcept;

    const CIMName& getName() const;
    // Throws Exception when the property already belongs to a class or
    // instance (their name lookup would go stale); a null name throws
    // UninitializedObjectException.
    void setName(const CIMName& name);
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    // The value must have the property's type and array-ness (null values
    // included), else TypeMismatchException.
    void setValue(const CIMValue& value);
    // Declared fixed size of an array property; 0 for scalars and
    // variable-length arrays.
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    void setClassOrigin(const CIMName& classOrigin);
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    // Qualifiers keep their insertion order. addQualifier throws
    // UninitializedObjectException for an uninitialized qualifier and
    // AlreadyExistsException for a second one of the same name (ignoring
    // case); findQualifier returns PEG_NOT_FOUND when absent; a bad index
    // throws IndexOutOfBoundsException.
    CIMProperty& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    Boolean isUninitialized() const;
    // Same name (ignoring case), value, array size, reference class and
    // qualifiers. Class origin and the propagated flag are bookkeeping and
    // not compared.
    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;

private:
    explicit CIMProperty(CIMPropertyRep* rep);
    CIMPropertyRep* _rep;
    friend class CIMConstProperty;
    friend struct CIMHandleAccess;
};

// Read-only view of a property; converts implicitly from CIMProperty and
// shares its representation.
class PEGASUS_COMMON_LINKAGE CIMConstProperty
{
public:
    CIMConstProperty();
    CIMConstProperty(const CIMConstProperty& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstProperty(CIMConstProperty&& x) noexcept;
    CIMConstProperty(const CIMProperty& x);
    CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
        const CIMName& referenceClassName = CIMName(), const CIMName& classOrigin = CIMName(),
        Boolean propagated = false);
    ~CIMConstProperty();
    CIMConstProperty& operator=(const CIMConstProperty& x);
    CIMConstProperty& operator=(CIMConstProperty&& x) noexcept;
    CIMConstProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    Boolean getPropagated() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;

private:
    CIMPropertyRep* _rep;
    friend class CIMProperty;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
