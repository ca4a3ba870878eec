#include "CQVRBdirOption.h"

#include <cstdio>

#include "CFileUtils.h"
#include "QVRResultCodes.h"

CQVRBdirOption::CQVRBdirOption() : IQVROptions(false, false, true) {}

unsigned int CQVRBdirOption::Validate(std::string value) { return ValidateFilePath(value); }

unsigned int CQVRBdirOption::ValidateFilePath(const std::string& path) const {
    const std::string text = "FILE PATH = " + path + "\nDIR PATH = " + CFileUtils(path).GetDirName() + "\n";
    std::fputs(text.c_str(), stdout);
    return QVR_RESULT_SUCCESS;
}
