#include "CQVRICException.h"

#include <gtest/gtest.h>

#include "CQVRBadAllocException.h"

namespace {

static_assert(std::is_base_of<std::bad_alloc, CQVRBadAllocException>::value, "main catches it as bad_alloc");

TEST(CQVRICExceptionTest, TextNamesTypeMessageAndEachFrameInnermostFirst) {
    const CQVRICException plain("/src/other.cpp", 7, "F", "m", "T");  // no "qvr": the name is kept whole
    EXPECT_STREQ(plain.what(), "T - [m]\n\t at F(/src/other.cpp:7)");
    CQVRICException exception("/home/build/qvr_ModularIC/Controller/src/CQVRController.cpp", 220,
                              "PopulateSystemGeneration", "Error occurred to get system generation list.",
                              "CQVRICException");
    exception.AddStackTrace("y/qvr_b.cpp", 22, "Middle");
    exception.AddStackTrace("qvr_c.cpp", 333, "Outer");
    EXPECT_STREQ(exception.what(),
                 "CQVRICException - [Error occurred to get system generation list.]\n\t at "
                 "PopulateSystemGeneration(qvr_ModularIC/Controller/src/CQVRController.cpp:220)]\n\t at "
                 "Middle(qvr_b.cpp:22)]\n\t at Outer(qvr_c.cpp:333)");
}

}  // namespace
