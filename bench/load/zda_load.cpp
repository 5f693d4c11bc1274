// A load test of a real zda-cimserver: starts the server on the demo array
// with a state file, runs N CIMClient clients for a bounded time, each
// cycling through reads, associations, a capabilities method and the
// creation and deletion of a replication group, checks every answer's
// content, and prints latency percentiles per operation, the errors, and
// the server's memory, threads and open files at the start, the middle and
// the end. Exits 0 only when nothing failed and the server stopped cleanly.
//   zda_load [--clients N] [--seconds S] [--server PATH] [--modules-dir DIR]
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <cimxml/ClientTransport.h>

extern char** environ;

PEGASUS_USING_PEGASUS;

namespace
{

using Clock = std::chrono::steady_clock;

const char* const kNamespace = "root/zda";
const char* const kMember = "ZDA_MemberOfReplicationGroup";

std::string text(const String& s)
{
    return std::string(s.getCString());
}

[[noreturn]] void fail(const std::string& why)
{
    std::fprintf(stderr, "zda_load: %s\n", why.c_str());
    std::exit(2);
}

struct Options
{
    int clients = 8;
    int seconds = 60;
    std::string server = ZDA_LOAD_SERVER;
    std::string modules = ZDA_LOAD_MODULES;
    std::string mof = ZDA_LOAD_MOF;
};

Options parse(int argc, char** argv)
{
    Options o;
    for (int i = 1; i < argc; ++i)
    {
        const std::string a = argv[i];
        if (i + 1 >= argc)
            fail("usage: zda_load [--clients N] [--seconds S] [--server PATH] [--modules-dir DIR]");
        const std::string v = argv[++i];
        if (a == "--clients")
            o.clients = std::max(1, std::atoi(v.c_str()));
        else if (a == "--seconds")
            o.seconds = std::max(1, std::atoi(v.c_str()));
        else if (a == "--server")
            o.server = v;
        else if (a == "--modules-dir")
            o.modules = v;
        else
            fail("unknown option " + a);
    }
    return o;
}

// ---- the server ---------------------------------------------------------------------

struct Server
{
    pid_t pid = -1;
    int port = 0;
    std::string dir;
    std::string errFile() const { return dir + "/server.err"; }
};

Server startServer(const Options& o)
{
    Server s;
    char dir[] = "/tmp/zda-load-XXXXXX";
    if (!::mkdtemp(dir))
        fail("cannot make a folder");
    s.dir = dir;
    std::vector<std::string> args = {o.server, "--http-port", "0", "--https-port", "off", "--state-dir",
        s.dir, "--state", s.dir + "/array.json", "--mof-dir", o.mof, "--modules-dir", o.modules};
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0)
        fail("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, s.errFile().c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    const int rc = ::posix_spawn(&s.pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (rc != 0)
        fail("cannot start " + o.server + ": " + std::strerror(rc));
    // The ready line names the URLs (a sanitizer build takes a while).
    std::string line;
    char buffer[512];
    const auto deadline = Clock::now() + std::chrono::seconds(120);
    while (line.find('\n') == std::string::npos && Clock::now() < deadline)
    {
        pollfd p{out[0], POLLIN, 0};
        if (::poll(&p, 1, 1000) <= 0)
            continue;
        const ssize_t n = ::read(out[0], buffer, sizeof buffer);
        if (n <= 0)
            break;
        line.append(buffer, static_cast<size_t>(n));
    }
    ::close(out[0]);
    std::smatch m;
    if (!std::regex_search(line, m, std::regex("http://127\\.0\\.0\\.1:(\\d+)")))
        fail("the server did not get ready: " + line + " (see " + s.errFile() + ")");
    s.port = std::stoi(m[1]);
    return s;
}

// Sends SIGTERM and waits; true when the server exited with 0.
bool stopServer(Server& s)
{
    ::kill(s.pid, SIGTERM);
    int status = 0;
    for (int i = 0; i < 1200; ++i)
    {
        if (::waitpid(s.pid, &status, WNOHANG) == s.pid)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ::kill(s.pid, SIGKILL);
    ::waitpid(s.pid, &status, 0);
    return false;
}

struct Sample
{
    const char* when;
    long rssKiB = 0;
    long threads = 0;
    long fds = 0;
};

Sample sample(const char* when, pid_t pid)
{
    Sample s{when};
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string key;
    while (status >> key)
    {
        if (key == "VmRSS:")
            status >> s.rssKiB;
        else if (key == "Threads:")
            status >> s.threads;
        status.ignore(1 << 20, '\n');
    }
    if (DIR* d = ::opendir(("/proc/" + std::to_string(pid) + "/fd").c_str()))
    {
        while (const dirent* e = ::readdir(d))
            if (e->d_name[0] != '.')
                ++s.fds;
        ::closedir(d);
    }
    return s;
}

// ---- what the answers must hold -----------------------------------------------------

// Read once before the load, from the demo array; every later answer must
// agree with it.
struct Expected
{
    CIMObjectPath service;
    CIMObjectPath capabilities;
    CIMObjectPath volume;  // fin_db01, in two sets of the demo array
    CIMObjectPath member;  // fin_db05, the member of the groups the clients create
    size_t volumes = 0;
    std::vector<std::string> groupsOfVolume;
    std::string features;
};

// A path's class and keys, whatever host and namespace it carries.
std::string identity(const CIMObjectPath& path)
{
    std::vector<std::string> keys;
    const Array<CIMKeyBinding> bindings = path.getKeyBindings();
    for (Uint32 i = 0; i < bindings.size(); ++i)
        keys.push_back(text(bindings[i].getName().getString()) + "=" + text(bindings[i].getValue()));
    std::sort(keys.begin(), keys.end());
    std::string out = text(path.getClassName().getString());
    for (const std::string& k : keys)
        out += "," + k;
    return out;
}

std::vector<std::string> sortedPaths(const Array<CIMObjectPath>& paths)
{
    std::vector<std::string> out;
    for (Uint32 i = 0; i < paths.size(); ++i)
        out.push_back(identity(paths[i]));
    std::sort(out.begin(), out.end());
    return out;
}

std::string property(const CIMInstance& instance, const char* name)
{
    const Uint32 at = instance.findProperty(name);
    return at == PEG_NOT_FOUND ? std::string("<none>") : text(instance.getProperty(at).getValue().toString());
}

CIMValue outValue(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); ++i)
        if (out[i].getParameterName() == name)
            return out[i].getValue();
    throw std::runtime_error(std::string("no output parameter ") + name);
}

