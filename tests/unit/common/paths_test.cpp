// Path matching, reference checks against the system's own names and
// addresses, association builders and the association filters.
#include "../server/cim_error_of.h"
#include "common_sim_fixture.h"

#include <tuple>

#include <Pegasus/Common/Exception.h>

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

class PathsTest : public CommonSimTest
{};

CIMObjectPath path(const char* text)
{
    return CIMObjectPath(text);
}

TEST_F(PathsTest, MatchObjectPathIgnoresHostsOneLevelDeep)
{
    const std::tuple<const char*, const char*, bool> cases[] = {
        // hosts of the paths themselves
        {"//hostA/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\",SystemName=\"zda-sim\"",
            "root/zda:ZDA_StorageVolume.DeviceID=\"60-01\",SystemName=\"zda-sim\"", true},
        // class names compare without case, string values with it
        {"root/zda:zda_storagevolume.DeviceID=\"60-01\"", "root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"",
            true},
        {"root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"", "root/zda:ZDA_StorageVolume.DeviceID=\"60-02\"",
            false},
        // the namespace counts: a path without one is another path
        {"ZDA_StorageVolume.DeviceID=\"60-01\"", "root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"", false},
        // hosts inside reference keys
        {"root/zda:ZDA_MemberOfCollection.Member=\"//h1/root/zda:ZDA_StorageVolume.DeviceID=\\\"60-01\\\"\"",
            "root/zda:ZDA_MemberOfCollection.Member=\"//h2/root/zda:ZDA_StorageVolume.DeviceID=\\\"60-01\\\"\"",
            true},
        {"root/zda:ZDA_MemberOfCollection.Member=\"//h1/root/zda:ZDA_StorageVolume.DeviceID=\\\"60-01\\\"\"",
            "root/zda:ZDA_MemberOfCollection.Member=\"root/zda:ZDA_StorageVolume.DeviceID=\\\"60-02\\\"\"",
            false},
    };
    for (const auto& [a, b, match] : cases)
    {
        EXPECT_EQ(ZDA_Common::matchObjectPath(path(a), path(b)), match) << a << " vs " << b;
        EXPECT_EQ(ZDA_Common::matchObjectPath(path(b), path(a)), match) << b << " vs " << a;
    }

    // A string key that holds a path is compared as a path, host aside.
    EXPECT_TRUE(ZDA_Common::matchObjectPath(
        keyedPath("ZDA_X", {{"Target", "//far/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\""}},
            CIMKeyBinding::STRING),
        keyedPath(
            "ZDA_X", {{"Target", "root/zda:ZDA_StorageVolume.DeviceID=\"60-01\""}}, CIMKeyBinding::STRING)));

    // Only one level is treated: a host in a reference inside a reference counts.
    auto nested = [](const char* host) {
        const String inner = String("//") + host + "/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"";
        return keyedPath(
            "ZDA_Outer", {{"Element", keyedPath("ZDA_MemberOfCollection", {{"Member", inner}}).toString()}});
    };
    EXPECT_FALSE(ZDA_Common::matchObjectPath(nested("h1"), nested("h2")));
}

TEST_F(PathsTest, VerifyRefMethodParamAcceptsOnlyThisSystemInTheNamespace)
{
    String systemAddress = "zda-sim.local";
    const CIMNamespaceName ns("root/zda");

    CIMObjectPath noNamespace = path("ZDA_StorageVolume.DeviceID=\"60-01\"");
    EXPECT_TRUE(ZDA_Common::verifyRefMethodParam(noNamespace, ns, systemAddress));
    EXPECT_EQ(text(noNamespace.getNameSpace().getString()), "root/zda");  // the caller goes on with it

    CIMObjectPath wrongNamespace = path("root/other:ZDA_StorageVolume.DeviceID=\"60-01\"");
    EXPECT_FALSE(ZDA_Common::verifyRefMethodParam(wrongNamespace, ns, systemAddress));
    EXPECT_TRUE(logged(
        2, "The ref param " + text(wrongNamespace.toString()) + " contains the wrong name space root/other"));

    const std::pair<const char*, bool> hosts[] = {
        {"ZDA-SIM.local", true},        // the system address, without case
        {"192.0.2.10", true},           // the IPv4 address
        {"[2001:0DB8:0:0::10]", true},  // the IPv6 address in another notation
        {"[2001:db8::10]:5989", true},
        {"192.0.2.11", false},
        {"[2001:db8::11]", false},
        {"other.example.com", false},
    };
    for (const auto& [host, ok] : hosts)
    {
        CIMObjectPath ref = path("root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
        ref.setHost(host);
        EXPECT_EQ(ZDA_Common::verifyRefMethodParam(ref, ns, systemAddress), ok) << host;
    }

    // The class forms.
    CIMObjectPath volume = path("//192.0.2.10/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
    EXPECT_TRUE(ZDA_Common::verifyRefMethodParam(volume, ns, systemAddress, CIMName("zda_storagevolume")));
    EXPECT_FALSE(
        ZDA_Common::verifyRefMethodParam(volume, ns, systemAddress, CIMName("ZDA_ReplicationGroup")));
    Array<CIMName> groups = arrayOf<CIMName>({"ZDA_ReplicationGroup", "ZDA_RemoteReplicationGroup"});
    EXPECT_FALSE(ZDA_Common::verifyRefMethodParam(volume, ns, systemAddress, groups));
    groups.append("ZDA_StorageVolume");
    EXPECT_TRUE(ZDA_Common::verifyRefMethodParam(volume, ns, systemAddress, groups));
}

TEST_F(PathsTest, GetSystemIPAddrGivesTheArraysAddressesAndRefusesOtherTypes)
{
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(1)), "192.0.2.10");
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(2)), "2001:db8::10");
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(0)), "");
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(3)), "");
    EXPECT_TRUE(logged(2, "ZDA_Common, getSystemIPAddr: Invalid IP type parameter!"));
}

