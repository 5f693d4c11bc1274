// Object path matching, reference parameter checks and membership tests.
#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

// The key bindings of a path with the hosts taken out of every key value
// that reads as a path. Such keys become reference keys; values that do not
// parse (most plain strings) are kept as they are.
Array<CIMKeyBinding> keysWithoutHosts(const CIMObjectPath& path)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        CIMKeyBinding& key = keys[i];
        if ((key.getType() != CIMKeyBinding::REFERENCE && key.getType() != CIMKeyBinding::STRING) ||
            key.getValue().size() == 0)
            continue;
        try
        {
            CIMObjectPath inner(key.getValue());
            CIMObjectPath local(String(), inner.getNameSpace(), inner.getClassName(), inner.getKeyBindings());
            key.setValue(local.toString());
            key.setType(CIMKeyBinding::REFERENCE);
        }
        catch (MalformedObjectNameException&)
        {
            // Not a path: compared as the plain value it is.
        }
        catch (Exception& e)
        {
            log_message(3, "ZDA_Common: key %s of %s compared as a plain value: %s\n",
                (const char*)key.getName().getString().getCString(),
                (const char*)path.toString().getCString(), (const char*)e.getMessage().getCString());
        }
    }
    return keys;
}

// The address inside a path's host: an IPv6 address stands in brackets,
// optionally followed by a port.
String addressOfHost(const String& host)
{
    if (host.size() > 0 && host[0] == '[')
    {
        Uint32 close = host.find(Char16(']'));
        if (close != PEG_NOT_FOUND)
            return host.subString(1, close - 1);
    }
    return host;
}

}  // namespace

Boolean ZDA_Common::matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2)
{
    CIMObjectPath local1(String(), path1.getNameSpace(), path1.getClassName(), keysWithoutHosts(path1));
    CIMObjectPath local2(String(), path2.getNameSpace(), path2.getClassName(), keysWithoutHosts(path2));
    return local1.identical(local2);
}

Boolean ZDA_Common::verifyRefMethodParam(
    CIMObjectPath& ref, CIMNamespaceName nameSpace, String& systemAddress)
{
    if (ref.getNameSpace().isNull())
    {
        ref.setNameSpace(nameSpace);
    }
    else if (!ref.getNameSpace().equal(nameSpace))
    {
        log_message(2, "The ref param %s contains the wrong name space %s\n",
            (const char*)ref.toString().getCString(),
            (const char*)ref.getNameSpace().getString().getCString());
        return false;
    }

    const String refHost = ref.getHost();
    if (refHost.size() == 0)
        return true;

    const String host_name = systemAddress;
    const String ipv4_addr = getSystemIPAddr(1);
    const String ipv6_addr = getSystemIPAddr(2);

    if (String::equalNoCase(refHost, host_name) || String::equal(refHost, ipv4_addr))
        return true;

    char normal[46] = "";
    const String address = addressOfHost(refHost);
    if (validateConvertIP((const char*)address.getCString(), normal, sizeof normal) == 10 &&
        ipv6_addr.size() > 0 && String::equal(String(normal), ipv6_addr))
        return true;

    log_message(2, "The ref host [%s] does not match for this host!\n", (const char*)refHost.getCString());
    return false;
}

Boolean ZDA_Common::verifyRefMethodParam(
    CIMObjectPath& ref, CIMNamespaceName nameSpace, String& systemAddress, CIMName expectedClass)
{
    return verifyRefMethodParam(ref, nameSpace, systemAddress) && ref.getClassName().equal(expectedClass);
}

Boolean ZDA_Common::verifyRefMethodParam(CIMObjectPath& ref, CIMNamespaceName nameSpace,
    String& systemAddress, const Array<CIMName>& expectedClasses)
{
    if (!verifyRefMethodParam(ref, nameSpace, systemAddress))
        return false;
    for (Uint32 i = 0; i < expectedClasses.size(); i++)
    {
        if (ref.getClassName().equal(expectedClasses[i]))
            return true;
    }
    return false;
}

Boolean ZDA_Common::_isInstanceValidReference(
    const CIMObjectPath& target, CIMInstance& instance, const String& role)
{
    if (role.size() > 0)
    {
        Uint32 pos = instance.findProperty(CIMName(role));
        if (pos == PEG_NOT_FOUND || instance.getProperty(pos).getType() != CIMTYPE_REFERENCE)
            throw CIMException(CIM_ERR_INVALID_PARAMETER, String::EMPTY, false);
    }

    for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
    {
        CIMProperty property = instance.getProperty(i);
        if (property.getType() != CIMTYPE_REFERENCE)
            continue;
        CIMObjectPath path;
        property.getValue().get(path);
        CIMObjectPath localReference(
            String(), CIMNamespaceName(), path.getClassName(), path.getKeyBindings());
        if ((role.size() == 0 || String::equalNoCase(property.getName().getString(), role)) &&
            matchObjectPath(localReference, target))
            return true;
    }
    return false;
}

Boolean ZDA_Common::isPoolPath(const CIMObjectPath& objectName, const String& instanceID)
{
    const Array<CIMKeyBinding>& keys = objectName.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (String::equalNoCase(keys[i].getValue(), instanceID))
            return true;
    }
    return false;
}

Boolean ZDA_Common::isPartOfArray(const String& element, const Array<String>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (list[i] == element)
            return true;
    }
    return false;
}

Boolean ZDA_Common::isPartOfArray(const CIMObjectPath& element, const Array<CIMObjectPath>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (matchObjectPath(element, list[i]))
            return true;
    }
    return false;
}

Boolean ZDA_Common::isPartOfArray(const CIMObjectPath& element, const Array<CIMInstance>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (matchObjectPath(element, list[i].getPath()))
            return true;
    }
    return false;
}

Boolean ZDA_Common::isPartOfArray(const CIMName& element, const Array<CIMName>& list)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (list[i] == element)
            return true;
    }
    return false;
}

PEGASUS_NAMESPACE_END
