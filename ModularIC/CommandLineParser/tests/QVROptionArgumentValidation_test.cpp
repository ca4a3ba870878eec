#include "QVROptionArgumentValidation.h"

#include <gtest/gtest.h>

#include "QVROptionKeys.h"
#include "QVRResultCodes.h"
#include "StreamCapture.h"
#include "TestArgv.h"

namespace {

const char kGuidA[] = "0123abcd-4567-89ef-ABCD-0123456789ef";
const char kGuidB[] = "ffffffff-0000-1111-2222-333333333333";

struct Outcome {
    int code;
    QVRArgumentList list;
    bool invalidOption;
};

Outcome Process(std::vector<std::string> words) {
    words.insert(words.begin(), "sorvik");
    TestArgv args(words);
    Outcome outcome;
    QVROptionArgumentValidation validation;
    StreamCapture quiet(stdout);  // validators may print
    outcome.code = validation.ProcessArgument(args.argc(), args.argv(), &outcome.list);
    quiet.Finish();
    outcome.invalidOption = validation.IsInvalidOption();
    return outcome;
}

struct Row {
    std::vector<std::string> words;
    int code;
};

TEST(QVROptionArgumentValidationTest, ResultCodeOfEachCommandLine) {
    const std::vector<Row> rows = {
        {{"-outc"}, 23},
        {{"-serialize"}, 23},
        {{"-outc=inv.xml", "--help"}, 5},
        {{"-v=1"}, 5},
        {{"-bogus"}, 5},
        {{"-p", "-d=" + std::string(kGuidA)}, 5},
        {{"-p", "-category=FW"}, 5},
        {{"-p", "-comptype=BIOS"}, 5},
        {{"-p", "-outf=XML"}, 5},
        {{"-p", "-logc=err.xml"}, 5},
        {{"-p", "-outc=inv.xml", "-enc=UTF-16"}, 0},
        {{"-p", "-serialize=yes"}, 0},
        {{"-p", "-serialize=maybe"}, 35},
        {{"-enc=utf-8"}, 22},
        {{"-outf=xml"}, 35},
        {{"-outf=MULTISYSTEMXML"}, 35},
        {{"-comptype=BIOS,XYZ"}, 35},
        {{"-category=FW,XX"}, 5},
        {{"-d=" + std::string(kGuidA), "-d=nonsense"}, 35},
        {{"-logc=/nonexistent-dir/err.xml"}, 6},
        {{"-outc=/nonexistent-dir/inv.xml"}, 35},
        {{"-outc=inv|.xml"}, 35},
        {{"-logc=err|.xml"}, 6},
        // Values are checked in key order: "encode" before "outputformat".
        {{"-outf=xml", "-enc=x"}, 22},
        {{"-comptype=BIOS,FRMW", "-category=FW,DD", "-serialize=no"}, 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Process(row.words).code, row.code) << ::testing::PrintToString(row.words);
    }
}

TEST(QVROptionArgumentValidationTest, NoOptionsIsADefaultRunThatStoresNothing) {
    TestArgv args({"sorvik"});
    QVRArgumentList list;
    QVROptionArgumentValidation validation;
    EXPECT_EQ(validation.ProcessArgument(args.argc(), args.argv(), &list), 0);
    EXPECT_TRUE(validation.IsNoOption());
    EXPECT_TRUE(list.GetListOfOption().empty());
    EXPECT_TRUE(list.GetSingleOption().empty());
}

TEST(QVROptionArgumentValidationTest, NoArgumentListIsACompleteFailure) {
    TestArgv args({"sorvik", "-p"});
    QVROptionArgumentValidation validation;
    EXPECT_EQ(validation.ProcessArgument(args.argc(), args.argv(), nullptr), 2);
}

TEST(QVROptionArgumentValidationTest, AcceptedOptionsFillTheList) {
    Outcome outcome = Process({"-d=" + std::string(kGuidB), "-disable=" + std::string(kGuidA), "-outf=JSON",
                               "-comptype=BIOS,FRMW", "-comptype=BIOS"});
    ASSERT_EQ(outcome.code, 0);
    const QVRArgumentList::OptionMap& options = outcome.list.GetListOfOption();
    EXPECT_EQ(options.at(QVR_OPT_DISABLE), (std::set<std::string>{kGuidA, kGuidB}));
    EXPECT_EQ(options.at(QVR_OPT_OUTPUTFORMAT), std::set<std::string>{"JSON"});
    EXPECT_EQ(options.at(QVR_OPT_COMPTYPE), (std::set<std::string>{"BIOS", "FRMW"}));
    EXPECT_TRUE(outcome.list.GetSingleOption().empty());
    EXPECT_EQ(outcome.list.GetProgramName(), "sorvik");
}

TEST(QVROptionArgumentValidationTest, ProgressIsStoredWithAnEmptySet) {
    Outcome outcome = Process({"-p"});
    ASSERT_EQ(outcome.code, 0);
    ASSERT_EQ(outcome.list.GetListOfOption().count(QVR_OPT_PROGRESS), 1u);
    EXPECT_TRUE(outcome.list.GetListOfOption().at(QVR_OPT_PROGRESS).empty());
}

TEST(QVROptionArgumentValidationTest, SingleOptionIsStoredAlone) {
    for (const auto& row : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"--help", "-p", "-bogus"}, QVR_OPT_HELP},
             {{"-h"}, QVR_OPT_HELP},
             {{"--version", "--help"}, QVR_OPT_VERSION},
             {{"-v"}, QVR_OPT_VERSION}}) {
        Outcome outcome = Process(row.first);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.list.GetSingleOption(), row.second);
        ASSERT_EQ(outcome.list.GetListOfOption().size(), 1u);
        EXPECT_EQ(outcome.list.GetListOfOption().begin()->first, row.second);
    }
}

TEST(QVROptionArgumentValidationTest, MarksInvalidOptionFailures) {
    EXPECT_TRUE(Process({"-bogus"}).invalidOption);
    EXPECT_TRUE(Process({"-outc=x", "--help"}).invalidOption);
    EXPECT_TRUE(Process({"-p", "-category=FW"}).invalidOption);
    EXPECT_FALSE(Process({"-outc"}).invalidOption);
    EXPECT_FALSE(Process({"-enc=utf-8"}).invalidOption);
}

TEST(QVROptionArgumentValidationTest, RejectedCommandLineStoresNoOptions) {
    Outcome outcome = Process({"-outf=JSON", "-enc=bad"});
    EXPECT_EQ(outcome.code, 22);
    EXPECT_TRUE(outcome.list.GetListOfOption().empty());
}

TEST(QVROptionArgumentValidationTest, ProgressCompanionRuleLooksOnlyBeforeProgress) {
    QVROptionArgumentValidation validation;
    TestArgv args({"sorvik", "-p", "-outc=inv.xml", "-enc=UTF-8"});
    QVRArgumentList list;
    ASSERT_EQ(validation.ProcessArgument(args.argc(), args.argv(), &list), 0);
    EXPECT_TRUE(validation.ValidateOptionalOptions(QVR_OPT_PROGRESS, {QVR_OPT_ENCODE, QVR_OPT_OUT}));
    EXPECT_FALSE(validation.ValidateOptionalOptions(QVR_OPT_PROGRESS, {QVR_OPT_OUT}));
}

}  // namespace
