#ifndef QVROPTIONARGUMENTVALIDATION_H
#define QVROPTIONARGUMENTVALIDATION_H

#include <map>
#include <set>
#include <string>

#include "IQVRFileSystem.h"
#include "IQVROptions.h"
#include "QVRArgumentList.h"
#include "QVRProcessArgument.h"

// Checks the tokenized command line against the options' properties and values
// and, when it passes, fills the argument list. Every failure is a result code;
// nothing throws for bad input.
class QVROptionArgumentValidation {
public:
    // fileSystem, borrowed, answers the path options' checks.
    explicit QVROptionArgumentValidation(IQVRFileSystem& fileSystem = IQVRFileSystem::Real());
    QVROptionArgumentValidation(const QVROptionArgumentValidation&) = delete;
    QVROptionArgumentValidation& operator=(const QVROptionArgumentValidation&) = delete;

    // 0 for an acceptable command line (argc of 1 is a default run and stores
    // nothing), 2 without a list, otherwise the first failing rule's code. With a
    // single option only that option is stored and named the list's single option.
    int ProcessArgument(int argc, char** argv, QVRArgumentList* list);

    // Per entry, in key order: 5 unknown key, 23 value missing, 24 value not
    // taken, 25 dependent option missing, 5 option not tolerated before progress.
    unsigned int ValidatePrerequisite() const;
    // Whether a single option was given; records its key.
    bool SingleOption() const;
    // The first non-zero answer of the options' value checks, in key order.
    unsigned int Validate() const;
    // True when every key before the given one (in key order) is a companion.
    bool ValidateOptionalOptions(std::string key, std::set<std::string> companions) const;

    void setIgnoreRestOption() { m_processArgument.setIgnoreRestOption(); }
    void unSetIgnoreRestOption() { m_processArgument.unSetIgnoreRestOption(); }
    bool IsIgnoreRestSet() const { return m_processArgument.IsIgnoreRestSet(); }

    // Whether the failure came from an invalid option (unknown, misplaced or malformed).
    bool IsInvalidOption() const { return m_invalidOption; }
    bool IsNoOption() const { return m_noOption; }
    bool IsSingleOptionFound() const { return m_singleOptionFound; }
    bool IsSpecialSingleOption() const { return m_specialSingleOption; }
    const std::string& GetSingleOptionKey() const { return m_singleOptionKey; }
    const std::string& GetErrorText() const { return m_errorText; }
    const std::map<std::string, std::string>& GetOptionMap() const { return m_options; }

private:
    IQVROptions* FindOption(const std::string& key) const;

    std::map<std::string, std::string> m_options;
    std::map<std::string, IQVROptions*> m_optionObjects;
    QVRProcessArgument m_processArgument;
    mutable bool m_invalidOption;
    mutable bool m_specialSingleOption;
    mutable bool m_singleOptionFound;
    bool m_noOption;
    mutable std::string m_singleOptionKey;
    mutable std::string m_errorText;
};

#endif
