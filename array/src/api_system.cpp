// Sessions, rights, system identity, limits and ports.
#include <arpa/inet.h>

#include <cstring>

#include "call.h"

using namespace zdasim;

namespace
{

// Copies the ports of one protocol into a list handed to the caller.
int listPorts(const char* function, int protocol, int* count, api_port_t** ports)
{
    ApiCall call(function, Sem::Needed);
    if (!count || !ports)
        return call.done(API_E_INVALID);
    *count = 0;
    *ports = nullptr;
    if (call.fault())
        return call.done(call.fault()->code);
    std::vector<const api_port_t*> found;
    for (const Port& p : call.model().ports)
        if (p.record.protocol == protocol)
            found.push_back(&p.record);
    if (found.empty())
        return call.done(API_OK);
    auto* out = static_cast<api_port_t*>(
        call.ledger().allocate(found.size() * sizeof(api_port_t), "port_list"));
    if (!out)
        return call.done(API_E_NOMEM);
    for (size_t i = 0; i < found.size(); ++i)
        out[i] = *found[i];
    *count = static_cast<int>(found.size());
    *ports = out;
    call.arg("count", *count);
    return call.done(API_OK);
}

int copySystemText(const char* function, char* buffer, std::string SystemInfo::*field)
{
    ApiCall call(function, Sem::Needed);
    if (!buffer)
        return call.done(API_E_INVALID);
    buffer[0] = '\0';
    if (call.fault())
        return call.done(call.fault()->code);
    copyText(buffer, 256, call.model().system.*field);
    return call.done(API_OK);
}

}  // namespace

