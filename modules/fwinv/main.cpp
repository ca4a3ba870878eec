#include "FirmwareInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(
        argc, argv, "fwinv",
        "Lists the firmware of UEFI capsule targets, InfiniBand adapters, GPUs, storage host "
        "adapters and Thunderbolt controllers.",
        svm::CollectFirmwareInventory);
}