// An association instance with two references and a plain property.
CIMInstance member(
    const CIMObjectPath& collection, const CIMObjectPath& element, const char* cls = "ZDA_MemberOfCollection")
{
    CIMInstance inst(cls);
    inst.addProperty(CIMProperty("Collection", CIMValue(collection)));
    inst.addProperty(CIMProperty("Description", CIMValue(String("not a reference"))));
    inst.addProperty(CIMProperty("Member", CIMValue(element)));
    inst.setPath(keyedPath(cls, {{"Collection", collection.toString()}, {"Member", element.toString()}}));
    return inst;
}

const CIMObjectPath kSet1 = CIMObjectPath("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set1\"");
const CIMObjectPath kVol1 = CIMObjectPath("//zda-sim.local/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
const CIMObjectPath kVol2 = CIMObjectPath("root/zda:ZDA_StorageVolume.DeviceID=\"60-02\"");

TEST_F(PathsTest, IsInstanceValidReferenceChecksTheRoleProperty)
{
    CIMInstance assoc = member(kSet1, kVol1);
    const CIMObjectPath target = CIMObjectPath("ZDA_StorageVolume.DeviceID=\"60-01\"");
    EXPECT_TRUE(ZDA_Common::_isInstanceValidReference(target, assoc, ""));
    EXPECT_TRUE(ZDA_Common::_isInstanceValidReference(target, assoc, "member"));
    EXPECT_FALSE(ZDA_Common::_isInstanceValidReference(target, assoc, "Collection"));
    for (const char* role : {"NoSuchRole", "Description"})
        EXPECT_EQ(zda_test::cimErrorOf([&] { ZDA_Common::_isInstanceValidReference(target, assoc, role); }),
            CIM_ERR_INVALID_PARAMETER)
            << role;
}

TEST_F(PathsTest, MembershipTestsAndPoolPaths)
{
    const Array<CIMObjectPath> paths = arrayOf({kVol2});
    EXPECT_TRUE(ZDA_Common::isPartOfArray(
        CIMObjectPath("//elsewhere/root/zda:ZDA_StorageVolume.DeviceID=\"60-02\""), paths));
    EXPECT_FALSE(ZDA_Common::isPartOfArray(kVol1, paths));
    const Array<CIMInstance> instances = arrayOf({member(kSet1, kVol1)});
    EXPECT_TRUE(ZDA_Common::isPartOfArray(instances[0].getPath(), instances));

    EXPECT_TRUE(ZDA_Common::isPoolPath(
        CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"ZDA:CPG:FC_r5\""), "zda:cpg:fc_r5"));
    EXPECT_TRUE(ZDA_Common::isPoolPath(
        CIMObjectPath("ZDA_DynamicStoragePool.Other=\"ZDA:CPG:FC_r5\""), "ZDA:CPG:FC_r5"));
    EXPECT_FALSE(ZDA_Common::isPoolPath(
        CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"ZDA:CPG:FC_r1\""), "ZDA:CPG:FC_r5"));
}

