#include "QVRMain.h"

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "CQVRICException.h"
#include "QVRInvOutput.h"
#include "QVRResultCodes.h"

int QVRMain(int argc, char** argv, const QVRControllerFactory& makeController) {
    try {
        std::unique_ptr<CQVRController> controller = makeController();
        if (!controller) throw std::bad_alloc();
        const unsigned int result = controller->GetICInventory(argc, argv);
        if (result == QVR_RESULT_SUCCESS) return 0;
        SetInvOutPut(result, CQVRController::GetProgramName());
        // The lock is released only after the message is out.
        controller.reset();
        return result - QVR_RESULT_PROGRESS_WRITTEN <= 1u ? 0 : static_cast<int>(result);
    } catch (const std::bad_alloc& exception) {
        const std::string text = std::string("Caught Exception in main : ") + exception.what();
        static_cast<void>(text);
    } catch (const CQVRICException& exception) {
        const std::string text = std::string("Caught IC Exception in main : ") + exception.what() + "\n";
        std::fputs(text.c_str(), stderr);
    } catch (const std::exception& exception) {
        const std::string text = std::string("Caught Exception in main : ") + exception.what();
        static_cast<void>(text);
    }
    return 2;
}
