// Association paths and instances, and the filters that turn association
// instances into the answers of associators and references.
#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

CIMObjectPath withHost(const CIMObjectPath& path, const String& host)
{
    CIMObjectPath copy = path;
    copy.setHost(host);
    return copy;
}

CIMKeyBinding referenceKey(const String& name, const CIMObjectPath& path)
{
    return CIMKeyBinding(CIMName(name), path.toString(), CIMKeyBinding::REFERENCE);
}

// Whether an end passes the role test: no role asked for, or the end's
// property has that name.
bool roleMatches(const String& resultRole, const CIMProperty& property)
{
    return resultRole.size() == 0 || String::equalNoCase(resultRole, property.getName().getString());
}

// The far ends of an association seen from the target, each once per
// naming of its class in resultClass (once when resultClass is empty).
Array<CIMObjectPath> farEnds(CIMInstance& assocInstance, const CIMObjectPath& targetObjectPath,
    const Array<CIMName>& resultClass, const String& resultRole)
{
    Array<CIMObjectPath> ends;
    for (Uint32 i = 0; i < assocInstance.getPropertyCount(); i++)
    {
        CIMProperty property = assocInstance.getProperty(i);
        if (property.getType() != CIMTYPE_REFERENCE)
            continue;
        CIMObjectPath path;
        property.getValue().get(path);
        if (ZDA_Common::matchObjectPath(path, targetObjectPath))
            continue;  // the source end
        if (resultClass.size() == 0)
        {
            if (roleMatches(resultRole, property))
                ends.append(path);
            continue;
        }
        for (Uint32 c = 0; c < resultClass.size(); c++)
        {
            if (resultClass[c].equal(path.getClassName()) && roleMatches(resultRole, property))
                ends.append(path);
        }
    }
    return ends;
}

}  // namespace

CIMObjectPath ZDA_Common::buildDepAssocPath(const String& systemAddress, const CIMName& assocClass,
    const CIMObjectPath& antecedent, const CIMObjectPath& dependent)
{
    Array<CIMKeyBinding> keys;
    keys.append(referenceKey("Antecedent", antecedent));
    keys.append(referenceKey("Dependent", dependent));
    return CIMObjectPath(systemAddress, CIMNamespaceName("root/zda"), assocClass, keys);
}

CIMInstance ZDA_Common::buildDepAssocInstance(const String& systemAddress, const CIMName& assocClass,
    const CIMObjectPath& antecedent, const CIMObjectPath& dependent, CIMClass& classSkeleton)
{
    CIMInstance instance = buildInstanceSkeleton(classSkeleton);
    setPropertyValue(instance, CIMName("Antecedent"), antecedent);
    setPropertyValue(instance, CIMName("Dependent"), dependent);
    instance.setPath(buildDepAssocPath(systemAddress, assocClass, antecedent, dependent));
    return instance;
}

CIMObjectPath ZDA_Common::buildAssocPath(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const String& hostAddress, String nameSpace)
{
    return buildAssocPath(assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress,
        hostAddress, hostAddress, nameSpace);
}

CIMObjectPath ZDA_Common::buildAssocPath(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const String& hostAddress1, const String& hostAddress2, const String& localAddress, String nameSpace)
{
    CIMObjectPath path(localAddress, CIMNamespaceName(nameSpace), assocClass, Array<CIMKeyBinding>());
    Array<CIMKeyBinding> keys;
    keys.append(referenceKey(assocName1, withHost(assocPath1, hostAddress1)));
    keys.append(referenceKey(assocName2, withHost(assocPath2, hostAddress2)));
    path.setKeyBindings(keys);
    return path;
}

