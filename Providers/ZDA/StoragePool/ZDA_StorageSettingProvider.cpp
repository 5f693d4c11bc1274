// The array's storage settings as ZDA_StorageSetting.
#include "ZDA_StorageSettingProvider.h"

#include <array>
#include <cstring>
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

const String ClassName = "ZDA_StorageSetting";
const char SOURCE_FILE[] = "ZDA_StorageSettingProvider";
const char ID_PREFIX[] = "KX_ORLA:SETTING:";
const Uint16 CHANGEABLE_PERSISTENT = 2;

std::string text(const String& s)
{
    return (const char*)s.getCString();
}

// The setting name an instance ID names; "" for another text.
std::string nameOf(const CIMObjectPath& reference)
{
    const std::string id = text(ZDA_Common::getStringProperty(reference, "InstanceID"));
    return id.rfind(ID_PREFIX, 0) == 0 ? id.substr(strlen(ID_PREFIX)) : std::string();
}

void copyField(char* field, size_t size, const std::string& value)
{
    if (value.size() >= size)
        throw CIMInvalidParameterException(ClassName + " value too long: " + String(value.c_str()));
    memset(field, 0, size);
    memcpy(field, value.data(), value.size());
}

// Whether the request changes `name`: the instance has it, and the
// property list (when not null) names it.
bool given(const CIMInstance& instance, const CIMPropertyList& list, const char* name)
{
    return instance.findProperty(name) != PEG_NOT_FOUND && list.useThisProperty(name);
}

// A setting's expiration or retention: its property, its field, and the
// bit of timesAt that marks it a point in time.
struct TimeField
{
    const char* property;
    uint32_t* seconds;
    uint8_t atFlag;
};

std::array<TimeField, 2> timeFields(api_setting_t& record)
{
    return {TimeField{"ExpirationTime", &record.expirationSeconds, API_SETTING_EXPIRATION_AT},
        TimeField{"RetentionTime", &record.retentionSeconds, API_SETTING_RETENTION_AT}};
}

// Writes what `instance` says into `record`.
void applyInstance(const CIMInstance& source, const CIMPropertyList& list, api_setting_t& record)
{
    CIMInstance instance = source;
    try
    {
        String s;
        Uint32 u32 = 0;
        Uint16 u16 = 0;
        Uint8 u8 = 0;
        Boolean flag = false;
        CIMDateTime when;
        if (given(instance, list, "Description"))
            copyField(record.comment, sizeof record.comment,
                text(ZDA_Common::getStringProperty(instance, "Description")));
        if (given(instance, list, "UserDSPName"))
            copyField(record.userCpg, sizeof record.userCpg,
                text(ZDA_Common::getStringProperty(instance, "UserDSPName")));
        if (given(instance, list, "SnapDSPName"))
            copyField(record.snapCpg, sizeof record.snapCpg,
                text(ZDA_Common::getStringProperty(instance, "SnapDSPName")));
        if (given(instance, list, "BaseID"))
            record.baseId = ZDA_Common::getProperty(instance, "BaseID", u32) == 0 ? u32 : 0;
        if (given(instance, list, "DataRedundancyGoal"))
            record.dataRedundancyGoal = ZDA_Common::getProperty(instance, "DataRedundancyGoal", u16) == 0
                ? u16
                : 0;
        if (given(instance, list, "PackageRedundancyGoal"))
            record.packageRedundancyGoal =
                ZDA_Common::getProperty(instance, "PackageRedundancyGoal", u16) == 0 ? u16 : 0;
        if (given(instance, list, "DeltaReservationGoal"))
            record.deltaReservationGoal = ZDA_Common::getProperty(instance, "DeltaReservationGoal", u8) == 0
                ? u8
                : 0;
        if (given(instance, list, "NoSinglePointOfFailure"))
            record.noSinglePointOfFailure = ZDA_Common::getProperty(
                                                instance, "NoSinglePointOfFailure", flag) == 0 &&
                flag;
        // Each time is kept as given: an interval, or a point in time.
        for (const TimeField& time : timeFields(record))
        {
            if (!given(instance, list, time.property))
                continue;
            *time.seconds = 0;
            record.timesAt &= ~time.atFlag;
            if (ZDA_Common::getProperty(instance, time.property, when) != 0)
                continue;
            if (when.isInterval())
            {
                *time.seconds = uint32_t(when.toMicroSeconds() / 1000000);
                continue;
            }
            const time_t at = ZDA_Common::getDateTime(when);
            if (at <= 0 || at > time_t(0xFFFFFFFFu))
                throw CIMInvalidParameterException(
                    ClassName + " " + time.property + " lies outside the times the array keeps");
            *time.seconds = uint32_t(at);
            record.timesAt |= time.atFlag;
        }
    }
    catch (const TypeMismatchException&)
    {
        throw CIMInvalidParameterException(ClassName + " a property has the wrong type");
    }
}

