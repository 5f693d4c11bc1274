// zda-cimserver: serves the project's MOF and provider modules over CIM-XML
// (HTTP, HTTPS and a local socket) on top of the array simulator.
#include "CimRequestHandler.h"
#include "Certificate.h"
#include "HttpServer.h"
#include "Users.h"

#include <InProcessHost.h>
#include <ServerLog.h>

#include <zdaapi_base.h>
#include <zdasim_control.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace zda::cimserver;

namespace
{

struct Settings
{
    std::string bind = "127.0.0.1";
    std::string httpPort = "5988";
    std::string httpsPort = "5989";
    std::string arrayFile;
    std::string stateFile;
    std::string usersFile;
    std::string stateDir;
    std::vector<std::string> mofDirs;
    std::string modulesDir;
    std::string localUser = "admin";
    double semTimeoutSeconds = -1;
    int logLevel = -1;
    std::string logFile;
    std::string addUser;
    bool simulatorControl = false;
    std::string certificateFile;
    std::string keyFile;
    ListenerOptions limits;
    unsigned maxXmlDepth = 64;
    double headerTimeoutSeconds = 30;
    double bodyTimeoutSeconds = 120;
    double unauthenticatedTimeoutSeconds = 10;
    double sendTimeoutSeconds = 20;
    zda::server::PullLimits pull;
    unsigned pullDefaultTimeoutSeconds = 30;
    unsigned pullMaxTimeoutSeconds = 90;
};

// "off" is -1; anything else must be a port number (0: any free port).
int parsePort(const std::string& text, const char* option)
{
    if (text == "off")
        return -1;
    char* end = nullptr;
    long port = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || port < 0 || port > 65535)
        throw CLI::ValidationError(option, "expected a port number (0 for any free port) or 'off'");
    return int(port);
}

// The folder of this executable: the build keeps the provider modules in
// ../lib next to bin/.
fs::path executableFolder()
{
    std::error_code ec;
    fs::path self = fs::read_symlink("/proc/self/exe", ec);
    return ec ? fs::current_path() : self.parent_path();
}

std::string defaultStateDir()
{
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
        return std::string(state) + "/zda-cimserver";
    if (const char* home = std::getenv("HOME"); home && *home)
        return std::string(home) + "/.local/state/zda-cimserver";
    return "/tmp/zda-cimserver-" + std::to_string(::getuid());
}