void check(bool ok, const std::string& what)
{
    if (!ok)
        throw std::runtime_error(what);
}

std::string features(CIMClient& client, const CIMObjectPath& caps)
{
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("ReplicationType", CIMValue(Uint16(6))));
    const CIMValue rc = client.invokeMethod(kNamespace, caps, "GetSupportedFeatures", in, out);
    check(rc == CIMValue(Uint32(0)), "GetSupportedFeatures returned " + text(rc.toString()));
    return text(outValue(out, "Features").toString());
}

Expected readExpected(int port)
{
    CIMClient client;
    client.setTimeout(120000);
    client.connect("127.0.0.1", Uint32(port), "admin", "admin-demo");
    Expected e;
    e.service = client.enumerateInstanceNames(kNamespace, "ZDA_ReplicationService")[0];
    e.capabilities = client.enumerateInstanceNames(kNamespace, "ZDA_ReplicationServiceCapabilities")[0];
    Array<CIMInstance> volumes = client.enumerateInstances(kNamespace, "ZDA_StorageVolume", true, false);
    e.volumes = volumes.size();
    for (Uint32 i = 0; i < volumes.size(); ++i)
    {
        const std::string name = property(volumes[i], "ElementName");
        if (name == "fin_db01")
            e.volume = volumes[i].getPath();
        if (name == "fin_db05")
            e.member = volumes[i].getPath();
    }
    check(!e.volume.getClassName().isNull() && !e.member.getClassName().isNull(),
        "the demo array's fin_db01 and fin_db05 were not found");
    e.groupsOfVolume = sortedPaths(client.associatorNames(kNamespace, e.volume, kMember));
    check(e.groupsOfVolume.size() == 2,
        "fin_db01 is in " + std::to_string(e.groupsOfVolume.size()) + " groups, not 2");
    e.features = features(client, e.capabilities);
    return e;
}

// ---- the clients --------------------------------------------------------------------

const char* const kOperations[] = {"enumerate system", "volume names", "get volume", "groups of volume",
    "capabilities", "create group", "members of group", "delete group"};
constexpr int kKinds = sizeof kOperations / sizeof kOperations[0];

struct Results
{
    std::vector<double> ms[kKinds];
    long errors[kKinds] = {};
    std::vector<std::string> messages;
};

