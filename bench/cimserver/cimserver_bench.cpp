// Times one EnumerateInstances of 100,000 instances of about 1.7 KB over
// HTTP on loopback against a real zda-cimserver, several times, and prints
// each time, the median, the response's size and the server's peak memory.
// The CPU time the server spent on each fetch is printed too: on a busy
// machine it says more about the server than the elapsed time does.
//   cimserver_bench [runs]      (default 5)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "BenchServer.h"

using namespace zda_bench;

namespace {

const char* const kRequestParameters = "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Bench_Item\"/></IPARAMVALUE>";

}  // namespace

int main(int argc, char** argv)
{
    int runs = argc > 1 ? std::atoi(argv[1]) : 5;
    Server server({"--mof-dir", ZDA_BENCH_PROJECT_MOF, "--mof-dir", ZDA_BENCH_MOF, "--modules-dir",
                   ZDA_BENCH_MODULES});
    const std::string request = intrinsicCall("EnumerateInstances", "root/bench", kRequestParameters);

    std::vector<double> times;
    std::vector<double> cpu;
    Answer last;
    for (int i = 0; i < runs; i++) {
        double cpuBefore = cpuSeconds(server.pid());
        last = post(server.port(), "EnumerateInstances", "root%2Fbench", request, "<VALUE.NAMEDINSTANCE>", false);
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
