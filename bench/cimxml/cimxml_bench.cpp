// An EnumerateInstances response of 100,000 instances of about 1.7 KB each
// (about 170 MB): streamed through the encoder into a sink that only counts
// (what a server does when it writes to the socket), encoded into one
// string, and decoded back into instances (what a client does).
//
// The instances come from a pool of distinct ones, reused round-robin so
// that building the input does not dominate memory.
#include <cimxml/Codec.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <string>
#include <vector>

using namespace Pegasus;
using namespace cimxml;

namespace
{

const int kInstances = 100000;
const int kPool = 1000;

CIMInstance makeInstance(int i)
{
    std::string id = "VOL-" + std::to_string(100000 + i);
    CIMObjectPath path;
    path.setClassName("ZDA_StorageVolume");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", "ZDA_StorageVolume", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", id.c_str(), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemCreationClassName", "ZDA_StorageSystem", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", "ZDA-ARRAY-1234567", CIMKeyBinding::STRING));
    path.setKeyBindings(keys);

    CIMInstance v("ZDA_StorageVolume");
    v.addProperty(CIMProperty("CreationClassName", CIMValue(String("ZDA_StorageVolume"))));
    v.addProperty(CIMProperty("DeviceID", CIMValue(String(id.c_str()))));
    v.addProperty(CIMProperty("SystemCreationClassName", CIMValue(String("ZDA_StorageSystem"))));
    v.addProperty(CIMProperty("SystemName", CIMValue(String("ZDA-ARRAY-1234567"))));
    v.addProperty(CIMProperty("ElementName", CIMValue(String(("volume " + id + " <db & logs>").c_str()))));
    v.addProperty(
        CIMProperty("Name", CIMValue(String(("60002AC0000000000000" + std::to_string(i)).c_str()))));
    v.addProperty(CIMProperty("BlockSize", CIMValue(Uint64(512))));
    v.addProperty(CIMProperty("NumberOfBlocks", CIMValue(Uint64(2097152) * (i % 50 + 1))));
    v.addProperty(CIMProperty("ThinlyProvisioned", CIMValue(true)));
    Array<Uint16> status;
    status.append(2);
    status.append(32768);
    v.addProperty(CIMProperty("OperationalStatus", CIMValue(status)));
    Array<String> statusText;
    statusText.append("OK");
    statusText.append("Exported");
    v.addProperty(CIMProperty("StatusDescriptions", CIMValue(statusText)));
    v.addProperty(CIMProperty("HealthState", CIMValue(Uint16(5))));
    v.addProperty(CIMProperty("EnabledState", CIMValue(Uint16(2))));
    v.setPath(path);
    return v;
}

std::vector<CIMInstance>& pool()
{
    static std::vector<CIMInstance> instances = [] {
        std::vector<CIMInstance> all;
        for (int i = 0; i < kPool; i++)
            all.push_back(makeInstance(i));
        return all;
    }();
    return instances;
}

struct CountingSink : Sink
{
    void write(const char*, std::size_t size) override { bytes += size; }
    std::size_t bytes = 0;
};

long maxRssKiB()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void writeAll(Sink& sink)
{
    ResponseWriter writer(sink, "1", Intrinsic::EnumerateInstances);
    writer.begin();
    const std::vector<CIMInstance>& instances = pool();
    for (int i = 0; i < kInstances; i++)
        writer.addInstance(instances[std::size_t(i % kPool)]);
    writer.finish();
}

void BM_EncodeStreaming(benchmark::State& state)
{
    pool();
    long rssBefore = maxRssKiB();
    std::size_t bytes = 0;
    for (auto _ : state)
    {
        CountingSink sink;
        writeAll(sink);
        bytes = sink.bytes;
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    state.counters["document_MB"] = double(bytes) / 1e6;
    state.counters["bytes_per_instance"] = double(bytes) / kInstances;
    state.counters["rss_growth_KiB"] = double(maxRssKiB() - rssBefore);
}
BENCHMARK(BM_EncodeStreaming)->Unit(benchmark::kMillisecond)->MinTime(5);

const std::string& encodedDocument()
{
    static std::string document = [] {
        StringSink sink;
        sink.text.reserve(200u << 20);
        writeAll(sink);
        return std::move(sink.text);
    }();
    return document;
}

void BM_EncodeToString(benchmark::State& state)
{
    pool();
    std::size_t bytes = 0;
    for (auto _ : state)
    {
        StringSink sink;
        sink.text.reserve(200u << 20);
        writeAll(sink);
        bytes = sink.text.size();
        benchmark::DoNotOptimize(sink.text.data());
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
}
BENCHMARK(BM_EncodeToString)->Unit(benchmark::kMillisecond)->MinTime(5);

void BM_Decode(benchmark::State& state)
{
    const std::string& document = encodedDocument();
    for (auto _ : state)
    {
        OperationResponse r = decodeResponse(document.data(), document.size());
        if (r.returnValue.getArraySize() != kInstances)
            state.SkipWithError("wrong instance count");
    }
    state.SetBytesProcessed(int64_t(document.size()) * state.iterations());
}
BENCHMARK(BM_Decode)->Unit(benchmark::kMillisecond)->MinTime(5);

}  // namespace

BENCHMARK_MAIN();
