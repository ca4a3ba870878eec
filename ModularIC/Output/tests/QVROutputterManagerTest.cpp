#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRDataModel.h"
#include "QVRJSONFactory.h"
#include "QVROptionKeys.h"
#include "QVROutputClock.h"
#include "QVROutputterManager.h"
#include "QVRXMLFactory.h"

using namespace outtest;

namespace {

const std::string kEmptyXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"2016-03-01 10:22:05\" "
    "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"/>\n";

const std::string kEmptyJson =
    "{\n\t\"UpdatableComponentsInventory\":\t{\n\t\t\"OperatingSystem\":\t{\n\t\t},\n"
    "\t\t\"System\":\t{\n\t\t},\n\t\t\"UpdateableComponent\":\t[]\n\t}\n}\n";

std::string Progress(const std::string& encoding, int total, int completed) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding +
           "\"?>\n<SorVikProgress lang=\"en\" timestamp=\"2016-03-01 10:22:05\" totalInvComponents=\"" +
           std::to_string(total) + "\" completedInvComponents=\"" + std::to_string(completed) + "\"/>\n";
}

class Manager : public ::testing::Test {
protected:
    void TearDown() override {
        if (QVROutputterManager* manager = QVROutputterManager::GetInstance()) manager->Release();
    }

    QVROutputterManager* manager() { return QVROutputterManager::GetInstance(); }

    FixedClock clock;
    TempDir dir;
    QVRArgumentList args;
    QVRDataModel model;
};

}  // namespace

TEST_F(Manager, IsASingletonUntilReleased) {
    QVROutputterManager* first = QVROutputterManager::GetInstance();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(QVROutputterManager::GetInstance(), first);
    EXPECT_EQ(first->GetFactory(), nullptr);
    EXPECT_TRUE(first->InitFactory("xml", &model, &args));
    first->Release();
    QVROutputterManager* second = QVROutputterManager::GetInstance();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->GetFactory(), nullptr);
}

TEST_F(Manager, FormatNamesAreCaseInsensitive) {
    for (const char* name : {"xml", "XML", "Xml"}) {
        EXPECT_TRUE(manager()->InitFactory(name, &model, &args)) << name;
        EXPECT_NE(dynamic_cast<QVRXMLFactory*>(manager()->GetFactory()), nullptr) << name;
    }
    for (const char* name : {"json", "JSON", "Json"}) {
        EXPECT_TRUE(manager()->InitFactory(name, &model, &args)) << name;
        EXPECT_NE(dynamic_cast<QVRJSONFactory*>(manager()->GetFactory()), nullptr) << name;
    }
}

TEST_F(Manager, UnknownFormatWithoutFactoryIsFalse) {
    EXPECT_FALSE(manager()->InitFactory("yaml", &model, &args));
    EXPECT_FALSE(manager()->InitFactory("", &model, &args));
    EXPECT_EQ(manager()->GetFactory(), nullptr);
}

TEST_F(Manager, UnknownFormatReinitialisesHeldFactory) {
    ASSERT_TRUE(manager()->InitFactory("json", &model, &args));
    IQVRFactory* held = manager()->GetFactory();
    EXPECT_TRUE(manager()->InitFactory("csv", &model, &args));
    EXPECT_EQ(manager()->GetFactory(), held);
}

TEST_F(Manager, WriteRejectsNullArguments) {
    EXPECT_FALSE(manager()->Write(nullptr, &model));
    EXPECT_FALSE(manager()->Write(&args, nullptr));
    EXPECT_EQ(manager()->GetFactory(), nullptr);
}

TEST_F(Manager, WriteDefaultsToXml) {
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_ENCODE, "UTF-8");
    EXPECT_TRUE(manager()->Write(&args, &model));
    EXPECT_NE(dynamic_cast<QVRXMLFactory*>(manager()->GetFactory()), nullptr);
    EXPECT_EQ(ReadFile(dir.Path("o")), kEmptyXml);
}

TEST_F(Manager, WriteTakesOutputFormatOptionInAnyCase) {
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "JSON");
    EXPECT_TRUE(manager()->Write(&args, &model));
    EXPECT_EQ(ReadFile(dir.Path("o")), kEmptyJson);
}

TEST_F(Manager, WriteWithUnknownOutputFormatFails) {
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "html");
    EXPECT_FALSE(manager()->Write(&args, &model));
    EXPECT_FALSE(FileExists(dir.Path("o")));
}

