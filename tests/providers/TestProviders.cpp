// A provider module built only for the server's tests. Each provider is
// small and does one thing the server has to cope with: serve a class of a
// hierarchy, link objects, take typed parameters, fail in every way a
// provider can, call back into the server from a request or from its own
// initialize, never call complete().
#include "TestProviderControl.h"

#include <SdkText.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/ProviderException.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>

PEGASUS_USING_PEGASUS;

namespace
{

const CIMNamespaceName TEST_NS("root/test");

struct ModuleState
{
    std::mutex mutex;
    std::map<std::string, int> initialized;
    std::map<std::string, int> terminated;
    std::vector<std::string> notes;
    std::map<std::string, CIMInstance> disks;  // by Id
    bool rendezvous = false;
    int cycleStarted = 0;
    std::condition_variable cycleChanged;
};

ModuleState& state()
{
    static ModuleState s;
    return s;
}

void note(const std::string& line)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().notes.push_back(line);
}

using zda_test::text;
using zda_test::userOf;

std::string keyOf(const CIMObjectPath& path, const char* key)
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName().equal(key))
            return text(keys[i].getValue());
    return "";
}

CIMObjectPath pathOf(const char* cls, const std::string& id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", String(id.c_str()), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), cls, keys);
}

// A disk as providers usually build one: every property set, one property
// with a qualifier and class origins, the path without host or namespace.
CIMInstance makeDisk(const char* cls, const std::string& id, Uint32 size, Uint32 speed, const char* tier)
{
    CIMInstance disk(cls);
    disk.addProperty(CIMProperty("Id", String(id.c_str()), 0, CIMName(), "Test_Element"));
    CIMProperty name("Name", String(("disk " + id).c_str()), 0, CIMName(), "Test_Element");
    name.addQualifier(CIMQualifier("Description", String("A name people read.")));
    disk.addProperty(name);
    disk.addProperty(CIMProperty("Size", size, 0, CIMName(), tier ? "Test_FastDisk" : "Test_Element"));
    disk.addProperty(CIMProperty("Speed", speed, 0, CIMName(), "Test_Disk"));
    if (tier)
        disk.addProperty(CIMProperty("Tier", String(tier), 0, CIMName(), "Test_FastDisk"));
    disk.setPath(pathOf(cls, id));
    return disk;
}

void resetData()
{
    auto& disks = state().disks;
    disks.clear();
    disks["Disk1"] = makeDisk("Test_Disk", "Disk1", 10, 100, nullptr);
    disks["Disk2"] = makeDisk("Test_Disk", "Disk2", 20, 200, nullptr);
}

const CIMObjectPath SERVICE("root/test:Test_Service.Name=\"svc\"");

// Who the service says the caller is, and how many disks there are, asked
// through a provider's handle: "<user> disks=<count>".
std::string askThroughHandle(CIMOMHandle& cimom)
{
    Array<CIMParamValue> out;
    cimom.invokeMethod(OperationContext(), TEST_NS, SERVICE, "User", Array<CIMParamValue>(), out);
    String user;
    out[0].getValue().get(user);
    return text(user) + " disks=" +
        std::to_string(cimom.enumerateInstanceNames(OperationContext(), TEST_NS, "Test_Disk").size());
}

// The same asked as a local client, which counts tapes: "<user> tapes=<count>".
std::string askAsLocalClient()
{
    CIMClient client;
    client.connectLocal();
    Array<CIMParamValue> out;
    client.invokeMethod(TEST_NS, SERVICE, "User", Array<CIMParamValue>(), out);
    String user;
    out[0].getValue().get(user);
    return text(user) +
        " tapes=" + std::to_string(client.enumerateInstanceNames(TEST_NS, "Test_Tape").size());
}

// Counts its life and refuses every operation it does not override.
class TestProvider : public virtual CIMProvider
{
public:
    explicit TestProvider(const char* name) : _name(name) {}

    void initialize(CIMOMHandle& cimom) override
    {
        _cimom = cimom;
        {
            std::lock_guard<std::mutex> lock(state().mutex);
            ++state().initialized[_name];
        }
        onInitialize();
    }
    void terminate() override
    {
        {
            std::lock_guard<std::mutex> lock(state().mutex);
            ++state().terminated[_name];
        }
        delete this;
    }

protected:
    virtual void onInitialize() {}

    std::string _name;
    CIMOMHandle _cimom;
};

