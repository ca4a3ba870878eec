#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRArgumentList.h"
#include "QVRDataModel.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"

using namespace outtest;

namespace {

// The document's bytes; in UTF-16 little-endian with a byte-order mark, as libxml2 writes it.
std::string Progress(const std::string& encoding, const std::string& total, const std::string& completed) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"" + encoding +
        "\"?>\n<SorVikProgress lang=\"en\" timestamp=\"2016-03-01 10:22:05\" totalInvComponents=\"" + total +
        "\" completedInvComponents=\"" + completed + "\"/>\n";
    if (encoding != "UTF-16") return text;
    std::string bytes("\xFF\xFE", 2);
    for (char c : text) bytes += std::string{c, '\0'};
    return bytes;
}

class Manager : public ::testing::Test {
protected:
    void TearDown() override { manager->Release(); }
    FixedClock clock;
    TempDir dir;
    QVRArgumentList args;
    QVRDataModel model;
    QVROutputterManager* manager = QVROutputterManager::GetInstance();
};

// The known names in either case are the golden table's.
TEST_F(Manager, AnUnknownFormatIsRefusedBeforeAnythingIsWritten) {
    EXPECT_FALSE(manager->InitFactory("yaml", &model, &args));
    args.insertValue(QVR_OPT_OUT, dir.Path("o"));
    args.insertValue(QVR_OPT_OUTPUTFORMAT, "html");
    EXPECT_FALSE(manager->Write(&args, &model));
    EXPECT_FALSE(FileExists(dir.Path("o")));
}

TEST_F(Manager, ProgressDocumentTakesTheEncodingOptionAlsoOnStandardOutput) {
    struct Row {
        const char* out;
        const char* encoding;
        int total, completed;
        std::string expected;
    };
    const Row rows[] = {
        {"", nullptr, 14, 9, Progress("UTF-8", "14", "9")},
        {"", "UTF-16", 14, 9, Progress("UTF-16", "14", "9")},
        {"p.xml", nullptr, 0, 0, Progress("UTF-16", "0", "0")},
        {"p.xml", "UTF-8", -1, 2147483647, Progress("UTF-8", "-1", "2147483647")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.expected);
        QVRArgumentList rowArgs;
        if (*row.out) rowArgs.insertValue(QVR_OPT_OUT, dir.Path(row.out));
        if (row.encoding) rowArgs.insertValue(QVR_OPT_ENCODE, row.encoding);
        rowArgs.insertValue(QVR_OPT_OUTPUTFORMAT, "json");  // ignored
        const std::string out =
            CaptureStdout([&] { EXPECT_TRUE(manager->WriteProgress(&rowArgs, row.total, row.completed)); });
        EXPECT_EQ(row.expected, *row.out ? ReadFile(dir.Path(row.out)) : out);
    }
    EXPECT_FALSE(manager->WriteProgress(nullptr, 1, 1));
}

}  // namespace
