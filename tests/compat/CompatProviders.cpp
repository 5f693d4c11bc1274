// A provider module written only against the documented provider API, to
// check that such code compiles and links unchanged against this SDK (and,
// when configured, against another tree that offers the same API).
//
// It models volumes (instance + method provider) and their membership in
// groups (association provider, with reference keys). Its methods
// exercise the upcall paths: CIMOMHandle, and a local CIMClient with the
// CIMOMHandle as fallback.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

PEGASUS_USING_STD;

PEGASUS_NAMESPACE_BEGIN

static const String VolumeClassName = "Compat_Volume";
static const String MemberClassName = "Compat_MemberOfGroup";
static const CIMNamespaceName CompatNamespace("root/compat");

static CIMObjectPath volumePath(const String& host, const String& name)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Name", name, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", "S1", CIMKeyBinding::STRING));
    return CIMObjectPath(host, CompatNamespace, VolumeClassName, keys);
}

static CIMObjectPath groupPath(const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", "S1:group1", CIMKeyBinding::STRING));
    return CIMObjectPath(host, CompatNamespace, "Compat_Group", keys);
}

static String callerOf(const OperationContext& context)
{
    if (!context.contains(IdentityContainer::NAME))
        return String::EMPTY;
    IdentityContainer container(context.get(IdentityContainer::NAME));
    return container.getUserName();
}

class Compat_VolumeProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    Compat_VolumeProvider() {}
    virtual ~Compat_VolumeProvider() {}

    virtual void initialize(CIMOMHandle& cimom) { _cimom = cimom; }
    virtual void terminate() { delete this; }

    static CIMInstance buildInstance(const String& host, const String& name)
    {
        CIMInstance instance(VolumeClassName);
        instance.addProperty(CIMProperty("Name", CIMValue(name)));
        instance.addProperty(CIMProperty("SystemName", CIMValue(String("S1"))));
        instance.addProperty(CIMProperty("BlockSize", CIMValue(Uint64(512))));
        instance.addProperty(
            CIMProperty("Created", CIMValue(CIMDateTime(PEGASUS_UINT64_LITERAL(63000000000000000), false))));
        instance.setPath(volumePath(host, name));
        return instance;
    }

    virtual void getInstance(const OperationContext&, const CIMObjectPath& instanceReference, const Boolean,
        const Boolean, const CIMPropertyList&, InstanceResponseHandler& handler)
    {
        Array<CIMKeyBinding> keys = instanceReference.getKeyBindings();
        if (keys.size() != 2)
            throw CIMInvalidParameterException(VolumeClassName + " Expect two keys.");
        String name;
        for (Uint32 i = 0; i < keys.size(); i++)
            if (keys[i].getName().equal("Name"))
                name = keys[i].getValue();
        if (name != "vol1" && name != "vol2")
            throw CIMObjectNotFoundException(VolumeClassName + " CIM Object not found.");
        handler.processing();
        handler.deliver(buildInstance(instanceReference.getHost(), name));
        handler.complete();
    }

    virtual void enumerateInstances(const OperationContext&, const CIMObjectPath& classReference,
        const Boolean, const Boolean, const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
    {
        Array<CIMInstance> instances;
        instances.append(buildInstance(classReference.getHost(), "vol1"));
        instances.append(buildInstance(classReference.getHost(), "vol2"));
        for (Uint32 i = 0; i < instances.size(); i++)
            instances[i].instanceFilter(false, false, propertyList);
        handler.processing();
        handler.deliver(instances);
        handler.complete();
    }

    virtual void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
    {
        handler.processing();
        handler.deliver(volumePath(classReference.getHost(), "vol1"));
        handler.deliver(volumePath(classReference.getHost(), "vol2"));
        handler.complete();
    }

    virtual void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        const Boolean, const CIMPropertyList&, ResponseHandler&)
    {
        throw CIMNotSupportedException(VolumeClassName + " does not support modifyInstance.");
    }

    virtual void createInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
    {
        throw CIMNotSupportedException(VolumeClassName + " does not support createInstance.");
    }

    virtual void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&)
    {
        throw CIMNotSupportedException(VolumeClassName + " does not support deleteInstance.");
    }

    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler)
    {
        Uint32 outstatus = 0;
        String errStr;
        Array<CIMParamValue> paramValues;

        if (methodName.equal("Describe"))
        {
            // The volume travels as an embedded instance, the caller as text.
            paramValues.append(
                CIMParamValue("Volume", CIMValue(buildInstance(objectReference.getHost(), "vol1"))));
            paramValues.append(CIMParamValue("Caller", CIMValue(callerOf(context))));
        }
        else if (methodName.equal("CountSystems"))
        {
            Array<CIMObjectPath> systems = _cimom.enumerateInstanceNames(
                OperationContext(), CompatNamespace, "Compat_System");
            outstatus = systems.size();
        }
        else if (methodName.equal("GetSystemName"))
        {
            paramValues.append(CIMParamValue("SystemName", CIMValue(_systemName())));
        }
        else if (methodName.equal("Rename"))
        {
            String newName;
            for (Uint32 i = 0; i < inParameters.size(); i++)
            {
                CIMValue value = inParameters[i].getValue();
                if (String::equalNoCase(inParameters[i].getParameterName(), "ElementName") && !value.isNull())
                    value.get(newName);
            }
            if (newName.size() == 0)
            {
                outstatus = 5;
                errStr = "Invalid number of parameters";
            }
        }
        else if (methodName.equal("Refuse"))
        {
            throw PEGASUS_CIM_EXCEPTION(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user");
        }
        else
        {
            throw CIMMethodNotFoundException(methodName.getString());
        }

        if (outstatus != 0 && errStr.size() != 0)
            throw CIMException(CIMStatusCode(outstatus), errStr, true);
        handler.processing();
        for (Uint32 i = 0; i < paramValues.size(); i++)
            handler.deliverParamValue(paramValues[i]);
        handler.deliver(CIMValue(outstatus));
        handler.complete();
    }

private:
    // Asks the local server first, and the CIMOMHandle when no local
    // connection can be made.
    String _systemName()
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("InstanceID", "localhost-InternalCache", CIMKeyBinding::STRING));
        CIMObjectPath cache("localhost", "root/PG_Internal", "Compat_InternalCache", keys);
        Array<CIMParamValue> in;
        Array<CIMParamValue> out;
        try
        {
            CIMClient client;
            client.connectLocal();
            client.invokeMethod("root/PG_Internal", cache, "GetSystemName", in, out);
            client.disconnect();
        }
        catch (...)
        {
            _cimom.invokeMethod(OperationContext(), "root/PG_Internal", cache, "GetSystemName", in, out);
        }
        String name;
        for (Uint32 i = 0; i < out.size(); i++)
            if (String::equalNoCase(out[i].getParameterName(), "SystemName") && !out[i].getValue().isNull())
                out[i].getValue().get(name);
        return name;
    }

    CIMOMHandle _cimom;
};

