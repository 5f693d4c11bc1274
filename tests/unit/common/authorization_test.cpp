// Method authorization: the right each request asks the array for (as the
// array's journal records it, byte for byte), the requests that have no
// right (code 3 without any array call), and refusals for a user without
// rights.
#include "common_sim_fixture.h"

#include <functional>

#include "ZDA_Authorization.h"

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

typedef std::function<int(const String& user, const String& addr)> AuthCall;

struct Case
{
    const char* what;
    AuthCall call;
    std::vector<std::string> keys;  // rights asked for, in order, for a user who has them all
    int code;                       // the result for that user
};

CIMParamValue u16(const char* name, Uint16 v)
{
    return CIMParamValue(name, CIMValue(v));
}
CIMParamValue nullU16(const char* name)
{
    return CIMParamValue(name, CIMValue(CIMTYPE_UINT16, false));
}
CIMParamValue ref(const char* name, const CIMObjectPath& p)
{
    return CIMParamValue(name, CIMValue(p));
}
CIMParamValue refs(const char* name, const std::vector<CIMObjectPath>& ps)
{
    Array<CIMObjectPath> a;
    for (const auto& p : ps)
        a.append(p);
    return CIMParamValue(name, CIMValue(a));
}

Array<CIMParamValue> params(std::initializer_list<CIMParamValue> list)
{
    Array<CIMParamValue> a;
    for (const auto& p : list)
        a.append(p);
    return a;
}

// A synchronization whose SyncedElement is the volume.
CIMObjectPath syncOf(const std::string& volumeName)
{
    Array<CIMKeyBinding> keys;
    keys.append(
        CIMKeyBinding("SyncedElement", volumePath(wwnOf(volumeName)).toString(), CIMKeyBinding::REFERENCE));
    keys.append(
        CIMKeyBinding("SystemElement", volumePath(wwnOf("vol1")).toString(), CIMKeyBinding::REFERENCE));
    return CIMObjectPath("", "root/zda", "ZDA_StorageSynchronized", keys);
}

AuthCall with(int (*fn)(const String&, const String&, const Array<CIMParamValue>&), Array<CIMParamValue> in)
{
    return [fn, in](const String& user, const String& addr) { return fn(user, addr, in); };
}

std::vector<std::string> askedKeys()
{
    std::vector<std::string> keys;
    for (const std::string& e : journalOf("api_authorizeCIMUser"))
    {
        const size_t start = e.find(" key=\"") + 6;
        const size_t end = e.rfind("\" -> ");
        keys.push_back(e.substr(start, end - start));
    }
    return keys;
}

