// The dispatcher, provider manager, CIMOMHandle backend and loopback, driven
// through the in-process host with the test provider module, from one
// thread and from many.
#include "server_test_fixture.h"

#include "SemaphoreCheckingHandler.h"

#include <ResponseCollectors.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMProperty.h>

#include <zdasim_control.h>

#include <atomic>
#include <thread>

using namespace Pegasus;
using namespace zda_test;
using ::testing::ElementsAre;

namespace
{

class DispatchTest : public TestModuleFixture
{
protected:
    OperationContext alice = zda::server::InProcessHost::contextFor("alice", "192.0.2.7");

    Array<CIMObjectPath> associatorNames(const CIMObjectPath& object, const char* assocClass = "",
        const char* resultClass = "", const char* role = "", const char* resultRole = "")
    {
        return server().associatorNames(alice, TEST_NS, object, *assocClass ? CIMName(assocClass) : CIMName(),
            *resultClass ? CIMName(resultClass) : CIMName(), role, resultRole);
    }

    // GetInstance as alice, with qualifiers and class origins when `full`.
    CIMInstance get(const CIMObjectPath& path, bool full = false)
    {
        return server().getInstance(alice, TEST_NS, path, false, full, full, CIMPropertyList());
    }

    CIMValue invoke(const char* method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out,
        const OperationContext& context = OperationContext())
    {
        return server().invokeMethod(context, TEST_NS, service(), method, in, out);
    }
};

// ---- instances ----------------------------------------------------------------

TEST_F(DispatchTest, DeepEnumerationAsksEveryProviderForItsOwnClassAndAddsStaticInstances)
{
    Array<CIMInstance> all = server().enumerateInstances(
        alice, TEST_NS, "Test_Element", true, false, false, false, CIMPropertyList());
    EXPECT_THAT(idsOf(all), ElementsAre("Disk1", "Disk2", "Fast1", "Tape1", "Tape2"));
    for (Uint32 i = 0; i < all.size(); ++i)
    {
        EXPECT_EQ(all[i].getPath().getHost(), "testhost");
        EXPECT_TRUE(all[i].getPath().getNameSpace().equal(TEST_NS));
    }
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_DiskProvider.enumerateInstances"),
        ElementsAre("Test_DiskProvider.enumerateInstances //testhost/root/test:Test_Disk user=alice"));
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_FastDiskProvider.enumerateInstances"),
        ElementsAre("Test_FastDiskProvider.enumerateInstances //testhost/root/test:Test_FastDisk"));

    EXPECT_THAT(ids(server().enumerateInstanceNames(alice, TEST_NS, "Test_Disk")),
        ElementsAre("Disk1", "Disk2", "Fast1"));
    EXPECT_THAT(
        ids(server().enumerateInstanceNames(alice, TEST_NS, "Test_Tape")), ElementsAre("Tape1", "Tape2"));
}

