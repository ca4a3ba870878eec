#include "QVRInventoryRawDataStore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "DatamodelTestSupport.h"
#include "FakeShmApi.h"
#include "QVRDataModelManager.h"
#include "QVROptionKeys.h"
#include "QVRSharedMemGlobals.h"

namespace {

typedef std::vector<std::string> Strings;

CDeviceInfo* Record(const std::string& id, const std::string& version, int status = 0,
                    const std::string& display = "d") {
    CDeviceInfo* r = new CDeviceInfo();
    r->setComponentID(id);
    r->setVersion(version);
    r->setStatus(status);
    r->setDisplay(display);
    r->setComponentType("FRMW");
    return r;
}

Strings Displays(const std::vector<CDeviceInfo*>& records) {
    Strings displays;
    for (const CDeviceInfo* r : records) displays.push_back(r->getDisplay());
    return displays;
}

// The fast removal must give exactly what the pairwise rule gives: the earlier
// of two successful duplicates survives, other records always stay.
TEST(RemoveDuplicates, AgreesWithThePairwiseRuleOnMixedRecordsAndScales) {
    Records list;
    for (unsigned int i = 0, state = 7; i < 4000; ++i) {
        const unsigned int v = (state = state * 1103515245u + 12345u) >> 8;
        CDeviceInfo* r = Record(std::to_string(v % 5), std::to_string((v >> 3) % 2),
                                (v >> 5) % 7 == 0   ? 1
                                : (v >> 5) % 7 == 1 ? -1
                                                    : 0,
                                std::to_string(i));
        r->setBDFInfo(static_cast<unsigned char>((v >> 7) % 2), 0, static_cast<unsigned char>((v >> 8) % 2));
        if ((v >> 9) % 3 == 0) r->setEnumId("e");
        if ((v >> 11) % 3 == 0) r->setFQDDInfo("f");
        if ((v >> 13) % 2 == 0) r->setComponentType("DRVR");
        if ((v >> 14) % 2 == 0)
            r->setPCIInfo(SPCIInfo{"", (v >> 15) % 2 ? "d" : "", "", "", "", std::to_string(v % 3)});
        list.items.push_back(r);
    }
    std::vector<CDeviceInfo*> kept;
    for (CDeviceInfo* r : list.items) {
        bool duplicate = false;
        for (const CDeviceInfo* k : kept)
            duplicate = duplicate || (r->getStatus() == 0 && k->getStatus() == 0 && r->checkForEquality(k));
        if (!duplicate) kept.push_back(r);
    }
    const Strings expected = Displays(kept);
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    EXPECT_EQ(Displays(list.items), expected);
    Records many;
    for (int i = 0; i < 100000; ++i) many.items.push_back(Record(std::to_string(i % 5000), "1"));
    const auto start = std::chrono::steady_clock::now();
    QVRInventoryRawDataStore::RemoveDuplicates(many.items);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 2.0);
    EXPECT_EQ(many.size(), 5000u);
}

class ManagerTest : public ::testing::Test {
protected:
    void TearDown() override { delete manager; }
    FakeShmApi shm;
    QVRDataModelManager* manager = QVRDataModelManager::GetInstance(shm);
    QVRDataModel model;
    QVRArgumentList args;
};

// A run ended by a signal takes its counters with it, and a module finishing
// after that does not bring them back.
TEST_F(ManagerTest, EndProgressRemovesTheSegmentAndNothingIsPublishedAfter) {
    ASSERT_TRUE(manager->Initialize(&model, &args));
    manager->SetTotalInvComponents(3);
    std::string a = "a", b = "b", out = Inventory(PciDevice("101", "1.0", "FRMW"));
    ASSERT_TRUE(manager->WriteData(a, out));
    FakeShmApi::Write counters{};
    ASSERT_TRUE(shm.Read(QVR_PROGRESS_SHM_KEY, &counters));
    EXPECT_EQ(counters.completed, 1);
    manager->EndProgress();
    EXPECT_FALSE(shm.Read(QVR_PROGRESS_SHM_KEY, &counters));
    EXPECT_TRUE(manager->WriteData(b, out));  // still stored and counted
    EXPECT_EQ(manager->GetCompletedInvComponents(), 2);
    EXPECT_FALSE(shm.Read(QVR_PROGRESS_SHM_KEY, &counters));
    manager->EndProgress();  // no segment: nothing to remove
    EXPECT_EQ(shm.removed.size(), 1u);
}

