// CIMQualifier, CIMConstQualifier: a named, typed value attached to a class,
// instance, property, method or parameter, with its flavor.
//
// Both are reference handles: copies share one qualifier, so a change made
// through one copy is seen by all; clone() makes an independent deep copy.
// A default-constructed handle is uninitialized: every member except
// isUninitialized(), assignment and destruction throws
// UninitializedObjectException. Handles may be copied and destroyed on
// several threads at once; changing one shared qualifier from several
// threads needs the caller's own locking.
#ifndef Pegasus_CIMQualifier_h
#define Pegasus_CIMQualifier_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMValue;
class CIMQualifier;
class CIMConstQualifier;
class CIMQualifierRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMQualifier
{
public:
    CIMQualifier();
    CIMQualifier(const CIMQualifier& x);
    // Takes over x's object; x is left uninitialized.
    CIMQualifier(CIMQualifier&& x) noexcept;
    // A null name throws UninitializedObjectException.
    CIMQualifier(const CIMName& name, const CIMValue& value, const CIMFlavor& flavor = CIMFlavor(),
        Boolean propagated = false);
    ~CIMQualifier();
    CIMQualifier& operator=(const CIMQualifier& x);
    CIMQualifier& operator=(CIMQualifier&& x) noexcept;

    const CIMName& getName() const;
    // Renaming a qualifier that belongs to an element throws Exception: the
    // element's name lookup would silently go stale.
    void setName(const CIMName& name);
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    void setValue(const CIMValue& value);
    // setFlavor adds the given flavors to those present; unsetFlavor
    // removes them.
    void setFlavor(const CIMFlavor& flavor);
    void unsetFlavor(const CIMFlavor& flavor);
    const CIMFlavor& getFlavor() const;
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    Boolean isUninitialized() const;
    // Same name (ignoring case), value and flavor.
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    explicit CIMQualifier(CIMQualifierRep* rep);
    CIMQualifierRep* _rep;
    friend class CIMConstQualifier;
    friend struct CIMHandleAccess;
};

// Read-only view of a qualifier; converts implicitly from CIMQualifier and
// shares its representation.
class PEGASUS_COMMON_LINKAGE CIMConstQualifier
{
public:
    CIMConstQualifier();
    CIMConstQualifier(const CIMConstQualifier& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstQualifier(CIMConstQualifier&& x) noexcept;
    CIMConstQualifier(const CIMQualifier& x);
    CIMConstQualifier(const CIMName& name, const CIMValue& value, const CIMFlavor& flavor = CIMFlavor(),
        Boolean propagated = false);
    ~CIMConstQualifier();
    CIMConstQualifier& operator=(const CIMConstQualifier& x);
    CIMConstQualifier& operator=(CIMConstQualifier&& x) noexcept;
    CIMConstQualifier& operator=(const CIMQualifier& x);

    const CIMName& getName() const;
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    const CIMFlavor& getFlavor() const;
    Boolean getPropagated() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    CIMQualifierRep* _rep;
    friend class CIMQualifier;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