TEST_F(DispatchTest, PropertiesFollowDeepInheritanceAndThePropertyListButNotLocalOnly)
{
    struct Case
    {
        const char* what;
        const char* className;
        bool deep;
        bool localOnly;
        CIMPropertyList list;
        std::vector<std::string> disk1;  // empty: Disk1 is not enumerated
        std::vector<std::string> fast1;
    };
    const std::vector<std::string> none;
    const Case cases[] = {
        {"shallow", "Test_Disk", false, false, CIMPropertyList(), {"Id", "Name", "Size", "Speed"},
            {"Id", "Name", "Size", "Speed"}},
        {"deep", "Test_Disk", true, false, CIMPropertyList(), {"Id", "Name", "Size", "Speed"},
            {"Id", "Name", "Size", "Speed", "Tier"}},
        // LocalOnly is ignored for instances: inherited properties stay.
        {"local, shallow", "Test_FastDisk", false, true, CIMPropertyList(), none,
            {"Id", "Name", "Size", "Speed", "Tier"}},
        {"local, deep", "Test_Disk", true, true, CIMPropertyList(), {"Id", "Name", "Size", "Speed"},
            {"Id", "Name", "Size", "Speed", "Tier"}},
        {"listed", "Test_Disk", true, false, propertyList({"name", "Tier", "NoSuch"}), {"Name"},
            {"Name", "Tier"}},
        {"empty list", "Test_Disk", true, false, propertyList({}), {"-"}, {"-"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        Array<CIMInstance> found = server().enumerateInstances(
            alice, TEST_NS, c.className, c.deep, c.localOnly, false, false, c.list);
        for (Uint32 i = 0; i < found.size(); ++i)
        {
            const std::string id = idsOf(Array<CIMInstance>(&found[i], 1))[0];
            std::vector<std::string> names = propertyNames(found[i]);
            if (names.empty())
                names.push_back("-");
            if (id == "Disk1" || id == "Fast1")
            {
                EXPECT_EQ(names, id == "Disk1" ? c.disk1 : c.fast1) << id;
            }
        }
    }
}

// A streamed answer gets each instance with the complete name it is
// answered under, whether the instance is passed on as delivered or
// rebuilt without the properties the request leaves out (Fast1, of a
// subclass, always loses its own property in a shallow enumeration).
TEST_F(DispatchTest, StreamedInstancesComeWithTheirCompletePath)
{
    for (const CIMPropertyList& list : {CIMPropertyList(), propertyList({"Name"})})
    {
        SCOPED_TRACE(list.isNull() ? "kept whole" : "property list");
        std::vector<std::string> seen;
        server().enumerateInstances(alice, TEST_NS, "Test_Disk", false, false, false, false, list,
            [&](const CIMInstance& instance, const CIMObjectPath& path) {
                EXPECT_EQ(path.getHost(), "testhost");
                EXPECT_TRUE(path.getNameSpace().equal(TEST_NS));
                EXPECT_TRUE(path.getClassName().equal(instance.getClassName()));
                ASSERT_EQ(path.getKeyBindings().size(), 1u);
                EXPECT_EQ(instance.getPropertyCount(), list.isNull() ? 4u : 1u);
                seen.push_back(static_cast<const char*>(path.getKeyBindings()[0].getValue().getCString()));
            });
        EXPECT_THAT(seen, ElementsAre("Disk1", "Disk2", "Fast1"));
    }
}

TEST_F(DispatchTest, QualifiersAndClassOriginsAreReturnedOnlyWhenAsked)
{
    for (bool asked : {false, true})
    {
        SCOPED_TRACE(asked);
        CIMInstance d = get(disk("Disk1"), asked);
        CIMConstProperty name = d.getProperty(d.findProperty("Name"));
        EXPECT_EQ(name.getQualifierCount(), asked ? 1u : 0u);
        EXPECT_EQ(name.getClassOrigin().getString(), asked ? "Test_Element" : "");
    }
    // The provider's own objects are left alone.
    CIMInstance again = get(disk("Disk1"), true);
    EXPECT_EQ(again.getProperty(again.findProperty("Name")).getQualifierCount(), 1u);
}

TEST_F(DispatchTest, InstanceOperationsReachTheProviderAndStaticInstancesAreReadOnly)
{
    CIMInstance newDisk("Test_Disk");
    newDisk.addProperty(CIMProperty("Id", String("Disk3")));
    newDisk.addProperty(CIMProperty("Size", Uint32(30)));
    CIMObjectPath created = server().createInstance(alice, TEST_NS, newDisk);
    EXPECT_EQ(created.toString(), "//testhost/root/test:Test_Disk.Id=\"Disk3\"");

    server().setProperty(alice, TEST_NS, disk("Disk3"), "Size", CIMValue(Uint32(33)));
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_DiskProvider.modifyInstance"),
        ElementsAre("Test_DiskProvider.modifyInstance //testhost/root/test:Test_Disk.Id=\"Disk3\" pl=Size"));
    EXPECT_EQ(server().getProperty(alice, TEST_NS, disk("Disk3"), "Size"), CIMValue(Uint32(33)));
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_DiskProvider.getInstance").back(),
        ::testing::HasSubstr("pl=Size"));

    server().deleteInstance(alice, TEST_NS, disk("Disk3"));
    EXPECT_EQ(cimErrorOf([&] { get(disk("Disk3")); }), CIM_ERR_NOT_FOUND);

    CIMInstance tape = get(disk("Tape1", "Test_Tape"));
    EXPECT_EQ(tape.getProperty(tape.findProperty("Label")).getValue(), CIMValue(String("L1")));
    EXPECT_EQ(
        server().getProperty(alice, TEST_NS, disk("Tape2", "Test_Tape"), "Label"), CIMValue(String("L2")));

    CIMInstance keyless("Test_Disk");
    keyless.addProperty(CIMProperty("Size", Uint32(1)));
    CIMInstance newTape("Test_Tape");
    newTape.addProperty(CIMProperty("Id", String("Tape3")));
    struct Case
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
    };
    const Case cases[] = {
        {"unknown namespace",
            [&] {
                server().enumerateInstances(
                    alice, "root/none", "Test_Disk", true, false, false, false, CIMPropertyList());
            },
            CIM_ERR_INVALID_NAMESPACE},
        {"unknown class", [&] { server().enumerateInstanceNames(alice, TEST_NS, "Test_Nothing"); },
            CIM_ERR_INVALID_CLASS},
        {"no such disk", [&] { get(disk("Disk9")); }, CIM_ERR_NOT_FOUND},
        {"no such tape", [&] { get(disk("Tape9", "Test_Tape")); }, CIM_ERR_NOT_FOUND},
        {"undeclared property", [&] { server().getProperty(alice, TEST_NS, disk("Disk1"), "Colour"); },
            CIM_ERR_NO_SUCH_PROPERTY},
        {"wrong property type",
            [&] { server().setProperty(alice, TEST_NS, disk("Disk1"), "Size", CIMValue(String("big"))); },
            CIM_ERR_TYPE_MISMATCH},
        {"modify without keys",
            [&] { server().modifyInstance(alice, TEST_NS, keyless, false, CIMPropertyList()); },
            CIM_ERR_INVALID_PARAMETER},
        {"create a static instance", [&] { server().createInstance(alice, TEST_NS, newTape); },
            CIM_ERR_NOT_SUPPORTED},
        {"delete a static instance",
            [&] { server().deleteInstance(alice, TEST_NS, disk("Tape1", "Test_Tape")); },
            CIM_ERR_NOT_SUPPORTED},
        {"create a class", [&] { server().createClass(alice, TEST_NS, CIMClass("Test_New")); },
            CIM_ERR_NOT_SUPPORTED},
        {"query", [&] { server().execQuery(alice, TEST_NS, "WQL", "SELECT * FROM Test_Disk"); },
            CIM_ERR_NOT_SUPPORTED},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(cimErrorOf(c.call), c.code);
    }
}