// Throws the CIM error of a failed array change.
void throwFailure(const api_Status_t& status)
{
    char buffer[API_ERRTEXT_LEN];
    const String why = String(api_getErrorTextNoNL(buffer, sizeof buffer, &status));
    switch (status.code)
    {
    case API_E_EXISTS: throw CIMObjectAlreadyExistsException(ClassName + " " + why);
    case API_E_INVALID: throw CIMInvalidParameterException(ClassName + " " + why);
    case API_E_NOT_FOUND: throw CIMObjectNotFoundException(ClassName + " " + why);
    default: throw CIMOperationFailedException(ClassName + " " + why);
    }
}

// One status-form change under the semaphore.
template <class Call>
api_Status_t change(Call&& call)
{
    api_Status_t status;
    api_initStatus(&status);
    if (cim_sem_wait() != 0)
    {
        errinfo_set_str(&status, API_E_SEM_TIMEOUT, "Semaphore Timed-Out");
        return status;
    }
    status = call();
    cim_sem_post();
    return status;
}

// The settings and this array's host; false (logged) when unreadable.
bool readSettings(ArrayList<api_setting_t>& settings, String& host)
{
    String systemName;
    if (!systemIdentity(SOURCE_FILE, systemName, host))
        return false;
    const int rc = callUnderSemaphore([&] { return api_getSettings(settings.count(), settings.out()); });
    if (rc != 0)
        log_message(2, "ZDA_StorageSettingProvider: api_getSettings error (%d)\n", rc);
    return rc == 0;
}

// The stored setting `name`; false when there is none or it is unreadable.
bool findSetting(const std::string& name, api_setting_t& found, String& host)
{
    ArrayList<api_setting_t> settings;
    if (name.empty() || !readSettings(settings, host))
        return false;
    for (const api_setting_t& s : settings)
    {
        if (name == s.name)
        {
            found = s;
            return true;
        }
    }
    return false;
}

CIMDateTime interval(uint32_t seconds)
{
    return CIMDateTime(Uint64(seconds) * 1000000, true);
}

}  // namespace

ZDA_StorageSettingProvider::ZDA_StorageSettingProvider() = default;
ZDA_StorageSettingProvider::~ZDA_StorageSettingProvider() = default;

CIMObjectPath ZDA_StorageSettingProvider::buildObjectPath(const String& name, const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", String(ID_PREFIX) + name, CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName(NAMESPACE), CIMName(ClassName), keys);
}

CIMInstance ZDA_StorageSettingProvider::buildInstance(
    const api_setting_t& setting, const String& host, CIMClass& settingClass)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(settingClass);
    const String name = setting.name;
    ZDA_Common::setPropertyValue(instance, "InstanceID", String(ID_PREFIX) + name);
    ZDA_Common::setPropertyValue(instance, "ElementName", name);
    ZDA_Common::setPropertyValue(instance, "ChangeableType", CHANGEABLE_PERSISTENT);
    if (setting.comment[0])
        ZDA_Common::setPropertyValue(instance, "Description", String(setting.comment));
    if (setting.userCpg[0])
        ZDA_Common::setPropertyValue(instance, "UserDSPName", String(setting.userCpg));
    if (setting.snapCpg[0])
        ZDA_Common::setPropertyValue(instance, "SnapDSPName", String(setting.snapCpg));
    if (setting.baseId)
        ZDA_Common::setPropertyValue(instance, "BaseID", Uint32(setting.baseId));
    api_setting_t shown = setting;
    for (const TimeField& time : timeFields(shown))
    {
        if (*time.seconds == 0)
            continue;
        ZDA_Common::setPropertyValue(instance, time.property,
            (shown.timesAt & time.atFlag) ? ZDA_Common::getCIMDateTime(time_t(*time.seconds))
                                          : interval(*time.seconds));
    }
    if (setting.dataRedundancyGoal)
        ZDA_Common::setPropertyValue(instance, "DataRedundancyGoal", Uint16(setting.dataRedundancyGoal));
    if (setting.packageRedundancyGoal)
        ZDA_Common::setPropertyValue(
            instance, "PackageRedundancyGoal", Uint16(setting.packageRedundancyGoal));
    if (setting.deltaReservationGoal)
        ZDA_Common::setPropertyValue(instance, "DeltaReservationGoal", Uint8(setting.deltaReservationGoal));
    ZDA_Common::setPropertyValue(
        instance, "NoSinglePointOfFailure", Boolean(setting.noSinglePointOfFailure != 0));
    instance.setPath(buildObjectPath(name, host));
    return instance;
}

