// ZDA_ReplicationServiceCapabilitiesProvider: what the array's replication
// can do. Serves the one ZDA_ReplicationServiceCapabilities instance of
// root/zda (InstanceID "KX_ORLA:ReplicationServiceCapabilities"), a fixed
// description, and the class's extrinsic methods: fixed tables keyed by
// replication type (4 synchronous and 5 asynchronous remote mirror, 6
// snapshot, 10 synchronous and 11 asynchronous clone) and the array's
// limits for a kind of replica (GetSupportedMaximum).
//
// Every method is authorized with the capabilities right and then answers
// with a return value, never with an exception: 0 success, 1 not
// supported (an unknown replication type or method), 5 a missing or
// invalid parameter. Output parameters come only with 0.
//
// The provider keeps only what initialize() fills in; the remote copy
// limits, once read as non-zero, are kept for the process.
#ifndef ZDA_REPLICATION_SERVICE_CAPABILITIES_PROVIDER_H
#define ZDA_REPLICATION_SERVICE_CAPABILITIES_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicationServiceCapabilitiesProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_ReplicationServiceCapabilitiesProvider();
    // Not a working constructor: always throws CIMNotSupportedException.
    explicit ZDA_ReplicationServiceCapabilitiesProvider(const CIMObjectPath& path);
    virtual ~ZDA_ReplicationServiceCapabilitiesProvider();

    // The array's remote copy limit `vartype` (api_mvar_t, 0 to 6), read
    // from the array while it reads 0 and kept once it is not. Any other
    // vartype is logged and gives 0. The kept values are shared by all
    // threads.
    static Uint32 getRemoteCopyMaxVar(int vartype);

    // Keeps the handle, the system's host name and the instance's path.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // The instance, for a path with its one key that matches the
    // instance's path (hosts aside). Throws CIMInvalidParameterException
    // for another number of keys, CIMObjectNotFoundException for another
    // path, and access denied for a user the array refuses.
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // The instance (or its path) for ZDA_ReplicationServiceCapabilities and
    // CIM_ReplicationServiceCapabilities; nothing at all for another class.
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);
    // Refused with CIMNotSupportedException, before anything else.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

    // Authorizes the call, checks the path against the instance's and
    // answers the method. Throws access denied (user refused or lacking
    // the right), CIM_ERR_NOT_SUPPORTED (an authorization answer the
    // module does not know) or CIMObjectNotFoundException (another path).
    // A method name the provider does not know is answered with 1.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    CIMInstance _buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    void _buildInstanceName();

    // The method handlers; each delivers its outputs and return value.
    void _convertSyncTypeToReplicationType(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _convertReplicationTypeToSyncType(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedFeatures(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);
    void _getSupportedGroupFeatures(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);
    void _getSupportedCopyStates(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);
    void _getSupportedGroupCopyStates(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedWaitForCopyStates(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // "GetSupportedConsistency" gives the list, "GetDefaultConsistency" its
    // first value.
    void _getSupportedConsistency(const OperationContext& context, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // The output is named after the method: SupportedOperations or
    // SupportedListOperations.
    void _getSupportedOperations(const OperationContext& context, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedGroupOperations(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getDefaultGroupPersistency(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedReplicationSettingData(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getDefaultReplicationSettingData(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedThinProvisioningFeatures(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    void _getSupportedMaximum(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

    // The value of the setting-data property `propertyName` (2 to 9) for
    // the replication type, in `supportedValues`. 0, or 1 when the type or
    // the property has no value.
    static Uint32 _getReplicationSettingDataSupportedValues(
        Uint16 replicationType, Uint16 propertyName, Array<Uint64>& supportedValues);
    // The name of that property; "Pairing" for 9 and for any number
    // outside 2 to 8.
    static String _getReplicationSettingDataPropertyName(Uint16 propertyName);

    CIMOMHandle _cimom;
    String _hostName;
    CIMObjectPath _instanceName;
};

PEGASUS_NAMESPACE_END

#endif
