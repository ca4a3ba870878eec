#ifndef CLINKRESOLVER_H
#define CLINKRESOLVER_H

#include <string>

// Follows a name through its symbolic links to the name a file written there
// really lands under, so that a document given as a link replaces the link's
// target and the link stays.
class CLinkResolver {
public:
    // As many links in a row as the kernel itself follows.
    static const int kMaxLinks = 40;

    // The name the chain of links starting at path ends in: path itself when it
    // is no link. A relative link target is taken against its link's
    // directory. The final name need not exist. False with errno (ELOOP, or
    // readlink's) when the chain cannot be followed.
    static bool Resolve(const std::string& path, std::string& target);
};

#endif
