// Parse + duplicate removal of module outputs, the work QVRInventoryRawDataStore::Process
// does after a run. Each size N is spread over four module outputs of N/4
// devices; consecutive modules overlap by half, so 3/8 of the records are
// duplicates of an earlier one.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "IQVRShmApi.h"
#include "QVRInventoryDataFactory.h"
#include "QVRInventoryRawDataStore.h"

namespace {

// Progress writes go nowhere: the benchmark must not touch the machine's segment.
class NullShmApi : public IQVRShmApi {
public:
    int Get(key_t, std::size_t, int) override { return 1; }
    void* Attach(int) override { return m_counters; }
    int Detach(const void*) override { return 0; }
    int Remove(int) override { return 0; }

private:
    int m_counters[2] = {0, 0};
};

std::string ModuleOutput(size_t first, size_t count) {
    std::string doc = "<?xml version=\"1.0\"?>\n<SVMInventory lang=\"en\">\n";
    doc.reserve(count * 260 + 100);
    for (size_t i = first; i < first + count; ++i) {
        const std::string n = std::to_string(i);
        doc += "  <Device componentID=\"" + n + "\" display=\"Device " + n +
               "\" vendorID=\"8086\" deviceID=\"1521\" subVendorID=\"1028\" subDeviceID=\"1f60\" bus=\"3b\" "
               "device=\"0\" function=\"1\" enum=\"e" +
               n + "\">\n    <Application componentType=\"FRMW\" version=\"1." + n +
               "\" display=\"Firmware " + n + "\"/>\n  </Device>\n";
    }
    doc += "</SVMInventory>\n";
    return doc;
}

std::vector<std::string> Outputs(size_t total) {
    const size_t perModule = total / 4;
    std::vector<std::string> outputs;
    for (size_t m = 0; m < 4; ++m) outputs.push_back(ModuleOutput(m * perModule / 2, perModule));
    return outputs;
}

void BM_ParseAndRemoveDuplicates(benchmark::State& state) {
    NullShmApi shm;
    const size_t total = static_cast<size_t>(state.range(0));
    const std::vector<std::string> outputs = Outputs(total);
    size_t bytes = 0;
    for (const std::string& output : outputs) bytes += output.size();
    size_t kept = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QVRInventoryRawDataStore store(shm);
        for (size_t m = 0; m < outputs.size(); ++m) {
            std::string identity = "module" + std::to_string(m);
            std::string text = outputs[m];
            store.WriteData(QVRInventoryDataFactory()(identity, text, nullptr));
        }
        std::vector<CDeviceInfo*> records;
        records.reserve(total);
        state.ResumeTiming();

        store.Process(records);

        state.PauseTiming();
        kept = records.size();
        for (CDeviceInfo* record : records) delete record;
        state.ResumeTiming();
    }
    state.counters["records_kept"] = static_cast<double>(kept);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * total));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_ParseAndRemoveDuplicates)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_RemoveDuplicatesOnly(benchmark::State& state) {
    const size_t total = static_cast<size_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<CDeviceInfo*> records;
        records.reserve(total);
        for (size_t i = 0; i < total; ++i) {
            CDeviceInfo* r = new CDeviceInfo();
            const std::string n = std::to_string(i % (total / 2));
            r->setComponentID(n);
            r->setComponentType("FRMW");
            r->setVersion("1." + n);
            r->setEnumId("e" + n);
            r->setStatus(0);
            records.push_back(r);
        }
        state.ResumeTiming();
        QVRInventoryRawDataStore::RemoveDuplicates(records);
        state.PauseTiming();
        for (CDeviceInfo* record : records) delete record;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * total));
}
BENCHMARK(BM_RemoveDuplicatesOnly)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
