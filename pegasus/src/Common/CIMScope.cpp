#include <Pegasus/Common/CIMScope.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
enum : Uint32
{
    CLASS_BIT = 1,
    ASSOCIATION_BIT = 2,
    INDICATION_BIT = 4,
    PROPERTY_BIT = 8,
    REFERENCE_BIT = 16,
    METHOD_BIT = 32,
    PARAMETER_BIT = 64,
    ALL_BITS = 127
};
}

const CIMScope CIMScope::NONE(0);
const CIMScope CIMScope::CLASS(CLASS_BIT);
const CIMScope CIMScope::ASSOCIATION(ASSOCIATION_BIT);
const CIMScope CIMScope::INDICATION(INDICATION_BIT);
const CIMScope CIMScope::PROPERTY(PROPERTY_BIT);
const CIMScope CIMScope::REFERENCE(REFERENCE_BIT);
const CIMScope CIMScope::METHOD(METHOD_BIT);
const CIMScope CIMScope::PARAMETER(PARAMETER_BIT);
const CIMScope CIMScope::ANY(ALL_BITS);

CIMScope::CIMScope() : _bits(0) {}
CIMScope::CIMScope(const CIMScope& scope) : _bits(scope._bits) {}

CIMScope& CIMScope::operator=(const CIMScope& scope)
{
    _bits = scope._bits;
    return *this;
}

void CIMScope::addScope(const CIMScope& scope)
{
    _bits |= scope._bits;
}

void CIMScope::removeScope(const CIMScope& scope)
{
    _bits &= ~scope._bits;
}

Boolean CIMScope::hasScope(const CIMScope& scope) const
{
    return (_bits & scope._bits) == scope._bits;
}

Boolean CIMScope::equal(const CIMScope& scope) const
{
    return _bits == scope._bits;
}

CIMScope CIMScope::operator+(const CIMScope& scope) const
{
    return CIMScope(_bits | scope._bits);
}

String CIMScope::toString() const
{
    if (_bits == ALL_BITS)
        return String("ANY");
    static const struct
    {
        Uint32 bit;
        const char* word;
    } words[] = {{CLASS_BIT, "CLASS"}, {ASSOCIATION_BIT, "ASSOCIATION"}, {INDICATION_BIT, "INDICATION"},
        {PROPERTY_BIT, "PROPERTY"}, {REFERENCE_BIT, "REFERENCE"}, {METHOD_BIT, "METHOD"},
        {PARAMETER_BIT, "PARAMETER"}};
    String text;
    for (const auto& w : words)
    {
        if (_bits & w.bit)
        {
            if (text.size() != 0)
                text.append(Char16(' '));
            text.append(String(w.word));
        }
    }
    return text;
}

PEGASUS_NAMESPACE_END
