#include "CQVRCategoryOption.h"

#include <cstdio>
#include <sstream>

#include "QVRResultCodes.h"

CQVRCategoryOption::CQVRCategoryOption() : IQVROptions(false, false, true) {}

unsigned int CQVRCategoryOption::Validate(std::string value) { return validateCategotyType(value); }

void CQVRCategoryOption::FillCategories() {
    if (!m_categories.empty()) return;
    m_categories = {"AP", "BI", "CE", "Chipset", "DI", "DD", "FW"};
}

unsigned int CQVRCategoryOption::IsCategoryTypeValid(const std::string& category) {
    if (m_categories.count(category) != 0) return QVR_RESULT_SUCCESS;
    std::fputs((category + " is Invalid comptype argument\n").c_str(), stdout);
    return QVR_RESULT_INVALID_OPTION;
}

unsigned int CQVRCategoryOption::validateCategotyType(const std::string& value) {
    FillCategories();
    std::istringstream stream(value);
    std::string piece;
    while (std::getline(stream, piece, ',')) {
        if (IsCategoryTypeValid(piece) != QVR_RESULT_SUCCESS) return QVR_RESULT_INVALID_OPTION;
    }
    return QVR_RESULT_SUCCESS;
}
