// The module configuration file into module lists, with the selection options
// a user may give. Input: one byte choosing the options, then the file.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>

#include "CQVRModuleList.h"
#include "CQVRModuleManager.h"
#include "QVRArgumentList.h"
#include "QVROptionKeys.h"

namespace {

// The reader takes the file from the start directory: one private directory in
// memory-backed storage, made once.
const std::string& Directory() {
    static const std::string directory = [] {
        char pattern[] = "/dev/shm/sorvik-fuzz-config-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made != nullptr ? made : "/tmp");
    }();
    return directory;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string path = Directory() + "/icconfig_new.json";
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data + 1, 1, size - 1, file);
        std::fclose(file);
    }
    QVRArgumentList args;
    if (data[0] & 1) args.insertValue(QVR_OPT_COMPTYPE, "FRMW,BIOS");
    if (data[0] & 2) args.insertValue(QVR_OPT_DISABLE, "37F2966B-8FFA-4256-8BFD-D36285CE5C02");
    if (data[0] & 4) args.insertValue(QVR_OPT_SERIALIZE, "");
    std::set<std::string> generations = {"Generic"};
    if (data[0] & 8) generations.insert("GenFourteenG");
    CQVRModuleManager manager(&args, &generations, Directory());
    CQVRModuleList list;
    manager.PopulateModuleList(&list);
    return 0;
}
