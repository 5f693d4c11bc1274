// CIMName: the name of a class, property, method, parameter or qualifier.
// CIMNamespaceName: a namespace such as "root/cimv2".
//
// Both are plain values. Comparisons ignore ASCII case. Construction from
// text validates it; the default-constructed value is null.
#ifndef Pegasus_CIMName_h
#define Pegasus_CIMName_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMName
{
public:
    CIMName();
    CIMName(const CIMName& name) : cimName(name.cimName) {}
    // Takes over name's text; name is left null.
    CIMName(CIMName&& name) noexcept : cimName(static_cast<String&&>(name.cimName)) {}
    // An illegal name, including "", throws InvalidNameException.
    CIMName(const String& name);
    CIMName(const char* name);

    CIMName& operator=(const CIMName& name);
    CIMName& operator=(CIMName&& name) noexcept;
    // Validates like the constructor.
    CIMName& operator=(const String& name);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    CIMName& operator=(const char* name);
#endif

    const String& getString() const
    {
        return cimName;
    }
    Boolean isNull() const
    {
        return cimName.size() == 0;
    }
    void clear();

    // Case-insensitive (ASCII letters).
    Boolean equal(const CIMName& name) const;
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Boolean equal(const char* name) const;
#endif

    // First unit: ASCII letter, '_' or U+0080..U+FFEF; the others may also
    // be ASCII digits. The empty string is not legal.
    static Boolean legal(const String& name);

private:
    String cimName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const CIMName& name2);

class PEGASUS_COMMON_LINKAGE CIMNamespaceName
{
public:
    CIMNamespaceName();
    CIMNamespaceName(const CIMNamespaceName& name) : cimNamespaceName(name.cimNamespaceName) {}
    // Takes over name's text; name is left null.
    CIMNamespaceName(CIMNamespaceName&& name) noexcept
        : cimNamespaceName(static_cast<String&&>(name.cimNamespaceName))
    {}
    // One or more legal names separated by '/', optionally with a leading
    // '/' that is not stored. Anything else, including "", throws
    // InvalidNamespaceNameException.
    CIMNamespaceName(const String& name);
    CIMNamespaceName(const char* name);

    CIMNamespaceName& operator=(const CIMNamespaceName& name);
    CIMNamespaceName& operator=(CIMNamespaceName&& name) noexcept;
    CIMNamespaceName& operator=(const String& name);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    CIMNamespaceName& operator=(const char* name);
#endif

    const String& getString() const
    {
        return cimNamespaceName;
    }
    Boolean isNull() const
    {
        return cimNamespaceName.size() == 0;
    }
    void clear();

    // Case-insensitive (ASCII letters).
    Boolean equal(const CIMNamespaceName& name) const;
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Boolean equal(const char* name) const;
#endif

    static Boolean legal(const String& name);

private:
    String cimNamespaceName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2);

PEGASUS_NAMESPACE_END

#endif
