// CIMObject, CIMConstObject: a handle to either a class or an instance.
//
// CIMObject, CIMInstance and CIMClass (and their const forms) are reference
// handles onto one shared representation: copying a handle, or converting
// between these handle types, shares the object, so a change made through
// any of them is seen by all. clone() makes an independent deep copy. A
// default-constructed handle is uninitialized: every member except
// isUninitialized(), assignment and destruction throws
// UninitializedObjectException. Reference counts are atomic, so handles may
// be copied and destroyed on several threads at once; changing one shared
// object from several threads needs the caller's own locking.
//
// Members shared with CIMInstance and CIMClass:
// - getPath()/setPath(): the object's path as last set. setPath throws
//   UninitializedObjectException when the path has no class name and
//   TypeMismatchException when its class differs (ignoring case) from the
//   object's; host, namespace and keys are stored as given.
// - Properties keep their insertion order. addProperty throws
//   UninitializedObjectException for an uninitialized property and
//   AlreadyExistsException for a second one of the same name (ignoring
//   case); it stores the given handle, so the caller's handle stays shared
//   with the object. findProperty returns PEG_NOT_FOUND when absent.
//   getProperty returns a handle into the object; a bad index throws
//   IndexOutOfBoundsException, as does removeProperty, after which later
//   indexes shift down.
// - Qualifiers: the same rules as properties.
#ifndef Pegasus_CIMObject_h
#define Pegasus_CIMObject_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN
class CIMObject;
class CIMConstObject;
class CIMInstance;
class CIMConstInstance;
class CIMClass;
class CIMConstClass;
class CIMProperty;
class CIMConstProperty;
class CIMQualifier;
class CIMConstQualifier;
class CIMObjectPath;
class CIMObjectRep;
struct CIMHandleAccess;
PEGASUS_NAMESPACE_END

#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMObjectPath.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMObject
{
public:
    CIMObject();
    CIMObject(const CIMObject& x);
    // Takes over x's object; x is left uninitialized.
    CIMObject(CIMObject&& x) noexcept;
    // Both share the class's or instance's representation.
    CIMObject(const CIMClass& x);
    CIMObject(const CIMInstance& x);
    ~CIMObject();
    CIMObject& operator=(const CIMObject& x);
    CIMObject& operator=(CIMObject&& x) noexcept;

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);

    CIMObject& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    CIMObject& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    Boolean isUninitialized() const;
    Boolean isClass() const;
    Boolean isInstance() const;
    // Same kind, class name, path, qualifiers and properties (in order);
    // for classes also superclass and methods.
    Boolean identical(const CIMConstObject& x) const;
    CIMObject clone() const;
    // A MOF-like rendering of the object, meant for logs and diagnostics.
    String toString() const;

    // Removes the properties not named in a non-null list (ignoring case),
    // clears class origins unless includeClassOrigin, and removes the
    // qualifiers of the object and its properties unless includeQualifiers.
    void instanceFilter(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

private:
    explicit CIMObject(CIMObjectRep* rep);
    CIMObjectRep* _rep;
    friend class CIMConstObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class CIMClass;
    friend class CIMConstClass;
    friend struct CIMHandleAccess;
};

// Read-only view of a class or instance; converts implicitly from every
// object handle and shares its representation.
class PEGASUS_COMMON_LINKAGE CIMConstObject
{
public:
    CIMConstObject();
    CIMConstObject(const CIMConstObject& x);
    // Takes over x's object; x is left uninitialized.
    CIMConstObject(CIMConstObject&& x) noexcept;
    CIMConstObject(const CIMObject& x);
    CIMConstObject(const CIMClass& x);
    CIMConstObject(const CIMConstClass& x);
    CIMConstObject(const CIMInstance& x);
    CIMConstObject(const CIMConstInstance& x);
    ~CIMConstObject();
    CIMConstObject& operator=(const CIMConstObject& x);
    CIMConstObject& operator=(CIMConstObject&& x) noexcept;

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;

    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;

    Boolean isUninitialized() const;
    Boolean isClass() const;
    Boolean isInstance() const;
    Boolean identical(const CIMConstObject& x) const;
    CIMObject clone() const;
    String toString() const;

private:
    CIMObjectRep* _rep;
    friend class CIMObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend class CIMClass;
    friend class CIMConstClass;
    friend struct CIMHandleAccess;
};

PEGASUS_NAMESPACE_END

#endif
