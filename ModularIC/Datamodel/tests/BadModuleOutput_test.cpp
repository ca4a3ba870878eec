// Bad module output never crashes, throws, leaks (checked under the sanitizer
// build) or prints: it becomes at most one failure record.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "DatamodelTestSupport.h"
#include "QVRDataModelManager.h"
#include "QVRInventoryDataFactory.h"
#include "QVRInventoryRawDataStore.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QVR_UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QVR_UNDER_SANITIZER 1
#endif
#endif
#ifndef QVR_UNDER_SANITIZER
#define QVR_UNDER_SANITIZER 0
#endif

namespace {

const char* const kInvalid = "Invalid inventory XML root element.";

// Runs one output through the factory and the parser as a run would, with
// standard error and output captured; returns what was printed.
std::string RunModule(const std::string& output, Records& out, bool* stored = nullptr) {
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    std::string identity = "badmod";
    std::string text = output;
    IQVRInventoryRawData* data = QVRInventoryDataFactory()(identity, text, nullptr);
    if (stored != nullptr) *stored = data != nullptr;
    if (data != nullptr) {
        EXPECT_NO_THROW(data->PopulateData(out.items));
        delete data;
    }
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
    return printed;
}

class MalformedOutputTest : public ::testing::TestWithParam<std::string> {};

TEST_P(MalformedOutputTest, BecomesOneInvalidDocumentRecordSilently) {
    Records out;
    EXPECT_EQ(RunModule(GetParam(), out), "");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), kInvalid);
    EXPECT_EQ(out[0].getStatus(), 1);
    EXPECT_EQ(out[0].getDisplay(), "badmod");
}

INSTANTIATE_TEST_SUITE_P(
    Corpus, MalformedOutputTest,
    ::testing::Values(
        "<SVMInventory>", "<SVMInventory><Device></SVMInventory>", "<SVMInventory/><SVMInventory/>",
        "<SVMInventory><Device a=\"1\" a=\"2\"/></SVMInventory>",
        "<SVMInventory><Device a=1/></SVMInventory>", "<SVMInventory><Device a=\"<\"/></SVMInventory>",
        "<SVMInventory>&nbsp;</SVMInventory>", "<SVMInventory>\x01</SVMInventory>",
        "<SVMInventory>\xff\xfe</SVMInventory>", "<SVMInventory><![CDATA[</SVMInventory>",
        "<SVMInventory><!-- </SVMInventory>", "<?xml version=\"1.0\" encoding=\"EBCDIC-US\"?><SVMInventory/>",
        "<!DOCTYPE SVMInventory [<!ENTITY a \"&b;\"><!ENTITY b \"&a;\">]><SVMInventory>&a;</SVMInventory>",
        "<!DOCTYPE SVMInventory [<!ENTITY e \"<Device>\">]><SVMInventory>&e;</SVMInventory>",
        "text before <SVMInventory/>", "<SVMInventory/> text after", "<SVMInventory></svminventory>",
        std::string("<SVMInventory>\0</SVMInventory>", 30)));

TEST(BadModuleOutput, PlainTextOrBinaryWithoutTheTagIsDroppedSilently) {
    std::string garbage;
    unsigned int state = 99;
    for (int i = 0; i < 1 << 20; ++i) {
        state = state * 1103515245u + 12345u;
        garbage += static_cast<char>(state >> 24);
    }
    const size_t tag = garbage.find("<SVMInventory");
    ASSERT_EQ(tag, std::string::npos);
    Records out;
    bool stored = true;
    EXPECT_EQ(RunModule(garbage, out, &stored), "");
    EXPECT_FALSE(stored);
    EXPECT_EQ(out.size(), 0u);
}

TEST(BadModuleOutput, BinaryGarbageAroundTheTagIsOneFailure) {
    std::string garbage;
    unsigned int state = 5;
    for (int i = 0; i < 1 << 20; ++i) {
        state = state * 1103515245u + 12345u;
        char c = static_cast<char>(state >> 24);
        garbage += c == '\0' ? ' ' : c;
    }
    garbage.insert(garbage.size() / 2, "<SVMInventory>");
    Records out;
    EXPECT_EQ(RunModule(garbage, out), "");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), kInvalid);
}

TEST(BadModuleOutput, ExternalEntityIsNeverRead) {
    char name[] = "/tmp/qvrleakXXXXXX";
    const int fd = mkstemp(name);
    ASSERT_NE(fd, -1);
    close(fd);
    std::ofstream(name) << "LEAKED-FILE-CONTENT";
    const std::string doc = std::string("<!DOCTYPE SVMInventory [<!ENTITY x SYSTEM \"file://") + name +
                            "\"><!ENTITY % p SYSTEM \"file://" + name +
                            "\"> %p;]>"
                            "<SVMInventory><Device componentID=\"1\" display=\"a\"><Application "
                            "componentType=\"FRMW\" version=\"v\" display=\"d\"/></Device>"
                            "<SPStatus result=\"false\"><Message>&x;</Message></SPStatus></SVMInventory>";
    Records out;
    EXPECT_EQ(RunModule(doc, out), "");
    std::remove(name);
    for (const CDeviceInfo* r : out.items) {
        EXPECT_EQ(r->getErrorMsg().find("LEAKED"), std::string::npos);
        EXPECT_EQ(r->getDisplay().find("LEAKED"), std::string::npos);
    }
}

