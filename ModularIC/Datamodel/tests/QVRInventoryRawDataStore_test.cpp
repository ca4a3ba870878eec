#include "QVRInventoryRawDataStore.h"

#include <gtest/gtest.h>

#include <chrono>

#include "DatamodelTestSupport.h"
#include "QVRInventoryDataFactory.h"

namespace {

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

// ---- Duplicate removal -----------------------------------------------------

TEST(RemoveDuplicates, EarlierOfTwoEqualRecordsSurvives) {
    Records list;
    list.items = {Record("1", "a", 0, "first"), Record("2", "a"), Record("1", "a", 0, "second")};
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].getDisplay(), "first");
    EXPECT_EQ(list[1].getComponentID(), "2");
}

TEST(RemoveDuplicates, EqualByEverythingButDisplayIsADuplicate) {
    Records list;
    list.items = {Record("1", "a", 0, "x"), Record("1", "a", 0, "y")};
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].getDisplay(), "x");
}

TEST(RemoveDuplicates, DifferentVersionsAreBothKept) {
    Records list;
    list.items = {Record("1", "a"), Record("1", "b")};
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    EXPECT_EQ(list.size(), 2u);
}

TEST(RemoveDuplicates, FailureRecordsAreAlwaysKept) {
    Records list;
    list.items = {Record("", "", 1, "mod"), Record("", "", 1, "mod"), Record("1", "a", -1),
                  Record("1", "a", -1),     Record("1", "a", 0),      Record("1", "a", 1)};
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    ASSERT_EQ(list.size(), 6u);
}

TEST(RemoveDuplicates, SuccessfulRecordIsNotDroppedForEqualingAFailureRecord) {
    Records list;
    list.items = {Record("1", "a", 1), Record("1", "a", 0), Record("1", "a", 0)};
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].getStatus(), 1);
    EXPECT_EQ(list[1].getStatus(), 0);
}

TEST(RemoveDuplicates, EachComparedFieldSeparatesRecords) {
    Records list;
    for (int field = 0; field <= 12; ++field) {
        CDeviceInfo* r = Record("1", "a");
        SPCIInfo pci;
        switch (field) {
            case 1:
                r->setComponentType("DRVR");
                break;
            case 2:
                r->setComponentID("2");
                break;
            case 3:
                r->setVersion("b");
                break;
            case 4:
                r->setEnumId("e");
                break;
            case 5:
                r->setFQDDInfo("f");
                break;
            case 6:
                pci.componentID = "c";
                break;
            case 7:
                pci.deviceID = "d";
                break;
            case 8:
                pci.subDeviceID = "s";
                break;
            case 9:
                pci.vendorID = "v";
                break;
            case 10:
                pci.subVendorID = "sv";
                break;
            case 11:
                r->setBDFInfo(1, 0, 0);
                break;
            case 12:
                r->setBDFInfo(0, 0, 1);
                break;
            default:
                break;
        }
        if (field >= 6 && field <= 10) r->setPCIInfo(pci);
        list.items.push_back(r);
    }
    // And records equal to some of those, which must go.
    list.items.push_back(Record("1", "a", 0, "other display"));
    CDeviceInfo* pciDisplayOnly = Record("1", "a");
    SPCIInfo pci;
    pci.display = "only the PCI display differs";
    pciDisplayOnly->setPCIInfo(pci);
    list.items.push_back(pciDisplayOnly);
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    EXPECT_EQ(list.size(), 13u);
}

TEST(RemoveDuplicates, AgreesWithThePairwiseRuleOnAMixedList) {
    // The pairwise rule, written out, as the reference.
    auto reference = [](const std::vector<CDeviceInfo*>& in) {
        std::vector<const CDeviceInfo*> kept;
        for (const CDeviceInfo* r : in) {
            bool dup = false;
            if (r->getStatus() == 0)
                for (const CDeviceInfo* k : kept)
                    if (k->getStatus() == 0 && r->checkForEquality(k)) dup = true;
            if (!dup) kept.push_back(r);
        }
        return kept;
    };
    Records list;
    unsigned int state = 7;
    for (int i = 0; i < 3000; ++i) {
        state = state * 1103515245u + 12345u;
        const unsigned int v = state >> 16;
        CDeviceInfo* r = Record(std::to_string(v % 13), std::to_string((v >> 4) % 3),
                                (v >> 8) % 7 == 0 ? 1 : 0, std::to_string(i));
        r->setBDFInfo(static_cast<unsigned char>((v >> 10) % 2), 0, 0);
        list.items.push_back(r);
    }
    const std::vector<const CDeviceInfo*> expected = reference(list.items);
    std::vector<std::string> expectedDisplays;
    for (const CDeviceInfo* r : expected) expectedDisplays.push_back(r->getDisplay());
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    std::vector<std::string> displays;
    for (const CDeviceInfo* r : list.items) displays.push_back(r->getDisplay());
    EXPECT_EQ(displays, expectedDisplays);
}