class LoadClient
{
public:
    LoadClient(int id, int port, const Expected& e) : id_(id), e_(e)
    {
        client_.setTimeout(120000);
        // Two users share the load, as the clients of one array would.
        if (id % 2)
            client_.connect("127.0.0.1", Uint32(port), "operator", "operator-demo");
        else
            client_.connect("127.0.0.1", Uint32(port), "admin", "admin-demo");
    }

    void run(Clock::time_point end, Results& r)
    {
        for (long n = id_; Clock::now() < end; ++n)
        {
            switch (n % 5)
            {
            case 0:
                timed(r, 0, [&] {
                    Array<CIMInstance> all = client_.enumerateInstances(
                        kNamespace, "ZDA_StorageSystem", true, false);
                    check(
                        all.size() == 1 && property(all[0], "Name") == "zda-demo", "not the one demo system");
                });
                break;
            case 1:
                timed(r, 1, [&] {
                    const size_t n = client_.enumerateInstanceNames(kNamespace, "ZDA_StorageVolume").size();
                    check(n == e_.volumes, std::to_string(n) + " volumes, not " + std::to_string(e_.volumes));
                });
                timed(r, 2, [&] {
                    const CIMInstance v = client_.getInstance(kNamespace, e_.volume, false);
                    check(property(v, "ElementName") == "fin_db01", "volume " + property(v, "ElementName"));
                });
                break;
            case 2:
                timed(r, 3, [&] {
                    check(sortedPaths(client_.associatorNames(kNamespace, e_.volume, kMember)) ==
                            e_.groupsOfVolume,
                        "other groups of fin_db01");
                });
                break;
            case 3:
                timed(r, 4, [&] {
                    const std::string f = features(client_, e_.capabilities);
                    check(f == e_.features, "features " + f + ", not " + e_.features);
                });
                break;
            default: groupCycle(r, n); break;
            }
        }
    }

private:
    template <class F>
    bool timed(Results& r, int kind, F f)
    {
        const auto start = Clock::now();
        std::string error;
        try
        {
            f();
        }
        catch (const CIMException& e)
        {
            error = "CIM error " + std::to_string(e.getCode()) + ": " + text(e.getMessage());
        }
        catch (const Exception& e)
        {
            error = text(e.getMessage());
        }
        catch (const std::exception& e)
        {
            error = e.what();
        }
        r.ms[kind].push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        if (error.empty())
            return true;
        ++r.errors[kind];
        if (r.messages.size() < 5)
            r.messages.push_back(std::string(kOperations[kind]) + ": " + error);
        return false;
    }

    // A group of its own, with one member: created, read back, deleted, gone.
    void groupCycle(Results& r, long n)
    {
        const std::string name = "load" + std::to_string(id_) + "_" + std::to_string(n);
        CIMObjectPath group;
        const bool created = timed(r, 5, [&] {
            Array<CIMObjectPath> members;
            members.append(e_.member);
            Array<CIMParamValue> in, out;
            in.append(CIMParamValue("GroupName", CIMValue(String(name.c_str()))));
            in.append(CIMParamValue("Members", CIMValue(members)));
            const CIMValue rc = client_.invokeMethod(kNamespace, e_.service, "CreateGroup", in, out);
            check(rc == CIMValue(Uint32(0)), "CreateGroup returned " + text(rc.toString()));
            outValue(out, "ReplicationGroup").get(group);
            check(text(group.toString()).find("\"KX_ORLA:" + name + "\"") != std::string::npos,
                "CreateGroup answered " + text(group.toString()));
        });
        if (!created)
            return;
        timed(r, 6, [&] {
            const std::vector<std::string> members = sortedPaths(
                client_.associatorNames(kNamespace, group, kMember));
            check(members == std::vector<std::string>{identity(e_.member)}, "the group's members differ");
        });
        timed(r, 7, [&] {
            Array<CIMParamValue> in, out;
            in.append(CIMParamValue("ReplicationGroup", CIMValue(group)));
            const CIMValue rc = client_.invokeMethod(kNamespace, e_.service, "DeleteGroup", in, out);
            check(rc == CIMValue(Uint32(0)), "DeleteGroup returned " + text(rc.toString()));
            try
            {
                client_.getInstance(kNamespace, group);
            }
            catch (const CIMException& e)
            {
                check(e.getCode() == CIM_ERR_NOT_FOUND,
                    "a deleted group answers " + std::to_string(e.getCode()));
                return;
            }
            throw std::runtime_error("a deleted group is still there");
        });
    }

