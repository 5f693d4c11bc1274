// What the replication module's tests share: the copy services fixture
// (in-process host over the simulator's test array, ledgers checked,
// volume paths by name), request contexts of the test array's users, and
// method calls through the host as a client makes them.
#ifndef ZDA_REPLICATION_FIXTURE_H
#define ZDA_REPLICATION_FIXTURE_H

#include <memory>

#include "copysvcs_fixture.h"
#include "RecordingResponseHandler.h"

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

    // Runs `call(provider, handler)` on a provider of our own, initialized
    // on a handle that reaches the in-process host; the ledgers are checked
    // afterwards, naming `what`.
    template <class Provider, class Call>
    void directCall(zda_test::RecordingResponseHandler& handler, Call call, const char* what)
    {
        CIMOMHandle handle;
        attachCIMOMHandleBackend(handle,
            std::make_shared<RepositoryBackend>(zda_test::ServerHostFixture::host()));
        Provider* provider = new Provider();
        provider->initialize(handle);
        try
        {
            call(*provider, handler);
        }
        catch (...)
        {
            provider->terminate();
            attachCIMOMHandleBackend(handle, nullptr);
            throw;
        }
        provider->terminate();
        attachCIMOMHandleBackend(handle, nullptr);
        expectLedgersClean(what);
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