TEST_F(DispatchTest, ResultsAreReturnedEvenWithoutComplete)
{
    EXPECT_THAT(idsOf(server().enumerateInstances(
                    alice, TEST_NS, "Test_Pool", true, false, false, false, CIMPropertyList())),
        ElementsAre("Pool1"));
    CIMInstance pool = get(disk("Pool1", "Test_Pool"));
    EXPECT_EQ(pool.getPath().toString(), "//testhost/root/test:Test_Pool.Id=\"Pool1\"");

    Array<CIMParamValue> out;
    EXPECT_EQ(invoke("NoComplete", Array<CIMParamValue>(), out), CIMValue(Uint32(7)));
    EXPECT_EQ(paramNamed(out, "Ignored"), CIMValue(String("out")));

    Array<CIMParamValue> none;
    EXPECT_TRUE(invoke("NoReturn", Array<CIMParamValue>(), none).isNull());
    EXPECT_EQ(none.size(), 0u);
}

// ---- failures -------------------------------------------------------------------

TEST_F(DispatchTest, ProviderFailuresBecomeTheResponsesCIMError)
{
    struct Case
    {
        Array<CIMParamValue> in;
        const char* method;
        int code;
        const char* message;
    };
    const Case cases[] = {
        {params({param("Code", CIMValue(Uint32(4096))), param("Text", CIMValue(String("job started")))}),
            "Fail", 4096, "job started"},
        {params({param("Code", CIMValue(Uint32(5))), param("Text", CIMValue(String("bad volume")))}), "Fail",
            5, "bad volume"},
        {params({param("Kind", CIMValue(String("notfound")))}), "Throw", CIM_ERR_NOT_FOUND, "gone away"},
        {params({param("Kind", CIMValue(String("std")))}), "Throw", CIM_ERR_FAILED, "a standard failure"},
        {params({param("Kind", CIMValue(String("pegasus")))}), "Throw", CIM_ERR_FAILED,
            "DateTime is out of range : year 99999"},
        {params({param("Kind", CIMValue(String("other")))}), "Throw", CIM_ERR_FAILED, "Unknown error."},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.message);
        std::string message;
        Array<CIMParamValue> out;
        EXPECT_EQ(cimErrorOf([&] { invoke(c.method, c.in, out); }, &message), c.code);
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(out.size(), 0u);
    }
    // Failures that are not CIM errors are provider faults and are logged.
    EXPECT_EQ(
        logLines("2 provider ZdaTestModule/Test_ServiceProvider failed with a non-CIM exception", true), 3);

    // A client sees the code and the description text.
    CIMClient client;
    client.connectLocal();
    Array<CIMParamValue> out;
    std::string message;
    EXPECT_EQ(
        cimErrorOf([&] { client.invokeMethod(TEST_NS, service(), "Fail", cases[0].in, out); }, &message),
        4096);
    EXPECT_EQ(message, "Unrecognized CIM status code \"4096\": job started");
    EXPECT_EQ(cimErrorOf([&] { client.getInstance(TEST_NS, disk("Disk9")); }, &message), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(message, "CIM_ERR_NOT_FOUND: no disk //testhost/root/test:Test_Disk.Id=\"Disk9\"");
}

