// The navigation associations: from the storage system to what it hosts,
// from the replication service to what it affects and to its capabilities.
// One table drives what they share; each row is an association, its two
// roles, where its far ends come from and the superclasses a client names.
// The test array has vvsets and no remote copy; rows about remote copy run
// on the demo array.
#include "replication_fixture.h"

#include <cctype>
#include <stdexcept>

using namespace zda_replication_test;

namespace
{

enum class Kind
{
    ThroughCimom,  // two keys on getInstance; every failure completes
    Affects,       // no key count on getInstance
    HostedByWalk,  // getInstance reads the ends: an empty one answers nothing
    Deliver        // two keys; a failed array read leaves out complete()
};

struct Row
{
    const char* association;
    Kind kind;
    const char* firstRole;  // the system's or the service's
    const char* secondRole;
    const char* farClass;            // the class of the second end
    const char* farSuper;            // a superclass only the second end has
    const char* backSuper;           // a superclass only the first end has
    bool remote;                     // needs the demo array's remote copy
    const char* sample;              // one far end the array surely has
    bool rolesMatchNothing = false;  // no role a request names finds an end
};

const Row ROWS[] = {
    {"ZDA_CapabilitiesOfReplicationService", Kind::ThroughCimom, "ManagedElement", "Capabilities",
        "ZDA_ReplicationServiceCapabilities", "CIM_Capabilities", "CIM_Service", false,
        "ReplicationServiceCapabilities"},
    {"ZDA_ReplicationAffectsElement", Kind::Affects, "AffectingElement", "AffectedElement",
        "ZDA_ReplicationGroup", "CIM_Collection", "CIM_LogicalElement", false, "set1"},
    {"ZDA_ReplicationServiceAffectsRemoteReplicationGroup", Kind::Affects, "AffectingElement",
        "AffectedElement", "ZDA_RemoteReplicationGroup", "CIM_ReplicationGroup", "CIM_Service", true,
        "rcg_fin_sync"},
    {"ZDA_HostedRemoteReplicationGroup", Kind::ThroughCimom, "Antecedent", "Dependent",
        "ZDA_RemoteReplicationGroup", "CIM_SystemSpecificCollection", "CIM_System", true, "rcg_two_targets"},
    {"ZDA_ReplicationAffectsRemoteCollection", Kind::Affects, "AffectingElement", "AffectedElement",
        "ZDA_RemoteReplicationCollection", "CIM_RemoteReplicationCollection", "CIM_ReplicationService", true,
        "siteB_ip"},
    {"ZDA_HostedRemoteReplicationCollection", Kind::HostedByWalk, "Antecedent", "Dependent",
        "ZDA_RemoteReplicationCollection", "CIM_ConnectivityCollection", "CIM_ComputerSystem", true, "siteC"},
    {"ZDA_ReplicationAffectsEntity", Kind::Deliver, "AffectingElement", "AffectedElement",
        "ZDA_ReplicationEntity", "CIM_ReplicationEntity", "CIM_Service", true, "RG:rcg_fin_sync.r:zda-siteB",
        true},
    {"ZDA_HostedRemoteSAP", Kind::HostedByWalk, "Antecedent", "Dependent", "ZDA_RemoteServiceAccessPoint",
        "CIM_RemoteServiceAccessPoint", "CIM_System", true, "siteD"},
    {"ZDA_HostedReplicationGroup", Kind::ThroughCimom, "Antecedent", "Dependent", "ZDA_ReplicationGroup",
        "CIM_ReplicationGroup", "CIM_ComputerSystem", false, "set_one"},
};

String upper(std::string text)
{
    for (char& c : text)
        c = char(std::toupper(static_cast<unsigned char>(c)));
    return String(text.c_str());
}

class NavigationTest : public ReplicationTest
{
protected:
    // The system (for the hosted associations) or the service.
    CIMObjectPath firstEnd(const Row& row)
    {
        const bool hosted = std::string(row.firstRole) == "Antecedent";
        const Array<CIMObjectPath> paths = namesOf(hosted ? "ZDA_StorageSystem" : "ZDA_ReplicationService");
        EXPECT_EQ(paths.size(), 1u);
        return paths.size() ? paths[0] : CIMObjectPath();
    }
    // A far end of the row's class that the array does not have.
    CIMObjectPath missingFarEnd(const Row& row)
    {
        const CIMObjectPath any = namesOf(row.farClass)[0];
        const bool byID = ZDA_Common::getStringProperty(any, "InstanceID").size() > 0;
        return withKey(any, byID ? "InstanceID" : "Name", "KX_ORLA:no_such");
    }
    static void load(const Row& row)
    {
        if (row.remote)
            zdasim_reset_demo_array();
        else
            zdasim_reset_test_array();
    }
};

TEST_F(NavigationTest, EveryWalkWorksBothWays)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        load(row);
        const CIMObjectPath first = firstEnd(row);
        const Labels every = labels(namesOf(row.farClass));
        ASSERT_EQ(every.count(row.sample), 1u);
        const char* firstRole = row.rolesMatchNothing ? "" : row.firstRole;
        const char* secondRole = row.rolesMatchNothing ? "" : row.secondRole;