CIMObjectPath ZDA_Common::buildAssocPath(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const String& assocName3, const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2, const CIMObjectPath& assocPath3, const String& hostAddress,
    String nameSpace)
{
    CIMObjectPath path(hostAddress, CIMNamespaceName(nameSpace), assocClass, Array<CIMKeyBinding>());
    Array<CIMKeyBinding> keys;
    keys.append(referenceKey(assocName1, withHost(assocPath1, hostAddress)));
    keys.append(referenceKey(assocName2, withHost(assocPath2, hostAddress)));
    keys.append(referenceKey(assocName3, withHost(assocPath3, hostAddress)));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance ZDA_Common::buildAssocInstance(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const String& hostAddress, String nameSpace, CIMClass& classSkeleton)
{
    return buildAssocInstance(assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress,
        hostAddress, hostAddress, nameSpace, classSkeleton);
}

CIMInstance ZDA_Common::buildAssocInstance(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
    const String& hostAddress1, const String& hostAddress2, const String& localAddress, String nameSpace,
    CIMClass& classSkeleton)
{
    CIMInstance instance = buildInstanceSkeleton(classSkeleton);
    setPropertyValue(instance, CIMName(assocName1), withHost(assocPath1, hostAddress1));
    setPropertyValue(instance, CIMName(assocName2), withHost(assocPath2, hostAddress2));
    instance.setPath(buildAssocPath(assocClass, assocName1, assocName2, assocPath1, assocPath2, hostAddress1,
        hostAddress2, localAddress, nameSpace));
    return instance;
}

CIMInstance ZDA_Common::buildAssocInstance(const CIMName& assocClass, const String& assocName1,
    const String& assocName2, const String& assocName3, const CIMObjectPath& assocPath1,
    const CIMObjectPath& assocPath2, const CIMObjectPath& assocPath3, const String& hostAddress,
    String nameSpace, CIMClass& classSkeleton)
{
    CIMInstance instance = buildInstanceSkeleton(classSkeleton);
    setPropertyValue(instance, CIMName(assocName1), withHost(assocPath1, hostAddress));
    setPropertyValue(instance, CIMName(assocName2), withHost(assocPath2, hostAddress));
    setPropertyValue(instance, CIMName(assocName3), withHost(assocPath3, hostAddress));
    instance.setPath(buildAssocPath(assocClass, assocName1, assocName2, assocName3, assocPath1, assocPath2,
        assocPath3, hostAddress, nameSpace));
    return instance;
}

Array<CIMInstance> ZDA_Common::filterReferenceNames(const Array<CIMInstance>& targetAssociationInstanceList,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role)
{
    const CIMObjectPath targetReference(
        String(), CIMNamespaceName(), objectName.getClassName(), objectName.getKeyBindings());
    Array<CIMInstance> result;
    for (Uint32 i = 0; i < targetAssociationInstanceList.size(); i++)
    {
        CIMInstance instance = targetAssociationInstanceList[i];
        if (!resultClass.isNull() && !instance.getClassName().equal(resultClass))
            continue;
        if (_isInstanceValidReference(targetReference, instance, role))
            result.append(instance);
    }
    return result;
}

Array<CIMObjectPath> ZDA_Common::filterAssocInstanceToTargetPaths(CIMInstance& assocInstance,
    const CIMObjectPath& targetObjectPath, Array<CIMName>& resultClass, String resultRole)
{
    return farEnds(assocInstance, targetObjectPath, resultClass, resultRole);
}

Array<CIMInstance> ZDA_Common::filterAssocInstanceToTargetInstances(CIMInstance& assocInstance,
    const CIMObjectPath& targetObjectPath, const Array<CIMInstance>& resultInstanceList,
    Array<CIMName>& resultClass, String resultRole)
{
    const Array<CIMObjectPath> ends = farEnds(assocInstance, targetObjectPath, resultClass, resultRole);
    Array<CIMInstance> result;
    for (Uint32 e = 0; e < ends.size(); e++)
    {
        for (Uint32 i = 0; i < resultInstanceList.size(); i++)
        {
            if (matchObjectPath(resultInstanceList[i].getPath(), ends[e]))
                result.append(resultInstanceList[i]);
        }
    }
    return result;
}

PEGASUS_NAMESPACE_END
