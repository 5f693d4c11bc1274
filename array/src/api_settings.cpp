// Storage settings (zdaapi_settings.h), kept in the model with the array.
#include <cstring>

#include "call.h"

using namespace zdasim;

namespace
{

constexpr const char* kSettingList = "setting_list";

// Why `s` cannot be stored, as a failed status, or success.
api_Status_t check(const ArrayModel& m, const api_setting_t& s)
{
    const std::string bad = nameProblem(fieldName(s.name, sizeof s.name));
    if (!bad.empty())
        return statusError(API_E_INVALID, "Setting name %s", bad.c_str());
    if (strnlen(s.comment, sizeof s.comment) == sizeof s.comment)
        return statusError(API_E_INVALID, "Setting comment is longer than 256 characters");
    for (const char* cpg : {s.userCpg, s.snapCpg})
    {
        const std::string name = fieldName(cpg, API_NAME_LEN);
        if (!name.empty() && !m.findCpg(name))
            return statusError(API_E_INVALID, "CPG %s does not exist", name.c_str());
    }
    // Times of different kinds cannot be compared until a snapshot is made.
    const bool sameKind = ((s.timesAt & API_SETTING_EXPIRATION_AT) != 0) ==
        ((s.timesAt & API_SETTING_RETENTION_AT) != 0);
    if (s.expirationSeconds && sameKind && s.retentionSeconds > s.expirationSeconds)
        return statusError(API_E_INVALID, "Retention time %u s is longer than expiration time %u s",
            s.retentionSeconds, s.expirationSeconds);
    if (s.deltaReservationGoal > 100)
        return statusError(API_E_INVALID, "Delta reservation %u%% is above 100%%", s.deltaReservationGoal);
    return statusOk();
}

Setting stored(const api_setting_t& s)
{
    Setting out;
    out.record = s;
    // Keep the texts terminated and nothing behind them.
    copyText(out.record.name, fieldName(s.name, sizeof s.name));
    copyText(out.record.comment, fieldName(s.comment, sizeof s.comment));
    copyText(out.record.userCpg, fieldName(s.userCpg, sizeof s.userCpg));
    copyText(out.record.snapCpg, fieldName(s.snapCpg, sizeof s.snapCpg));
    return out;
}

}  // namespace

extern "C"
{

    int api_getSettings(int* count, api_setting_t** settings)
    try
    {
        ApiCall call("api_getSettings", Sem::Needed);
        if (!count || !settings)
            return call.done(API_E_INVALID);
        *count = 0;
        *settings = nullptr;
        if (call.fault())
            return call.done(call.fault()->code);
        const auto& all = call.model().settings;
        call.arg("count", static_cast<long long>(all.size()));
        if (all.empty())
            return call.done(API_OK);
        auto* out = static_cast<api_setting_t*>(
            call.ledger().allocate(all.size() * sizeof(api_setting_t), kSettingList));
        if (!out)
            return call.done(API_E_NOMEM);
        size_t i = 0;
        for (const auto& [name, s] : all)
            out[i++] = s.record;
        *count = static_cast<int>(all.size());
        *settings = out;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getSettings").code;
    }

    api_Status_t api_createSetting(_api_evtparam_t* event, const api_setting_t* setting)
    try
    {
        ApiCall call("api_createSetting", Sem::Needed, Changing{event});
        if (setting)
            call.arg("name", fieldName(setting->name, sizeof setting->name));
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (!setting)
            return call.done(statusError(API_E_INVALID, "No setting given"));
        ArrayModel& m = call.model();
        api_Status_t checked = check(m, *setting);
        if (checked.code)
            return call.done(checked);
        const std::string name = fieldName(setting->name, sizeof setting->name);
        if (m.settings.count(name))
            return call.done(statusError(API_E_EXISTS, "Setting %s already exists", name.c_str()));
        if (m.settings.size() >= API_MAX_SETTINGS)
            return call.done(
                statusError(API_E_LIMIT, "The system keeps at most %d settings", API_MAX_SETTINGS));
        m.settings[name] = stored(*setting);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_createSetting");
    }

    api_Status_t api_modifySetting(_api_evtparam_t* event, const api_setting_t* setting)
    try
    {
        ApiCall call("api_modifySetting", Sem::Needed, Changing{event});
        if (setting)
            call.arg("name", fieldName(setting->name, sizeof setting->name));
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (!setting)
            return call.done(statusError(API_E_INVALID, "No setting given"));
        ArrayModel& m = call.model();
        const std::string name = fieldName(setting->name, sizeof setting->name);
        auto it = m.settings.find(name);
        if (it == m.settings.end())
            return call.done(statusError(API_E_NOT_FOUND, "Setting %s does not exist", name.c_str()));
        api_Status_t checked = check(m, *setting);
        if (checked.code)
            return call.done(checked);
        it->second = stored(*setting);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_modifySetting");
    }

    api_Status_t api_removeSetting(_api_evtparam_t* event, const char* name)
    try
    {
        ApiCall call("api_removeSetting", Sem::Needed, Changing{event});
        call.arg("name", name);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (call.model().settings.erase(str(name)) == 0)
            return call.done(statusError(API_E_NOT_FOUND, "Setting %s does not exist", str(name).c_str()));
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_removeSetting");
    }

}  // extern "C"