TEST_F(ManagerTest, FilesEveryKindOfRecordInArrivalOrderAndNeverCountsADroppedOutput) {
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW,BIOS");
    ASSERT_TRUE(manager->Initialize(&model, &args));
    std::string a = "nicinv", b = "biosinv", c = "dead", d = "noise", none, dOut = "plain text";
    std::string aOut = Inventory(PciDevice("101", "1.0", "FRMW", "first") + PciDevice("102", "1.0", "DRVR") +
                                 "<System systemID=\"0A1B\"/>" + OperatingSystem("Debian", "12") +
                                 OperatingSystem("Linux", "6"));
    std::string bOut = Inventory(
        PciDevice("101", "1.0", "FRMW", "second") + NonPciDevice("159", "2.1", "BIOS.1", "BIOS") +
        "<SPStatus result=\"false\"><Message>partial</Message></SPStatus>" + OperatingSystem("Other", "1"));
    ASSERT_TRUE(manager->WriteData(a, aOut) && manager->WriteData(b, bOut));
    shm.failGet = true;  // a failing progress write still stores and counts
    ASSERT_TRUE(manager->WriteData(c, none));
    shm.failGet = false;
    EXPECT_FALSE(manager->WriteData(d, dOut));
    EXPECT_EQ(manager->GetCompletedInvComponents(), 3);
    // A later Initialize replaces the filter; stored outputs stay valid.
    ASSERT_TRUE(manager->Initialize(&model, &args));
    EXPECT_TRUE(manager->Process());
    // Of two duplicates from different outputs the earlier stays.
    EXPECT_EQ(Displays(model.GetDeviceList()), (Strings{"first firmware", "Disk app"}));
    EXPECT_EQ(Displays(model.GetErrorList()), (Strings{"biosinv", "dead"}));
    EXPECT_EQ(model.GetErrorList()[0]->getErrorMsg(), "partial");
    EXPECT_EQ(model.GetSystemInfo()->getSystemID(), "0A1B");
    ASSERT_EQ(model.GetOperatingSystemList().size(), 2u);  // the first module's entries
    EXPECT_EQ(model.GetOperatingSystemList()[1].name, "Linux");
    manager->WriteData(a, aOut);  // never processed: released with the manager
}

TEST_F(ManagerTest, ConcurrentWritersAgreeWithCountsAndStoredOutputs) {
    manager->Initialize(&model, &args);
    const int kThreads = 8, kPerThread = 60, kAll = kThreads * kPerThread, kEmpty = kAll / 10;
    manager->SetTotalInvComponents(kAll);
    std::atomic<int> dropped{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                std::string id = "t" + std::to_string(t) + "m" + std::to_string(i), output;
                if (i % 10 == 9)
                    output = "not xml";  // neither stored nor counted
                else if (i % 10 != 0)
                    output =
                        Inventory(PciDevice(std::to_string(t * 1000 + i), "1") + PciDevice("shared", "1"));
                if (!manager->WriteData(id, output)) ++dropped;
            }
        });
    for (std::thread& thread : threads) thread.join();
    const int stored = kAll - kAll / 10;
    EXPECT_EQ(dropped.load(), kAll / 10);
    EXPECT_EQ(manager->GetCompletedInvComponents(), stored);
    FakeShmApi::Write last;
    ASSERT_TRUE(shm.Read(QVR_PROGRESS_SHM_KEY, &last));
    EXPECT_EQ(std::make_pair(last.total, last.completed), std::make_pair(kAll, stored));
    EXPECT_EQ(shm.attachCalls, stored);
    ASSERT_TRUE(manager->Process());
    // One failure per empty output, one device per other output, the shared device once.
    EXPECT_EQ(static_cast<int>(model.GetErrorList().size()), kEmpty);
    EXPECT_EQ(static_cast<int>(model.GetDeviceList().size()), stored - kEmpty + 1);
}

}  // namespace
