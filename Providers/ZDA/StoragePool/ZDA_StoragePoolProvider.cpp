// The array's CPGs as dynamic and delta replica storage pools.
#include "ZDA_StoragePoolProvider.h"

#include <cstring>
#include <map>
#include <string>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_CopyServicesCommon.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::ArrayList;
using ZDA_CompanionFrame::callUnderSemaphore;
using namespace ZDA_CopyServices;

namespace
{

const String ClassName = "ZDA_DynamicStoragePool";
const char DELTA_CLASS[] = "ZDA_DeltaReplicaStoragePool";
const char SOURCE_FILE[] = "ZDA_StoragePoolProvider";
const char POOL_PREFIX[] = "KX_ORLA:CPG:";
const char DELTA_PREFIX[] = "KX_ORLA:SNAP:";
const Uint64 MIB = 1048576;
// CIM_StoragePool.Usage values.
const Uint16 USAGE_UNRESTRICTED = 2;
const Uint16 USAGE_DELTA_REPLICA_CONTAINER = 4;

bool isDelta(const CIMName& className)
{
    return className.equal(DELTA_CLASS);
}

CIMObjectPath poolPath(const char* prefix, const char* className, const String& cpgName, const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", String(prefix) + cpgName, CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName(NAMESPACE), CIMName(className), keys);
}

}  // namespace

CIMInstance ZDA_StoragePoolProvider::buildInstance(
    const api_cpg_t& cpg, bool delta, Uint64 snapshotMiB, const String& host, CIMClass& poolClass)
{
    CIMInstance pool = ZDA_Common::buildInstanceSkeleton(poolClass);
    const String name = cpg.name;
    const CIMObjectPath path = delta ? ZDA_StoragePoolProvider::buildDeltaObjectPath(name, host)
                                     : ZDA_StoragePoolProvider::buildObjectPath(name, host);
    ZDA_Common::setPropertyValue(pool, "InstanceID", ZDA_Common::getStringProperty(path, "InstanceID"));
    ZDA_Common::setPropertyValue(pool, "PoolID", name);
    ZDA_Common::setPropertyValue(pool, "ElementName", delta ? name + " snapshot space" : name);
    ZDA_Common::setPropertyValue(pool, "Primordial", Boolean(false));
    const Uint64 total = Uint64(cpg.totalMiB) * MIB;
    const Uint64 used = Uint64(cpg.usedMiB) * MIB;
    ZDA_Common::setPropertyValue(pool, "TotalManagedSpace", total);
    ZDA_Common::setPropertyValue(pool, "SpaceLimit", total);
    ZDA_Common::setPropertyValue(pool, "RemainingManagedSpace", total > used ? total - used : Uint64(0));
    ZDA_Common::setPropertyValue(pool, "ElementsShareSpace", Boolean(true));
    ZDA_Common::setPropertyValue(pool, "Usage", delta ? USAGE_DELTA_REPLICA_CONTAINER : USAGE_UNRESTRICTED);
    if (delta)
        ZDA_Common::setPropertyValue(pool, "ReservedSpace", snapshotMiB * MIB);
    Array<Uint16> status;
    status.append(2);
    ZDA_Common::setPropertyValue(pool, "OperationalStatus", status);
    pool.setPath(path);
    return pool;
}

ZDA_StoragePoolProvider::ZDA_StoragePoolProvider() = default;
ZDA_StoragePoolProvider::~ZDA_StoragePoolProvider() = default;

CIMObjectPath ZDA_StoragePoolProvider::buildObjectPath(const String& cpgName, const String& host)
{
    return poolPath(POOL_PREFIX, "ZDA_DynamicStoragePool", cpgName, host);
}

CIMObjectPath ZDA_StoragePoolProvider::buildDeltaObjectPath(const String& cpgName, const String& host)
{
    return poolPath(DELTA_PREFIX, DELTA_CLASS, cpgName, host);
}

