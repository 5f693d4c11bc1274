// CIMKeyBinding: one key property of an instance path, as text with a type.
// CIMObjectPath: the path of a class or instance:
//   [//host/][namespace:]className[.key=value{,key=value}]
//
// Both are plain values (copies are independent and may be used in
// different threads; one object must not be changed by two threads at once). Key bindings of a path are
// always kept sorted by name (ignoring case), and the text of every
// REFERENCE key is kept in the canonical form of the path it holds.
#ifndef Pegasus_CIMObjectPath_h
#define Pegasus_CIMObjectPath_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class CIMValue;

class PEGASUS_COMMON_LINKAGE CIMKeyBinding
{
public:
    enum Type
    {
        BOOLEAN = 0,
        STRING = 1,
        NUMERIC = 2,
        REFERENCE = 3
    };

    // Empty name and value; the type is STRING.
    CIMKeyBinding();
    CIMKeyBinding(const CIMKeyBinding& x);
    // Takes over x's name and value; x is left empty.
    CIMKeyBinding(CIMKeyBinding&& x) noexcept;
    // The value is not checked against the type.
    CIMKeyBinding(const CIMName& name, const String& value, Type type);
    // The value's text (toString()) with the type it implies: boolean ->
    // BOOLEAN; char16, string and datetime -> STRING; reference ->
    // REFERENCE; other numbers -> NUMERIC. An array, object or instance
    // value throws TypeMismatchException.
    CIMKeyBinding(const CIMName& name, const CIMValue& value);
    ~CIMKeyBinding();

    CIMKeyBinding& operator=(const CIMKeyBinding& x);
    CIMKeyBinding& operator=(CIMKeyBinding&& x) noexcept;

    const CIMName& getName() const;
    void setName(const CIMName& name);
    const String& getValue() const;
    void setValue(const String& value);
    Type getType() const;
    void setType(Type type);

    // Does this key hold the given typed value? False when the value is
    // null, an array, or of a type that does not fit the key's type.
    Boolean equal(CIMValue value);

private:
    CIMName _name;
    String _value;
    Type _type;
};

// Names equal ignoring case and types equal; then REFERENCE values compare
// as paths (identical; exact text when one does not parse), BOOLEAN values
// ignoring case, NUMERIC values as integers (exact text when they do not
// parse), STRING values exactly.
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y);

class PEGASUS_COMMON_LINKAGE CIMObjectPath
{
public:
    // No host, null namespace, null class name, no keys.
    CIMObjectPath();
    CIMObjectPath(const CIMObjectPath& x);
    // Takes over x's parts; x is left as if cleared.
    CIMObjectPath(CIMObjectPath&& x) noexcept;
    // Parses objectName; malformed text throws MalformedObjectNameException.
    CIMObjectPath(const String& objectName);
    CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
        const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    ~CIMObjectPath();

    CIMObjectPath& operator=(const CIMObjectPath& x);
    CIMObjectPath& operator=(CIMObjectPath&& x) noexcept;
    CIMObjectPath& operator=(const String& objectName);

    void clear();

    // A non-empty host must be valid; a REFERENCE key whose value is not a
    // path throws. Both throw MalformedObjectNameException, and the path
    // is then left unchanged.
    void set(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
        const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    void set(const String& objectName);

    const String& getHost() const;
    // Accepts "", this system's host name, or a valid host name, IPv4
    // address or bracketed IPv6 address, each with an optional ":port".
    // Anything else throws MalformedObjectNameException.
    void setHost(const String& host);
    const CIMNamespaceName& getNameSpace() const;
    void setNameSpace(const CIMNamespaceName& nameSpace);
    const CIMName& getClassName() const;
    void setClassName(const CIMName& className);
    // Sorted by name, ignoring case.
    const Array<CIMKeyBinding>& getKeyBindings() const;
    // Sorts the keys and normalises REFERENCE values (see set()).
    void setKeyBindings(const Array<CIMKeyBinding>& keyBindings);

    // "//host/" if there is a host; "namespace:" if there is a namespace or
    // a host; the class name; ".k=v,..." in key order, STRING and
    // REFERENCE values quoted with '\' and '"' escaped.
    String toString() const;

    // Same object: host, namespace and class name equal ignoring case and
    // the key bindings pairwise equal (see CIMKeyBinding's operator==).
    Boolean identical(const CIMObjectPath& x) const;
    Uint32 makeHashCode() const;

private:
    String _host;
    CIMNamespaceName _nameSpace;
    CIMName _className;
    Array<CIMKeyBinding> _keyBindings;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y);

PEGASUS_NAMESPACE_END

#endif
