#include "ObjectRep.h"
#include <Pegasus/Common/CIMObjectAccess.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

PEGASUS_NAMESPACE_BEGIN

CIMObjectPath instanceBuildPath(const CIMObjectRep* rep, const CIMObjectRep* classRep)
{
    Array<CIMName> keyNames;
    classKeyNames(classRep, keyNames);
    Array<CIMKeyBinding> keys;
    for (Uint32 i = 0; i < keyNames.size(); ++i)
    {
        Uint32 pos = rep->properties.find(keyNames[i]);
        if (pos == PEG_NOT_FOUND)
            throw NoSuchProperty(keyNames[i].getString());
        const CIMProperty& property = rep->properties.at(pos);
        keys.append(CIMKeyBinding(property.getName(), property.getValue()));
    }
    return CIMObjectPath(String(), CIMNamespaceName(), rep->className, keys);
}

// ---------------------------------------------------------------------------
// CIMInstance

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMInstance)

CIMInstance::CIMInstance(CIMObjectRep* rep) : _rep(rep) {}

CIMInstance::CIMInstance(const CIMObject& x) : _rep(requireKind(x._rep, CIMObjectRep::INSTANCE))
{
    refRep(_rep);
}

CIMInstance::CIMInstance(const CIMName& className) : _rep(new CIMObjectRep(CIMObjectRep::INSTANCE, className))
{}

const CIMName& CIMInstance::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMInstance::getPath() const
{
    return checkedRep(_rep)->path;
}

void CIMInstance::setPath(const CIMObjectPath& path)
{
    objectSetPath(checkedRep(_rep), path);
}

CIMInstance& CIMInstance::addQualifier(const CIMQualifier& qualifier)
{
    checkedRep(_rep)->qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMInstance::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMInstance::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMInstance::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMInstance::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMInstance::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

CIMInstance& CIMInstance::addProperty(const CIMProperty& x)
{
    checkedRep(_rep)->properties.add(x, "property");
    return *this;
}

Uint32 CIMInstance::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMProperty CIMInstance::getProperty(Uint32 index)
{
    return checkedRep(_rep)->properties.at(index);
}

CIMConstProperty CIMInstance::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

void CIMInstance::removeProperty(Uint32 index)
{
    checkedRep(_rep)->properties.remove(index);
}

Uint32 CIMInstance::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

CIMObjectPath CIMInstance::buildPath(const CIMConstClass& cimClass) const
{
    return instanceBuildPath(checkedRep(_rep), checkedRep(cimClass._rep));
}

Boolean CIMInstance::identical(const CIMConstInstance& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMInstance CIMInstance::clone() const
{
    return CIMInstance(new CIMObjectRep(*checkedRep(_rep)));
}

void CIMInstance::instanceFilter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    objectFilter(checkedRep(_rep), includeQualifiers, includeClassOrigin, propertyList);
}

void CIMInstance::filter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    objectFilter(checkedRep(_rep), includeQualifiers, includeClassOrigin, propertyList);
}

// ---------------------------------------------------------------------------
// CIMConstInstance

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstInstance)

CIMConstInstance::CIMConstInstance(const CIMInstance& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstInstance::CIMConstInstance(const CIMObject& x) : _rep(requireKind(x._rep, CIMObjectRep::INSTANCE))
{
    refRep(_rep);
}

CIMConstInstance::CIMConstInstance(const CIMConstObject& x)
    : _rep(requireKind(x._rep, CIMObjectRep::INSTANCE))
{
    refRep(_rep);
}

CIMConstInstance::CIMConstInstance(const CIMName& className)
    : _rep(new CIMObjectRep(CIMObjectRep::INSTANCE, className))
{}

CIMConstInstance& CIMConstInstance::operator=(const CIMInstance& x)
{
    assignRep(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstInstance::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMConstInstance::getPath() const
{
    return checkedRep(_rep)->path;
}

Uint32 CIMConstInstance::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstInstance::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstInstance::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Uint32 CIMConstInstance::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMConstProperty CIMConstInstance::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

Uint32 CIMConstInstance::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

const CIMProperty& CIMObjectAccess::property(const CIMConstInstance& instance, Uint32 index)
{
    return checkedRep(CIMHandleAccess::rep(instance))->properties.at(index);
}

CIMObjectPath CIMConstInstance::buildPath(const CIMConstClass& cimClass) const
{
    return instanceBuildPath(checkedRep(_rep), checkedRep(cimClass._rep));
}

Boolean CIMConstInstance::identical(const CIMConstInstance& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMInstance CIMConstInstance::clone() const
{
    return CIMInstance(new CIMObjectRep(*checkedRep(_rep)));
}

PEGASUS_NAMESPACE_END
