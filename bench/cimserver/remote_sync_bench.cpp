// Times EnumerateInstances of ZDA_RemoteStorageSynchronized against a real
// zda-cimserver serving an array of 500 remote copy groups, each of 20
// volumes on 2 targets (20,000 volume pairs), several times. For each answer
// it prints the time, the server's CPU time, the size, the pairs, and the
// array calls the answer cost, read from the simulator's journal (cleared
// before each answer through ZDA_SimulatorControl).
//   remote_sync_bench [runs]      (default 3)
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "BenchServer.h"

using namespace zda_bench;

namespace
{

constexpr int kGroups = 500;
constexpr int kVolumesPerGroup = 20;

std::string volumeName(int group, int volume)
{
    char name[16];
    std::snprintf(name, sizeof name, "v%03d_%02d", group, volume);
    return name;
}

// The array: one CPG, 10,000 volumes, two ready targets to one far system,
// and the groups, started and in sync on both targets.
std::string description()
{
    std::string volumes;
    std::string groups;
    for (int g = 0; g < kGroups; g++)
    {
        char name[16];
        std::snprintf(name, sizeof name, "rcg%03d", g);
        std::string members;
        for (int v = 0; v < kVolumesPerGroup; v++)
        {
            const std::string vol = volumeName(g, v);
            volumes += std::string(volumes.empty() ? "" : ",\n") + "{\"name\": \"" + vol +
                "\", \"usrCpg\": \"FC\", \"sizeMiB\": 1024}";
            members += std::string(v ? ", " : "") + "{\"name\": \"" + vol +
                "\", \"maps\": [{\"target\": \"tA\", \"status\": \"synced\", \"lastSync\": \"-5m\"}, "
                "{\"target\": \"tB\", \"status\": \"synced\"}]}";
        }
        groups += std::string(groups.empty() ? "" : ",\n") + "{\"name\": \"" + name +
            "\", \"targets\": [{\"target\": \"tA\", \"mode\": \"periodic\", \"state\": \"started\", "
            "\"lastSync\": \"-5m\"}, {\"target\": \"tB\", \"mode\": \"sync\", \"state\": \"started\"}], "
            "\"volumes\": [" +
            members + "]}";
    }
    return R"({"system": {"name": "zda-bench", "id": 1300001, "hostName": "zda-bench.local",
                "ipv4": "192.0.2.10", "nodesTotal": 2},
  "roles": [{"name": "super", "default": "allowed"}],
  "users": [{"name": "admin", "role": "super"}],
  "cpgs": [{"name": "FC", "domain": "d1"}],
  "volumes": [)" +
        volumes + R"(],
  "remoteCopy": {"mode": "on",
    "targets": [
      {"name": "tA", "remoteSystemId": 7, "remoteSystemName": "far", "nodeWwn": "2FF70002AC000007"},
      {"name": "tB", "remoteSystemId": 7, "remoteSystemName": "far", "nodeWwn": "2FF70002AC000007"}],
    "groups": [)" +
        groups + R"(]}})";
}

// The functions of the simulator's journal entries ("api_getRCopy ... -> 0")
// in GetJournal's answer, counted.
std::map<std::string, int> callsIn(const std::string& answer)
{
    std::map<std::string, int> calls;
    const std::string open = "<VALUE>";
    const std::size_t entries = answer.find("NAME=\"Entries\"");
    if (entries == std::string::npos)
        return calls;
    for (std::size_t at = answer.find(open, entries); at != std::string::npos; at = answer.find(open, at + 1))
    {
        const std::size_t from = at + open.size();
        const std::size_t end = answer.find_first_of(" <", from);
        calls[answer.substr(from, end - from)]++;
    }
    return calls;
}

Answer control(const Server& server, const char* method, bool keep)
{
    Answer a = post(server.port(), method, "root%2Fzda_sim%3AZDA_SimulatorControl",
        classMethodCall(method, "root/zda_sim", "ZDA_SimulatorControl"), "<VALUE>", keep);
    if (!a.ok || a.text.find("<ERROR") != std::string::npos)
        fail(std::string("ZDA_SimulatorControl.") + method + " failed");
    return a;
}

}  // namespace

int main(int argc, char** argv)
{
    int runs = argc > 1 ? std::atoi(argv[1]) : 3;
    char file[] = "/tmp/zda-bench-array-XXXXXX";
    int fd = ::mkstemp(file);
    if (fd < 0)
        fail("mkstemp");
    ::close(fd);
    std::ofstream(file) << description();

    Server server({"--array", file, "--simulator-control", "--mof-dir", ZDA_BENCH_PROJECT_MOF,
        "--modules-dir", ZDA_BENCH_MODULES});
    const std::string request = intrinsicCall("EnumerateInstances", "root/zda",
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZDA_RemoteStorageSynchronized\"/></IPARAMVALUE>");

    std::vector<double> times;
    std::vector<double> cpu;
    Answer last;
    std::map<std::string, int> calls;
    for (int i = 0; i < runs; i++)
    {
        control(server, "ClearJournal", true);
        double cpuBefore = cpuSeconds(server.pid());
        last = post(
            server.port(), "EnumerateInstances", "root%2Fzda", request, "<VALUE.NAMEDINSTANCE>", false);
        if (!last.ok)
            fail("the server did not answer 200");
        times.push_back(last.seconds);
        cpu.push_back(cpuSeconds(server.pid()) - cpuBefore);
        calls = callsIn(control(server, "GetJournal", true).text);
        std::string callText;
        for (const auto& c : calls)
            callText += " " + c.first + " x" + std::to_string(c.second);
        std::printf("run %d: %.3f s (server CPU %.2f s), %.1f MB, %zu pairs; array calls:%s\n", i + 1,
            last.seconds, cpu.back(), last.bytes / 1e6, last.markers, callText.c_str());
    }
    long peak = peakKiB(server.pid());
    std::remove(file);
    std::sort(times.begin(), times.end());
    std::sort(cpu.begin(), cpu.end());
    int total = 0;
    for (const auto& c : calls)
        total += c.second;
    std::printf("median %.3f s (server CPU %.2f s) for %zu pairs (%.0f bytes each), %d array calls an "
                "answer; server peak memory %.1f MB\n",
        times[times.size() / 2], cpu[cpu.size() / 2], last.markers,
        last.markers ? double(last.bytes) / double(last.markers) : 0.0, total, peak / 1024.0);
    return last.markers == std::size_t(kGroups) * kVolumesPerGroup * 2 ? 0 : 1;
}
