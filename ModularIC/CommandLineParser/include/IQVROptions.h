#ifndef IQVROPTIONS_H
#define IQVROPTIONS_H

#include <set>
#include <string>

// One command-line option's properties and value check. Concrete options fix
// their properties in their constructors and implement Validate.
class IQVROptions {
public:
    // 0 when the value is acceptable, otherwise a result code. Never throws for a bad value.
    virtual unsigned int Validate(std::string value) = 0;
    // The only options this one tolerates before itself in key order (empty: no rule).
    virtual std::set<std::string> GetDependentOptions() const { return m_companions; }
    virtual bool IsRequiredValue() const { return m_requiresValue; }
    virtual void SetRequiresOptionVal() { m_requiresValue = true; }
    virtual void UnSetRequiredOptionVal() { m_requiresValue = false; }
    virtual ~IQVROptions() = default;
    // Whether the option must stand alone (help, version).
    virtual bool IsSingleOption() const { return m_singleOption; }

    // The key of an option that must be given with this one ("" when none).
    const std::string& GetDependentOptionKey() const { return m_dependentOption; }
    // Single options that end the run once shown (help, version).
    bool HasSingleOptionMark() const { return m_singleOptionMark; }

protected:
    IQVROptions(bool singleOption, bool singleOptionMark, bool requiresValue)
        : m_singleOption(singleOption),
          m_singleOptionMark(singleOptionMark),
          m_requiresValue(requiresValue) {}

    void AddCompanion(const std::string& key) { m_companions.insert(key); }

private:
    bool m_singleOption;
    bool m_singleOptionMark;
    bool m_requiresValue;
    std::string m_dependentOption;
    std::set<std::string> m_companions;
};

#endif
