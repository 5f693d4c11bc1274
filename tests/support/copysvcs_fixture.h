// What the copy services tests share: the companion fixture on a stepped
// clock, volume paths by name as the volume provider serves them, and the
// arguments the replication module passes to the copy operations.
#ifndef ZDA_COPYSVCS_FIXTURE_H
#define ZDA_COPYSVCS_FIXTURE_H

#include <cstring>
#include <ctime>
#include <map>
#include <string>

#include "companions_fixture.h"
#include "ZDA_Common.h"

namespace zda_copysvcs_test
{

using namespace Pegasus;
using namespace zda_companions_test;

const char SYSTEM_NAME[] = "zda-sim";
const char HOST[] = "zda-sim.local";

using zda_test::vvRecordOf;

class CopyServicesTest : public CompanionsTest
{
protected:
    void SetUp() override
    {
        CompanionsTest::SetUp();
        zdasim_clock_set(time(nullptr));
        std::strcpy(event.user, "admin");
        // The copy operations read the identity the volume provider fills.
        volumePaths();
    }
    void TearDown() override
    {
        zdasim_clock_use_real();
        CompanionsTest::TearDown();
    }

    // Every volume's path as the volume provider serves it, by name.
    std::map<std::string, CIMObjectPath> volumePaths()
    {
        std::map<std::string, CIMObjectPath> byName;
        Array<CIMInstance> all = instancesOf("ZDA_StorageVolume");
        for (Uint32 i = 0; i < all.size(); i++)
            byName[text(get<String>(all[i], "ElementName"))] = all[i].getPath();
        return byName;
    }
    CIMObjectPath volume(const std::string& name)
    {
        auto paths = volumePaths();
        auto it = paths.find(name);
        return it == paths.end() ? CIMObjectPath() : it->second;
    }
    // The path a reference key of an association path holds.
    static CIMObjectPath endOf(const CIMObjectPath& assoc, const char* role)
    {
        return CIMObjectPath(ZDA_Common::getStringProperty(assoc, role));
    }

    api_evtparam_t event{};
    CIMOMHandle cimom;
    const String systemName = SYSTEM_NAME;
    const String host = HOST;
};

}  // namespace zda_copysvcs_test

#endif
