#include "QVRDataModelFilter.h"

#include <gtest/gtest.h>

#include "QVROptionKeys.h"

namespace {

CDeviceInfo Device(const std::string& id, const std::string& type) {
    CDeviceInfo r;
    r.setComponentID(id);
    r.setComponentType(type);
    return r;
}

TEST(QVRDataModelFilter, NoOptionsLetsEveryDevicePass) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_OUT, "x.xml");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    const CDeviceInfo r = Device("1", "FRMW");
    EXPECT_TRUE(filter.CheckFilterCompID(&r));
    EXPECT_TRUE(filter.CheckFilterCompType(&r));
    EXPECT_TRUE(filter.IsFilterSatisfied(&r));
    filter.Initialize(nullptr);
    EXPECT_TRUE(filter.IsFilterSatisfied(&r));
}

struct FilterCase {
    const char* id;
    const char* type;
    bool passes;
};

class BothFiltersTest : public ::testing::TestWithParam<FilterCase> {};

TEST_P(BothFiltersTest, BothMustMatchWhenBothAreGiven) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPID, "159");
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    const CDeviceInfo r = Device(GetParam().id, GetParam().type);
    EXPECT_EQ(filter.IsFilterSatisfied(&r), GetParam().passes);
}

INSTANTIATE_TEST_SUITE_P(Cases, BothFiltersTest,
                         ::testing::Values(FilterCase{"159", "FRMW", true}, FilterCase{"159", "BIOS", false},
                                           FilterCase{"158", "FRMW", false}, FilterCase{"", "", false},
                                           FilterCase{"159 ", "FRMW", false},
                                           FilterCase{"159", "frmw", false}));

TEST(QVRDataModelFilter, ComponentIdsDifferingInCaseDoNotMatch) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPID, "AbC,def");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    const CDeviceInfo lower = Device("abc", "FRMW");
    const CDeviceInfo exact = Device("AbC", "X");
    const CDeviceInfo second = Device("def", "X");
    EXPECT_FALSE(filter.CheckFilterCompID(&lower));
    EXPECT_TRUE(filter.CheckFilterCompID(&exact));
    EXPECT_TRUE(filter.IsFilterSatisfied(&second));
    EXPECT_TRUE(filter.CheckFilterCompType(&lower));  // no type filter given
}

TEST(QVRDataModelFilter, RepeatedValuesCollapseAndInitializeAccumulates) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW,FRMW,DRVR");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    filter.Initialize(&args);
    EXPECT_EQ(filter.GetCompTypes().size(), 2u);
}

TEST(QVRDataModelFilter, DisabledFilterLetsEverythingPass) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPID, "1");
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    QVRDataModelFilter filter(false);
    filter.Initialize(&args);
    const CDeviceInfo r = Device("2", "BIOS");
    EXPECT_TRUE(filter.CheckFilterCompID(&r));
    EXPECT_TRUE(filter.CheckFilterCompType(&r));
    EXPECT_TRUE(filter.IsFilterSatisfied(&r));
}

}  // namespace
