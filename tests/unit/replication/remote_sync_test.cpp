// The state of remote copies over the remote copy state test array: volume
// pairs (one group per way a volume's state shows), group pairs of both
// kinds, and the service's relationship listings.
#include "replication_fixture.h"

#include <map>

#include "RemoteCopyTestArray.h"
#include "ZDA_RemoteGroupSynchronizedProvider.h"

using namespace zda_replication_test;

namespace
{

const char VOLUME_SYNC[] = "ZDA_RemoteStorageSynchronized";
const char GROUP_SYNC[] = "ZDA_RemoteGroupSynchronized";
const char VOLUME[] = "ZDA_StorageVolume";
const char ENTITY[] = "ZDA_ReplicationEntity";
const char RC_GROUP[] = "ZDA_RemoteReplicationGroup";

class RemoteSyncTest : public ReplicationTest
{
protected:
    void SetUp() override
    {
        ReplicationTest::SetUp();
        loadArray(zda_test::remoteCopyStateTestArray());
    }
    void usePolicy(Uint32 flags)
    {
        zdasim_system_set_policy(flags);
        ZDA_InternalCacheService::destroy();
    }

    // The local volume's name at one end of a volume pair ("" for a far end).
    std::string localName(const CIMObjectPath& end)
    {
        const bool local = end.getClassName().equal(VOLUME) &&
            ZDA_Common::getStringProperty(end, "SystemName") == SYSTEM_NAME;
        return local ? label(end) : "";
    }
    // Every volume pair by its local volume's name.
    std::map<std::string, CIMInstance> volumePairs()
    {
        std::map<std::string, CIMInstance> out;
        const Array<CIMInstance> pairs = instancesOf(VOLUME_SYNC);
        for (Uint32 i = 0; i < pairs.size(); i++)
        {
            const std::string source = localName(endOf(pairs[i].getPath(), "SystemElement"));
            out[source.empty() ? localName(endOf(pairs[i].getPath(), "SyncedElement")) : source] = pairs[i];
        }
        return out;
    }
    // Every group pair by its RelationshipName.
    std::map<std::string, CIMInstance> groupPairs()
    {
        std::map<std::string, CIMInstance> out;
        const Array<CIMInstance> pairs = instancesOf(GROUP_SYNC);
        for (Uint32 i = 0; i < pairs.size(); i++)
            out[text(get<String>(pairs[i], "RelationshipName"))] = pairs[i];
        return out;
    }
    static std::string classOf(const CIMObjectPath& path) { return text(path.getClassName().getString()); }
};

// ---- the copy state of a volume ------------------------------------------------------

TEST_F(RemoteSyncTest, EachVolumeStatusMapsToItsCopyState)
{
    const struct
    {
        const char* volume;
        const char* shows;
        Uint16 copyState;
        Uint16 syncState;
        Uint16 progressStatus;
    } rows[] = {{"cv01", "new, group target new", 7, 4, 18},
        {"cv02", "remote, group target stopped", 7, 4, 18},
        {"cv03", "new-sync, group target failsafe", 7, 4, 18},
        {"cv04", "new-no-sync, group target started", 3, 4, 18},
        {"cv05", "syncing against nature while recovering", 3, 10, 8},
        {"cv06", "remote syncing against nature, recovered", 3, 10, 8}, {"cv07", "syncing", 3, 5, 6},
        {"cv08", "synced, option 0x400000", 11, 4, 3},
        {"cv09", "synced, started, restoring against nature", 4, 6, 12}, {"cv10", "synced, started", 4, 6, 2},
        {"cv11", "synced, stopped, failing over", 10, 12, 11},
        {"cv12", "synced, stopped, failed over", 10, 12, 2},
        {"cv13", "synced, stopped, target failed", 5, 12, 2}, {"cv14", "synced, stopped", 7, 14, 18},
        {"cv15", "unsynchronized", 5, 12, 2}, {"cv16", "checking", 5, 12, 2}, {"cv17", "stale", 13, 12, 2},
        {"cv18", "stopped, target failed", 5, 12, 2}, {"cv19", "stopped, target not failed", 7, 14, 18},
        {"cv20", "repairing", 15, 0, 15}, {"cv21", "failsafe", 15, 0, 15}};
    auto pairs = volumePairs();
    for (const auto& row : rows)
    {
        SCOPED_TRACE(std::string(row.volume) + " (" + row.shows + ")");
        ASSERT_EQ(pairs.count(row.volume), 1u);
        const CIMInstance& pair = pairs[row.volume];
        EXPECT_EQ(get<Uint16>(pair, "CopyState"), row.copyState);
        EXPECT_EQ(get<Uint16>(pair, "SyncState"), row.syncState);
        EXPECT_EQ(get<Uint16>(pair, "ProgressStatus"), row.progressStatus);
        EXPECT_EQ(get<Uint16>(pair, "RequestedCopyState"), row.copyState == 4 ? 15 : 4);
        EXPECT_EQ(get<Uint16>(pair, "SyncType"), 6);
        EXPECT_EQ(get<Uint16>(pair, "ReplicaType"), 2);
    }
}

// ---- the rest of a volume pair ---------------------------------------------------------

TEST_F(RemoteSyncTest, ModeBlockPolicyAndProgress)
{
    auto pairs = volumePairs();
    struct Case
    {
        const char* volume;
        const char* caption;  // null: no mode block
        Uint16 mode;
        bool whenSynced;
        bool whenSynchronized;
    };
    const Case cases[] = {
        {"cv14", "Synchronous Remote Storage Association", 2, true, false},  // stopped
        {"rv1", "Synchronous Remote Storage Association", 2, false, false},  // started
        {"cv10", "Periodic Remote Storage Association", 3, true, true},
        {"cv17", "Periodic Remote Storage Association", 3, false, false},  // stale, never synced
        {"cv15", nullptr, 0, false, false},                                // async
        {"cv16", nullptr, 0, false, false},                                // semi-synchronous
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.volume);
        const CIMInstance& pair = pairs[c.volume];
        if (!c.caption)
        {
            EXPECT_TRUE(valueOf(pair, "Caption").isNull());
            EXPECT_TRUE(valueOf(pair, "Mode").isNull());
            EXPECT_TRUE(valueOf(pair, "WhenSynced").isNull());
            continue;
        }
        EXPECT_EQ(text(get<String>(pair, "Caption")), c.caption);
        EXPECT_EQ(get<Uint16>(pair, "Mode"), c.mode);
        EXPECT_EQ(get<Uint16>(pair, "CopyType"), c.mode == 2 ? 3 : 2);
        EXPECT_EQ(get<Uint32>(pair, "DetailedCopyType"), c.mode == 2 ? 2u : 4u);
        EXPECT_EQ(get<Uint16>(pair, "CopyMethodology"), c.mode == 2 ? 5 : 8);
        EXPECT_EQ(!valueOf(pair, "WhenSynced").isNull(), c.whenSynced);
        EXPECT_EQ(!valueOf(pair, "WhenSynchronized").isNull(), c.whenSynchronized);
        if (c.mode == 3)
        {
            EXPECT_EQ(get<CIMDateTime>(pair, "SyncInterval"), CIMDateTime(Uint64(300) * 1000000, true));
        }
    }
    EXPECT_EQ(
        get<CIMDateTime>(pairs["cv10"], "WhenSynced"), get<CIMDateTime>(pairs["cv10"], "WhenSynchronized"));
    EXPECT_EQ(get<Uint16>(pairs["cv10"], "PercentSynced"), 100);

