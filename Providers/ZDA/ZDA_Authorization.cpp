// Method authorization: each function maps a method's input to the key of a
// right and asks the array whether the user holds it.
#include "ZDA_Authorization.h"

#include <Pegasus/Common/CIMValue.h>

#include "ZDA_Common.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const int NOT_SUPPORTED = 3;

int askArray(const String& userName, const String& ipAddr, const String& key)
{
    return api_authorizeCIMUser(
        (const char*)userName.getCString(), (const char*)ipAddr.getCString(), (const char*)key.getCString());
}

// Asks for the right when there is a key and nothing refused before.
int decide(int code, const String& userName, const String& ipAddr, const String& key)
{
    if (code == 0 && key.size() > 0)
        return askArray(userName, ipAddr, key);
    return code;
}

// A parameter read in the walk: set only by a non-null value.
template <class T>
struct Param
{
    T value = T();
    bool set = false;

    bool read(const CIMParamValue& param, const char* name)
    {
        if (!String::equalNoCase(param.getParameterName(), name))
            return false;
        CIMValue v = param.getValue();
        if (!v.isNull())
        {
            v.get(value);
            set = true;
        }
        return true;
    }
};

// The volume a synchronization's SyncedElement names; a null path when the
// reference carries none.
CIMObjectPath syncedElementOf(const CIMObjectPath& synchronization)
{
    const String element = ZDA_Common::getStringProperty(synchronization, "SyncedElement");
    return element.size() > 0 ? CIMObjectPath(element) : CIMObjectPath();
}

// The replica kinds that CreateElementReplica and CreateGroupReplica read.
struct ReplicaRequest
{
    Param<Uint16> syncType;
    Param<Uint16> mode;
};

ReplicaRequest readReplicaRequest(const Array<CIMParamValue>& inParameters)
{
    ReplicaRequest request;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        request.syncType.read(inParameters[i], "SyncType") || request.mode.read(inParameters[i], "Mode");
        if (request.syncType.set && request.mode.set)
            break;
    }
    return request;
}

}  // namespace

int authorize_CreateElementReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    const ReplicaRequest request = readReplicaRequest(inParameters);
    int code = 0;
    String key;
    if (!request.syncType.set || !request.mode.set)
        key = "zda_replicationservice.createelementreplica.createvvcopy";
    else if (request.syncType.value == 7)
        key = "zda_replicationservice.createelementreplica.createsv";
    else if (request.syncType.value == 8)
        key = "zda_replicationservice.createelementreplica.createvvcopy";
    else
        code = NOT_SUPPORTED;
    return decide(code, userName, ipAddr, key);
}

int authorize_CreateGroupReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    const ReplicaRequest request = readReplicaRequest(inParameters);
    int code = 0;
    String key;
    if (!request.syncType.set || !request.mode.set)
        key = "zda_replicationservice.creategroupreplica.creategroupvvcopy";
    else if (request.syncType.value == 7)
        key = "zda_replicationservice.creategroupreplica.creategroupsv";
    else if (request.syncType.value == 8)
        key = "zda_replicationservice.creategroupreplica.creategroupvvcopy";
    else if (request.syncType.value == 6)
        key = "zda_replicationservice.creategroupreplica.createmirror";
    else
        code = NOT_SUPPORTED;
    return decide(code, userName, ipAddr, key);
}

int authorize_ModifyReplicaSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<Uint16> operation;
    Param<CIMObjectPath> synchronization;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        operation.read(inParameters[i], "Operation") ||
            synchronization.read(inParameters[i], "Synchronization");
    }
    CIMObjectPath volRef;
    if (synchronization.set)
        volRef = syncedElementOf(synchronization.value);

    int code = 0;
    String key;
    if (!operation.set)
    {
        // Without an operation the call is treated as making a copy.
        key = "zda_replicationservice.createelementreplica.createvvcopy";
    }
    else
    {
        switch (operation.value)
        {
        case 2:
            // The array's table holds this key with its trailing blank.
            key = "zda_replicationservice.modifyreplicasynchronization.abort ";
            break;
        case 4: key = "zda_replicationservice.modifyreplicasynchronization.syncrcopy"; break;
        case 8:
        case 9: key = "zda_replicationservice.modifyreplicasynchronization.dissolve"; break;
        case 10:
        case 11:
        case 20: key = "zda_replicationservice.modifyreplicasynchronization.setrcopygroup"; break;
        case 14: key = "zda_replicationservice.modifyreplicasynchronization.resync"; break;
        case 15: key = "zda_replicationservice.modifyreplicasynchronization.restore"; break;
        case 19: code = handleDeleteVolumeMethod(volRef, key); break;
        case 21: key = "zda_replicationservice.modifyreplicasynchronization.split"; break;
        default: code = NOT_SUPPORTED; break;
        }
    }
    return decide(code, userName, ipAddr, key);
}

