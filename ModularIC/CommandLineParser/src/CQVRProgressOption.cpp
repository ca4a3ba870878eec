#include "CQVRProgressOption.h"

#include "QVROptionKeys.h"

CQVRProgressOption::CQVRProgressOption() : IQVROptions(false, false, false) {
    AddCompanion(QVR_OPT_ENCODE);
    AddCompanion(QVR_OPT_OUT);
}

unsigned int CQVRProgressOption::Validate(std::string) { return 0; }