class TestInstanceProvider : public TestProvider, public CIMInstanceProvider
{
public:
    using TestProvider::TestProvider;

    void getInstance(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support getInstance.");
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support enumerateInstances.");
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support enumerateInstanceNames.");
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support modifyInstance.");
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support createInstance.");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + " does not support deleteInstance.");
    }
};

// Test_Disk: a writable store of disks. Delivers every property whatever
// the request asks, so the server's filtering shows.
class DiskProvider : public TestInstanceProvider
{
public:
    DiskProvider() : TestInstanceProvider("Test_DiskProvider") {}

    void getInstance(const OperationContext& context, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler) override
    {
        note("Test_DiskProvider.getInstance " + text(ref.toString()) +
            " pl=" + text(propertyList.toString()) + " user=" + userOf(context));
        CIMInstance found;
        {
            std::lock_guard<std::mutex> lock(state().mutex);
            auto it = state().disks.find(keyOf(ref, "Id"));
            if (it != state().disks.end())
                found = it->second;
        }
        if (found.isUninitialized())
            throw CIMObjectNotFoundException("no disk " + ref.toString());
        handler.processing();
        handler.deliver(found);
        handler.complete();
    }
    void enumerateInstances(const OperationContext& context, const CIMObjectPath& ref, const Boolean,
        const Boolean, const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        note("Test_DiskProvider.enumerateInstances " + text(ref.toString()) + " user=" + userOf(context));
        handler.processing();
        for (const CIMInstance& disk : snapshot())
            handler.deliver(disk);
        handler.complete();
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        for (const CIMInstance& disk : snapshot())
            handler.deliver(disk.getPath());
        handler.complete();
    }
    void createInstance(const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
        ObjectPathResponseHandler& handler) override
    {
        const std::string id = keyOf(ref, "Id");
        if (id.empty())
            throw CIMInvalidParameterException("a disk needs an Id");
        CIMInstance stored = instance.clone();
        stored.setPath(pathOf("Test_Disk", id));
        {
            std::lock_guard<std::mutex> lock(state().mutex);
            if (!state().disks.emplace(id, stored).second)
                throw CIMObjectAlreadyExistsException("disk " + String(id.c_str()));
        }
        handler.processing();
        handler.deliver(stored.getPath());
        handler.complete();
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath& ref, const CIMInstance& instance,
        const Boolean, const CIMPropertyList& propertyList, ResponseHandler& handler) override
    {
        note("Test_DiskProvider.modifyInstance " + text(ref.toString()) +
            " pl=" + text(propertyList.toString()));
        std::lock_guard<std::mutex> lock(state().mutex);
        auto it = state().disks.find(keyOf(ref, "Id"));
        if (it == state().disks.end())
            throw CIMObjectNotFoundException("no disk " + ref.toString());
        CIMInstance updated = it->second.clone();
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        {
            CIMConstProperty p = instance.getProperty(i);
            if (!propertyList.isNull() && !propertyList.contains(p.getName()))
                continue;
            Uint32 at = updated.findProperty(p.getName());
            if (at != PEG_NOT_FOUND)
                updated.getProperty(at).setValue(p.getValue());
        }
        it->second = updated;
        handler.processing();
        handler.complete();
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath& ref, ResponseHandler& handler) override
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        if (!state().disks.erase(keyOf(ref, "Id")))
            throw CIMObjectNotFoundException("no disk " + ref.toString());
        handler.processing();
        handler.complete();
    }

private:
    static std::vector<CIMInstance> snapshot()
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        std::vector<CIMInstance> out;
        for (const auto& [id, disk] : state().disks)
            out.push_back(disk);
        return out;
    }
};

// Test_FastDisk: one disk of the subclass, from another provider.
class FastDiskProvider : public TestInstanceProvider
{
public:
    FastDiskProvider() : TestInstanceProvider("Test_FastDiskProvider") {}

    void getInstance(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        if (keyOf(ref, "Id") != "Fast1")
            throw CIMObjectNotFoundException("no fast disk " + ref.toString());
        handler.deliver(fast());
        handler.complete();
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        note("Test_FastDiskProvider.enumerateInstances " + text(ref.toString()));
        handler.deliver(fast());
        handler.complete();
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler& handler) override
    {
        handler.deliver(fast().getPath());
        handler.complete();
    }

private:
    static CIMInstance fast() { return makeDisk("Test_FastDisk", "Fast1", 5, 900, "gold"); }
};

