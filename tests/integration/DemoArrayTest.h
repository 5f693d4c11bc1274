// The demo array behind its own running server (simulator controls served),
// as the replication tests reach it: a CIMClient connected as admin, the
// replication service's path, and readers of what methods and instances
// return.
#ifndef ZDA_TESTS_DEMO_ARRAY_TEST_H
#define ZDA_TESTS_DEMO_ARRAY_TEST_H

#include "../unit/server/cim_error_of.h"
#include "SdkText.h"
#include "ServerProcess.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zda_it
{

const char SERVICE[] = "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
                       "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName="
                       "\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";

// The value of a property (T() when absent or null).
template <class T>
T valueOf(const Pegasus::CIMInstance& instance, const char* name)
{
    T value = T();
    const Pegasus::Uint32 at = instance.findProperty(name);
    if (at != Pegasus::PEG_NOT_FOUND && !instance.getProperty(at).getValue().isNull())
        instance.getProperty(at).getValue().get(value);
    return value;
}

class DemoArrayTest : public SharedServerTest
{
protected:
    static void SetUpTestSuite() { startServer({"--https-port", "off", "--simulator-control"}); }
    void SetUp() override
    {
        client.connect("127.0.0.1", Pegasus::Uint32(server->httpPort()), "admin", "admin-demo");
        service = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationService")[0];
    }

    // wbemcli as admin on an object of root/zda.
    static CommandResult admin(const std::string& verb, const std::string& object,
        const std::vector<std::string>& arguments = {}, const std::vector<std::string>& options = {})
    {
        return wbemcli(verb, "admin:admin-demo", object, options, arguments);
    }
    // A simulator control call that must succeed.
    static void step(const std::string& call)
    {
        const CommandResult done = control(call);
        ASSERT_EQ(done.exitCode, 0) << call << "\n" << done.output;
    }

    // "returned <value>" of a method of the service, or "thrown <code>:
    // <message>".
    std::string call(const char* method, const Pegasus::Array<Pegasus::CIMParamValue>& in,
        Pegasus::Array<Pegasus::CIMParamValue>& out)
    {
        Pegasus::Uint32 result = 0;
        std::string message;
        const int code = zda_test::cimErrorOf(
            [&] { client.invokeMethod("root/zda", service, method, in, out).get(result); }, &message);
        return code ? "thrown " + std::to_string(code) + ": " + message
                    : "returned " + std::to_string(result);
    }
    static Pegasus::CIMValue outValue(const Pegasus::Array<Pegasus::CIMParamValue>& out, const char* name)
    {
        for (Pegasus::Uint32 i = 0; i < out.size(); i++)
            if (out[i].getParameterName() == name)
                return out[i].getValue();
        return Pegasus::CIMValue();
    }
    // The path of the demo array's volume of that name (a null path when
    // there is none).
    Pegasus::CIMObjectPath volume(const std::string& name)
    {
        const Pegasus::Array<Pegasus::CIMInstance> all = client.enumerateInstances(
            "root/zda", "ZDA_StorageVolume", true, false);
        for (Pegasus::Uint32 i = 0; i < all.size(); i++)
            if (zda_test::text(valueOf<Pegasus::String>(all[i], "ElementName")) == name)
                return all[i].getPath();
        return Pegasus::CIMObjectPath();
    }

    Pegasus::CIMClient client;
    Pegasus::CIMObjectPath service;
};

}  // namespace zda_it

#endif
