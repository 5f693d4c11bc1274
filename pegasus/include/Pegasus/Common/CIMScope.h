// CIMScope: the set of element kinds a qualifier declaration may be applied
// to (class, association, indication, property, reference, method,
// parameter). A plain value: copies are independent.
#ifndef Pegasus_CIMScope_h
#define Pegasus_CIMScope_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMScope
{
public:
    // The empty set.
    CIMScope();
    CIMScope(const CIMScope& scope);
    CIMScope& operator=(const CIMScope& scope);

    void addScope(const CIMScope& scope);
    void removeScope(const CIMScope& scope);
    // True when every kind of `scope` is present.
    Boolean hasScope(const CIMScope& scope) const;
    Boolean equal(const CIMScope& scope) const;
    CIMScope operator+(const CIMScope& scope) const;
    // The kinds present in MOF spelling separated by one blank, "ANY" when
    // all of them are; "" for the empty set.
    String toString() const;

    static const CIMScope NONE;
    static const CIMScope CLASS;
    static const CIMScope ASSOCIATION;
    static const CIMScope INDICATION;
    static const CIMScope PROPERTY;
    static const CIMScope REFERENCE;
    static const CIMScope METHOD;
    static const CIMScope PARAMETER;
    static const CIMScope ANY;

private:
    constexpr explicit CIMScope(Uint32 bits) : _bits(bits) {}
    Uint32 _bits;
};

PEGASUS_NAMESPACE_END

#endif