// The streamed forms hand each result on while the provider delivers; a
// consumer that fails ends the operation with its own exception, even when
// the provider catches it and carries on, and no provider fault is logged.
TEST_F(DispatchTest, AFailingConsumerEndsAStreamedOperationWithItsOwnException)
{
    struct ConsumerGaveUp
    {};
    std::size_t consumed = 0;
    auto giveUpAtTen = [&](const auto&...) {
        if (++consumed == 10)
            throw ConsumerGaveUp();
    };
    const std::function<void()> operations[] = {
        [&] {
            server().enumerateInstances(
                alice, TEST_NS, "Test_Bulk", true, false, false, false, CIMPropertyList(), giveUpAtTen);
        },
        [&] { server().enumerateInstanceNames(alice, TEST_NS, "Test_Bulk", giveUpAtTen); },
    };
    for (const auto& operation : operations)
    {
        consumed = 0;
        EXPECT_THROW(operation(), ConsumerGaveUp);
        EXPECT_EQ(consumed, 10u);
    }
    // The provider met a failed delivery for each of the other 2,991 objects.
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_BulkProvider"),
        ElementsAre("Test_BulkProvider refused 2991", "Test_BulkProvider refused 2991"));
    EXPECT_EQ(logLines("failed with a non-CIM exception"), 0);

    // Results come finished, as the Array forms return them.
    std::vector<std::string> paths;
    server().associatorNames(alice, TEST_NS, disk("Disk1"), CIMName(), CIMName(), String(), String(),
        [&](const CIMObjectPath& path) { paths.push_back((const char*)path.toString().getCString()); });
    EXPECT_THAT(paths, ::testing::Contains("//testhost/root/test:Test_Pool.Id=\"Pool1\""));
}

