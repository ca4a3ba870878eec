#ifndef CQVRCATEGORYOPTION_H
#define CQVRCATEGORYOPTION_H

#include "IQVROptions.h"

// "category": a comma-separated list of categories; 5 for the first piece outside
// the set, after naming it on standard output.
class CQVRCategoryOption : public IQVROptions {
public:
    CQVRCategoryOption();
    unsigned int Validate(std::string value) override;

    unsigned int validateCategotyType(const std::string& value);
    // 0 for a member of the set; otherwise writes the piece and " is Invalid
    // comptype argument" to standard output and answers 5.
    unsigned int IsCategoryTypeValid(const std::string& category);

private:
    void FillCategories();
    std::set<std::string> m_categories;
};

#endif
