// Volumes and the delta replica pools holding their snapshot space.
#include "ZDA_ReplicaPoolForStorageProvider.h"

#include <map>
#include <string>
#include <vector>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_CopyServicesCommon.h"
#include "ZDA_StoragePoolProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::ArrayList;
using ZDA_CompanionFrame::callUnderSemaphore;
using namespace ZDA_CopyServices;

namespace
{

const String ClassName = "ZDA_ReplicaPoolForStorage";
const char SOURCE_FILE[] = "ZDA_ReplicaPoolForStorageProvider";
const char ANTECEDENT[] = "Antecedent";
const char DEPENDENT[] = "Dependent";
const char DELTA_CLASS[] = "ZDA_DeltaReplicaStoragePool";

const char* const VOLUME_CLASSES[] = {"ZDA_StorageVolume", "CIM_StorageVolume", "CIM_StorageExtent",
    "CIM_LogicalDevice", "CIM_AllocatedLogicalElement", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
    "CIM_ManagedSystemElement", "CIM_ManagedElement"};
const char* const POOL_CLASSES[] = {"ZDA_DeltaReplicaStoragePool", "CIM_StoragePool", "CIM_ResourcePool",
    "CIM_LogicalElement", "CIM_ManagedSystemElement", "CIM_ManagedElement"};
const char* const ASSOCIATION_CLASSES[] = {"ZDA_ReplicaPoolForStorage", "CIM_Dependency"};

template <size_t N>
bool isOneOf(const CIMName& name, const char* const (&names)[N])
{
    if (name.isNull())
        return true;
    for (const char* n : names)
        if (name.equal(n))
            return true;
    return false;
}

// What the array holds: every volume, and the CPGs by name.
struct ArrayState
{
    String systemName;
    String host;
    ArrayList<api_VVObj_t> volumes;
    ArrayList<api_cpg_t> cpgs;

    bool read(bool withCpgs)
    {
        if (!systemIdentity(SOURCE_FILE, systemName, host))
            return false;
        int rc = readAllVolumes(volumes);
        if (rc == 0 && withCpgs)
            rc = callUnderSemaphore([&] { return api_getCPGs(cpgs.count(), cpgs.out()); });
        if (rc != 0)
            log_message(2, "ZDA_ReplicaPoolForStorageProvider: array read error (%d)\n", rc);
        return rc == 0;
    }
    CIMObjectPath volumePath(const api_VVObj_t& v) const
    {
        return ZDA_StorageVolumeProvider::createObjectPath(v.wwnText, systemName, host);
    }
    CIMObjectPath poolPath(const api_VVObj_t& v) const
    {
        return ZDA_StoragePoolProvider::buildDeltaObjectPath(v.cpgName, host);
    }
    CIMObjectPath path(const api_VVObj_t& v) const
    {
        return ZDA_ReplicaPoolForStorageProvider::buildObjectPath(poolPath(v), volumePath(v), host);
    }
    CIMInstance instance(const api_VVObj_t& v, CIMClass& assocClass) const
    {
        return ZDA_Common::buildAssocInstance(
            ClassName, ANTECEDENT, DEPENDENT, poolPath(v), volumePath(v), host, NAMESPACE, assocClass);
    }
    CIMInstance pool(const std::string& cpgName, CIMClass& poolClass) const
    {
        Uint64 snapshotMiB = 0;
        for (const api_VVObj_t& v : volumes)
            if (cpgName == v.cpgName)
                snapshotMiB += v.snapUsedMiB;
        for (const api_cpg_t& c : cpgs)
            if (cpgName == c.name)
                return ZDA_StoragePoolProvider::buildInstance(c, true, snapshotMiB, host, poolClass);
        return CIMInstance();
    }
};

// The volumes with snapshot space that are an end of a request from
// `objectName` through `role` toward `resultRole`; fromPool tells which end
// the object is. False when the request cannot match.
bool navigate(const CIMObjectPath& objectName, const String& role, const String& resultRole, bool withCpgs,
    ArrayState& array, std::vector<int>& found, bool& fromPool)
{
    fromPool = objectName.getClassName().equal(DELTA_CLASS);
    if (!fromPool && !objectName.getClassName().equal(VOLUME_CLASS))
        return false;
    const char* ownRole = fromPool ? ANTECEDENT : DEPENDENT;
    const char* farRole = fromPool ? DEPENDENT : ANTECEDENT;
    if ((role.size() && !String::equalNoCase(role, ownRole)) ||
        (resultRole.size() && !String::equalNoCase(resultRole, farRole)))
        return false;
    if (!array.read(withCpgs))
        return false;
    const CIMObjectPath object = inNamespace(objectName);
    for (int i = 0; i < array.volumes.size(); i++)
    {
        const api_VVObj_t& v = array.volumes[i];
        if (v.cpgName[0] &&
            ZDA_Common::matchObjectPath(object, fromPool ? array.poolPath(v) : array.volumePath(v)))
            found.push_back(i);
    }
    return true;
}

}  // namespace

