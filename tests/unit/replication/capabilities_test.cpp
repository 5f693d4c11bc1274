// The replication capabilities through the in-process host: the fixed
// instance, the tables by replication type in their reply order, the
// parameter refusals as return values, the limits read from the array, and
// who may ask.
#include "replication_fixture.h"

#include <map>

#include "ZDA_ReplicationServiceCapabilitiesProvider.h"

using namespace zda_replication_test;

namespace
{

const char CAPS[] = "ZDA_ReplicationServiceCapabilities";
const char CAPS_ID[] = "KX_ORLA:ReplicationServiceCapabilities";
const std::vector<int> ALL_TYPES = {4, 5, 6, 10, 11, 7};

typedef std::vector<int> Ints;

Ints uint16sOf(const CIMValue& value)
{
    Array<Uint16> a;
    value.get(a);
    return Ints(a.getData(), a.getData() + a.size());
}

class CapabilitiesTest : public ReplicationTest
{
protected:
    CIMObjectPath capsPath() { return namesOf(CAPS)[0]; }
    // The method's return value (-1 for none) with the outputs in `out`.
    int ask(const char* method, const Array<CIMParamValue>& in, const char* user = "admin")
    {
        CIMValue rc = call(as(user), capsPath(), method, in, out);
        if (rc.isNull())
            return -1;
        Uint32 value = 0;
        rc.get(value);
        return int(value);
    }
    int askType(const char* method, int replicationType)
    {
        return ask(method, args({{"ReplicationType", u16(replicationType)}}));
    }
    // GetSupportedMaximum's "<return value> <MaxValue>", 0 for no MaxValue.
    std::string maximum(int replicationType, int component)
    {
        const int status = ask("GetSupportedMaximum",
            args({{"ReplicationType", u16(replicationType)}, {"Component", u16(component)}}));
        Uint64 value = 0;
        if (!outParam(out, "MaxValue").isNull())
            outParam(out, "MaxValue").get(value);
        return std::to_string(status) + " " + std::to_string(value);
    }
};

TEST_F(CapabilitiesTest, TheOneInstanceDescribesTheArray)
{
    const Array<CIMInstance> enumerated = instancesOf(CAPS);
    ASSERT_EQ(enumerated.size(), 1u);
    const CIMInstance& caps = enumerated[0];
    EXPECT_EQ(text(get<String>(caps, "InstanceID")), CAPS_ID);
    EXPECT_EQ(text(get<String>(caps, "ElementName")), "Capabililites of ReplicationServiceCapabilities");
    EXPECT_EQ(uint16s(caps, "SupportedSynchronousActions"),
        Ints({2, 3, 5, 6, 8, 9, 10, 11, 12, 13, 14, 15, 19, 20, 21}));
    EXPECT_EQ(uint16s(caps, "SupportedAsynchronousActions"), Ints({2, 5, 6, 19, 20}));
    EXPECT_EQ(uint16s(caps, "SupportedReplicationTypes"), Ints({4, 5, 6, 10, 11}));
    EXPECT_EQ(uint16s(caps, "SupportedStorageObjects"), Ints({2}));

    const CIMObjectPath path = capsPath();
    EXPECT_EQ(text(path.getHost()), HOST);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "InstanceID")), CAPS_ID);
    EXPECT_TRUE(getInstance(path).identical(caps));
}

