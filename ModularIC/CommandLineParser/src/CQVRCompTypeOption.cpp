#include "CQVRCompTypeOption.h"

#include <sstream>

#include "QVRResultCodes.h"

CQVRCompTypeOption::CQVRCompTypeOption() : IQVROptions(false, false, true) {}

unsigned int CQVRCompTypeOption::Validate(std::string value) { return validateCompType(value); }

void CQVRCompTypeOption::FillCompTypes() {
    if (!m_compTypes.empty()) return;
    m_compTypes = {"FRMW", "BIOS", "DRVR", "APAC", "APP", "SBDL", "CSBDL"};
}

unsigned int CQVRCompTypeOption::validateCompType(const std::string& value) {
    FillCompTypes();
    std::istringstream stream(value);
    std::string piece;
    while (std::getline(stream, piece, ',')) {
        if (m_compTypes.count(piece) == 0) return QVR_RESULT_INVALID_ARGUMENT;
    }
    return QVR_RESULT_SUCCESS;
}
