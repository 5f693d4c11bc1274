#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

CIMPropertyRep::CIMPropertyRep(const CIMPropertyRep& x)
    : OwnedMember(x), name(x.name), value(x.value), arraySize(x.arraySize),
      referenceClassName(x.referenceClassName), classOrigin(x.classOrigin), propagated(x.propagated)
{
    qualifiers.cloneFrom(x.qualifiers);
}

namespace
{
CIMPropertyRep* newPropertyRep(const CIMName& name, const CIMValue& value, Uint32 arraySize,
    const CIMName& referenceClassName, const CIMName& classOrigin, Boolean propagated)
{
    if (name.isNull())
        throw UninitializedObjectException();
    if (value.getType() == CIMTYPE_REFERENCE && value.isArray())
        throw TypeMismatchException("a property cannot hold an array of references");
    if (!referenceClassName.isNull() && value.getType() != CIMTYPE_REFERENCE)
        throw TypeMismatchException("reference class given for a non-reference property");
    if (arraySize != 0 && (!value.isArray() || (!value.isNull() && value.getArraySize() != arraySize)))
        throw TypeMismatchException("array size does not match the value");
    CIMPropertyRep* rep = new CIMPropertyRep;
    rep->name = name;
    rep->value = value;
    rep->arraySize = arraySize;
    rep->referenceClassName = referenceClassName;
    rep->classOrigin = classOrigin;
    rep->propagated = propagated;
    return rep;
}

Boolean identicalProperties(const CIMPropertyRep* a, const CIMPropertyRep* b)
{
    return a == b ||
        (a->name.equal(b->name) && a->value.equal(b->value) && a->arraySize == b->arraySize &&
            a->referenceClassName.equal(b->referenceClassName) &&
            a->qualifiers.identical<CIMConstQualifier>(b->qualifiers));
}
}  // namespace

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMProperty)

CIMProperty::CIMProperty(CIMPropertyRep* rep) : _rep(rep) {}

CIMProperty::CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
    const CIMName& referenceClassName, const CIMName& classOrigin, Boolean propagated)
    : _rep(newPropertyRep(name, value, arraySize, referenceClassName, classOrigin, propagated))
{}

const CIMName& CIMProperty::getName() const
{
    return checkedRep(_rep)->name;
}

void CIMProperty::setName(const CIMName& name)
{
    checkedRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    if (_rep->isOwned())
        throw Exception("cannot rename a property that belongs to a class or instance");
    _rep->name = name;
}

const CIMValue& CIMProperty::getValue() const
{
    return checkedRep(_rep)->value;
}

CIMType CIMProperty::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMProperty::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

void CIMProperty::setValue(const CIMValue& value)
{
    checkedRep(_rep);
    if (!value.typeCompatible(_rep->value))
        throw TypeMismatchException();
    _rep->value = value;
}

Uint32 CIMProperty::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

const CIMName& CIMProperty::getReferenceClassName() const
{
    return checkedRep(_rep)->referenceClassName;
}

const CIMName& CIMProperty::getClassOrigin() const
{
    return checkedRep(_rep)->classOrigin;
}

void CIMProperty::setClassOrigin(const CIMName& classOrigin)
{
    checkedRep(_rep)->classOrigin = classOrigin;
}

Boolean CIMProperty::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

void CIMProperty::setPropagated(Boolean propagated)
{
    checkedRep(_rep)->propagated = propagated;
}

CIMProperty& CIMProperty::addQualifier(const CIMQualifier& x)
{
    checkedRep(_rep)->qualifiers.add(x, "qualifier");
    return *this;
}

Uint32 CIMProperty::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMProperty::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMProperty::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMProperty::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMProperty::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Boolean CIMProperty::identical(const CIMConstProperty& x) const
{
    return identicalProperties(checkedRep(_rep), checkedRep(x._rep));
}

CIMProperty CIMProperty::clone() const
{
    return CIMProperty(new CIMPropertyRep(*checkedRep(_rep)));
}

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstProperty)

CIMConstProperty::CIMConstProperty(const CIMProperty& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstProperty::CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
    const CIMName& referenceClassName, const CIMName& classOrigin, Boolean propagated)
    : _rep(newPropertyRep(name, value, arraySize, referenceClassName, classOrigin, propagated))
{}

CIMConstProperty& CIMConstProperty::operator=(const CIMProperty& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstProperty::getName() const
{
    return checkedRep(_rep)->name;
}

const CIMValue& CIMConstProperty::getValue() const
{
    return checkedRep(_rep)->value;
}

CIMType CIMConstProperty::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMConstProperty::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

Uint32 CIMConstProperty::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

const CIMName& CIMConstProperty::getReferenceClassName() const
{
    return checkedRep(_rep)->referenceClassName;
}

const CIMName& CIMConstProperty::getClassOrigin() const
{
    return checkedRep(_rep)->classOrigin;
}

Boolean CIMConstProperty::getPropagated() const
{
    return checkedRep(_rep)->propagated;
}

Uint32 CIMConstProperty::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstProperty::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstProperty::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Boolean CIMConstProperty::identical(const CIMConstProperty& x) const
{
    return identicalProperties(checkedRep(_rep), checkedRep(x._rep));
}

CIMProperty CIMConstProperty::clone() const
{
    return CIMHandleAccess::adopt<CIMProperty>(new CIMPropertyRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
