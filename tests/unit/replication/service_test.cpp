// The replication service: the module's entry, the one instance through the
// in-process host, method dispatch and its authorization, and the routines
// the method handlers share, on a provider object where the host cannot
// show the detail (handler calls, keys asked of the array).
#include "replication_fixture.h"

#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_MethodAuthorization.h"
#include "ZDA_RemoteReplicationCollectionProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_ReplicationServiceCapabilitiesProvider.h"

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

class ReplicationServiceTest : public ReplicationTest
{
protected:
    // A provider object initialized as the server does it.
    ServiceUnderTest& provider() { return directService<ServiceUnderTest>(); }
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
    const CIMObjectPath path = ReplicationTest::service;
    ASSERT_EQ(path.getKeyBindings().size(), 4u);
    EXPECT_EQ(text(path.getNameSpace().getString()), ZDA_NS);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "SystemCreationClassName")), "ZDA_StorageSystem");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "SystemName")), SYSTEM_NAME);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "CreationClassName")), SERVICE);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "Name")), SERVICE_NAME);

    const Array<CIMInstance> enumerated = instancesOf(SERVICE);
    ASSERT_EQ(enumerated.size(), 1u);
    for (const CIMInstance& service : {enumerated[0], getInstance(path)})
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
    const CIMObjectPath path = ReplicationTest::service;
    ServiceUnderTest& service = provider();
    zda_test::RecordingResponseHandler handler;
    const CIMObjectPath threeKeys = withKey(path, "Name", nullptr);
    const CIMObjectPath otherName = withKey(path, "Name", "Other");
    CIMObjectPath otherClass = path;
    otherClass.setClassName("ZDA_StorageSystem");
    const CIMPropertyList all;

    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { service.getInstance(admin(), threeKeys, false, false, all, handler); },
            "thrown 4: ZDA_ReplicationService Expect four keys."},
        {[&] { service.getInstance(admin(), otherName, false, false, all, handler); },
            "thrown 6: ZDA_ReplicationService CIM Object not found."},
        {[&] { service.enumerateInstanceNames(admin(), otherClass, handler); },
            "thrown 7: ZDA_ReplicationService Invalid class nameZDA_StorageSystem"},
        {[&] { service.enumerateInstances(as("noaccess"), path, false, false, all, handler); },
            "thrown 2: Insufficient privilege for the user"},
        // The refusals come before the array is opened, so even a refused user gets them.
        {[&] { service.modifyInstance(as("noaccess"), path, CIMInstance(SERVICE), false, all, handler); },
            "thrown 7: ZDA_ReplicationService does not support modifyInstance."},
        {[&] { service.createInstance(as("noaccess"), path, CIMInstance(SERVICE), handler); },
            "thrown 7: ZDA_ReplicationService does not support createInstance."},
        {[&] { service.deleteInstance(as("noaccess"), path, handler); },
            "thrown 7: ZDA_ReplicationService does not support deleteInstance."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failure(c.first), c.second);
    EXPECT_EQ(handler.sequence(), "");
}

TEST_F(ReplicationServiceTest, AnUnknownMethodIsAnsweredWithNothing)
{
    const CIMObjectPath path = ReplicationTest::service;
    zda_test::RecordingResponseHandler handler;
    const Array<CIMParamValue> none;
    provider().invokeMethod(as("viewer"), path, "NoSuchMethod", none, handler);
    EXPECT_EQ(handler.sequence(), "");

    // The path is checked first: an unknown method elsewhere is not found.
    const CIMObjectPath elsewhere = withKey(path, "SystemName", "other-array");
    EXPECT_EQ(failure([&] { provider().invokeMethod(admin(), elsewhere, "NoSuchMethod", none, handler); }),
        "thrown 6: ZDA_ReplicationService CIM Object not found.");
    EXPECT_EQ(failure([&] { provider().invokeMethod(as("noaccess"), path, "NoSuchMethod", none, handler); }),
        "thrown 2: Insufficient privilege for the user");
    EXPECT_EQ(handler.sequence(), "");
}

