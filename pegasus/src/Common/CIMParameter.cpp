#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

CIMParameterRep::CIMParameterRep(const CIMParameterRep& x)
    : OwnedMember(x), name(x.name), type(x.type), isArray(x.isArray), arraySize(x.arraySize),
      referenceClassName(x.referenceClassName)
{
    qualifiers.cloneFrom(x.qualifiers);
}

namespace
{
CIMParameterRep* newParameterRep(
    const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize, const CIMName& referenceClassName)
{
    if (name.isNull())
        throw UninitializedObjectException();
    if (!referenceClassName.isNull() && type != CIMTYPE_REFERENCE)
        throw TypeMismatchException("reference class given for a non-reference parameter");
    if (arraySize != 0 && !isArray)
        throw TypeMismatchException("array size given for a scalar parameter");
    CIMParameterRep* rep = new CIMParameterRep;
    rep->name = name;
    rep->type = type;
    rep->isArray = isArray;
    rep->arraySize = arraySize;
    rep->referenceClassName = referenceClassName;
    return rep;
}

Boolean identicalParameters(const CIMParameterRep* a, const CIMParameterRep* b)
{
    return a == b ||
        (a->name.equal(b->name) && a->type == b->type && a->isArray == b->isArray &&
            a->arraySize == b->arraySize && a->referenceClassName.equal(b->referenceClassName) &&
            a->qualifiers.identical<CIMConstQualifier>(b->qualifiers));
}
}  // namespace

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMParameter)

CIMParameter::CIMParameter(CIMParameterRep* rep) : _rep(rep) {}

CIMParameter::CIMParameter(
    const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize, const CIMName& referenceClassName)
    : _rep(newParameterRep(name, type, isArray, arraySize, referenceClassName))
{}

const CIMName& CIMParameter::getName() const
{
    return checkedRep(_rep)->name;
}

void CIMParameter::setName(const CIMName& name)
{
    checkedRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (_rep->isOwned())
        throw Exception("cannot rename a parameter that belongs to a method");
    _rep->name = name;
}

Boolean CIMParameter::isArray() const
{
    return checkedRep(_rep)->isArray;
}

Uint32 CIMParameter::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

const CIMName& CIMParameter::getReferenceClassName() const
{
    return checkedRep(_rep)->referenceClassName;
}

CIMType CIMParameter::getType() const
{
    return checkedRep(_rep)->type;
}

CIMParameter& CIMParameter::addQualifier(const CIMQualifier& x)
{
    checkedRep(_rep)->qualifiers.add(x, "qualifier");
    return *this;
}

Uint32 CIMParameter::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMParameter::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMParameter::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMParameter::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMParameter::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Boolean CIMParameter::identical(const CIMConstParameter& x) const
{
    return identicalParameters(checkedRep(_rep), checkedRep(x._rep));
}

CIMParameter CIMParameter::clone() const
{
    return CIMParameter(new CIMParameterRep(*checkedRep(_rep)));
}

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstParameter)

CIMConstParameter::CIMConstParameter(const CIMParameter& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstParameter::CIMConstParameter(
    const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize, const CIMName& referenceClassName)
    : _rep(newParameterRep(name, type, isArray, arraySize, referenceClassName))
{}

CIMConstParameter& CIMConstParameter::operator=(const CIMParameter& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstParameter::getName() const
{
    return checkedRep(_rep)->name;
}

Boolean CIMConstParameter::isArray() const
{
    return checkedRep(_rep)->isArray;
}

Uint32 CIMConstParameter::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

const CIMName& CIMConstParameter::getReferenceClassName() const
{
    return checkedRep(_rep)->referenceClassName;
}

CIMType CIMConstParameter::getType() const
{
    return checkedRep(_rep)->type;
}

Uint32 CIMConstParameter::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstParameter::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstParameter::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Boolean CIMConstParameter::identical(const CIMConstParameter& x) const
{
    return identicalParameters(checkedRep(_rep), checkedRep(x._rep));
}

CIMParameter CIMConstParameter::clone() const
{
    return CIMHandleAccess::adopt<CIMParameter>(new CIMParameterRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
