// The system's identity over a local client connection and through the
// provider's CIMOMHandle when that connection fails, and the internal cache
// service: its policy flags, its fill from the array and its class cache.
#include "common_sim_fixture.h"

#include <atomic>
#include <thread>

#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Common/Exception.h>

#include "RecordingFakes.h"

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

// The facts the internal cache answers, by method name.
void answer(const CIMName& method, const String& prefix, Array<CIMParamValue>& out)
{
    if (method.equal("GetSystemName"))
        out.append(CIMParamValue("SystemName", CIMValue(prefix + "zda-sim")));
    if (method.equal("GetSystemHostName"))
        out.append(CIMParamValue("SystemHostName", CIMValue(prefix + "zda-sim.local")));
    if (method.equal("GetSystemAddress"))
        out.append(CIMParamValue("SystemAddress", CIMValue(prefix + "192.0.2.10")));
    if (method.equal("GetSystemID"))
        out.append(CIMParamValue("SystemID", CIMValue(Uint32(1234567))));
    if (method.equal("GetSystemType"))
        out.append(CIMParamValue("systemtype", CIMValue(Sint32(8450))));
    if (method.equal("IsQuadPortSystem"))
        out.append(CIMParamValue("IsQuadPort", CIMValue(Uint8(1))));
}

const CIMObjectPath kSystem("ZDA_StorageSystem.CreationClassName=\"ZDA_StorageSystem\",Name=\"zda-sim\"");

// The local connection: answers as the internal cache would, with no
// storage system provider behind it.
class LocalServer : public zda_test::RecordingClientTransport
{
public:
    LocalServer() : RecordingClientTransport(std::make_shared<std::vector<std::string>>()) {}
    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& path, const CIMName& method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        RecordingClientTransport::invokeMethod(ns, path, method, in, out);
        answer(method, "", out);
        return CIMValue(Uint32(0));
    }
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& cn) override
    {
        RecordingClientTransport::enumerateInstanceNames(ns, cn);
        throw CIMException(CIM_ERR_FAILED, "no provider for ZDA_StorageSystem");
    }
};

// The server behind the provider's CIMOMHandle; its answers are marked so a
// test sees which way a fact came.
class Upcalls : public zda_test::RecordingCIMOMBackend
{
public:
    std::atomic<int> getClassCalls{0};
    bool failGetClass = false;
    bool noSystems = false;

    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        RecordingCIMOMBackend::invokeMethod(c, ns, path, method, in, out);
        answer(method, "cimom:", out);
        return CIMValue(Uint32(0));
    }
    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn) override
    {
        RecordingCIMOMBackend::enumerateInstanceNames(c, ns, cn);
        Array<CIMObjectPath> names;
        if (!noSystems)
            names.append(kSystem);
        return names;
    }
    CIMClass getClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn, Boolean lo,
        Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        ++getClassCalls;
        if (failGetClass)
            throw CIMException(CIM_ERR_NOT_FOUND, "no such class");
        CIMClass cls = RecordingCIMOMBackend::getClass(c, ns, cn, lo, iq, ico, pl);
        cls.addProperty(CIMProperty("Name", CIMValue(String())));
        return cls;
    }
};

class IdentityTest : public CommonSimTest
{
protected:
    void SetUp() override
    {
        CommonSimTest::SetUp();
        unsetenv(CIMClientTransports::LOCAL_SOCKET_ENVIRONMENT_VARIABLE);
        upcalls_ = std::make_shared<Upcalls>();
        attachCIMOMHandleBackend(cimom_, upcalls_);
    }
    void TearDown() override
    {
        CIMClientTransports::setLoopbackTransportFactory(CIMClientLoopbackTransportFactory());
        attachCIMOMHandleBackend(cimom_, nullptr);
        CommonSimTest::TearDown();
    }
    static void serveLocally()
    {
        CIMClientTransports::setLoopbackTransportFactory(
            [](Uint32) { return std::unique_ptr<CIMClientTransport>(new LocalServer()); });
    }
    size_t upcallCount() const { return upcalls_->calls().size(); }

    CIMOMHandle cimom_;
    std::shared_ptr<Upcalls> upcalls_;
};

TEST_F(IdentityTest, AFailedLocalConnectionFallsBackToTheCimomWhereAllowed)
{
    // No in-process server and no socket: connectLocal fails.
    EXPECT_EQ(text(ZDA_Common::getSystemName(cimom_)), "cimom:zda-sim");
    EXPECT_EQ(text(ZDA_Common::getSystemAddress(cimom_)), "cimom:192.0.2.10");
    EXPECT_EQ(ZDA_Common::isQuadPortSystem(cimom_), 1);
    ASSERT_EQ(upcallCount(), 3u);
    EXPECT_NE(upcalls_->calls()[0].call.find("GetSystemName"), std::string::npos);

    EXPECT_THROW(ZDA_Common::getSystemName(), CannotConnectException);
    EXPECT_THROW(ZDA_Common::getSystemHostName(cimom_), CannotConnectException);
    EXPECT_THROW(ZDA_Common::getSystemID(), CannotConnectException);
    EXPECT_THROW(ZDA_Common::getSystemType(), CannotConnectException);
    EXPECT_EQ(upcallCount(), 3u);
}

