#ifndef QVRICVERSION_H
#define QVRICVERSION_H

#include <string>

// The usage text, a printf format with one "%s" for the program name.
extern const char* const kQVRUsageFormat;

// Prints the usage text to standard output with the program name filled in.
void PrintHelpUsage(std::string programName);
// Prints "\nVERSION: " and the version text and a line end to standard output.
void PrintICVersion();
// "21.09.200 (BLD_1155)".
std::string GetICVersion();
// The build number as decimal text, "1155".
std::string GetICBuildVersion();

#endif
