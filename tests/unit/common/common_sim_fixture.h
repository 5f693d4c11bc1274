// Set-up shared by the tests of ZDA_Common: the simulator fixture at a
// fixed time with every log line captured. The internal cache service is
// dropped so that each test starts from the array it loaded.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "SdkText.h"
#include "SimulatorFixture.h"
#include "ZDA_Common.h"
#include "zdaapi.h"
#include "zdasim_control.h"

namespace zda_common_test
{

constexpr time_t kT0 = 1767225600;  // 2026-01-01 00:00:00 UTC

class CommonSimTest : public zda_test::SimulatorFixture
{
protected:
    void SetUp() override
    {
        zdasim_clock_set(kT0);  // before the reset, which stamps the array's times
        zda_test::SimulatorFixture::SetUp();
        zdasim_sem_set_timeout_ms(2000);
        zdasim_log_capture(1);
        zdasim_log_set_threshold(1);  // quiet output; the capture keeps every level
        Pegasus::ZDA_InternalCacheService::destroy();
    }

    void TearDown() override
    {
        zda_test::SimulatorFixture::TearDown();
        zdasim_faults_clear();
        zdasim_log_capture(0);
        zdasim_log_clear();
        Pegasus::ZDA_InternalCacheService::destroy();
    }
};

using zda_test::journalOf;
using zda_test::logLines;

// Whether a line of exactly this level and text was logged.
inline bool logged(int level, const std::string& text)
{
    for (const auto& line : logLines())
        if (line.first == level && line.second == text)
            return true;
    return false;
}

// The WWN text of a volume of the array, empty when there is none.
inline std::string wwnOf(const std::string& name)
{
    return zda_test::vvRecordOf(name.c_str()).wwnText;
}

template <class T>
Pegasus::Array<T> arrayOf(std::initializer_list<T> items)
{
    return Pegasus::Array<T>(items.begin(), Pegasus::Uint32(items.size()));
}

// A path in root/zda whose keys are all of one type, references unless told.
inline Pegasus::CIMObjectPath keyedPath(const char* className,
    std::initializer_list<std::pair<const char*, Pegasus::String>> keys,
    Pegasus::CIMKeyBinding::Type type = Pegasus::CIMKeyBinding::REFERENCE)
{
    Pegasus::Array<Pegasus::CIMKeyBinding> bindings;
    for (const auto& key : keys)
        bindings.append(Pegasus::CIMKeyBinding(key.first, key.second, type));
    return Pegasus::CIMObjectPath("", "root/zda", className, bindings);
}

// A storage volume path whose DeviceID is the WWN text.
inline Pegasus::CIMObjectPath volumePath(const std::string& wwn)
{
    return keyedPath("ZDA_StorageVolume", {{"DeviceID", wwn.c_str()}, {"SystemName", "zda-sim"}},
        Pegasus::CIMKeyBinding::STRING);
}

using zda_test::text;

}  // namespace zda_common_test