    // The policy bits of the group target with 2 always on.
    EXPECT_EQ(get<Uint32>(pairs["cv08"], "SyncPolicy"), 7u);
    EXPECT_EQ(get<Uint32>(pairs["cv10"], "SyncPolicy"), 2u);
    // Progress of a resync, from the sending side only.
    EXPECT_EQ(get<Uint16>(pairs["cv07"], "PercentSynced"), 25);
    EXPECT_EQ(get<Uint16>(pairs["cv24"], "SyncState"), 5);
    EXPECT_TRUE(valueOf(pairs["cv24"], "PercentSynced").isNull());
    // Kept up while remote copy runs and the group target is neither new nor stopped.
    EXPECT_TRUE(get<Boolean>(pairs["cv10"], "SyncMaintained"));
    EXPECT_FALSE(get<Boolean>(pairs["cv14"], "SyncMaintained"));
    EXPECT_FALSE(get<Boolean>(pairs["cv01"], "SyncMaintained"));
    EXPECT_TRUE(get<Boolean>(pairs["cv12"], "RoleReversed"));
    EXPECT_FALSE(get<Boolean>(pairs["cv10"], "RoleReversed"));
}

TEST_F(RemoteSyncTest, RemoteCopyOffOrInvalidIsNotMaintained)
{
    const std::string base = zda_test::remoteCopyStateTestArray();
    const std::string on = R"("mode": "on")";
    for (const std::string& system : {std::string(R"("mode": "none")"), std::string(R"("mode": 51)"),
             std::string(R"("mode": "on", "status": 16)")})
    {
        SCOPED_TRACE(system);
        std::string description = base;
        description.replace(description.find(on), on.size(), system);
        loadArray(description);
        EXPECT_FALSE(get<Boolean>(volumePairs()["cv10"], "SyncMaintained"));
    }
}