TEST(RemoveDuplicates, HundredThousandRecordsIsFast) {
    Records list;
    for (int i = 0; i < 100000; ++i) list.items.push_back(Record(std::to_string(i % 5000), "1"));
    const auto start = std::chrono::steady_clock::now();
    QVRInventoryRawDataStore::RemoveDuplicates(list.items);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(list.size(), 5000u);
    EXPECT_LT(seconds, 2.0);
}

// ---- The store -------------------------------------------------------------

IQVRInventoryRawData* Raw(const std::string& identity, const std::string& output) {
    std::string id = identity;
    std::string text = output;
    return QVRInventoryDataFactory()(id, text, nullptr);
}

TEST(QVRInventoryRawDataStore, WriteDataCountsAndPublishesProgress) {
    QVRInventoryRawDataStore store;
    store.SetTotalInvComponents(14);
    EXPECT_EQ(store.GetTotalInvComponents(), 14);
    EXPECT_EQ(store.GetCompletedInvComponents(), 0);
    ASSERT_TRUE(store.WriteData(Raw("a", "")));
    ASSERT_TRUE(store.WriteData(Raw("b", "")));
    EXPECT_EQ(store.GetCompletedInvComponents(), 2);
    FakeShmApi::Write stored;
    ASSERT_TRUE(TestShm().Read(QVR_PROGRESS_SHM_KEY, &stored));
    EXPECT_EQ(stored.total, 14);
    EXPECT_EQ(stored.completed, 2);
    EXPECT_FALSE(store.WriteData(nullptr));
    EXPECT_EQ(store.GetCompletedInvComponents(), 2);
}

TEST(QVRInventoryRawDataStore, ProcessParsesInArrivalOrderAndRemovesDuplicatesAcrossModules) {
    QVRInventoryRawDataStore store;
    store.WriteData(Raw("first", Inventory(PciDevice("1", "1.0", "FRMW", "3b", "from first"))));
    store.WriteData(Raw("broken", ""));
    store.WriteData(Raw("second", Inventory(PciDevice("1", "1.0", "FRMW", "3b", "from second") +
                                            PciDevice("1", "2.0", "FRMW", "3b", "newer"))));
    store.WriteData(Raw("broken", ""));
    Records out;
    EXPECT_TRUE(store.Process(out.items));
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0].getDisplay(), "from first firmware");
    EXPECT_EQ(out[1].getErrorMsg(), "Configured program execution failure");
    EXPECT_EQ(out[2].getDisplay(), "newer firmware");
    EXPECT_EQ(out[3].getDisplay(), "broken");
    // Everything stored was consumed.
    Records again;
    store.Process(again.items);
    EXPECT_EQ(again.size(), 0u);
}

TEST(QVRInventoryRawDataStore, ReadyMadeRecordsAreStoredWithoutCounting) {
    QVRInventoryRawDataStore store;
    std::vector<CDeviceInfo*> mine = {Record("7", "1"), Record("7", "1")};
    std::string identity = "collector";
    EXPECT_TRUE(store.WriteData(identity, mine));
    EXPECT_TRUE(mine.empty());
    EXPECT_EQ(store.GetCompletedInvComponents(), 0);
    Records out;
    store.Process(out.items);
    EXPECT_EQ(out.size(), 1u);
}

TEST(QVRInventoryRawDataStore, UnprocessedDataIsReleasedWithTheStore) {
    QVRInventoryRawDataStore store;
    store.WriteData(Raw("a", Inventory(PciDevice("1", "1"))));
    std::vector<CDeviceInfo*> mine = {Record("7", "1")};
    std::string identity = "c";
    store.WriteData(identity, mine);
    // Nothing to check but the absence of leaks (sanitizer build).
    EXPECT_EQ(store.GetCompletedInvComponents(), 1);
}

TEST(QVRInventoryRawDataStore, FailingProgressWriteStillStoresAndCounts) {
    TestShm().failGet = true;
    QVRInventoryRawDataStore store;
    EXPECT_TRUE(store.WriteData(Raw("a", "")));
    TestShm().failGet = false;
    EXPECT_EQ(store.GetCompletedInvComponents(), 1);
    Records out;
    store.Process(out.items);
    EXPECT_EQ(out.size(), 1u);
}

}  // namespace