TEST_F(DispatchTest, ProvidersThatCannotBeLoadedFailClearlyAndStayFailed)
{
    struct Case
    {
        const char* className;
        const char* provider;
        const char* why;
    };
    const Case cases[] = {
        {"Test_Broken", "ZdaMissingModule/Test_BrokenProvider", "libZdaNoSuchLibrary.so"},
        {"Test_Nameless", "ZdaTestModule/Test_NoSuchProvider", "creates no provider of that name"},
        {"Test_FailInit", "ZdaTestModule/Test_FailInitProvider",
            "its initialize failed: the device is not ready"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.className);
        for (int attempt = 0; attempt < 2; ++attempt)
        {
            std::string message;
            EXPECT_EQ(
                cimErrorOf([&] { server().enumerateInstanceNames(alice, TEST_NS, c.className); }, &message),
                CIM_ERR_FAILED);
            EXPECT_THAT(message, ::testing::HasSubstr(c.provider));
            EXPECT_THAT(message, ::testing::HasSubstr(c.why));
        }
        EXPECT_EQ(logLines("2 The provider " + std::string(c.provider), true), 1);
    }
    EXPECT_EQ(zda_test_providers::initializeCount("Test_FailInitProvider"), 1);
    EXPECT_EQ(zda_test_providers::terminateCount("Test_FailInitProvider"), 1);

    // A provider without the interface a class is registered for.
    std::string message;
    Array<CIMParamValue> out;
    EXPECT_EQ(cimErrorOf(
                  [&] {
                      server().invokeMethod(
                          alice, TEST_NS, disk("Pool1", "Test_Pool"), "Reset", Array<CIMParamValue>(), out);
                  },
                  &message),
        CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(message, "Invalid provider interface.");
}

// ---- methods ----------------------------------------------------------------------

// An embedded instance as a client writes it in a string.
const char DISK_TEXT[] =
    "<INSTANCE CLASSNAME=\"Test_Disk\"><PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>Disk9</VALUE>"
    "</PROPERTY></INSTANCE>";

TEST_F(DispatchTest, UntypedParametersAreTypedFromTheMethodDeclaration)
{
    Array<CIMParamValue> out;
    CIMValue result = invoke("Echo",
        params({untypedParam("small", "7"), untypedParam("Big", {"1", "-2"}), untypedParam("Flag", "TRUE"),
            untypedParam("When", "20240102030405.000000+000"),
            untypedParam("Item", "root/test:Test_Disk.Id=\"Disk1\""), untypedParam("Text", "hi"),
            untypedParam("Ratio", "0.5"), untypedParam("Setting", DISK_TEXT)}),
        out);
    EXPECT_EQ(result, CIMValue(Uint32(0)));
    String summary;
    paramNamed(out, "Summary").get(summary);
    const std::string text = (const char*)summary.getCString();
    for (const char* expected :
        {"small=uint16:7 ", "Big=sint64[]:", "Flag=boolean:", "When=datetime:20240102",
            "Item=reference:", "Text=string:hi ", "Ratio=real64:", "Setting=instance:"})
        EXPECT_THAT(text, ::testing::HasSubstr(expected));
    EXPECT_THAT(text, ::testing::Not(::testing::HasSubstr("?")));

    struct Case
    {
        const char* what;
        CIMParamValue given;
        CIMStatusCode code;
    };
    const Case cases[] = {
        {"out of range", untypedParam("Small", "70000"), CIM_ERR_INVALID_PARAMETER},
        {"not a number", untypedParam("Small", "seven"), CIM_ERR_INVALID_PARAMETER},
        {"not a date-time", untypedParam("When", "yesterday"), CIM_ERR_INVALID_PARAMETER},
        {"array for a scalar", untypedParam("Small", {"1"}), CIM_ERR_TYPE_MISMATCH},
        {"scalar for an array", untypedParam("Big", "1"), CIM_ERR_TYPE_MISMATCH},
        {"undeclared", untypedParam("Bogus", "1"), CIM_ERR_INVALID_PARAMETER},
        {"no embedded object", untypedParam("Setting", "<VALUE>1</VALUE>"), CIM_ERR_INVALID_PARAMETER},
        {"not XML", untypedParam("Setting", "Id=Disk1"), CIM_ERR_INVALID_PARAMETER},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        Array<CIMParamValue> ignored;
        EXPECT_EQ(cimErrorOf([&] { invoke("Echo", params({c.given}), ignored); }), c.code);
    }
    // The same text typed as a string is an instance too.
    invoke("Echo", params({CIMParamValue("Setting", CIMValue(String(DISK_TEXT)), true)}), out);
    paramNamed(out, "Summary").get(summary);
    EXPECT_THAT((const char*)summary.getCString(), ::testing::HasSubstr("Setting=instance:"));
    Array<CIMParamValue> ignored;
    EXPECT_EQ(
        cimErrorOf([&] { invoke("Launch", Array<CIMParamValue>(), ignored); }), CIM_ERR_METHOD_NOT_FOUND);
}

// ---- associations -------------------------------------------------------------------

TEST_F(DispatchTest, AssociationFiltersChooseTheAssociationsAndResults)
{
    struct Case
    {
        const char* assocClass;
        const char* resultClass;
        const char* role;
        const char* resultRole;
        std::vector<std::string> found;
        bool providerAsked;
    };
    const Case fromDisk[] = {
        {"", "", "", "", {"Pool1", "Tape1", "TapeGone"}, true},
        {"Test_Component", "", "", "", {"Pool1"}, true},
        {"Test_Backup", "", "", "", {"Tape1", "TapeGone"}, false},
        {"", "Test_Tape", "", "", {"Tape1", "TapeGone"}, false},
        {"", "Test_Pool", "", "", {"Pool1"}, true},
        {"", "", "part", "", {"Pool1"}, true},
        {"", "", "Source", "", {"Tape1", "TapeGone"}, false},
        {"", "", "Group", "", {}, false},
        {"", "", "", "Target", {"Tape1", "TapeGone"}, false},
        {"", "", "", "Group", {"Pool1"}, true},
        {"", "Test_Disk", "", "", {}, false},
    };
    for (const Case& c : fromDisk)
    {
        SCOPED_TRACE(std::string(c.assocClass) + "|" + c.resultClass + "|" + c.role + "|" + c.resultRole);
        const size_t askedBefore = zda_test_providers::notesStartingWith("Test_ComponentProvider").size();
        EXPECT_EQ(
            ids(associatorNames(disk("Disk1"), c.assocClass, c.resultClass, c.role, c.resultRole)), c.found);
        EXPECT_EQ(zda_test_providers::notesStartingWith("Test_ComponentProvider").size() > askedBefore,
            c.providerAsked);
    }
    // Each provider is asked with its own association class and the
    // client's other filters; the server narrows to the result class.
    EXPECT_EQ(ids(associatorNames(disk("Pool1", "Test_Pool"), "", "Test_Disk")),
        (std::vector<std::string>{"Disk1", "Fast1"}));
    EXPECT_EQ(zda_test_providers::notesStartingWith("Test_ComponentProvider").back(),
        "Test_ComponentProvider.associatorNames assoc=Test_Component result=Test_Disk role= resultRole= user=alice");

    EXPECT_EQ(server().referenceNames(alice, TEST_NS, disk("Disk1"), CIMName(), String()).size(), 3u);
    EXPECT_EQ(server().referenceNames(alice, TEST_NS, disk("Disk1"), "Test_Backup", String()).size(), 2u);
    EXPECT_EQ(server().referenceNames(alice, TEST_NS, disk("Disk1"), CIMName(), "Part").size(), 1u);
    Array<CIMObject> links = server().references(
        alice, TEST_NS, disk("Disk1"), "Test_Component", String(), false, false, CIMPropertyList());
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].getPath().getHost(), "testhost");

    EXPECT_EQ(cimErrorOf([&] { associatorNames(disk("Disk1"), "Test_Nothing"); }), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(cimErrorOf([&] { associatorNames(disk("X", "Test_Nothing")); }), CIM_ERR_INVALID_PARAMETER);
}

