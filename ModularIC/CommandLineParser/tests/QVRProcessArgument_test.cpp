#include "QVRProcessArgument.h"

#include <gtest/gtest.h>

#include "QVROptionKeys.h"
#include "TestArgv.h"

namespace {

typedef QVRProcessArgument::OptionMap Map;

struct Row {
    std::vector<std::string> words;
    unsigned int code;
    Map options;  // compared only when the code is 0
};

TEST(QVRProcessArgumentTest, WordsToCodeAndOptionMap) {
    const std::string help = QVR_OPT_HELP, version = QVR_OPT_VERSION, out = QVR_OPT_OUT, log = QVR_OPT_LOG;
    // clang-format off
    const std::vector<Row> rows = {
        // Every spelling reaches its key.
        {{"-h"}, 0, {{help, ""}}},               {{"--help"}, 0, {{help, ""}}},
        {{"-v"}, 0, {{version, ""}}},            {{"--version"}, 0, {{version, ""}}},
        {{"-l=x.xml"}, 0, {{log, "x.xml"}}},     {{"-logc=x.xml"}, 0, {{log, "x.xml"}}},
        {{"-o=x.xml"}, 0, {{out, "x.xml"}}},     {{"-outc=x.xml"}, 0, {{out, "x.xml"}}},
        {{"-p"}, 0, {{QVR_OPT_PROGRESS, ""}}},   {{"-progress"}, 0, {{QVR_OPT_PROGRESS, ""}}},
        {{"-d=G"}, 0, {{QVR_OPT_DISABLE, "G"}}}, {{"-disable=G"}, 0, {{QVR_OPT_DISABLE, "G"}}},
        {{"-enc=UTF-8"}, 0, {{QVR_OPT_ENCODE, "UTF-8"}}}, {{"-outf=XML"}, 0, {{QVR_OPT_OUTPUTFORMAT, "XML"}}},
        {{"-category=FW"}, 0, {{QVR_OPT_CATEGORY, "FW"}}}, {{"-comptype=B"}, 0, {{QVR_OPT_COMPTYPE, "B"}}},
        {{"-serialize=yes"}, 0, {{QVR_OPT_SERIALIZE, "yes"}}},
        // Exact, case-sensitive spellings only.
        {{"-help"}, 5, {}}, {{"--h"}, 5, {}}, {{"--outc=x"}, 5, {}}, {{"-OUTC=x"}, 5, {}},
        {{"-Outf=XML"}, 5, {}}, {{"outc=x"}, 5, {}}, {{""}, 5, {}}, {{"-list=-p"}, 5, {}},
        // No value for help, version, progress; "=" needs a value; a bare value option is left to the rules.
        {{"--help=1"}, 5, {}}, {{"-v="}, 5, {}}, {{"-p=yes"}, 5, {}},
        {{"-outc="}, 23, {}}, {{"-serialize="}, 23, {}}, {{"-bdir="}, 23, {}},
        {{"-outc"}, 0, {{out, ""}}}, {{"-enc"}, 0, {{QVR_OPT_ENCODE, ""}}},
        {{"-outc=/tmp/a=b.xml"}, 0, {{out, "/tmp/a=b.xml"}}},
        // Only a value quoted at both ends loses the quotes.
        {{"-outc=\"/tmp/my inv.xml\""}, 0, {{out, "/tmp/my inv.xml"}}},
        {{"-outc=\"/tmp/inv.xml"}, 0, {{out, "\"/tmp/inv.xml"}}}, {{"-outc=\""}, 0, {{out, "\""}}},
        // Repeats accumulate, except for the four single-value options.
        {{"-disable=A", "-d=B", "-category=FW", "-category=BI"}, 0,
         {{QVR_OPT_DISABLE, "A,B"}, {QVR_OPT_CATEGORY, "FW,BI"}}},
        {{"-serialize=yes", "-serialize=no"}, 0, {{QVR_OPT_SERIALIZE, "yes,no"}}},
        {{"-outc=a", "-o=b"}, 5, {}}, {{"-logc=a", "-l=b"}, 5, {}},
        {{"-enc=UTF-8", "-enc=UTF-8"}, 5, {}}, {{"-outf=XML", "-outf=JSON"}, 5, {}},
        // Help or version first silences the rest; after another option it fails.
        {{"--help", "-nonsense", "-outc=", "-v"}, 0, {{help, ""}}}, {{"-v", "--help"}, 0, {{version, ""}}},
        {{"-p", "--help"}, 5, {}}, {{"-outc=x", "-v"}, 5, {}},
        // The base directory prefixes later bare names only and is not an option itself.
        {{"-bdir=/tmp/x", "-outc=inv.xml"}, 0, {{out, "/tmp/x/inv.xml"}}},
        {{"-outc=inv.xml", "-bdir=/tmp/x"}, 0, {{out, "inv.xml"}}},
        {{"-bdir=/tmp/x", "-logc=err.xml"}, 0, {{log, "/tmp/x/err.xml"}}},
        {{"-bdir=/tmp/x", "-outc=sub/inv.xml"}, 0, {{out, "sub/inv.xml"}}},
        {{"-bdir=/tmp/x", "-outc=/abs/inv.xml"}, 0, {{out, "/abs/inv.xml"}}}, {{"-bdir=/tmp/x"}, 0, {}}};
    // clang-format on
    for (const Row& row : rows) {
        std::vector<std::string> words = row.words;
        words.insert(words.begin(), "/opt/tools/bin/sorvik");
        TestArgv args(words);
        QVRProcessArgument processor;
        Map options;
        EXPECT_EQ(processor.ParseCmdLine(args.argc(), args.argv(), options), row.code)
            << ::testing::PrintToString(row.words);
        EXPECT_TRUE(row.code != 0 || options == row.options) << ::testing::PrintToString(row.words);
        EXPECT_EQ(processor.GetProgramName(), "sorvik");
    }
}

}  // namespace
