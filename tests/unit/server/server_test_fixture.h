// The host fixture with the test provider module: its MOF on top of the
// project's, its notes and counts cleared before each test, and the host's
// log lines kept for the test to read.
#ifndef ZDA_TESTS_SERVER_TEST_FIXTURE_H
#define ZDA_TESTS_SERVER_TEST_FIXTURE_H

#include "CimBuilders.h"
#include "cim_error_of.h"
#include "ServerHostFixture.h"
#include "TestProviderControl.h"

#include <Pegasus/Common/CIMInstance.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace zda_test
{

using namespace Pegasus;

inline const CIMNamespaceName TEST_NS("root/test");

class TestModuleFixture : public ServerHostFixture
{
protected:
    void SetUp() override
    {
        zda_test_providers::reset();
        ServerHostFixture::SetUp();
    }

    zda::server::HostOptions options() const override
    {
        zda::server::HostOptions o = hostOptions({ZDA_TEST_PROVIDER_MOF_DIR});
        o.localUser = localUser.c_str();
        o.log = [this](int level, const std::string& line) {
            std::lock_guard<std::mutex> lock(_logMutex);
            _log.push_back(std::to_string(level) + " " + line);
        };
        return o;
    }

    // How many of the host's log lines hold `text`, at their start when `atStart`.
    int logLines(const std::string& text, bool atStart = false) const
    {
        std::lock_guard<std::mutex> lock(_logMutex);
        return int(std::count_if(_log.begin(), _log.end(), [&](const std::string& line) {
            return atStart ? line.rfind(text, 0) == 0 : line.find(text) != std::string::npos;
        }));
    }

    static CIMObjectPath disk(const std::string& id, const char* cls = "Test_Disk")
    {
        return instancePath("root/test", cls, {{"Id", id}});
    }

    static CIMObjectPath service() { return instancePath("root/test", "Test_Service", {{"Name", "svc"}}); }

    // The Id key of each path, sorted.
    static std::vector<std::string> ids(const Array<CIMObjectPath>& paths)
    {
        std::vector<std::string> out;
        for (Uint32 i = 0; i < paths.size(); ++i)
        {
            const Array<CIMKeyBinding>& keys = paths[i].getKeyBindings();
            for (Uint32 k = 0; k < keys.size(); ++k)
                if (keys[k].getName().equal("Id"))
                    out.push_back((const char*)keys[k].getValue().getCString());
        }
        std::sort(out.begin(), out.end());
        return out;
    }

    template <class Objects>
    static std::vector<std::string> idsOf(const Objects& objects)
    {
        Array<CIMObjectPath> paths;
        for (Uint32 i = 0; i < objects.size(); ++i)
            paths.append(objects[i].getPath());
        return ids(paths);
    }

    // The property names of an instance, in order.
    static std::vector<std::string> propertyNames(const CIMConstInstance& instance)
    {
        std::vector<std::string> out;
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
            out.push_back((const char*)instance.getProperty(i).getName().getString().getCString());
        return out;
    }

    std::string localUser = "admin";

private:
    mutable std::mutex _logMutex;
    mutable std::vector<std::string> _log;
};

}  // namespace zda_test

#endif
