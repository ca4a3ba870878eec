#ifndef QVROPTIONFACTORY_H
#define QVROPTIONFACTORY_H

#include <map>
#include <memory>
#include <string>

#include "IQVRFileSystem.h"
#include "IQVROptions.h"

// The table of option spellings and the option object of every key.
// Spellings match exactly and case-sensitively.
class QVROptionFactory {
public:
    typedef std::map<std::string, std::unique_ptr<IQVROptions>> OptionObjects;

    // Fills the tables and creates the option objects.
    // fileSystem, borrowed, answers the path options' checks.
    explicit QVROptionFactory(IQVRFileSystem& fileSystem = IQVRFileSystem::Real());
    QVROptionFactory(const QVROptionFactory&) = delete;
    QVROptionFactory& operator=(const QVROptionFactory&) = delete;

    // Fills the alias and spelling tables; later calls change nothing.
    void RegisterLongShortOptionToOptionInit();
    // Records that the short spelling stands for the long one.
    void RegisterLongShortOptionToOption(const std::string& shortSpelling, const std::string& longSpelling);

    // The key of a spelling; false (key untouched) when it is not a spelling.
    bool GetOptionKey(const std::string& spelling, std::string& key) const;
    // The main spelling of an alias, or the spelling itself.
    std::string GetMainSpelling(const std::string& spelling) const;

    // The option object of a key, or null. Owned by the factory.
    IQVROptions* GetOption(const std::string& key) const;
    const OptionObjects& GetOptions() const { return m_options; }

private:
    void RegisterSpelling(const std::string& spelling, const std::string& key);
    void CreateOptions(IQVRFileSystem& fileSystem);

    std::map<std::string, std::string> m_aliasToMain;
    std::map<std::string, std::string> m_spellingToKey;
    OptionObjects m_options;
};

#endif