TEST_F(PathsTest, AssociationBuildersPutHostsOnTheEndsAndReferenceKeys)
{
    CIMObjectPath dep = ZDA_Common::buildDepAssocPath("192.0.2.10", "ZDA_HostedService", kVol2, kSet1);
    EXPECT_EQ(text(dep.getHost()), "192.0.2.10");
    EXPECT_EQ(text(dep.getNameSpace().getString()), "root/zda");
    ASSERT_EQ(dep.getKeyBindings().size(), 2u);
    for (Uint32 i = 0; i < 2; i++)
        EXPECT_EQ(dep.getKeyBindings()[i].getType(), CIMKeyBinding::REFERENCE);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(dep, "Antecedent")), text(kVol2.toString()));

    CIMClass skeleton("ZDA_MemberOfCollection");
    skeleton.addProperty(CIMProperty("Collection", CIMValue(CIMTYPE_REFERENCE, false)));
    skeleton.addProperty(CIMProperty("Member", CIMValue(CIMTYPE_REFERENCE, false)));
    const CIMObjectPath set1Before = kSet1;
    CIMInstance inst = ZDA_Common::buildAssocInstance("ZDA_MemberOfCollection", "Collection", "Member", kSet1,
        kVol2, "local-a", "remote-b", "here", "root/zda", skeleton);
    EXPECT_TRUE(kSet1.identical(set1Before));  // the arguments are not changed
    CIMObjectPath collection, memberPath;
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Collection", collection), 0);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Member", memberPath), 0);
    EXPECT_EQ(text(collection.getHost()), "local-a");
    EXPECT_EQ(text(memberPath.getHost()), "remote-b");
    EXPECT_EQ(text(inst.getPath().getHost()), "here");
    EXPECT_EQ(
        text(CIMObjectPath(ZDA_Common::getStringProperty(inst.getPath(), "Member")).getHost()), "remote-b");
    // toString quotes reference keys as paths.
    EXPECT_NE(text(inst.getPath().toString())
                  .find("Member=\"//remote-b/root/zda:ZDA_StorageVolume.DeviceID=\\\"60-02\\\"\""),
        std::string::npos)
        << text(inst.getPath().toString());

    CIMObjectPath three = ZDA_Common::buildAssocPath(
        "ZDA_Three", "A", "B", "C", kSet1, kVol1, kVol2, "h", "root/zda");
    ASSERT_EQ(three.getKeyBindings().size(), 3u);
    for (Uint32 i = 0; i < 3; i++)
    {
        EXPECT_EQ(three.getKeyBindings()[i].getType(), CIMKeyBinding::REFERENCE);
        EXPECT_EQ(text(CIMObjectPath(three.getKeyBindings()[i].getValue()).getHost()), "h");
    }
}

TEST_F(PathsTest, ReferenceFilterKeepsOrderAndTestsClassAndRole)
{
    const CIMObjectPath target = CIMObjectPath("//any/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
    const Array<CIMInstance> list = arrayOf({member(kSet1, kVol1), member(kSet1, kVol2),
        member(kVol1, kSet1, "ZDA_OtherAssociation"),  // target on the other side
        member(CIMObjectPath("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set2\""), kVol1)});

    Array<CIMInstance> all = ZDA_Common::filterReferenceNames(list, target, CIMName(), "");
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].getPath().identical(list[0].getPath()));
    EXPECT_TRUE(all[1].getPath().identical(list[2].getPath()));
    EXPECT_TRUE(all[2].getPath().identical(list[3].getPath()));

    EXPECT_EQ(ZDA_Common::filterReferenceNames(list, target, "ZDA_OtherAssociation", "").size(), 1u);
    EXPECT_EQ(ZDA_Common::filterReferenceNames(list, target, CIMName(), "Member").size(), 2u);
    EXPECT_EQ(ZDA_Common::filterReferenceNames(list, target, CIMName(), "Collection").size(), 1u);
}

TEST_F(PathsTest, TargetFiltersGiveTheFarEndsByClassAndRole)
{
    CIMInstance assoc = member(kSet1, kVol1);
    const CIMObjectPath fromVolume = CIMObjectPath("root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
    auto ends = [&](CIMInstance a, Array<CIMName> classes, const char* role = "") {
        return ZDA_Common::filterAssocInstanceToTargetPaths(a, fromVolume, classes, role);
    };
    Array<CIMName> anyClass;
    ASSERT_EQ(ends(assoc, anyClass).size(), 1u);
    EXPECT_TRUE(ends(assoc, anyClass)[0].identical(kSet1));
    EXPECT_EQ(ends(assoc, anyClass, "collection").size(), 1u);
    EXPECT_EQ(ends(assoc, anyClass, "Member").size(), 0u);
    EXPECT_EQ(ends(assoc, arrayOf<CIMName>({"ZDA_ReplicationGroup", "zda_replicationgroup"})).size(), 2u);
    EXPECT_EQ(ends(assoc, arrayOf<CIMName>({"ZDA_StorageVolume"})).size(), 0u);
    EXPECT_EQ(ends(member(kVol1, kVol1), anyClass).size(), 0u);  // a loop has no far end

    CIMInstance group2("ZDA_ReplicationGroup");
    group2.setPath(CIMObjectPath("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set2\""));
    CIMInstance group1("ZDA_ReplicationGroup");
    group1.setPath(
        CIMObjectPath("//zda-sim.local/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:set1\""));
    Array<CIMInstance> found = ZDA_Common::filterAssocInstanceToTargetInstances(
        assoc, fromVolume, arrayOf({group2, group1}), anyClass, "");
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].getPath().identical(group1.getPath()));
}

}  // namespace
