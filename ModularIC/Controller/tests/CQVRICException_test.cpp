#include "CQVRICException.h"

#include <gtest/gtest.h>

#include "CQVRBadAllocException.h"

namespace {

TEST(CQVRICExceptionTest, TextNamesTypeMessageAndPlace) {
    const CQVRICException exception("/home/build/qvr_ModularIC/Controller/src/CQVRController.cpp", 220,
                                    "PopulateSystemGeneration",
                                    "Error occurred to get system generation list.", "CQVRICException");
    EXPECT_STREQ(exception.what(),
                 "CQVRICException - [Error occurred to get system generation list.]\n\t at "
                 "PopulateSystemGeneration(qvr_ModularIC/Controller/src/CQVRController.cpp:220)");
}

TEST(CQVRICExceptionTest, FileWithoutProjectPrefixIsKeptWhole) {
    const CQVRICException exception("/src/other.cpp", 7, "F", "m", "T");
    EXPECT_STREQ(exception.what(), "T - [m]\n\t at F(/src/other.cpp:7)");
}

TEST(CQVRICExceptionTest, EachFrameIsAppendedInnermostFirst) {
    CQVRICException exception("x/qvr_a.cpp", 1, "Inner", "m", "CQVRICException");
    exception.AddStackTrace("y/qvr_b.cpp", 22, "Middle");
    exception.AddStackTrace("qvr_c.cpp", 333, "Outer");
    EXPECT_STREQ(exception.what(),
                 "CQVRICException - [m]\n\t at Inner(qvr_a.cpp:1)]\n\t at Middle(qvr_b.cpp:22)]\n\t at "
                 "Outer(qvr_c.cpp:333)");
}

TEST(CQVRBadAllocExceptionTest, IsABadAllocCarryingItsText) {
    try {
        throw CQVRBadAllocException("Unable to create memory for QVRDataModel Object.");
    } catch (const std::bad_alloc& caught) {
        EXPECT_STREQ(caught.what(), "Unable to create memory for QVRDataModel Object.");
        return;
    }
    FAIL() << "not caught as std::bad_alloc";
}

TEST(CQVRBadAllocExceptionTest, ConvertedTextNamesThePlace) {
    const std::bad_alloc original;
    const CQVRBadAllocException converted = CQVRBadAllocException::FromBadAlloc(
        original, "/build/qvr_ModularIC/Controller/src/CQVRController.cpp", 118, "InitDataModel");
    EXPECT_EQ(std::string(converted.what()),
              std::string(original.what()) +
                  " qvr_ModularIC/Controller/src/CQVRController.cpp InitDataModel 118\n");
}

}  // namespace
