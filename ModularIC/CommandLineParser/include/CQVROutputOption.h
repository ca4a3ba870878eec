#ifndef CQVROUTPUTOPTION_H
#define CQVROUTPUTOPTION_H

#include "IQVRFileSystem.h"
#include "IQVROptions.h"

// "out": the inventory document's file; an illegal path or a missing directory
// answers 35, a file or directory that may not be written 6.
class CQVROutputOption : public IQVROptions {
public:
    // fileSystem, borrowed, answers the path checks.
    explicit CQVROutputOption(IQVRFileSystem& fileSystem = IQVRFileSystem::Real());
    unsigned int Validate(std::string value) override;

    unsigned int ValidateFilePath(const std::string& path) const;

private:
    IQVRFileSystem& m_fileSystem;
};

#endif
