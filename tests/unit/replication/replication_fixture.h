// What the replication module's tests share: the copy services fixture
// (in-process host over the simulator's test array, ledgers checked,
// volume paths by name), request contexts of the test array's users, and
// method calls through the host as a client makes them.
#ifndef ZDA_REPLICATION_FIXTURE_H
#define ZDA_REPLICATION_FIXTURE_H

#include <optional>
#include <string>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "copysvcs_fixture.h"
#include "SemaphoreCheckingHandler.h"

namespace zda_replication_test
{

using namespace Pegasus;
using namespace zda_copysvcs_test;

class ReplicationTest : public CopyServicesTest
{
protected:
    // The test array's users: "operator" may replicate, "viewer" may only
    // read, "noaccess" may not open the array at all.
    static OperationContext as(const char* user, const char* ip = "192.0.2.99")
    {
        return zda::server::InProcessHost::contextFor(user, ip);
    }

    // A method call through the host; out receives the output parameters.
    CIMValue call(const OperationContext& context, const CIMObjectPath& path, const char* method,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
    {
        out.clear();
        return server().invokeMethod(context, ZDA_NS, path, method, in, out);
    }

    // Runs `call` on the host's own provider of the association class,
    // outside any request, with a recording handler, and gives what the
    // handler saw ("processing deliver(path) complete"). No delivery may
    // come under the semaphore, and the ledgers are checked after.
    template <class Call>
    std::string direct(const char* association, Call call)
    {
        std::optional<zda::server::ProviderId> id = ServerHostFixture::host().registry().find(
            ZDA_NS, association, zda::server::ProviderType::Association);
        EXPECT_TRUE(id.has_value()) << association;
        zda_test::SemaphoreCheckingHandler handler;
        {
            zda::server::ProviderManager::Lease lease =
                ServerHostFixture::host().providers().acquire(*id);
            call(dynamic_cast<CIMAssociationProvider&>(lease.provider()),
                dynamic_cast<CIMInstanceProvider&>(lease.provider()), handler);
        }
        EXPECT_EQ(handler.deliveriesUnderSemaphore(), 0);
        expectLedgersClean(std::string("a direct call of ") + association);
        return handler.sequence();
    }
};

// The output parameter of that name, a null value when absent.
inline CIMValue outParam(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (String::equalNoCase(out[i].getParameterName(), name))
            return out[i].getValue();
    return CIMValue();
}

}  // namespace zda_replication_test

#endif
