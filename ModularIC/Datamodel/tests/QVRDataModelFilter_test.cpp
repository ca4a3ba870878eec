#include "QVRDataModelFilter.h"

#include <gtest/gtest.h>

#include <tuple>

#include "QVROptionKeys.h"

namespace {

TEST(QVRDataModelFilter, GivenFiltersMustAllMatchExactly) {
    // compID option, comptype option (null: not given), enabled, record id, record type, passes.
    // clang-format off
    const std::vector<std::tuple<const char*, const char*, bool, const char*, const char*, bool>> rows = {
        {nullptr, nullptr, true, "1", "FRMW", true}, {"159", "FRMW", true, "159", "FRMW", true},
        {"159", "FRMW", true, "159", "BIOS", false}, {"159", "FRMW", true, "158", "FRMW", false},
        {"159", "FRMW", true, "159 ", "FRMW", false}, {"159", "FRMW", true, "159", "frmw", false},
        {"159", "FRMW", true, "", "", false}, {"AbC,def", nullptr, true, "abc", "X", false},
        {"AbC,def", nullptr, true, "AbC", "X", true}, {"AbC,def", nullptr, true, "def", "X", true},
        {nullptr, "FRMW,DRVR", true, "1", "DRVR", true}, {"1", "FRMW", false, "2", "BIOS", true}};
    // clang-format on
    for (const auto& row : rows) {
        QVRArgumentList args;
        if (std::get<0>(row) != nullptr) args.insertValue(QVR_OPT_COMPID, std::get<0>(row));
        if (std::get<1>(row) != nullptr) args.insertValue(QVR_OPT_COMPTYPE, std::get<1>(row));
        QVRDataModelFilter filter(std::get<2>(row));
        filter.Initialize(&args);
        CDeviceInfo r;
        r.setComponentID(std::get<3>(row));
        r.setComponentType(std::get<4>(row));
        EXPECT_EQ(filter.IsFilterSatisfied(&r), std::get<5>(row)) << "row " << &row - &rows[0];
    }
}

}  // namespace