void ZDA_StorageSettingProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StorageSettingProvider::terminate()
{
    delete this;
}

void ZDA_StorageSettingProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageSetting");
    CIMClass settingClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    api_setting_t setting;
    String host;
    if (instanceReference.getKeyBindings().size() != 1 ||
        !findSetting(nameOf(instanceReference), setting, host))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(buildInstance(setting, host, settingClass));
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::getInstance()\n");
}

void ZDA_StorageSettingProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageSetting");
    CIMClass settingClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    ArrayList<api_setting_t> settings;
    String host;
    if (readSettings(settings, host))
        for (const api_setting_t& s : settings)
            handler.deliver(buildInstance(s, host, settingClass));
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::enumerateInstances()\n");
}

void ZDA_StorageSettingProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageSetting");
    handler.processing();
    ArrayList<api_setting_t> settings;
    String host;
    if (readSettings(settings, host))
        for (const api_setting_t& s : settings)
            handler.deliver(buildObjectPath(s.name, host));
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::enumerateInstanceNames()\n");
}

void ZDA_StorageSettingProvider::createInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const CIMInstance& instanceObject,
    ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::createInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageSetting");
    CIMInstance instance = instanceObject;
    const std::string name = text(ZDA_Common::getStringProperty(instance, "ElementName"));
    if (name.empty())
        throw CIMInvalidParameterException(ClassName + " ElementName names the setting and is required");
    api_setting_t record;
    memset(&record, 0, sizeof record);
    copyField(record.name, sizeof record.name, name);
    applyInstance(instanceObject, CIMPropertyList(), record);

    String systemName;
    String host;
    if (!systemIdentity(SOURCE_FILE, systemName, host))
        throw CIMOperationFailedException(ClassName + " the array could not be read");
    _api_evtparam_t event;
    memset(&event, 0, sizeof event);
    const String user = context.contains(IdentityContainer::NAME)
        ? IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()
        : String();
    ZDA_Common::setEventParam(&event, "ZDA_StorageSetting", "createInstance", "create",
        (const char*)user.getCString(), nullptr, name.c_str());
    const api_Status_t status = change([&] { return api_createSetting(&event, &record); });
    if (status.code != 0)
        throwFailure(status);
    handler.processing();
    handler.deliver(buildObjectPath(name.c_str(), host));
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::createInstance()\n");
}

void ZDA_StorageSettingProvider::modifyInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const CIMInstance& instanceObject, const Boolean,
    const CIMPropertyList& propertyList, ResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::modifyInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageSetting");
    api_setting_t record;
    String host;
    const std::string name = nameOf(instanceReference);
    if (!findSetting(name, record, host))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    CIMInstance instance = instanceObject;
    if (given(instance, propertyList, "ElementName") &&
        text(ZDA_Common::getStringProperty(instance, "ElementName")) != name)
        throw CIMInvalidParameterException(ClassName + " ElementName names the setting and cannot change");
    applyInstance(instanceObject, propertyList, record);

    _api_evtparam_t event;
    memset(&event, 0, sizeof event);
    const String user = context.contains(IdentityContainer::NAME)
        ? IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()
        : String();
    ZDA_Common::setEventParam(&event, "ZDA_StorageSetting", "modifyInstance", "modify",
        (const char*)user.getCString(), nullptr, name.c_str());
    const api_Status_t status = change([&] { return api_modifySetting(&event, &record); });
    if (status.code != 0)
        throwFailure(status);
    handler.processing();
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::modifyInstance()\n");
}

void ZDA_StorageSettingProvider::deleteInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSettingProvider::deleteInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageSetting");
    const std::string name = nameOf(instanceReference);
    if (name.empty())
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    _api_evtparam_t event;
    memset(&event, 0, sizeof event);
    const String user = context.contains(IdentityContainer::NAME)
        ? IdentityContainer(context.get(IdentityContainer::NAME)).getUserName()
        : String();
    ZDA_Common::setEventParam(&event, "ZDA_StorageSetting", "deleteInstance", "delete",
        (const char*)user.getCString(), nullptr, name.c_str());
    const api_Status_t status = change([&] { return api_removeSetting(&event, name.c_str()); });
    if (status.code != 0)
        throwFailure(status);
    handler.processing();
    handler.complete();
    log_message(4, "<-- ZDA_StorageSettingProvider::deleteInstance()\n");
}

PEGASUS_NAMESPACE_END