TEST_F(RemoteSyncTest, DirectionAndFarEndUnderEitherPolicy)
{
    struct Case
    {
        Uint32 policy;
        const char* volume;
        bool localIsSource;
        const char* farClass;
        Uint16 undiscovered;
    };
    const Case cases[] = {
        {0, "cv10", true, ENTITY, 3},
        {0, "cv12", false, ENTITY, 2},  // by nature the far side is the source
        {0, "rv2", true, ENTITY, 3},    // option 0x400000 with a synchronous target
        {0, "rv7", true, ENTITY, 3},    // far WWN unknown: named by target and name
        {API_POLICY_NO_REPLICATION_ENTITY, "cv10", true, VOLUME, 3},
        {API_POLICY_NO_REPLICATION_ENTITY, "cv12", false, VOLUME, 2},
        {API_POLICY_NO_REPLICATION_ENTITY, "rv7", true, ENTITY, 3},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.volume) + (c.policy ? " under the policy" : ""));
        usePolicy(c.policy);
        const CIMInstance pair = volumePairs()[c.volume];
        const CIMObjectPath source = endOf(pair.getPath(), "SystemElement");
        const CIMObjectPath target = endOf(pair.getPath(), "SyncedElement");
        EXPECT_EQ(localName(c.localIsSource ? source : target), c.volume);
        EXPECT_EQ(classOf(c.localIsSource ? target : source), c.farClass);
        EXPECT_EQ(get<Uint16>(pair, "UndiscoveredElement"), c.undiscovered);
    }
    usePolicy(0);
    const CIMObjectPath unknown = endOf(volumePairs()["rv7"].getPath(), "SyncedElement");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(unknown, "InstanceID")), "KX_ORLA:VV:rv7:tUnknown");
}