void addOptions(CLI::App& app, Settings& s)
{
    // An option given twice takes its last value, so that scripts can
    // override what they set before.
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--bind", s.bind, "Address the HTTP and HTTPS listeners bind to")->capture_default_str();
    app.add_option("--http-port", s.httpPort, "HTTP port; 0 picks a free port, 'off' disables")
        ->capture_default_str();
    app.add_option("--https-port", s.httpsPort, "HTTPS port; 0 picks a free port, 'off' disables")
        ->capture_default_str();
    app.add_option("--array", s.arrayFile, "Array description to serve (the demo array without it)")
        ->check(CLI::ExistingFile);
    app.add_option("--state", s.stateFile, "File that keeps the array's state across restarts");
    app.add_option("--users", s.usersFile, "Users file of name:crypt-hash lines (demo users without it)");
    app.add_option("--state-dir", s.stateDir, "Folder for the generated certificate and the local socket");
    app.add_option("--mof-dir", s.mofDirs, "MOF folder (repeatable; the project's MOF without it)")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--modules-dir", s.modulesDir, "Folder of the provider modules (lib<Location>.so)");
    app.add_option("--local-user", s.localUser, "Identity of local-socket clients and of calls without one")
        ->capture_default_str();
    app.add_option(
           "--sem-timeout", s.semTimeoutSeconds, "Seconds the array's semaphore waits before timing out")
        ->check(CLI::PositiveNumber);
    app.add_option("--log-level", s.logLevel, "Log lines up to this level (2 errors, 3 warnings, 4 trace)")
        ->check(CLI::Range(0, 9));
    app.add_option("--log-file", s.logFile, "Append the log to this file instead of stderr");
    app.add_flag("--simulator-control", s.simulatorControl,
        "Serve the simulator's controls (class ZDA_SimulatorControl in root/zda_sim)");
    app.set_config("--config", "", "Read options from this file (name = value lines)");
    app.add_option("--add-user", s.addUser,
        "Add a user to the --users file, or change its password, reading the password from "
        "standard input, then exit");

    const char* group = "Limits and TLS";
    app.add_option(
           "--tls-cert", s.certificateFile, "HTTPS certificate chain (PEM; self-signed pair without it)")
        ->group(group)
        ->check(CLI::ExistingFile);
    app.add_option("--tls-key", s.keyFile, "HTTPS private key (PEM)")->group(group)->check(CLI::ExistingFile);
    app.add_option("--max-request-bytes", s.limits.maxRequestBytes, "Largest request body accepted")
        ->group(group)
        ->capture_default_str();
    app.add_option("--max-xml-depth", s.maxXmlDepth, "Deepest element nesting accepted in a request")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(8u, 10000u));
    app.add_option(
           "--header-timeout", s.headerTimeoutSeconds, "Seconds a client has to send a request's headers")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--body-timeout", s.bodyTimeoutSeconds, "Seconds a client has to send a request's body")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--max-body-bytes-in-flight", s.limits.maxBodyBytesInFlight,
           "Request body bytes received at once over all connections")
        ->group(group)
        ->capture_default_str();
    app.add_option("--unauthenticated-timeout", s.unauthenticatedTimeoutSeconds,
           "Seconds a connection that has not authenticated may stay idle")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--send-timeout", s.sendTimeoutSeconds,
           "Seconds an answer may wait for its client to read before the connection is dropped")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--max-connections", s.limits.maxConnections, "TCP connections served at once")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 100000u));
    app.add_option("--max-unauthenticated-connections", s.limits.maxUnauthenticatedConnections,
           "TCP connections served at once that have not authenticated")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 100000u));
    app.add_option("--max-connections-per-address", s.limits.maxConnectionsPerAddress,
           "TCP connections served at once from one client address")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 100000u));
    app.add_option("--threads", s.limits.threads,
           "Threads serving connections; as many wait to run requests, and more start while all are busy")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 256u));
    app.add_option("--pull-max-contexts", s.pull.maxContexts, "Enumeration contexts open at once")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 100000u));
    app.add_option("--pull-max-contexts-per-user", s.pull.maxContextsPerUser,
           "Enumeration contexts one user may have open at once")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 100000u));
    app.add_option("--pull-default-timeout", s.pullDefaultTimeoutSeconds,
           "Seconds an enumeration context waits for its next pull when the open names no time-out")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 86400u));
    app.add_option(
           "--pull-max-timeout", s.pullMaxTimeoutSeconds, "Longest OperationTimeout a client may ask for")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 86400u));
    app.add_option(
           "--pull-max-object-count", s.pull.maxObjectCount, "Most results one open or pull may ask for")
        ->group(group)
        ->capture_default_str()
        ->check(CLI::Range(1u, 1000000u));
}

std::chrono::milliseconds millis(double seconds)
{
    return std::chrono::milliseconds(static_cast<long long>(seconds * 1000));
}

