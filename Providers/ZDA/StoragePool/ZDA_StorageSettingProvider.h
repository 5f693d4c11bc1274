// ZDA_StorageSettingProvider: the array's storage settings as
// ZDA_StorageSetting instances in root/zda, which clients create, modify
// and delete, and which the array keeps. A setting is a template for
// copies: clients pass it as TargetSettingGoal, and the copy services read
// UserDSPName, SnapDSPName, ExpirationTime, RetentionTime and Description
// from it.
//
// Key: InstanceID "KX_ORLA:SETTING:<name>", the name being the setting's
// ElementName (1 to 31 characters, unique; it cannot change). Times are
// intervals (a snapshot lives ExpirationTime after it is made); a point
// in time is refused. Failures: CIM_ERR_ALREADY_EXISTS for a name taken,
// CIM_ERR_NOT_FOUND for a setting the array does not have,
// CIM_ERR_INVALID_PARAMETER for values the array refuses (with its text),
// CIM_ERR_FAILED for other array failures. Reads of a failed or busy
// array give an empty answer. May be called on any number of threads.
#ifndef ZDA_STORAGE_SETTING_PROVIDER_H
#define ZDA_STORAGE_SETTING_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StorageSettingProvider : public CIMInstanceProvider
{
public:
    ZDA_StorageSettingProvider();
    virtual ~ZDA_StorageSettingProvider();

    // The path of the setting `name` on `host`.
    static CIMObjectPath buildObjectPath(const String& name, const String& host);
    // The instance of `setting` on the skeleton of `settingClass`.
    static CIMInstance buildInstance(
        const api_setting_t& setting, const String& host, CIMClass& settingClass);

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);
    // Changes the properties `instanceObject` carries (those of
    // `propertyList` when it is not null); a null value clears one.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    // Stores a new setting named by the instance's ElementName and delivers its path.
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

private:
    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
