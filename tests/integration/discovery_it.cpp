// Discovery as SMI-S clients do it through zda-cimserver: from the interop
// namespace (under each of its names) to the server, its namespaces and the
// registered profiles, from each profile to the elements in root/zda and
// back; and classes whose codes explain themselves.
#include "DemoArrayTest.h"

#include <map>
#include <set>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

class DiscoveryIT : public SharedServerTest
{
protected:
    void SetUp() override
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "viewer-demo");
    }

    // The registered SNIA profile of that name, as listed in `ns`.
    CIMInstance profile(const char* ns, const char* name)
    {
        Array<CIMInstance> all = client.enumerateInstances(ns, "CIM_RegisteredProfile", true, false);
        for (Uint32 i = 0; i < all.size(); ++i)
            if (text(valueOf<String>(all[i], "RegisteredName")) == name &&
                valueOf<Uint16>(all[i], "RegisteredOrganization") == 11)
                return all[i];
        ADD_FAILURE() << "no registered profile " << name << " in " << ns;
        return CIMInstance();
    }

    CIMClient client;
};

// Each profile leads, under every name of the interop namespace, to its
// central element in root/zda, which the client then reads there.
TEST_F(DiscoveryIT, ProfilesLeadToTheirElementsInRootZda)
{
    struct Walk
    {
        const char* profile;
        const char* elementClass;
    };
    const Walk walks[] = {{"Replication Services", "ZDA_ReplicationService"}, {"Array", "ZDA_StorageSystem"}};
    for (const char* ns : {"interop", "root/interop", "root/PG_InterOp"})
        for (const Walk& walk : walks)
        {
            SCOPED_TRACE(std::string(ns) + " " + walk.profile);
            CIMInstance found = profile(ns, walk.profile);
            if (found.isUninitialized())
                continue;
            EXPECT_EQ(text(valueOf<String>(found, "RegisteredVersion")), "1.6.1");

            Array<CIMObjectPath> elements = client.associatorNames(
                ns, found.getPath(), "CIM_ElementConformsToProfile");
            ASSERT_EQ(elements.size(), 1u);
            EXPECT_EQ(text(elements[0].getClassName().getString()), walk.elementClass);
            EXPECT_EQ(text(elements[0].getNameSpace().getString()), "root/zda");
            CIMInstance element = client.getInstance("root/zda", elements[0]);
            EXPECT_EQ(text(element.getClassName().getString()), walk.elementClass);

            Array<CIMObject> full = client.associators(ns, found.getPath(), "CIM_ElementConformsToProfile");
            ASSERT_EQ(full.size(), 1u);
            EXPECT_TRUE(full[0].getPath().identical(elements[0]))
                << text(full[0].getPath().toString()) << " vs " << text(elements[0].toString());
        }
}

// From an element in root/zda back to its profile in the interop namespace,
// as a client that starts from the element walks: by result class, by
// association class, and through the links themselves. An element of a
// class that conforms to no profile leads nowhere.
TEST_F(DiscoveryIT, ElementsLeadBackToTheirProfile)
{
    struct Walk
    {
        const char* elementClass;
        const char* profileId;  // empty: no profile
    };
    const Walk walks[] = {{"ZDA_ReplicationService", "SNIA+Replication Services+1.6.1"},
        {"ZDA_StorageSystem", "SNIA+Array+1.6.1"}, {"ZDA_StorageVolume", ""}};
    for (const Walk& walk : walks)
    {
        SCOPED_TRACE(walk.elementClass);
        Array<CIMObjectPath> elements = client.enumerateInstanceNames("root/zda", walk.elementClass);
        ASSERT_FALSE(elements.size() == 0);
        const CIMObjectPath& element = elements[0];
        const std::size_t expected = *walk.profileId ? 1 : 0;

        Array<CIMObjectPath> byResult = client.associatorNames(
            "root/zda", element, CIMName(), "CIM_RegisteredProfile");
        ASSERT_EQ(byResult.size(), expected);
        Array<CIMObject> byAssociation = client.associators(
            "root/zda", element, "CIM_ElementConformsToProfile");
        ASSERT_EQ(byAssociation.size(), expected);
        Array<CIMObject> links = client.references("root/zda", element, "CIM_ElementConformsToProfile");
        ASSERT_EQ(links.size(), expected);
        if (!expected)
            continue;

        EXPECT_EQ(text(byResult[0].getNameSpace().getString()), "root/PG_InterOp");
        EXPECT_EQ(text(byResult[0].getClassName().getString()), "CIM_RegisteredProfile");
        CIMInstance profile = client.getInstance("interop", byResult[0]);
        EXPECT_EQ(text(valueOf<String>(profile, "InstanceID")), walk.profileId);
        EXPECT_EQ(text(valueOf<String>(CIMInstance(byAssociation[0]), "InstanceID")), walk.profileId);
        CIMObjectPath standard = valueOf<CIMObjectPath>(CIMInstance(links[0]), "ConformantStandard");
        EXPECT_EQ(text(standard.getClassName().getString()), "CIM_RegisteredProfile");
        EXPECT_NE(text(standard.toString()).find(walk.profileId), std::string::npos)
            << text(standard.toString());
    }
}

