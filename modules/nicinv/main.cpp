#include "LinuxEthtool.h"
#include "NicInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "nicinv", "Lists the firmware versions of the network adapters.",
                          [](const svm::ModuleOptions& options, svm::SvmDocument& doc) {
                              svm::LinuxEthtool ethtool;
                              svm::CollectNicInventory(options, doc, ethtool);
                          });
}