TEST(BadModuleOutput, InternalEntitiesAreExpandedInAttributesAndMessages) {
    const std::string doc =
        "<!DOCTYPE SVMInventory [<!ENTITY v \"1.2.3\"><!ENTITY m \"disk &amp; more\">]>"
        "<SVMInventory><Device componentID=\"1\"><Application componentType=\"FRMW\" "
        "version=\"&v;\"/></Device>"
        "<SPStatus result=\"false\"><Message>&m;</Message></SPStatus></SVMInventory>";
    Records out;
    EXPECT_EQ(RunModule(doc, out), "");
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].getVersion(), "1.2.3");
    EXPECT_EQ(out[1].getErrorMsg(), "disk & more");
}

TEST(BadModuleOutput, EntityExpansionBombIsOneFailureQuickly) {
    std::string doc = "<!DOCTYPE SVMInventory [<!ENTITY a0 \"lollollollollollollollollollollol\">";
    for (int i = 1; i <= 10; ++i) {
        doc += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) doc += "&a" + std::to_string(i - 1) + ";";
        doc += "\">";
    }
    doc +=
        "]><SVMInventory><SPStatus result=\"false\"><Message>&a10;</Message></SPStatus>"
        "<Device componentID=\"&a10;\"><Application componentType=\"FRMW\"/></Device></SVMInventory>";
    Records out;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RunModule(doc, out), "");
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), kInvalid);
    EXPECT_LT(seconds, 10.0);
}

TEST(BadModuleOutput, DeepNestingIsOneFailure) {
    std::string doc = "<SVMInventory><Device>";
    for (int i = 0; i < 5000; ++i) doc += "<Application>";
    for (int i = 0; i < 5000; ++i) doc += "</Application>";
    doc += "</Device></SVMInventory>";
    Records out;
    EXPECT_EQ(RunModule(doc, out), "");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), kInvalid);
}

TEST(BadModuleOutput, HugeAttributeBeyondLibxml2sLimitIsOneFailure) {
    const std::string doc = "<SVMInventory><Device componentID=\"" + std::string(11 * 1024 * 1024, 'x') +
                            "\"><Application componentType=\"FRMW\"/></Device></SVMInventory>";
    Records out;
    EXPECT_EQ(RunModule(doc, out), "");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), kInvalid);
}

TEST(BadModuleOutput, LargeAttributeWithinTheLimitIsKeptWhole) {
    const std::string big(4 * 1024 * 1024, 'v');
    const std::string doc =
        "<SVMInventory><Device componentID=\"1\"><Application componentType=\"FRMW\" version=\"" + big +
        "\"/></Device></SVMInventory>";
    Records out;
    EXPECT_EQ(RunModule(doc, out), "");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getVersion(), big);
}

// About 200 bytes per device, as a real inventory module writes them.
std::string CompactInventory(size_t devices, size_t unique) {
    std::string doc = "<?xml version=\"1.0\"?>\n<SVMInventory lang=\"en\">\n";
    doc.reserve(devices * 210 + 100);
    for (size_t i = 0; i < devices; ++i) {
        const std::string n = std::to_string(unique ? i % unique : i);
        doc += "<Device componentID=\"" + n + "\" display=\"Device " + n +
               "\" vendorID=\"8086\" deviceID=\"1521\" subVendorID=\"1028\" subDeviceID=\"1f60\" bus=\"3b\" "
               "device=\"0\" function=\"1\" enum=\"e" +
               n + "\"><Application componentType=\"FRMW\" version=\"1." + n + "\" display=\"Fw " + n +
               "\"/></Device>\n";
    }
    doc += "</SVMInventory>\n";
    return doc;
}

TEST(LargeOutput, TwentyMegabytesWithAHundredThousandDevicesStayLean) {
    const size_t kDevices = 100000;
    const std::string doc = CompactInventory(kDevices, 0);
    ASSERT_GT(doc.size(), 19u * 1000 * 1000);
    std::string identity = "big";
    std::string text = doc;
    IQVRInventoryRawData* data = QVRInventoryDataFactory()(identity, text, nullptr);
    ASSERT_NE(data, nullptr);
    const bool canMeasure = ResetPeakRss();
    const long before = CurrentRssBytes();
    Records out;
    const auto start = std::chrono::steady_clock::now();
    data->PopulateData(out.items);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long peak = PeakRssBytes();
    delete data;
    ASSERT_EQ(out.size(), kDevices);
    EXPECT_EQ(out[kDevices - 1].getVersion(), "1." + std::to_string(kDevices - 1));
    std::printf(
        "parsed %zu bytes, %zu devices in %.3f s; peak RSS %ld MB (%.1fx the output), growth %ld MB\n",
        doc.size(), kDevices, seconds, peak >> 20, double(peak) / doc.size(), (peak - before) >> 20);
    if (!QVR_UNDER_SANITIZER) {
        EXPECT_LT(seconds, 3.0);
        if (canMeasure) {
            // Two copies of the text exist (the test's and the stored one), and
            // the records: the whole process stays far below 20 times the output.
            EXPECT_LT(peak, static_cast<long>(8 * doc.size()));
            EXPECT_LT(peak - before, static_cast<long>(4 * doc.size()));
        }
    }
}

TEST(LargeOutput, ManyModulesWithDuplicatesThroughTheManager) {
    QVRDataModel model;
    QVRArgumentList args;
    QVRDataModelManager* manager = QVRDataModelManager::GetInstance();
    ASSERT_NE(manager, nullptr);
    manager->Initialize(&model, &args);
    for (int m = 0; m < 10; ++m) {
        std::string id = "mod" + std::to_string(m);
        std::string text = CompactInventory(10000, 2000 + m * 100);
        ASSERT_TRUE(manager->WriteData(id, text));
    }
    ::testing::internal::CaptureStderr();
    ASSERT_TRUE(manager->Process());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(model.GetDeviceList().size(), 2900u);
    delete manager;
}

}  // namespace