TEST_F(DispatchTest, AssociationOperationsOnAClassAnswerWithClasses)
{
    auto names = [](const Array<CIMObjectPath>& paths) {
        std::vector<std::string> out;
        for (Uint32 i = 0; i < paths.size(); ++i)
            out.push_back((const char*)paths[i].toString().getCString());
        std::sort(out.begin(), out.end());
        return out;
    };
    const CIMObjectPath diskClass("Test_Disk");
    EXPECT_THAT(names(associatorNames(diskClass)),
        ElementsAre("//testhost/root/test:Test_Pool", "//testhost/root/test:Test_Tape"));
    EXPECT_THAT(
        names(associatorNames(diskClass, "", "", "Source")), ElementsAre("//testhost/root/test:Test_Tape"));
    EXPECT_THAT(names(server().referenceNames(alice, TEST_NS, diskClass, CIMName(), "Part")),
        ElementsAre("//testhost/root/test:Test_Component"));
    Array<CIMObject> classes = server().associators(alice, TEST_NS, CIMObjectPath("Test_Pool"), CIMName(),
        CIMName(), String(), String(), false, false, CIMPropertyList());
    ASSERT_EQ(classes.size(), 1u);
    EXPECT_TRUE(classes[0].isClass());
    EXPECT_EQ(classes[0].getClassName().getString(), "Test_Element");
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_ComponentProvider"), ::testing::IsEmpty());
}

TEST_F(DispatchTest, AssociatorsReturnCompleteFilteredInstancesAndSkipDanglingLinks)
{
    Array<CIMObject> parts = server().associators(alice, TEST_NS, disk("Pool1", "Test_Pool"), CIMName(),
        CIMName(), String(), String(), false, false, propertyList({"Name"}));
    EXPECT_THAT(idsOf(parts), ElementsAre("Disk1", "Fast1", "Tape1"));
    for (Uint32 i = 0; i < parts.size(); ++i)
    {
        CIMInstance part(parts[i]);
        EXPECT_THAT(propertyNames(part), ElementsAre("Name"));
        EXPECT_EQ(part.getPath().getHost(), "testhost");
    }
    // The provider fetched the far ends through its handle, as alice.
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_DiskProvider.getInstance"),
        ElementsAre(::testing::EndsWith("user=alice")));

    Array<CIMObject> tapes = server().associators(alice, TEST_NS, disk("Disk1"), "Test_Backup", CIMName(),
        String(), String(), false, false, CIMPropertyList());
    EXPECT_THAT(idsOf(tapes), ElementsAre("Tape1"));
}

// ---- identities and callbacks ------------------------------------------------------

TEST_F(DispatchTest, UpcallsCarryTheRequestsIdentityAndLocalClientsTheLocalOne)
{
    Array<CIMParamValue> out;
    invoke("User", Array<CIMParamValue>(), out, alice);
    EXPECT_EQ(paramNamed(out, "User"), CIMValue(String("alice")));
    EXPECT_EQ(paramNamed(out, "Address"), CIMValue(String("192.0.2.7")));

    Array<CIMParamValue> anonymous;
    invoke("User", Array<CIMParamValue>(), anonymous);
    EXPECT_EQ(paramNamed(anonymous, "User"), CIMValue(String("admin")));

    Array<CIMParamValue> upcalls;
    EXPECT_EQ(invoke("Upcalls", Array<CIMParamValue>(), upcalls, alice), CIMValue(Uint32(0)));
    EXPECT_EQ(paramNamed(upcalls, "Handle"), CIMValue(String("alice disks=3")));
    EXPECT_EQ(paramNamed(upcalls, "Client"), CIMValue(String("admin tapes=2")));

    localUser = "operator";
    restartHost();
    Array<CIMParamValue> again;
    invoke("Upcalls", Array<CIMParamValue>(), again, alice);
    EXPECT_EQ(paramNamed(again, "Client"), CIMValue(String("operator tapes=2")));
}

TEST_F(DispatchTest, ProvidersMayCallBackDuringTheirOwnInitialize)
{
    // Initialization belongs to no request: its upcalls run as the local
    // user even though alice's request set it off.
    EXPECT_EQ(server().enumerateInstanceNames(alice, TEST_NS, "Test_InitCaller").size(), 1u);
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_InitCallerProvider"),
        ElementsAre("Test_InitCallerProvider handle ok admin disks=3",
            "Test_InitCallerProvider client ok admin tapes=2"));

    // Reaching its own class from its initialize is refused, not a deadlock.
    EXPECT_EQ(server().enumerateInstanceNames(alice, TEST_NS, "Test_SelfInit").size(), 1u);
    EXPECT_THAT(zda_test_providers::notesStartingWith("Test_SelfInitProvider"),
        ElementsAre("Test_SelfInitProvider self failed 1"));
}