// Test_Pool: never calls complete(). Registered as a method provider too,
// which it is not.
class PoolProvider : public TestInstanceProvider
{
public:
    PoolProvider() : TestInstanceProvider("Test_PoolProvider") {}

    void getInstance(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        if (keyOf(ref, "Id") != "Pool1")
            throw CIMObjectNotFoundException("no pool " + ref.toString());
        handler.processing();
        handler.deliver(pool());
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        handler.processing();
        handler.deliver(pool());
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler& handler) override
    {
        handler.deliver(pool().getPath());
    }

private:
    static CIMInstance pool()
    {
        CIMInstance p("Test_Pool");
        p.addProperty(CIMProperty("Id", String("Pool1")));
        p.addProperty(CIMProperty("Name", String("pool one")));
        p.setPath(pathOf("Test_Pool", "Pool1"));
        return p;
    }
};

// Test_Component: Pool1 holds Disk1, Fast1 and Tape1. Honours Role and
// ResultRole, ignores ResultClass (the server narrows results), and fetches
// the far ends through the CIMOMHandle.
class ComponentProvider : public TestInstanceProvider, public CIMAssociationProvider
{
public:
    ComponentProvider() : TestInstanceProvider("Test_ComponentProvider") {}

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler& handler) override
    {
        for (const Link& link : links())
            handler.deliver(linkPath(link));
        handler.complete();
    }

    void associators(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean, const Boolean, const CIMPropertyList&,
        ObjectResponseHandler& handler) override
    {
        noteCall("associators", associationClass, resultClass, role, resultRole, context);
        handler.processing();
        for (const CIMObjectPath& far : farEnds(objectName, role, resultRole))
            handler.deliver(CIMObject(_cimom.getInstance(
                OperationContext(), TEST_NS, far, false, false, false, CIMPropertyList())));
        handler.complete();
    }
    void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, ObjectPathResponseHandler& handler) override
    {
        noteCall("associatorNames", associationClass, resultClass, role, resultRole, context);
        for (const CIMObjectPath& far : farEnds(objectName, role, resultRole))
            handler.deliver(far);
        handler.complete();
    }
    void references(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const Boolean, const Boolean, const CIMPropertyList&,
        ObjectResponseHandler& handler) override
    {
        noteCall("references", CIMName(), resultClass, role, String(), context);
        for (const Link& link : matching(objectName, role))
            handler.deliver(CIMObject(linkInstance(link)));
        handler.complete();
    }
    void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler) override
    {
        noteCall("referenceNames", CIMName(), resultClass, role, String(), context);
        for (const Link& link : matching(objectName, role))
            handler.deliver(linkPath(link));
        handler.complete();
    }

private:
    struct Link
    {
        CIMObjectPath group, part;
    };

    static std::vector<Link> links()
    {
        CIMObjectPath pool = pathOf("Test_Pool", "Pool1");
        return {{pool, pathOf("Test_Disk", "Disk1")}, {pool, pathOf("Test_FastDisk", "Fast1")},
            {pool, pathOf("Test_Tape", "Tape1")}};
    }
    static bool same(const CIMObjectPath& a, const CIMObjectPath& b)
    {
        return a.getClassName().equal(b.getClassName()) && keyOf(a, "Id") == keyOf(b, "Id");
    }
    // Links in which the object plays `role` (any role when empty).
    static std::vector<std::pair<Link, bool>> sides(const CIMObjectPath& object, const String& role)
    {
        std::vector<std::pair<Link, bool>> out;  // bool: the object is the group
        for (const Link& link : links())
        {
            if (same(link.group, object) && (role.size() == 0 || String::equalNoCase(role, "Group")))
                out.push_back({link, true});
            if (same(link.part, object) && (role.size() == 0 || String::equalNoCase(role, "Part")))
                out.push_back({link, false});
        }
        return out;
    }
    static std::vector<Link> matching(const CIMObjectPath& object, const String& role)
    {
        std::vector<Link> out;
        for (const auto& [link, isGroup] : sides(object, role))
            out.push_back(link);
        return out;
    }
    static std::vector<CIMObjectPath> farEnds(
        const CIMObjectPath& object, const String& role, const String& resultRole)
    {
        std::vector<CIMObjectPath> out;
        for (const auto& [link, isGroup] : sides(object, role))
        {
            if (resultRole.size() && !String::equalNoCase(resultRole, isGroup ? "Part" : "Group"))
                continue;
            out.push_back(isGroup ? link.part : link.group);
        }
        return out;
    }
    static CIMObjectPath linkPath(const Link& link)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Group", CIMValue(link.group)));
        keys.append(CIMKeyBinding("Part", CIMValue(link.part)));
        return CIMObjectPath(String(), CIMNamespaceName(), "Test_Component", keys);
    }
    static CIMInstance linkInstance(const Link& link)
    {
        CIMInstance instance("Test_Component");
        instance.addProperty(CIMProperty("Group", link.group, 0, "Test_Pool"));
        instance.addProperty(CIMProperty("Part", link.part, 0, "Test_Element"));
        instance.setPath(linkPath(link));
        return instance;
    }
    void noteCall(const char* op, const CIMName& assoc, const CIMName& result, const String& role,
        const String& resultRole, const OperationContext& context)
    {
        note("Test_ComponentProvider." + std::string(op) + " assoc=" + text(assoc.getString()) +
            " result=" + text(result.getString()) + " role=" + text(role) +
            " resultRole=" + text(resultRole) + " user=" + userOf(context));
    }
};

