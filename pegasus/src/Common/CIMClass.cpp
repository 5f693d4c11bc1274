#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

void classKeyNames(const CIMObjectRep* rep, Array<CIMName>& keyNames)
{
    keyNames.clear();
    for (Uint32 i = 0; i < rep->properties.size(); ++i)
    {
        const CIMProperty& property = rep->properties.at(i);
        if (hasTrueQualifier(CIMHandleAccess::rep(property)->qualifiers, "Key"))
            keyNames.append(property.getName());
    }
}

namespace
{
Boolean classHasKeys(const CIMObjectRep* rep)
{
    for (Uint32 i = 0; i < rep->properties.size(); ++i)
    {
        if (hasTrueQualifier(CIMHandleAccess::rep(rep->properties.at(i))->qualifiers, "Key"))
            return true;
    }
    return false;
}
}  // namespace

CIMInstance classBuildInstance(const CIMObjectRep* rep, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    CIMInstance instance(rep->className);
    if (includeQualifiers)
    {
        for (Uint32 i = 0; i < rep->qualifiers.size(); ++i)
            instance.addQualifier(rep->qualifiers.at(i).clone());
    }
    for (Uint32 i = 0; i < rep->properties.size(); ++i)
    {
        const CIMProperty& declared = rep->properties.at(i);
        if (!propertyList.useThisProperty(declared.getName()))
            continue;
        CIMProperty property = declared.clone();
        if (!includeQualifiers)
        {
            while (property.getQualifierCount() != 0)
                property.removeQualifier(property.getQualifierCount() - 1);
        }
        if (!includeClassOrigin)
            property.setClassOrigin(CIMName());
        instance.addProperty(property);
    }
    return instance;
}

// ---------------------------------------------------------------------------
// CIMClass

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMClass)

CIMClass::CIMClass(CIMObjectRep* rep) : _rep(rep) {}

CIMClass::CIMClass(const CIMObject& x) : _rep(requireKind(x._rep, CIMObjectRep::CLASS))
{
    refRep(_rep);
}

CIMClass::CIMClass(const CIMName& className, const CIMName& superClassName)
    : _rep(new CIMObjectRep(CIMObjectRep::CLASS, className))
{
    _rep->superClassName = superClassName;
}

Boolean CIMClass::isAssociation() const
{
    return hasTrueQualifier(checkedRep(_rep)->qualifiers, "Association");
}

Boolean CIMClass::isAbstract() const
{
    return hasTrueQualifier(checkedRep(_rep)->qualifiers, "Abstract");
}

const CIMName& CIMClass::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMClass::getPath() const
{
    return checkedRep(_rep)->path;
}

void CIMClass::setPath(const CIMObjectPath& path)
{
    objectSetPath(checkedRep(_rep), path);
}

const CIMName& CIMClass::getSuperClassName() const
{
    return checkedRep(_rep)->superClassName;
}

void CIMClass::setSuperClassName(const CIMName& superClassName)
{
    checkedRep(_rep)->superClassName = superClassName;
}

CIMClass& CIMClass::addQualifier(const CIMQualifier& qualifier)
{
    checkedRep(_rep)->qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMClass::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMClass::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMClass::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMClass::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMClass::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

CIMClass& CIMClass::addProperty(const CIMProperty& x)
{
    checkedRep(_rep)->properties.add(x, "property");
    return *this;
}

Uint32 CIMClass::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMProperty CIMClass::getProperty(Uint32 index)
{
    return checkedRep(_rep)->properties.at(index);
}

CIMConstProperty CIMClass::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

void CIMClass::removeProperty(Uint32 index)
{
    checkedRep(_rep)->properties.remove(index);
}

Uint32 CIMClass::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

CIMClass& CIMClass::addMethod(const CIMMethod& x)
{
    checkedRep(_rep)->methods.add(x, "method");
    return *this;
}

Uint32 CIMClass::findMethod(const CIMName& name) const
{
    return checkedRep(_rep)->methods.find(name);
}

CIMMethod CIMClass::getMethod(Uint32 index)
{
    return checkedRep(_rep)->methods.at(index);
}

CIMConstMethod CIMClass::getMethod(Uint32 index) const
{
    return checkedRep(_rep)->methods.at(index);
}

void CIMClass::removeMethod(Uint32 index)
{
    checkedRep(_rep)->methods.remove(index);
}

Uint32 CIMClass::getMethodCount() const
{
    return checkedRep(_rep)->methods.size();
}

void CIMClass::getKeyNames(Array<CIMName>& keyNames) const
{
    classKeyNames(checkedRep(_rep), keyNames);
}

Boolean CIMClass::hasKeys() const
{
    return classHasKeys(checkedRep(_rep));
}

Boolean CIMClass::identical(const CIMConstClass& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMClass CIMClass::clone() const
{
    return CIMClass(new CIMObjectRep(*checkedRep(_rep)));
}

CIMInstance CIMClass::buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) const
{
    return classBuildInstance(checkedRep(_rep), includeQualifiers, includeClassOrigin, propertyList);
}

// ---------------------------------------------------------------------------
// CIMConstClass

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstClass)

CIMConstClass::CIMConstClass(const CIMClass& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstClass::CIMConstClass(const CIMObject& x) : _rep(requireKind(x._rep, CIMObjectRep::CLASS))
{
    refRep(_rep);
}

CIMConstClass::CIMConstClass(const CIMConstObject& x) : _rep(requireKind(x._rep, CIMObjectRep::CLASS))
{
    refRep(_rep);
}

CIMConstClass::CIMConstClass(const CIMName& className, const CIMName& superClassName)
    : _rep(new CIMObjectRep(CIMObjectRep::CLASS, className))
{
    _rep->superClassName = superClassName;
}

CIMConstClass& CIMConstClass::operator=(const CIMClass& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

Boolean CIMConstClass::isAssociation() const
{
    return hasTrueQualifier(checkedRep(_rep)->qualifiers, "Association");
}

Boolean CIMConstClass::isAbstract() const
{
    return hasTrueQualifier(checkedRep(_rep)->qualifiers, "Abstract");
}

const CIMName& CIMConstClass::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMConstClass::getPath() const
{
    return checkedRep(_rep)->path;
}

const CIMName& CIMConstClass::getSuperClassName() const
{
    return checkedRep(_rep)->superClassName;
}

Uint32 CIMConstClass::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstClass::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstClass::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Uint32 CIMConstClass::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMConstProperty CIMConstClass::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

Uint32 CIMConstClass::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

Uint32 CIMConstClass::findMethod(const CIMName& name) const
{
    return checkedRep(_rep)->methods.find(name);
}

CIMConstMethod CIMConstClass::getMethod(Uint32 index) const
{
    return checkedRep(_rep)->methods.at(index);
}

Uint32 CIMConstClass::getMethodCount() const
{
    return checkedRep(_rep)->methods.size();
}

void CIMConstClass::getKeyNames(Array<CIMName>& keyNames) const
{
    classKeyNames(checkedRep(_rep), keyNames);
}

Boolean CIMConstClass::hasKeys() const
{
    return classHasKeys(checkedRep(_rep));
}

Boolean CIMConstClass::identical(const CIMConstClass& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMClass CIMConstClass::clone() const
{
    return CIMClass(new CIMObjectRep(*checkedRep(_rep)));
}

CIMInstance CIMConstClass::buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) const
{
    return classBuildInstance(checkedRep(_rep), includeQualifiers, includeClassOrigin, propertyList);
}

PEGASUS_NAMESPACE_END
