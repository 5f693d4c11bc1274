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
typedef int (*ParamsAuth)(const String&, const String&, const Array<CIMParamValue>&);
const ParamsAuth MRS = authorize_ModifyReplicaSynchronization;

struct Case
{
    std::string what;
    AuthCall call;
    std::vector<std::string> keys;  // rights asked for, in order, for a user who has them all
    int code;                       // the result for that user
};

CIMParamValue u16(const char* name, Uint16 v)
{
    return CIMParamValue(name, CIMValue(v));
}
CIMParamValue ref(const char* name, const CIMObjectPath& p)
{
    return CIMParamValue(name, CIMValue(p));
}
CIMParamValue refs(const char* name, std::initializer_list<CIMObjectPath> ps)
{
    return CIMParamValue(name, CIMValue(arrayOf(ps)));
}

// A synchronization whose SyncedElement is the volume of that WWN.
CIMObjectPath syncOf(const std::string& wwn)
{
    return keyedPath("ZDA_StorageSynchronized",
        {{"SyncedElement", volumePath(wwn).toString()},
            {"SystemElement", volumePath(wwnOf("vol1")).toString()}});
}

AuthCall with(ParamsAuth fn, std::initializer_list<CIMParamValue> list)
{
    const Array<CIMParamValue> in = arrayOf(list);
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
        const std::string cer = rs + "createelementreplica.", cgr = rs + "creategroupreplica.";
        const std::string mrs = rs + "modifyreplicasynchronization.", mls = rs + "modifylistsynchronization.";
        const std::string del = scs + "returntostoragepool.", pools = scs + "deletestoragepool.";
        const ParamsAuth CER = authorize_CreateElementReplica, CGR = authorize_CreateGroupReplica;
        const ParamsAuth MLS = authorize_ModifyListSynchronization;
        const ParamsAuth ELEM = authorize_CreateOrModifyElemFromStoragePool;
        const CIMObjectPath vol1 = volumePath(wwnOf("vol1"));
        const CIMParamValue named = CIMParamValue("ElementName", CIMValue(String("v")));
        auto pool = [](const char* cls) {
            return ref("Pool", CIMObjectPath((cls + std::string(".InstanceID=\"p\"")).c_str()));
        };
        auto afsp = [](const char* dependentClass) {
            const CIMObjectPath path = keyedPath("ZDA_AllocatedFromStoragePool",
                {{"Antecedent", "root/zda:ZDA_DynamicStoragePool.InstanceID=\"p1\""},
                    {"Dependent", String("root/zda:") + dependentClass + ".DeviceID=\"x\""}});
            return [path](const String& u, const String& a) {
                return authorize_AllocatedFromStoragePoolModifyInstance(u, a, path);
            };
        };
        // The rights of a replica request without SyncType and Mode, of the
        // capabilities methods and of a persistent setting are chosen through
        // the method authorization's own tests.
        std::vector<Case> all = {
            {"CER snapshot", with(CER, {u16("SyncType", 7), u16("mode", 2)}), {cer + "createsv"}, 0},
            {"CER clone", with(CER, {u16("synctype", 8), u16("Mode", 2)}), {cer + "createvvcopy"}, 0},
            {"CER null SyncType counts as unset",
                with(CER, {CIMParamValue("SyncType", CIMValue(CIMTYPE_UINT16, false)), u16("Mode", 2)}),
                {cer + "createvvcopy"}, 0},
            {"CER mirror has no right", with(CER, {u16("SyncType", 6), u16("Mode", 2)}), {}, 3},
            {"CGR mirror", with(CGR, {u16("SyncType", 6), u16("Mode", 2)}), {cgr + "createmirror"}, 0},
            {"CGR snapshot", with(CGR, {u16("SyncType", 7), u16("Mode", 1)}), {cgr + "creategroupsv"}, 0},
            {"CGR unset", with(CGR, {u16("SyncType", 7)}), {cgr + "creategroupvvcopy"}, 0},
            {"CGR other", with(CGR, {u16("SyncType", 9), u16("Mode", 1)}), {}, 3},
            {"MRS without Operation asks a copy right", with(MRS, {}), {cer + "createvvcopy"}, 0},
            {"MRS delete of a virtual copy",
                with(MRS, {u16("Operation", 19), ref("Synchronization", syncOf(wwnOf("vol1.rw")))}),
                {del + "virtcopyvv"}, 0},
            {"MLS without Operation", with(MLS, {}), {mls + "resync"}, 0},
            {"MLS delete of a group",
                with(MLS,
                    {u16("Operation", 19),
                        ref("TargetGroup",
                            CIMObjectPath("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set1\""))}),
                {rs + "deletegroup"}, 0},
            {"MLS delete of a physical copy",
                with(MLS,
                    {u16("Operation", 19),
                        refs("Synchronization", {syncOf(wwnOf("vol2.clone")), syncOf(wwnOf("vol1.rw"))})}),
                {del + "physcopyvv"}, 0},
            {"Delete volumes, each by type",
                with(authorize_DeleteStorageVolume,
                    {ref("TheElement", vol1),
                        refs(
                            "TheElements", {volumePath(wwnOf("vol1.rw")), volumePath(wwnOf("vol2.clone"))})}),
                {del + "basevv", del + "virtcopyvv", del + "physcopyvv"}, 0},
            {"Delete a volume that is not there",
                with(authorize_DeleteStorageVolume, {ref("TheElement", volumePath("60002D1A0000FFFF"))}),
                {scs + "returntostoragepool"}, 0},
            {"Create a volume", with(ELEM, {named}), {elem + "createvolume"}, 0},
            {"Grow and rename a volume",
                with(
                    ELEM, {ref("TheElement", vol1), CIMParamValue("Size", CIMValue(Uint64(1) << 30)), named}),
                {elem + "growvolume", elem + "setvolume"}, 0},
            {"Rename a volume", with(ELEM, {ref("TheElement", vol1), named}), {elem + "setvolume"}, 0},
            {"Create a pool", with(authorize_CreateOrModifyStoragePool, {}),
                {scs + "createormodifystoragepool.createcpg"}, 0},
            {"Change a pool", with(authorize_CreateOrModifyStoragePool, {pool("ZDA_DynamicStoragePool")}),
                {scs + "createormodifystoragepool.setcpg"}, 0},
            {"Delete a dynamic pool", with(authorize_DeleteStoragePool, {pool("ZDA_DynamicStoragePool")}),
                {pools + "deletedynamicstoragepool"}, 0},
            {"Delete a delta pool", with(authorize_DeleteStoragePool, {pool("ZDA_DeltaReplicaStoragePool")}),
                {pools + "deletedeltareplicastoragepool"}, 0},
            {"Delete another pool", with(authorize_DeleteStoragePool, {pool("CIM_StoragePool")}), {}, 3},
            {"Move a volume", afsp("ZDA_StorageVolume"),
                {"zda_allocatedfromstoragepool.modifyinstance.setvv"}, 0},
            {"Move a pool", afsp("ZDA_DynamicStoragePool"),
                {"zda_allocatedfromstoragepool.modifyinstance.setcpg"}, 0},
            {"Transient setting", with(authorize_ModifyStorageSetting_Transient, {}), {elem + "setvolume"},
                0},
        };
        // Requests told apart by their Operation alone: the right each asks,
        // none for an operation without one.
        const struct
        {
            ParamsAuth fn;
            std::string prefix;
            std::vector<std::pair<Uint16, const char*>> rights;
        } byOperation[] = {
            {MRS, mrs,
                {{2, "abort "}, {4, "syncrcopy"}, {9, "dissolve"}, {20, "setrcopygroup"}, {14, "resync"},
                    {15, "restore"}, {21, "split"}, {3, nullptr}}},
            {MLS, mls, {{2, "abort"}, {8, "dissolve"}, {15, "restore"}, {5, nullptr}}},
            {authorize_ModifySynchronization, scs + "modifysynchronization.",
                {{2, "detach"}, {4, "resync"}, {5, "restore"}, {12, "startcopy"}, {13, "stopcopy"},
                    {6, nullptr}}},
        };
        for (const auto& r : byOperation)
            for (const auto& op : r.rights)
                all.push_back({r.prefix + " operation " + std::to_string(op.first),
                    with(r.fn, {u16("Operation", op.first)}),
                    op.second ? std::vector<std::string>{r.prefix + op.second} : std::vector<std::string>{},
                    op.second ? 0 : 3});
        return all;
    }
};

// A user with every right gets each right asked, with the caller's identity;
// a user without rights is refused at the first one.
TEST_F(AuthorizationTest, EachRequestAsksItsRightsInOrderAndStopsAtARefusal)
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

        zdasim_journal_clear();
        EXPECT_EQ(c.call("viewer", "::1"), c.keys.empty() ? c.code : 1) << c.what;
        EXPECT_EQ(askedKeys(), c.keys.empty() ? c.keys : std::vector<std::string>{c.keys.front()}) << c.what;
    }
    EXPECT_EQ(authorize_CreateElementReplica("nobody", "::1", Array<CIMParamValue>()), 2);
}

TEST_F(AuthorizationTest, DeletingAVolumeThatIsNotThereAsksNoRight)
{
    // The synced element is a WWN the array does not know.
    const CIMObjectPath missing = volumePath("60002D1A0000FFFF");
    const AuthCall call = with(
        MRS, {u16("Operation", 19), ref("Synchronization", syncOf("60002D1A0000FFFF"))});
    zdasim_journal_clear();

    EXPECT_EQ(call("viewer", "::1"), 0);
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
    zdasim_system_set_nodes_alive(1);
    EXPECT_EQ(getNumberOfNodes(), 1);
}

}  // namespace
