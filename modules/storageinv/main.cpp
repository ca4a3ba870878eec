#include "StorageInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "storageinv",
                          "Lists the firmware revisions of NVMe controllers and SCSI, SATA and SAS disks.",
                          svm::CollectStorageInventory);
}