TEST_F(RemoteSyncTest, VolumePairsByPathAndByEitherEnd)
{
    Array<CIMObjectPath> paths = namesOf(VOLUME_SYNC);
    // rv1..rv7 with 8 maps, cv01..cv24, and lv0..lv8.
    EXPECT_EQ(paths.size(), 8u + 24u + 9u);
    for (Uint32 i = 0; i < paths.size(); i++)
        EXPECT_TRUE(foundByPath(paths[i])) << text(paths[i].toString());

    const CIMObjectPath pair = volumePairs()["cv10"].getPath();
    const CIMObjectPath local = volume("cv10");
    const CIMObjectPath farEnd = endOf(pair, "SyncedElement");
    Array<CIMObjectPath> fromLocal = far(local, VOLUME_SYNC);
    ASSERT_EQ(fromLocal.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(fromLocal[0], farEnd));
    Array<CIMObjectPath> back = far(farEnd, VOLUME_SYNC);
    ASSERT_EQ(back.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(back[0], local));
    Array<CIMObjectPath> refs = refNames(local, VOLUME_SYNC, "SystemElement");
    ASSERT_EQ(refs.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(refs[0], pair));
    EXPECT_EQ(refNames(local, VOLUME_SYNC, "SyncedElement").size(), 0u);

    // Three keys are refused; a pair that is not there is not found.
    EXPECT_EQ(readError(withKey(pair, "Extra", "x")), CIM_ERR_INVALID_PARAMETER);
    CIMObjectPath swapped = pair;
    Array<CIMKeyBinding> swappedKeys;
    swappedKeys.append(CIMKeyBinding("SystemElement", farEnd));
    swappedKeys.append(CIMKeyBinding("SyncedElement", local));
    swapped.setKeyBindings(swappedKeys);
    EXPECT_EQ(readError(swapped), CIM_ERR_NOT_FOUND);
}

TEST_F(RemoteSyncTest, RequestsThatCannotMatchAnswerNothing)
{
    const CIMObjectPath local = volume("cv10");
    struct Case
    {
        const char* what;
        const char* resultClass;
        const char* role;
        const char* resultRole;
        const char* answer;
    };
    const Case cases[] = {
        // Refused by the walk: an empty answer that completes.
        {"role equal to result role", nullptr, "SystemElement", "systemelement", "processing complete"},
        // Refused before the walk: nothing at all.
        {"unknown role", nullptr, "Owner", "", ""},
        {"the way back from a volume", "CIM_StorageVolume", "", "", ""},
        {"a class no end has", "CIM_ReplicationGroup", "", "", ""},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        const CIMName resultClass = c.resultClass ? CIMName(c.resultClass) : CIMName();
        EXPECT_EQ(directNames(VOLUME_SYNC, local, false, resultClass, c.role, c.resultRole), c.answer);
    }
}

// ---- group pairs --------------------------------------------------------------------------

TEST_F(RemoteSyncTest, GroupPairsFoldTheirVolumes)
{
    auto pairs = groupPairs();
    struct Case
    {
        const char* relationship;
        Uint16 copyState;
        Uint16 progressStatus;
        Uint16 percentSynced;
    };
    const Case cases[] = {
        {"gNew->gNew.r", 11, 19, 0},         // never started, with volumes
        {"gEmpty->gEmpty.r", 2, 5, 0},       // never started, without
        {"csMixed->csMixed.r", 14, 14, 50},  // one synced, one new
        {"csStoppedSplit->csStoppedSplit.r", 7, 18, 0},
        {"gSync->gSync.r", 4, 2, 100},
        // Started without volumes; the local side is no source by mode.
        {"gByModePeriodic.r->gByModePeriodic", 4, 2, 0},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.relationship);
        ASSERT_EQ(pairs.count(c.relationship), 1u);
        const CIMInstance& pair = pairs[c.relationship];
        EXPECT_EQ(get<Uint16>(pair, "CopyState"), c.copyState);
        EXPECT_EQ(get<Uint16>(pair, "ProgressStatus"), c.progressStatus);
        EXPECT_EQ(get<Uint16>(pair, "PercentSynced"), c.percentSynced);
        EXPECT_EQ(get<Uint16>(pair, "SyncType"), 6);
        EXPECT_TRUE(valueOf(pair, "SyncState").isNull());
        EXPECT_TRUE(get<Boolean>(pair, "ConsistencyEnabled"));
    }
    const CIMInstance& reversed = pairs["gByModePeriodic.r->gByModePeriodic"];
    EXPECT_EQ(classOf(endOf(reversed.getPath(), "SystemElement")), ENTITY);
    EXPECT_EQ(classOf(endOf(reversed.getPath(), "SyncedElement")), RC_GROUP);
    EXPECT_EQ(text(get<String>(reversed, "Caption")), "Periodic Remote Replication Group Association");
    EXPECT_EQ(get<Uint32>(reversed, "SyncPolicy"), 2u);

    // Under the policy the far group is a remote replication group on its host.
    usePolicy(API_POLICY_NO_REPLICATION_ENTITY);
    const CIMObjectPath far = endOf(groupPairs()["gSync->gSync.r"].getPath(), "SyncedElement");
    EXPECT_EQ(classOf(far), RC_GROUP);
}

