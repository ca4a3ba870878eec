#include <unistd.h>

#include "CollectionSupport.h"

namespace collection {
namespace {

const std::string kUsage =
    "\nUsage: sorvik [OPTION]...\n \t\tOptions:\n \t\t\t[ --help | -h]               \t\tFor help\n \t\t\t[ "
    "--version | -v]            \t\tInventory collector version\n \t\t\t[-outc=<file-name> | "
    "-o=<file-name>]\tOutput file\n \t\t\t[-outf=<output format>] \t\tXML or JSON output format\n "
    "\t\t\t[-logc=<file-name> | -l=<file-name>]\tError log xml file\n \t\t\t[-disable=<GUID> | -d=<GUID>]   "
    "    \tDisable the inventory module\n \t\t\t[-enc=<encoding>]       \t\tUTF-8 or UTF-16, this option is "
    "only applied to the output xml file specified by - outc\n \t\t\t[-progress | -p]\t\t\t  \tProvides "
    "progress of running inventroy collector\n \t\t\t[-comptype=<componenttype>]\t\tEnables one to inventory "
    "the programmable component  like BIOS, APAC, APP, FRMW.\n";

const char kInvalidOptions[] = "Invalid command line options are specified.";
const char kInvalidArgument[] = "Option argument is Invalid\n";

struct Case {
    const char* name;
    Args args;
    int status;
    std::string out;
    std::string err;
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

class CommandLineTest : public CollectionTest, public ::testing::WithParamInterface<Case> {};

// None of these may reach the lock, let alone wait for it: each ends at the
// command line or at help/version while another instance holds it.
TEST_P(CommandLineTest, ExitStatusAndOutputBytesWhileAnotherInstanceRuns) {
    const Case& c = GetParam();
    FileLock holder(kLockFile);
    ExpectResult(Run(c.args), c.status, c.out, c.err);
    holder.Release();
    ::unlink(kLockFile);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CommandLineTest,
    // clang-format off
    ::testing::Values(
        Case{"Help", {"--help"}, 0, kUsage, ""}, Case{"ShortHelp", {"-h"}, 0, kUsage, ""},
        Case{"Version", {"-v"}, 0, "\nVERSION: 21.09.200 (BLD_1155)\n", ""},
        Case{"HelpAfterAnotherOption", {"-outc=inv.xml", "--help"}, 5, kUsage, kInvalidOptions},
        Case{"HelpThenUnknownWord", {"--help", "-nonsense"}, 0, kUsage, ""},
        Case{"HelpThenVersion", {"--help", "-v"}, 0, kUsage, ""},
        Case{"HelpThenOutput", {"--help", "-outc=inv.xml"}, 0, kUsage, ""},
        Case{"UnknownOption", {"-nonsense"}, 5, kUsage, kInvalidOptions},
        Case{"OutputWithoutValue", {"-outc"}, 23, kUsage,
             "One of the Option specified requires Argument"},
        Case{"SecondOutput", {"-outc=a.xml", "-outc=b.xml"}, 5, kUsage, kInvalidOptions},
        Case{"GuidHyphenMoved", {"-disable=0123abc-d4567-89ef-ABCD-0123456789ef"}, 35,
             "Hyphen position is not as per GUID spec\n", kInvalidArgument},
        Case{"UnknownCategory", {"-category=FW,XX"}, 5, "XX is Invalid comptype argument\n" + kUsage,
             kInvalidOptions},
        Case{"LowerCaseEncoding", {"-enc=utf-8"}, 22, kUsage, "Invalid Encoding option specified"},
        Case{"LogInMissingDirectory", {"-logc=missing/err.xml"}, 6, "",
             "Log file either does not exist or is not writable. Provide a valid writable file for avoiding "
             "this error."},
        Case{"OutputInMissingDirectory", {"-outc=missing/inv.xml"}, 35, "", kInvalidArgument},
        // Values are split at ",": a path with one would name another file than the one checked.
        Case{"CommaInOutput", {"-outc=a,b.xml"}, 35, "", kInvalidArgument},
        Case{"CommaInLog", {"-logc=a,b.xml"}, 6, "",
             "Log file either does not exist or is not writable. Provide a valid writable file for avoiding "
             "this error."},
        Case{"CommaInBaseDirectory", {"-bdir=a,b", "-outc=inv.xml"}, 11, kUsage, ""},
        Case{"ProgressWithDisable", {"-p", "-disable=0123abcd-4567-89ef-ABCD-0123456789ef"}, 5, kUsage,
             kInvalidOptions}),
    // clang-format on
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

using RenamedProgramTest = CollectionTest;

TEST_F(RenamedProgramTest, UsageNamesSorvikWhateverTheInvokedName) {
    EXPECT_EQ(RunProgram(SORVIK_BINARY, {"/somewhere/else/renamed-tool", "--help"}, dir.Path()).out, kUsage);
}

}  // namespace
}  // namespace collection
