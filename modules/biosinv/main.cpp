#include "BiosInventory.h"

int main(int argc, char** argv) {
    return svm::RunModule(
        argc, argv, "biosinv",
        "Lists the BIOS version, the system identifier and the processor microcode revisions.",
        svm::CollectBiosInventory);
}
