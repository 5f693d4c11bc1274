// The array's cost per call on a large array (10,000 volumes, 2,000
// vvsets of 5 members), for the queries callers make most: every vvset,
// and volumes by a full 255-character name filter.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "zdaapi.h"
#include "zdasim_control.h"

namespace
{

constexpr int kVolumes = 10000;
constexpr int kSets = 2000;

std::string volumeName(int i)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "bvol%05d", i);
    return buf;
}

// A "|"-separated list of names of at most 255 characters, cut at a "|".
std::string fullFilter(int first)
{
    std::string out;
    for (int i = first;; ++i)
    {
        std::string next = volumeName(i % kVolumes) + "|";
        if (out.size() + next.size() > 255)
            break;
        out += next;
    }
    return out;
}

void buildLargeArray()
{
    static bool built = false;
    if (built)
        return;
    built = true;
    zdasim_log_capture(0);
    zdasim_reset_empty();
    zdasim_reset_test_array();  // users, CPGs
    for (int i = 0; i < kVolumes; ++i)
    {
        if (zdasim_volume_add(volumeName(i).c_str(), "FC_r5", "FC_r1", 1024) != 0)
            std::abort();
    }
    api_evtparam_t e{};
    for (int s = 0; s < kSets; ++s)
    {
        std::vector<api_name_t> members(5);
        for (int m = 0; m < 5; ++m)
        {
            members[m] = api_name_t{};
            std::snprintf(members[m].name, sizeof members[m].name, "%s", volumeName(s * 5 + m).c_str());
        }
        char name[32];
        std::snprintf(name, sizeof name, "bset%04d", s);
        if (api_createVVSet(&e, name, members.data(), 5, 0, "benchmark set", nullptr).code != 0)
            std::abort();
    }
    zdasim_clear_records();
}

void BM_GetVVSetsAll(benchmark::State& state)
{
    buildLargeArray();
    for (auto _ : state)
    {
        api_sets_t list{};
        if (cim_sem_wait() != 0)
            std::abort();
        api_Status_t st = api_getVVSets(nullptr, nullptr, 0, &list);
        cim_sem_post();
        if (st.code != 0 || list.count < kSets)
            std::abort();
        benchmark::DoNotOptimize(list.sets);
        api_freeSets(&list);
    }
    state.counters["sets"] = kSets + 5;
}
BENCHMARK(BM_GetVVSetsAll)->Unit(benchmark::kMicrosecond);

// The whole sequence a caller runs per chunk: filter, query, release.
void BM_GetVVsChunkFullFilter(benchmark::State& state)
{
    buildLargeArray();
    std::vector<std::string> filters;
    for (int i = 0; i < 64; ++i)
        filters.push_back(fullFilter(i * 131));
    size_t next = 0;
    int returned = 0;
    for (auto _ : state)
    {
        const std::string& values = filters[next++ % filters.size()];
        _api_getvv_filter_t filter;
        if (api_getvv_filter_init(&filter, 2) != 0)
            std::abort();
        if (api_getvv_filter_add(&filter, 2, 1, values.c_str()) != 0)
            std::abort();
        api_getvv_cursor_t cursor{};
        int count = 0;
        api_VVObj_t* list = nullptr;
        if (cim_sem_wait() != 0)
            std::abort();
        int rc = api_getVVs_chunk(&cursor, 0, &filter, &count, &list, 1);
        cim_sem_post();
        api_getvv_filter_free(&filter);
        if (rc != 0 || count == 0)
            std::abort();
        returned = count;
        benchmark::DoNotOptimize(list);
        free_if_not_null(list);
    }
    state.counters["volumes_per_call"] = returned;
}
BENCHMARK(BM_GetVVsChunkFullFilter)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