String ZDA_StoragePoolProvider::cpgOf(const CIMObjectPath& poolPath)
{
    const std::string id = (const char*)ZDA_Common::getStringProperty(poolPath, "InstanceID").getCString();
    const char* prefix = isDelta(poolPath.getClassName()) ? DELTA_PREFIX
        : poolPath.getClassName().equal(ClassName)        ? POOL_PREFIX
                                                          : nullptr;
    if (!prefix || id.rfind(prefix, 0) != 0)
        return String();
    return String(id.substr(strlen(prefix)).c_str());
}

void ZDA_StoragePoolProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StoragePoolProvider::terminate()
{
    delete this;
}

template <class Deliver>
void ZDA_StoragePoolProvider::_forEachPool(const CIMName& className, CIMClass* poolClass, Deliver&& deliver)
{
    String systemName;
    String host;
    if (!systemIdentity(SOURCE_FILE, systemName, host))
        return;
    ArrayList<api_cpg_t> cpgs;
    const int rc = callUnderSemaphore([&] { return api_getCPGs(cpgs.count(), cpgs.out()); });
    if (rc != 0)
    {
        log_message(2, "ZDA_StoragePoolProvider: api_getCPGs error (%d)\n", rc);
        return;
    }
    const bool delta = isDelta(className);
    // The snapshot space in use per CPG, for delta pools.
    std::map<std::string, Uint64> snapshotMiB;
    if (delta && poolClass)
    {
        ArrayList<api_VVObj_t> volumes;
        const int vrc = readAllVolumes(volumes);
        if (vrc != 0)
        {
            log_message(2, "ZDA_StoragePoolProvider: api_getVVs error (%d)\n", vrc);
            return;
        }
        for (const api_VVObj_t& v : volumes)
            if (v.cpgName[0])
                snapshotMiB[v.cpgName] += v.snapUsedMiB;
    }
    for (const api_cpg_t& cpg : cpgs)
    {
        if (poolClass)
        {
            deliver(buildInstance(cpg, delta, snapshotMiB[cpg.name], host, *poolClass));
        }
        else
        {
            CIMInstance named(className);
            named.setPath(delta ? buildDeltaObjectPath(cpg.name, host) : buildObjectPath(cpg.name, host));
            deliver(named);
        }
    }
}

void ZDA_StoragePoolProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StoragePoolProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, DELTA_CLASS);
    const CIMName className = instanceReference.getClassName();
    CIMClass poolClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, className,
        false, includeQualifiers, includeClassOrigin, propertyList);
    const CIMObjectPath wanted = inNamespace(instanceReference);
    CIMInstance found;
    _forEachPool(className, &poolClass, [&](const CIMInstance& pool) {
        if (ZDA_Common::matchObjectPath(wanted, pool.getPath()))
            found = pool;
    });
    if (found.isUninitialized())
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(found);
    handler.complete();
    log_message(4, "<-- ZDA_StoragePoolProvider::getInstance()\n");
}

void ZDA_StoragePoolProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StoragePoolProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, DELTA_CLASS);
    CIMClass poolClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE,
        classReference.getClassName(), false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    _forEachPool(
        classReference.getClassName(), &poolClass, [&](const CIMInstance& pool) { handler.deliver(pool); });
    handler.complete();
    log_message(4, "<-- ZDA_StoragePoolProvider::enumerateInstances()\n");
}

void ZDA_StoragePoolProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StoragePoolProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, DELTA_CLASS);
    handler.processing();
    _forEachPool(classReference.getClassName(), nullptr,
        [&](const CIMInstance& named) { handler.deliver(named.getPath()); });
    handler.complete();
    log_message(4, "<-- ZDA_StoragePoolProvider::enumerateInstanceNames()\n");
}

void ZDA_StoragePoolProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_StoragePoolProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_StoragePoolProvider::deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

PEGASUS_NAMESPACE_END
