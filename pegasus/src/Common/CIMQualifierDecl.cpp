#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
CIMQualifierDeclRep* newDeclRep(const CIMName& name, const CIMValue& value, const CIMScope& scope,
    const CIMFlavor& flavor, Uint32 arraySize)
{
    if (name.isNull())
        throw UninitializedObjectException();
    if (arraySize != 0 && (!value.isArray() || (!value.isNull() && value.getArraySize() != arraySize)))
        throw TypeMismatchException();
    CIMQualifierDeclRep* rep = new CIMQualifierDeclRep;
    rep->name = name;
    rep->value = value;
    rep->scope = scope;
    rep->flavor = flavor;
    rep->arraySize = arraySize;
    return rep;
}

Boolean identicalDecls(const CIMQualifierDeclRep* a, const CIMQualifierDeclRep* b)
{
    return a == b ||
        (a->name.equal(b->name) && a->value.equal(b->value) && a->scope.equal(b->scope) &&
            a->flavor.equal(b->flavor) && a->arraySize == b->arraySize);
}
}  // namespace

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMQualifierDecl)

CIMQualifierDecl::CIMQualifierDecl(CIMQualifierDeclRep* rep) : _rep(rep) {}

CIMQualifierDecl::CIMQualifierDecl(const CIMName& name, const CIMValue& value, const CIMScope& scope,
    const CIMFlavor& flavor, Uint32 arraySize)
    : _rep(newDeclRep(name, value, scope, flavor, arraySize))
{}

const CIMName& CIMQualifierDecl::getName() const
{
    return checkedRep(_rep)->name;
}

void CIMQualifierDecl::setName(const CIMName& name)
{
    checkedRep(_rep);
    if (name.isNull())
        throw UninitializedObjectException();
    _rep->name = name;
}

CIMType CIMQualifierDecl::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMQualifierDecl::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

const CIMValue& CIMQualifierDecl::getValue() const
{
    return checkedRep(_rep)->value;
}

void CIMQualifierDecl::setValue(const CIMValue& value)
{
    checkedRep(_rep)->value = value;
}

const CIMScope& CIMQualifierDecl::getScope() const
{
    return checkedRep(_rep)->scope;
}

const CIMFlavor& CIMQualifierDecl::getFlavor() const
{
    return checkedRep(_rep)->flavor;
}

Uint32 CIMQualifierDecl::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

Boolean CIMQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return identicalDecls(checkedRep(_rep), checkedRep(x._rep));
}

CIMQualifierDecl CIMQualifierDecl::clone() const
{
    return CIMQualifierDecl(new CIMQualifierDeclRep(*checkedRep(_rep)));
}

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstQualifierDecl)

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMQualifierDecl& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMName& name, const CIMValue& value,
    const CIMScope& scope, const CIMFlavor& flavor, Uint32 arraySize)
    : _rep(newDeclRep(name, value, scope, flavor, arraySize))
{}

CIMConstQualifierDecl& CIMConstQualifierDecl::operator=(const CIMQualifierDecl& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstQualifierDecl::getName() const
{
    return checkedRep(_rep)->name;
}

CIMType CIMConstQualifierDecl::getType() const
{
    return checkedRep(_rep)->value.getType();
}

Boolean CIMConstQualifierDecl::isArray() const
{
    return checkedRep(_rep)->value.isArray();
}

const CIMValue& CIMConstQualifierDecl::getValue() const
{
    return checkedRep(_rep)->value;
}

const CIMScope& CIMConstQualifierDecl::getScope() const
{
    return checkedRep(_rep)->scope;
}

const CIMFlavor& CIMConstQualifierDecl::getFlavor() const
{
    return checkedRep(_rep)->flavor;
}

Uint32 CIMConstQualifierDecl::getArraySize() const
{
    return checkedRep(_rep)->arraySize;
}

Boolean CIMConstQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return identicalDecls(checkedRep(_rep), checkedRep(x._rep));
}

CIMQualifierDecl CIMConstQualifierDecl::clone() const
{
    return CIMHandleAccess::adopt<CIMQualifierDecl>(new CIMQualifierDeclRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