// The server, how it is reached, its namespaces, its own profile and the
// references between profiles.
TEST_F(DiscoveryIT, ServerNamespacesAndProfileReferences)
{
    Array<CIMInstance> managers = client.enumerateInstances("interop", "CIM_ObjectManager", true, false);
    ASSERT_EQ(managers.size(), 1u);
    Array<CIMObject> mechanisms = client.associators(
        "interop", managers[0].getPath(), "CIM_CommMechanismForManager");
    ASSERT_EQ(mechanisms.size(), 1u);
    EXPECT_EQ(valueOf<Uint16>(CIMInstance(mechanisms[0]), "CommunicationMechanism"), 2);  // CIM-XML
    // Basic Read, Basic Write, Instance Manipulation, Association Traversal, Pulled Read.
    Array<Uint16> functions = valueOf<Array<Uint16>>(
        CIMInstance(mechanisms[0]), "FunctionalProfilesSupported");
    EXPECT_EQ(std::vector<Uint16>(functions.getData(), functions.getData() + functions.size()),
        (std::vector<Uint16>{2, 3, 5, 6, 10}));
    EXPECT_EQ(client.associatorNames("interop", managers[0].getPath(), "CIM_HostedService").size(), 1u);

    std::set<std::string> names;
    Array<CIMObject> namespaces = client.associators(
        "root/interop", managers[0].getPath(), "CIM_NamespaceInManager");
    for (Uint32 i = 0; i < namespaces.size(); ++i)
        names.insert(text(valueOf<String>(CIMInstance(namespaces[i]), "Name")));
    EXPECT_TRUE(names.count("root/zda") && names.count("root/PG_InterOp")) << namespaces.size();
    EXPECT_FALSE(names.count("root/PG_Internal"));

    CIMInstance serverProfile = profile("interop", "Server");
    if (!serverProfile.isUninitialized())
    {
        Array<CIMObjectPath> conforming = client.associatorNames(
            "interop", serverProfile.getPath(), "CIM_ElementConformsToProfile");
        ASSERT_EQ(conforming.size(), 1u);
        EXPECT_EQ(text(conforming[0].getClassName().getString()), "CIM_ObjectManager");
    }

    // Array refers to Replication Services.
    CIMInstance array = profile("interop", "Array");
    if (array.isUninitialized())
        return;
    Array<CIMObject> referenced = client.associators(
        "interop", array.getPath(), "CIM_ReferencedProfile", CIMName(), "Dependent", "Antecedent");
    ASSERT_EQ(referenced.size(), 1u);
    EXPECT_EQ(text(valueOf<String>(CIMInstance(referenced[0]), "RegisteredName")), "Replication Services");
}

// The README's walk for SMI-S clients works as printed and reaches both
// elements.
TEST_F(DiscoveryIT, ReadmeWalkWorksWithWbemcli)
{
    std::string all = runReadmeSection("smi-s", *server, 4);
    EXPECT_NE(all.find("root/zda:ZDA_StorageSystem."), std::string::npos) << all;
    EXPECT_NE(all.find("root/zda:ZDA_ReplicationService."), std::string::npos) << all;
    EXPECT_NE(all.find("InstanceID=\"SNIA+Replication Services+1.6.1\""), std::string::npos) << all;
}

// GetClass with qualifiers tells a client what the numbers mean: the value
// of a code and its text sit at the same place of ValueMap and Values, as
// the standard defines them.
TEST_F(DiscoveryIT, ClassesExplainTheirCodes)
{
    struct Code
    {
        const char* className;
        const char* property;
        const char* value;
        const char* text;
    };
    const Code codes[] = {
        {"ZDA_StorageSynchronized", "CopyState", "4", "Synchronized"},
        {"ZDA_RemoteStorageSynchronized", "CopyState", "15", "Not Applicable"},
        {"ZDA_RemoteStorageSynchronized", "ProgressStatus", "6", "Synchronizing"},
        {"ZDA_RemoteStorageSynchronized", "SyncState", "6", "Synchronized"},
        {"ZDA_RemoteGroupSynchronized", "SyncType", "7", "Snapshot"},
        {"ZDA_StorageVolume", "OperationalStatus", "2", "OK"},
        {"ZDA_StorageVolume", "VolumeType", "1", "Base"},
    };
    for (const Code& code : codes)
    {
        SCOPED_TRACE(std::string(code.className) + "." + code.property);
        CIMClass cls = client.getClass("root/zda", code.className, false, true);
        Uint32 at = cls.findProperty(code.property);
        ASSERT_NE(at, PEG_NOT_FOUND);
        CIMProperty property = cls.getProperty(at);
        Uint32 mapAt = property.findQualifier("ValueMap");
        Uint32 textAt = property.findQualifier("Values");
        ASSERT_NE(mapAt, PEG_NOT_FOUND);
        ASSERT_NE(textAt, PEG_NOT_FOUND);
        Array<String> map, texts;
        property.getQualifier(mapAt).getValue().get(map);
        property.getQualifier(textAt).getValue().get(texts);
        ASSERT_EQ(map.size(), texts.size());
        std::map<std::string, std::string> meanings;
        for (Uint32 i = 0; i < map.size(); ++i)
            meanings[text(map[i])] = text(texts[i]);
        EXPECT_EQ(meanings[code.value], code.text);
    }

    // Every class of root/zda says what it is in its own words: none only
    // repeats its superclass's Description.
    Array<CIMClass> all = client.enumerateClasses("root/zda", CIMName(), true, false, true);
    for (Uint32 i = 0; i < all.size(); ++i)
    {
        Uint32 at = all[i].findQualifier("Description");
        ASSERT_NE(at, PEG_NOT_FOUND) << text(all[i].getClassName().getString());
        if (all[i].getSuperClassName().isNull())
            continue;
        CIMClass parent = client.getClass("root/zda", all[i].getSuperClassName(), false, true);
        Uint32 parentAt = parent.findQualifier("Description");
        if (parentAt != PEG_NOT_FOUND)
        {
            EXPECT_NE(all[i].getQualifier(at).getValue().toString(),
                parent.getQualifier(parentAt).getValue().toString())
                << text(all[i].getClassName().getString());
        }
    }
}

}  // namespace
