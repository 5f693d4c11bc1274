// CIMOMHandle: forwarding of every operation to the host's backend with the
// caller's context, error translation, sharing between copies, behaviour
// without a host, and detaching while other threads call. Many threads and
// nested calls through one handle are driven by the server's own tests.
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>
#include <Pegasus/Provider/ProviderException.h>

#include <gtest/gtest.h>

#include "RecordingFakes.h"
#include "SdkText.h"
#include "sdk_fixtures.h"

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

PEGASUS_USING_PEGASUS;
using sdktest::listOf;
using sdktest::thrownBy;
using zda_test::text;

namespace
{

const CIMNamespaceName NS("root/zda");
const std::string V = "ZDA_StorageVolume.DeviceID=\"vol-1\",SystemName=\"S1\"";
const CIMObjectPath VOLUME(V.c_str());

// Answers invokeMethod and getResponseContext with
// recognisable results and can run a hook inside getInstance, before it
// answers.
class HostBackend : public zda_test::RecordingCIMOMBackend
{
public:
    std::function<void(const OperationContext&)> duringGetInstance;

    HostBackend()
    {
        outParameters.append(CIMParamValue("Job", CIMValue(String("job-1"))));
        returnValue = CIMValue(Uint32(4096));
    }
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        CIMInstance answer = RecordingCIMOMBackend::getInstance(c, ns, path, lo, iq, ico, pl);
        if (duringGetInstance)
            duringGetInstance(c);
        return answer;
    }
    OperationContext getResponseContext() override
    {
        OperationContext response;
        response.insert(UserRoleContainer("from-backend"));
        return response;
    }
};

struct Operation
{
    const char* name;
    std::function<void()> call;
    std::string expected;  // what the backend records; empty: not recorded
};

// Every operation of h, called with context c.
std::vector<Operation> everyOperation(CIMOMHandle& h, const OperationContext& c)
{
    return {
        {"getClass",
            [&] { h.getClass(c, NS, "ZDA_StorageVolume", true, false, true, listOf({"ElementName"})); },
            "getClass root/zda ZDA_StorageVolume 1 0 1 [ElementName]"},
        {"enumerateClasses", [&] { h.enumerateClasses(c, NS, CIMName(), true, false, true, false); },
            "enumerateClasses root/zda - 1 0 1 0"},
        {"enumerateClassNames", [&] { h.enumerateClassNames(c, NS, "CIM_ManagedElement", false); },
            "enumerateClassNames root/zda CIM_ManagedElement 0"},
        {"createClass", [&] { h.createClass(c, NS, CIMClass("ZDA_New")); }, "createClass root/zda ZDA_New"},
        {"modifyClass", [&] { h.modifyClass(c, NS, CIMClass("ZDA_New")); }, "modifyClass root/zda ZDA_New"},
        {"deleteClass", [&] { h.deleteClass(c, NS, "ZDA_New"); }, "deleteClass root/zda ZDA_New"},
        {"getInstance", [&] { h.getInstance(c, NS, VOLUME, false, true, false, CIMPropertyList()); },
            "getInstance root/zda " + V + " 0 1 0 all"},
        {"enumerateInstances",
            [&] { h.enumerateInstances(c, NS, "ZDA_StorageVolume", true, false, false, true, listOf({})); },
            "enumerateInstances root/zda ZDA_StorageVolume 1 0 0 1 []"},
        {"enumerateInstanceNames", [&] { h.enumerateInstanceNames(c, NS, "ZDA_StorageSystem"); },
            "enumerateInstanceNames root/zda ZDA_StorageSystem"},
        {"createInstance", [&] { h.createInstance(c, NS, CIMInstance("ZDA_ReplicationGroup")); },
            "createInstance root/zda ZDA_ReplicationGroup"},
        {"modifyInstance",
            [&] {
                h.modifyInstance(c, NS, CIMInstance("ZDA_ReplicationGroup"), true, listOf({"ElementName"}));
            },
            "modifyInstance root/zda ZDA_ReplicationGroup 1 [ElementName]"},
        {"deleteInstance", [&] { h.deleteInstance(c, NS, VOLUME); }, "deleteInstance root/zda " + V},
        {"execQuery", [&] { h.execQuery(c, NS, "WQL", "SELECT * FROM ZDA_StorageVolume"); },
            "execQuery root/zda \"WQL\" \"SELECT * FROM ZDA_StorageVolume\""},
        {"associators",
            [&] {
                h.associators(c, NS, VOLUME, "ZDA_MemberOfReplicationGroup", CIMName(), "Member", String(),
                    false, true, CIMPropertyList());
            },
            "associators root/zda " + V + " ZDA_MemberOfReplicationGroup - \"Member\" \"\" 0 1 all"},
        {"associatorNames",
            [&] {
                h.associatorNames(c, NS, VOLUME, CIMName(), "ZDA_ReplicationGroup", String(), "Collection");
            },
            "associatorNames root/zda " + V + " - ZDA_ReplicationGroup \"\" \"Collection\""},
        {"references",
            [&] {
                h.references(c, NS, VOLUME, "ZDA_MemberOfReplicationGroup", "Member", true, false,
                    listOf({"ElementName"}));
            },
            "references root/zda " + V + " ZDA_MemberOfReplicationGroup \"Member\" 1 0 [ElementName]"},
        {"referenceNames", [&] { h.referenceNames(c, NS, VOLUME, CIMName(), "Member"); },
            "referenceNames root/zda " + V + " - \"Member\""},
        {"getProperty", [&] { h.getProperty(c, NS, VOLUME, "ElementName"); },
            "getProperty root/zda " + V + " ElementName"},
        {"setProperty", [&] { h.setProperty(c, NS, VOLUME, "ElementName", CIMValue(String("renamed"))); },
            "setProperty root/zda " + V + " ElementName renamed"},
        {"invokeMethod",
            [&] {
                Array<CIMParamValue> in, out;
                in.append(CIMParamValue("ElementName", CIMValue(String("copy"))));
                h.invokeMethod(c, NS, VOLUME, "CreateElementReplica", in, out);
            },
            "invokeMethod root/zda " + V + " CreateElementReplica (ElementName)"},
        {"getResponseContext", [&] { h.getResponseContext(); }, ""},
    };
}

