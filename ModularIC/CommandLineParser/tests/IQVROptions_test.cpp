#include <gtest/gtest.h>

#include "CQVRCompTypeOption.h"
#include "CQVROutputEncodingOption.h"
#include "CQVROutputFormatOption.h"
#include "CQVRSerializeOption.h"
#include "QVROptionFactory.h"
#include "QVROptionKeys.h"
#include "QVRResultCodes.h"
#include "StreamCapture.h"

namespace {

struct PropertyRow {
    const char* key;
    bool single;
    bool requiresValue;
    std::set<std::string> companions;
};

TEST(IQVROptionsTest, EveryKeyHasItsProperties) {
    const std::vector<PropertyRow> rows = {
        {QVR_OPT_HELP, true, false, {}},
        {QVR_OPT_VERSION, true, false, {}},
        {QVR_OPT_PROGRESS, false, false, {QVR_OPT_ENCODE, QVR_OPT_OUT}},
        {QVR_OPT_OUT, false, true, {}},
        {QVR_OPT_LOG, false, true, {}},
        {QVR_OPT_ENCODE, false, true, {}},
        {QVR_OPT_OUTPUTFORMAT, false, true, {}},
        {QVR_OPT_CATEGORY, false, true, {}},
        {QVR_OPT_COMPTYPE, false, true, {}},
        {QVR_OPT_DISABLE, false, true, {}},
        {QVR_OPT_BDIR, false, true, {}},
        {QVR_OPT_SERIALIZE, false, true, {}},
    };
    QVROptionFactory factory;
    EXPECT_EQ(factory.GetOptions().size(), rows.size());
    for (const PropertyRow& row : rows) {
        IQVROptions* option = factory.GetOption(row.key);
        ASSERT_NE(option, nullptr) << row.key;
        EXPECT_EQ(option->IsSingleOption(), row.single) << row.key;
        EXPECT_EQ(option->HasSingleOptionMark(), row.single) << row.key;
        EXPECT_EQ(option->IsRequiredValue(), row.requiresValue) << row.key;
        EXPECT_EQ(option->GetDependentOptions(), row.companions) << row.key;
        EXPECT_TRUE(option->GetDependentOptionKey().empty()) << row.key;
    }
    EXPECT_EQ(factory.GetOption(QVR_OPT_LIST), nullptr);
}

TEST(IQVROptionsTest, RequiresValueFlagCanBeToggled) {
    QVROptionFactory factory;
    IQVROptions* option = factory.GetOption(QVR_OPT_OUT);
    option->UnSetRequiredOptionVal();
    EXPECT_FALSE(option->IsRequiredValue());
    option->SetRequiresOptionVal();
    EXPECT_TRUE(option->IsRequiredValue());
}

TEST(QVROptionFactoryTest, ShortSpellingsStandForLongOnes) {
    QVROptionFactory factory;
    EXPECT_EQ(factory.GetMainSpelling("-h"), "--help");
    EXPECT_EQ(factory.GetMainSpelling("-v"), "--version");
    EXPECT_EQ(factory.GetMainSpelling("-l"), "-logc");
    EXPECT_EQ(factory.GetMainSpelling("-o"), "-outc");
    EXPECT_EQ(factory.GetMainSpelling("-p"), "-progress");
    EXPECT_EQ(factory.GetMainSpelling("-d"), "-disable");
    EXPECT_EQ(factory.GetMainSpelling("-enc"), "-enc");
    std::string key = "unchanged";
    EXPECT_FALSE(factory.GetOptionKey("-list", key));
    EXPECT_EQ(key, "unchanged");
}

struct ValueRow {
    const char* key;
    const char* value;
    unsigned int code;
};

TEST(IQVROptionsTest, ValueSetsAreExactAndCaseSensitive) {
    const std::vector<ValueRow> rows = {
        {QVR_OPT_ENCODE, "UTF-8", 0},
        {QVR_OPT_ENCODE, "UTF-16", 0},
        {QVR_OPT_ENCODE, "utf-8", 22},
        {QVR_OPT_ENCODE, "UTF-32", 22},
        {QVR_OPT_ENCODE, "", 22},
        {QVR_OPT_OUTPUTFORMAT, "XML", 0},
        {QVR_OPT_OUTPUTFORMAT, "JSON", 0},
        {QVR_OPT_OUTPUTFORMAT, "xml", 35},
        {QVR_OPT_OUTPUTFORMAT, "MULTISYSTEMXML", 35},
        {QVR_OPT_SERIALIZE, "yes", 0},
        {QVR_OPT_SERIALIZE, "no", 0},
        {QVR_OPT_SERIALIZE, "", 23},
        {QVR_OPT_SERIALIZE, "maybe", 35},
        {QVR_OPT_SERIALIZE, "YES", 35},
        {QVR_OPT_COMPTYPE, "BIOS,FRMW", 0},
        {QVR_OPT_COMPTYPE, "FRMW,BIOS,DRVR,APAC,APP,SBDL,CSBDL", 0},
        {QVR_OPT_COMPTYPE, "bios", 35},
        {QVR_OPT_COMPTYPE, "BIOS,XYZ", 35},
        {QVR_OPT_COMPTYPE, "OS", 35},
        {QVR_OPT_COMPTYPE, ",BIOS", 35},
        {QVR_OPT_HELP, "anything", 0},
        {QVR_OPT_VERSION, "", 0},
        {QVR_OPT_PROGRESS, "x", 0},
    };
    QVROptionFactory factory;
    for (const ValueRow& row : rows) {
        StreamCapture out(stdout);
        const unsigned int code = factory.GetOption(row.key)->Validate(row.value);
        const std::string printed = out.Finish();
        EXPECT_EQ(code, row.code) << row.key << "=" << row.value;
        EXPECT_EQ(printed, "") << row.key << "=" << row.value;
    }
}

TEST(CQVRCategoryOptionTest, NamesTheFirstUnknownCategory) {
    const std::vector<std::tuple<std::string, unsigned int, std::string>> rows = {
        {"AP,BI,CE,Chipset,DI,DD,FW", 0, ""},
        {"FW,XX", 5, "XX is Invalid comptype argument\n"},
        {"XX,YY", 5, "XX is Invalid comptype argument\n"},
        {"fw", 5, "fw is Invalid comptype argument\n"},
        {"FW,,DD", 5, " is Invalid comptype argument\n"},
    };
    QVROptionFactory factory;
    for (const auto& row : rows) {
        StreamCapture out(stdout);
        const unsigned int code = factory.GetOption(QVR_OPT_CATEGORY)->Validate(std::get<0>(row));
        EXPECT_EQ(out.Finish(), std::get<2>(row)) << std::get<0>(row);
        EXPECT_EQ(code, std::get<1>(row)) << std::get<0>(row);
    }
}

TEST(CQVRDisableOptionTest, GuidRules) {
    const std::vector<std::tuple<std::string, unsigned int, std::string>> rows = {
        {"0123abcd-4567-89ef-ABCD-0123456789ef", 0, ""},
        {"0123abcd-4567-89ef-ABCD-0123456789ef,ffffffff-0000-1111-2222-333333333333", 0, ""},
        // One hyphen moved, length kept.
        {"0123abc-d4567-89ef-ABCD-0123456789ef", 35, "Hyphen position is not as per GUID spec\n"},
        {"0123abcd-4567-89ef-ABCD-0123456789-f", 35, "Hyphen position is not as per GUID spec\n"},
        {"0123abcd04567089ef0ABCD00123456789ef", 35, "Hyphen position is not as per GUID spec\n"},
        {"0123abcd-4567-89ef-ABCD-0123456789eg", 35, ""},
        {"g123abcd-4567-89ef-ABCD-0123456789ef", 35, ""},
        {"0123abcd-4567-89ef-ABCD-0123456789e", 35, ""},
        {"0123abcd-4567-89ef-ABCD-0123456789eff", 35, ""},
        {"0123abcd-4567-89ef-ABCD-0123456789ef,bad", 35, ""},
        {"", 35, ""},
    };
    QVROptionFactory factory;
    for (const auto& row : rows) {
        StreamCapture out(stdout);
        const unsigned int code = factory.GetOption(QVR_OPT_DISABLE)->Validate(std::get<0>(row));
        EXPECT_EQ(out.Finish(), std::get<2>(row)) << std::get<0>(row);
        EXPECT_EQ(code, std::get<1>(row)) << std::get<0>(row);
    }
}

}  // namespace
