#include <iostream>

#include "LinuxMfiDevice.h"
#include "LinuxNvmeAdmin.h"
#include "StorageInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(
        argc, argv, "storageinv",
        "Lists the firmware revisions of NVMe controllers, MegaRAID controllers and SCSI, SATA and "
        "SAS disks.",
        [](const svm::ModuleOptions& options, svm::SvmDocument& doc) {
            svm::LinuxNvmeAdmin admin;
            svm::LinuxMfiDevice mfi;
            svm::CollectStorageInventory(options, doc, admin, mfi, std::cerr);
        });
}
