#include "IQVROptions.h"

#include <gtest/gtest.h>

#include "QVROptionFactory.h"
#include "QVROptionKeys.h"

namespace {

struct ValueRow {
    std::string key, value;
    unsigned int code;
    std::string printed;  // on standard output
};

const std::string kGuid = "0123abcd-4567-89ef-ABCD-0123456789ef";
const char kHyphen[] = "Hyphen position is not as per GUID spec\n";

TEST(IQVROptionsTest, ValueChecksAnswerTheirCodeAndMessage) {
    const std::string enc = QVR_OPT_ENCODE, fmt = QVR_OPT_OUTPUTFORMAT, ser = QVR_OPT_SERIALIZE,
                      comp = QVR_OPT_COMPTYPE, cat = QVR_OPT_CATEGORY, dis = QVR_OPT_DISABLE;
    // clang-format off
    const std::vector<ValueRow> rows = {
        {enc, "UTF-8", 0, ""}, {enc, "UTF-16", 0, ""}, {enc, "utf-8", 22, ""}, {enc, "UTF-32", 22, ""},
        {enc, "", 22, ""},
        {fmt, "XML", 0, ""}, {fmt, "JSON", 0, ""}, {fmt, "xml", 35, ""}, {fmt, "MULTISYSTEMXML", 35, ""},
        {ser, "yes", 0, ""}, {ser, "no", 0, ""}, {ser, "", 23, ""}, {ser, "maybe", 35, ""},
        {ser, "YES", 35, ""}, {comp, "BIOS,FRMW", 0, ""}, {comp, "FRMW,BIOS,DRVR,APAC,APP,SBDL,CSBDL", 0, ""},
        {comp, "bios", 35, ""}, {comp, "BIOS,XYZ", 35, ""}, {comp, "OS", 35, ""}, {comp, ",BIOS", 35, ""},
        // The category message names the component type: kept as it is.
        {cat, "AP,BI,CE,Chipset,DI,DD,FW", 0, ""}, {cat, "FW,XX", 5, "XX is Invalid comptype argument\n"},
        {cat, "XX,YY", 5, "XX is Invalid comptype argument\n"},
        {cat, "FW,,DD", 5, " is Invalid comptype argument\n"},
        {cat, "fw", 5, "fw is Invalid comptype argument\n"},
        {dis, kGuid, 0, ""}, {dis, kGuid + ",ffffffff-0000-1111-2222-333333333333", 0, ""},
        {dis, "0123abc-d4567-89ef-ABCD-0123456789ef", 35, kHyphen},
        {dis, "0123abcd-4567-89ef-ABCD-0123456789-f", 35, kHyphen},
        {dis, "0123abcd04567089ef0ABCD00123456789ef", 35, kHyphen},
        // Only the hyphen layout has a message; length, hex digits and the list fail silently.
        {dis, "0123abcd-4567-89ef-ABCD-0123456789eg", 35, ""},
        {dis, "g123abcd-4567-89ef-ABCD-0123456789ef", 35, ""},
        {dis, "0123abcd-4567-89ef-ABCD-0123456789e", 35, ""},
        {dis, "0123abcd-4567-89ef-ABCD-0123456789eff", 35, ""},
        {dis, kGuid + ",bad", 35, ""}, {dis, "", 35, ""}};
    // clang-format on
    QVROptionFactory factory;
    for (const ValueRow& row : rows) {
        ::testing::internal::CaptureStdout();
        const unsigned int code = factory.GetOption(row.key)->Validate(row.value);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), row.printed) << row.key << "=" << row.value;
        EXPECT_EQ(code, row.code) << row.key << "=" << row.value;
    }
}

}  // namespace