    int id_;
    const Expected& e_;
    CIMClient client_;
};

double percentile(std::vector<double>& v, double p)
{
    if (v.empty())
        return 0;
    const size_t at = std::min(v.size() - 1, static_cast<size_t>(p * static_cast<double>(v.size())));
    std::nth_element(v.begin(), v.begin() + static_cast<long>(at), v.end());
    return v[at];
}

}  // namespace

int main(int argc, char** argv)
{
    const Options o = parse(argc, argv);
    cimxml::registerClientTransports();
    Server server = startServer(o);
    std::printf("server pid %d on port %d, folder %s\n", server.pid, server.port, server.dir.c_str());

    Expected expected;
    try
    {
        expected = readExpected(server.port);
    }
    catch (const Exception& e)
    {
        stopServer(server);
        fail("cannot read the demo array: " + text(e.getMessage()));
    }
    catch (const std::exception& e)
    {
        stopServer(server);
        fail(std::string("cannot read the demo array: ") + e.what());
    }

    std::vector<Sample> samples{sample("start", server.pid)};
    std::vector<Results> results(static_cast<size_t>(o.clients));
    std::atomic<int> connectFailures{0};
    const auto begin = Clock::now();
    const auto end = begin + std::chrono::seconds(o.seconds);
    std::vector<std::thread> threads;
    for (int c = 0; c < o.clients; ++c)
    {
        threads.emplace_back([&, c] {
            try
            {
                LoadClient client(c, server.port, expected);
                client.run(end, results[static_cast<size_t>(c)]);
            }
            catch (...)
            {
                ++connectFailures;
            }
        });
    }
    std::this_thread::sleep_until(begin + std::chrono::seconds(o.seconds) / 2);
    samples.push_back(sample("middle", server.pid));
    for (std::thread& t : threads)
        t.join();
    const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    samples.push_back(sample("end", server.pid));
    const bool stopped = stopServer(server);

    Results all;
    for (Results& r : results)
    {
        for (int k = 0; k < kKinds; ++k)
        {
            all.ms[k].insert(all.ms[k].end(), r.ms[k].begin(), r.ms[k].end());
            all.errors[k] += r.errors[k];
        }
        for (std::string& m : r.messages)
            if (all.messages.size() < 10)
                all.messages.push_back(std::move(m));
    }
    long calls = 0, errors = connectFailures;
    std::printf("\n%d clients for %.0f s\n%-18s %8s %7s %9s %9s %9s %9s\n", o.clients, elapsed, "operation",
        "calls", "errors", "p50 ms", "p90 ms", "p99 ms", "max ms");
    for (int k = 0; k < kKinds; ++k)
    {
        std::vector<double>& v = all.ms[k];
        calls += static_cast<long>(v.size());
        errors += all.errors[k];
        const double max = v.empty() ? 0 : *std::max_element(v.begin(), v.end());
        std::printf("%-18s %8zu %7ld %9.2f %9.2f %9.2f %9.2f\n", kOperations[k], v.size(), all.errors[k],
            percentile(v, 0.5), percentile(v, 0.9), percentile(v, 0.99), max);
    }
    std::printf("%ld calls (%.0f/s), %ld errors, %d clients that could not connect\n", calls,
        static_cast<double>(calls) / elapsed, errors, connectFailures.load());
    for (const std::string& m : all.messages)
        std::printf("  %s\n", m.c_str());

    std::printf("\nserver   %10s %8s %6s\n", "RSS KiB", "threads", "fds");
    for (const Sample& s : samples)
        std::printf("%-8s %10ld %8ld %6ld\n", s.when, s.rssKiB, s.threads, s.fds);
    std::printf("server stopped %s\n", stopped ? "cleanly" : "with a failure");

    std::ifstream err(server.errFile());
    std::string line;
    long warnings = 0;
    while (std::getline(err, line))
        if (line.find("WARNING: ThreadSanitizer") != std::string::npos)
            ++warnings;
    const bool ok = errors == 0 && stopped && warnings == 0;
    std::printf("%ld ThreadSanitizer warnings in the server's log\n", warnings);
    // The folder (state, log) is kept for a look when something failed.
    if (ok)
        std::filesystem::remove_all(server.dir);
    return ok ? 0 : 1;
}