extern "C"
{

    int api_zdaOpenForCimserver(const char* userName)
    try
    {
        ApiCall call("api_zdaOpenForCimserver", Sem::NotNeeded);
        call.arg("user", userName);
        if (call.fault())
            return call.done(call.fault()->code);
        const auto& users = call.model().users;
        auto it = userName ? users.find(userName) : users.end();
        if (it == users.end() || it->second.openRefused)
            return call.done(API_E_ACCESS);
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_zdaOpenForCimserver").code;
    }

    int api_authorizeCIMUser(const char* user, const char* ipAddress, const char* key)
    try
    {
        ApiCall call("api_authorizeCIMUser", Sem::NotNeeded);
        call.arg("user", user).arg("addr", ipAddress).arg("key", key);
        if (call.fault())
            return call.done(call.fault()->code);
        return call.done(call.model().authorize(user, key));
    }
    catch (...)
    {
        caughtAtBoundary("api_authorizeCIMUser");
        return API_AUTH_DENIED;
    }

    int api_getSystemInfo(api_system_info_t* info)
    try
    {
        ApiCall call("api_getSystemInfo", Sem::Needed);
        if (!info)
            return call.done(API_E_INVALID);
        std::memset(info, 0, sizeof *info);
        if (call.fault())
            return call.done(call.fault()->code);
        const SystemInfo& s = call.model().system;
        copyText(info->name, s.name);
        info->id = s.id;
        info->type = s.type;
        copyText(info->wwn, wwnToText(0, (0x2FF7ull << 48) | s.id));
        copyText(info->hostName, s.hostName);
        copyText(info->contact, s.contact);
        copyText(info->owner, s.owner);
        info->isQuadPort = s.isQuadPort;
        info->policyFlags = s.policyFlags;
        info->nodesAlive = s.nodesAlive;
        info->nodesTotal = s.nodesTotal;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getSystemInfo").code;
    }

    int api_getSystemContact(char* buffer)
    try
    {
        return copySystemText("api_getSystemContact", buffer, &SystemInfo::contact);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getSystemContact").code;
    }

    int api_getOwnerName(char* buffer)
    try
    {
        return copySystemText("api_getOwnerName", buffer, &SystemInfo::owner);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getOwnerName").code;
    }

    int api_getSystemDualIP(_api_ipaddr_t* addr)
    try
    {
        ApiCall call("api_getSystemDualIP", Sem::NotNeeded);
        if (!addr)
            return call.done(API_E_INVALID);
        std::memset(addr, 0, sizeof *addr);
        if (call.fault())
            return call.done(call.fault()->code);
        const SystemInfo& s = call.model().system;
        in_addr v4{};
        if (s.ipv4.empty() || inet_pton(AF_INET, s.ipv4.c_str(), &v4) != 1)
            return call.done(API_E_NOT_FOUND);
        addr->ipv4_addr = v4.s_addr;
        addr->dual_flag = 1;
        if (!s.ipv6.empty() && inet_pton(AF_INET6, s.ipv6.c_str(), addr->ipv6_addr) == 1)
            addr->dual_flag = 2;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getSystemDualIP").code;
    }

    int api_getMaxVolumeNumbers(
        uint32_t* maxVol, uint32_t* maxBaseVol, uint32_t* maxSnapshotPerBase, uint32_t* maxRWSnapshots)
    try
    {
        ApiCall call("api_getMaxVolumeNumbers", Sem::NotNeeded);
        if (call.fault())
            return call.done(call.fault()->code);
        const SystemInfo& s = call.model().system;
        if (maxVol)
            *maxVol = s.maxVolumes;
        if (maxBaseVol)
            *maxBaseVol = s.maxBaseVolumes;
        if (maxSnapshotPerBase)
            *maxSnapshotPerBase = s.maxSnapshotsPerBase;
        if (maxRWSnapshots)
            *maxRWSnapshots = s.maxRWSnapshots;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getMaxVolumeNumbers").code;
    }

    int api_getmvar(int vartype, uint32_t* value)
    try
    {
        ApiCall call("api_getmvar", Sem::NotNeeded);
        call.arg("vartype", vartype);
        if (value)
            *value = 0;
        if (call.fault())
            return call.done(call.fault()->code);
        if (!value || vartype < ZDA_RM_MAX_GROUPS_SYNC || vartype > ZDA_RM_GROUP_MAX_VOLUMES)
            return call.done(API_E_INVALID);
        *value = call.model().system.rcopyLimits[vartype];
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getmvar").code;
    }

    int api_getFCPortLPID(api_u64_t portWWN)
    try
    {
        ApiCall call("api_getFCPortLPID", Sem::NotNeeded);
        call.arg("wwn", wwnToText(0, portWWN));
        if (call.fault())
            return call.done(call.fault()->code);
        for (const Port& p : call.model().ports)
            if (p.record.protocol == API_PORT_FC && p.record.wwn == portWWN)
                return call.done(p.record.lpid);
        return call.done(-1);
    }
    catch (...)
    {
        caughtAtBoundary("api_getFCPortLPID");
        return -1;
    }

    int api_getiSCSIPortLPID(const char* iscsiName)
    try
    {
        ApiCall call("api_getiSCSIPortLPID", Sem::NotNeeded);
        call.arg("name", iscsiName);
        if (call.fault())
            return call.done(call.fault()->code);
        if (!iscsiName)
            return call.done(-1);
        const std::string name(iscsiName, strnlen(iscsiName, 223));
        for (const Port& p : call.model().ports)
            if (p.record.protocol == API_PORT_ISCSI && name == p.record.iscsiName)
                return call.done(p.record.lpid);
        return call.done(-1);
    }
    catch (...)
    {
        caughtAtBoundary("api_getiSCSIPortLPID");
        return -1;
    }

    int api_getFCPorts(int* count, api_port_t** ports)
    try
    {
        return listPorts("api_getFCPorts", API_PORT_FC, count, ports);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getFCPorts").code;
    }

    int api_getRCIPPorts(int* count, api_port_t** ports)
    try
    {
        return listPorts("api_getRCIPPorts", API_PORT_RCIP, count, ports);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getRCIPPorts").code;
    }

}  // extern "C"
