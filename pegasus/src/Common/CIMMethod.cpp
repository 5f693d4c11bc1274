#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

CIMMethodRep::CIMMethodRep(const CIMMethodRep& x)
    : OwnedMember(x), name(x.name), type(x.type), classOrigin(x.classOrigin), propagated(x.propagated)
{
    qualifiers.cloneFrom(x.qualifiers);
    parameters.cloneFrom(x.parameters);
}

namespace
{
CIMMethodRep* newMethodRep(const CIMName& name, CIMType type, const CIMName& classOrigin, Boolean propagated)
{
    if (name.isNull())
        throw UninitializedObjectException();
    CIMMethodRep* rep = new CIMMethodRep;
    rep->name = name;
    rep->type = type;
    rep->classOrigin = classOrigin;
    rep->propagated = propagated;
    return rep;
}

Boolean identicalMethods(const CIMMethodRep* a, const CIMMethodRep* b)
{
    return a == b ||
        (a->name.equal(b->name) && a->type == b->type &&
            a->qualifiers.identical<CIMConstQualifier>(b->qualifiers) &&
            a->parameters.identical<CIMConstParameter>(b->parameters));
}
}  // namespace

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMMethod)

CIMMethod::CIMMethod(CIMMethodRep* rep) : _rep(rep) {}

CIMMethod::CIMMethod(const CIMName& name, CIMType type, const CIMName& classOrigin, Boolean propagated)
    : _rep(newMethodRep(name, type, classOrigin, propagated))
{}

const CIMName& CIMMethod::getName() const
{
    return checkedRep(_rep)->name;
}

void CIMMethod::setName(const CIMName& name)
{
    checkedRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (_rep->isOwned())
        throw Exception("cannot rename a method that belongs to a class");
    _rep->name = name;
}

CIMType CIMMethod::getType() const
{
    return checkedRep(_rep)->type;
}

void CIMMethod::setType(CIMType type)
{
    checkedRep(_rep)->type = type;
}

const CIMName& CIMMethod::getClassOrigin() const
{
    return checkedRep(_rep)->classOrigin;
}

void CIMMethod::setClassOrigin(const CIMName& classOrigin)
{
    checkedRep(_rep)->classOrigin = classOrigin;
}

Boolean CIMMethod::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

void CIMMethod::setPropagated(Boolean propagated)
{
    checkedRep(_rep)->propagated = propagated;
}

CIMMethod& CIMMethod::addQualifier(const CIMQualifier& x)
{
    checkedRep(_rep)->qualifiers.add(x, "qualifier");
    return *this;
}

Uint32 CIMMethod::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMMethod::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMMethod::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMMethod::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMMethod::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

CIMMethod& CIMMethod::addParameter(const CIMParameter& x)
{
    checkedRep(_rep)->parameters.add(x, "parameter");
    return *this;
}

Uint32 CIMMethod::findParameter(const CIMName& name) const
{
    return checkedRep(_rep)->parameters.find(name);
}

CIMParameter CIMMethod::getParameter(Uint32 index)
{
    return checkedRep(_rep)->parameters.at(index);
}

CIMConstParameter CIMMethod::getParameter(Uint32 index) const
{
    return checkedRep(_rep)->parameters.at(index);
}

void CIMMethod::removeParameter(Uint32 index)
{
    checkedRep(_rep)->parameters.remove(index);
}

Uint32 CIMMethod::getParameterCount() const
{
    return checkedRep(_rep)->parameters.size();
}

Boolean CIMMethod::identical(const CIMConstMethod& x) const
{
    return identicalMethods(checkedRep(_rep), checkedRep(x._rep));
}

CIMMethod CIMMethod::clone() const
{
    return CIMMethod(new CIMMethodRep(*checkedRep(_rep)));
}

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstMethod)

CIMConstMethod::CIMConstMethod(const CIMMethod& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstMethod::CIMConstMethod(
    const CIMName& name, CIMType type, const CIMName& classOrigin, Boolean propagated)
    : _rep(newMethodRep(name, type, classOrigin, propagated))
{}

CIMConstMethod& CIMConstMethod::operator=(const CIMMethod& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstMethod::getName() const
{
    return checkedRep(_rep)->name;
}

CIMType CIMConstMethod::getType() const
{
    return checkedRep(_rep)->type;
}

const CIMName& CIMConstMethod::getClassOrigin() const
{
    return checkedRep(_rep)->classOrigin;
}

Boolean CIMConstMethod::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

Uint32 CIMConstMethod::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstMethod::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstMethod::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Uint32 CIMConstMethod::findParameter(const CIMName& name) const
{
    return checkedRep(_rep)->parameters.find(name);
}

CIMConstParameter CIMConstMethod::getParameter(Uint32 index) const
{
    return checkedRep(_rep)->parameters.at(index);
}

Uint32 CIMConstMethod::getParameterCount() const
{
    return checkedRep(_rep)->parameters.size();
}

Boolean CIMConstMethod::identical(const CIMConstMethod& x) const
{
    return identicalMethods(checkedRep(_rep), checkedRep(x._rep));
}

CIMMethod CIMConstMethod::clone() const
{
    return CIMHandleAccess::adopt<CIMMethod>(new CIMMethodRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
