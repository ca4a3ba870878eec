#ifndef QVRINVOUTPUT_H
#define QVRINVOUTPUT_H

#include <string>

// Prints the message of a run's result code to standard error and, for the
// codes that call for it, the usage text with the program name to standard
// output. Codes without a message print nothing or the usage text alone.
void SetInvOutPut(unsigned int code, std::string programName);

// Writes the text to standard error as it is; nothing is appended.
void PrintError(std::string text);

// Local time as "%F %T".
std::string GetCurrentDateAndTime();

#endif
