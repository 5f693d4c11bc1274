// CIMClass, CIMConstClass: a CIM class declaration (superclass, qualifiers,
// properties with their default values, methods).
//
// Reference handles: copies share one class; clone() makes an independent
// deep copy. A default-constructed handle is uninitialized: every member
// except isUninitialized(), assignment and destruction throws
// UninitializedObjectException. The rules of the members shared with
// CIMObject (path, properties, qualifiers) are stated in CIMObject.h; the
// method members follow the same rules. Reference counts are atomic.
// A class kept in a shared cache should be handed out as clone() or treated
// as read-only, since every holder of a copy sees every change.
#ifndef Pegasus_CIMClass_h
#define Pegasus_CIMClass_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMClass
{
public:
    CIMClass();
    CIMClass(const CIMClass& x);
    // Takes over x's object; x is left uninitialized.
    CIMClass(CIMClass&& x) noexcept;
    // Shares the object; throws DynamicCastFailedException when it is an
    // instance (an uninitialized object gives an uninitialized class).
    explicit CIMClass(const CIMObject& x);
    // A null class name throws UninitializedObjectException. The path names
    // only the class.
    CIMClass(const CIMName& className, const CIMName& superClassName = CIMName());
    ~CIMClass();
    CIMClass& operator=(const CIMClass& x);
    CIMClass& operator=(CIMClass&& x) noexcept;

    // True when the class carries the qualifier Association (or Abstract)
    // with the boolean value true.
    Boolean isAssociation() const;
    Boolean isAbstract() const;

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);
    const CIMName& getSuperClassName() const;
    void setSuperClassName(const CIMName& superClassName);

    CIMClass& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    CIMClass& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMClass& addMethod(const CIMMethod& x);
    Uint32 findMethod(const CIMName& name) const;
    CIMMethod getMethod(Uint32 index);
    CIMConstMethod getMethod(Uint32 index) const;
    void removeMethod(Uint32 index);
    Uint32 getMethodCount() const;

    // Replaces `keyNames` with the names of the key properties (qualifier
    // Key with the value true), in property order.
    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;

    Boolean isUninitialized() const;
    // Same class name, superclass, path, qualifiers, properties and methods
    // (in order).
    Boolean identical(const CIMConstClass& x) const;
    CIMClass clone() const;

    // A new, independent instance of this class: its path names only the
    // class (no host, namespace or keys). It receives a copy of each
    // property of the class in class order, or only of those named in a
    // non-null propertyList (ignoring case; a non-null empty list gives no
    // properties), each with the class's default value, so its declared
    // type and array-ness. Name, array size, reference class and the
    // propagated flag are copied; qualifiers (of the class and of each
    // property) only with includeQualifiers; class origins only with
    // includeClassOrigin.
    CIMInstance buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) const;

private:
    explicit CIMClass(CIMObjectRep* rep);
    CIMObjectRep* _rep;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class CIMConstClass;
    friend struct CIMHandleAccess;
};

// Read-only view of a class; converts implicitly from CIMClass and shares
// its representation.
class PEGASUS_COMMON_LINKAGE CIMConstClass
{
public:
    CIMConstClass();
    CIMConstClass(const CIMConstClass& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstClass(CIMConstClass&& x) noexcept;
    CIMConstClass(const CIMClass& x);
    // Both throw DynamicCastFailedException when the object is an instance.
    explicit CIMConstClass(const CIMObject& x);
    explicit CIMConstClass(const CIMConstObject& x);
    CIMConstClass(const CIMName& className, const CIMName& superClassName = CIMName());
    ~CIMConstClass();
    CIMConstClass& operator=(const CIMConstClass& x);
    CIMConstClass& operator=(CIMConstClass&& x) noexcept;
    CIMConstClass& operator=(const CIMClass& x);

    Boolean isAssociation() const;
    Boolean isAbstract() const;
    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    const CIMName& getSuperClassName() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    Uint32 findMethod(const CIMName& name) const;
    CIMConstMethod getMethod(Uint32 index) const;
    Uint32 getMethodCount() const;

    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstClass& x) const;
    CIMClass clone() const;

    CIMInstance buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) const;

private:
    CIMObjectRep* _rep;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class CIMClass;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
