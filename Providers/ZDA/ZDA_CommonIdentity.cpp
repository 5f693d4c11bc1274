// The system's identity: asked of the internal cache's methods over a local
// client connection, with the provider's CIMOMHandle as the second way in.
#include "ZDA_Common.h"

#include <arpa/inet.h>

#include <mutex>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/CIMClientException.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

const char INTERNAL_NAMESPACE[] = "root/PG_Internal";

// Calls one method of the internal cache and returns the output parameter
// `outName` (compared without case), or a null value when it is absent.
// With `cimom`, a failure of the local connection is answered by asking
// through the handle; without, it passes on.
CIMValue askInternalCache(const char* methodName, const char* outName, CIMOMHandle* cimom)
{
    const CIMObjectPath path = ZDA_Common::buildInternalCacheObjectPath("localhost", "localhost");
    Array<CIMParamValue> in;
    Array<CIMParamValue> out;
    if (cimom)
    {
        // No local connection here: the handle is the way in. Any other
        // failure of the local call (a refusal, a time-out) is worth a line
        // before the handle is tried.
        bool viaHandle = false;
        String why;  // empty when the local connection was not there at all
        try
        {
            ZDA_Common::invokeMethod(INTERNAL_NAMESPACE, path, methodName, in, out);
        }
        catch (CannotConnectException&)
        {
            viaHandle = true;
        }
        catch (Exception& e)
        {
            viaHandle = true;
            why = e.getMessage();
        }
        catch (...)
        {
            viaHandle = true;
            why = "unknown failure";
        }
        if (why.size() > 0)
            log_message(3, "ZDA_Common: %s on %s failed over the local connection: %s\n", methodName,
                (const char*)path.toString().getCString(), (const char*)why.getCString());
        if (viaHandle)
        {
            out.clear();
            cimom->invokeMethod(OperationContext(), INTERNAL_NAMESPACE, path, methodName, in, out);
        }
    }
    else
    {
        ZDA_Common::invokeMethod(INTERNAL_NAMESPACE, path, methodName, in, out);
    }

    CIMValue result;
    for (Uint32 i = 0; i < out.size(); i++)
    {
        if (String::equalNoCase(out[i].getParameterName(), outName))
        {
            CIMValue value = out[i].getValue();
            if (!value.isNull())
                result = value;
        }
    }
    return result;
}

template <class T>
T valueOr(const CIMValue& value, T fallback)
{
    if (!value.isNull())
        value.get(fallback);
    return fallback;
}

}  // namespace

Array<CIMObjectPath> ZDA_Common::enumerateInstanceNames(
    const CIMNamespaceName& nameSpace, const CIMName& className)
{
    log_message(4, "-->ZDA_Common::enumerateInstanceNames()\n");
    CIMClient client;
    client.connectLocal();
    Array<CIMObjectPath> names = client.enumerateInstanceNames(nameSpace, className);
    client.disconnect();
    log_message(4, "<--ZDA_Common::enumerateInstanceNames()\n");
    return names;
}

CIMValue ZDA_Common::invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters)
{
    log_message(4, "-->ZDA_Common::invokeMethod()\n");
    CIMClient client;
    client.connectLocal();
    CIMValue result = client.invokeMethod(nameSpace, instanceName, methodName, inParameters, outParameters);
    client.disconnect();
    log_message(4, "<--ZDA_Common::invokeMethod()\n");
    return result;
}

CIMObjectPath ZDA_Common::buildInternalCacheObjectPath(const String& hostAddr, const String& systemName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), systemName + "-InternalCache", CIMKeyBinding::STRING));
    return CIMObjectPath(hostAddr, CIMNamespaceName(INTERNAL_NAMESPACE), CIMName("ZDA_InternalCache"), keys);
}

String ZDA_Common::getSystemName(CIMOMHandle& cimom)
{
    return valueOr(askInternalCache("GetSystemName", "SystemName", &cimom), String());
}

String ZDA_Common::getSystemName()
{
    return valueOr(askInternalCache("GetSystemName", "SystemName", nullptr), String());
}

String ZDA_Common::getSystemHostName(CIMOMHandle&)
{
    return valueOr(askInternalCache("GetSystemHostName", "SystemHostName", nullptr), String());
}

String ZDA_Common::getSystemAddress(CIMOMHandle& cimom)
{
    return valueOr(askInternalCache("GetSystemAddress", "SystemAddress", &cimom), String());
}

Uint32 ZDA_Common::getSystemID()
{
    return valueOr(askInternalCache("GetSystemID", "SystemID", nullptr), Uint32(0));
}

int ZDA_Common::getSystemType()
{
    return valueOr(askInternalCache("GetSystemType", "SystemType", nullptr), Sint32(0));
}

Uint8 ZDA_Common::isQuadPortSystem(CIMOMHandle& cimom)
{
    return valueOr(askInternalCache("IsQuadPortSystem", "IsQuadPort", &cimom), Uint8(0));
}

CIMObjectPath ZDA_Common::getSystemObjectPath(CIMOMHandle& cimom)
{
    log_message(4, "-->ZDA_Common::getSystemObjectPath()\n");
    Array<CIMObjectPath> names;
    bool tryCimom = false;
    try
    {
        names = enumerateInstanceNames("root/zda", "ZDA_StorageSystem");
    }
    catch (Exception& e)
    {
        log_message(2, "ZDA_Common::getSystemObjectPath: %s. Trying via cimom.\n",
            (const char*)e.getMessage().getCString());
        tryCimom = true;
    }
    catch (...)
    {
        log_message(2, "ZDA_Common::getSystemObjectPath: Unknown exception! Trying via cimom\n");
        tryCimom = true;
    }
    if (tryCimom)
        names = cimom.enumerateInstanceNames(OperationContext(), "root/zda", "ZDA_StorageSystem");

    if (names.size() == 0)
    {
        log_message(2, "cannot get at system object path\n");
        return CIMObjectPath();
    }
    CIMObjectPath path = names[0];
    path.setHost(getSystemHostName(cimom));
    path.setNameSpace("root/zda");
    log_message(4, "<--ZDA_Common::getSystemObjectPath()\n");
    return path;
}

String ZDA_Common::getSystemIPAddr(int iptype)
{
    if (iptype < 1 || iptype > 2)
    {
        log_message(2, "ZDA_Common, getSystemIPAddr: Invalid IP type parameter!\n");
        return String();
    }
    // Asked of the array until it gives an IPv4 address, then kept for the
    // life of the process.
    static std::mutex addrMutex;
    static String ipv4_addr;
    static String ipv6_addr;
    std::lock_guard<std::mutex> lock(addrMutex);
    if (ipv4_addr.size() == 0)
    {
        _api_ipaddr_t addr;
        if (api_getSystemDualIP(&addr) == 0)
        {
            in_addr v4;
            v4.s_addr = addr.ipv4_addr;
            char v4text[INET_ADDRSTRLEN] = "";
            inet_ntop(AF_INET, &v4, v4text, sizeof v4text);
            ipv4_addr = v4text;
            if (addr.dual_flag == 2)
            {
                char v6text[128] = "";
                if (inet_ntop(AF_INET6, addr.ipv6_addr, v6text, sizeof v6text))
                    ipv6_addr = v6text;
            }
        }
    }
    return iptype == 1 ? ipv4_addr : ipv6_addr;
}

PEGASUS_NAMESPACE_END
