// The copy operations of the storage configuration service as the
// replication module calls them, seen through the in-process host: jobs,
// synchronizations and volumes that follow the array as its clock steps.
#include "copysvcs_fixture.h"

#include <set>
#include <tuple>

#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_StorageConfigurationServiceProvider.h"
#include "ZDA_StorageSynchronizedProvider.h"
#include "ZDA_StorageVolumeProvider.h"

using namespace zda_copysvcs_test;

namespace
{

using Service = ZDA_StorageConfigurationServiceProvider;

class CopyOperationsTest : public CopyServicesTest
{
protected:
    api_Status_t clone(const std::string& source, Uint16 copyType, const String& name,
        const CIMObjectPath& target = {}, const CIMObjectPath& pool = {}, const CIMInstance& goal = {})
    {
        jobs.clear();
        syncs.clear();
        api_Status_t st = Service::createPhysicalCopy(&event, cimom, admin(), copyType, volume(source),
            target, pool, goal, jobs, syncs, systemName, host, name);
        expectLedgersClean("createPhysicalCopy");
        return st;
    }
    // The list form, every entry checked before the first copy starts.
    api_Status_t cloneList(const Array<CIMObjectPath>& sources, const Array<String>& names)
    {
        jobs.clear();
        syncs.clear();
        return Service::createPhysicalCopy(&event, cimom, admin(), Service::COPY_SYNCHRONIZED, sources,
            Array<CIMObjectPath>(), CIMObjectPath(), CIMInstance(), jobs, syncs, systemName, host, names,
            true);
    }
    // The members of one set into the set `target`.
    api_Status_t cloneSet(const char* source, const char* target, const String& name)
    {
        jobs.clear();
        syncs.clear();
        auto set = [](const char* id) {
            return CIMObjectPath(String("ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:") + id + "\"");
        };
        return Service::createPhysicalCopy(&event, cimom, admin(), Service::COPY_INACTIVE, set(source),
            set(target), CIMObjectPath(), CIMInstance(), jobs, syncs, systemName, host, name);
    }
    // Snapshots of a volume or of a remote copy group's local volumes; their
    // paths are appended to `targets`.
    api_Status_t snapshot(const CIMObjectPath& source, const String& name, const CIMObjectPath& pool = {},
        const CIMInstance& goal = {})
    {
        api_Status_t st = Service::createVirtualCopy(
            &event, cimom, admin(), targets, source, name, pool, goal, systemName, host);
        expectLedgersClean("createVirtualCopy");
        return st;
    }
    // One synchronization or a list of them.
    template <class Syncs>
    api_Status_t modify(Uint16 op, const Syncs& sync)
    {
        jobs.clear();
        api_Status_t st = Service::modifySynchronization(&event, cimom, admin(), jobs, op, sync, host);
        expectLedgersClean("modifySynchronization");
        return st;
    }
    // The synchronization between two volumes as the module builds its path.
    CIMObjectPath syncOf(const std::string& source, const std::string& copy)
    {
        return ZDA_StorageSynchronizedProvider::buildObjectPath(volume(source), volume(copy), host);
    }
    std::vector<int> states(const CIMObjectPath& sync)
    {
        CIMInstance s = getInstance(sync);
        return {get<Uint16>(s, "CopyState"), get<Uint16>(s, "SyncState"), get<Uint16>(s, "ProgressStatus")};
    }
    static std::string why(const api_Status_t& st)
    {
        char buffer[API_ERRTEXT_LEN];
        return api_getErrorTextNoNL(buffer, sizeof buffer, &st);
    }

    Array<CIMObjectPath> jobs;
    Array<CIMObjectPath> syncs;
    Array<CIMParamValue> targets;
};

TEST_F(CopyOperationsTest, TheServiceHasOneInstanceOnThisSystem)
{
    Array<CIMObjectPath> names = namesOf("ZDA_StorageConfigurationService");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(names[0], Service::buildObjectPath(SYSTEM_NAME, "h")));
    CIMInstance service = getInstance(names[0]);
    EXPECT_EQ(text(get<String>(service, "SystemName")), SYSTEM_NAME);
    EXPECT_EQ(cimErrorOf([&] { getInstance(Service::buildObjectPath("other", HOST)); }), CIM_ERR_NOT_FOUND);
}

