#include "CQVRController.h"
#include "QVRMain.h"

int main(int argc, char** argv) {
    return QVRMain(argc, argv, [] { return std::unique_ptr<CQVRController>(new CQVRController()); });
}
