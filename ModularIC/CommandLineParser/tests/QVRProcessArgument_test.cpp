#include "QVRProcessArgument.h"

#include <gtest/gtest.h>

#include <vector>

#include "QVROptionKeys.h"
#include "QVRResultCodes.h"
#include "TestArgv.h"

namespace {

struct ParseResult {
    unsigned int code;
    QVRProcessArgument::OptionMap options;
};

ParseResult Parse(std::vector<std::string> words) {
    words.insert(words.begin(), "/usr/sbin/sorvik");
    TestArgv args(words);
    QVRProcessArgument processor;
    ParseResult result;
    result.code = processor.ParseCmdLine(args.argc(), args.argv(), result.options);
    return result;
}

TEST(QVRProcessArgumentTest, EverySpellingReachesItsKey) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"-h", QVR_OPT_HELP},
        {"--help", QVR_OPT_HELP},
        {"-v", QVR_OPT_VERSION},
        {"--version", QVR_OPT_VERSION},
        {"-l=x.xml", QVR_OPT_LOG},
        {"-logc=x.xml", QVR_OPT_LOG},
        {"-o=x.xml", QVR_OPT_OUT},
        {"-outc=x.xml", QVR_OPT_OUT},
        {"-enc=UTF-8", QVR_OPT_ENCODE},
        {"-outf=XML", QVR_OPT_OUTPUTFORMAT},
        {"-category=FW", QVR_OPT_CATEGORY},
        {"-comptype=BIOS", QVR_OPT_COMPTYPE},
        {"-p", QVR_OPT_PROGRESS},
        {"-progress", QVR_OPT_PROGRESS},
        {"-d=G", QVR_OPT_DISABLE},
        {"-disable=G", QVR_OPT_DISABLE},
        {"-serialize=yes", QVR_OPT_SERIALIZE},
    };
    for (const auto& row : rows) {
        const ParseResult result = Parse({row.first});
        EXPECT_EQ(result.code, 0u) << row.first;
        ASSERT_EQ(result.options.size(), 1u) << row.first;
        EXPECT_EQ(result.options.begin()->first, row.second) << row.first;
    }
}

TEST(QVRProcessArgumentTest, RejectsWordsThatAreNotSpellings) {
    for (const char* word : {"-help", "--h", "--outc=x", "-OUTC=x", "-Outf=XML", "outc=x", "", "-list=-p"}) {
        EXPECT_EQ(Parse({word}).code, QVR_RESULT_INVALID_OPTION) << word;
    }
}

TEST(QVRProcessArgumentTest, ValueRulesOfOneWord) {
    const std::vector<std::pair<std::string, unsigned int>> rows = {
        {"--help=1", QVR_RESULT_INVALID_OPTION},
        {"-v=", QVR_RESULT_INVALID_OPTION},
        {"-p=yes", QVR_RESULT_INVALID_OPTION},
        {"-outc=", QVR_RESULT_REQUIRES_ARGUMENT},
        {"-serialize=", QVR_RESULT_REQUIRES_ARGUMENT},
        {"-bdir=", QVR_RESULT_REQUIRES_ARGUMENT},
        {"-outc", 0u},
        {"-enc", 0u},
    };
    for (const auto& row : rows) EXPECT_EQ(Parse({row.first}).code, row.second) << row.first;
}

TEST(QVRProcessArgumentTest, SplitsAtTheFirstEqualsSign) {
    const ParseResult result = Parse({"-outc=/tmp/a=b.xml"});
    EXPECT_EQ(result.options.at(QVR_OPT_OUT), "/tmp/a=b.xml");
}

TEST(QVRProcessArgumentTest, QuotedValueLosesItsQuotes) {
    EXPECT_EQ(Parse({"-outc=\"/tmp/my inv.xml\""}).options.at(QVR_OPT_OUT), "/tmp/my inv.xml");
    // Only a value quoted at both ends loses them.
    EXPECT_EQ(Parse({"-outc=\"/tmp/inv.xml"}).options.at(QVR_OPT_OUT), "\"/tmp/inv.xml");
    EXPECT_EQ(Parse({"-outc=\""}).options.at(QVR_OPT_OUT), "\"");
}

TEST(QVRProcessArgumentTest, RepeatedListOptionsAccumulate) {
    const ParseResult result = Parse({"-disable=A", "-d=B", "-category=FW", "-category=BI"});
    EXPECT_EQ(result.code, 0u);
    EXPECT_EQ(result.options.at(QVR_OPT_DISABLE), "A,B");
    EXPECT_EQ(result.options.at(QVR_OPT_CATEGORY), "FW,BI");
}