int serve(Settings& s)
{
    ListenerOptions listen = s.limits;
    listen.bindAddress = s.bind;
    listen.httpPort = parsePort(s.httpPort, "--http-port");
    listen.httpsPort = parsePort(s.httpsPort, "--https-port");
    listen.headerTimeout = millis(s.headerTimeoutSeconds);
    listen.bodyTimeout = millis(s.bodyTimeoutSeconds);
    listen.unauthenticatedTimeout = millis(s.unauthenticatedTimeoutSeconds);
    listen.sendTimeout = millis(s.sendTimeoutSeconds);
    if (listen.maxBodyBytesInFlight < listen.maxRequestBytes)
        throw std::runtime_error("--max-body-bytes-in-flight must be at least --max-request-bytes");
    if (s.certificateFile.empty() != s.keyFile.empty())
        throw std::runtime_error("--tls-cert and --tls-key go together");

    // The server's lines join the array library's log, so one file and one
    // threshold serve the server, the providers and the array alike.
    zda::server::setLogSink(
        [](int level, const std::string& line) { log_message(level, "%s", line.c_str()); });
    if (s.logFile.size() && zdasim_log_to_file(s.logFile.c_str()) != 0)
        throw std::runtime_error("cannot write the log file " + s.logFile);
    if (s.logLevel >= 0)
        zdasim_log_set_threshold(s.logLevel);
    if (s.semTimeoutSeconds > 0)
        zdasim_sem_set_timeout_ms(long(s.semTimeoutSeconds * 1000));

    char error[1024] = "";
    if (!s.arrayFile.empty() && zdasim_load_description_file(s.arrayFile.c_str(), error, sizeof error) != 0)
        throw std::runtime_error(error);
    if (!s.stateFile.empty() && zdasim_state_file_open(s.stateFile.c_str(), error, sizeof error) != 0)
        throw std::runtime_error(error);

    UserStore users = s.usersFile.empty() ? UserStore::demoUsers() : UserStore::readFile(s.usersFile);
    if (s.usersFile.empty())
        log_message(3, "zda-cimserver: no --users file: serving the demo users (for demonstrations only)");

    fs::create_directories(s.stateDir);
    ::chmod(s.stateDir.c_str(), 0700);
    if (listen.httpsPort >= 0)
    {
        if (s.certificateFile.empty())
        {
            CertificateFiles pair = ensureSelfSignedCertificate(s.stateDir);
            listen.certificateFile = pair.certificate;
            listen.keyFile = pair.key;
        }
        else
        {
            listen.certificateFile = s.certificateFile;
            listen.keyFile = s.keyFile;
        }
    }
    listen.socketPath = s.stateDir + "/cimserver.socket";

    zda::server::HostOptions hostOptions;
    hostOptions.mofDirectories = s.mofDirs;
    if (s.simulatorControl)
        hostOptions.mofDirectories.push_back(ZDA_SIMULATOR_CONTROL_MOF_DIR);
    hostOptions.modulesDirectory = s.modulesDir;
    hostOptions.localUser = Pegasus::String(s.localUser.c_str());
    zda::server::InProcessHost host(hostOptions);

    HandlerOptions handlerOptions;
    handlerOptions.localUser = s.localUser;
    handlerOptions.maxXmlDepth = s.maxXmlDepth;
    handlerOptions.pull = s.pull;
    // A default beyond the longest allowed time-out is cut to it.
    handlerOptions.pull.defaultTimeout = std::chrono::seconds(
        std::min(s.pullDefaultTimeoutSeconds, s.pullMaxTimeoutSeconds));
    handlerOptions.pull.maxTimeout = std::chrono::seconds(s.pullMaxTimeoutSeconds);
    CimRequestHandler handler(host.dispatcher(), users, handlerOptions);
    HttpServer server(handler, listen);

    std::string line = "zda-cimserver ready:";
    for (const auto& url : server.urls())
        line += " " + url;
    std::cout << line << std::endl;
    log_message(3, "zda-cimserver: serving; local socket %s", listen.socketPath.c_str());

    // SIGINT and SIGTERM are blocked in every thread; this one waits for them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    int signal = 0;
    sigwait(&stopSignals, &signal);
    log_message(3, "zda-cimserver: stopping on signal %d", signal);

    server.stop();
    host.shutdown();
    if (!s.stateFile.empty())
    {
        if (zdasim_save_description_file(s.stateFile.c_str(), error, sizeof error) != 0)
            log_message(2, "zda-cimserver: cannot write the state: %s", error);
        zdasim_state_file_close();
    }
    std::cout << "zda-cimserver stopped" << std::endl;
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    // Block the stop signals before any thread starts, so that only the
    // main thread's sigwait receives them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    Settings s;
    CLI::App app{"zda-cimserver: a CIM server for the ZDA array simulator"};
    addOptions(app, s);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& e)
    {
        return app.exit(e);
    }
    if (s.stateDir.empty())
        s.stateDir = defaultStateDir();
    if (s.mofDirs.empty())
        s.mofDirs.push_back(ZDA_PROJECT_MOF_DIR);
    if (s.modulesDir.empty())
        s.modulesDir = (executableFolder() / ".." / "lib").lexically_normal().string();

    try
    {
        if (!s.addUser.empty())
        {
            if (s.usersFile.empty())
                throw UsersError("--add-user needs --users FILE");
            addUserToFile(s.usersFile, s.addUser, std::cin);
            std::cout << "zda-cimserver: saved user " << s.addUser << " in " << s.usersFile << std::endl;
            return 0;
        }
        parsePort(s.httpPort, "--http-port");
        parsePort(s.httpsPort, "--https-port");
        return serve(s);
    }
    catch (const CLI::ParseError& e)
    {
        return app.exit(e);
    }
    catch (const std::exception& e)
    {
        std::cerr << "zda-cimserver: " << e.what() << std::endl;
        return 1;
    }
}
