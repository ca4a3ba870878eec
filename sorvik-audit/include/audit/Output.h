#pragma once
// Where a report goes: standard output, or a file replaced atomically.
#include <string>

namespace audit {

// Writes text to a temporary file beside path, flushes it to disk and renames
// it over path, so a reader (a metrics collector reading a directory) never
// sees a half-written file. On failure: false, error names the file and the
// call, and no temporary file is left.
bool WriteFileAtomically(const std::string& path, const std::string& text, std::string& error);

// Colour only on a terminal, and never when NO_COLOR is set and not empty.
bool ColourWanted(bool terminal, const char* noColor);

}  // namespace audit