        // From the first end: every object of the far class, as names, as
        // instances with the roles named, and through the association's links,
        // which are all the association's instances.
        Array<CIMObjectPath> ends = far(first, row.association);
        EXPECT_EQ(labels(ends), every);
        EXPECT_EQ(
            assocObjects(first, row.association, firstRole, secondRole, row.farClass).size(), ends.size());
        Array<CIMObjectPath> links = refNames(first, row.association, firstRole);
        EXPECT_EQ(links.size(), ends.size());
        EXPECT_EQ(instancesOf(row.association).size(), ends.size());
        for (Uint32 i = 0; i < links.size(); i++)
        {
            EXPECT_TRUE(ZDA_Common::matchObjectPath(endOf(links[i], row.firstRole), first));
            EXPECT_TRUE(foundByPath(links[i]));
        }

        // From a far end: the first end alone, and each far end's one link.
        for (Uint32 i = 0; i < ends.size(); i++)
        {
            Array<CIMObjectPath> back = assocNames(ends[i], row.association, secondRole);
            ASSERT_EQ(back.size(), 1u) << label(ends[i]);
            EXPECT_TRUE(ZDA_Common::matchObjectPath(back[0], first));
            EXPECT_EQ(refObjects(ends[i], row.association).size(), 1u);
        }
    }
}

TEST_F(NavigationTest, RequestsThatCannotMatchAnswerNothing)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        load(row);
        const CIMObjectPath first = firstEnd(row);
        const CIMObjectPath farEnd = far(first, row.association)[0];
        const CIMName none;
        const CIMObjectPath missing = missingFarEnd(row);
        struct Case
        {
            const char* what;
            CIMObjectPath object;
            bool references;
            CIMName resultClass;
            String role;
            String resultRole;
            bool answered;
        };
        const Case cases[] = {
            {"far class", first, false, row.farClass, "", "", true},
            {"far superclass, roles in capitals", first, false, row.farSuper, upper(row.firstRole),
                upper(row.secondRole), true},
            {"a root shared by both ends", farEnd, false, "CIM_ManagedElement", "", "", true},
            {"association's parent class", farEnd, true, "CIM_ManagedElement", "", "", false},
            {"own class", first, false, first.getClassName(), "", "", false},
            {"way back by a superclass", first, false, row.backSuper, "", "", false},
            {"the far end's role", first, true, none, row.secondRole, "", false},
            {"own role as result role", farEnd, false, none, "", row.secondRole, false},
            {"unknown role", first, false, none, "Owner", "", false},
            {"an object that is not there", missing, false, none, "", "", false},
        };
        for (const Case& c : cases)
        {
            SCOPED_TRACE(c.what);
            const std::string sequence = directNames(
                row.association, c.object, c.references, c.resultClass, c.role, c.resultRole);
            const bool namesRoles = c.role.size() || c.resultRole.size();
            if (c.answered && !(namesRoles && row.rolesMatchNothing))
                EXPECT_EQ(sequence.rfind("processing deliver(path)", 0), 0u) << sequence;
            else if (c.object == missing && row.kind == Kind::Deliver)
                EXPECT_EQ(sequence, "processing complete");  // nothing asked of the server
            else
                EXPECT_EQ(sequence, "");
        }
    }
}

