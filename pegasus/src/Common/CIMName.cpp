#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/CIMName.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

inline bool isAsciiLetter(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

inline bool isNameStart(Uint16 c)
{
    return isAsciiLetter(c) || c == '_' || (c >= 0x0080 && c <= 0xFFEF);
}

inline bool isNameChar(Uint16 c)
{
    return isNameStart(c) || (c >= '0' && c <= '9');
}

// Is s[begin, end) a legal CIM name?
bool legalName(const String& s, Uint32 begin, Uint32 end)
{
    if (begin >= end)
        return false;
    const Char16* p = s.getChar16Data();
    if (!isNameStart(p[begin]))
        return false;
    for (Uint32 i = begin + 1; i < end; i++)
        if (!isNameChar(p[i]))
            return false;
    return true;
}

}  // namespace

//
// CIMName
//

CIMName::CIMName() {}

CIMName::CIMName(const String& name) : cimName(name)
{
    if (!legal(name))
        throw InvalidNameException(name);
}

CIMName::CIMName(const char* name) : cimName(name)
{
    if (!legal(cimName))
        throw InvalidNameException(cimName);
}

CIMName& CIMName::operator=(const CIMName& name)
{
    cimName = name.cimName;
    return *this;
}

CIMName& CIMName::operator=(CIMName&& name) noexcept
{
    cimName = static_cast<String&&>(name.cimName);
    return *this;
}

CIMName& CIMName::operator=(const String& name)
{
    if (!legal(name))
        throw InvalidNameException(name);
    cimName = name;
    return *this;
}

CIMName& CIMName::operator=(const char* name)
{
    return *this = String(name);
}

void CIMName::clear()
{
    cimName.clear();
}

Boolean CIMName::equal(const CIMName& name) const
{
    return String::equalNoCase(cimName, name.cimName);
}

Boolean CIMName::equal(const char* name) const
{
    return String::equalNoCase(cimName, String(name));
}

Boolean CIMName::legal(const String& name)
{
    return legalName(name, 0, name.size());
}

Boolean operator==(const CIMName& name1, const CIMName& name2)
{
    return name1.equal(name2);
}

Boolean operator!=(const CIMName& name1, const CIMName& name2)
{
    return !name1.equal(name2);
}

//
// CIMNamespaceName
//

namespace
{

// The stored form of a namespace name: without its leading '/'.
String storedNamespace(const String& name)
{
    if (!CIMNamespaceName::legal(name))
        throw InvalidNamespaceNameException(name);
    if (name[0] == '/')
        return name.subString(1);
    return name;
}

}  // namespace

CIMNamespaceName::CIMNamespaceName() {}

CIMNamespaceName::CIMNamespaceName(const String& name) : cimNamespaceName(storedNamespace(name)) {}

CIMNamespaceName::CIMNamespaceName(const char* name) : CIMNamespaceName(String(name)) {}

CIMNamespaceName& CIMNamespaceName::operator=(const CIMNamespaceName& name)
{
    cimNamespaceName = name.cimNamespaceName;
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(CIMNamespaceName&& name) noexcept
{
    cimNamespaceName = static_cast<String&&>(name.cimNamespaceName);
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(const String& name)
{
    cimNamespaceName = storedNamespace(name);
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(const char* name)
{
    return *this = String(name);
}

void CIMNamespaceName::clear()
{
    cimNamespaceName.clear();
}

Boolean CIMNamespaceName::equal(const CIMNamespaceName& name) const
{
    return String::equalNoCase(cimNamespaceName, name.cimNamespaceName);
}

Boolean CIMNamespaceName::equal(const char* name) const
{
    return equal(CIMNamespaceName(name));
}

Boolean CIMNamespaceName::legal(const String& name)
{
    Uint32 n = name.size();
    Uint32 start = (n > 0 && name[0] == '/') ? 1 : 0;
    if (start >= n)
        return false;
    while (true)
    {
        Uint32 slash = name.find(start, Char16('/'));
        Uint32 end = slash == PEG_NOT_FOUND ? n : slash;
        if (!legalName(name, start, end))
            return false;
        if (slash == PEG_NOT_FOUND)
            return true;
        start = slash + 1;
    }
}

Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return name1.equal(name2);
}

Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return !name1.equal(name2);
}

PEGASUS_NAMESPACE_END
