// The remote replication model over the remote copy test array: remote copy
// groups, targets as collections and access points, far-side entities, the
// lookups over a remote copy snapshot, the resolution of an access point to
// a target, and the service's GetPeerSystems and GetServiceAccessPoints.
#include "replication_fixture.h"

#include <map>

#include "RemoteCopyTestArray.h"
#include "ZDA_RemoteReplicationCollectionProvider.h"
#include "ZDA_RemoteStorageSynchronizedProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_StorageSystemProvider.h"

using namespace zda_replication_test;
using zda_test::instancePath;

namespace
{

const char RC_GROUP[] = "ZDA_RemoteReplicationGroup";
const char COLLECTION[] = "ZDA_RemoteReplicationCollection";
const char SAP[] = "ZDA_RemoteServiceAccessPoint";
const char ENTITY[] = "ZDA_ReplicationEntity";
const char PEER1_WWN[] = "2FF70002AC00000B";
const char PEER9_WWN[] = "2FF70002AC000012";

// The remote copy configuration as the array hands it out, for the lookups
// and for expected values the test array does not spell out.
struct Snapshot : ZDA_AssociationFrame::RCopySnapshot
{
    Snapshot() { EXPECT_EQ(read(API_RCOPY_QUERY_TYPE_ALL).code, 0); }

    rm_group_wrapper* group(const char* name)
    {
        for (rm_group_wrapper* g = rcopy.groups; g; g = g->next)
            if (std::string(g->group.rm_hdr.rm_name) == name)
                return g;
        ADD_FAILURE() << "no group " << name;
        return nullptr;
    }
    // The far WWN of `volume` on `target`, as text ("" for no such volume).
    std::string farWWN(const char* groupName, const char* volumeName, int target)
    {
        char wwn[API_WWN_TEXT_LEN] = "";
        for (rm_group_vv_wrapper* v = group(groupName)->gvvs; v; v = v->next)
            if (std::string(v->gvv.rm_local_name) == volumeName)
                api_wwnIntToString(
                    v->maps[target].rm_remote_wwn_re, v->maps[target].rm_remote_wwn, wwn, sizeof wwn);
        return wwn;
    }
};

class RemoteModelTest : public ReplicationTest
{
protected:
    void SetUp() override
    {
        ReplicationTest::SetUp();
        loadArray(zda_test::remoteCopyTestArray());
    }

