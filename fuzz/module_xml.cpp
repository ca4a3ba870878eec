// Module output into device records: the store's parse, the output filter and
// duplicate removal, as a run does them after its modules have ended.
//
// Input: one byte choosing the component-type filter, then one or more module
// outputs separated by "\n@@\n" (several modules let duplicate removal work
// across them).
#include <cstddef>
#include <cstdint>
#include <string>

#include "FakeShmApi.h"
#include "QVRArgumentList.h"
#include "QVRDataModel.h"
#include "QVRDataModelManager.h"
#include "QVROptionKeys.h"

namespace {
// Progress counters go to memory, not to a System V segment per input.
FakeShmApi g_shm;

const char* const kFilters[] = {nullptr, "FRMW", "BIOS,DRVR", "APAC,FRMW,BIOS,DRVR,APP"};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    QVRArgumentList args;
    const char* filter = kFilters[data[0] % (sizeof kFilters / sizeof kFilters[0])];
    if (filter != nullptr) args.insertValue(QVR_OPT_COMPTYPE, filter);
    QVRDataModel model;
    QVRDataModelManager* manager = QVRDataModelManager::GetInstance(g_shm);
    if (manager == nullptr || !manager->Initialize(&model, &args)) return 0;

    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string separator = "\n@@\n";
    int module = 0;
    for (std::size_t start = 0; start <= input.size();) {
        std::size_t end = input.find(separator, start);
        if (end == std::string::npos) end = input.size();
        std::string identity = "/module" + std::to_string(module++);
        std::string output = input.substr(start, end - start);
        manager->WriteData(identity, output);
        start = end + separator.size();
    }
    manager->Process();
    delete manager;  // the next input starts from a fresh store
    return 0;
}
