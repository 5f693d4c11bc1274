#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <openssl/evp.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace zda_it
{

namespace
{
using Clock = std::chrono::steady_clock;

int millisLeft(Clock::time_point deadline)
{
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left < 0 ? 0 : int(left);
}

std::vector<char*> cArgs(const std::vector<std::string>& argv)
{
    std::vector<char*> out;
    for (const auto& a : argv)
        out.push_back(const_cast<char*>(a.c_str()));
    out.push_back(nullptr);
    return out;
}

// Waits until the deadline for data on `fd` and appends what arrives: 1
// when some did, 0 at the end of the data, -1 when the deadline came first.
int readSome(int fd, std::string& into, Clock::time_point deadline)
{
    pollfd p{fd, POLLIN, 0};
    if (::poll(&p, 1, millisLeft(deadline)) <= 0)
        return -1;
    char buffer[4096];
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n <= 0)
        return 0;
    into.append(buffer, std::size_t(n));
    return 1;
}

// Waits for the child to exit until the deadline; the exit status, or -2
// when it is still running.
int waitUntil(pid_t pid, Clock::time_point deadline)
{
    for (;;)
    {
        int status = 0;
        pid_t r = ::waitpid(pid, &status, WNOHANG);
        if (r == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        if (r < 0)
            return -1;
        if (Clock::now() >= deadline)
            return -2;
        ::poll(nullptr, 0, 10);
    }
}

// Sends `signal` (0: none) and waits up to `patience` for the exit, then
// kills the child; its exit status, -1 when it did not exit normally.
int endChild(pid_t pid, int signal, std::chrono::seconds patience)
{
    if (signal)
        ::kill(pid, signal);
    int status = waitUntil(pid, Clock::now() + patience);
    if (status == -2)
    {
        ::kill(pid, SIGKILL);
        waitUntil(pid, Clock::now() + std::chrono::seconds(10));
        status = -1;
    }
    return status;
}

// Starts argv[0] (found on PATH) with `actions`, which it destroys, and
// closes here the pipe ends `childEnds` handed to the child and, when the
// start fails, `parentEnds` before it throws.
pid_t spawn(const std::vector<std::string>& argv, posix_spawn_file_actions_t& actions,
    std::initializer_list<int> childEnds, std::initializer_list<int> parentEnds)
{
    pid_t pid = -1;
    auto args = cArgs(argv);
    const int rc = ::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    for (int fd : childEnds)
        ::close(fd);
    if (rc == 0)
        return pid;
    for (int fd : parentEnds)
        ::close(fd);
    throw std::runtime_error("cannot run " + argv[0] + ": " + std::strerror(rc));
}
}  // namespace

CommandResult runCommand(const std::vector<std::string>& argv, int timeoutMs, const std::string& input)
{
    int out[2], in[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(in, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, out[1], 2);
    const pid_t pid = spawn(argv, actions, {out[1], in[0]}, {out[0], in[1]});
    if (!input.empty())
    {
        ssize_t ignored = ::write(in[1], input.data(), input.size());
        (void)ignored;
    }
    ::close(in[1]);

    CommandResult result;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int got;
    while ((got = readSome(out[0], result.output, deadline)) > 0)
    {}
    ::close(out[0]);
    const bool timedOut = got < 0;
    const int status = endChild(pid, timedOut ? SIGKILL : 0, std::chrono::seconds(10));
    result.exitCode = timedOut ? -1 : status;
    return result;
}

TemporaryFolder::TemporaryFolder()
{
    char pattern[] = "/tmp/zda-it-XXXXXX";
    if (!::mkdtemp(pattern))
        throw std::runtime_error("mkdtemp failed");
    _path = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

std::string serverProgram()
{
    return ZDA_IT_SERVER;
}

ServerProcess::ServerProcess(
    const std::string& stateDir, const std::vector<std::string>& extraArguments, bool withTestMof)
    : _stateDir(stateDir)
{
    std::vector<std::string> argv = {serverProgram(), "--http-port", "0", "--https-port", "0", "--state-dir",
        stateDir, "--mof-dir", ZDA_IT_PROJECT_MOF, "--modules-dir", ZDA_IT_MODULES};
    if (withTestMof)
        argv.insert(argv.end(), {"--mof-dir", ZDA_IT_TEST_MOF});
    argv.insert(argv.end(), extraArguments.begin(), extraArguments.end());

    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    std::string errFile = stateDir + "/server.err";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, errFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    _pid = spawn(argv, actions, {out[1]}, {out[0]});
    _stdoutFd = out[0];

    // The ready line names the URLs; until then the server writes nothing
    // on stdout.
    const auto deadline = Clock::now() + std::chrono::seconds(60);
    while (_stdout.find('\n') == std::string::npos && readSome(_stdoutFd, _stdout, deadline) > 0)
    {}
    std::smatch m;
    std::string firstLine = _stdout.substr(0, _stdout.find('\n'));
    if (!std::regex_search(firstLine, std::regex("^zda-cimserver ready:")))
    {
        stop();
        throw std::runtime_error("the server did not get ready; stdout: " + _stdout + "\nstderr: " + log());
    }
    if (std::regex_search(firstLine, m, std::regex("http://127\\.0\\.0\\.1:(\\d+)")))
        _httpPort = std::stoi(m[1]);
    if (std::regex_search(firstLine, m, std::regex("https://127\\.0\\.0\\.1:(\\d+)")))
        _httpsPort = std::stoi(m[1]);
}

ServerProcess::~ServerProcess()
{
    stop();
}

int ServerProcess::stop()
{
    if (_pid > 0)
    {
        _exitStatus = endChild(_pid, SIGTERM, std::chrono::seconds(60));
        _pid = -1;
    }
    if (_stdoutFd >= 0)
    {
        while (readSome(_stdoutFd, _stdout, Clock::now() + std::chrono::seconds(10)) > 0)
        {}
        ::close(_stdoutFd);
        _stdoutFd = -1;
    }
    return _exitStatus;
}

std::string ServerProcess::log() const
{
    std::ifstream in(_stateDir + "/server.err");
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string ServerProcess::url(const std::string& user, const std::string& nameSpace, bool secure) const
{
    return std::string(secure ? "https://" : "http://") + user +
        "@127.0.0.1:" + std::to_string(secure ? _httpsPort : _httpPort) + "/" + nameSpace + ":";
}

RawConnection::RawConnection(int port, const std::string& source, int receiveBuffer)
{
    _fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer > 0)
        ::setsockopt(_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in from{};
    from.sin_family = AF_INET;
    ::inet_pton(AF_INET, source.c_str(), &from.sin_addr);
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_port = htons(static_cast<uint16_t>(port));
    where.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(_fd, reinterpret_cast<sockaddr*>(&from), sizeof from) != 0 ||
        ::connect(_fd, reinterpret_cast<sockaddr*>(&where), sizeof where) != 0)
    {
        ::close(_fd);
        throw std::runtime_error("cannot connect to port " + std::to_string(port) + " from " + source);
    }
}

RawConnection::~RawConnection()
{
    ::close(_fd);
}

void RawConnection::send(const std::string& data)
{
    ::send(_fd, data.data(), data.size(), MSG_NOSIGNAL);
}

const std::string& RawConnection::readUntil(const std::string& until, int timeoutMs)
{
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!_closed && (until.empty() || _received.find(until) == std::string::npos))
    {
        const int got = readSome(_fd, _received, deadline);
        if (got < 0)
            break;
        _closed = got == 0;
    }
    return _received;
}

RawExchange rawExchange(int port, const std::string& request, int timeoutMs)
{
    RawExchange result;
    RawConnection connection(port);
    auto start = Clock::now();
    connection.send(request);
    result.response = connection.readUntil("", timeoutMs);
    result.closedByServer = connection.closedByServer();
    result.elapsedMs = int(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    return result;
}

std::string runReadmeSection(const std::string& section, const ServerProcess& server, std::size_t atLeast)
{
    std::ifstream in(ZDA_IT_README);
    std::string readme((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::size_t begin = readme.find("<!-- " + section + ":begin -->");
    std::size_t end = readme.find("<!-- " + section + ":end -->");
    if (begin == std::string::npos || end == std::string::npos)
        end = begin = 0;
    std::istringstream lines(readme.substr(begin, end - begin));
    std::size_t count = 0;
    std::string all;
    for (std::string command; std::getline(lines, command);)
    {
        if (command.rfind("wbemcli ", 0) != 0)
            continue;
        ++count;
        command = std::regex_replace(
            command, std::regex("localhost:5988"), "127.0.0.1:" + std::to_string(server.httpPort()));
        command = std::regex_replace(
            command, std::regex("localhost:5989"), "127.0.0.1:" + std::to_string(server.httpsPort()));
        CommandResult r = runCommand({"sh", "-c", command});
        EXPECT_EQ(r.exitCode, 0) << command << "\n" << r.output;
        EXPECT_FALSE(r.output.empty()) << command;
        all += r.output;
    }
    EXPECT_GE(count, atLeast) << "commands in the README section " << section;
    return all;
}

TemporaryFolder* SharedServerTest::folder = nullptr;
ServerProcess* SharedServerTest::server = nullptr;

void SharedServerTest::SetUpTestSuite()
{
    startServer({});
}

void SharedServerTest::startServer(const std::vector<std::string>& extraArguments, bool withTestMof)
{
    cimxml::registerClientTransports();
    folder = new TemporaryFolder;
    server = new ServerProcess(folder->path(), extraArguments, withTestMof);
}

CommandResult SharedServerTest::wbemcli(const std::string& verb, const std::string& user,
    const std::string& object, const std::vector<std::string>& options,
    const std::vector<std::string>& arguments, const std::string& nameSpace)
{
    std::vector<std::string> argv = {"wbemcli", verb};
    argv.insert(argv.end(), options.begin(), options.end());
    argv.push_back(server->url(user, nameSpace) + object);
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return runCommand(argv);
}

CommandResult SharedServerTest::control(const std::string& call)
{
    return wbemcli("cm", "admin:admin-demo", "ZDA_SimulatorControl", {}, {call}, "root/zda_sim");
}

std::vector<std::string> outputLines(const std::string& output)
{
    std::vector<std::string> out;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            out.push_back(line);
    return out;
}

std::size_t countOccurrences(const std::string& output, const std::string& what)
{
    std::size_t n = 0;
    for (std::size_t at = output.find(what); at != std::string::npos; at = output.find(what, at + 1))
        n++;
    return n;
}

void SharedServerTest::TearDownTestSuite()
{
    const int status = server->stop();
    if (status != 0)
        ADD_FAILURE() << "the server exited with status " << status << ":\n" << server->log();
    delete server;
    delete folder;
    server = nullptr;
    folder = nullptr;
}

void SharedServerTest::TearDown()
{
    if (HasFailure())
        std::cerr << "server log:\n" << server->log();
}

std::string enumerateBody(
    const std::string& operation, const std::string& className, const std::string& nameSpace)
{
    std::string path;
    std::istringstream parts(nameSpace);
    for (std::string part; std::getline(parts, part, '/');)
        path += "<NAMESPACE NAME=\"" + part + "\"/>";
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
           "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\">"
           "<SIMPLEREQ><IMETHODCALL NAME=\"" +
        operation + "\"><LOCALNAMESPACEPATH>" + path +
        "</LOCALNAMESPACEPATH><IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + className +
        "\"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

std::string basicAuthorization(const std::string& user, const std::string& password)
{
    std::string plain = user + ":" + password;
    std::string out(4 * ((plain.size() + 2) / 3) + 1, '\0');
    int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
        reinterpret_cast<const unsigned char*>(plain.data()), int(plain.size()));
    out.resize(std::size_t(n));
    return "Basic " + out;
}

}  // namespace zda_it