TEST_F(NavigationTest, GetInstanceKeysAndRefusals)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        load(row);
        const CIMObjectPath link = namesOf(row.association)[0];
        CIMObjectPath oneKey = link;
        Array<CIMKeyBinding> keys;
        keys.append(
            CIMKeyBinding(row.firstRole, endOf(link, row.firstRole).toString(), CIMKeyBinding::REFERENCE));
        oneKey.setKeyBindings(keys);
        CIMObjectPath elsewhere = link;
        keys.append(CIMKeyBinding(row.secondRole, missingFarEnd(row).toString(), CIMKeyBinding::REFERENCE));
        elsewhere.setKeyBindings(keys);

        // A walk that reads the reference's ends answers nothing without
        // both; the server reports too few objects.
        const int oneKeyError = row.kind == Kind::Affects ? int(CIM_ERR_NOT_FOUND)
            : row.kind == Kind::HostedByWalk              ? int(CIM_ERR_FAILED)
                                                          : int(CIM_ERR_INVALID_PARAMETER);
        EXPECT_EQ(readError(oneKey), oneKeyError);
        EXPECT_EQ(readError(elsewhere), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(readError(link, "noaccess"), CIM_ERR_ACCESS_DENIED);
        EXPECT_EQ(changeErrors(link), "7 7 7");

        // The kinds that check the class enumerate nothing for another one.
        const std::string other = direct(row.association, [&](auto&, auto& p, auto& h) {
            p.enumerateInstanceNames(admin(), CIMObjectPath("ZDA_StorageVolume"), h);
        });
        const bool checksClass = row.kind == Kind::Affects || row.kind == Kind::HostedByWalk;
        EXPECT_EQ(other.empty(), checksClass) << other;
    }
}

// How many captured log lines contain `text`.
size_t logLinesWith(const char* text)
{
    size_t n = 0;
    for (const auto& line : zda_test::logLines())
        n += line.second.find(text) != std::string::npos;
    return n;
}

const Row& rowOf(const char* association)
{
    for (const Row& row : ROWS)
        if (std::string(row.association) == association)
            return row;
    throw std::logic_error(association);
}

TEST_F(NavigationTest, EntitiesAreAskedForWithTheRolesOfASynchronization)
{
    const Row& row = rowOf("ZDA_ReplicationAffectsEntity");
    load(row);
    const CIMObjectPath service = firstEnd(row);
    struct Case
    {
        const char* role;
        const char* resultRole;
        bool refused;
    };
    // The instances' own roles are refused; the checked ones pass the check
    // and name no end of the instances, so nothing is found either way.
    const Case cases[] = {{"AffectingElement", "", true}, {"", "AffectedElement", true},
        {"SystemElement", "", false}, {"", "SyncedElement", false}, {"SyncedElement", "", true}};
    zdasim_log_capture(1);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.role) + "/" + c.resultRole);
        zdasim_log_clear();
        EXPECT_EQ(directNames(row.association, service, false, CIMName(), c.role, c.resultRole), "");
        EXPECT_EQ(logLinesWith("invalid params"), c.refused ? 1u : 0u);
    }
    zdasim_log_capture(0);
}

TEST_F(NavigationTest, AnArrayFailureAnswersEmpty)
{
    // The walks of the array complete an empty answer, except the one that
    // delivers as it walks, which leaves it without complete().
    for (const char* association :
        {"ZDA_HostedRemoteReplicationCollection", "ZDA_HostedRemoteSAP", "ZDA_ReplicationAffectsEntity"})
    {
        SCOPED_TRACE(association);
        const Row& row = rowOf(association);
        load(row);
        const CIMObjectPath first = firstEnd(row);
        const std::string expected = row.kind == Kind::Deliver ? "processing" : "processing complete";
        EXPECT_EQ(direct(row.association,
                      [&](auto& p, auto&, auto& h) {
                          zdasim_fault_add("api_getRCopy", 1, API_E_INVALID, "broken");
                          p.referenceNames(admin(), first, CIMName(), "", h);
                      }),
            expected);
        zdasim_faults_clear();
        // A busy array: the enumeration's first wait is the walk's.
        EXPECT_EQ(enumerateFailing(association, ""), expected);
    }
}

TEST_F(NavigationTest, AccessPointsNameTheSystemByItsHostName)
{
    const Row& row = rowOf("ZDA_HostedRemoteSAP");
    load(row);
    Array<CIMInstance> links = instancesOf(row.association);
    // One per remote copy target, each seen as an access point.
    ASSERT_EQ(links.size(), namesOf(row.farClass).size());
    ASSERT_GT(links.size(), 0u);
    for (Uint32 i = 0; i < links.size(); i++)
    {
        const CIMObjectPath system = endOf(links[i].getPath(), "Antecedent");
        const CIMObjectPath point = endOf(links[i].getPath(), "Dependent");
        EXPECT_EQ(text(ZDA_Common::getStringProperty(point, "SystemName")), HOST);
        EXPECT_NE(ZDA_Common::getStringProperty(system, "Name"), HOST);
    }
}

}  // namespace