OperationContext contextOf(const String& user)
{
    OperationContext context;
    context.insert(IdentityContainer(user, "192.0.2.7"));
    return context;
}

// A handle attached to a HostBackend; detached after each test, which also
// breaks a cycle through a hook holding a copy of the handle.
class CIMOMHandleTest : public ::testing::Test
{
protected:
    void SetUp() override { attachCIMOMHandleBackend(handle, backend); }
    void TearDown() override { attachCIMOMHandleBackend(handle, nullptr); }

    std::shared_ptr<HostBackend> backend = std::make_shared<HostBackend>();
    CIMOMHandle handle;
};

}  // namespace

TEST_F(CIMOMHandleTest, ForwardsEveryOperationWithItsArgumentsAndTheCallersContext)
{
    const OperationContext alice = contextOf("alice");
    size_t recorded = 0;
    for (const Operation& op : everyOperation(handle, alice))
    {
        SCOPED_TRACE(op.name);
        op.call();
        if (op.expected.empty())
            continue;
        std::vector<zda_test::RecordingCIMOMBackend::Call> calls = backend->calls();
        ASSERT_EQ(recorded + 1, calls.size());
        EXPECT_EQ(op.expected, calls.back().call);
        EXPECT_EQ("alice", calls.back().user);
        recorded = calls.size();
    }

    // An empty context reaches the backend empty: the host chooses the identity.
    handle.enumerateInstanceNames(OperationContext(), NS, "ZDA_StorageSystem");
    EXPECT_EQ("<none>", backend->calls().back().user);
}

TEST_F(CIMOMHandleTest, ReturnsWhatTheBackendAnswered)
{
    // Instance names returned to a provider are counted in the server's upcall tests.
    const OperationContext context;
    Array<CIMParamValue> out;
    out.append(CIMParamValue("Kept", CIMValue(Uint32(1))));
    EXPECT_EQ(
        CIMValue(Uint32(4096)), handle.invokeMethod(context, NS, VOLUME, "Go", Array<CIMParamValue>(), out));
    ASSERT_EQ(2u, out.size()) << "output parameters are appended";
    EXPECT_EQ(String("Kept"), out[0].getParameterName());
    EXPECT_EQ(String("Job"), out[1].getParameterName());

    EXPECT_TRUE(handle.getResponseContext().contains(UserRoleContainer::NAME));
}