// Each method asks the array for its right, chosen by the method and what
// it is asked to do, from the caller's address; a viewer has none of them.
TEST_F(ReplicationServiceTest, EachMethodAsksTheArrayForItsRight)
{
    const auto op = [](Uint16 operation) { return args({{"Operation", u16(operation)}}); };
    const std::string generic = "thrown 2: Insufficient generic privilege";
    const std::string refused = "thrown 2: Insufficient privilege for the user";
    const struct
    {
        const char* method;
        Array<CIMParamValue> in;
        const char* key;  // after "zda_replicationservice"
        const std::string& viewer;
    } rows[] = {
        {"CreateElementReplica", args({{"SyncType", u16(8)}}), ".createelementreplica.createvvcopy", refused},
        {"CreateElementReplica", args({{"SyncType", u16(7)}, {"Mode", u16(3)}}),
            ".createelementreplica.createsv", refused},
        {"CreateListReplica", args({{"SyncType", u16(8)}}), ".createelementreplica.createvvcopy", refused},
        {"ZDA_CreateConsistentReplicaList", {}, ".creategroupreplica.creategroupvvcopy", refused},
        {"ModifyReplicaSynchronization", op(2), ".modifyreplicasynchronization.abort ", refused},
        {"ModifyReplicaSynchronization", op(21), ".modifyreplicasynchronization.split", refused},
        {"ModifyReplicaSynchronization", op(10), ".modifyreplicasynchronization.setrcopygroup", refused},
        {"ModifyListSynchronization", {}, ".modifylistsynchronization.resync", refused},
        {"ModifyListSynchronization", op(8), ".modifylistsynchronization.dissolve", refused},
        {"ZDA_ModifyGroupReplicaSynchronization", op(2), ".modifylistsynchronization.abort", refused},
        {"ZDA_ModifyGroupReplicaSynchronization",
            args({{"Operation", u16(19)}, {"TargetGroup", CIMValue(vvset("x"))}}), ".deletegroup", refused},
        // Without an Operation the right of another method is asked.
        {"ModifyReplicaSynchronization", {}, ".createelementreplica.createvvcopy", refused},
        {"CreateGroupReplica", args({{"SyncType", u16(7)}, {"Mode", u16(3)}}),
            ".creategroupreplica.creategroupsv", refused},
        {"ZDA_CreateGroupReplica", args({{"SyncType", u16(8)}}), ".creategroupreplica.creategroupvvcopy",
            refused},
        {"CreateGroupReplicaFromElements", args({{"SyncType", u16(6)}, {"Mode", u16(3)}}),
            ".creategroupreplica.createmirror", refused},
        {"CreateGroup", {}, ".creategroup", generic},
        {"AddMembers", {}, ".addmembers", generic},
        {"RemoveMembers", {}, ".removemembers", generic},
        {"GetPeerSystems", {}, ".getpeersystems", generic},
        {"GetServiceAccessPoints", {}, ".getserviceaccesspoints", generic},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(std::string(row.method) + " " + row.key);
        EXPECT_EQ(outcome(row.method, row.in, "operator").find("privilege"), std::string::npos);
        EXPECT_EQ(lastAuthorizationKey(), std::string("zda_replicationservice") + row.key);
        EXPECT_EQ(lastJournalArgument("api_authorizeCIMUser", "addr"), "192.0.2.99");
        EXPECT_EQ(outcome(row.method, row.in, "viewer"), row.viewer);
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
        const char* refusal;
    } cases[] = {
        // The operator has no right under the CIM class's key.
        {"CIM_ReplicationService", "CreateGroup", "cim_replicationservice.creategroup",
            "thrown 2: Insufficient generic privilege"},
        {"ZDA_ReplicationService", "AddMembers", "zda_replicationservice.addmembers",
            "thrown 7: Does not support in generic!"},
    };
    zdasim_role_set_right("edit", "zda_replicationservice.addmembers", 7);
    for (const auto& c : cases)
    {
        EXPECT_EQ(
            failure([&] { service._authorizeGeneric(c.className, c.method, "operator", ""); }), c.refusal);
        EXPECT_EQ(lastAuthorizationKey(), c.key);
    }
}

