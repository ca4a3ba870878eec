#ifndef TESTARGV_H
#define TESTARGV_H

#include <string>
#include <vector>

// Owns the words of a null-terminated argv for one call.
class TestArgv {
public:
    explicit TestArgv(std::vector<std::string> words) : m_words(std::move(words)) {
        for (std::string& word : m_words) m_pointers.push_back(&word[0]);
        m_pointers.push_back(nullptr);
    }
    TestArgv(const TestArgv&) = delete;
    TestArgv& operator=(const TestArgv&) = delete;
    int argc() const { return static_cast<int>(m_words.size()); }
    char** argv() { return m_pointers.data(); }

private:
    std::vector<std::string> m_words;
    std::vector<char*> m_pointers;
};

#endif
