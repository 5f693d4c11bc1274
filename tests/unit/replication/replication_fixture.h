// What the replication module's tests share: the copy services fixture
// (in-process host over the simulator's test array, ledgers checked,
// volume paths by name), request contexts of the test array's users, and
// method calls through the host as a client makes them.
#ifndef ZDA_REPLICATION_FIXTURE_H
#define ZDA_REPLICATION_FIXTURE_H

#include "copysvcs_fixture.h"

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
