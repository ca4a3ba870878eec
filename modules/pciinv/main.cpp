#include "PciInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "pciinv",
                          "Lists the PCI functions and the versions of their bound drivers.",
                          svm::CollectPciInventory);
}
