// The class repository built from the project's MOF: the classes every
// provider fetches, the hierarchy and association queries the dispatcher
// routes by, GetClass filtering, and static instances.
#include "ClassRepository.h"
#include "cim_error_of.h"
#include "MofError.h"
#include "MofParser.h"
#include "SdkText.h"

#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>

using namespace Pegasus;
using zda::server::ClassRepository;

namespace
{

const CIMNamespaceName kZda("root/zda");

const ClassRepository& projectRepository()
{
    static std::unique_ptr<ClassRepository> repository = ClassRepository::loadDirectory(ZDA_MOF_DIR);
    return *repository;
}

using zda_test::cimErrorOf;
using zda_test::text;

std::set<std::string> names(const Array<CIMName>& list)
{
    std::set<std::string> out;
    for (Uint32 i = 0; i < list.size(); ++i)
        out.insert(text(list[i].getString()));
    return out;
}

// ---- the inventory of the array's classes --------------------------------

struct ExpectedClass
{
    const char* name;
    const char* superClass;
    const char* keys;        // the key properties, separated by blanks
    const char* properties;  // a selection, what the providers set or read: "Name:type Name:type[]"
};

const std::vector<ExpectedClass>& inventory()
{
    static const std::vector<ExpectedClass> classes = {
        {"ZDA_ReplicationService", "CIM_ReplicationService",
            "SystemCreationClassName SystemName CreationClassName Name",
            "Caption:string PrimaryOwnerContact:string PrimaryOwnerName:string Started:boolean "
            "StartMode:string"},
        {"ZDA_ReplicationServiceCapabilities", "CIM_ReplicationServiceCapabilities", "InstanceID",
            "ElementName:string SupportedSynchronousActions:uint16[] "
            "SupportedAsynchronousActions:uint16[] SupportedReplicationTypes:uint16[] "
            "SupportedStorageObjects:uint16[]"},
        {"ZDA_ReplicationGroup", "CIM_ReplicationGroup", "InstanceID",
            "ElementName:string Caption:string Description:string Persistent:boolean "
            "ConsistentPointInTime:boolean DeleteOnEmptyElement:boolean DeleteOnUnassociated:boolean "
            "ID:uint32"},
        {"ZDA_RemoteReplicationGroup", "CIM_ReplicationGroup", "InstanceID",
            "Persistent:boolean Domain:string"},
        {"ZDA_RemoteReplicationCollection", "CIM_RemoteReplicationCollection", "InstanceID",
            "ConnectivityStatus:uint16 Active:boolean DeleteOnUnassociated:boolean"},
        {"ZDA_ReplicationEntity", "CIM_ReplicationEntity", "InstanceID",
            "Type:uint16 Element:string EntityID:string ElementName:string Name:string"},
        {"ZDA_RemoteServiceAccessPoint", "CIM_RemoteServiceAccessPoint",
            "SystemCreationClassName SystemName CreationClassName Name",
            "AccessInfo:string InfoFormat:uint16 ProtocolIFType:uint16 OtherTypeDescription:string "
            "OperationalStatus:uint16[] HealthState:uint16"},
        {"ZDA_StorageVolume", "CIM_StorageVolume",
            "SystemCreationClassName SystemName CreationClassName DeviceID",
            "ElementName:string NumberOfBlocks:uint64 VolumeType:uint16 Policy:uint32 "
            "OperationalStatus:uint16[] NameFormat:uint16 NameNamespace:uint16 Usage:uint16 "
            "OtherIdentifyingInfo:string[] IdentifyingDescriptions:string[]"},
        {"ZDA_StorageSetting", "CIM_StorageSetting", "InstanceID",
            "BaseID:uint32 ExpirationTime:datetime RetentionTime:datetime Description:string "
            "UserDSPName:string SnapDSPName:string"},
        {"ZDA_StorageSynchronized", "CIM_StorageSynchronized", "SystemElement SyncedElement",
            "SyncType:uint16 ReplicaType:uint16 Mode:uint16 CopyState:uint16"},
        {"ZDA_StorageSystem", "CIM_ComputerSystem", "CreationClassName Name", ""},
        {"ZDA_DynamicStoragePool", "CIM_StoragePool", "InstanceID", ""},
        {"ZDA_DeltaReplicaStoragePool", "CIM_StoragePool", "InstanceID", ""},
        {"ZDA_ConcreteJob", "CIM_ConcreteJob", "InstanceID", ""},
        {"ZDA_SCSIProtocolFCEndpoint", "CIM_SCSIProtocolEndpoint",
            "SystemCreationClassName SystemName CreationClassName Name", ""},
        {"ZDA_IPProtocolEndpoint", "CIM_IPProtocolEndpoint",
            "SystemCreationClassName SystemName CreationClassName Name", ""},
        {"ZDA_StorageConfigurationService", "CIM_StorageConfigurationService",
            "SystemCreationClassName SystemName CreationClassName Name", ""},
        {"ZDA_ReplicaPoolForStorage", "CIM_Dependency", "Antecedent Dependent", ""},
        {"ZDA_RemoteStorageSynchronized", "CIM_StorageSynchronized", "SystemElement SyncedElement",
            "UndiscoveredElement:uint16 Caption:string Mode:uint16 CopyType:uint16 "
            "DetailedCopyType:uint32 CopyMethodology:uint16 WhenSynced:datetime SyncInterval:datetime "
            "WhenSynchronized:datetime PercentSynced:uint16 SyncPolicy:uint32 SyncMaintained:boolean "
            "SyncType:uint16 RequestedCopyState:uint16 CopyState:uint16 ProgressStatus:uint16 "
            "SyncState:uint16 ReplicaType:uint16 RoleReversed:boolean"},
        {"ZDA_RemoteGroupSynchronized", "CIM_GroupSynchronized", "SystemElement SyncedElement",
            "SyncMaintained:boolean Caption:string Mode:uint16 DetailedCopyType:uint32 "
            "SyncInterval:datetime SyncPolicy:uint32 RelationshipName:string ConsistencyEnabled:boolean "
            "ConsistencyType:uint16 ConsistencyState:uint16 ConsistencyStatus:uint16 RoleReversed:boolean"},
    };
    return classes;
}

std::set<std::string> words(const std::string& list)
{
    std::istringstream in(list);
    return std::set<std::string>(
        std::istream_iterator<std::string>(in), std::istream_iterator<std::string>());
}

TEST(ProjectMof, DefinesEveryInstanceClassWithItsKeysAndProperties)
{
    const ClassRepository& repo = projectRepository();
    for (const ExpectedClass& expected : inventory())
    {
        SCOPED_TRACE(expected.name);
        CIMClass cls = repo.getClass(kZda, expected.name, false, true, false);
        EXPECT_EQ(text(cls.getSuperClassName().getString()), expected.superClass);
        EXPECT_FALSE(cls.isAbstract());
        Array<CIMName> keys;
        cls.getKeyNames(keys);
        EXPECT_EQ(names(keys), words(expected.keys));
        for (const std::string& wanted : words(expected.properties))
        {
            const std::string name = wanted.substr(0, wanted.find(':'));
            Uint32 at = cls.findProperty(name.c_str());
            ASSERT_NE(at, PEG_NOT_FOUND) << name;
            CIMConstProperty p = cls.getProperty(at);
            EXPECT_EQ(name + ":" + cimTypeToString(p.getType()) + (p.isArray() ? "[]" : ""), wanted);
        }
    }
    // The remote group has no ID, unlike the volume set group.
    EXPECT_EQ(repo.getClass(kZda, "ZDA_RemoteReplicationGroup", false).findProperty("ID"), PEG_NOT_FOUND);
}

// Every row of the association table: the class, what it answers to, and
// its two ends with the classes each end takes.
struct ExpectedAssociation
{
    const char* name;
    const char* answersTo;
    const char* firstRole;
    std::vector<const char*> firstClasses;
    const char* secondRole;
    std::vector<const char*> secondClasses;
};

const std::vector<ExpectedAssociation>& associationTable()
{
    static const std::vector<ExpectedAssociation> rows = {
        {"ZDA_MemberOfReplicationGroup", "CIM_MemberOfCollection", "Collection", {"ZDA_ReplicationGroup"},
            "Member", {"ZDA_StorageVolume"}},
        {"ZDA_OrderedMemberOfRemoteReplicationGroup", "CIM_OrderedMemberOfCollection", "Collection",
            {"ZDA_RemoteReplicationGroup", "ZDA_ReplicationGroup"}, "Member", {"ZDA_StorageVolume"}},
        {"ZDA_MemberOfRemoteReplicationCollection", "CIM_MemberOfCollection", "Collection",
            {"ZDA_RemoteReplicationCollection"}, "Member", {"ZDA_RemoteServiceAccessPoint"}},
        {"ZDA_SAPAvailableForRemoteReplicaVolume", "CIM_SAPAvailableForElement", "ManagedElement",
            {"ZDA_StorageVolume"}, "AvailableSAP",
            {"ZDA_SCSIProtocolFCEndpoint", "ZDA_IPProtocolEndpoint", "ZDA_RemoteServiceAccessPoint"}},
        {"ZDA_SAPAvailableForRemoteReplicationGroup", "CIM_SAPAvailableForElement", "ManagedElement",
            {"ZDA_RemoteReplicationGroup"}, "AvailableSAP",
            {"ZDA_SCSIProtocolFCEndpoint", "ZDA_IPProtocolEndpoint", "ZDA_RemoteServiceAccessPoint"}},
        {"ZDA_HostedReplicationGroup", "CIM_HostedCollection", "Antecedent", {"ZDA_StorageSystem"},
            "Dependent", {"ZDA_ReplicationGroup"}},
        {"ZDA_HostedRemoteReplicationGroup", "CIM_HostedCollection", "Antecedent", {"ZDA_StorageSystem"},
            "Dependent", {"ZDA_RemoteReplicationGroup"}},
        {"ZDA_HostedRemoteReplicationCollection", "CIM_HostedCollection", "Antecedent", {"ZDA_StorageSystem"},
            "Dependent", {"ZDA_RemoteReplicationCollection"}},
        {"ZDA_HostedRemoteSAP", "CIM_HostedAccessPoint", "Antecedent", {"ZDA_StorageSystem"}, "Dependent",
            {"ZDA_RemoteServiceAccessPoint"}},
        {"ZDA_ReplicationAffectsElement", "CIM_ServiceAffectsElement", "AffectingElement",
            {"ZDA_ReplicationService"}, "AffectedElement", {"ZDA_ReplicationGroup"}},
        {"ZDA_ReplicationServiceAffectsRemoteReplicationGroup", "CIM_ServiceAffectsElement",
            "AffectingElement", {"ZDA_ReplicationService"}, "AffectedElement",
            {"ZDA_RemoteReplicationGroup"}},
        {"ZDA_ReplicationAffectsRemoteCollection", "CIM_ServiceAffectsElement", "AffectingElement",
            {"ZDA_ReplicationService"}, "AffectedElement", {"ZDA_RemoteReplicationCollection"}},
        {"ZDA_ReplicationAffectsEntity", "CIM_ServiceAffectsElement", "AffectingElement",
            {"ZDA_ReplicationService"}, "AffectedElement", {"ZDA_ReplicationEntity"}},
        {"ZDA_AffectedJobElement", "CIM_AffectedJobElement", "AffectingElement", {"ZDA_ConcreteJob"},
            "AffectedElement", {"ZDA_StorageVolume", "ZDA_RemoteReplicationGroup", "ZDA_ReplicationEntity"}},
        {"ZDA_RemoteStorageSynchronized", "CIM_StorageSynchronized", "SystemElement",
            {"ZDA_StorageVolume", "ZDA_ReplicationEntity"}, "SyncedElement",
            {"ZDA_StorageVolume", "ZDA_ReplicationEntity"}},
        {"ZDA_RemoteGroupSynchronized", "CIM_GroupSynchronized", "SystemElement",
            {"ZDA_RemoteReplicationGroup", "ZDA_ReplicationGroup", "ZDA_ReplicationEntity"}, "SyncedElement",
            {"ZDA_RemoteReplicationGroup", "ZDA_ReplicationGroup", "ZDA_ReplicationEntity"}},
        {"ZDA_CapabilitiesOfReplicationService", "CIM_ElementCapabilities", "ManagedElement",
            {"ZDA_ReplicationService"}, "Capabilities", {"ZDA_ReplicationServiceCapabilities"}},
        {"ZDA_ReplicaPoolForStorage", "CIM_Dependency", "Antecedent", {"ZDA_DeltaReplicaStoragePool"},
            "Dependent", {"ZDA_StorageVolume"}},
    };
    return rows;
}

TEST(ProjectMof, EveryAssociationLinksTheClassesOfItsEnds)
{
    const ClassRepository& repo = projectRepository();
    for (const ExpectedAssociation& row : associationTable())
    {
        SCOPED_TRACE(row.name);
        CIMClass cls = repo.getClass(kZda, row.name, false);
        EXPECT_TRUE(cls.isAssociation());
        EXPECT_TRUE(repo.isSubclassOf(kZda, row.name, row.answersTo));
        Array<CIMName> keys;
        cls.getKeyNames(keys);
        EXPECT_EQ(names(keys), (std::set<std::string>{row.firstRole, row.secondRole}));
        for (const auto& [role, ends] : {std::make_pair(row.firstRole, row.firstClasses),
                 std::make_pair(row.secondRole, row.secondClasses)})
        {
            for (const char* end : ends)
            {
                std::set<std::string> linking = names(repo.getAssociationClassNames(kZda, end, role));
                EXPECT_TRUE(linking.count(row.name)) << end << " as " << role;
                EXPECT_TRUE(linking.count(row.answersTo)) << end << " as " << role;
            }
        }
    }
    // CIM_Synchronized enumerations reach both remote kinds and the local one.
    std::set<std::string> synchronized = names(repo.enumerateClassNames(kZda, "CIM_Synchronized", true));
    for (const char* cls :
        {"ZDA_StorageSynchronized", "ZDA_RemoteStorageSynchronized", "ZDA_RemoteGroupSynchronized"})
        EXPECT_TRUE(synchronized.count(cls)) << cls;
}

TEST(ProjectMof, AssociationQueriesFollowReferenceClassesAndRoles)
{
    const ClassRepository& repo = projectRepository();
    std::set<std::string> ofVolume = names(repo.getAssociationClassNames(kZda, "ZDA_StorageVolume"));
    // Through the volume's own class and through its superclasses ...
    EXPECT_TRUE(ofVolume.count("ZDA_MemberOfReplicationGroup"));
    EXPECT_TRUE(ofVolume.count("CIM_MemberOfCollection"));
    EXPECT_TRUE(ofVolume.count("CIM_ServiceAffectsElement"));
    EXPECT_TRUE(ofVolume.count("ZDA_RemoteStorageSynchronized"));
    // ... but not through an association narrowed to another class.
    EXPECT_FALSE(ofVolume.count("ZDA_MemberOfRemoteReplicationCollection"));
    EXPECT_FALSE(ofVolume.count("ZDA_HostedReplicationGroup"));
    EXPECT_FALSE(ofVolume.count("ZDA_CapabilitiesOfReplicationService"));

    std::set<std::string> asCollection = names(
        repo.getAssociationClassNames(kZda, "zda_replicationgroup", "COLLECTION"));
    EXPECT_EQ(asCollection,
        (std::set<std::string>{"CIM_MemberOfCollection", "CIM_OrderedMemberOfCollection",
            "ZDA_MemberOfReplicationGroup", "ZDA_OrderedMemberOfRemoteReplicationGroup"}));
    EXPECT_FALSE(names(repo.getAssociationClassNames(kZda, "ZDA_ReplicationGroup", "Antecedent"))
                     .count("ZDA_HostedReplicationGroup"));
    EXPECT_TRUE(names(repo.getAssociationClassNames(kZda, "ZDA_ReplicationGroup", "Dependent"))
                    .count("ZDA_HostedReplicationGroup"));
    EXPECT_EQ(cimErrorOf([&] { repo.getAssociationClassNames(kZda, "ZDA_Nothing"); }), CIM_ERR_INVALID_CLASS);
}

TEST(ProjectMof, SubclassQueriesAreDeepOrShallow)
{
    const ClassRepository& repo = projectRepository();
    EXPECT_EQ(names(repo.enumerateClassNames(kZda, "CIM_ReplicationGroup", false)),
        (std::set<std::string>{"ZDA_ReplicationGroup", "ZDA_RemoteReplicationGroup"}));
    Array<CIMName> deep = repo.enumerateClassNames(kZda, "CIM_ManagedElement", true);
    std::set<std::string> all = names(deep);
    EXPECT_TRUE(all.count("ZDA_StorageVolume"));
    EXPECT_TRUE(all.count("CIM_System"));
    EXPECT_FALSE(all.count("CIM_ManagedElement"));
    EXPECT_FALSE(all.count("CIM_Synchronized"));  // an association root of its own
    // Superclasses come before their subclasses.
    auto position = [&](const char* name) {
        for (Uint32 i = 0; i < deep.size(); ++i)
            if (deep[i].equal(name))
                return i;
        return PEG_NOT_FOUND;
    };
    EXPECT_LT(position("CIM_StorageExtent"), position("CIM_StorageVolume"));
    EXPECT_LT(position("CIM_StorageVolume"), position("ZDA_StorageVolume"));

    std::set<std::string> roots = names(repo.enumerateClassNames(kZda, CIMName(), false));
    EXPECT_TRUE(roots.count("CIM_ManagedElement"));
    EXPECT_TRUE(roots.count("CIM_Synchronized"));
    EXPECT_FALSE(roots.count("CIM_LogicalElement"));
    EXPECT_EQ(repo.enumerateClassNames(kZda, CIMName(), true).size(),
        repo.enumerateClasses(kZda, CIMName(), true).size());

    EXPECT_EQ(names(repo.getSuperClassNames(kZda, "ZDA_ReplicationEntity")),
        (std::set<std::string>{"CIM_ReplicationEntity", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
            "CIM_ManagedSystemElement", "CIM_ManagedElement"}));
    EXPECT_TRUE(repo.isSubclassOf(kZda, "ZDA_ReplicationGroup", "CIM_Collection"));
    EXPECT_FALSE(repo.isSubclassOf(kZda, "CIM_Collection", "ZDA_ReplicationGroup"));
    EXPECT_EQ(cimErrorOf([&] { repo.enumerateClassNames(kZda, "Nope", true); }), CIM_ERR_INVALID_CLASS);
}

TEST(ProjectMof, MethodsCarryTheParametersTheProvidersRead)
{
    const ClassRepository& repo = projectRepository();
    CIMClass service = repo.getClass(kZda, "ZDA_ReplicationService", false);
    for (const char* method :
        {"CreateElementReplica", "CreateListReplica", "ZDA_CreateConsistentReplicaList",
            "ModifyReplicaSynchronization", "ModifyListSynchronization",
            "ZDA_ModifyGroupReplicaSynchronization", "CreateGroup", "DeleteGroup", "AddMembers",
            "RemoveMembers", "CreateGroupReplica", "ZDA_CreateGroupReplica", "CreateGroupReplicaFromElements",
            "GetReplicationRelationships", "GetReplicationRelationshipInstances",
            "GetAvailableTargetElements", "GetPeerSystems", "GetServiceAccessPoints"})
    {
        Uint32 at = service.findMethod(method);
        ASSERT_NE(at, PEG_NOT_FOUND) << method;
        EXPECT_EQ(service.getMethod(at).getType(), CIMTYPE_UINT32) << method;
    }
    auto parameter = [](const CIMClass& cls, const char* method, const char* name) {
        CIMConstMethod m = cls.getMethod(cls.findMethod(method));
        Uint32 at = m.findParameter(name);
        EXPECT_NE(at, PEG_NOT_FOUND) << method << "." << name;
        return m.getParameter(at == PEG_NOT_FOUND ? 0 : at);
    };
    CIMConstParameter sources = parameter(service, "CreateGroupReplica", "SourceElements");
    EXPECT_EQ(sources.getType(), CIMTYPE_REFERENCE);
    EXPECT_TRUE(sources.isArray());
    CIMConstParameter settings = parameter(service, "ZDA_CreateGroupReplica", "ReplicationSettingData");
    EXPECT_EQ(settings.getType(), CIMTYPE_STRING);
    EXPECT_NE(settings.findQualifier("EmbeddedInstance"), PEG_NOT_FOUND);
    EXPECT_TRUE(parameter(service, "ZDA_CreateConsistentReplicaList", "TargetNames").isArray());
    EXPECT_EQ(parameter(service, "ModifyListSynchronization", "TargetGroup").getType(), CIMTYPE_REFERENCE);
    EXPECT_EQ(parameter(service, "ModifyReplicaSynchronization", "Force").getType(), CIMTYPE_BOOLEAN);
    EXPECT_EQ(parameter(service, "GetPeerSystems", "Options").getType(), CIMTYPE_UINT16);

    CIMClass caps = repo.getClass(kZda, "ZDA_ReplicationServiceCapabilities", false);
    EXPECT_EQ(caps.getMethodCount(), 18u);
    EXPECT_EQ(parameter(caps, "GetSupportedMaximum", "MaxValue").getType(), CIMTYPE_UINT64);
    EXPECT_EQ(
        parameter(caps, "GetSupportedReplicationSettingData", "SupportedValues").getType(), CIMTYPE_UINT64);
    EXPECT_EQ(parameter(caps, "GetSupportedCopyStates", "HostAccessible").getType(), CIMTYPE_BOOLEAN);

    const CIMNamespaceName internal("root/PG_Internal");
    CIMClass cache = repo.getClass(internal, "ZDA_InternalCache", false);
    Array<CIMName> keys;
    cache.getKeyNames(keys);
    EXPECT_EQ(names(keys), std::set<std::string>{"InstanceID"});
    EXPECT_EQ(parameter(cache, "GetSystemID", "SystemID").getType(), CIMTYPE_UINT32);
    EXPECT_EQ(parameter(cache, "GetSystemType", "SystemType").getType(), CIMTYPE_SINT32);
    EXPECT_EQ(parameter(cache, "IsQuadPortSystem", "IsQuadPort").getType(), CIMTYPE_UINT8);
    EXPECT_NE(parameter(cache, "GetSystemAddress", "SystemAddress").findQualifier("Out"), PEG_NOT_FOUND);
    EXPECT_FALSE(repo.classExists(kZda, "ZDA_InternalCache"));
}

// ---- GetClass semantics ---------------------------------------------------

TEST(ClassRepository, GetClassHonoursItsFlags)
{
    const ClassRepository& repo = projectRepository();
    // localOnly: only what the class itself defines or overrides.
    CIMClass local = repo.getClass(kZda, "ZDA_ReplicationGroup");
    ASSERT_EQ(local.getPropertyCount(), 1u);
    EXPECT_TRUE(local.getProperty(0).getName().equal("ID"));
    EXPECT_EQ(local.findQualifier("Association"), PEG_NOT_FOUND);

    CIMClass full = repo.getClass(kZda, "ZDA_ReplicationGroup", false, true, true);
    CIMProperty id = full.getProperty(full.findProperty("InstanceID"));
    EXPECT_TRUE(id.getPropagated());
    EXPECT_EQ(text(id.getClassOrigin().getString()), "CIM_SystemSpecificCollection");
    Uint32 key = id.findQualifier("Key");
    ASSERT_NE(key, PEG_NOT_FOUND);
    EXPECT_TRUE(id.getQualifier(key).getPropagated());
    EXPECT_FALSE(full.getProperty(full.findProperty("ID")).getPropagated());
    EXPECT_EQ(id.findQualifier("Override"), PEG_NOT_FOUND);  // restricted to the class that wrote it

    CIMClass plain = repo.getClass(kZda, "ZDA_ReplicationGroup", false, false, false);
    EXPECT_EQ(plain.getPropertyCount(), full.getPropertyCount());
    EXPECT_TRUE(plain.getProperty(0).getClassOrigin().isNull());
    for (Uint32 i = 0; i < plain.getPropertyCount(); ++i)
        EXPECT_EQ(plain.getProperty(i).getQualifierCount(), 0u);
    EXPECT_EQ(plain.getQualifierCount(), 0u);

    Array<CIMName> wanted;
    wanted.append("elementname");
    wanted.append("NoSuchProperty");
    CIMClass listed = repo.getClass(
        kZda, "ZDA_ReplicationService", false, false, false, CIMPropertyList(wanted));
    ASSERT_EQ(listed.getPropertyCount(), 1u);
    EXPECT_GT(listed.getMethodCount(), 10u);  // a property list leaves methods alone
    CIMConstMethod method = listed.getMethod(0);
    EXPECT_TRUE(method.getClassOrigin().isNull());
    for (Uint32 i = 0; i < method.getParameterCount(); ++i)
        EXPECT_EQ(method.getParameter(i).getQualifierCount(), 0u);

    EXPECT_EQ(
        cimErrorOf([&] { repo.getClass("root/none", "ZDA_ReplicationGroup"); }), CIM_ERR_INVALID_NAMESPACE);
    EXPECT_EQ(cimErrorOf([&] { repo.getClass(kZda, "ZDA_None"); }), CIM_ERR_NOT_FOUND);
}

TEST(ClassRepository, ReturnedClassesAreTheCallersOwn)
{
    const ClassRepository& repo = projectRepository();
    CIMClass first = repo.getClass(kZda, "ZDA_ReplicationService", false);
    first.removeProperty(0);
    first.addProperty(CIMProperty("Extra", CIMValue(String("x"))));
    CIMClass second = repo.getClass(kZda, "ZDA_ReplicationService", false);
    EXPECT_EQ(second.findProperty("Extra"), PEG_NOT_FOUND);
    EXPECT_EQ(second.getPropertyCount(), first.getPropertyCount());
}

TEST(ClassRepository, QualifierDeclarationsKeepScopeAndFlavor)
{
    const ClassRepository& repo = projectRepository();
    CIMQualifierDecl key = repo.getQualifier(kZda, "key");
    EXPECT_EQ(key.getType(), CIMTYPE_BOOLEAN);
    EXPECT_TRUE(key.getScope().hasScope(CIMScope::REFERENCE));
    EXPECT_FALSE(key.getScope().hasScope(CIMScope::CLASS));
    EXPECT_TRUE(key.getFlavor().hasFlavor(CIMFlavor::DISABLEOVERRIDE));
    CIMQualifierDecl valueMap = repo.getQualifier(kZda, "ValueMap");
    EXPECT_TRUE(valueMap.isArray());
    EXPECT_TRUE(valueMap.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS));  // the default
    EXPECT_EQ(repo.enumerateQualifiers(kZda).size(), repo.enumerateQualifiers("root/PG_InterOp").size());
    EXPECT_EQ(cimErrorOf([&] { repo.getQualifier(kZda, "Colour"); }), CIM_ERR_NOT_FOUND);
    std::set<std::string> spaces;
    Array<CIMNamespaceName> all = repo.enumerateNamespaces();
    for (Uint32 i = 0; i < all.size(); ++i)
        spaces.insert(text(all[i].getString()));
    EXPECT_EQ(spaces, (std::set<std::string>{"root/zda", "root/PG_Internal", "root/PG_InterOp"}));
}

