// CIMOMHandle: forwarding of every operation to the host's backend with the
// caller's context, error translation, sharing between copies, behaviour
// without a host, and use from many threads and re-entrantly.
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>
#include <Pegasus/Provider/ProviderException.h>

#include <gtest/gtest.h>

#include "SdkText.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

PEGASUS_USING_PEGASUS;
using zda_test::text;
using zda_test::userOf;

namespace
{

// Records each call as "<operation> <arguments...>" with the identity of the
// context it received, and answers with recognisable results.
class RecordingBackend : public CIMOMHandleBackend
{
public:
    struct Call
    {
        std::string call;
        std::string user;
    };

    std::vector<Call> calls() const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _calls;
    }

    // Runs inside the next getInstance, before it answers.
    std::function<void(const OperationContext&)> duringGetInstance;

    CIMClass getClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn,
        Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        note(c, "getClass " + text(ns) + " " + text(cn) + " " + text(lo) + text(iq) + text(ico) +
            " " + text(pl));
        return CIMClass(cn);
    }
    Array<CIMClass> enumerateClasses(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico) override
    {
        note(c, "enumerateClasses " + text(ns) + " " + text(cn) + " " + text(di) + text(lo) +
            text(iq) + text(ico));
        return Array<CIMClass>();
    }
    Array<CIMName> enumerateClassNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn, Boolean di) override
    {
        note(c, "enumerateClassNames " + text(ns) + " " + text(cn) + " " + text(di));
        Array<CIMName> names;
        names.append(CIMName("Sub_Class"));
        return names;
    }
    void createClass(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMClass& cls) override
    {
        note(c, "createClass " + text(ns) + " " + text(cls.getClassName()));
    }
    void modifyClass(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMClass& cls) override
    {
        note(c, "modifyClass " + text(ns) + " " + text(cls.getClassName()));
    }
    void deleteClass(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn) override
    {
        note(c, "deleteClass " + text(ns) + " " + text(cn));
    }
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, Boolean lo, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        note(c, "getInstance " + text(ns) + " " + text(path) + " " + text(lo) + text(iq) +
            text(ico) + " " + text(pl));
        if (duringGetInstance)
            duringGetInstance(c);
        return CIMInstance(path.getClassName());
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        note(c, "enumerateInstances " + text(ns) + " " + text(cn) + " " + text(di) + text(lo) +
            text(iq) + text(ico) + " " + text(pl));
        return Array<CIMInstance>();
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& c,
        const CIMNamespaceName& ns, const CIMName& cn) override
    {
        note(c, "enumerateInstanceNames " + text(ns) + " " + text(cn));
        Array<CIMObjectPath> paths;
        paths.append(CIMObjectPath((text(cn) + ".Name=\"one\"").c_str()));
        return paths;
    }
    CIMObjectPath createInstance(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMInstance& instance) override
    {
        note(c, "createInstance " + text(ns) + " " + text(instance.getClassName()));
        return CIMObjectPath((text(instance.getClassName()) + ".Name=\"new\"").c_str());
    }
    void modifyInstance(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMInstance& instance, Boolean iq, const CIMPropertyList& pl) override
    {
        note(c, "modifyInstance " + text(ns) + " " + text(instance.getClassName()) + " " +
            text(iq) + " " + text(pl));
    }
    void deleteInstance(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path) override
    {
        note(c, "deleteInstance " + text(ns) + " " + text(path));
    }
    Array<CIMObject> execQuery(const OperationContext& c, const CIMNamespaceName& ns,
        const String& language, const String& query) override
    {
        note(c, "execQuery " + text(ns) + " " + text(language) + " " + text(query));
        return Array<CIMObject>();
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& assoc, const CIMName& result,
        const String& role, const String& resultRole, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        note(c, "associators " + text(ns) + " " + text(path) + " " + text(assoc) + " " +
            text(result) + " " + text(role) + " " + text(resultRole) + " " + text(iq) +
            text(ico) + " " + text(pl));
        return Array<CIMObject>();
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& assoc, const CIMName& result,
        const String& role, const String& resultRole) override
    {
        note(c, "associatorNames " + text(ns) + " " + text(path) + " " + text(assoc) + " " +
            text(result) + " " + text(role) + " " + text(resultRole));
        return Array<CIMObjectPath>();
    }
    Array<CIMObject> references(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& result, const String& role, Boolean iq,
        Boolean ico, const CIMPropertyList& pl) override
    {
        note(c, "references " + text(ns) + " " + text(path) + " " + text(result) + " " +
            text(role) + " " + text(iq) + text(ico) + " " + text(pl));
        return Array<CIMObject>();
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& result, const String& role) override
    {
        note(c, "referenceNames " + text(ns) + " " + text(path) + " " + text(result) + " " +
            text(role));
        return Array<CIMObjectPath>();
    }
    CIMValue getProperty(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& property) override
    {
        note(c, "getProperty " + text(ns) + " " + text(path) + " " + text(property));
        return CIMValue(String("value"));
    }
    void setProperty(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& property, const CIMValue& value) override
    {
        note(c, "setProperty " + text(ns) + " " + text(path) + " " + text(property) + " " +
            text(value.toString()));
    }
    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& path, const CIMName& method, const Array<CIMParamValue>& in,
        Array<CIMParamValue>& out) override
    {
        std::string inNames;
        for (Uint32 i = 0; i < in.size(); i++)
            inNames += " " + text(in[i].getParameterName());
        note(c, "invokeMethod " + text(ns) + " " + text(path) + " " + text(method) + inNames);
        out.append(CIMParamValue("Job", CIMValue(String("job-1"))));
        return CIMValue(Uint32(4096));
    }
    OperationContext getResponseContext() override
    {
        OperationContext response;
        response.insert(UserRoleContainer("from-backend"));
        return response;
    }

