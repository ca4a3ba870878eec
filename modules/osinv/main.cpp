#include "OsInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "osinv", "Reports the operating system's identity and version.",
                          svm::CollectOsInventory);
}
