// What a change costs with a state file open, on an array of 100 and of
// 10,000 vvsets: each change (a vvset created or removed) is written and
// flushed to disk before the call returns, so the rate is bound by the
// disk, and should not fall as the array grows.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "zdaapi.h"
#include "zdasim_control.h"

namespace
{

std::string statePath()
{
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir && *dir ? dir : "/tmp") + "/zda_state_bench_" + std::to_string(getpid()) + ".json";
}

void removeFiles(const std::string& path)
{
    for (const char* suffix : {"", ".tmp", ".journal"})
        std::remove((path + suffix).c_str());
}

void BM_ChangeWithStateFile(benchmark::State& state)
{
    const int sets = static_cast<int>(state.range(0));
    zdasim_log_capture(0);
    zdasim_state_file_close();
    std::string description =
        R"({"format": "zda-array", "version": 1, "system": {"limits": {"maxVVSets": 20000}}, "vvsets": [)";
    char name[32];
    for (int s = 0; s < sets; ++s)
    {
        std::snprintf(name, sizeof name, "bset%05d", s);
        description += std::string(s ? "," : "") + R"({"name": ")" + name +
            R"(", "comment": "benchmark set"})";
    }
    description += "]}";
    char error[512] = "";
    if (zdasim_load_description_text(description.c_str(), "benchmark array", error, sizeof error) != 0)
    {
        state.SkipWithError(error);
        return;
    }
    api_evtparam_t e{};
    const std::string path = statePath();
    removeFiles(path);
    if (zdasim_state_file_open(path.c_str(), error, sizeof error) != 0)
    {
        state.SkipWithError(error);
        return;
    }
    zdasim_clear_records();
    long changes = 0;
    for (auto _ : state)
    {
        if (api_createVVSet(&e, "bench_change", nullptr, 0, 0, "", nullptr).code != 0)
            std::abort();
        if (api_removeVVSet(&e, "bench_change").code != 0)
            std::abort();
        changes += 2;
        zdasim_clear_records();
    }
    state.counters["changes_per_s"] = benchmark::Counter(
        static_cast<double>(changes), benchmark::Counter::kIsRate);
    state.counters["sets"] = sets;
    zdasim_state_file_close();
    removeFiles(path);
}
BENCHMARK(BM_ChangeWithStateFile)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