private:
    void note(const OperationContext& context, std::string call)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _calls.push_back(Call{std::move(call), userOf(context)});
    }

    mutable std::mutex _mutex;
    std::vector<Call> _calls;
};

struct Operation
{
    const char* name;
    std::function<void(CIMOMHandle&, const OperationContext&)> call;
    const char* expected;  // what the backend records; null: not recorded
};

const CIMNamespaceName NS("root/zda");
const CIMObjectPath VOLUME("ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\"");

std::vector<Operation> everyOperation()
{
    Array<CIMName> names;
    names.append(CIMName("ElementName"));
    const CIMPropertyList someProperties(names);
    Array<CIMParamValue> in;
    in.append(CIMParamValue("ElementName", CIMValue(String("copy"))));

    return {
        {"getClass", [=](CIMOMHandle& h, const OperationContext& c) {
             h.getClass(c, NS, "ZDA_StorageVolume", true, false, true, someProperties);
         }, "getClass root/zda ZDA_StorageVolume 101 [ElementName]"},
        {"enumerateClasses", [=](CIMOMHandle& h, const OperationContext& c) {
             h.enumerateClasses(c, NS, CIMName(), true, false, true, false);
         }, "enumerateClasses root/zda - 1010"},
        {"enumerateClassNames", [=](CIMOMHandle& h, const OperationContext& c) {
             h.enumerateClassNames(c, NS, "CIM_ManagedElement", false);
         }, "enumerateClassNames root/zda CIM_ManagedElement 0"},
        {"createClass", [=](CIMOMHandle& h, const OperationContext& c) {
             h.createClass(c, NS, CIMClass("ZDA_New"));
         }, "createClass root/zda ZDA_New"},
        {"modifyClass", [=](CIMOMHandle& h, const OperationContext& c) {
             h.modifyClass(c, NS, CIMClass("ZDA_New"));
         }, "modifyClass root/zda ZDA_New"},
        {"deleteClass", [=](CIMOMHandle& h, const OperationContext& c) {
             h.deleteClass(c, NS, "ZDA_New");
         }, "deleteClass root/zda ZDA_New"},
        {"getInstance", [=](CIMOMHandle& h, const OperationContext& c) {
             h.getInstance(c, NS, VOLUME, false, true, false, CIMPropertyList());
         }, "getInstance root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" 010 all"},
        {"enumerateInstances", [=](CIMOMHandle& h, const OperationContext& c) {
             h.enumerateInstances(c, NS, "ZDA_StorageVolume", true, false, false, true,
                 CIMPropertyList(Array<CIMName>()));
         }, "enumerateInstances root/zda ZDA_StorageVolume 1001 []"},
        {"enumerateInstanceNames", [=](CIMOMHandle& h, const OperationContext& c) {
             h.enumerateInstanceNames(c, NS, "ZDA_StorageSystem");
         }, "enumerateInstanceNames root/zda ZDA_StorageSystem"},
        {"createInstance", [=](CIMOMHandle& h, const OperationContext& c) {
             h.createInstance(c, NS, CIMInstance("ZDA_ReplicationGroup"));
         }, "createInstance root/zda ZDA_ReplicationGroup"},
        {"modifyInstance", [=](CIMOMHandle& h, const OperationContext& c) {
             h.modifyInstance(c, NS, CIMInstance("ZDA_ReplicationGroup"), true, someProperties);
         }, "modifyInstance root/zda ZDA_ReplicationGroup 1 [ElementName]"},
        {"deleteInstance", [=](CIMOMHandle& h, const OperationContext& c) {
             h.deleteInstance(c, NS, VOLUME);
         }, "deleteInstance root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\""},
        {"execQuery", [=](CIMOMHandle& h, const OperationContext& c) {
             h.execQuery(c, NS, "WQL", "SELECT * FROM ZDA_StorageVolume");
         }, "execQuery root/zda WQL SELECT * FROM ZDA_StorageVolume"},
        {"associators", [=](CIMOMHandle& h, const OperationContext& c) {
             h.associators(c, NS, VOLUME, "ZDA_MemberOfReplicationGroup", CIMName(), "Member",
                 String(), false, true, CIMPropertyList());
         }, "associators root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" "
            "ZDA_MemberOfReplicationGroup - Member  01 all"},
        {"associatorNames", [=](CIMOMHandle& h, const OperationContext& c) {
             h.associatorNames(c, NS, VOLUME, CIMName(), "ZDA_ReplicationGroup", String(),
                 "Collection");
         }, "associatorNames root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" "
            "- ZDA_ReplicationGroup  Collection"},
        {"references", [=](CIMOMHandle& h, const OperationContext& c) {
             h.references(c, NS, VOLUME, "ZDA_MemberOfReplicationGroup", "Member", true, false,
                 someProperties);
         }, "references root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" "
            "ZDA_MemberOfReplicationGroup Member 10 [ElementName]"},
        {"referenceNames", [=](CIMOMHandle& h, const OperationContext& c) {
             h.referenceNames(c, NS, VOLUME, CIMName(), "Member");
         }, "referenceNames root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" - Member"},
        {"getProperty", [=](CIMOMHandle& h, const OperationContext& c) {
             h.getProperty(c, NS, VOLUME, "ElementName");
         }, "getProperty root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" ElementName"},
        {"setProperty", [=](CIMOMHandle& h, const OperationContext& c) {
             h.setProperty(c, NS, VOLUME, "ElementName", CIMValue(String("renamed")));
         }, "setProperty root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" "
            "ElementName renamed"},
        {"invokeMethod", [=](CIMOMHandle& h, const OperationContext& c) {
             Array<CIMParamValue> out;
             h.invokeMethod(c, NS, VOLUME, "CreateElementReplica", in, out);
         }, "invokeMethod root/zda ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\" "
            "CreateElementReplica ElementName"},
        {"getResponseContext", [=](CIMOMHandle& h, const OperationContext&) {
             h.getResponseContext();
         }, nullptr},
    };
}

OperationContext contextOf(const String& user)
{
    OperationContext context;
    context.insert(IdentityContainer(user, "192.0.2.7"));
    return context;
}

}  // namespace

TEST(CIMOMHandleTest, ForwardsEveryOperationWithItsArgumentsAndTheCallersContext)
{
    auto backend = std::make_shared<RecordingBackend>();
    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, backend);

    const OperationContext alice = contextOf("alice");
    size_t recorded = 0;
    for (const Operation& op : everyOperation())
    {
        SCOPED_TRACE(op.name);
        op.call(handle, alice);
        if (!op.expected)
            continue;
        std::vector<RecordingBackend::Call> calls = backend->calls();
        ASSERT_EQ(recorded + 1, calls.size());
        EXPECT_EQ(op.expected, calls.back().call);
        EXPECT_EQ("alice", calls.back().user);
        recorded = calls.size();
    }

    // An empty context reaches the backend empty: the host chooses the identity.
    handle.enumerateInstanceNames(OperationContext(), NS, "ZDA_StorageSystem");
    EXPECT_EQ("<none>", backend->calls().back().user);
}

TEST(CIMOMHandleTest, ReturnsWhatTheBackendAnswered)
{
    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, std::make_shared<RecordingBackend>());
    const OperationContext context;

    Array<CIMObjectPath> names = handle.enumerateInstanceNames(context, NS, "ZDA_StorageSystem");
    ASSERT_EQ(1u, names.size());
    EXPECT_EQ(String("ZDA_StorageSystem.Name=\"one\""), names[0].toString());

    Array<CIMParamValue> out;
    out.append(CIMParamValue("Kept", CIMValue(Uint32(1))));
    CIMValue result = handle.invokeMethod(context, NS, VOLUME, "Go", Array<CIMParamValue>(), out);
    Uint32 code = 0;
    result.get(code);
    EXPECT_EQ(4096u, code);
    ASSERT_EQ(2u, out.size()) << "output parameters are appended";
    EXPECT_EQ(String("Kept"), out[0].getParameterName());
    EXPECT_EQ(String("Job"), out[1].getParameterName());

    EXPECT_TRUE(handle.getResponseContext().contains(UserRoleContainer::NAME));
}