int authorize_ModifyListSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<Uint16> operation;
    Param<Array<CIMObjectPath>> synchronization;
    bool targetGroup = false;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        if (operation.read(inParameters[i], "Operation") ||
            synchronization.read(inParameters[i], "Synchronization"))
            continue;
        if (String::equalNoCase(inParameters[i].getParameterName(), "TargetGroup") &&
            !inParameters[i].getValue().isNull())
            targetGroup = true;
    }
    CIMObjectPath volRef;
    if (synchronization.set && synchronization.value.size() > 0)
        volRef = syncedElementOf(synchronization.value[0]);

    int code = 0;
    String key;
    if (!operation.set)
    {
        key = "zda_replicationservice.modifylistsynchronization.resync";
    }
    else
    {
        switch (operation.value)
        {
        case 2: key = "zda_replicationservice.modifylistsynchronization.abort"; break;
        case 8:
        case 9: key = "zda_replicationservice.modifylistsynchronization.dissolve"; break;
        case 14: key = "zda_replicationservice.modifylistsynchronization.resync"; break;
        case 15: key = "zda_replicationservice.modifylistsynchronization.restore"; break;
        case 19:
            if (targetGroup)
                key = "zda_replicationservice.deletegroup";
            else
                code = handleDeleteVolumeMethod(volRef, key);
            break;
        default: code = NOT_SUPPORTED; break;
        }
    }
    return decide(code, userName, ipAddr, key);
}

int authorize_ReplicationServiceCapabilitiesMethod(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>&)
{
    return askArray(userName, ipAddr, "zda_replicationservicecapabilities");
}

int authorize_DeleteStorageVolume(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Array<CIMObjectPath> volumes;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        Param<CIMObjectPath> one;
        Param<Array<CIMObjectPath>> many;
        if (one.read(inParameters[i], "TheElement"))
        {
            if (one.set)
                volumes.append(one.value);
        }
        else if (many.read(inParameters[i], "TheElements") && many.set)
        {
            volumes.appendArray(many.value);
        }
    }

    // The key carries over: a volume that cannot be found is asked for
    // with the key of the volume before it.
    String key = "zda_storageconfigurationservice.returntostoragepool";
    int code = 0;
    for (Uint32 i = 0; i < volumes.size() && code == 0; i++)
    {
        code = handleDeleteVolumeMethod(volumes[i], key);
        code = decide(code, userName, ipAddr, key);
    }
    return code;
}

int authorize_CreateOrModifyElemFromStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<String> elementName;
    Param<Uint64> size;
    Param<CIMObjectPath> theElement;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        elementName.read(inParameters[i], "ElementName") || size.read(inParameters[i], "Size") ||
            theElement.read(inParameters[i], "TheElement");
    }
    if (!theElement.set)
        return askArray(userName, ipAddr,
            "zda_storageconfigurationservice.createormodifyelementfromstoragepool.createvolume");
    int code = 0;
    if (size.set)
        code = askArray(userName, ipAddr,
            "zda_storageconfigurationservice.createormodifyelementfromstoragepool.growvolume");
    if (code == 0 && elementName.set)
        code = askArray(userName, ipAddr,
            "zda_storageconfigurationservice.createormodifyelementfromstoragepool.setvolume");
    return code;
}

int authorize_ModifySynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<Uint16> operation;
    for (Uint32 i = 0; i < inParameters.size(); i++)
        operation.read(inParameters[i], "Operation");
    if (!operation.set)
        return NOT_SUPPORTED;
    switch (operation.value)
    {
    case 2: return askArray(userName, ipAddr, "zda_storageconfigurationservice.modifysynchronization.detach");
    case 4: return askArray(userName, ipAddr, "zda_storageconfigurationservice.modifysynchronization.resync");
    case 5:
        return askArray(userName, ipAddr, "zda_storageconfigurationservice.modifysynchronization.restore");
    case 12:
        return askArray(userName, ipAddr, "zda_storageconfigurationservice.modifysynchronization.startcopy");
    case 13:
        return askArray(userName, ipAddr, "zda_storageconfigurationservice.modifysynchronization.stopcopy");
    default: return NOT_SUPPORTED;
    }
}

