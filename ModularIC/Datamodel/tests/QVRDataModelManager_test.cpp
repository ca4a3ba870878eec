#include "QVRDataModelManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "DatamodelTestSupport.h"
#include "QVROptionKeys.h"

namespace {

// Every test leaves no singleton behind.
class ManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = QVRDataModelManager::GetInstance();
        ASSERT_NE(manager, nullptr);
    }
    void TearDown() override { delete QVRDataModelManager::GetInstance(); }
    QVRDataModelManager* manager = nullptr;
    QVRDataModel model;
    QVRArgumentList args;
};

TEST_F(ManagerTest, GetInstanceReturnsTheSameObjectUntilDeleted) {
    EXPECT_EQ(QVRDataModelManager::GetInstance(), manager);
    delete manager;
    QVRDataModelManager* fresh = QVRDataModelManager::GetInstance();
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(QVRDataModelManager::GetInstance(), fresh);
    manager = fresh;
}

TEST_F(ManagerTest, OutputWithoutTheRootTagIsNeitherStoredNorCounted) {
    ASSERT_TRUE(manager->Initialize(&model, &args));
    manager->SetTotalInvComponents(3);
    std::string id = "mod";
    std::string text = "plain text";
    EXPECT_FALSE(manager->WriteData(id, text));
    EXPECT_EQ(manager->GetCompletedInvComponents(), 0);
    std::string empty;
    EXPECT_TRUE(manager->WriteData(id, empty));
    EXPECT_EQ(manager->GetCompletedInvComponents(), 1);
    EXPECT_EQ(text, "plain text");
}

TEST_F(ManagerTest, ProcessFilesEveryKindOfRecordIntoTheModel) {
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW,BIOS");
    ASSERT_TRUE(manager->Initialize(&model, &args));
    std::string a = "nicinv";
    std::string aOut =
        Inventory(PciDevice("101", "1.0") + PciDevice("102", "1.0", "DRVR") + "<System systemID=\"0A1B\"/>" +
                  OperatingSystem("Debian", "12") + OperatingSystem("Linux", "6"));
    std::string b = "biosinv";
    std::string bOut = Inventory(PciDevice("101", "1.0") + NonPciDevice("159", "2.1", "BIOS.1", "BIOS") +
                                 "<SPStatus result=\"false\"><Message>partial</Message></SPStatus>" +
                                 OperatingSystem("Other", "1"));
    std::string c = "dead";
    std::string cOut;
    ASSERT_TRUE(manager->WriteData(a, aOut));
    ASSERT_TRUE(manager->WriteData(b, bOut));
    ASSERT_TRUE(manager->WriteData(c, cOut));
    EXPECT_TRUE(manager->Process());

    ASSERT_EQ(model.GetDeviceList().size(), 2u);
    EXPECT_EQ(model.GetDeviceList()[0]->getComponentID(), "101");
    EXPECT_EQ(model.GetDeviceList()[1]->getComponentID(), "159");
    ASSERT_EQ(model.GetErrorList().size(), 2u);
    EXPECT_EQ(model.GetErrorList()[0]->getDisplay(), "biosinv");
    EXPECT_EQ(model.GetErrorList()[0]->getErrorMsg(), "partial");
    EXPECT_EQ(model.GetErrorList()[1]->getDisplay(), "dead");
    EXPECT_EQ(model.GetErrorList()[1]->getErrorMsg(), "Configured program execution failure");
    ASSERT_NE(model.GetSystemInfo(), nullptr);
    EXPECT_EQ(model.GetSystemInfo()->getSystemID(), "0A1B");
    // The first module's operating-system entries, both of them.
    ASSERT_EQ(model.GetOperatingSystemList().size(), 2u);
    EXPECT_EQ(model.GetOperatingSystemList()[0].name, "Debian");
    EXPECT_EQ(model.GetOperatingSystemList()[1].name, "Linux");
}