ZDA_ReplicaPoolForStorageProvider::ZDA_ReplicaPoolForStorageProvider() = default;
ZDA_ReplicaPoolForStorageProvider::~ZDA_ReplicaPoolForStorageProvider() = default;

CIMObjectPath ZDA_ReplicaPoolForStorageProvider::buildObjectPath(
    const CIMObjectPath& pool, const CIMObjectPath& volume, const String& host)
{
    return ZDA_Common::buildAssocPath(ClassName, ANTECEDENT, DEPENDENT, pool, volume, host, NAMESPACE);
}

void ZDA_ReplicaPoolForStorageProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_ReplicaPoolForStorageProvider::terminate()
{
    delete this;
}

void ZDA_ReplicaPoolForStorageProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName);
    CIMClass assocClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    CIMInstance found;
    ArrayState array;
    if (array.read(false))
    {
        const CIMObjectPath wanted = inNamespace(instanceReference);
        for (const api_VVObj_t& v : array.volumes)
            if (v.cpgName[0] && ZDA_Common::matchObjectPath(wanted, array.path(v)))
                found = array.instance(v, assocClass);
    }
    if (found.isUninitialized())
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(found);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::getInstance()\n");
}

void ZDA_ReplicaPoolForStorageProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName);
    CIMClass assocClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    ArrayState array;
    if (array.read(false))
        for (const api_VVObj_t& v : array.volumes)
            if (v.cpgName[0])
                handler.deliver(array.instance(v, assocClass));
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::enumerateInstances()\n");
}

void ZDA_ReplicaPoolForStorageProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName);
    handler.processing();
    ArrayState array;
    if (array.read(false))
        for (const api_VVObj_t& v : array.volumes)
            if (v.cpgName[0])
                handler.deliver(array.path(v));
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::enumerateInstanceNames()\n");
}

void ZDA_ReplicaPoolForStorageProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_ReplicaPoolForStorageProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_ReplicaPoolForStorageProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_ReplicaPoolForStorageProvider::associators(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::associators()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayState array;
    std::vector<int> found;
    bool fromPool = false;
    if (navigate(objectName, role, resultRole, true, array, found, fromPool) &&
        (fromPool ? isOneOf(resultClass, VOLUME_CLASSES) : isOneOf(resultClass, POOL_CLASSES)))
    {
        CIMClass farClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE,
            fromPool ? CIMName(VOLUME_CLASS) : CIMName(DELTA_CLASS), false, includeQualifiers,
            includeClassOrigin, propertyList);
        for (int i : found)
        {
            if (fromPool)
                handler.deliver(ZDA_StorageVolumeProvider::buildInstance(&array.volumes[i], array.systemName,
                    array.host, farClass, array.cpgs.begin(), array.cpgs.size()));
            else
            {
                CIMInstance pool = array.pool(array.volumes[i].cpgName, farClass);
                if (!pool.isUninitialized())
                    handler.deliver(pool);
            }
        }
    }
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::associators()\n");
}

void ZDA_ReplicaPoolForStorageProvider::associatorNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::associatorNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayState array;
    std::vector<int> found;
    bool fromPool = false;
    if (navigate(objectName, role, resultRole, false, array, found, fromPool) &&
        (fromPool ? isOneOf(resultClass, VOLUME_CLASSES) : isOneOf(resultClass, POOL_CLASSES)))
    {
        for (int i : found)
            handler.deliver(fromPool ? array.volumePath(array.volumes[i]) : array.poolPath(array.volumes[i]));
    }
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::associatorNames()\n");
}

void ZDA_ReplicaPoolForStorageProvider::references(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::references()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayState array;
    std::vector<int> found;
    bool fromPool = false;
    if (isOneOf(resultClass, ASSOCIATION_CLASSES) &&
        navigate(objectName, role, String(), false, array, found, fromPool))
    {
        CIMClass assocClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
            false, includeQualifiers, includeClassOrigin, propertyList);
        for (int i : found)
            handler.deliver(array.instance(array.volumes[i], assocClass));
    }
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::references()\n");
}

void ZDA_ReplicaPoolForStorageProvider::referenceNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicaPoolForStorageProvider::referenceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayState array;
    std::vector<int> found;
    bool fromPool = false;
    if (isOneOf(resultClass, ASSOCIATION_CLASSES) &&
        navigate(objectName, role, String(), false, array, found, fromPool))
    {
        for (int i : found)
            handler.deliver(array.path(array.volumes[i]));
    }
    handler.complete();
    log_message(4, "<-- ZDA_ReplicaPoolForStorageProvider::referenceNames()\n");
}

PEGASUS_NAMESPACE_END