TEST_F(CopyOperationsTest, ACloneShowsAsAJobAndASynchronizationThatFollowTheCopy)
{
    ASSERT_EQ(clone("vol1", Service::COPY_SYNCHRONIZED, "vol1.full").code, 0);
    ASSERT_EQ(jobs.size(), 1u);
    ASSERT_EQ(syncs.size(), 1u);
    // The module reads the new volume's path out of the SyncedElement key.
    EXPECT_TRUE(ZDA_Common::matchObjectPath(endOf(syncs[0], "SyncedElement"), volume("vol1.full")));
    EXPECT_TRUE(ZDA_Common::matchObjectPath(endOf(syncs[0], "SystemElement"), volume("vol1")));
    EXPECT_EQ(get<Uint16>(getInstance(jobs[0]), "JobState"), 4);  // a job the job provider serves
    CIMInstance copying = getInstance(syncs[0]);
    EXPECT_EQ(states(syncs[0]), std::vector<int>({3, 15, 6}));
    EXPECT_EQ(get<Uint16>(copying, "SyncType"), 8);
    EXPECT_EQ(get<Uint16>(copying, "Mode"), 2);
    EXPECT_EQ(get<Uint16>(copying, "ReplicaType"), 2);

    zdasim_clock_advance(20);  // 10240 MiB: 40 s in all
    EXPECT_EQ(get<Uint16>(getInstance(syncs[0]), "PercentSynced"), 50);
    zdasim_clock_advance(20);
    EXPECT_EQ(states(syncs[0]), std::vector<int>({4, 6, 2}));
}

TEST_F(CopyOperationsTest, CopyTypesTargetsAndPoolsOfASingleClone)
{
    ASSERT_EQ(clone("vol3", Service::COPY_INACTIVE, "").code, 0);
    const CIMObjectPath inactive = syncs[0];
    zdasim_clock_advance(20);
    EXPECT_EQ(states(inactive), std::vector<int>({8, 11, 3}));
    EXPECT_EQ(get<Uint16>(getInstance(inactive), "Mode"), 3);
    // The generated name starts with the source's.
    EXPECT_EQ(
        text(get<String>(getInstance(endOf(inactive, "SyncedElement")), "ElementName")).rfind("vol3.", 0),
        0u);

    // A copy into the CPG a pool names.
    CIMObjectPath pool("ZDA_DynamicStoragePool.InstanceID=\"KX_ORLA:CPG:FC_r1\"");
    ASSERT_EQ(clone("vol3", Service::COPY_SYNCHRONIZED, "vol3.r1", CIMObjectPath(), pool).code, 0);
    zdasim_clock_advance(20);
    EXPECT_EQ(text(get<String>(getInstance(volume("vol3.r1")), "ElementName")), "vol3.r1");

    // Copy type, source, target ("" for a new volume) and the array's code.
    const std::tuple<Uint16, const char*, const char*, int> refusals[] = {
        {3, "vol3", "", API_E_INVALID},                              // not a copy type of ours
        {Service::COPY_SYNCHRONIZED, "vol3", "vol1", API_E_IN_USE},  // vol1 has snapshots
        {Service::COPY_SYNCHRONIZED, "vol3", "admvv", API_E_ACCESS},
        {Service::COPY_SYNCHRONIZED, "", "", API_E_INVALID},  // no source
    };
    for (const auto& [copyType, source, target, code] : refusals)
    {
        const api_Status_t st = clone(source, copyType, "x", *target ? volume(target) : CIMObjectPath());
        EXPECT_EQ(st.code, code) << source << "->" << target << ": " << why(st);
        EXPECT_FALSE(why(st).empty());
        EXPECT_EQ(jobs.size() + syncs.size(), 0u);
    }
    EXPECT_EQ(clone("vol3", Service::COPY_SYNCHRONIZED, "y", CIMObjectPath(),
                  CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"elsewhere\""))
                  .code,
        API_E_INVALID);
}