TEST(QVRProcessArgumentTest, SingleValueOptionsMayBeGivenOnce) {
    for (const auto& words : std::vector<std::vector<std::string>>{{"-outc=a", "-o=b"},
                                                                   {"-logc=a", "-l=b"},
                                                                   {"-enc=UTF-8", "-enc=UTF-8"},
                                                                   {"-outf=XML", "-outf=JSON"}}) {
        EXPECT_EQ(Parse(words).code, QVR_RESULT_INVALID_OPTION) << words[0];
    }
    EXPECT_EQ(Parse({"-serialize=yes", "-serialize=no"}).options.at(QVR_OPT_SERIALIZE), "yes,no");
}

TEST(QVRProcessArgumentTest, HelpFirstSilencesEverythingAfterIt) {
    const ParseResult result = Parse({"--help", "-nonsense", "-outc=", "-v"});
    EXPECT_EQ(result.code, 0u);
    ASSERT_EQ(result.options.size(), 1u);
    EXPECT_EQ(result.options.count(QVR_OPT_HELP), 1u);

    const ParseResult version = Parse({"-v", "--help"});
    ASSERT_EQ(version.options.size(), 1u);
    EXPECT_EQ(version.options.count(QVR_OPT_VERSION), 1u);
}

TEST(QVRProcessArgumentTest, HelpOrVersionAfterAnotherOptionFails) {
    EXPECT_EQ(Parse({"-p", "--help"}).code, QVR_RESULT_INVALID_OPTION);
    EXPECT_EQ(Parse({"-outc=x", "-v"}).code, QVR_RESULT_INVALID_OPTION);
}

TEST(QVRProcessArgumentTest, BaseDirectoryAppliesToLaterBareNamesOnly) {
    EXPECT_EQ(Parse({"-bdir=/tmp/x", "-outc=inv.xml"}).options.at(QVR_OPT_OUT), "/tmp/x/inv.xml");
    EXPECT_EQ(Parse({"-outc=inv.xml", "-bdir=/tmp/x"}).options.at(QVR_OPT_OUT), "inv.xml");
    EXPECT_EQ(Parse({"-bdir=/tmp/x", "-logc=err.xml"}).options.at(QVR_OPT_LOG), "/tmp/x/err.xml");
    EXPECT_EQ(Parse({"-bdir=/tmp/x", "-outc=sub/inv.xml"}).options.at(QVR_OPT_OUT), "sub/inv.xml");
    EXPECT_EQ(Parse({"-bdir=/tmp/x", "-outc=/abs/inv.xml"}).options.at(QVR_OPT_OUT), "/abs/inv.xml");
    EXPECT_EQ(Parse({"-outc=inv.xml"}).options.at(QVR_OPT_OUT), "inv.xml");
}

TEST(QVRProcessArgumentTest, BaseDirectoryIsNotAnOption) {
    const ParseResult result = Parse({"-bdir=/tmp/x"});
    EXPECT_EQ(result.code, 0u);
    EXPECT_TRUE(result.options.empty());
}

TEST(QVRProcessArgumentTest, KeepsTheProgramBaseName) {
    TestArgv args({"/opt/tools/bin/sorvik", "-p"});
    QVRProcessArgument processor;
    QVRProcessArgument::OptionMap options;
    processor.ParseCmdLine(args.argc(), args.argv(), options);
    EXPECT_EQ(processor.GetProgramName(), "sorvik");
}

TEST(QVRProcessArgumentTest, ExclusionListProcessesEachWord) {
    QVRProcessArgument processor;
    QVRProcessArgument::OptionMap options;
    std::string list = "-p  -outc=inv.xml\t-d=A";
    EXPECT_EQ(processor.CheckForExclusionList(&list, options), 0u);
    EXPECT_EQ(options.size(), 3u);
    EXPECT_EQ(options.at(QVR_OPT_DISABLE), "A");

    std::string bad = "-p -bogus -d=B";
    QVRProcessArgument::OptionMap other;
    EXPECT_EQ(processor.CheckForExclusionList(&bad, other), QVR_RESULT_INVALID_OPTION);
    EXPECT_EQ(other.count(QVR_OPT_DISABLE), 0u);
}

TEST(QVRProcessArgumentTest, IgnoreRestStoresNothing) {
    QVRProcessArgument processor;
    QVRProcessArgument::OptionMap options;
    processor.setIgnoreRestOption();
    std::string key = QVR_OPT_OUT, value = "x";
    EXPECT_TRUE(processor.PopulateArgumentList(key, value, options));
    EXPECT_TRUE(options.empty());
}

}  // namespace