TEST(CIMOMHandleTest, WithoutAHostEveryOperationFailsSayingSo)
{
    CIMOMHandle handle;
    const OperationContext context = contextOf("alice");
    for (const Operation& op : everyOperation())
    {
        SCOPED_TRACE(op.name);
        try
        {
            op.call(handle, context);
            ADD_FAILURE() << "no exception";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
            const std::string message = text(e.getMessage());
            EXPECT_NE(std::string::npos, message.find(std::string("CIMOMHandle::") + op.name))
                << message;
            EXPECT_NE(std::string::npos, message.find("not attached to a CIM server")) << message;
        }
    }
}

TEST(CIMOMHandleTest, CopiesShareTheAttachmentAndADetachedHandleFails)
{
    CIMOMHandle original;
    CIMOMHandle copy(original);
    CIMOMHandle assigned;
    assigned = original;

    auto backend = std::make_shared<RecordingBackend>();
    attachCIMOMHandleBackend(original, backend);
    EXPECT_EQ(backend, getCIMOMHandleBackend(copy));
    copy.deleteClass(OperationContext(), NS, "A_Class");
    assigned.deleteClass(OperationContext(), NS, "B_Class");
    EXPECT_EQ(2u, backend->calls().size());

    attachCIMOMHandleBackend(assigned, nullptr);
    EXPECT_THROW(original.deleteClass(OperationContext(), NS, "C_Class"), CIMException);
    EXPECT_EQ(2u, backend->calls().size());
}

