#pragma once
// Orders two firmware or software version strings as vendors publish them,
// never as plain text. The rules are in sorvik-audit(1), "VERSION COMPARISON".
#include <string>

namespace audit {

enum class Scheme {
    Auto,     // hexadecimal when both sides are 0x numbers, else numbers and words token by token
    Numeric,  // numbers separated by '.', '-' or '_', an optional "v" and bracketed build
    Hex,      // one hexadecimal number, with or without "0x"
    Text,     // equality only: versions are labels without an order
};

// "auto", "numeric", "hex", "text"; false for anything else.
bool ParseScheme(const std::string& text, Scheme& scheme);
const char* SchemeName(Scheme scheme);

enum class Order { Less, Equal, Greater, Incomparable };

struct Comparison {
    Order order = Order::Incomparable;
    std::string reason;  // why the sides cannot be compared; empty otherwise
};

// How a compares with b under the scheme. Incomparable, with a reason, when
// either side does not parse under the scheme or the two parse differently
// (different shapes, different words where a number or suffix letter would
// decide); Text gives Equal or Incomparable only.
Comparison CompareVersions(const std::string& a, const std::string& b, Scheme scheme);

// Whether the version parses under the scheme on its own; reason says why not.
bool VersionParses(const std::string& version, Scheme scheme, std::string& reason);

}  // namespace audit
