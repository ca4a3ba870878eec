#ifndef BQMGUID_H
#define BQMGUID_H

#include "BQMString.h"

// A 128-bit identifier, written as "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" (upper-case
// hex digits, most significant byte first). Comparisons order the bytes as written.
class BQMGUID {
  public:
    // All zero.
    BQMGUID();

    // A random (version 4) identifier.
    static BQMGUID Generate();

    // Reads the 36-character form (hex digits of either case); false, leaving the value
    // unchanged, for anything else.
    bool FromString(const BQMString& text);
    BQMString ToString() const;
    bool IsNull() const;

    bool operator==(const BQMGUID& other) const;
    bool operator!=(const BQMGUID& other) const { return !(*this == other); }
    bool operator<(const BQMGUID& other) const;
    bool operator>(const BQMGUID& other) const { return other < *this; }

  private:
    unsigned char mBytes[16];
};

#endif