class AuthorizationTest : public CommonSimTest
{
protected:
    std::vector<Case> cases()
    {
        const std::string rs = "zda_replicationservice.";
        const std::string scs = "zda_storageconfigurationservice.";
        const std::string elem = scs + "createormodifyelementfromstoragepool.";
        const CIMObjectPath vol1 = volumePath(wwnOf("vol1"));
        const CIMObjectPath missing = volumePath("60002D1A0000FFFF");
        auto afsp = [](const char* dependentClass) {
            Array<CIMKeyBinding> keys;
            keys.append(CIMKeyBinding(
                "Antecedent", "root/zda:ZDA_DynamicStoragePool.InstanceID=\"p1\"", CIMKeyBinding::REFERENCE));
            keys.append(CIMKeyBinding("Dependent",
                (std::string("root/zda:") + dependentClass + ".DeviceID=\"x\"").c_str(),
                CIMKeyBinding::REFERENCE));
            return CIMObjectPath("", "root/zda", "ZDA_AllocatedFromStoragePool", keys);
        };
        return {
            {"CER without SyncType and Mode", with(authorize_CreateElementReplica, params({})),
                {rs + "createelementreplica.createvvcopy"}, 0},
            {"CER snapshot",
                with(authorize_CreateElementReplica, params({u16("SyncType", 7), u16("mode", 2)})),
                {rs + "createelementreplica.createsv"}, 0},
            {"CER clone", with(authorize_CreateElementReplica, params({u16("synctype", 8), u16("Mode", 2)})),
                {rs + "createelementreplica.createvvcopy"}, 0},
            {"CER null SyncType counts as unset",
                with(authorize_CreateElementReplica, params({nullU16("SyncType"), u16("Mode", 2)})),
                {rs + "createelementreplica.createvvcopy"}, 0},
            {"CER mirror has no right",
                with(authorize_CreateElementReplica, params({u16("SyncType", 6), u16("Mode", 2)})), {}, 3},
            {"CGR mirror", with(authorize_CreateGroupReplica, params({u16("SyncType", 6), u16("Mode", 2)})),
                {rs + "creategroupreplica.createmirror"}, 0},
            {"CGR snapshot", with(authorize_CreateGroupReplica, params({u16("SyncType", 7), u16("Mode", 1)})),
                {rs + "creategroupreplica.creategroupsv"}, 0},
            {"CGR unset", with(authorize_CreateGroupReplica, params({u16("SyncType", 7)})),
                {rs + "creategroupreplica.creategroupvvcopy"}, 0},
            {"CGR other", with(authorize_CreateGroupReplica, params({u16("SyncType", 9), u16("Mode", 1)})),
                {}, 3},
            {"MRS without Operation asks a copy right",
                with(authorize_ModifyReplicaSynchronization, params({})),
                {rs + "createelementreplica.createvvcopy"}, 0},
            {"MRS abort keeps its blank",
                with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 2)})),
                {rs + "modifyreplicasynchronization.abort "}, 0},
            {"MRS 4", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 4)})),
                {rs + "modifyreplicasynchronization.syncrcopy"}, 0},
            {"MRS 9", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 9)})),
                {rs + "modifyreplicasynchronization.dissolve"}, 0},
            {"MRS 20", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 20)})),
                {rs + "modifyreplicasynchronization.setrcopygroup"}, 0},
            {"MRS 14", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 14)})),
                {rs + "modifyreplicasynchronization.resync"}, 0},
            {"MRS 15", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 15)})),
                {rs + "modifyreplicasynchronization.restore"}, 0},
            {"MRS 21", with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 21)})),
                {rs + "modifyreplicasynchronization.split"}, 0},
            {"MRS 3 has no right",
                with(authorize_ModifyReplicaSynchronization, params({u16("Operation", 3)})), {}, 3},
            {"MRS delete of a virtual copy",
                with(authorize_ModifyReplicaSynchronization,
                    params({u16("Operation", 19), ref("Synchronization", syncOf("vol1.rw"))})),
                {scs + "returntostoragepool.virtcopyvv"}, 0},
            {"MLS without Operation", with(authorize_ModifyListSynchronization, params({})),
                {rs + "modifylistsynchronization.resync"}, 0},
            {"MLS abort", with(authorize_ModifyListSynchronization, params({u16("Operation", 2)})),
                {rs + "modifylistsynchronization.abort"}, 0},
            {"MLS 8", with(authorize_ModifyListSynchronization, params({u16("Operation", 8)})),
                {rs + "modifylistsynchronization.dissolve"}, 0},
            {"MLS 15", with(authorize_ModifyListSynchronization, params({u16("Operation", 15)})),
                {rs + "modifylistsynchronization.restore"}, 0},
            {"MLS delete of a group",
                with(authorize_ModifyListSynchronization,
                    params({u16("Operation", 19),
                        ref("TargetGroup",
                            CIMObjectPath("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set1\""))})),
                {rs + "deletegroup"}, 0},
            {"MLS delete of a physical copy",
                with(authorize_ModifyListSynchronization,
                    params({u16("Operation", 19),
                        refs("Synchronization", {syncOf("vol2.clone"), syncOf("vol1.rw")})})),
                {scs + "returntostoragepool.physcopyvv"}, 0},
            {"MLS 5 has no right", with(authorize_ModifyListSynchronization, params({u16("Operation", 5)})),
                {}, 3},
            {"Delete volumes, each by type",
                with(authorize_DeleteStorageVolume,
                    params({ref("TheElement", vol1),
                        refs("TheElements",
                            {volumePath(wwnOf("vol1.rw")), volumePath(wwnOf("vol2.clone"))})})),
                {scs + "returntostoragepool.basevv", scs + "returntostoragepool.virtcopyvv",
                    scs + "returntostoragepool.physcopyvv"},
                0},
            {"Delete a volume that is not there",
                with(authorize_DeleteStorageVolume, params({ref("TheElement", missing)})),
                {scs + "returntostoragepool"}, 0},
            {"Create a volume",
                with(authorize_CreateOrModifyElemFromStoragePool,
                    params({CIMParamValue("ElementName", CIMValue(String("v")))})),
                {elem + "createvolume"}, 0},
            {"Grow and rename a volume",
                with(authorize_CreateOrModifyElemFromStoragePool,
                    params({ref("TheElement", vol1), CIMParamValue("Size", CIMValue(Uint64(1) << 30)),
                        CIMParamValue("ElementName", CIMValue(String("v")))})),
                {elem + "growvolume", elem + "setvolume"}, 0},
            {"Rename a volume",
                with(authorize_CreateOrModifyElemFromStoragePool,
                    params({ref("TheElement", vol1), CIMParamValue("ElementName", CIMValue(String("v")))})),
                {elem + "setvolume"}, 0},
            {"Detach", with(authorize_ModifySynchronization, params({u16("Operation", 2)})),
                {scs + "modifysynchronization.detach"}, 0},
            {"Resync", with(authorize_ModifySynchronization, params({u16("Operation", 4)})),
                {scs + "modifysynchronization.resync"}, 0},
            {"Restore", with(authorize_ModifySynchronization, params({u16("Operation", 5)})),
                {scs + "modifysynchronization.restore"}, 0},
            {"Start copy", with(authorize_ModifySynchronization, params({u16("Operation", 12)})),
                {scs + "modifysynchronization.startcopy"}, 0},
            {"Stop copy", with(authorize_ModifySynchronization, params({u16("Operation", 13)})),
                {scs + "modifysynchronization.stopcopy"}, 0},
            {"Other synchronization", with(authorize_ModifySynchronization, params({u16("Operation", 6)})),
                {}, 3},
            {"Create a pool", with(authorize_CreateOrModifyStoragePool, params({})),
                {scs + "createormodifystoragepool.createcpg"}, 0},
            {"Change a pool",
                with(authorize_CreateOrModifyStoragePool,
                    params({ref("Pool", CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"p\""))})),
                {scs + "createormodifystoragepool.setcpg"}, 0},
            {"Delete a dynamic pool",
                with(authorize_DeleteStoragePool,
                    params({ref("Pool", CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"p\""))})),
                {scs + "deletestoragepool.deletedynamicstoragepool"}, 0},
            {"Delete a delta pool",
                with(authorize_DeleteStoragePool,
                    params({ref("Pool", CIMObjectPath("ZDA_DeltaReplicaStoragePool.InstanceID=\"p\""))})),
                {scs + "deletestoragepool.deletedeltareplicastoragepool"}, 0},
            {"Delete another pool",
                with(authorize_DeleteStoragePool,
                    params({ref("Pool", CIMObjectPath("CIM_StoragePool.InstanceID=\"p\""))})),
                {}, 3},
            {"Move a volume",
                [afsp](const String& u, const String& a) {
                    return authorize_AllocatedFromStoragePoolModifyInstance(u, a, afsp("ZDA_StorageVolume"));
                },
                {"zda_allocatedfromstoragepool.modifyinstance.setvv"}, 0},
            {"Move a pool",
                [afsp](const String& u, const String& a) {
                    return authorize_AllocatedFromStoragePoolModifyInstance(
                        u, a, afsp("ZDA_DynamicStoragePool"));
                },
                {"zda_allocatedfromstoragepool.modifyinstance.setcpg"}, 0},
            {"Capabilities",
                with(authorize_ReplicationServiceCapabilitiesMethod, params({u16("Operation", 2)})),
                {"zda_replicationservicecapabilities"}, 0},
            {"Transient setting", with(authorize_ModifyStorageSetting_Transient, params({})),
                {elem + "setvolume"}, 0},
            {"Persistent setting", with(authorize_ModifyStorageSetting_Persistent, params({})),
                {"zda_storagesetting.modifyinstance"}, 0},
        };
    }
};

