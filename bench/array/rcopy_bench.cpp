// The cost of reading the remote copy configuration of a large array: 500
// groups of 20 volumes, each group on 2 targets (20,000 volume maps), the
// way every caller reads it (semaphore, api_getRCopy, walk, api_freeRCopy).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zdaapi.h"
#include "zdasim_control.h"

namespace
{

constexpr int kGroups = 500;
constexpr int kVolumesPerGroup = 20;

const char* kTargets = R"({
  "cpgs": [{"name": "FC", "domain": "d1"}],
  "remoteCopy": {"mode": "on", "targets": [
    {"name": "tA", "remoteSystemName": "far", "remoteSystemId": 7},
    {"name": "tB", "remoteSystemName": "far", "remoteSystemId": 7}]}
})";

void check(bool ok, const char* what)
{
    if (!ok)
    {
        std::fprintf(stderr, "benchmark set-up failed: %s\n", what);
        std::abort();
    }
}

void buildLargeRcopy()
{
    static bool built = false;
    if (built)
        return;
    built = true;
    zdasim_log_capture(0);
    char error[512];
    check(zdasim_load_description_text(kTargets, "benchmark", error, sizeof error) == 0, error);
    api_evtparam_t e{};
    for (int g = 0; g < kGroups; ++g)
    {
        api_rcopy_group_t group{};
        std::snprintf(group.name, sizeof group.name, "rcg%03d", g);
        std::strcpy(group.domain, "d1");
        std::strcpy(group.targets[0].rm_target, "tA");
        group.targets[0].rm_mode = RM_TARGET_MODE_PERIODIC;
        std::strcpy(group.targets[1].rm_target, "tB");
        group.targets[1].rm_mode = RM_TARGET_MODE_SYNC;
        group.numtargets = 2;
        check(api_createRCopyGroup(&e, &group).code == 0, "create group");
        for (int v = 0; v < kVolumesPerGroup; ++v)
        {
            char name[32];
            std::snprintf(name, sizeof name, "rv%03d_%02d", g, v);
            check(zdasim_volume_add(name, "FC", "FC", 1024) == 0, "add volume");
            api_rcopy_vv_t vv{};
            std::strcpy(vv.vvname, name);
            std::strcpy(vv.group, group.name);
            vv.nummaps = 2;
            std::strcpy(vv.vvmaps[0].rm_target, "tA");
            std::strcpy(vv.vvmaps[1].rm_target, "tB");
            vv.vv_add_flags = 0x4;
            check(api_admitRCopyVV(&e, &vv).code == 0, "admit volume");
        }
    }
    zdasim_clear_records();
}

void BM_GetRCopyAll(benchmark::State& state)
{
    buildLargeRcopy();
    long maps = 0;
    for (auto _ : state)
    {
        api_rcopy_t rc;
        std::memset(&rc, 0, sizeof rc);
        if (cim_sem_wait() != 0)
            std::abort();
        api_Status_t st = api_getRCopy(API_RCOPY_QUERY_TYPE_ALL, &rc);
        cim_sem_post();
        if (st.code != 0)
            std::abort();
        maps = 0;
        for (rm_group_wrapper* g = rc.groups; g; g = g->next)
            for (rm_group_vv_wrapper* v = g->gvvs; v; v = v->next)
                maps += v->map_count;
        benchmark::DoNotOptimize(maps);
        api_freeRCopy(&rc);
    }
    if (maps != static_cast<long>(kGroups) * kVolumesPerGroup * 2)
        std::abort();
    state.counters["maps"] = static_cast<double>(maps);
}
BENCHMARK(BM_GetRCopyAll)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
