// Fixtures for tests that run providers the way the server runs them.
//
// ServerHostFixture adds to SimulatorFixture an in-process host (the project's MOF plus any
// test MOF folders, modules from the build's library folder) and checks the
// ledgers after each outermost operation the host serves, naming the
// operation in the failure.
//
// A provider test in a few lines (the module's registration MOF is part of
// the project's MOF, its library is built into the modules folder):
//
//   class ReplicationServiceTest : public zda_test::ServerHostFixture {};
//   TEST_F(ReplicationServiceTest, ServiceIsEnumerated) {
//       auto names = server().enumerateInstanceNames(
//           zda::server::InProcessHost::contextFor("admin"), "root/zda", "ZDA_ReplicationService");
//       EXPECT_EQ(names.size(), 1u);
//   }
#ifndef ZDA_TESTS_SERVER_HOST_FIXTURE_H
#define ZDA_TESTS_SERVER_HOST_FIXTURE_H

#include "SimulatorFixture.h"

#include <InProcessHost.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zda_test
{

// Host options for the project's MOF followed by `extraMofDirectories`,
// with the built provider modules (lib<Location>.so).
zda::server::HostOptions hostOptions(const std::vector<std::string>& extraMofDirectories = {});

class ServerHostFixture : public SimulatorFixture
{
protected:
    // Builds the host from options(); override to change them.
    void SetUp() override;
    void TearDown() override;
    virtual zda::server::HostOptions options() const { return hostOptions(); }

    zda::server::InProcessHost& host() { return *_host; }
    zda::server::Dispatcher& server() { return _host->dispatcher(); }
    // Shuts the host down and builds a new one (fresh providers).
    void restartHost();

private:
    std::unique_ptr<zda::server::InProcessHost> _host;
};

}  // namespace zda_test

#endif