TEST_F(AuthorizationTest, EachRequestAsksItsRightWithTheCallersIdentity)
{
    for (const Case& c : cases())
    {
        zdasim_journal_clear();
        EXPECT_EQ(c.call("admin", "192.0.2.99"), c.code) << c.what;
        EXPECT_EQ(askedKeys(), c.keys) << c.what;
        for (const std::string& e : journalOf("api_authorizeCIMUser"))
            EXPECT_EQ(e.find("api_authorizeCIMUser user=\"admin\" addr=\"192.0.2.99\" key="), 0u) << e;
        if (c.code == 3)
        {
            EXPECT_EQ(zdasim_journal_count(), 0u) << c.what << ": no array call at all";
        }
    }
}

TEST_F(AuthorizationTest, AUserWithoutRightsIsRefusedAtTheFirstRight)
{
    for (const Case& c : cases())
    {
        zdasim_journal_clear();
        const int code = c.call("viewer", "::1");
        if (c.keys.empty())
        {
            EXPECT_EQ(code, c.code) << c.what;
            continue;
        }
        EXPECT_EQ(code, 1) << c.what;
        EXPECT_EQ(askedKeys(), std::vector<std::string>{c.keys.front()}) << c.what;
    }
    EXPECT_EQ(authorize_CreateElementReplica("nobody", "::1", Array<CIMParamValue>()), 2);
}