class Compat_MemberOfGroupProvider : public CIMAssociationProvider
{
public:
    Compat_MemberOfGroupProvider() {}
    virtual ~Compat_MemberOfGroupProvider() {}

    virtual void initialize(CIMOMHandle& cimom) { _cimom = cimom; }
    virtual void terminate() { delete this; }

    static CIMInstance buildAssociation(const String& host)
    {
        CIMObjectPath group = groupPath(host);
        CIMObjectPath volume = volumePath(host, "vol1");
        CIMInstance instance(MemberClassName);
        instance.addProperty(CIMProperty("Collection", CIMValue(group), 0, "Compat_Group"));
        instance.addProperty(CIMProperty("Member", CIMValue(volume), 0, VolumeClassName));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Collection", CIMValue(group)));
        keys.append(CIMKeyBinding("Member", CIMValue(volume)));
        instance.setPath(CIMObjectPath(host, CompatNamespace, MemberClassName, keys));
        return instance;
    }

    // The far side of the association, seen from objectName, or an
    // uninitialized path when objectName is on neither side.
    static CIMObjectPath otherEnd(const CIMObjectPath& objectName)
    {
        CIMInstance association = buildAssociation(objectName.getHost());
        CIMObjectPath collection;
        CIMObjectPath member;
        association.getProperty(association.findProperty("Collection")).getValue().get(collection);
        association.getProperty(association.findProperty("Member")).getValue().get(member);
        if (objectName.identical(member))
            return collection;
        if (objectName.identical(collection))
            return member;
        return CIMObjectPath();
    }

    virtual void associators(const OperationContext& context, const CIMObjectPath& objectName, const CIMName&,
        const CIMName&, const String&, const String&, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
    {
        CIMObjectPath other = otherEnd(objectName);
        handler.processing();
        if (other.getClassName().getString().size() != 0)
        {
            // The far side's provider builds the object: ask the server for it.
            CIMInstance instance = _cimom.getInstance(
                context, CompatNamespace, other, false, includeQualifiers, includeClassOrigin, propertyList);
            handler.deliver(instance);
        }
        handler.complete();
    }

    virtual void associatorNames(const OperationContext&, const CIMObjectPath& objectName, const CIMName&,
        const CIMName&, const String&, const String&, ObjectPathResponseHandler& handler)
    {
        CIMObjectPath other = otherEnd(objectName);
        handler.processing();
        if (other.getClassName().getString().size() != 0)
            handler.deliver(other);
        handler.complete();
    }

    virtual void references(const OperationContext&, const CIMObjectPath& objectName, const CIMName&,
        const String&, const Boolean, const Boolean, const CIMPropertyList&, ObjectResponseHandler& handler)
    {
        handler.processing();
        if (otherEnd(objectName).getClassName().getString().size() != 0)
            handler.deliver(CIMObject(buildAssociation(objectName.getHost())));
        handler.complete();
    }

    virtual void referenceNames(const OperationContext&, const CIMObjectPath& objectName, const CIMName&,
        const String&, ObjectPathResponseHandler& handler)
    {
        handler.processing();
        if (otherEnd(objectName).getClassName().getString().size() != 0)
            handler.deliver(buildAssociation(objectName.getHost()).getPath());
        handler.complete();
    }

private:
    CIMOMHandle _cimom;
};

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, "Compat_VolumeProvider"))
        return new Compat_VolumeProvider();
    if (String::equalNoCase(providerName, "Compat_MemberOfGroupProvider"))
        return new Compat_MemberOfGroupProvider();
    return 0;
}

PEGASUS_NAMESPACE_END