TEST_F(CapabilitiesTest, InstanceRefusals)
{
    const CIMObjectPath path = capsPath();
    EXPECT_EQ(readError(withKey(path, "Extra", "x")), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(readError(withKey(path, "InstanceID", "KX_ORLA:Other")), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(changeErrors(path), "7 7 7");
    EXPECT_EQ(readError(path, "noaccess"), CIM_ERR_ACCESS_DENIED);
}

// The provider answers the general class on enumeration with its own
// instance, and another class with nothing at all; an unknown method with 1,
// without processing.
TEST_F(CapabilitiesTest, EnumerationAcceptsTheGeneralClassOnly)
{
    for (const char* className : {"CIM_ReplicationServiceCapabilities", "CIM_Capabilities"})
    {
        const bool general = std::string(className) == "CIM_ReplicationServiceCapabilities";
        zda_test::RecordingResponseHandler names, instances, unknown;
        auto& p = directService<ZDA_ReplicationServiceCapabilitiesProvider>();
        p.enumerateInstanceNames(admin(), CIMObjectPath(className), names);
        p.enumerateInstances(admin(), CIMObjectPath(className), false, false, CIMPropertyList(), instances);
        p.invokeMethod(
            admin(), capsPath(), "GetSupportedTokenizedReplicationType", Array<CIMParamValue>(), unknown);
        expectLedgersClean(className);
        EXPECT_EQ(names.sequence(), general ? "processing deliver(path) complete" : "") << className;
        EXPECT_EQ(instances.sequence(), general ? "processing deliver(instance) complete" : "") << className;
        if (general)
        {
            EXPECT_EQ(text(names.objectPaths()[0].getClassName().getString()), CAPS);
        }
        EXPECT_EQ(unknown.sequence(), "deliver(value) complete");
        EXPECT_EQ(unknown.returnValues()[0], CIMValue(Uint32(1)));
    }
}

// Each list method over every replication type: a type without an entry
// answers 1 and nothing else.
TEST_F(CapabilitiesTest, ListsByReplicationTypeInReplyOrder)
{
    struct ListCase
    {
        const char* method;
        const char* output;
        std::map<int, Ints> byType;
    };
    const Ints remoteStates = {2, 11, 3, 4, 5, 7, 10, 13};
    const ListCase cases[] = {
        {"GetSupportedFeatures", "Features",
            {{4, {2, 6, 7, 8, 16, 17}}, {5, {2, 6, 7, 8, 16, 17}}, {6, {2, 10, 16}}, {10, {2, 8, 18}},
                {11, {2, 3, 8, 16}}}},
        {"GetSupportedGroupFeatures", "GroupFeatures",
            {{4, {2, 4, 5, 11, 14, 18, 34, 40, 59, 60}}, {5, {2, 4, 5, 11, 14, 18, 34, 40, 59, 60}},
                {6, {3, 4, 11, 14}}, {10, {3, 4, 8, 11, 12, 14, 16}}, {11, {3, 4, 8, 11, 12, 14}}}},
        {"GetSupportedCopyStates", "SupportedCopyStates",
            {{4, remoteStates}, {5, remoteStates}, {6, {3, 4, 5}}, {10, {2, 3, 4}}, {11, {2, 3, 4, 5, 8}}}},
        {"GetSupportedGroupCopyStates", "SupportedCopyStates",
            {{4, {2, 11, 3, 4, 5, 7, 10, 13, 14}}, {5, {2, 11, 3, 4, 5, 7, 10, 13, 14}}, {6, {}}, {10, {}},
                {11, {}}}},
        {"GetSupportedOperations", "SupportedOperations",
            {{4, {}}, {5, {}}, {6, {8, 9, 15, 19}}, {10, {2}}, {11, {14, 8, 9, 2}}}},
        {"GetSupportedListOperations", "SupportedListOperations",
            {{4, {}}, {5, {}}, {6, {8, 9, 15, 19}}, {10, {2}}, {11, {14, 8, 9, 2}}}},
        {"GetSupportedGroupOperations", "SupportedGroupOperations",
            {{4, {4, 8, 10, 11, 14, 20, 21}}, {5, {4, 8, 10, 11, 14, 20, 21}}, {6, {19}}}},
        {"GetSupportedConsistency", "SupportedConsistency",
            {{4, {2}}, {5, {2}}, {6, {2}}, {10, {2}}, {11, {2}}}},
        {"GetSupportedThinProvisioningFeatures", "SupportedThinProvisioningFeatures",
            {{4, {2, 3}}, {5, {2, 3}}, {6, {}}, {10, {2, 3}}, {11, {2, 3}}}},
    };
    for (const ListCase& c : cases)
    {
        for (int type : ALL_TYPES)
        {
            SCOPED_TRACE(std::string(c.method) + " type " + std::to_string(type));
            const auto expected = c.byType.find(type);
            if (expected == c.byType.end())
            {
                EXPECT_EQ(askType(c.method, type), 1);
                EXPECT_EQ(out.size(), 0u);
                continue;
            }
            EXPECT_EQ(askType(c.method, type), 0);
            ASSERT_FALSE(outParam(out, c.output).isNull());
            EXPECT_EQ(uint16sOf(outParam(out, c.output)), expected->second);
        }
    }

    const std::map<int, std::vector<Boolean>> hostAccessible = {{4, std::vector<Boolean>(8, true)},
        {5, std::vector<Boolean>(8, true)}, {6, {true, true, false}}, {10, std::vector<Boolean>(3, false)},
        {11, std::vector<Boolean>(5, false)}};
    for (const auto& entry : hostAccessible)
    {
        ASSERT_EQ(askType("GetSupportedCopyStates", entry.first), 0);
        Array<Boolean> accessible;
        outParam(out, "HostAccessible").get(accessible);
        EXPECT_EQ(std::vector<Boolean>(accessible.getData(), accessible.getData() + accessible.size()),
            entry.second)
            << "type " << entry.first;
    }
    ASSERT_EQ(askType("GetDefaultConsistency", 10), 0);
    EXPECT_EQ(outParam(out, "DefaultConsistency"), CIMValue(Uint16(2)));
}

TEST_F(CapabilitiesTest, ReplicationTypesConvertBothWays)
{
    struct Row
    {
        int type, syncType, mode, locality;
    };
    const Row rows[] = {{4, 6, 2, 3}, {5, 6, 3, 3}, {6, 7, 2, 2}, {10, 8, 2, 2}, {11, 8, 3, 2}};
    for (const Row& r : rows)
    {
        ASSERT_EQ(askType("ConvertReplicationTypeToSyncType", r.type), 0);
        EXPECT_EQ(outParam(out, "SyncType"), CIMValue(Uint16(r.syncType))) << r.type;
        EXPECT_EQ(outParam(out, "Mode"), CIMValue(Uint16(r.mode))) << r.type;
        EXPECT_EQ(outParam(out, "LocalOrRemote"), CIMValue(Uint16(r.locality))) << r.type;
        ASSERT_EQ(ask("ConvertSyncTypeToReplicationType",
                      args({{"SyncType", u16(r.syncType)}, {"Mode", u16(r.mode)},
                          {"LocalOrRemote", u16(r.locality)}})),
            0);
        EXPECT_EQ(outParam(out, "SupportedReplicationTypes"), CIMValue(Uint16(r.type)));
    }
    EXPECT_EQ(askType("ConvertReplicationTypeToSyncType", 7), 1);
    // No asynchronous local snapshot; a locality other than local or remote.
    EXPECT_EQ(ask("ConvertSyncTypeToReplicationType",
                  args({{"SyncType", u16(7)}, {"Mode", u16(3)}, {"LocalOrRemote", u16(2)}})),
        1);
    EXPECT_EQ(ask("ConvertSyncTypeToReplicationType",
                  args({{"SyncType", u16(6)}, {"Mode", u16(2)}, {"LocalOrRemote", u16(4)}})),
        1);
    EXPECT_EQ(out.size(), 0u);
}

TEST_F(CapabilitiesTest, WaitForCopyStatesByTypeAndMethod)
{
    struct Case
    {
        int type;
        int methodName;
        int rc;
        Ints states;
    };
    const Case cases[] = {
        {6, 2, 0, {4}},
        {6, 5, 0, {4}},
        {6, 9, 0, {}},  // 9: no such waiting method, not an error
        {10, 3, 0, {4}},
        {10, 4, 0, {}},
        {11, 4, 0, {8}},
        {4, 3, 0, {3}},
        {5, 4, 0, {3, 4, 7, 10}},
        {4, 2, 0, {}},
        {7, 2, 1, {}},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(ask("GetSupportedWaitForCopyStates",
                      args({{"ReplicationType", u16(c.type)}, {"MethodName", u16(c.methodName)}})),
            c.rc)
            << c.type << "/" << c.methodName;
        if (c.rc == 0)
            EXPECT_EQ(uint16sOf(outParam(out, "SupportedCopyStates")), c.states)
                << c.type << "/" << c.methodName;
        else
            EXPECT_EQ(out.size(), 0u);
    }
}

TEST_F(CapabilitiesTest, ReplicationSettingDataValuesAndDefaultInstance)
{
    struct Case
    {
        int type;
        int property;
        int rc;
        Uint64 value;
    };
    const Case cases[] = {{4, 3, 0, 5}, {5, 3, 0, 8}, {6, 3, 0, 4}, {11, 3, 0, 9}, {6, 8, 0, 7},
        {10, 8, 0, 5}, {10, 9, 0, 3}, {7, 3, 1, 0}, {4, 1, 1, 0}};
    for (const Case& c : cases)
    {
        EXPECT_EQ(ask("GetSupportedReplicationSettingData",
                      args({{"ReplicationType", u16(c.type)}, {"PropertyName", u16(c.property)}})),
            c.rc)
            << c.type << "/" << c.property;
        if (c.rc != 0)
            continue;
        Array<Uint64> values;
        outParam(out, "SupportedValues").get(values);
        ASSERT_EQ(values.size(), 1u);
        EXPECT_EQ(values[0], c.value) << c.type << "/" << c.property;
    }
    ASSERT_EQ(askType("GetDefaultReplicationSettingData", 6), 0);
    CIMInstance setting;
    outParam(out, "DefaultInstance").get(setting);
    EXPECT_EQ(text(setting.getClassName().getString()), "CIM_ReplicationSettingData");
    const std::vector<std::pair<std::string, Uint64>> expected = {{"ConsistentPointInTime", 3},
        {"DesiredCopyMethodology", 4}, {"Multihop", 1}, {"OnGroupOrListError", 3}, {"UnequalGroupsAction", 2},
        {"TargetElementSupplier", 2}, {"ThinProvisioningPolicy", 7}, {"Pairing", 3}};
    ASSERT_EQ(setting.getPropertyCount(), expected.size());
    for (Uint32 i = 0; i < setting.getPropertyCount(); i++)
    {
        EXPECT_EQ(text(setting.getProperty(i).getName().getString()), expected[i].first);
        EXPECT_EQ(setting.getProperty(i).getValue(), CIMValue(expected[i].second)) << expected[i].first;
    }
    EXPECT_EQ(askType("GetDefaultReplicationSettingData", 7), 1);
    EXPECT_EQ(out.size(), 0u);
}

// Missing or unusable parameters are return values, never exceptions.
TEST_F(CapabilitiesTest, ParameterRefusalsAreReturnValues)
{
    const char* const needTheType[] = {"ConvertSyncTypeToReplicationType", "ConvertReplicationTypeToSyncType",
        "GetSupportedFeatures", "GetSupportedGroupFeatures", "GetSupportedCopyStates",
        "GetSupportedGroupCopyStates", "GetSupportedWaitForCopyStates", "GetSupportedConsistency",
        "GetDefaultConsistency", "GetSupportedOperations", "GetSupportedListOperations",
        "GetSupportedGroupOperations", "GetSupportedReplicationSettingData",
        "GetDefaultReplicationSettingData", "GetSupportedThinProvisioningFeatures", "GetSupportedMaximum"};
    for (const char* method : needTheType)
    {
        EXPECT_EQ(ask(method, Array<CIMParamValue>()), 5) << method << " without parameters";
        EXPECT_EQ(ask(method, args({{"ReplicationType", CIMValue(CIMTYPE_UINT16, false)}})), 5)
            << method << " with a null type";
        EXPECT_EQ(out.size(), 0u) << method;
    }

    struct Case
    {
        const char* method;
        Array<CIMParamValue> in;
        int rc;
    };
    const Case cases[] = {
        {"ConvertSyncTypeToReplicationType", args({{"SyncType", u16(6)}, {"Mode", u16(2)}}), 5},
        {"GetSupportedReplicationSettingData", args({{"ReplicationType", u16(4)}}), 5},
        {"GetSupportedMaximum", args({{"ReplicationType", u16(4)}}), 5},
        {"GetSupportedOperations", args({{"ReplicationType", u16(6)}, {"SynchronizationType", u16(3)}}), 1},
        {"GetSupportedListOperations", args({{"ReplicationType", u16(6)}, {"SynchronizationType", u16(3)}}),
            1},
        {"GetSupportedSettingsDefineStateOperations", args({{"ReplicationType", u16(6)}}), 1},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(ask(c.method, c.in), c.rc) << c.method;
        EXPECT_EQ(out.size(), 0u) << c.method;
    }
    EXPECT_EQ(
        ask("GetSupportedOperations", args({{"ReplicationType", u16(11)}, {"SynchronizationType", u16(2)}})),
        0);
    EXPECT_EQ(uint16sOf(outParam(out, "SupportedOperations")), Ints({14, 8, 9, 2}));
}

TEST_F(CapabilitiesTest, MaximumsFollowTheArraysVolumeLimits)
{
    zdasim_system_set_volume_limits(100, 60, 7, 5);
    struct Case
    {
        int component;
        std::map<int, Uint64> byType;
    };
    const Case cases[] = {
        {2, {{6, 40}, {10, 60}, {11, 60}}},  // snapshots: the smaller of 100 - 60 and 60
        {3, {{6, 60}, {10, 60}, {11, 60}}},
        {5, {{6, 5}, {10, 60}, {11, 60}, {4, 1}, {5, 1}}},
        {7, {{6, 60}, {10, 60}, {11, 60}}},
        {8, {{6, 0}, {10, 0}, {11, 0}, {4, 2}, {5, 8}}},
        {9, {{6, 5}, {10, 1}, {11, 60}, {4, 1}, {5, 1}}},
    };
    for (const Case& c : cases)
        for (const auto& entry : c.byType)
            EXPECT_EQ(maximum(entry.first, c.component), "0 " + std::to_string(entry.second))
                << "type " << entry.first << " component " << c.component;
    zdasim_system_set_volume_limits(100, 30, 7, 5);
    EXPECT_EQ(maximum(6, 2), "0 30") << "read afresh on each call";
    for (int component : {0, 1, 10})
        EXPECT_EQ(maximum(10, component), "5 0") << "component " << component;
    zdasim_journal_clear();
    EXPECT_EQ(maximum(7, 2), "1 0");
    EXPECT_EQ(zdasim_journal_count_of("api_getMaxVolumeNumbers"), 0u);
    EXPECT_EQ(zdasim_journal_count_of("api_getmvar"), 0u);
}

// The remote copy limits are asked of the array while they read 0 and kept
// once they do not.
TEST_F(CapabilitiesTest, RemoteCopyLimitsAreKeptOnceRead)
{
    ASSERT_EQ(zdasim_system_set_rcopy_limit(ZDA_RM_MAX_GROUPS_PERIODIC, 0), 0);
    EXPECT_EQ(maximum(5, 2), "0 0");
    ASSERT_EQ(zdasim_system_set_rcopy_limit(ZDA_RM_MAX_GROUPS_PERIODIC, 40), 0);
    EXPECT_EQ(maximum(5, 2), "0 40");
    ASSERT_EQ(zdasim_system_set_rcopy_limit(ZDA_RM_MAX_GROUPS_PERIODIC, 41), 0);
    zdasim_journal_clear();
    EXPECT_EQ(maximum(5, 2), "0 40");
    EXPECT_EQ(zdasim_journal_count_of("api_getmvar"), 0u);

    struct Case
    {
        int type;
        int component;
        int var;
        Uint32 limit;
    };
    const Case cases[] = {{4, 2, ZDA_RM_MAX_GROUPS_SYNC, 11}, {4, 3, ZDA_RM_GROUP_MAX_VOLUMES, 12},
        {5, 4, ZDA_RM_GROUP_MAX_VOLUMES, 12}, {4, 6, ZDA_RM_MAX_VOLUMES_SYNC, 13},
        {5, 7, ZDA_RM_MAX_VOLUMES_PERIODIC, 14}};
    for (const Case& c : cases)
        ASSERT_EQ(zdasim_system_set_rcopy_limit(c.var, c.limit), 0);
    for (const Case& c : cases)
        EXPECT_EQ(maximum(c.type, c.component), "0 " + std::to_string(c.limit))
            << c.type << "/" << c.component;
    EXPECT_EQ(ZDA_ReplicationServiceCapabilitiesProvider::getRemoteCopyMaxVar(7), 0u);
}

TEST_F(CapabilitiesTest, MethodsNeedTheCapabilitiesRight)
{
    const Array<CIMParamValue> in = args({{"ReplicationType", u16(6)}});
    // A viewer is refused (asserted end to end); an unknown answer is no right either.
    zdasim_role_set_right("browse", "zda_replicationservicecapabilities", 3);
    EXPECT_EQ(
        failure([&] { ask("GetSupportedFeatures", in, "viewer"); }).rfind("thrown 7: Does not support!", 0),
        0u);

    // The path is checked after the right.
    const CIMObjectPath other = withKey(capsPath(), "InstanceID", "KX_ORLA:Other");
    EXPECT_EQ(
        cimErrorOf([&] { call(as("operator"), other, "GetSupportedFeatures", in, out); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] { call(as("viewer"), other, "GetSupportedFeatures", in, out); }),
        CIM_ERR_NOT_SUPPORTED);
}

}  // namespace
