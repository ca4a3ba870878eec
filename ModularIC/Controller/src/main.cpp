#include <malloc.h>

#include "CQVRController.h"
#include "CQVRInterruptHandler.h"
#include "QVRMain.h"

int main(int argc, char** argv) {
    // A large inventory is millions of small tree nodes and strings, freed together
    // at the end of the run. Kept in fast bins, they are all consolidated by the
    // first large free afterwards, which costs more than the whole parse; without
    // fast bins each free merges at once.
    mallopt(M_MXFAST, 0);
    CQVRInterruptHandler::Install();
    return QVRMain(argc, argv, [] { return std::unique_ptr<CQVRController>(new CQVRController()); });
}
