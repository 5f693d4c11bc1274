// CIMInstance, CIMConstInstance: an instance of a CIM class.
//
// Reference handles: copies share one instance (a change or removeProperty
// through one copy is seen by all); clone() makes an independent deep copy.
// A default-constructed handle is uninitialized: every member except
// isUninitialized(), assignment and destruction throws
// UninitializedObjectException. The rules of the members shared with
// CIMObject (path, properties, qualifiers) are stated in CIMObject.h.
// Reference counts are atomic.
#ifndef Pegasus_CIMInstance_h
#define Pegasus_CIMInstance_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMObject.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMInstance
{
public:
    CIMInstance();
    CIMInstance(const CIMInstance& x);
    // Takes over x's object; x is left uninitialized.
    CIMInstance(CIMInstance&& x) noexcept;
    // Shares the object; throws DynamicCastFailedException when it is a
    // class (an uninitialized object gives an uninitialized instance).
    explicit CIMInstance(const CIMObject& x);
    // An instance without properties whose path names only the class; a
    // null class name throws UninitializedObjectException.
    CIMInstance(const CIMName& className);
    ~CIMInstance();
    CIMInstance& operator=(const CIMInstance& x);
    CIMInstance& operator=(CIMInstance&& x) noexcept;

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);

    CIMInstance& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    CIMInstance& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    // A path with this instance's class name and one key per key property
    // of `cimClass` (properties qualified Key), valued from this instance;
    // host and namespace are empty. A key property missing from the
    // instance throws NoSuchProperty.
    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;

    Boolean isUninitialized() const;
    // Same class name, path, qualifiers and properties (in order).
    Boolean identical(const CIMConstInstance& x) const;
    CIMInstance clone() const;

    // Removes the properties not named in a non-null list (ignoring case; a
    // non-null empty list removes all of them), clears class origins unless
    // includeClassOrigin, and removes the qualifiers of the instance and its
    // properties unless includeQualifiers.
    void instanceFilter(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    // Same as instanceFilter. Always declared and always effective, so
    // providers that call it really return only the requested properties.
    void filter(Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

private:
    explicit CIMInstance(CIMObjectRep* rep);
    CIMObjectRep* _rep;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMConstInstance;
    friend class CIMClass;
    friend class CIMConstClass;
    friend struct CIMHandleAccess;
};

// Read-only view of an instance; converts implicitly from CIMInstance and
// shares its representation.
class PEGASUS_COMMON_LINKAGE CIMConstInstance
{
public:
    CIMConstInstance();
    CIMConstInstance(const CIMConstInstance& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstInstance(CIMConstInstance&& x) noexcept;
    CIMConstInstance(const CIMInstance& x);
    // Both throw DynamicCastFailedException when the object is a class.
    explicit CIMConstInstance(const CIMObject& x);
    explicit CIMConstInstance(const CIMConstObject& x);
    CIMConstInstance(const CIMName& className);
    ~CIMConstInstance();
    CIMConstInstance& operator=(const CIMConstInstance& x);
    CIMConstInstance& operator=(CIMConstInstance&& x) noexcept;
    CIMConstInstance& operator=(const CIMInstance& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;

    Boolean isUninitialized() const;
    Boolean identical(const CIMConstInstance& x) const;
    CIMInstance clone() const;

private:
    CIMObjectRep* _rep;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMInstance;
    friend class CIMClass;
    friend class CIMConstClass;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
