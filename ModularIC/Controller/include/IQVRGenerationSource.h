#ifndef IQVRGENERATIONSOURCE_H
#define IQVRGENERATIONSOURCE_H

#include <set>
#include <string>

// Where a collection learns the names of the server generations whose modules
// it runs. The real source asks the management controller; tests give names.
class IQVRGenerationSource {
public:
    virtual ~IQVRGenerationSource() = default;
    // Fills names; leaves it empty when the generation cannot be learnt.
    virtual void GetGenerations(std::set<std::string>& names) = 0;
};

#endif
