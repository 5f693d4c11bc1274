// The replication service: the module's entry, the one instance through the
// in-process host, method dispatch and its authorization, and the routines
// the method handlers share, on a provider object where the host cannot
// show the detail (handler calls, keys asked of the array).
#include "replication_fixture.h"

#include <memory>
#include <string>
#include <vector>

#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "RecordingResponseHandler.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_ReplicationServiceProvider.h"

extern "C" Pegasus::CIMProvider* PegasusCreateProvider(const Pegasus::String& providerName);

using namespace Pegasus;
using namespace zda_replication_test;

namespace
{

const char SERVICE[] = "ZDA_ReplicationService";
const char SERVICE_NAME[] = "KX_ORLA_ReplicationService";

// The provider with its inner steps reachable.
class ServiceUnderTest : public ZDA_ReplicationServiceProvider
{
public:
    using ZDA_ReplicationServiceProvider::_authorizeByFuncType;
    using ZDA_ReplicationServiceProvider::_authorizeGeneric;
    using ZDA_ReplicationServiceProvider::_completeMethod;
    using ZDA_ReplicationServiceProvider::_convertToCopySvcsOp;
    using ZDA_ReplicationServiceProvider::_returnToResourcePool;
};

// Classes from the host's repository and properties read through the host.
class HostBackend : public RepositoryBackend
{
public:
    explicit HostBackend(zda::server::InProcessHost& host) : RepositoryBackend(host), _host(host) {}
    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName) override
    {
        return _host.dispatcher().getProperty(context, nameSpace, instanceName, propertyName);
    }

private:
    zda::server::InProcessHost& _host;
};

class ReplicationServiceTest : public ReplicationTest
{
protected:
    void TearDown() override
    {
        if (_provider)
            _provider->terminate();
        attachCIMOMHandleBackend(_handle, nullptr);
        ReplicationTest::TearDown();
    }

    // A provider object initialized as the server does it.
    ServiceUnderTest& provider()
    {
        if (!_provider)
        {
            attachCIMOMHandleBackend(
                _handle, std::make_shared<HostBackend>(zda_test::ServerHostFixture::host()));
            _provider = new ServiceUnderTest();
            _provider->initialize(_handle);
        }
        return *_provider;
    }

    CIMObjectPath servicePath()
    {
        Array<CIMObjectPath> names = server().enumerateInstanceNames(admin(), ZDA_NS, SERVICE);
        return names.size() == 1 ? names[0] : CIMObjectPath();
    }

    // The CIMException `call` throws: its code and message; code -1 for none.
    static std::pair<int, std::string> failureOf(const std::function<void()>& call)
    {
        try
        {
            call();
        }
        catch (const CIMException& e)
        {
            return {e.getCode(), text(e.getMessage())};
        }
        return {-1, ""};
    }

private:
    CIMOMHandle _handle;
    ServiceUnderTest* _provider = nullptr;
};

TEST(ReplicationEntry, NamesCompareWithoutCaseButExactlyOtherwise)
{
    const struct
    {
        const char* name;
        bool known;
    } cases[] = {
        {"ZDA_ReplicationServiceProvider", true},
        {"zda_replicationserviceprovider", true},
        {"ZDA_REPLICATIONSERVICEPROVIDER", true},
        {"", false},
        {"ZDA_ReplicationServiceProvider ", false},
        {"ZDA_ReplicationService", false},
    };
    for (const auto& c : cases)
    {
        CIMProvider* provider = PegasusCreateProvider(c.name);
        EXPECT_EQ(provider != nullptr, c.known) << "'" << c.name << "'";
        if (provider)
        {
            EXPECT_NE(dynamic_cast<ZDA_ReplicationServiceProvider*>(provider), nullptr);
            provider->terminate();
        }
    }
}