    // Each instance of the class by the value of `key`.
    std::map<std::string, CIMInstance> byKey(const char* className, const char* key)
    {
        std::map<std::string, CIMInstance> out;
        Array<CIMInstance> instances = instancesOf(className);
        for (Uint32 i = 0; i < instances.size(); i++)
            out[text(get<String>(instances[i], key))] = instances[i];
        return out;
    }
    std::vector<std::string> keysOf(const char* className, const char* key)
    {
        std::vector<std::string> out;
        Array<CIMInstance> instances = instancesOf(className);
        for (Uint32 i = 0; i < instances.size(); i++)
            out.push_back(text(get<String>(instances[i], key)));
        return out;
    }
    // The Name keys of the paths of an output parameter.
    std::vector<std::string> names(const char* parameter)
    {
        std::vector<std::string> names;
        const Array<CIMObjectPath> paths = outPaths(parameter);
        for (Uint32 i = 0; i < paths.size(); i++)
            names.push_back(text(ZDA_Common::getStringProperty(paths[i], "Name")));
        return names;
    }
    static CIMObjectPath peer(const char* wwn, const char* host = "")
    {
        return ZDA_StorageSystemProvider::createObjectPath(host, wwn, ZDA_NS);
    }
};

TEST_F(RemoteModelTest, RemoteCopyGroupsWithTheirCaptionAndDomain)
{
    EXPECT_EQ(keysOf(RC_GROUP, "ElementName"),
        (std::vector<std::string>{
            "gSync", "gByModeSync", "gByModePeriodic", "gNoDomain", "gNew", "gEmpty", "gTwo", "gUnknown"}));
    std::string caption;
    {
        Snapshot snapshot;
        caption = "RemoteReplicationGroup gSync, ID " +
            std::to_string(snapshot.group("gSync")->group.rm_hdr.rm_ID);
    }
    auto groups = byKey(RC_GROUP, "ElementName");
    const CIMInstance& gSync = groups["gSync"];
    EXPECT_EQ(text(get<String>(gSync, "Caption")), caption);
    EXPECT_EQ(text(get<String>(gSync, "Description")), caption);
    EXPECT_EQ(text(get<String>(gSync, "InstanceID")), "KX_ORLA:gSync");
    EXPECT_EQ(text(get<String>(gSync, "Domain")), "dom1");
    EXPECT_TRUE(get<Boolean>(gSync, "Persistent") && get<Boolean>(gSync, "ConsistentPointInTime"));
    EXPECT_FALSE(get<Boolean>(gSync, "DeleteOnEmptyElement") || get<Boolean>(gSync, "DeleteOnUnassociated"));
    EXPECT_TRUE(valueOf(groups["gNoDomain"], "Domain").isNull());
    EXPECT_TRUE(ZDA_Common::matchObjectPath(getInstance(gSync.getPath()).getPath(),
        ZDA_RemoteReplicationGroupProvider::buildObjectPath("any.host", "gSync")));
    EXPECT_EQ(text(gSync.getPath().getHost()), HOST);

    // By name and number: 65535 is no number, and a long name cuts the text.
    CIMClass groupClass = zda_test::ServerHostFixture::host().repository().getClass(ZDA_NS, RC_GROUP, false);
    CIMInstance unnumbered = ZDA_RemoteReplicationGroupProvider::buildInstance(
        "far", 65535, groupClass, "peer1");
    EXPECT_EQ(text(get<String>(unnumbered, "Caption")), "RemoteReplicationGroup far");
    EXPECT_TRUE(valueOf(unnumbered, "Domain").isNull());
    EXPECT_EQ(text(unnumbered.getPath().getHost()), "peer1");
    const std::string longName(50, 'n');
    CIMInstance cut = ZDA_RemoteReplicationGroupProvider::buildInstance(longName.c_str(), 7, groupClass, "h");
    EXPECT_EQ(text(get<String>(cut, "Description")),
        ("RemoteReplicationGroup " + longName + ", ID 7").substr(0, 60));
    CIMInstance empty = ZDA_RemoteReplicationGroupProvider::buildEmptyInstance("far", groupClass, "peer1");
    EXPECT_EQ(text(get<String>(empty, "InstanceID")), "KX_ORLA:far");
    EXPECT_TRUE(valueOf(empty, "ElementName").isNull());
}

// Collections and access points are two views of each target.
TEST_F(RemoteModelTest, EachTargetAsCollectionAndAccessPoint)
{
    struct Row
    {
        const char* target;
        int connectivity;
        std::vector<int> operationalStatus;
        int healthState;
    };
    const std::vector<Row> rows = {
        {"tReady", 2, {2}, 5},
        {"tNew", 4, {8}, 5},
        {"tRelease", 3, {6}, 25},
        {"tFailing", 3, {13}, 15},
        {"tFailed", 3, {13}, 20},
        {"tDisabled", 3, {10}, 0},
        {"tOdd", 3, {0}, 0},
        {"tUnusable", 3, {10, 2}, 5},
    };
    auto collections = byKey(COLLECTION, "ElementName");
    auto accessPoints = byKey(SAP, "Name");
    EXPECT_EQ(collections.size(), 12u);
    EXPECT_EQ(accessPoints.size(), 12u);
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.target);
        const CIMInstance& collection = collections[row.target];
        EXPECT_EQ(get<Uint16>(collection, "ConnectivityStatus"), row.connectivity);
        EXPECT_EQ(get<Boolean>(collection, "Active"), row.connectivity == 2);
        const CIMInstance& sap = accessPoints[row.target];
        EXPECT_EQ(uint16s(sap, "OperationalStatus"), row.operationalStatus);
        EXPECT_EQ(get<Uint16>(sap, "HealthState"), row.healthState);
    }

    const CIMInstance& collection = collections["tReady"];
    EXPECT_EQ(text(get<String>(collection, "Caption")), "RemoteReplicationCollection tReady");
    EXPECT_EQ(text(get<String>(collection, "InstanceID")), "KX_ORLA:tReady");
    EXPECT_FALSE(get<Boolean>(collection, "DeleteOnUnassociated"));
    EXPECT_TRUE(foundByPath(collection.getPath()));

    const CIMInstance& sap = accessPoints["tReady"];
    EXPECT_EQ(text(get<String>(sap, "SystemName")), HOST);
    EXPECT_EQ(text(get<String>(sap, "AccessInfo")), "tReady");
    EXPECT_EQ(get<Uint16>(sap, "InfoFormat"), 2);
    EXPECT_EQ(text(get<String>(sap, "OtherTypeDescription")), "RCopy");
    // Only Name finds the target: another system's keys still lead to it.
    CIMObjectPath elsewhere = ZDA_RemoteServiceAccessPointProvider::buildObjectPath("other", "tReady");
    EXPECT_EQ(text(get<String>(getInstance(elsewhere), "SystemName")), HOST);
}