// Test_Service: method parameters, every way of failing, identities and
// upcalls.
class ServiceProvider : public TestInstanceProvider, public CIMMethodProvider
{
public:
    ServiceProvider() : TestInstanceProvider("Test_ServiceProvider") {}

    void invokeMethod(const OperationContext& context, const CIMObjectPath&, const CIMName& method,
        const Array<CIMParamValue>& in, MethodResultResponseHandler& handler) override
    {
        if (method.equal("Echo"))
            return echo(in, handler);
        if (method.equal("Fail"))
        {
            Uint32 code = 0;
            String message;
            for (Uint32 i = 0; i < in.size(); ++i)
            {
                if (String::equalNoCase(in[i].getParameterName(), "Code"))
                    in[i].getValue().get(code);
                if (String::equalNoCase(in[i].getParameterName(), "Text"))
                    in[i].getValue().get(message);
            }
            throw CIMException(CIMStatusCode(code), message, true);
        }
        if (method.equal("Throw"))
        {
            String kind;
            if (in.size())
                in[0].getValue().get(kind);
            if (kind == "std")
                throw std::runtime_error("a standard failure");
            if (kind == "pegasus")
                throw DateTimeOutOfRangeException("year 99999");
            if (kind == "notfound")
                throw CIMObjectNotFoundException("gone away");
            throw 42;
        }
        if (method.equal("NoComplete"))
        {
            handler.processing();
            handler.deliverParamValue(CIMParamValue("Ignored", CIMValue(String("out"))));
            handler.deliver(CIMValue(Uint32(7)));
            return;
        }
        if (method.equal("NoReturn"))
        {
            handler.processing();
            handler.complete();
            return;
        }
        if (method.equal("User"))
        {
            String address;
            if (context.contains(IdentityContainer::NAME))
                address = IdentityContainer(context.get(IdentityContainer::NAME)).getIpAddress();
            handler.deliverParamValue(CIMParamValue("User", CIMValue(String(userOf(context).c_str()))));
            handler.deliverParamValue(CIMParamValue("Address", CIMValue(address)));
            handler.deliver(CIMValue(Uint32(0)));
            handler.complete();
            return;
        }
        if (method.equal("Upcalls"))
            return upcalls(handler);
        throw CIMMethodNotFoundException(method.getString());
    }

private:
    static void echo(const Array<CIMParamValue>& in, MethodResultResponseHandler& handler)
    {
        std::string summary;
        for (Uint32 i = 0; i < in.size(); ++i)
        {
            const CIMValue v = in[i].getValue();
            summary += text(in[i].getParameterName()) + "=" + cimTypeToString(v.getType()) +
                (v.isArray() ? "[]" : "") + (in[i].isTyped() ? "" : "?") + ":" +
                (v.isNull() ? "null" : text(v.toString())) + " ";
        }
        handler.processing();
        handler.deliverParamValue(CIMParamValue("Summary", CIMValue(String(summary.c_str()))));
        handler.deliver(CIMValue(Uint32(0)));
        handler.complete();
    }

