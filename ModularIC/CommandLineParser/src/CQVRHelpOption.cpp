#include "CQVRHelpOption.h"

CQVRHelpOption::CQVRHelpOption() : IQVROptions(true, true, false) {}

unsigned int CQVRHelpOption::Validate(std::string) { return 0; }