TEST_F(DispatchTest, ProvidersAreInitializedOnceAndTerminatedAtShutdown)
{
    for (int i = 0; i < 3; ++i)
        get(disk("Disk1"));
    server().enumerateInstanceNames(alice, TEST_NS, "Test_Disk");
    EXPECT_EQ(zda_test_providers::initializeCount("Test_DiskProvider"), 1);
    EXPECT_EQ(zda_test_providers::initializeCount("Test_FastDiskProvider"), 1);
    EXPECT_EQ(host().providers().initializedCount(), 2u);
    EXPECT_THAT(host().registrationProblems(), ::testing::IsEmpty());

    host().shutdown();
    EXPECT_EQ(zda_test_providers::terminateCount("Test_DiskProvider"), 1);
    EXPECT_EQ(zda_test_providers::terminateCount("Test_FastDiskProvider"), 1);
    EXPECT_EQ(cimErrorOf([&] { server().enumerateInstanceNames(alice, TEST_NS, "Test_Disk"); }),
        CIM_ERR_SERVER_IS_SHUTTING_DOWN);
    CIMClient client;
    EXPECT_THROW(client.connectLocal(), CannotConnectException);
}

TEST_F(DispatchTest, UnusableRegistrationsAreReportedAndLeftOut)
{
    zda::server::HostOptions o = options();
    o.mofDirectories.push_back(ZDA_TEST_PROVIDER_MOF_DIR "/../bad-registrations");
    host().shutdown();
    zda::server::InProcessHost withBad(o);
    std::vector<std::string> problems = withBad.registrationProblems();
    ASSERT_EQ(problems.size(), 4u);
    std::sort(problems.begin(), problems.end());
    EXPECT_THAT(problems[0], ::testing::HasSubstr("CapabilityID=\"1\""));
    EXPECT_THAT(problems[0], ::testing::HasSubstr("registers a class that already has a provider"));
    EXPECT_THAT(problems[1], ::testing::HasSubstr("names a provider without a PG_Provider instance"));
    EXPECT_THAT(problems[2], ::testing::HasSubstr("provider type 4 is not served"));
    EXPECT_THAT(
        problems[3], ::testing::HasSubstr("Test_OrphanProvider names the unknown module ZdaUnknownModule"));
    // The first registration of a class stays in force.
    EXPECT_EQ(
        withBad.registry().find(TEST_NS, "Test_Disk", zda::server::ProviderType::Instance)->providerName,
        "Test_DiskProvider");
    EXPECT_FALSE(withBad.registry().find(TEST_NS, "Test_Tape", zda::server::ProviderType::Instance));
}

TEST_F(DispatchTest, TheObserverHearsOfOutermostOperationsOnly)
{
    std::vector<std::string> heard;
    server().setOperationObserver([&](const char* operation) { heard.push_back(operation); });
    Array<CIMParamValue> out;
    invoke("Upcalls", Array<CIMParamValue>(), out, alice);
    EXPECT_EQ(cimErrorOf([&] {
        server().getClass(alice, TEST_NS, "Test_Nothing", false, false, false, CIMPropertyList());
    }),
        CIM_ERR_NOT_FOUND);
    EXPECT_THAT(heard, ElementsAre("InvokeMethod", "GetClass"));
}

// ---- concurrency -------------------------------------------------------------------
// Requests from many threads at once, first requests racing to initialize
// the providers, and providers whose initializations wait for each other
// (worth running under ThreadSanitizer).

class ConcurrencyTest : public TestModuleFixture
{};

TEST_F(ConcurrencyTest, ConcurrentRequestsGetFullAnswersAndInitializeEachProviderOnce)
{
    constexpr int threads = 6;
    constexpr int rounds = 15;
    std::atomic<int> ready{0};
    auto worker = [&](int n) {
        const OperationContext context = zda::server::InProcessHost::contextFor(
            ("user" + std::to_string(n)).c_str());
        // Start together, so that first requests race for initialization.
        ++ready;
        while (ready.load() < threads)
            std::this_thread::yield();
        for (int round = 0; round < rounds; ++round)
        {
            try
            {
                EXPECT_EQ(server()
                              .enumerateInstances(context, TEST_NS, "Test_Element", true, false, false, false,
                                  CIMPropertyList())
                              .size(),
                    5u);
                EXPECT_EQ(server()
                              .associatorNames(context, TEST_NS, disk("Pool1", "Test_Pool"), CIMName(),
                                  CIMName(), String(), String())
                              .size(),
                    3u);
                Array<CIMParamValue> out;
                server().invokeMethod(context, TEST_NS, service(), "Upcalls", Array<CIMParamValue>(), out);
                EXPECT_EQ(paramNamed(out, "Handle"),
                    CIMValue(String(("user" + std::to_string(n) + " disks=3").c_str())));
                CIMClient client;
                client.connectLocal();
                EXPECT_EQ(
                    client.getInstance(TEST_NS, disk("Fast1", "Test_FastDisk"), false).getPropertyCount(),
                    5u);
            }
            catch (const Exception& e)
            {
                ADD_FAILURE() << (const char*)e.getMessage().getCString();
            }
        }
    };
    std::vector<std::thread> pool;
    for (int n = 0; n < threads; ++n)
        pool.emplace_back(worker, n);
    for (std::thread& t : pool)
        t.join();
    for (const char* provider :
        {"Test_DiskProvider", "Test_FastDiskProvider", "Test_ComponentProvider", "Test_ServiceProvider"})
        EXPECT_EQ(zda_test_providers::initializeCount(provider), 1) << provider;
}