TEST_F(RemoteSyncTest, SnapshotSetsOfAGroup)
{
    auto pairs = groupPairs();
    // One snapshot of a group of two volumes is no image of the group.
    ASSERT_EQ(pairs.count("gTwo->gTwo_part"), 1u);
    EXPECT_EQ(get<Uint16>(pairs["gTwo->gTwo_part"], "CopyState"), 13);
    EXPECT_EQ(get<Uint16>(pairs["gTwo->gTwo_part"], "ProgressStatus"), 15);
    EXPECT_EQ(get<Uint16>(pairs["gTwo->gTwo_part"], "SyncType"), 7);
    EXPECT_EQ(classOf(endOf(pairs["gTwo->gTwo_part"].getPath(), "SyncedElement")), "ZDA_ReplicationGroup");

    // Nine snapshot names join past 255 characters: two volume queries for
    // the pair, and every member found.
    ASSERT_EQ(pairs.count("gLong->gLong_snaps"), 1u);
    zdasim_journal_clear();
    const CIMInstance whole = getInstance(pairs["gLong->gLong_snaps"].getPath());
    EXPECT_EQ(zdasim_journal_count_of("api_getVVs_chunk"), 2u);
    EXPECT_NE(get<Uint16>(whole, "CopyState"), 13);
    EXPECT_EQ(text(get<String>(whole, "RelationshipName")), "gLong->gLong_snaps");
}

TEST_F(RemoteSyncTest, GroupNavigationBothWays)
{
    const CIMObjectPath gTwo = ZDA_RemoteReplicationGroupProvider::buildObjectPath(HOST, "gTwo");
    auto related = [&](const CIMObjectPath& from, const char* resultClass) {
        std::vector<std::string> out;
        Array<CIMObjectPath> found = far(from, GROUP_SYNC, resultClass ? CIMName(resultClass) : CIMName());
        for (Uint32 i = 0; i < found.size(); i++)
            out.push_back(text(ZDA_Common::getStringProperty(found[i], "InstanceID")));
        return out;
    };
    EXPECT_EQ(related(gTwo, nullptr),
        (std::vector<std::string>{
            "KX_ORLA:RG:gTwo.r:peer1", "KX_ORLA:RG:gTwo.r:peer9", "KX_ORLA:gTwo_part"}));
    // A result class only far groups have leaves the snapshot sets out.
    EXPECT_EQ(related(gTwo, "CIM_ManagedSystemElement"),
        (std::vector<std::string>{"KX_ORLA:RG:gTwo.r:peer1", "KX_ORLA:RG:gTwo.r:peer9"}));
    EXPECT_EQ(related(ZDA_ReplicationGroupProvider::buildObjectPath(HOST, "gTwo_part"), nullptr),
        std::vector<std::string>{"KX_ORLA:gTwo"});
    EXPECT_EQ(refNames(gTwo, GROUP_SYNC).size(), 3u);
    EXPECT_EQ(refNames(gTwo, GROUP_SYNC, "SyncedElement").size(), 0u);

    Array<CIMObjectPath> paths = namesOf(GROUP_SYNC);
    for (Uint32 i = 0; i < paths.size(); i++)
        EXPECT_TRUE(foundByPath(paths[i])) << text(paths[i].toString());
    // The paths of one group's mirror pairs, as the group replica method takes them.
    Array<CIMObjectPath> mirrors = ZDA_RemoteGroupSynchronizedProvider::createObjectPaths(
        "gTwo", HOST, false);
    ASSERT_EQ(mirrors.size(), 2u);
    for (Uint32 m = 0; m < mirrors.size(); m++)
    {
        int served = 0;
        for (Uint32 i = 0; i < paths.size(); i++)
            served += ZDA_Common::matchObjectPath(mirrors[m], paths[i]) ? 1 : 0;
        EXPECT_EQ(served, 1) << text(mirrors[m].toString());
    }
}