TEST(CIMOMHandleTest, LetsCIMErrorsThroughAndHidesEverythingElse)
{
    struct Case
    {
        const char* name;
        std::function<void()> raise;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {"CIMException", [] { throw CIMException(CIM_ERR_NOT_FOUND, "no such volume"); },
            CIM_ERR_NOT_FOUND, "no such volume"},
        {"provider exception", [] { throw CIMInvalidParameterException("bad name"); },
            CIM_ERR_INVALID_PARAMETER, "bad name"},
        {"status beyond the standard codes", [] { throw CIMException(CIMStatusCode(4096), "job"); },
            CIMStatusCode(4096), "job"},
        {"Pegasus::Exception", [] { throw TypeMismatchException(); }, CIM_ERR_FAILED,
            "Exception caught in CIMOMHandle"},
        {"std::exception", [] { throw std::runtime_error("boom"); }, CIM_ERR_FAILED,
            "Exception caught in CIMOMHandle"},
        {"anything else", [] { throw 42; }, CIM_ERR_FAILED, "Exception caught in CIMOMHandle"},
    };

    auto backend = std::make_shared<RecordingBackend>();
    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, backend);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        backend->duringGetInstance = [&](const OperationContext&) { c.raise(); };
        try
        {
            handle.getInstance(OperationContext(), NS, VOLUME, false, false, false,
                CIMPropertyList());
            ADD_FAILURE() << "no exception";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(c.code, e.getCode());
            EXPECT_EQ(String(c.message), e.getMessage());
        }
    }

    // The original type survives, so a provider can catch the specific class.
    backend->duringGetInstance = [](const OperationContext&) {
        throw CIMObjectNotFoundException("gone");
    };
    EXPECT_THROW(handle.getInstance(OperationContext(), NS, VOLUME, false, false, false,
                     CIMPropertyList()),
        CIMObjectNotFoundException);
}