TEST_F(ReplicationServiceTest, AMethodEndsWithItsResultOrThrowsItAsTheStatus)
{
    ServiceUnderTest& service = provider();
    const Array<CIMParamValue> params = args({{"Job", str("x")}});

    zda_test::RecordingResponseHandler failed;
    EXPECT_EQ(failure([&] { service._completeMethod(failed, 5, "bad target", params, "_t"); }),
        "thrown 5: bad target");
    EXPECT_EQ(failed.sequence(), "");

    // A result without a text is an ordinary answer, parameters included.
    for (Uint32 outstatus : {0u, 5u, 4096u})
    {
        zda_test::RecordingResponseHandler handler;
        service._completeMethod(handler, outstatus, outstatus ? "" : "ignored", params, "_t");
        EXPECT_EQ(handler.sequence(), "processing deliverParamValue deliver(value) complete");
        ASSERT_EQ(handler.returnValues().size(), 1u);
        EXPECT_EQ(handler.returnValues()[0], CIMValue(outstatus));
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
        out.clear();
        service.setConcreteJobParam(out, group);
        ASSERT_EQ(out.size(), c.job ? 1u : 0u);
        EXPECT_TRUE(c.job == 0 ||
            ZDA_Common::matchObjectPath(outPath("Job"),
                ZDA_ConcreteJobProvider::buildObjectPath(
                    HOST, ZDA_ConcreteJobProvider::makeUniqueID(c.job))));
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
    const std::string none = "50: None of the Synchronized instances exist";
    EXPECT_EQ(
        statusText(service._returnToResourcePool(&event, admin(), toReturn, CIMObjectPath(), false)), none);
    EXPECT_EQ(statusText(service._returnToResourcePool(&event, admin(), gone)), none);
    EXPECT_EQ(zda_test::journalOf("api_removeVVs").size(), 0u);

    // A snapshot and a clone among them: the snapshot is detached, the clone removed.
    Array<CIMObjectPath> syncs = namesOf("ZDA_StorageSynchronized");
    for (Uint32 i = 0; i < syncs.size(); i++)
    {
        const CIMObjectPath target = endOf(syncs[i], "SyncedElement");
        if (ZDA_Common::matchObjectPath(target, volume("vol1.rw")) ||
            ZDA_Common::matchObjectPath(target, volume("vol2.clone")))
            toReturn.append(syncs[i]);
    }
    ASSERT_EQ(toReturn.size(), 4u);
    // A target set that cannot be removed ends the walk before any target goes.
    EXPECT_NE(service._returnToResourcePool(&event, admin(), toReturn, vvset("no_set"), true).code, 0);
    EXPECT_EQ(volumePaths().count("vol1.rw"), 1u);

    EXPECT_EQ(service._returnToResourcePool(&event, admin(), toReturn, vvset("set_one"), true).code, 0);
    const auto removedSets = zda_test::journalOf("api_removeVVSet");
    ASSERT_EQ(removedSets.size(), 2u);
    EXPECT_NE(removedSets[1].find("set_one"), std::string::npos) << removedSets[1];
    const auto remaining = volumePaths();
    EXPECT_EQ(remaining.count("vol1.rw") + remaining.count("vol2.clone"), 0u);
    EXPECT_EQ(remaining.count("vol1"), 1u);
}

// The module's providers are made only by the module's entry, never from a path.
TEST(ReplicationProviders, ConstructionFromAPathIsRefused)
{
    const CIMObjectPath path;
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { ZDA_ReplicationServiceProvider p(path); }, "ZDA_ReplicationService"},
        {[&] { ZDA_ReplicationServiceCapabilitiesProvider p(path); }, "ZDA_ReplicationServiceCapabilities"},
        {[&] { ZDA_RemoteReplicationGroupProvider p(path); }, "ZDA_RemoteReplicationGroup"},
        {[&] { ZDA_RemoteReplicationCollectionProvider p(path); }, "ZDA_RemoteReplicationCollection"},
        {[&] { ZDA_ReplicationEntityProvider p(path); }, "ZDA_ReplicationEntity"},
        {[&] { ZDA_RemoteServiceAccessPointProvider p(path); }, "ZDA_RemoteServiceAccessPoint"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failure(c.first),
            std::string("thrown 7: ") + c.second + " does not support constructor with object path.");
}

// The choice of a right by a method's authorization kind, and the refusals
// its result leads to, on the simulator alone.
using MethodAuthorizationTest = zda_test::SimulatorFixture;

TEST_F(MethodAuthorizationTest, KindsChooseTheirRightAndKindsWithoutOneAskNothing)
{
    const Array<CIMParamValue> none;
    EXPECT_EQ(authorizeMethod(AUTH_REPLICATION_CAPABILITIES, "viewer", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_replicationservicecapabilities");
    EXPECT_EQ(authorizeMethod(AUTH_MODIFY_SETTING_PERSISTENT, "operator", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_storagesetting.modifyinstance");

    zdasim_journal_clear();
    for (int kind : {0, 4, 18, -1})
        EXPECT_EQ(authorizeMethod(kind, "admin", "192.0.2.1", none), 3) << kind;
    EXPECT_EQ(zdasim_journal_count_of("api_authorizeCIMUser"), 0u);
}

TEST_F(MethodAuthorizationTest, ResultsBecomeTheirRefusals)
{
    const std::pair<int, const char*> cases[] = {{1, "thrown 2: Insufficient privilege for the user"},
        {2, "thrown 2: Insufficient privilege for the user"}, {3, "thrown 7: Does not support!"},
        {-7, "thrown 7: Does not support!"}, {0, "none"}};
    for (const auto& c : cases)
        EXPECT_EQ(failure([&] { requireAuthorized(c.first, "File", 1); }).rfind(c.second, 0), 0u) << c.first;
}

}  // namespace