TEST_F(CopyOperationsTest, ListAndGroupForms)
{
    Array<CIMObjectPath> sources;
    sources.append(volume("vol3"));
    sources.append(volume("vol1"));
    Array<String> names;
    names.append("");
    names.append("vol1.listed");
    ASSERT_EQ(cloneList(sources, names).code, 0);
    EXPECT_EQ(jobs.size(), 2u);
    ASSERT_EQ(syncs.size(), 2u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(endOf(syncs[1], "SyncedElement"), volume("vol1.listed")));

    // Checked first: a source that does not exist starts none of them.
    const size_t before = volumePaths().size();
    sources.append(
        ZDA_StorageVolumeProvider::createObjectPath("60002D1A00000000FFFFFFFFFFFFFFFF", systemName, host));
    EXPECT_EQ(cloneList(sources, Array<String>()).code, API_E_NOT_FOUND);
    EXPECT_EQ(volumePaths().size(), before);
    EXPECT_EQ(jobs.size(), 0u);
    // Empty lists do nothing.
    EXPECT_EQ(cloneList(Array<CIMObjectPath>(), Array<String>()).code, 0);
    EXPECT_EQ(jobs.size() + syncs.size(), 0u);

    // A set into an empty set: new volumes that join the target set.
    ASSERT_EQ(cloneSet("set1", "set_empty", "rel").code, 0);
    EXPECT_EQ(jobs.size(), 2u);
    ASSERT_EQ(syncs.size(), 2u);
    api_sets_t sets{};
    ASSERT_EQ(cim_sem_wait(), 0);
    api_Status_t st = api_getVVSets("set_empty", nullptr, 0, &sets);
    cim_sem_post();
    ASSERT_EQ(st.code, 0);
    ASSERT_EQ(sets.count, 1u);
    EXPECT_EQ(sets.sets[0].memberCount, 2);
    api_freeSets(&sets);
    // A target set of another size is refused.
    EXPECT_EQ(cloneSet("set1", "set_one", "").code, API_E_INVALID);
}