    // Asks who it is, once through its handle with an empty context and once
    // as a local client, and counts instances both ways.
    void upcalls(MethodResultResponseHandler& handler)
    {
        handler.deliverParamValue(
            CIMParamValue("Handle", CIMValue(String(askThroughHandle(_cimom).c_str()))));
        handler.deliverParamValue(CIMParamValue("Client", CIMValue(String(askAsLocalClient().c_str()))));
        handler.deliver(CIMValue(Uint32(0)));
        handler.complete();
    }
};

// Test_Bulk and Test_BrokenBulk: answers long enough to be streamed.
// Test_Bulk has kBulkCount instances (and names); Test_BrokenBulk fails
// with CIM_ERR_FAILED after kBrokenBulkAfter instances, or after
// kBrokenNamesAfter names (an answer still short when it fails). A
// delivery that fails is noted and ignored, as careless providers do: the
// server must still end the operation with that failure.
constexpr int kBulkCount = 3000;
constexpr int kBrokenBulkAfter = 2000;
constexpr int kBrokenNamesAfter = 10;

class BulkProvider : public TestInstanceProvider
{
public:
    BulkProvider() : TestInstanceProvider("Test_BulkProvider") {}

    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        const bool broken = ref.getClassName().equal("Test_BrokenBulk");
        const String text(std::string(200, 'b').c_str());
        int refused = 0;
        for (int i = 0; i < kBulkCount; ++i)
        {
            if (broken && i == kBrokenBulkAfter)
                fail(refused, i);
            CIMInstance item(ref.getClassName());
            item.addProperty(CIMProperty("Id", idOf(i)));
            item.addProperty(CIMProperty("Number", Uint32(i)));
            item.addProperty(CIMProperty("Text", text));
            item.setPath(pathOf(ref, i));
            try
            {
                handler.deliver(item);
            }
            catch (...)
            {
                ++refused;
            }
        }
        finish(refused, handler);
    }

    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath& ref, ObjectPathResponseHandler& handler) override
    {
        const bool broken = ref.getClassName().equal("Test_BrokenBulk");
        int refused = 0;
        for (int i = 0; i < kBulkCount; ++i)
        {
            if (broken && i == kBrokenNamesAfter)
                fail(refused, i);
            try
            {
                handler.deliver(pathOf(ref, i));
            }
            catch (...)
            {
                ++refused;
            }
        }
        finish(refused, handler);
    }

private:
    static String idOf(int i) { return String(("item" + std::to_string(i)).c_str()); }

    static CIMObjectPath pathOf(const CIMObjectPath& ref, int i)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Id", idOf(i), CIMKeyBinding::STRING));
        return CIMObjectPath(String(), CIMNamespaceName(), ref.getClassName(), keys);
    }

    void fail(int refused, int delivered)
    {
        note("Test_BulkProvider refused " + std::to_string(refused));
        throw CIMOperationFailedException(
            String(("The bulk source broke after " + std::to_string(delivered) + " objects.").c_str()));
    }

    void finish(int refused, ResponseHandler& handler)
    {
        note("Test_BulkProvider refused " + std::to_string(refused));
        handler.complete();
    }
};

// Delivers one instance of its class; what matters is its initialize.
class SingleInstanceProvider : public TestInstanceProvider
{
public:
    SingleInstanceProvider(const char* name, const char* cls) : TestInstanceProvider(name), _class(cls) {}

    void enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        CIMInstance instance(_class);
        instance.addProperty(CIMProperty("Id", String("only")));
        instance.setPath(pathOf(_class, "only"));
        handler.deliver(instance);
        handler.complete();
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler& handler) override
    {
        handler.deliver(pathOf(_class, "only"));
        handler.complete();
    }

protected:
    // Runs `call` and notes "<label> ok <result>" or "<label> failed <code>".
    template <class Call>
    void tryCall(const std::string& label, Call&& call)
    {
        try
        {
            note(_name + " " + label + " ok " + call());
        }
        catch (const CIMException& e)
        {
            note(_name + " " + label + " failed " + std::to_string(int(e.getCode())));
        }
        catch (const Exception& e)
        {
            note(_name + " " + label + " failed " + text(e.getMessage()));
        }
    }

    const char* _class;
};

class FailInitProvider : public SingleInstanceProvider
{
public:
    FailInitProvider() : SingleInstanceProvider("Test_FailInitProvider", "Test_FailInit") {}

protected:
    void onInitialize() override { throw CIMOperationFailedException("the device is not ready"); }
};