// ---- static instances -----------------------------------------------------

std::unique_ptr<ClassRepository> interopWith(const std::string& registrations)
{
    using namespace zda::mof;
    std::vector<Declaration> all = parseMofFile(
        std::string(ZDA_MOF_DIR) + "/root_PG_InterOp.mof", "root/cimv2");
    std::vector<Declaration> extra = parseMof(
        registrations, "registrations.mof", "root/PG_InterOp", fileSystemReader());
    all.insert(all.end(), extra.begin(), extra.end());
    return std::make_unique<ClassRepository>(all);
}

TEST(ClassRepository, HoldsStaticInstancesWithTheirPaths)
{
    auto repo = interopWith(R"(
        instance of PG_ProviderModule as $module {
            Name = "ZDA_Example"; Vendor = "v"; Version = "1.0.0";
            InterfaceType = "C++Default"; InterfaceVersion = "2.6.0"; Location = "ZDA_Example"; };
        instance of PG_Provider as $provider { ProviderModuleName = "ZDA_Example"; Name = "ZDA_ExampleProvider"; };
        instance of PG_ProviderCapabilities {
            ProviderModuleName = "ZDA_Example"; ProviderName = "ZDA_ExampleProvider"; CapabilityID = "1";
            ClassName = "ZDA_Example"; Namespaces = {"root/zda"}; ProviderType = {2, 5};
            SupportedProperties = NULL; SupportedMethods = NULL; };
        instance of PG_ProviderModuleElements { GroupComponent = $module; PartComponent = $provider; };)");
    const CIMNamespaceName interop("root/PG_InterOp");

    // Found by the path its keys make (the project's own registrations are
    // there too); a shallow enumeration of its superclass does not find it.
    CIMInstance cap = repo->getInstance(interop,
        CIMObjectPath("PG_ProviderCapabilities.CapabilityID=\"1\",ProviderModuleName=\"ZDA_Example\","
                      "ProviderName=\"ZDA_ExampleProvider\""));
    EXPECT_EQ(repo->enumerateInstances(interop, "PG_Capabilities", false).size(), 0u);
    Array<Uint16> types;
    cap.getProperty(cap.findProperty("ProviderType")).getValue().get(types);
    ASSERT_EQ(types.size(), 2u);
    EXPECT_EQ(types[1], 5);
    EXPECT_TRUE(cap.getProperty(cap.findProperty("SupportedMethods")).getValue().isNull());
    EXPECT_EQ(cap.getPath().getKeyBindings().size(), 3u);
    EXPECT_TRUE(cap.getPath().getNameSpace().equal(interop));

    CIMInstance link = repo->enumerateInstances(interop, "PG_ProviderModuleElements")[0];
    CIMObjectPath modulePath;
    link.getProperty(link.findProperty("GroupComponent")).getValue().get(modulePath);
    CIMInstance module = repo->getInstance(interop, modulePath);
    String location;
    module.getProperty(module.findProperty("Location")).getValue().get(location);
    EXPECT_EQ(text(location), "ZDA_Example");

    CIMObjectPath missing("PG_ProviderModule.Name=\"Other\"");
    EXPECT_EQ(cimErrorOf([&] { repo->getInstance(interop, missing); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] { repo->enumerateInstances(interop, "PG_Nothing"); }), CIM_ERR_INVALID_CLASS);
}

TEST(ClassRepository, ValuesTheObjectModelRefusesAreCompileErrors)
{
    auto expectRefusal = [](const std::string& text, unsigned column, const char* message) {
        try
        {
            interopWith(text);
            ADD_FAILURE() << "accepted: " << text;
        }
        catch (const zda::mof::MofError& e)
        {
            EXPECT_EQ(e.where().file, "registrations.mof");
            EXPECT_EQ(e.where().column, column) << e.what();
            EXPECT_NE(e.message().find(message), std::string::npos) << e.what();
        }
    };
    expectRefusal(
        "instance of PG_ProviderModule { Name = \"m\"; InstallDate = \"20241301000000.000000+000\"; };", 59,
        "not a valid date-time");
    expectRefusal("instance of PG_ProviderModuleElements { GroupComponent = \"no path at all\"; "
                  "PartComponent = \"PG_Provider.Name=\\\"p\\\",ProviderModuleName=\\\"m\\\"\"; };",
        58, "not a valid object path");
    EXPECT_THROW(ClassRepository::loadDirectory("/nonexistent/mof"), zda::mof::MofError);
}

}  // namespace