TEST(CIMOMHandleTest, ServesManyThreadsAndReentrantCalls)
{
    auto backend = std::make_shared<RecordingBackend>();
    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, backend);

    // A nested call made while the backend is serving getInstance, as a
    // provider calling back into the server does.
    backend->duringGetInstance = [handle](const OperationContext& context) mutable {
        handle.enumerateInstanceNames(context, NS, "ZDA_StorageSystem");
    };

    const int threads = 8;
    const int callsPerThread = 200;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; t++)
    {
        workers.emplace_back([handle, t]() mutable {
            const OperationContext context = contextOf(String("user") + String(std::to_string(t).c_str()));
            for (int i = 0; i < callsPerThread; i++)
                handle.getInstance(context, NS, VOLUME, false, false, false, CIMPropertyList());
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    // The nested-call hook holds a copy of the handle: break the cycle.
    attachCIMOMHandleBackend(handle, nullptr);

    std::map<std::string, int> perUser;
    for (const RecordingBackend::Call& call : backend->calls())
        perUser[call.user + " " + call.call.substr(0, call.call.find(' '))]++;
    ASSERT_EQ(size_t(2 * threads), perUser.size());
    for (int t = 0; t < threads; t++)
    {
        const std::string user = "user" + std::to_string(t);
        EXPECT_EQ(callsPerThread, perUser[user + " getInstance"]);
        EXPECT_EQ(callsPerThread, perUser[user + " enumerateInstanceNames"])
            << "the nested call carries the caller's context";
    }
}

TEST(CIMOMHandleTest, DetachingWhileCallsRunIsSafe)
{
    auto backend = std::make_shared<RecordingBackend>();
    CIMOMHandle handle;
    std::atomic<bool> stop{false};
    std::atomic<int> served{0}, refused{0};

    std::vector<std::thread> callers;
    for (int t = 0; t < 4; t++)
    {
        callers.emplace_back([&, handle]() mutable {
            while (!stop)
            {
                try
                {
                    handle.enumerateClassNames(OperationContext(), NS, CIMName(), true);
                    served++;
                }
                catch (const CIMException& e)
                {
                    EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
                    refused++;
                }
            }
        });
    }
    for (int i = 0; served + refused < 4000; i++)
        attachCIMOMHandleBackend(handle, i % 2 ? nullptr : backend);
    stop = true;
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_GT(served, 0);
}

TEST(CIMOMHandleTest, UnloadPinsNestAndSurviveCopies)
{
    CIMOMHandle handle;
    CIMOMHandle copy = handle;
    EXPECT_TRUE(isProviderUnloadAllowed(handle));

    handle.disallowProviderUnload();
    copy.disallowProviderUnload();
    handle.allowProviderUnload();
    EXPECT_FALSE(isProviderUnloadAllowed(copy));
    copy.allowProviderUnload();
    EXPECT_TRUE(isProviderUnloadAllowed(handle));

    // An unmatched allow does not bank an extra pin release.
    handle.allowProviderUnload();
    handle.disallowProviderUnload();
    EXPECT_FALSE(isProviderUnloadAllowed(handle));
}
