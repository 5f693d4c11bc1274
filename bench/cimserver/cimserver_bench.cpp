// Times one EnumerateInstances of 100,000 instances of about 1.7 KB over
// HTTP on loopback against a real zda-cimserver, several times, and prints
// each time, the median, the response's size and the server's peak memory.
// The CPU time the server spent on each fetch is printed too: on a busy
// machine it says more about the server than the elapsed time does.
// With "pull", each fetch is the same enumeration pulled in pieces of
// PIECE instances (OpenEnumerateInstances, then PullInstancesWithPath until
// the end), each piece on a connection of its own.
//   cimserver_bench [runs [pull [PIECE]]]      (default 5 runs, pieces of 1000)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

#include "BenchServer.h"

using namespace zda_bench;

namespace
{

const char* const kRequestParameters =
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Bench_Item\"/></IPARAMVALUE>";

// The whole enumeration pulled in pieces of `piece`: times, sizes and
// instances summed over the open and every pull.
Answer pull(int port, unsigned piece)
{
    const std::string count = "<IPARAMVALUE NAME=\"MaxObjectCount\"><VALUE>" + std::to_string(piece) +
        "</VALUE></IPARAMVALUE>";
    const std::string marker = "<VALUE.INSTANCEWITHPATH>";
    const std::regex context("NAME=\"EnumerationContext\"[^>]*><VALUE>([^<]*)</VALUE>");
    Answer total;
    total.ok = true;
    Answer a = post(port, "OpenEnumerateInstances", "root%2Fbench",
        intrinsicCall("OpenEnumerateInstances", "root/bench", kRequestParameters + count), marker, true);
    for (;;)
    {
        total.seconds += a.seconds;
        total.bytes += a.bytes;
        total.markers += a.markers;
        // The answer's parameters (or its error) follow its instances: look at its end only.
        const std::string tail = a.text.substr(a.text.size() > 4096 ? a.text.size() - 4096 : 0);
        total.ok = total.ok && a.ok && tail.find("<ERROR ") == std::string::npos;
        std::smatch m;
        if (!total.ok ||
            tail.find("<VALUE>TRUE</VALUE></PARAMVALUE></IMETHODRESPONSE>") != std::string::npos ||
            !std::regex_search(tail, m, context))
            break;
        const std::string call = "<IPARAMVALUE NAME=\"EnumerationContext\"><VALUE>" + m[1].str() +
            "</VALUE></IPARAMVALUE>" + count;
        a = post(port, "PullInstancesWithPath", "root%2Fbench",
            intrinsicCall("PullInstancesWithPath", "root/bench", call), marker, true);
    }
    return total;
}

}  // namespace

int main(int argc, char** argv)
{
    int runs = argc > 1 ? std::atoi(argv[1]) : 5;
    const bool pulled = argc > 2 && std::string(argv[2]) == "pull";
    const unsigned piece = argc > 3 ? unsigned(std::atoi(argv[3])) : 1000;
    if (runs < 1 || piece < 1 || (argc > 2 && !pulled))
        fail("usage: cimserver_bench [runs [pull [PIECE]]]");
    Server server(
        {"--mof-dir", ZDA_BENCH_PROJECT_MOF, "--mof-dir", ZDA_BENCH_MOF, "--modules-dir", ZDA_BENCH_MODULES});
    const std::string request = intrinsicCall("EnumerateInstances", "root/bench", kRequestParameters);

    std::vector<double> times;
    std::vector<double> cpu;
    Answer last;
    for (int i = 0; i < runs; i++)
    {
        double cpuBefore = cpuSeconds(server.pid());
        last = pulled ? pull(server.port(), piece)
                      : post(server.port(), "EnumerateInstances", "root%2Fbench", request,
                            "<VALUE.NAMEDINSTANCE>", false);
        if (!last.ok)
            fail("the server did not answer 200");
        times.push_back(last.seconds);
        cpu.push_back(cpuSeconds(server.pid()) - cpuBefore);
        std::printf("run %d: %.3f s (server CPU %.2f s), %zu bytes, %zu instances\n", i + 1, last.seconds,
            cpu.back(), last.bytes, last.markers);
    }
    long peak = peakKiB(server.pid());
    std::sort(times.begin(), times.end());
    std::sort(cpu.begin(), cpu.end());
    std::printf("median %.3f s (server CPU %.2f s) for %zu instances (%.1f MB, %.0f bytes each); "
                "server peak memory %.1f MB\n",
        times[times.size() / 2], cpu[cpu.size() / 2], last.markers, last.bytes / 1e6,
        last.markers ? double(last.bytes) / double(last.markers) : 0.0, peak / 1024.0);
    return 0;
}
