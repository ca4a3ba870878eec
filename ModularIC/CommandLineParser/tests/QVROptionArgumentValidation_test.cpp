#include "QVROptionArgumentValidation.h"

#include <gtest/gtest.h>

#include "QVROptionKeys.h"
#include "TestArgv.h"

namespace {

const std::string kGuidA = "0123abcd-4567-89ef-ABCD-0123456789ef",
                  kGuidB = "ffffffff-0000-1111-2222-333333333333";

struct Row {
    std::vector<std::string> words;
    int code;
    bool invalidOption;               // the mark behind the controller's "Invalid Command option found."
    QVRArgumentList::OptionMap list;  // what is stored; nothing on failure
};

TEST(QVROptionArgumentValidationTest, CommandLineToCodeAndArgumentList) {
    const std::string help = QVR_OPT_HELP, version = QVR_OPT_VERSION, progress = QVR_OPT_PROGRESS;
    // clang-format off
    const std::vector<Row> rows = {
        {{"-outc"}, 23, false, {}}, {{"-serialize"}, 23, false, {}}, {{"-outc="}, 23, true, {}},
        {{"-outc=inv.xml", "--help"}, 5, true, {}}, {{"-v=1"}, 5, true, {}}, {{"-bogus"}, 5, true, {}},
        // Progress tolerates only output and encoding before it; keys sorting after it pass unchecked.
        {{"-p", "-d=" + kGuidA}, 5, true, {}}, {{"-p", "-category=FW"}, 5, true, {}},
        {{"-p", "-comptype=BIOS"}, 5, true, {}}, {{"-p", "-outf=XML"}, 5, true, {}},
        {{"-p", "-logc=err.xml"}, 5, true, {}}, {{"-p"}, 0, false, {{progress, {}}}},
        {{"-p", "-outc=inv.xml", "-enc=UTF-16"}, 0, false,
         {{progress, {}}, {QVR_OPT_OUT, {"inv.xml"}}, {QVR_OPT_ENCODE, {"UTF-16"}}}},
        {{"-p", "-serialize=yes"}, 0, false, {{progress, {}}, {QVR_OPT_SERIALIZE, {"yes"}}}},
        {{"-p", "-serialize=maybe"}, 35, false, {}},
        // Value validators run in key order ("encode" before "outputformat") and answer their own code.
        {{"-outf=xml", "-enc=x"}, 22, false, {}}, {{"-outf=xml"}, 35, false, {}},
        {{"-category=FW,XX"}, 5, false, {}}, {{"-d=" + kGuidA, "-d=nonsense"}, 35, false, {}},
        {{"-logc=/no-dir/err.xml"}, 6, false, {}}, {{"-outc=/no-dir/inv.xml"}, 35, false, {}},
        {{"-d=" + kGuidB, "-disable=" + kGuidA, "-comptype=BIOS,FRMW", "-comptype=BIOS"}, 0, false,
         {{QVR_OPT_DISABLE, {kGuidA, kGuidB}}, {QVR_OPT_COMPTYPE, {"BIOS", "FRMW"}}}},
        {{"-category=FW,DD", "-serialize=no"}, 0, false,
         {{QVR_OPT_CATEGORY, {"DD", "FW"}}, {QVR_OPT_SERIALIZE, {"no"}}}},
        // A single option is stored alone and named as the single option.
        {{"--help", "-p", "-bogus"}, 0, false, {{help, {}}}}, {{"-h"}, 0, false, {{help, {}}}},
        {{"--version", "--help"}, 0, false, {{version, {}}}}, {{"-v"}, 0, false, {{version, {}}}}};
    // clang-format on
    for (const Row& row : rows) {
        std::vector<std::string> words = row.words;
        words.insert(words.begin(), "sorvik");
        TestArgv args(words);
        QVRArgumentList list;
        QVROptionArgumentValidation validation;
        ::testing::internal::CaptureStdout();  // validators may print
        const int code = validation.ProcessArgument(args.argc(), args.argv(), &list);
        ::testing::internal::GetCapturedStdout();
        const std::string name = ::testing::PrintToString(row.words);
        EXPECT_EQ(code, row.code) << name;
        EXPECT_EQ(validation.IsInvalidOption(), row.invalidOption) << name;
        EXPECT_EQ(list.GetListOfOption(), row.list) << name;
        const bool single = row.list.size() == 1 && (row.list.count(help) || row.list.count(version));
        EXPECT_EQ(list.GetSingleOption(), single ? row.list.begin()->first : "") << name;
        EXPECT_EQ(list.GetProgramName(), "sorvik") << name;
    }
}

}  // namespace
