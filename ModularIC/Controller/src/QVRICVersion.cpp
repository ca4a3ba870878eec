#include "QVRICVersion.h"

#include <cstdio>

#include "SorvikVersion.h"

const char* const kQVRUsageFormat =
    "\n"
    "Usage: %s [OPTION]...\n"
    " \t\tOptions:\n"
    " \t\t\t[ --help | -h]               \t\tFor help\n"
    " \t\t\t[ --version | -v]            \t\tInventory collector version\n"
    " \t\t\t[-outc=<file-name> | -o=<file-name>]\tOutput file\n"
    " \t\t\t[-outf=<output format>] \t\tXML or JSON output format\n"
    " \t\t\t[-logc=<file-name> | -l=<file-name>]\tError log xml file\n"
    " \t\t\t[-disable=<GUID> | -d=<GUID>]       \tDisable the inventory module\n"
    " \t\t\t[-enc=<encoding>]       \t\tUTF-8 or UTF-16, this option is only applied to the output xml file "
    "specified by - outc\n"
    " \t\t\t[-progress | -p]\t\t\t  \tProvides progress of running inventroy collector\n"
    " \t\t\t[-comptype=<componenttype>]\t\tEnables one to inventory the programmable component  like BIOS, "
    "APAC, APP, FRMW.\n";

void PrintHelpUsage(std::string programName) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::fprintf(stdout, kQVRUsageFormat, programName.c_str());
#pragma GCC diagnostic pop
    std::fflush(stdout);
}

void PrintICVersion() {
    const std::string text = "\nVERSION: " + GetICVersion() + "\n";
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

std::string GetICVersion() { return SORVIK_VERSION_TEXT; }

std::string GetICBuildVersion() { return std::to_string(SORVIK_BUILD_NUMBER); }