int authorize_CreateOrModifyStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<CIMObjectPath> pool;
    for (Uint32 i = 0; i < inParameters.size(); i++)
        pool.read(inParameters[i], "Pool");
    return askArray(userName, ipAddr,
        pool.set ? "zda_storageconfigurationservice.createormodifystoragepool.setcpg"
                 : "zda_storageconfigurationservice.createormodifystoragepool.createcpg");
}

int authorize_DeleteStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    Param<CIMObjectPath> pool;
    for (Uint32 i = 0; i < inParameters.size(); i++)
        pool.read(inParameters[i], "Pool");
    if (pool.set && pool.value.getClassName().equal("ZDA_DynamicStoragePool"))
        return askArray(
            userName, ipAddr, "zda_storageconfigurationservice.deletestoragepool.deletedynamicstoragepool");
    if (pool.set && pool.value.getClassName().equal("ZDA_DeltaReplicaStoragePool"))
        return askArray(userName, ipAddr,
            "zda_storageconfigurationservice.deletestoragepool.deletedeltareplicastoragepool");
    return NOT_SUPPORTED;
}

int authorize_ModifyStorageSetting_Transient(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>&)
{
    return askArray(
        userName, ipAddr, "zda_storageconfigurationservice.createormodifyelementfromstoragepool.setvolume");
}

int authorize_ModifyStorageSetting_Persistent(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>&)
{
    return askArray(userName, ipAddr, "zda_storagesetting.modifyinstance");
}

int authorize_AllocatedFromStoragePoolModifyInstance(
    const String& userName, const String& ipAddr, const CIMObjectPath& instanceName)
{
    const String dependent = ZDA_Common::getStringProperty(instanceName, "Dependent");
    if (dependent.size() == 0)
        return NOT_SUPPORTED;
    const CIMName dependentClass = CIMObjectPath(dependent).getClassName();
    if (dependentClass.equal("ZDA_StorageVolume"))
        return askArray(userName, ipAddr, "zda_allocatedfromstoragepool.modifyinstance.setvv");
    if (dependentClass.equal("ZDA_DynamicStoragePool") || dependentClass.equal("ZDA_DeltaReplicaStoragePool"))
        return askArray(userName, ipAddr, "zda_allocatedfromstoragepool.modifyinstance.setcpg");
    return NOT_SUPPORTED;
}

int handleDeleteVolumeMethod(CIMObjectPath& volRef, String& methodName)
{
    if (volRef.getClassName().isNull())
        return 0;

    const String deviceID = ZDA_Common::getStringProperty(volRef, "DeviceID");
    int type = 0;
    int count = 0;
    api_VVObj_t* vv = nullptr;
    if (deviceID.size() > 0)
    {
        int rc = cim_sem_wait();
        if (rc == 0)
        {
            rc = api_getVVs(nullptr, (const char*)deviceID.getCString(), &count, &vv, 1);
            cim_sem_post();
        }
        if (rc == 0 && count > 0)
            type = vv[0].type;
        else
            count = 0;
    }

    if (count == 0)
    {
        log_message(
            2, "Cannot find the volume referenced to in %s\n", (const char*)volRef.toString().getCString());
        free_if_not_null(vv);
        return 0;
    }
    if (type == 0)
    {
        log_message(2, "TheElement parameter is invalid\n");
        free_if_not_null(vv);
        return 0;
    }
    switch (type)
    {
    case 1: methodName = "zda_storageconfigurationservice.returntostoragepool.basevv"; break;
    case 2: methodName = "zda_storageconfigurationservice.returntostoragepool.physcopyvv"; break;
    case 3: methodName = "zda_storageconfigurationservice.returntostoragepool.virtcopyvv"; break;
    case 4: methodName = "zda_storageconfigurationservice.returntostoragepool"; break;
    default: break;
    }
    free_if_not_null(vv);
    return 0;
}

int getNumberOfNodes()
{
    return cluster_num_nodes_alive();
}

PEGASUS_NAMESPACE_END