TEST_F(ConcurrencyTest, ProvidersReachingEachOtherFromInitializeDoNotDeadlock)
{
    zda_test_providers::setCycleRendezvous(true);
    const OperationContext context = zda::server::InProcessHost::contextFor("alice");
    Uint32 a = 0, b = 0;
    std::thread first([&] { a = server().enumerateInstanceNames(context, TEST_NS, "Test_CycleA").size(); });
    std::thread second([&] { b = server().enumerateInstanceNames(context, TEST_NS, "Test_CycleB").size(); });
    first.join();
    second.join();
    EXPECT_EQ(a, 1u);
    EXPECT_EQ(b, 1u);
    // Both initializations ran at once: one waited for the other, whose own
    // request for the first was refused instead of waiting in a cycle.
    std::vector<std::string> outcomes = zda_test_providers::notesStartingWith("Test_Cycle");
    std::sort(outcomes.begin(), outcomes.end());
    ASSERT_EQ(outcomes.size(), 2u);
    const bool aRefused = outcomes[0] == "Test_CycleAProvider other failed 1";
    EXPECT_EQ(
        outcomes[0], aRefused ? "Test_CycleAProvider other failed 1" : "Test_CycleAProvider other ok 1");
    EXPECT_EQ(
        outcomes[1], aRefused ? "Test_CycleBProvider other ok 1" : "Test_CycleBProvider other failed 1");
    EXPECT_EQ(zda_test_providers::initializeCount("Test_CycleAProvider"), 1);
    EXPECT_EQ(zda_test_providers::initializeCount("Test_CycleBProvider"), 1);
}

// ---- response handlers ----------------------------------------------------------------

TEST(ResponseCollectorTest, RefusesWhatAServerRefusesAndKeepsEverythingElse)
{
    using namespace zda::server;
    const CIMInstance one = CIMInstance("Test_Disk");
    struct Case
    {
        const char* what;
        std::function<void()> call;
        const char* message;
    };
    const Case cases[] = {
        {"second instance for getInstance",
            [&] {
                InstanceCollector c(true);
                c.deliver(one);
                c.deliver(one);
            },
            "Too many objects delivered."},
        {"complete without an instance",
            [&] {
                InstanceCollector c(true);
                c.complete();
            },
            "Too few objects delivered."},
        {"uninitialized instance", [&] { InstanceCollector(false).deliver(CIMInstance()); },
            "The object is not initialized."},
        {"path without a class", [&] { ObjectPathCollector().deliver(CIMObjectPath()); },
            "The object is not initialized."},
        {"uninitialized object", [&] { ObjectCollector().deliver(CIMObject()); },
            "The object is not initialized."},
        {"null return value", [&] { MethodResultCollector().deliver(CIMValue()); },
            "The object is not initialized."},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        std::string message;
        EXPECT_EQ(cimErrorOf(c.call, &message), CIM_ERR_FAILED);
        EXPECT_EQ(message, c.message);
    }

    InstanceCollector many(false);
    many.deliver(one);
    Array<CIMInstance> two;
    two.append(one);
    two.append(one);
    many.deliver(two);
    EXPECT_EQ(many.instances().size(), 3u);
    EXPECT_FALSE(many.completed());
}

// ---- test support ---------------------------------------------------------------------

TEST(SemaphoreCheckingHandlerTest, NotesDeliveriesMadeWhileTheArraySemaphoreIsHeld)
{
    SemaphoreCheckingHandler handler;
    handler.processing();
    handler.deliver(CIMObjectPath("Test_Disk.Id=\"a\""));
    ASSERT_EQ(cim_sem_wait(), 0);
    handler.deliver(CIMObjectPath("Test_Disk.Id=\"b\""));
    cim_sem_post();
    handler.complete();
    EXPECT_EQ(handler.deliveries(), 2);
    EXPECT_EQ(handler.deliveriesUnderSemaphore(), 1);
}

}  // namespace
