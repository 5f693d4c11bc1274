#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class CIMPropertyListRep
{
public:
    Boolean isNull = true;
    Array<CIMName> names;
    Array<Uint32> tags;
};

namespace
{
void requireNonNullNames(const Array<CIMName>& names)
{
    for (Uint32 i = 0; i < names.size(); ++i)
    {
        if (names[i].isNull())
            throw UninitializedObjectException();
    }
}
}  // namespace

CIMPropertyList::CIMPropertyList() : _rep(new CIMPropertyListRep) {}

CIMPropertyList::CIMPropertyList(const CIMPropertyList& x) : _rep(new CIMPropertyListRep(*x._rep)) {}

CIMPropertyList::CIMPropertyList(const Array<CIMName>& propertyNames) : _rep(new CIMPropertyListRep)
{
    try
    {
        set(propertyNames);
    }
    catch (...)
    {
        delete _rep;
        throw;
    }
}

CIMPropertyList::~CIMPropertyList()
{
    delete _rep;
}

CIMPropertyList& CIMPropertyList::operator=(const CIMPropertyList& x)
{
    if (this != &x)
        *_rep = *x._rep;
    return *this;
}

void CIMPropertyList::set(const Array<CIMName>& propertyNames)
{
    requireNonNullNames(propertyNames);
    _rep->isNull = false;
    _rep->names = propertyNames;
    _rep->tags.clear();
}

void CIMPropertyList::clear()
{
    _rep->isNull = true;
    _rep->names.clear();
    _rep->tags.clear();
}

Boolean CIMPropertyList::isNull() const
{
    return _rep->isNull;
}

Uint32 CIMPropertyList::size() const
{
    return _rep->names.size();
}

const CIMName& CIMPropertyList::operator[](Uint32 index) const
{
    const Array<CIMName>& names = _rep->names;
    return names[index];
}

Array<CIMName> CIMPropertyList::getPropertyNameArray() const
{
    return _rep->names;
}

Boolean CIMPropertyList::contains(const CIMName& name) const
{
    for (Uint32 i = 0; i < _rep->names.size(); ++i)
    {
        const Array<CIMName>& names = _rep->names;
        if (names[i].equal(name))
            return true;
    }
    return false;
}

Boolean CIMPropertyList::useThisProperty(const CIMName& name) const
{
    return _rep->isNull || contains(name);
}

void CIMPropertyList::append(Array<String>& propertyListArray)
{
    // Convert first so that an illegal name leaves the list as it was.
    Array<CIMName> added;
    for (Uint32 i = 0; i < propertyListArray.size(); ++i)
        added.append(CIMName(propertyListArray[i]));
    _rep->names.appendArray(added);
    _rep->isNull = false;
}

Uint32 CIMPropertyList::getCIMNameTag(Uint32 index) const
{
    const Array<Uint32>& tags = _rep->tags;
    return tags[index];
}

void CIMPropertyList::appendCIMNameTag(Uint32 nameTag)
{
    _rep->tags.append(nameTag);
}

String CIMPropertyList::toString() const
{
    if (_rep->isNull)
        return String("NULL");
    if (_rep->names.size() == 0)
        return String("EMPTY");
    String text;
    const Array<CIMName>& names = _rep->names;
    for (Uint32 i = 0; i < names.size(); ++i)
    {
        if (i != 0)
            text.append(String(", "));
        text.append(names[i].getString());
    }
    return text;
}

PEGASUS_NAMESPACE_END
