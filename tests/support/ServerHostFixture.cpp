#include "ServerHostFixture.h"

#include <zdasim_control.h>

namespace zda_test
{

zda::server::HostOptions hostOptions(const std::vector<std::string>& extraMofDirectories)
{
    zda::server::HostOptions options;
    options.mofDirectories.push_back(ZDA_PROJECT_MOF_DIR);
    options.mofDirectories.insert(
        options.mofDirectories.end(), extraMofDirectories.begin(), extraMofDirectories.end());
    options.modulesDirectory = ZDA_BUILT_MODULES_DIR;
    options.hostName = "testhost";
    return options;
}

void ServerHostFixture::SetUp()
{
    SimulatorFixture::SetUp();
    restartHost();
}

void ServerHostFixture::TearDown()
{
    _host.reset();
    SimulatorFixture::TearDown();
}

void ServerHostFixture::restartHost()
{
    _host.reset();
    _host = std::make_unique<zda::server::InProcessHost>(options());
    _host->dispatcher().setOperationObserver(
        [this](const char* operation) { expectLedgersClean(operation); });
}

}  // namespace zda_test
