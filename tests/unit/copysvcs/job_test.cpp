// The array's tasks as jobs through the in-process host: state, progress,
// status and errors following the task as the array's clock steps.
#include "copysvcs_fixture.h"

#include "ZDA_ConcreteJobProvider.h"

using namespace zda_copysvcs_test;

namespace
{

const char JOB[] = "ZDA_ConcreteJob";

class JobTest : public CopyServicesTest
{
protected:
    CIMObjectPath jobPath(Uint32 tid)
    {
        return ZDA_ConcreteJobProvider::buildObjectPath(HOST, ZDA_ConcreteJobProvider::makeUniqueID(tid));
    }
    CIMInstance job(Uint32 tid) { return getInstance(jobPath(tid)); }
    CIMValue getError(Uint32 tid, Array<CIMParamValue>& out)
    {
        return server().invokeMethod(admin(), ZDA_NS, jobPath(tid), "GetError", Array<CIMParamValue>(), out);
    }
};

TEST(JobIdentifiers, TaskIdsRoundTripAndOtherTextsNameNoTask)
{
    EXPECT_EQ(text(ZDA_ConcreteJobProvider::makeUniqueID(1001)), "KX_ORLA:1001");
    EXPECT_EQ(
        ZDA_ConcreteJobProvider::taskIdOf(ZDA_ConcreteJobProvider::makeUniqueID(4294967295u)), 4294967295u);
    for (const char* other : {"", "KX_ORLA:", "KX_ORLA:0", "KX_ORLA:12x", "KX_ORLA:-3", "1001",
             "KX_ORLA:4294967296", "kx_orla:1001"})
        EXPECT_EQ(ZDA_ConcreteJobProvider::taskIdOf(other), 0u) << other;
    const CIMObjectPath path = ZDA_ConcreteJobProvider::buildObjectPath("h", "KX_ORLA:7");
    EXPECT_EQ(text(path.getClassName().getString()), JOB);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "InstanceID")), "KX_ORLA:7");
}

TEST_F(JobTest, ACopyJobRunsToCompletionAsTheClockSteps)
{
    Uint32 tid = 0;
    ASSERT_EQ(zdasim_clone_start("vol1", "vol1.full", 100, -1, &tid), 0);
    Array<CIMObjectPath> names = namesOf(JOB);
    ASSERT_EQ(names.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(names[0], jobPath(tid)));

    CIMInstance running = job(tid);
    EXPECT_EQ(get<Uint16>(running, "JobState"), 4);
    EXPECT_EQ(get<Uint16>(running, "PercentComplete"), 0);
    EXPECT_EQ(uint16s(running, "OperationalStatus"), std::vector<int>({2}));
    EXPECT_EQ(text(get<String>(running, "ElementName")), "vol1.full");

    zdasim_clock_advance(40);
    CIMInstance partway = job(tid);
    EXPECT_EQ(get<Uint16>(partway, "PercentComplete"), 40);
    // A running job's elapsed time follows the array's clock, not the host's.
    EXPECT_EQ(get<CIMDateTime>(partway, "ElapsedTime").toString(),
        CIMDateTime(Uint64(40) * 1000000, true).toString());

    zdasim_clock_advance(100);
    CIMInstance done = job(tid);
    EXPECT_EQ(get<Uint16>(done, "JobState"), 7);
    EXPECT_EQ(get<Uint16>(done, "PercentComplete"), 100);
    EXPECT_EQ(uint16s(done, "OperationalStatus"), std::vector<int>({2, 17}));
    EXPECT_EQ(get<CIMDateTime>(done, "ElapsedTime").toString(),
        CIMDateTime(Uint64(100) * 1000000, true).toString());
    Array<CIMParamValue> out;
    EXPECT_TRUE(getError(tid, out).equal(CIMValue(Uint32(0))));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_TRUE(out[0].getValue().isNull());
}

TEST_F(JobTest, FailedAndStoppedTasksShowTheirEndAndGetErrorTellsWhy)
{
    Uint32 failing = 0;
    Uint32 told = 0;
    ASSERT_EQ(zdasim_clone_start("vol1", "vol1.bad", 100, 30, &failing), 0);
    ASSERT_EQ(zdasim_clone_start("vol3", "vol3.bad", 100, -1, &told), 0);
    ASSERT_EQ(zdasim_task_fail(told, "disk gone"), 0);
    zdasim_clock_advance(50);

    CIMInstance failed = job(failing);
    EXPECT_EQ(get<Uint16>(failed, "JobState"), 10);
    EXPECT_EQ(get<Uint16>(failed, "PercentComplete"), 30);
    EXPECT_EQ(uint16s(failed, "OperationalStatus"), std::vector<int>({6, 17}));
    EXPECT_EQ(text(get<String>(failed, "ErrorDescription")), "copy failed at 30%");
    EXPECT_EQ(text(get<String>(job(told), "ErrorDescription")), "disk gone");

    Array<CIMParamValue> out;
    getError(told, out);
    ASSERT_EQ(out.size(), 1u);
    CIMInstance error;
    out[0].getValue().get(error);
    EXPECT_EQ(text(get<String>(error, "Message")), "disk gone");
    EXPECT_EQ(text(get<String>(error, "ErrorSource")), text(ZDA_ConcreteJobProvider::makeUniqueID(told)));
}

TEST_F(JobTest, UnknownJobsAndRefusedOperations)
{
    Array<CIMParamValue> out;
    EXPECT_EQ(cimErrorOf([&] { job(999999); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] { getError(999999, out); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] {
        server().invokeMethod(admin(), ZDA_NS, jobPath(1), "Kill", Array<CIMParamValue>(), out);
    }),
        CIM_ERR_METHOD_NOT_FOUND);
    EXPECT_EQ(
        cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, jobPath(1)); }), CIM_ERR_NOT_SUPPORTED);
    zdasim_fault_add("api_getTasks", 1, API_E_INVALID, "broken");
    EXPECT_EQ(instancesOf(JOB).size(), 0u);
}

}  // namespace