TEST_F(CIMOMHandleTest, WithoutAHostEveryOperationFailsSayingSo)
{
    CIMOMHandle unattached;
    const OperationContext context = contextOf("alice");
    for (const Operation& op : everyOperation(unattached, context))
    {
        SCOPED_TRACE(op.name);
        CIMException e = thrownBy(op.call);
        EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
        const std::string message = text(e.getMessage());
        EXPECT_NE(std::string::npos, message.find(std::string("CIMOMHandle::") + op.name)) << message;
        EXPECT_NE(std::string::npos, message.find("not attached to a CIM server")) << message;
    }
}

TEST_F(CIMOMHandleTest, CopiesShareTheAttachmentAndADetachedHandleFails)
{
    CIMOMHandle original;
    CIMOMHandle copy(original);
    CIMOMHandle assigned;
    assigned = original;

    attachCIMOMHandleBackend(original, backend);
    EXPECT_EQ(backend, getCIMOMHandleBackend(copy));
    copy.deleteClass(OperationContext(), NS, "A_Class");
    assigned.deleteClass(OperationContext(), NS, "B_Class");
    EXPECT_EQ(2u, backend->calls().size());

    attachCIMOMHandleBackend(assigned, nullptr);
    EXPECT_THROW(original.deleteClass(OperationContext(), NS, "C_Class"), CIMException);
    EXPECT_EQ(2u, backend->calls().size());
}

TEST_F(CIMOMHandleTest, LetsCIMErrorsThroughAndHidesEverythingElse)
{
    struct Case
    {
        const char* name;
        std::function<void()> raise;
        CIMStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {"CIMException", [] { throw CIMException(CIM_ERR_NOT_FOUND, "no such volume"); }, CIM_ERR_NOT_FOUND,
            "no such volume"},
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
    auto getVolume = [&] {
        handle.getInstance(OperationContext(), NS, VOLUME, false, false, false, CIMPropertyList());
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        backend->duringGetInstance = [&](const OperationContext&) { c.raise(); };
        CIMException e = thrownBy(getVolume);
        EXPECT_EQ(c.code, e.getCode());
        EXPECT_EQ(String(c.message), e.getMessage());
    }

    // The original type survives, so a provider can catch the specific class.
    backend->duringGetInstance = [](const OperationContext&) { throw CIMObjectNotFoundException("gone"); };
    EXPECT_THROW(getVolume(), CIMObjectNotFoundException);
}

TEST_F(CIMOMHandleTest, DetachingWhileCallsRunIsSafe)
{
    CIMOMHandle toggled;
    std::atomic<bool> stop{false};
    std::atomic<int> served{0}, refused{0};

    std::vector<std::thread> callers;
    for (int t = 0; t < 4; t++)
    {
        callers.emplace_back([&, toggled]() mutable {
            while (!stop)
            {
                CIMException e = thrownBy(
                    [&] { toggled.enumerateClassNames(OperationContext(), NS, CIMName(), true); });
                EXPECT_TRUE(e.getCode() == CIM_ERR_SUCCESS || e.getCode() == CIM_ERR_FAILED) << e.getCode();
                (e.getCode() == CIM_ERR_SUCCESS ? served : refused)++;
            }
        });
    }
    // Keep toggling until both outcomes were seen, however the threads are
    // scheduled, so that the test always exercises a call racing a detach.
    for (int i = 0; served + refused < 4000 || served == 0 || refused == 0; i++)
        attachCIMOMHandleBackend(toggled, i % 2 ? nullptr : backend);
    stop = true;
    for (std::thread& caller : callers)
        caller.join();
    attachCIMOMHandleBackend(toggled, nullptr);
}

TEST_F(CIMOMHandleTest, UnloadPinsNestAndSurviveCopies)
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