TEST_F(AuthorizationTest, DeletingAVolumeThatIsNotThereAsksNoRight)
{
    Array<CIMParamValue> in = params({u16("Operation", 19), ref("Synchronization", syncOf("vol1"))});
    // Replace the synced element by a WWN the array does not know.
    Array<CIMKeyBinding> keys;
    const CIMObjectPath missing = volumePath("60002D1A0000FFFF");
    keys.append(CIMKeyBinding("SyncedElement", missing.toString(), CIMKeyBinding::REFERENCE));
    in[1] = ref("Synchronization", CIMObjectPath("", "root/zda", "ZDA_StorageSynchronized", keys));
    zdasim_journal_clear();

    EXPECT_EQ(authorize_ModifyReplicaSynchronization("viewer", "::1", in), 0);
    EXPECT_TRUE(journalOf("api_authorizeCIMUser").empty());
    EXPECT_EQ(journalOf("api_getVVs").size(), 1u);
    EXPECT_TRUE(logged(2, "Cannot find the volume referenced to in " + text(missing.toString())));
}

TEST_F(AuthorizationTest, VolumeLookupUnderATimedOutSemaphoreFindsNothing)
{
    String key = "unchanged";
    CIMObjectPath vol = volumePath(wwnOf("vol1"));
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(handleDeleteVolumeMethod(vol, key), 0);
    EXPECT_EQ(text(key), "unchanged");
    EXPECT_TRUE(journalOf("api_getVVs").size() == 1u);  // only wwnOf's own lookup

    CIMObjectPath classless;
    EXPECT_EQ(handleDeleteVolumeMethod(classless, key), 0);
    EXPECT_EQ(getNumberOfNodes(), cluster_num_nodes_alive());
}

}  // namespace
