#include <Pegasus/Common/CIMFlavor.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
enum : Uint32
{
    OVERRIDABLE_BIT = 1,
    TOSUBCLASS_BIT = 2,
    TOINSTANCE_BIT = 4,
    TRANSLATABLE_BIT = 8,
    DISABLEOVERRIDE_BIT = 16,
    RESTRICTED_BIT = 32
};
}

const CIMFlavor CIMFlavor::NONE(0);
const CIMFlavor CIMFlavor::OVERRIDABLE(OVERRIDABLE_BIT);
const CIMFlavor CIMFlavor::ENABLEOVERRIDE(OVERRIDABLE_BIT);
const CIMFlavor CIMFlavor::DISABLEOVERRIDE(DISABLEOVERRIDE_BIT);
const CIMFlavor CIMFlavor::TOSUBCLASS(TOSUBCLASS_BIT);
const CIMFlavor CIMFlavor::RESTRICTED(RESTRICTED_BIT);
const CIMFlavor CIMFlavor::TOINSTANCE(TOINSTANCE_BIT);
const CIMFlavor CIMFlavor::TRANSLATABLE(TRANSLATABLE_BIT);
const CIMFlavor CIMFlavor::DEFAULTS(OVERRIDABLE_BIT | TOSUBCLASS_BIT);

CIMFlavor::CIMFlavor() : _bits(0) {}
CIMFlavor::CIMFlavor(const CIMFlavor& flavor) : _bits(flavor._bits) {}

CIMFlavor& CIMFlavor::operator=(const CIMFlavor& flavor)
{
    _bits = flavor._bits;
    return *this;
}

void CIMFlavor::addFlavor(const CIMFlavor& flavor)
{
    _bits |= flavor._bits;
}

void CIMFlavor::removeFlavor(const CIMFlavor& flavor)
{
    _bits &= ~flavor._bits;
}

Boolean CIMFlavor::hasFlavor(const CIMFlavor& flavor) const
{
    return (_bits & flavor._bits) == flavor._bits;
}

Boolean CIMFlavor::equal(const CIMFlavor& flavor) const
{
    return _bits == flavor._bits;
}

CIMFlavor CIMFlavor::operator+(const CIMFlavor& flavor) const
{
    return CIMFlavor(_bits | flavor._bits);
}

String CIMFlavor::toString() const
{
    static const struct
    {
        Uint32 bit;
        const char* word;
    } words[] = {{OVERRIDABLE_BIT, "OVERRIDABLE"}, {TOSUBCLASS_BIT, "TOSUBCLASS"},
        {TOINSTANCE_BIT, "TOINSTANCE"}, {TRANSLATABLE_BIT, "TRANSLATABLE"},
        {DISABLEOVERRIDE_BIT, "DISABLEOVERRIDE"}, {RESTRICTED_BIT, "RESTRICTED"}};
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
