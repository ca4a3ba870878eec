#include "CQVRVersionOption.h"

CQVRVersionOption::CQVRVersionOption() : IQVROptions(true, true, false) {}

unsigned int CQVRVersionOption::Validate(std::string) { return 0; }