TEST_F(IdentityTest, LocalFactsNeedNoUpcallsAndTheSystemPathFallsBackToTheCimom)
{
    serveLocally();
    EXPECT_EQ(text(ZDA_Common::getSystemName(cimom_)), "zda-sim");
    EXPECT_EQ(ZDA_Common::getSystemType(), 8450);  // output names compare without case
    EXPECT_EQ(ZDA_Common::isQuadPortSystem(cimom_), 1);
    EXPECT_EQ(upcallCount(), 0u);

    // No storage system provider answers locally: the path is asked of the CIMOM.
    CIMObjectPath system = ZDA_Common::getSystemObjectPath(cimom_);
    EXPECT_EQ(text(system.getHost()), "zda-sim.local");  // the host name still comes locally
    ASSERT_EQ(upcallCount(), 1u);
    EXPECT_EQ(upcalls_->calls()[0].call.find("enumerateInstanceNames"), 0u);

    upcalls_->noSystems = true;
    EXPECT_TRUE(ZDA_Common::getSystemObjectPath(cimom_).getClassName().isNull());
    EXPECT_TRUE(logged(2, "cannot get at system object path"));
}

TEST_F(IdentityTest, CacheServiceHoldsThePolicyUntilDestroyed)
{
    // The facts it answers are checked over the local connection with the
    // storage system provider loaded.
    zdasim_system_set_policy(API_POLICY_NO_REPLICATION_ENTITY);
    EXPECT_TRUE(isNoREPolicy(ZDA_Common::getPolicy()));

    // Filled once: later changes of the array do not show ...
    zdasim_system_set_policy(0);
    EXPECT_TRUE(isNoREPolicy(ZDA_Common::getPolicy()));
    ZDA_Common::setPolicy(0);
    EXPECT_FALSE(isNoREPolicy(ZDA_Common::getPolicy()));
    // ... until the service is dropped and filled again.
    zdasim_system_set_policy(API_POLICY_NO_REPLICATION_ENTITY | 0x1);
    ZDA_InternalCacheService::destroy();
    EXPECT_EQ(ZDA_Common::getPolicy(), API_POLICY_NO_REPLICATION_ENTITY | 0x1);
}

TEST_F(IdentityTest, CacheServiceFillIsRetriedAfterTheArrayDidNotAnswer)
{
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(text(ZDA_InternalCacheService::getInstance()->getSystemName()), "");
    EXPECT_TRUE(logged(2, "ZDA_InternalCacheService::initSystemInfo: api_getSystemInfo error (29)"));
    EXPECT_EQ(text(ZDA_InternalCacheService::getInstance()->getSystemName()), "zda-sim");
}

TEST_F(IdentityTest, ClassesAreCachedPerNamespaceClassAndFlags)
{
    auto fetch = [this](const char* ns, const char* cls, bool lo = false, bool iq = false, bool ico = false,
                     const CIMPropertyList& list = CIMPropertyList()) {
        return ZDA_Common::getStoredCIMClass(cimom_, OperationContext(), ns, cls, lo, iq, ico, list);
    };
    CIMClass first = fetch("root/zda", "ZDA_StorageVolume");
    EXPECT_EQ(text(first.getClassName().getString()), "ZDA_StorageVolume");
    EXPECT_EQ(upcalls_->getClassCalls.load(), 1);
    fetch("ROOT/ZDA", "zda_storagevolume");
    EXPECT_EQ(upcalls_->getClassCalls.load(), 1);

    // The caller's copy is its own.
    first.addProperty(CIMProperty("Added", CIMValue(Uint32(1))));
    EXPECT_EQ(fetch("root/zda", "ZDA_StorageVolume").findProperty("Added"), PEG_NOT_FOUND);

    // Other flags, property lists, classes and namespaces are other entries.
    Array<CIMName> names;
    names.append("Name");
    fetch("root/zda", "ZDA_StorageVolume", true);
    fetch("root/zda", "ZDA_StorageVolume", false, true);
    fetch("root/zda", "ZDA_StorageVolume", false, false, true);
    fetch("root/zda", "ZDA_StorageVolume", false, false, false, CIMPropertyList(names));
    fetch("root/zda", "ZDA_StoragePool");
    fetch("root/PG_Internal", "ZDA_StorageVolume");
    EXPECT_EQ(upcalls_->getClassCalls.load(), 7);

    // A failure of the server passes on and leaves nothing behind.
    upcalls_->failGetClass = true;
    EXPECT_THROW(fetch("root/zda", "ZDA_Missing"), CIMException);
    upcalls_->failGetClass = false;
    fetch("root/zda", "ZDA_Missing");
    EXPECT_EQ(upcalls_->getClassCalls.load(), 9);

    ZDA_InternalCacheService::getInstance()->cleanupRepository();
    fetch("root/zda", "ZDA_StorageVolume");
    EXPECT_EQ(upcalls_->getClassCalls.load(), 10);
}

TEST_F(IdentityTest, ConcurrentProvidersShareTheClassCache)
{
    ZDA_InternalCacheService::getInstance();  // filled before the threads start
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 8; ++t)
    {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i)
            {
                const char* cls = (i + t) % 2 ? "ZDA_StorageVolume" : "ZDA_ReplicationGroup";
                CIMClass c = ZDA_Common::getStoredCIMClass(
                    cimom_, OperationContext(), "root/zda", cls, false, false, false, CIMPropertyList());
                if (!c.getClassName().equal(cls) || c.findProperty("Name") == PEG_NOT_FOUND)
                    ++wrong;
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_GE(upcalls_->getClassCalls.load(), 2);
    EXPECT_LE(upcalls_->getClassCalls.load(), 16);  // at most one fetch per thread and class
}

}  // namespace