TEST_F(ManagerTest, ProcessWithoutAModelReleasesEverything) {
    std::string id = "m";
    std::string out = Inventory(PciDevice("1", "1") + "<System systemID=\"1\"/>" + OperatingSystem("a", "1"));
    ASSERT_TRUE(manager->WriteData(id, out));
    EXPECT_TRUE(manager->Process());
}

TEST_F(ManagerTest, SecondInitializeKeepsStoredOutputsValid) {
    ASSERT_TRUE(manager->Initialize(&model, &args));
    std::string id = "m";
    std::string out = Inventory(PciDevice("1", "1", "DRVR"));
    ASSERT_TRUE(manager->WriteData(id, out));
    QVRArgumentList other;
    other.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    ASSERT_TRUE(manager->Initialize(&model, &other));
    manager->Process();
    EXPECT_EQ(model.GetDeviceList().size(), 0u);
}

// Records the writes the subclass sees; the invoker's tests fake the manager so.
class RecordingManager : public QVRDataModelManager {
public:
    bool WriteData(std::string& identity, std::string& output) override {
        seen.push_back(identity + ":" + output);
        return true;
    }
    std::vector<std::string> seen;
};

TEST(ManagerSubclass, WriteDataCanBeOverriddenAndTheSingletonIsUntouched) {
    RecordingManager fake;
    QVRDataModelManager* base = &fake;
    std::string id = "m";
    std::string out = "x";
    EXPECT_TRUE(base->WriteData(id, out));
    EXPECT_EQ(fake.seen, std::vector<std::string>{"m:x"});
    QVRDataModelManager* real = QVRDataModelManager::GetInstance();
    EXPECT_NE(real, &fake);
    delete real;
}

TEST(ManagerConcurrency, ConcurrentWritersAgreeWithCountsAndStoredOutputs) {
    FakeShmApi shm;
    ScopedShmApi scope(&shm);
    QVRDataModel model;
    QVRArgumentList args;
    QVRDataModelManager* manager = QVRDataModelManager::GetInstance();
    ASSERT_NE(manager, nullptr);
    manager->Initialize(&model, &args);
    const int kThreads = 8;
    const int kPerThread = 60;
    manager->SetTotalInvComponents(kThreads * kPerThread);
    std::atomic<int> dropped{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                std::string id = "t" + std::to_string(t) + "m" + std::to_string(i);
                std::string output;
                if (i % 10 == 9) {
                    output = "not xml";  // dropped: neither stored nor counted
                } else if (i % 10 != 0) {
                    output =
                        Inventory(PciDevice(std::to_string(t * 1000 + i), "1") + PciDevice("shared", "1"));
                }
                if (!manager->WriteData(id, output)) ++dropped;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();

    const int stored = kThreads * kPerThread - dropped.load();
    EXPECT_EQ(dropped.load(), kThreads * kPerThread / 10);
    EXPECT_EQ(manager->GetCompletedInvComponents(), stored);
    // Every publication carried the total and a count no larger than what was stored.
    FakeShmApi::Write last;
    ASSERT_TRUE(shm.Read(QVR_PROGRESS_SHM_KEY, &last));
    EXPECT_EQ(last.total, kThreads * kPerThread);
    EXPECT_EQ(last.completed, stored);
    EXPECT_EQ(shm.attachCalls, stored);

    ASSERT_TRUE(manager->Process());
    // One failure per empty output, one device per other output, and the
    // shared device once.
    const int empties = kThreads * (kPerThread / 10);
    EXPECT_EQ(static_cast<int>(model.GetErrorList().size()), empties);
    EXPECT_EQ(static_cast<int>(model.GetDeviceList().size()), stored - empties + 1);
    std::set<std::string> ids;
    for (const CDeviceInfo* r : model.GetDeviceList()) ids.insert(r->getComponentID());
    EXPECT_EQ(ids.size(), model.GetDeviceList().size());
    delete manager;
}

}  // namespace
