// CIMPropertyList: the property list of a request. Value semantics.
//
// A null list (the default) means "all properties"; a non-null list names
// the properties wanted and may be empty, meaning "no properties". Names
// compare without regard to case.
#ifndef Pegasus_CIMPropertyList_h
#define Pegasus_CIMPropertyList_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>

PEGASUS_NAMESPACE_BEGIN

class CIMPropertyListRep;

class PEGASUS_COMMON_LINKAGE CIMPropertyList
{
public:
    // A null list.
    CIMPropertyList();
    CIMPropertyList(const CIMPropertyList& x);
    // A non-null list, even when `propertyNames` is empty. A null name
    // throws UninitializedObjectException.
    CIMPropertyList(const Array<CIMName>& propertyNames);
    ~CIMPropertyList();
    CIMPropertyList& operator=(const CIMPropertyList& x);

    // Makes the list non-null with these names (same checks as the
    // constructor; on a throw the list is unchanged).
    void set(const Array<CIMName>& propertyNames);
    // Back to a null list.
    void clear();

    Boolean isNull() const;
    Uint32 size() const;
    // Bad index throws IndexOutOfBoundsException.
    const CIMName& operator[](Uint32 index) const;
    Array<CIMName> getPropertyNameArray() const;

    // Case-insensitive membership; a null list contains nothing.
    Boolean contains(const CIMName& name) const;
    // True when the list is null or contains `name`.
    Boolean useThisProperty(const CIMName& name) const;

    // Appends each text as a property name; the list becomes non-null even
    // when `propertyListArray` is empty. An illegal name throws
    // InvalidNameException and leaves the list unchanged.
    void append(Array<String>& propertyListArray);

    // Name tags: numbers a caller (usually a server matching the list
    // against a class) attaches to the names in order. The list only keeps
    // them: getCIMNameTag(i) returns the i-th appended tag, a bad index
    // throws IndexOutOfBoundsException; set() and clear() drop all tags.
    Uint32 getCIMNameTag(Uint32 index) const;
    void appendCIMNameTag(Uint32 nameTag);

    // "NULL" for a null list, "EMPTY" for an empty one, else the names
    // separated by ", ".
    String toString() const;

private:
    CIMPropertyListRep* _rep;
};

PEGASUS_NAMESPACE_END

#endif