TEST_F(RemoteModelTest, EntitiesOfFarGroupsAndVolumes)
{
    // The far volumes' WWNs, as the array knows them.
    std::string rv1, rv2, rv3, rv5Ready, rv5Computed, rv6;
    {
        Snapshot snapshot;
        rv1 = snapshot.farWWN("gSync", "rv1", 0);
        rv2 = snapshot.farWWN("gByModeSync", "rv2", 0);
        rv3 = snapshot.farWWN("gNoDomain", "rv3", 0);
        rv5Ready = snapshot.farWWN("gTwo", "rv5", 0);
        rv5Computed = snapshot.farWWN("gTwo", "rv5", 1);
        rv6 = snapshot.farWWN("gTwo", "rv6", 0);
    }
    const std::vector<std::string> expected = {"KX_ORLA:RG:gSync.r:peer1", "KX_ORLA:RG:gByModeSync.r:peer1",
        "KX_ORLA:RG:gByModePeriodic.r:peer1", "KX_ORLA:RG:gNoDomain.r:peer1", "KX_ORLA:RG:gNew.r:peer1",
        "KX_ORLA:RG:gEmpty.r:peer1", "KX_ORLA:RG:gTwo.r:peer1", "KX_ORLA:RG:gTwo.r:peer9",
        "KX_ORLA:RG:gUnknown.r:peer10",
        // Known far WWNs on a known peer WWN; else the far name on the target.
        "KX_ORLA:VV:" + rv1 + ":" + PEER1_WWN, "KX_ORLA:VV:" + rv2 + ":" + PEER1_WWN,
        "KX_ORLA:VV:" + rv3 + ":" + PEER1_WWN, "KX_ORLA:VV:rv4:tReady",
        "KX_ORLA:VV:" + rv5Ready + ":" + PEER1_WWN, "KX_ORLA:VV:" + rv5Computed + ":" + PEER9_WWN,
        "KX_ORLA:VV:" + rv6 + ":" + PEER1_WWN, "KX_ORLA:VV:rv7:tUnknown"};
    EXPECT_EQ(keysOf(ENTITY, "InstanceID"), expected);

    // The entities do not follow the no-replication-entity policy.
    zdasim_system_set_policy(API_POLICY_NO_REPLICATION_ENTITY);
    ZDA_InternalCacheService::destroy();
    EXPECT_EQ(keysOf(ENTITY, "InstanceID"), expected);

    auto entities = byKey(ENTITY, "InstanceID");
    const CIMInstance& group = entities["KX_ORLA:RG:gSync.r:peer1"];
    EXPECT_EQ(get<Uint16>(group, "Type"), 11);
    EXPECT_EQ(text(get<String>(group, "Name")), "gSync.r");
    EXPECT_EQ(
        text(get<String>(group, "EntityID")), "ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:gSync.r\"");
    CIMInstance element = get<CIMInstance>(group, "Element");
    EXPECT_EQ(element.getPropertyCount(), 1u);

    const CIMInstance& volume = entities["KX_ORLA:VV:rv7:tUnknown"];
    EXPECT_EQ(get<Uint16>(volume, "Type"), 11);
    element = get<CIMInstance>(volume, "Element");
    EXPECT_EQ(element.getPropertyCount(), 4u);
    EXPECT_EQ(text(get<String>(element, "DeviceID")), "rv7");
    EXPECT_EQ(text(get<String>(element, "SystemName")), "tUnknown");

    // getInstance finds each form only by its own key.
    auto entity = [](const std::string& host, const std::string& name) {
        return ZDA_ReplicationEntityProvider::buildObjectPath(HOST, host.c_str(), "VV", name.c_str());
    };
    EXPECT_EQ(text(get<String>(getInstance(entity(PEER1_WWN, rv1)), "Name")), rv1);
    EXPECT_EQ(text(get<String>(getInstance(entity("tUnknown", "rv7")), "Name")), "rv7");
    EXPECT_EQ(readError(entity("tSyncOnly", "rv1")), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(readError(entity("tSyncOnly", rv1)), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(readError(entity(PEER9_WWN, rv6)), CIM_ERR_NOT_FOUND);
}

TEST_F(RemoteModelTest, EntityInstanceIDsSplitWithTheHostWhole)
{
    struct Row
    {
        const char* instanceID;
        const char* type;
        const char* name;
        const char* host;
    };
    const std::vector<Row> rows = {
        {"KX_ORLA:VV:rv1:fe80::1:2", "VV", "rv1", "fe80::1:2"},
        {"KX_ORLA:RG:far.r:peer1", "RG", "far.r", "peer1"},
        {"KX_ORLA:RG:far.r", "RG", "far.r", ""},
        {"KX_ORLA:nocolon", "", "", ""},
        {"VV:rv1:host", "", "", ""},
    };
    for (const Row& row : rows)
    {
        String type = "x", name = "x", hostName = "x";
        ZDA_ReplicationEntityProvider::extractFromInstanceID(row.instanceID, type, name, hostName);
        EXPECT_EQ(text(type) + "|" + text(name) + "|" + text(hostName),
            std::string(row.type) + "|" + row.name + "|" + row.host)
            << row.instanceID;
    }
    EXPECT_EQ(text(ZDA_ReplicationEntityProvider::buildInstanceID("h:1", "VV", "n")), "KX_ORLA:VV:n:h:1");
}

// The direction of each pair, its far map and far WWN show in the pairs and
// entities; what no configuration the server reads can show is a group
// target without its target.
TEST_F(RemoteModelTest, AGroupTargetWithoutItsTargetHasNoWWN)
{
    Snapshot snapshot;
    EXPECT_EQ(ZDA_RemoteStorageSynchronizedProvider::findTarget(nullptr, snapshot.rcopy), nullptr);
    rm_group_target* unknown = &snapshot.group("gUnknown")->gtargets[0];
    std::strcpy(unknown->rm_target, "removed");
    EXPECT_EQ(ZDA_RemoteStorageSynchronizedProvider::findTarget(unknown, snapshot.rcopy), nullptr);
    EXPECT_EQ(text(ZDA_RemoteStorageSynchronizedProvider::getRemoteSystemWWN(&snapshot.rcopy, unknown)), "");
}

TEST_F(RemoteModelTest, AnAccessPointResolvesToATargetForAMode)
{
    // The chosen target, or "refused: <text>"; without a mode, any target.
    auto resolve = [](const char* name, int mode) {
        String chosen, errStr;
        const bool ok = mode < 0
            ? ZDA_RemoteServiceAccessPointProvider::getRcopyTargetFromSAP(chosen, sap(name), errStr)
            : ZDA_RemoteServiceAccessPointProvider::getRcopyTargetFromSAP(
                  chosen, sap(name), Uint16(mode), errStr);
        return ok ? text(chosen) : "refused: " + text(errStr);
    };
    const std::string none = "refused: No remote copy target is configured for provided Service Access Point";
    const std::tuple<const char*, int, std::string> rows[] = {
        {"tReady", 3, "tReady"},  // suits any mode
        {"tSyncOnly", 2, "tSyncOnly"},
        // Not for this mode: another target to the same system that is.
        {"tSyncOnly", 3, "tAsyncOnly"},
        {"tAsyncOnly", 2, "tSyncOnly"},
        {"tComputed", 0, "tComputed"},
        {"tComputed", 3,
            "refused: The target access point tComputed is not currently available with the requested "
            "synchronization"},
        {"tNew", 0, none},
        {"tUnusable", 0, none},
        {"", 0, "refused: reference is not valid"},
        {"tSyncOnly", -1, "tSyncOnly"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(resolve(std::get<0>(row), std::get<1>(row)), std::get<2>(row))
            << std::get<0>(row) << " mode " << std::get<1>(row);
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(resolve("tReady", -1), "refused: Problem getting rcopy information");
    expectLedgersClean("resolving access points");
}

// Every class of the model answers a failed or busy array with an empty
// enumeration and not found, never another error.
TEST_F(RemoteModelTest, ReadFailuresAnswerEmptyOrNotFound)
{
    const std::vector<std::pair<const char*, CIMObjectPath>> classes = {
        {RC_GROUP, rcopyGroup("gSync")},
        {COLLECTION, instancePath(ZDA_NS, COLLECTION, {{"InstanceID", "KX_ORLA:tReady"}})},
        {SAP, sap("tReady")},
        {ENTITY, ZDA_ReplicationEntityProvider::buildObjectPath(HOST, "peer1", "RG", "gSync.r")},
    };
    for (const auto& c : classes)
    {
        SCOPED_TRACE(c.first);
        ASSERT_EQ(text(getInstance(c.second).getPath().getClassName().getString()), c.first);
        zdasim_fault_sem_timeouts(1);
        EXPECT_EQ(instancesOf(c.first).size(), 0u);
        zdasim_fault_add("api_getRCopy", 1, API_E_INVALID, "broken");
        EXPECT_EQ(namesOf(c.first).size(), 0u);
        zdasim_fault_sem_timeouts(1);
        EXPECT_EQ(readError(c.second), CIM_ERR_NOT_FOUND);
    }
    // Keys that name nothing.
    const std::pair<CIMObjectPath, int> keys[] = {
        {instancePath(ZDA_NS, RC_GROUP, {{"InstanceID", "gSync"}}), CIM_ERR_NOT_FOUND},
        {instancePath(ZDA_NS, ENTITY, {{"InstanceID", "KX_ORLA:RG"}}), CIM_ERR_NOT_FOUND},
        {instancePath(ZDA_NS, SAP, {{"Name", "tReady"}}), CIM_ERR_INVALID_PARAMETER},
    };
    for (const auto& k : keys)
        EXPECT_EQ(readError(k.first), k.second) << text(k.first.toString());
}

// The model is read-only and its classes have no methods.
TEST_F(RemoteModelTest, ChangesAndMethodsAreRefused)
{
    for (const char* className : {RC_GROUP, COLLECTION, SAP, ENTITY})
        EXPECT_EQ(changeErrors(namesOf(className)[0]), "7 7 7") << className;
    // The server refuses methods the class does not declare; the providers
    // refuse any that reach them.
    zda_test::RecordingResponseHandler handler;
    const Array<CIMParamValue> none;
    std::vector<std::unique_ptr<CIMMethodProvider>> providers;
    providers.emplace_back(new ZDA_RemoteReplicationGroupProvider());
    providers.emplace_back(new ZDA_RemoteReplicationCollectionProvider());
    providers.emplace_back(new ZDA_ReplicationEntityProvider());
    providers.emplace_back(new ZDA_RemoteServiceAccessPointProvider());
    for (auto& provider : providers)
        EXPECT_EQ(cimErrorOf([&] { provider->invokeMethod(admin(), CIMObjectPath(), "Any", none, handler); }),
            CIM_ERR_NOT_SUPPORTED);
}

TEST_F(RemoteModelTest, PeerSystemsOncePerNodeWWN)
{
    auto peers = [&](const Array<CIMParamValue>& in) {
        const std::string result = outcome("GetPeerSystems", in);
        return result + " " + testing::PrintToString(names("Systems"));
    };
    const std::string all8 = testing::PrintToString(
        std::vector<std::string>{PEER1_WWN, "2FF70002AC00000C", "2FF70002AC00000D", "2FF70002AC00000E",
            "2FF70002AC00000F", "2FF70002AC000010", "2FF70002AC000011", "2FF70002AC000013"});
    EXPECT_EQ(peers(args({{"Options", u16(0)}})), "returned 0 " + all8);
    EXPECT_EQ(peers(args({{"Options", u16(2)}})), "returned 0 { \"" + std::string(PEER1_WWN) + "\" }");
    EXPECT_EQ(peers(args({{"Options", u16(3)}})), "returned 0 {}");
    EXPECT_EQ(peers(args({{"Options", CIMValue()}})), "returned 0 " + all8);
    EXPECT_EQ(text(outPaths("Systems")[0].getHost()), "peer1");
    EXPECT_EQ(outcome("GetPeerSystems", Array<CIMParamValue>()), "thrown 5: Invalid number of parameters");
    zdasim_fault_add("api_getRCopy", 1, API_E_INVALID, "broken");
    EXPECT_EQ(peers(args({{"Options", u16(0)}})), "returned 0 {}");
}

TEST_F(RemoteModelTest, ServiceAccessPointsOfOnePeerSystem)
{
    auto accessPoints = [&](const CIMObjectPath& system) {
        const std::string result = outcome("GetServiceAccessPoints", args({{"System", CIMValue(system)}}));
        return result + " " + testing::PrintToString(names("ServiceAccessPoints"));
    };
    EXPECT_EQ(
        accessPoints(peer(PEER1_WWN, "peer1")), "returned 0 { \"tReady\", \"tSyncOnly\", \"tAsyncOnly\" }");
    // Known by its computed WWN only.
    EXPECT_EQ(accessPoints(peer(PEER9_WWN)), "returned 0 { \"tComputed\" }");
    // Not ready; not usable; this array itself.
    EXPECT_EQ(accessPoints(peer("2FF70002AC00000C")), "returned 0 {}");
    EXPECT_EQ(accessPoints(peer("2FF70002AC000013")), "returned 0 {}");
    EXPECT_EQ(accessPoints(ZDA_StorageSystemProvider::buildObjectPath(HOST, SYSTEM_NAME)), "returned 0 {}");
    accessPoints(peer(PEER9_WWN));
    EXPECT_TRUE(ZDA_Common::matchObjectPath(outPaths("ServiceAccessPoints")[0], sap("tComputed")));

    EXPECT_EQ(outcome("GetServiceAccessPoints", args({{"System", CIMValue(volume("rv1"))}})),
        "thrown 5: System parameter contains invalid object path");
    EXPECT_EQ(outcome("GetServiceAccessPoints", args({{"Other", u16(1)}})),
        "thrown 5: System parameter contains invalid object path");
    EXPECT_EQ(
        outcome("GetServiceAccessPoints", Array<CIMParamValue>()), "thrown 5: Invalid number of parameters");
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(accessPoints(peer(PEER1_WWN)), "thrown 4: Problem getting rcopy information {}");
}

TEST_F(RemoteModelTest, DeleteGroupRemovesARemoteCopyGroup)
{
    auto deleteGroup = [&](const char* group, Boolean removeElements) {
        return outcome("DeleteGroup",
            args({{"ReplicationGroup", CIMValue(rcopyGroup(group))},
                {"RemoveElements", CIMValue(removeElements)}}));
    };
    EXPECT_EQ(deleteGroup("gNew", false), "thrown 6: Cannot remove Group because it is not empty");
    EXPECT_EQ(deleteGroup("gEmpty", false), "returned 0");
    EXPECT_EQ(deleteGroup("gNew", true), "returned 0");
    // The far array's volumes go with the group; the local ones stay.
    const auto deletions = zda_test::journalOf("api_deleteRCopyGroup");
    ASSERT_FALSE(deletions.empty());
    EXPECT_NE(deletions.back().find("name=\"gNew\" options=0 removevv_flag=1"), std::string::npos)
        << deletions.back();
    EXPECT_FALSE(volume("rv4").getClassName().isNull());
    EXPECT_EQ(deleteGroup("gNew", true), "thrown 5: Cannot find the specified replication group");
    EXPECT_EQ(keysOf(RC_GROUP, "ElementName"),
        (std::vector<std::string>{
            "gSync", "gByModeSync", "gByModePeriodic", "gNoDomain", "gTwo", "gUnknown"}));
}

}  // namespace
