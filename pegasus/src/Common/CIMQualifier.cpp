#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
CIMQualifierRep* newQualifierRep(
    const CIMName& name, const CIMValue& value, const CIMFlavor& flavor, Boolean propagated)
{
    if (name.isNull())
        throw UninitializedObjectException();
    CIMQualifierRep* rep = new CIMQualifierRep;
    rep->name = name;
    rep->value = value;
    rep->flavor = flavor;
    rep->propagated = propagated;
    return rep;
}

Boolean identicalQualifiers(const CIMQualifierRep* a, const CIMQualifierRep* b)
{
    return a == b || (a->name.equal(b->name) && a->value.equal(b->value) && a->flavor.equal(b->flavor));
}
}  // namespace

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMQualifier)

CIMQualifier::CIMQualifier(CIMQualifierRep* rep) : _rep(rep) {}

CIMQualifier::CIMQualifier(
    const CIMName& name, const CIMValue& value, const CIMFlavor& flavor, Boolean propagated)
    : _rep(newQualifierRep(name, value, flavor, propagated))
{}

const CIMName& CIMQualifier::getName() const
{
    return checkedRep(_rep)->name;
}

void CIMQualifier::setName(const CIMName& name)
{
    checkedRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (_rep->isOwned())
        throw Exception("cannot rename a qualifier that belongs to an element");
    _rep->name = name;
}

CIMType CIMQualifier::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMQualifier::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

const CIMValue& CIMQualifier::getValue() const
{
    return checkedRep(_rep)->value;
}

void CIMQualifier::setValue(const CIMValue& value)
{
    checkedRep(_rep)->value = value;
}

void CIMQualifier::setFlavor(const CIMFlavor& flavor)
{
    checkedRep(_rep)->flavor.addFlavor(flavor);
}

void CIMQualifier::unsetFlavor(const CIMFlavor& flavor)
{
    checkedRep(_rep)->flavor.removeFlavor(flavor);
}

const CIMFlavor& CIMQualifier::getFlavor() const
{
    return checkedRep(_rep)->flavor;
}

Boolean CIMQualifier::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

void CIMQualifier::setPropagated(Boolean propagated)
{
    checkedRep(_rep)->propagated = propagated;
}

Boolean CIMQualifier::identical(const CIMConstQualifier& x) const
{
    return identicalQualifiers(checkedRep(_rep), checkedRep(x._rep));
}

CIMQualifier CIMQualifier::clone() const
{
    return CIMQualifier(new CIMQualifierRep(*checkedRep(_rep)));
}

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstQualifier)

CIMConstQualifier::CIMConstQualifier(const CIMQualifier& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstQualifier::CIMConstQualifier(
    const CIMName& name, const CIMValue& value, const CIMFlavor& flavor, Boolean propagated)
    : _rep(newQualifierRep(name, value, flavor, propagated))
{}

CIMConstQualifier& CIMConstQualifier::operator=(const CIMQualifier& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstQualifier::getName() const
{
    return checkedRep(_rep)->name;
}

CIMType CIMConstQualifier::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMConstQualifier::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

const CIMValue& CIMConstQualifier::getValue() const
{
    return checkedRep(_rep)->value;
}

const CIMFlavor& CIMConstQualifier::getFlavor() const
{
    return checkedRep(_rep)->flavor;
}

Boolean CIMConstQualifier::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

Boolean CIMConstQualifier::identical(const CIMConstQualifier& x) const
{
    return identicalQualifiers(checkedRep(_rep), checkedRep(x._rep));
}

CIMQualifier CIMConstQualifier::clone() const
{
    return CIMHandleAccess::adopt<CIMQualifier>(new CIMQualifierRep(*checkedRep(_rep)));
}

Boolean hasTrueQualifier(const MemberList<CIMQualifier>& qualifiers, const char* name)
{
    Uint32 pos = qualifiers.find(CIMName(name));
    if (pos == PEG_NOT_FOUND)
        return false;
    const CIMValue& value = qualifiers.at(pos).getValue();
    if (value.getType() != CIMTYPE_BOOLEAN || value.isArray() || value.isNull())
        return false;
    Boolean flag = false;
    value.get(flag);
    return flag;
}

PEGASUS_NAMESPACE_END