TEST_F(ReplicationServiceTest, TheOneInstanceWithItsKeysAndTheArraysOwner)
{
    const CIMObjectPath path = servicePath();
    ASSERT_EQ(path.getKeyBindings().size(), 4u);
    EXPECT_EQ(text(path.getNameSpace().getString()), ZDA_NS);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "SystemCreationClassName")), "ZDA_StorageSystem");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "SystemName")), SYSTEM_NAME);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "CreationClassName")), SERVICE);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "Name")), SERVICE_NAME);

    Array<CIMInstance> all = server().enumerateInstances(
        admin(), ZDA_NS, SERVICE, true, false, false, false, CIMPropertyList());
    ASSERT_EQ(all.size(), 1u);
    const CIMInstance got = getInstance(path);
    for (const CIMInstance& service : {all[0], got})
    {
        EXPECT_TRUE(ZDA_Common::matchObjectPath(service.getPath(), path));
        EXPECT_EQ(text(get<String>(service, "Caption")), SERVICE_NAME);
        EXPECT_EQ(text(get<String>(service, "PrimaryOwnerContact")), "storage-admin@example.com");
        EXPECT_EQ(text(get<String>(service, "PrimaryOwnerName")), "Example Storage Team");
        EXPECT_TRUE(get<Boolean>(service, "Started"));
        EXPECT_EQ(text(get<String>(service, "StartMode")), "Automatic");
    }

    // Contact and owner are best effort: a busy or failing array leaves them empty.
    zdasim_fault_sem_timeouts(1);  // the contact's wait
    zdasim_fault_add("api_getOwnerName", 1, 5, "owner unreadable");
    const CIMInstance bare = getInstance(path);
    EXPECT_EQ(text(get<String>(bare, "PrimaryOwnerContact")), "");
    EXPECT_EQ(text(get<String>(bare, "PrimaryOwnerName")), "");
}

