#include "FirmwareInventory.h"
#include "LinuxTpmDevice.h"

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "fwinv",
                          "Lists the firmware of UEFI capsule targets, the TPM, InfiniBand adapters, GPUs, "
                          "storage host adapters and Thunderbolt controllers.",
                          [](const svm::ModuleOptions& options, svm::SvmDocument& doc) {
                              svm::LinuxTpmDevice tpm;
                              svm::CollectFirmwareInventory(options, doc, tpm);
                          });
}