TEST_F(CopyOperationsTest, ModifyingAClone)
{
    ASSERT_EQ(clone("vol1", Service::COPY_SYNCHRONIZED, "vol1.m").code, 0);
    const CIMObjectPath sync = syncs[0];
    zdasim_clock_advance(40);
    EXPECT_EQ(modify(Service::OP_STOP_COPY, sync).code, API_E_INVALID);  // nothing runs

    ASSERT_EQ(modify(Service::OP_RESYNC, sync).code, 0);
    ASSERT_EQ(jobs.size(), 1u);
    EXPECT_EQ(get<Uint16>(getInstance(jobs[0]), "JobState"), 4);
    zdasim_clock_advance(10);
    ASSERT_EQ(modify(Service::OP_STOP_COPY, sync).code, 0);
    EXPECT_EQ(jobs.size(), 0u);
    EXPECT_EQ(states(sync), std::vector<int>({6, 13, 18}));
    EXPECT_EQ(modify(Service::OP_RESTORE, sync).code, API_E_INVALID);  // incomplete copy

    ASSERT_EQ(modify(Service::OP_START_COPY, sync).code, 0);
    EXPECT_EQ(jobs.size(), 1u);
    zdasim_clock_advance(40);
    ASSERT_EQ(modify(Service::OP_RESTORE, sync).code, 0);
    EXPECT_EQ(states(sync), std::vector<int>({3, 10, 8}));
    // The source is being written: its other copies are in use.
    EXPECT_EQ(modify(Service::OP_RESYNC, syncOf("vol1", "vol1.rw")).code, API_E_IN_USE);
    zdasim_clock_advance(40);
    EXPECT_EQ(states(sync), std::vector<int>({4, 6, 2}));

    for (Uint16 op : {0, 3, 7, 14})
    {
        const api_Status_t st = modify(op, sync);
        EXPECT_EQ(st.code, API_E_INVALID) << op;
        EXPECT_NE(why(st).find("not supported"), std::string::npos) << op;
    }

    ASSERT_EQ(modify(Service::OP_DETACH, sync).code, 0);
    EXPECT_EQ(cimErrorOf([&] { getInstance(sync); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(get<Uint16>(getInstance(volume("vol1.m")), "VolumeType"), 1);
    EXPECT_EQ(modify(Service::OP_RESYNC, sync).code, API_E_NOT_FOUND);
}

TEST_F(CopyOperationsTest, ModifyingSnapshotsAndTheArrayForm)
{
    Array<CIMObjectPath> both;
    both.append(syncOf("vol1", "vol1.rw"));
    both.append(syncOf("vol1", "vol1.ro"));
    ASSERT_EQ(modify(Service::OP_RESYNC, both).code, 0);
    EXPECT_EQ(jobs.size(), 0u);  // snapshots take the new point in time at once

    EXPECT_EQ(modify(Service::OP_START_COPY, both[0]).code, API_E_INVALID);
    ASSERT_EQ(modify(Service::OP_RESTORE, both[1]).code, 0);
    EXPECT_EQ(jobs.size(), 1u);
    EXPECT_EQ(states(both[1]), std::vector<int>({3, 10, 8}));
    // The list fails with the first failure; what went before stays done:
    // the first snapshot is detached (gone), the one being restored is in use.
    EXPECT_EQ(modify(Service::OP_DETACH, both).code, API_E_IN_USE);
    EXPECT_TRUE(volume("vol1.rw").getClassName().isNull());
    EXPECT_EQ(modify(Service::OP_STOP_COPY, both[1]).code, 0);
    EXPECT_EQ(states(both[1]), std::vector<int>({4, 6, 2}));
    ASSERT_EQ(modify(Service::OP_DETACH, both[1]).code, 0);
    EXPECT_TRUE(volume("vol1.ro").getClassName().isNull());
}

TEST_F(CopyOperationsTest, VirtualCopiesAppendTheirTargetAndSnapshotSpaceIsAssigned)
{
    targets.append(CIMParamValue("Job", CIMValue(CIMObjectPath()), true));
    ASSERT_EQ(snapshot(volume("vol1"), "vol1.snap").code, 0);
    ASSERT_EQ(targets.size(), 2u);
    EXPECT_EQ(text(targets[1].getParameterName()), "TargetElement");
    CIMObjectPath target;
    targets[1].getValue().get(target);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(target, volume("vol1.snap")));
    CIMInstance sync = getInstance(syncOf("vol1", "vol1.snap"));
    EXPECT_EQ(get<Uint16>(sync, "SyncType"), 7);
    EXPECT_EQ(get<Uint16>(sync, "CopyState"), 4);

    // vol3 has no snapshot space: refused, unless a delta pool names some.
    EXPECT_NE(snapshot(volume("vol3"), "").code, 0);
    EXPECT_EQ(targets.size(), 2u);
    const CIMObjectPath delta("ZDA_DeltaReplicaStoragePool.InstanceID=\"KX_ORLA:SNAP:FC_r1\"");
    ASSERT_EQ(snapshot(volume("vol3"), "", delta).code, 0);
    EXPECT_EQ(targets.size(), 3u);

    Array<String> names;
    names.append("vol5");
    names.append("vol4");
    EXPECT_EQ(Service::assignSnapPoolToVolume(&event, names), 0);
    names.append("nothere");
    EXPECT_EQ(Service::assignSnapPoolToVolume(&event, names), API_E_NOT_FOUND);
    expectLedgersClean("assignSnapPoolToVolume");
}

TEST_F(CopyOperationsTest, ASettingIsTheGoalOfACopy)
{
    CIMInstance goal("ZDA_StorageSetting");
    goal.addProperty(CIMProperty("ElementName", CIMValue(String("r1copies"))));
    goal.addProperty(CIMProperty("UserDSPName", CIMValue(String("FC_r1"))));
    goal.addProperty(CIMProperty("SnapDSPName", CIMValue(String("FC_r1"))));
    const CIMInstance stored = getInstance(server().createInstance(admin(), ZDA_NS, goal));

    ASSERT_EQ(clone("vol3", Service::COPY_SYNCHRONIZED, "vol3.r1", {}, {}, stored).code, 0);
    // Its user space is in FC_r1: FC_r1's pool now has its space in use.
    const api_VVObj_t vv = vvRecordOf("vol3.r1");
    EXPECT_STREQ(vv.usrCpgName, "FC_r1");
    EXPECT_STREQ(vv.cpgName, "FC_r1");

    // A snapshot of vol3 (no snapshot space of its own) takes the goal's.
    ASSERT_EQ(snapshot(volume("vol3"), "vol3.snap", {}, stored).code, 0);
    EXPECT_EQ(targets.size(), 1u);
}

TEST_F(CopyOperationsTest, VirtualCopiesOfTheLocalSideOfARemoteCopyGroup)
{
    zdasim_reset_demo_array();
    ASSERT_EQ(
        snapshot(CIMObjectPath("ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_fin_sync\""), "relation")
            .code,
        0);
    ASSERT_GE(targets.size(), 1u);
    std::set<std::string> parents;
    for (Uint32 i = 0; i < targets.size(); i++)
    {
        EXPECT_EQ(text(targets[i].getParameterName()), "TargetElement");
        CIMObjectPath target;
        targets[i].getValue().get(target);
        const api_VVObj_t vv = vvRecordOf(
            nullptr, text(ZDA_Common::getStringProperty(target, "DeviceID")).c_str());
        EXPECT_EQ(vv.type, API_VV_TYPE_VIRTUAL_COPY);
        EXPECT_EQ(std::string(vv.name).rfind("relation.", 0), 0u);
        parents.insert(vv.copyOfName);
    }
    EXPECT_EQ(parents.size(), targets.size());  // one snapshot of each volume

    const CIMObjectPath unknown("ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:nothere\"");
    EXPECT_EQ(snapshot(unknown, "").code, API_E_NOT_FOUND);
}

}  // namespace
