#ifndef CQVRLOGOPTION_H
#define CQVRLOGOPTION_H

#include "IQVRFileSystem.h"
#include "IQVROptions.h"

// "logc": the error document's file; every failed path check answers 6.
class CQVRLogOption : public IQVROptions {
public:
    // fileSystem, borrowed, answers the path checks.
    explicit CQVRLogOption(IQVRFileSystem& fileSystem = IQVRFileSystem::Real());
    unsigned int Validate(std::string value) override;

    unsigned int ValidateFilePath(const std::string& path) const;

private:
    IQVRFileSystem& m_fileSystem;
};

#endif