TEST_F(RemoteSyncTest, ArrayFailuresGiveEmptyAnswers)
{
    // The group walk has begun its answer: it ends without complete.
    for (const char* failing : {"api_getRCopy", ""})
    {
        EXPECT_EQ(enumerateFailing(VOLUME_SYNC, failing), "processing complete") << failing;
        EXPECT_EQ(enumerateFailing(GROUP_SYNC, failing), "processing") << failing;
    }
    const CIMObjectPath pair = volumePairs()["cv10"].getPath();
    zdasim_fault_add("api_getRCopy", 1, API_E_INVALID, "broken");
    EXPECT_EQ(readError(pair), CIM_ERR_NOT_FOUND);
    zdasim_faults_clear();

    // Without faults the walk completes, never delivering under the semaphore.
    const std::string whole = enumerateFailing(GROUP_SYNC, nullptr, true);
    EXPECT_EQ(whole.rfind("processing deliver(instance) ", 0), 0u) << whole;
    EXPECT_EQ(whole.substr(whole.size() - 9), " complete") << whole;
}

// ---- relationships through the service ----------------------------------------------------

TEST_F(RemoteSyncTest, RelationshipsFilteredByTheirParameters)
{
    const size_t volumes = instancesOf(VOLUME_SYNC).size();
    const size_t groups = instancesOf(GROUP_SYNC).size();
    const size_t local = instancesOf("ZDA_StorageSynchronized").size();
    // The outcome, and for a result how many synchronizations it lists.
    auto listed = [&](const char* method, const Array<CIMParamValue>& in) {
        const std::string result = outcome(method, in);
        const CIMValue value = outParam(out, "Synchronizations");
        return result.rfind("returned", 0)
            ? result
            : result + " with " + std::to_string(value.isNull() ? 0 : value.getArraySize());
    };
    auto with = [](size_t count) { return "returned 0 with " + std::to_string(count); };
    const std::pair<Array<CIMParamValue>, std::string> rows[] = {
        {args({}), with(volumes + groups + local)},
        {args({{"Type", u16(3)}}), with(groups)},
        {args({{"Type", u16(2)}}), with(volumes + local)},
        {args({{"Locality", u16(3)}}), with(volumes + groups)},
        {args({{"Locality", u16(2)}}), with(local)},
        {args({{"Type", u16(3)}, {"Locality", u16(2)}}), with(0)},
        {args({{"Type", u16(4)}}), with(0)},
        {args({{"Locality", u16(1)}, {"CopyState", u16(1)}}), with(0)},
        {args({{"CopyState", u16(1)}}), "thrown 5: Invalid copyState"},
        {args({{"CopyState", u16(16)}}), "thrown 5: Invalid copyState"},
        {args({{"CopyState", u16(15)}, {"Type", CIMValue()}}), with(4)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(listed("GetReplicationRelationships", row.first), row.second);

    // The instances method gives the instances, each meeting the filters.
    EXPECT_EQ(
        listed("GetReplicationRelationshipInstances", args({{"Locality", u16(3)}, {"CopyState", u16(15)}})),
        with(4));
    Array<CIMObject> objects;
    outParam(out, "Synchronizations").get(objects);
    for (Uint32 i = 0; i < objects.size(); i++)
        EXPECT_EQ(get<Uint16>(CIMInstance(objects[i]), "CopyState"), 15);
}

}  // namespace
