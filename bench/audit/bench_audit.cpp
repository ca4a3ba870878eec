// sorvik-audit's document reader, check and diff on generated inventories of
// 1,000 to 100,000 devices, in the form the collector writes files (UTF-16 XML).
#include <benchmark/benchmark.h>

#include <string>

#include "audit/Baseline.h"
#include "audit/Check.h"
#include "audit/Diff.h"
#include "audit/DocumentReader.h"

namespace {

std::string Device(int i, bool changed) {
    const std::string n = std::to_string(i);
    const bool bump = changed && i % 10 == 0;
    switch (i % 3) {
        case 0:
            return "  <Device display=\"Ethernet Controller X710\" enum=\"0000:" + n +
                   "\" function=\"0\" device=\"0\" bus=\"3b\" subVendorID=\"8086\" subDeviceID=\"0000\" "
                   "deviceID=\"1572\" vendorID=\"8086\">\n    <Application display=\"i40e\" version=\"" +
                   (bump ? "2.23.17" : "2.22.18") + "\" componentType=\"DRVR\"/>\n  </Device>\n";
        case 1:
            return "  <Device display=\"NVMe SSD\" componentID=\"" + n + "\" FQDD=\"Disk.Bay." + n +
                   "\">\n    <Application display=\"NVMe SSD 3.84TB\" version=\"" +
                   (bump ? "GDC5602Q" : "GDC5302Q") + "\" componentType=\"FRMW\"/>\n  </Device>\n";
        default:
            return "  <Device display=\"BIOS\" componentID=\"159\" FQDD=\"BIOS.System." + n +
                   "\">\n    <Application display=\"System BIOS (03/14/2023)\" version=\"" +
                   (bump ? "2.18.1" : "2.17.1") + "\" componentType=\"BIOS\"/>\n  </Device>\n";
    }
}

std::string Utf16(const std::string& ascii) {
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + 2 * ascii.size());
    for (char c : ascii) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

std::string Document(int devices, bool changed) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<SVMInventory lang=\"en\" schemaVersion=\"1.0\" "
        "timestamp=\"2024-03-01 10:22:05\" sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\">\n"
        "  <System systemID=\"0A1B\"/>\n";
    for (int i = 0; i < devices; ++i) text += Device(i, changed);
    return Utf16(text + "</SVMInventory>\n");
}

audit::Baseline Rules() {
    audit::Baseline baseline;
    std::string error;
    audit::ParseBaseline(R"({"schemaVersion": 1, "rules": [
        {"match": {"componentType": "BIOS"}, "min": "2.17.1"},
        {"match": {"name": "i40e"}, "min": "2.20"},
        {"match": {"name": "NVMe*"}, "allowed": ["GDC5302Q", "GDC5602Q"]}]})",
                         "bench", baseline, error);
    return baseline;
}

void BM_ReadAndCheck(benchmark::State& state) {
    const std::string bytes = Document(static_cast<int>(state.range(0)), false);
    const audit::Baseline baseline = Rules();
    for (auto _ : state) {
        audit::Inventory inventory;
        std::string error;
        if (!audit::ParseInventory(bytes, "bench", inventory, error)) state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(audit::CheckInventory(baseline, inventory, nullptr, false));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void BM_Diff(benchmark::State& state) {
    audit::Inventory before, after;
    std::string error;
    audit::ParseInventory(Document(static_cast<int>(state.range(0)), false), "old", before, error);
    audit::ParseInventory(Document(static_cast<int>(state.range(0)), true), "new", after, error);
    for (auto _ : state) benchmark::DoNotOptimize(audit::DiffInventories(before, after, nullptr));
}

BENCHMARK(BM_ReadAndCheck)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Diff)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