// Calls back during initialize, through the handle and as a local client.
class InitCallerProvider : public SingleInstanceProvider
{
public:
    InitCallerProvider() : SingleInstanceProvider("Test_InitCallerProvider", "Test_InitCaller") {}

protected:
    void onInitialize() override
    {
        tryCall("handle", [&] { return askThroughHandle(_cimom); });
        tryCall("client", [&] { return askAsLocalClient(); });
    }
};

// Asks for its own class during its own initialize.
class SelfInitProvider : public SingleInstanceProvider
{
public:
    SelfInitProvider() : SingleInstanceProvider("Test_SelfInitProvider", "Test_SelfInit") {}

protected:
    void onInitialize() override
    {
        tryCall("self", [&] {
            return std::to_string(
                _cimom.enumerateInstanceNames(OperationContext(), TEST_NS, "Test_SelfInit").size());
        });
    }
};

// Each asks for the other's class during its initialize.
class CycleProvider : public SingleInstanceProvider
{
public:
    CycleProvider(const char* name, const char* cls, const char* other)
        : SingleInstanceProvider(name, cls), _other(other)
    {}

protected:
    void onInitialize() override
    {
        {
            std::unique_lock<std::mutex> lock(state().mutex);
            if (state().rendezvous)
            {
                ++state().cycleStarted;
                state().cycleChanged.notify_all();
                // The wait is a rendezvous, not a timing assumption: the bound
                // only keeps a broken server from hanging the test run.
                if (!state().cycleChanged.wait_for(
                        lock, std::chrono::seconds(60), [] { return state().cycleStarted >= 2; }))
                    state().notes.push_back(_name + " rendezvous timed out");
            }
        }
        tryCall("other", [&] {
            return std::to_string(_cimom.enumerateInstanceNames(OperationContext(), TEST_NS, _other).size());
        });
    }

private:
    const char* _other;
};

}  // namespace

namespace zda_test_providers
{

namespace
{
int countOf(const std::map<std::string, int>& counts, const std::string& providerName)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    auto it = counts.find(providerName);
    return it == counts.end() ? 0 : it->second;
}
}  // namespace

int initializeCount(const std::string& providerName)
{
    return countOf(state().initialized, providerName);
}

int terminateCount(const std::string& providerName)
{
    return countOf(state().terminated, providerName);
}

std::vector<std::string> notesStartingWith(const std::string& prefix)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    std::vector<std::string> out;
    for (const std::string& line : state().notes)
        if (line.compare(0, prefix.size(), prefix) == 0)
            out.push_back(line);
    return out;
}

void setCycleRendezvous(bool on)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().rendezvous = on;
    state().cycleStarted = 0;
}

void reset()
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().initialized.clear();
    state().terminated.clear();
    state().notes.clear();
    state().rendezvous = false;
    state().cycleStarted = 0;
    resetData();
}

}  // namespace zda_test_providers

PEGASUS_NAMESPACE_BEGIN

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& name)
{
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        if (state().disks.empty())
            resetData();
    }
    if (String::equalNoCase(name, "Test_DiskProvider"))
        return new DiskProvider;
    if (String::equalNoCase(name, "Test_FastDiskProvider"))
        return new FastDiskProvider;
    if (String::equalNoCase(name, "Test_PoolProvider"))
        return new PoolProvider;
    if (String::equalNoCase(name, "Test_ComponentProvider"))
        return new ComponentProvider;
    if (String::equalNoCase(name, "Test_ServiceProvider"))
        return new ServiceProvider;
    if (String::equalNoCase(name, "Test_BulkProvider"))
        return new BulkProvider;
    if (String::equalNoCase(name, "Test_FailInitProvider"))
        return new FailInitProvider;
    if (String::equalNoCase(name, "Test_InitCallerProvider"))
        return new InitCallerProvider;
    if (String::equalNoCase(name, "Test_SelfInitProvider"))
        return new SelfInitProvider;
    if (String::equalNoCase(name, "Test_CycleAProvider"))
        return new CycleProvider("Test_CycleAProvider", "Test_CycleA", "Test_CycleB");
    if (String::equalNoCase(name, "Test_CycleBProvider"))
        return new CycleProvider("Test_CycleBProvider", "Test_CycleB", "Test_CycleA");
    return 0;
}

PEGASUS_NAMESPACE_END