TEST_F(ReplicationServiceTest, InstanceOperationsRefuseWithTheirWords)
{
    const CIMObjectPath path = servicePath();
    ServiceUnderTest& service = provider();
    zda_test::RecordingResponseHandler handler;

    CIMObjectPath threeKeys = path;
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    keys.remove(3);
    threeKeys.setKeyBindings(keys);
    CIMObjectPath otherName = path;
    keys = path.getKeyBindings();
    keys[3] = CIMKeyBinding("Name", "Other", CIMKeyBinding::STRING);
    otherName.setKeyBindings(keys);
    CIMObjectPath otherClass = path;
    otherClass.setClassName("ZDA_StorageSystem");

    const struct
    {
        const char* what;
        std::function<void()> call;
        int code;
        const char* message;
    } cases[] = {
        {"three keys",
            [&] { service.getInstance(admin(), threeKeys, false, false, CIMPropertyList(), handler); },
            CIM_ERR_INVALID_PARAMETER, "ZDA_ReplicationService Expect four keys."},
        {"no such name",
            [&] { service.getInstance(admin(), otherName, false, false, CIMPropertyList(), handler); },
            CIM_ERR_NOT_FOUND, "ZDA_ReplicationService CIM Object not found."},
        {"another class", [&] { service.enumerateInstanceNames(admin(), otherClass, handler); },
            CIM_ERR_NOT_SUPPORTED, "ZDA_ReplicationService Invalid class nameZDA_StorageSystem"},
        {"refused user",
            [&] {
                service.enumerateInstances(as("noaccess"), path, false, false, CIMPropertyList(), handler);
            },
            CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        // The refusals come before the array is opened, so even a refused user gets them.
        {"modify",
            [&] {
                service.modifyInstance(
                    as("noaccess"), path, CIMInstance(SERVICE), false, CIMPropertyList(), handler);
            },
            CIM_ERR_NOT_SUPPORTED, "ZDA_ReplicationService does not support modifyInstance."},
        {"create", [&] { service.createInstance(as("noaccess"), path, CIMInstance(SERVICE), handler); },
            CIM_ERR_NOT_SUPPORTED, "ZDA_ReplicationService does not support createInstance."},
        {"delete", [&] { service.deleteInstance(as("noaccess"), path, handler); }, CIM_ERR_NOT_SUPPORTED,
            "ZDA_ReplicationService does not support deleteInstance."},
        {"path constructor", [] { ZDA_ReplicationServiceProvider byPath((CIMObjectPath())); },
            CIM_ERR_NOT_SUPPORTED, "ZDA_ReplicationService does not support constructor with object path."},
    };
    for (const auto& c : cases)
    {
        const auto failure = failureOf(c.call);
        EXPECT_EQ(failure.first, c.code) << c.what;
        EXPECT_EQ(failure.second, c.message) << c.what;
    }
    EXPECT_EQ(handler.sequence(), "");
}

TEST_F(ReplicationServiceTest, AnUnknownMethodIsAnsweredWithNothing)
{
    const CIMObjectPath path = servicePath();
    zda_test::RecordingResponseHandler handler;
    provider().invokeMethod(as("viewer"), path, "NoSuchMethod", Array<CIMParamValue>(), handler);
    EXPECT_EQ(handler.sequence(), "");

    // The path is checked first: an unknown method elsewhere is not found.
    CIMObjectPath elsewhere = path;
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    keys[1] = CIMKeyBinding("SystemName", "other-array", CIMKeyBinding::STRING);
    elsewhere.setKeyBindings(keys);
    const auto failure = failureOf([&] {
        provider().invokeMethod(admin(), elsewhere, "NoSuchMethod", Array<CIMParamValue>(), handler);
    });
    EXPECT_EQ(failure.first, CIM_ERR_NOT_FOUND);
    EXPECT_EQ(failure.second, "ZDA_ReplicationService CIM Object not found.");
    EXPECT_EQ(cimErrorOf([&] {
        provider().invokeMethod(as("noaccess"), path, "NoSuchMethod", Array<CIMParamValue>(), handler);
    }),
        CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(handler.sequence(), "");
}

TEST_F(ReplicationServiceTest, EachFuncTypeAsksTheArrayForItsKey)
{
    Array<CIMParamValue> abort;
    abort.append(CIMParamValue("Operation", CIMValue(Uint16(2))));
    const struct
    {
        int funcType;
        Array<CIMParamValue> in;
        const char* key;
    } cases[] = {
        {AUTH_CREATE_ELEMENT_REPLICA, {}, "zda_replicationservice.createelementreplica.createvvcopy"},
        {AUTH_MODIFY_REPLICA_SYNCHRONIZATION, abort,
            "zda_replicationservice.modifyreplicasynchronization.abort "},
        {AUTH_MODIFY_LIST_SYNCHRONIZATION, {}, "zda_replicationservice.modifylistsynchronization.resync"},
        {AUTH_MODIFY_GROUP_REPLICA_SYNCHRONIZATION, abort,
            "zda_replicationservice.modifylistsynchronization.abort"},
        {AUTH_CREATE_GROUP_REPLICA, {}, "zda_replicationservice.creategroupreplica.creategroupvvcopy"},
        {AUTH_CREATE_CONSISTENT_REPLICA_LIST, {},
            "zda_replicationservice.creategroupreplica.creategroupvvcopy"},
        {AUTH_REPLICATION_CAPABILITIES, {}, "zda_replicationservicecapabilities"},
    };
    ServiceUnderTest& service = provider();
    for (const auto& c : cases)
    {
        zdasim_journal_clear();
        service._authorizeByFuncType(c.funcType, "operator", "192.0.2.7", c.in);
        const auto asked = zda_test::journalOf("api_authorizeCIMUser");
        ASSERT_EQ(asked.size(), 1u) << c.funcType;
        EXPECT_NE(asked[0].find(std::string("key=\"") + c.key + "\""), std::string::npos) << asked[0];
        EXPECT_NE(asked[0].find("addr=\"192.0.2.7\""), std::string::npos) << asked[0];

        const auto refused = failureOf(
            [&] { service._authorizeByFuncType(c.funcType, "viewer", "192.0.2.7", c.in); });
        EXPECT_EQ(refused.first, CIM_ERR_ACCESS_DENIED) << c.funcType;
        EXPECT_EQ(refused.second, "Insufficient privilege for the user");
    }
}

TEST_F(ReplicationServiceTest, TheGenericKeyFollowsTheClassTheClientNamed)
{
    ServiceUnderTest& service = provider();
    const struct
    {
        const char* className;
        const char* method;
        const char* key;
        int code;
        const char* message;
    } cases[] = {
        {"ZDA_ReplicationService", "CreateGroup", "zda_replicationservice.creategroup", -1, ""},
        // The operator has no right under the CIM class's key.
        {"CIM_ReplicationService", "CreateGroup", "cim_replicationservice.creategroup", CIM_ERR_ACCESS_DENIED,
            "Insufficient generic privilege"},
        {"ZDA_ReplicationService", "AddMembers", "zda_replicationservice.addmembers", CIM_ERR_NOT_SUPPORTED,
            "Does not support in generic!"},
    };
    zdasim_role_set_right("edit", "zda_replicationservice.addmembers", 7);
    for (const auto& c : cases)
    {
        zdasim_journal_clear();
        const auto failure = failureOf(
            [&] { service._authorizeGeneric(c.className, c.method, "operator", ""); });
        EXPECT_EQ(failure, std::make_pair(c.code, std::string(c.message))) << c.method;
        const auto asked = zda_test::journalOf("api_authorizeCIMUser");
        ASSERT_EQ(asked.size(), 1u);
        EXPECT_NE(asked[0].find(std::string("key=\"") + c.key + "\""), std::string::npos) << asked[0];
    }
}

TEST_F(ReplicationServiceTest, AMethodEndsWithItsResultOrThrowsItAsTheStatus)
{
    ServiceUnderTest& service = provider();
    Array<CIMParamValue> params;
    params.append(CIMParamValue("Job", CIMValue(String("x"))));

    zda_test::RecordingResponseHandler failed;
    EXPECT_EQ(failureOf([&] { service._completeMethod(failed, 5, "bad target", params, "_t"); }),
        std::make_pair(5, std::string("bad target")));
    EXPECT_EQ(failed.sequence(), "");

    // A result without a text is an ordinary answer, parameters included.
    for (Uint32 outstatus : {0u, 5u, 4096u})
    {
        zda_test::RecordingResponseHandler handler;
        service._completeMethod(handler, outstatus, outstatus ? "" : "ignored", params, "_t");
        EXPECT_EQ(handler.sequence(), "processing deliverParamValue deliver(value) complete");
        ASSERT_EQ(handler.returnValues().size(), 1u);
        EXPECT_EQ(handler.returnValues()[0].getType(), CIMTYPE_UINT32);
        Uint32 returned = 0;
        handler.returnValues()[0].get(returned);
        EXPECT_EQ(returned, outstatus);
    }
}

TEST(ReplicationServiceTables, CopyStateFitsAndCopyServicesOperations)
{
    const struct
    {
        Uint16 state;
        Uint16 op;
        int fits;
    } copyStates[] = {
        {0, 99, 1},
        {0, 8, 1},
        {3, 99, -1},
        {3, 22, -1},
        {9, 0, 1},
        {4, 4, 1},
        {3, 11, 1},
        {2, 20, 0},
        {4, 14, 1},
        {3, 14, 0},
        {7, 21, 1},
        {4, 21, 0},
        {10, 10, 1},
        {4, 10, 0},
        {5, 8, 0},
    };
    for (const auto& c : copyStates)
        EXPECT_EQ(ZDA_ReplicationServiceProvider::validateCopyStateOp(c.state, c.op), c.fits)
            << c.state << "/" << c.op;

    const std::pair<Uint16, Uint16> operations[] = {
        {2, 13}, {8, 2}, {9, 2}, {14, 4}, {15, 5}, {3, 0}, {0, 0}, {19, 0}};
    for (const auto& c : operations)
        EXPECT_EQ(ServiceUnderTest::_convertToCopySvcsOp(c.first), c.second) << c.first;
}

TEST_F(ReplicationServiceTest, OnlyTheFirstTaskOfAStartedGroupIsItsJob)
{
    ServiceUnderTest& service = provider();
    api_rcopy_task_id_t tasks[2] = {{1001, 0}, {1002, 0}};
    api_rcopy_task_id_t noTask[1] = {{0, 0}};
    const struct
    {
        uint32_t count;
        api_rcopy_task_id_t* ids;
        Uint32 job;
    } cases[] = {{0, tasks, 0}, {1, noTask, 0}, {2, tasks, 1001}};
    for (const auto& c : cases)
    {
        api_rcopy_start_group group{};
        group.sync_task_num = c.count;
        group.sync_task_id = c.ids;
        Array<CIMParamValue> params;
        service.setConcreteJobParam(params, group);
        if (c.job == 0)
        {
            EXPECT_EQ(params.size(), 0u);
            continue;
        }
        ASSERT_EQ(params.size(), 1u);
        EXPECT_EQ(text(params[0].getParameterName()), "Job");
        CIMObjectPath job;
        params[0].getValue().get(job);
        EXPECT_TRUE(ZDA_Common::matchObjectPath(job,
            ZDA_ConcreteJobProvider::buildObjectPath(HOST, ZDA_ConcreteJobProvider::makeUniqueID(c.job))));
    }
}

TEST_F(ReplicationServiceTest, ReturningSynchronizationsRemovesTheTargetsThatStillExist)
{
    ServiceUnderTest& service = provider();
    const CIMObjectPath vol1 = volume("vol1");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemElement", vol1.toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding("SyncedElement", vol1.toString(), CIMKeyBinding::REFERENCE));
    const CIMObjectPath gone(HOST, ZDA_NS, "ZDA_StorageSynchronized", keys);
    Array<CIMObjectPath> toReturn;
    toReturn.append(gone);
    toReturn.append(CIMObjectPath("ZDA_StorageSynchronized"));
    for (const api_Status_t& status :
        {service._returnToResourcePool(&event, admin(), toReturn, CIMObjectPath(), false),
            service._returnToResourcePool(&event, admin(), gone)})
    {
        EXPECT_EQ(status.code, 50);
        char errText[API_ERRTEXT_LEN];
        EXPECT_STREQ(api_getErrorTextNoNL(errText, sizeof errText, &status),
            "None of the Synchronized instances exist");
    }
    EXPECT_EQ(zda_test::journalOf("api_removeVVs").size(), 0u);

    // A snapshot and a clone among them: the snapshot is detached, the clone removed.
    Array<CIMObjectPath> syncs = server().enumerateInstanceNames(admin(), ZDA_NS, "ZDA_StorageSynchronized");
    for (Uint32 i = 0; i < syncs.size(); i++)
    {
        const CIMObjectPath target = endOf(syncs[i], "SyncedElement");
        if (ZDA_Common::matchObjectPath(target, volume("vol1.rw")) ||
            ZDA_Common::matchObjectPath(target, volume("vol2.clone")))
            toReturn.append(syncs[i]);
    }
    ASSERT_EQ(toReturn.size(), 4u);
    // A target set that cannot be removed ends the walk before any target goes.
    const auto group = [](const char* set) {
        Array<CIMKeyBinding> id;
        id.append(CIMKeyBinding("InstanceID", String("KX_ORLA:") + set, CIMKeyBinding::STRING));
        return CIMObjectPath(HOST, ZDA_NS, "ZDA_ReplicationGroup", id);
    };
    EXPECT_NE(service._returnToResourcePool(&event, admin(), toReturn, group("no_set"), true).code, 0);
    EXPECT_EQ(volumePaths().count("vol1.rw"), 1u);

    EXPECT_EQ(service._returnToResourcePool(&event, admin(), toReturn, group("set_one"), true).code, 0);
    const auto removedSets = zda_test::journalOf("api_removeVVSet");
    ASSERT_EQ(removedSets.size(), 2u);
    EXPECT_NE(removedSets[1].find("set_one"), std::string::npos) << removedSets[1];
    const auto remaining = volumePaths();
    EXPECT_EQ(remaining.count("vol1.rw") + remaining.count("vol2.clone"), 0u);
    EXPECT_EQ(remaining.count("vol1"), 1u);
}

}  // namespace