TEST_F(Manager, ExplicitFactoryIsUsedByWrite) {
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "xml");
    ASSERT_TRUE(manager()->InitFactory("json", &model, &args));
    EXPECT_TRUE(manager()->Write(&args, &model));
    EXPECT_EQ(ReadFile(dir.Path("o")), kEmptyJson);
}

TEST_F(Manager, FactoryIsReusedAndEachWriteAppendsAgain) {
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "json");
    ASSERT_TRUE(manager()->Write(&args, &model));
    IQVRFactory* held = manager()->GetFactory();
    ASSERT_TRUE(manager()->Write(&args, &model));
    EXPECT_EQ(manager()->GetFactory(), held);
    // Documented behaviour: the second run adds a second inventory object.
    const std::string doc = ReadFile(dir.Path("o"));
    EXPECT_NE(doc.find("UpdatableComponentsInventory"), doc.rfind("UpdatableComponentsInventory"));
}

TEST_F(Manager, FactoryWithoutInitalizeDoesNotWrite) {
    QVRXMLFactory factory(&model, &args);
    EXPECT_FALSE(factory.Write());
    EXPECT_EQ(factory.InitButtomBanner(QVR_MARGIN_BOTTOM), nullptr);
}

TEST_F(Manager, ProgressToStandardOutputIsUtf8) {
    StdoutCapture capture;
    const bool written = manager()->WriteProgress(&args, 14, 9);
    const std::string out = capture.Finish();
    EXPECT_TRUE(written);
    EXPECT_EQ(out, Progress("UTF-8", 14, 9));
}

// The progress document takes -enc as given, also on standard
// output (unlike the inventory document, whose standard output is always UTF-8).
TEST_F(Manager, ProgressToStandardOutputTakesEncodingOption) {
    args.insertValue(QVR_OPT_ENCODE, "UTF-16");
    StdoutCapture capture;
    const bool written = manager()->WriteProgress(&args, 14, 9);
    const std::string out = capture.Finish();
    EXPECT_TRUE(written);
    EXPECT_EQ(out, Utf16LeWithBom(Progress("UTF-16", 14, 9)));
}

TEST_F(Manager, ProgressFileWithoutEncodingIsUtf16) {
    args.insertValue(QVR_OPT_OUT, dir.Path("p.xml"));
    EXPECT_TRUE(manager()->WriteProgress(&args, 0, 0));
    const std::string bytes = ReadFile(dir.Path("p.xml"));
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(bytes, Utf16LeWithBom(Progress("UTF-16", 0, 0)));
}

TEST_F(Manager, ProgressFileTakesEncodingAndIgnoresOutputFormat) {
    args.insertValue(QVR_OPT_OUT, dir.Path("p.xml"));
    args.insertValue(QVR_OPT_ENCODE, "UTF-8");
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "json");
    EXPECT_TRUE(manager()->WriteProgress(&args, 14, 14));
    EXPECT_EQ(ReadFile(dir.Path("p.xml")), Progress("UTF-8", 14, 14));
    EXPECT_EQ(manager()->GetFactory(), nullptr);
}

TEST_F(Manager, ProgressNegativeCountersInDecimal) {
    args.insertValue(QVR_OPT_OUT, dir.Path("p.xml"));
    args.insertValue(QVR_OPT_ENCODE, "UTF-8");
    EXPECT_TRUE(manager()->WriteProgress(&args, -1, 2147483647));
    EXPECT_EQ(ReadFile(dir.Path("p.xml")), Progress("UTF-8", -1, 2147483647));
}

TEST_F(Manager, ProgressRejectsNullArguments) { EXPECT_FALSE(manager()->WriteProgress(nullptr, 1, 1)); }

TEST(OutputClock, FormatsLocalTime) {
    FixedClock clock;
    EXPECT_EQ(QVROutputClock::Timestamp(), kFixedStamp);
    EXPECT_EQ(QVROutputClock::Format(0), "1970-01-01 00:00:00");
    EXPECT_EQ(QVROutputClock::Now(), kFixedTime);
}

TEST(OutputClock, SystemClockByDefault) {
    const std::time_t before = std::time(nullptr);
    const std::time_t now = QVROutputClock::Now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, before + 5);
    EXPECT_EQ(QVROutputClock::Timestamp().size(), 19u);
}
