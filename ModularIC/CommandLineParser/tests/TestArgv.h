#ifndef TESTARGV_H
#define TESTARGV_H

#include <string>
#include <vector>

// Owns the words of an argv for one call; argv() is null-terminated.
class TestArgv {
public:
    explicit TestArgv(std::vector<std::string> words) : m_storage(std::move(words)) {
        for (std::string& word : m_storage) m_pointers.push_back(&word[0]);
        m_pointers.push_back(nullptr);
    }
    TestArgv(const TestArgv&) = delete;
    TestArgv& operator=(const TestArgv&) = delete;

    int argc() const { return static_cast<int>(m_storage.size()); }
    char** argv() { return m_pointers.data(); }

private:
    std::vector<std::string> m_storage;
    std::vector<char*> m_pointers;
};

#endif
