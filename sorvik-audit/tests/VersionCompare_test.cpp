#include "audit/VersionCompare.h"

#include <gtest/gtest.h>

namespace audit {
namespace {

const char* OrderName(Order order) {
    switch (order) {
        case Order::Less:
            return "<";
        case Order::Equal:
            return "=";
        case Order::Greater:
            return ">";
        case Order::Incomparable:
            return "?";
    }
    return "";
}

struct Row {
    const char* what;
    const char* a;
    const char* b;
    Scheme scheme;
    Order order;
};

// Versions as vendors publish them; every ordered row is checked both ways.
const Row kRows[] = {
    // BIOS
    {"BIOS dotted, not as text", "2.17.1", "2.9.0", Scheme::Auto, Order::Greater},
    {"BIOS same", "2.17.1", "2.17.1", Scheme::Auto, Order::Equal},
    {"BIOS missing patch is zero", "2.17", "2.17.0", Scheme::Auto, Order::Equal},
    {"BIOS one more level", "2.17", "2.17.1", Scheme::Auto, Order::Less},
    {"BIOS letter revision", "A12", "A09", Scheme::Auto, Order::Greater},
    {"BIOS family and date comment", "U30 v2.80 (01/13/2023)", "U30 v2.72 (09/25/2022)", Scheme::Auto,
     Order::Greater},
    {"BIOS dates ignored when equal", "U30 v2.80 (01/13/2023)", "U30 v2.80 (12/01/2022)", Scheme::Auto,
     Order::Equal},
    {"BIOS other family", "U30 v2.80", "P89 v2.80", Scheme::Auto, Order::Incomparable},
    {"BIOS letter suffix", "1.0b", "1.0a", Scheme::Auto, Order::Greater},
    {"BIOS suffix on one side only", "3.4a", "3.4", Scheme::Auto, Order::Incomparable},
    {"BIOS vendor string", "1.4.9", "1.12.2", Scheme::Auto, Order::Less},
    // BMC
    {"BMC four levels", "7.00.00.171", "6.10.80.00", Scheme::Auto, Order::Greater},
    {"BMC with build date words", "2.78 Jan 10 2023", "2.72 Sep 04 2022", Scheme::Auto, Order::Greater},
    {"BMC numeric scheme", "5.10.50.00", "5.10.10.00", Scheme::Numeric, Order::Greater},
    {"BMC IPMI revision", "1.06", "1.6", Scheme::Auto, Order::Equal},
    // NIC
    {"NIC three numbers", "16.35.2000", "16.35.1012", Scheme::Auto, Order::Greater},
    {"NIC firmware, NVM id and boot", "4.10 0x8000d95e 1.2829.0", "4.20 0x80011abc 1.3256.0", Scheme::Auto,
     Order::Less},
    {"NIC NVM id decides", "4.20 0x8000d95e 1.3256.0", "4.20 0x80011abc 1.3256.0", Scheme::Auto, Order::Less},
    {"NIC driver", "2.22.18", "2.9.8", Scheme::Auto, Order::Greater},
    {"NIC big numbers", "222.1.68.0", "222.0.144.0", Scheme::Auto, Order::Greater},
    // NVMe
    {"NVMe letters around a number", "GDC5602Q", "GDC5302Q", Scheme::Auto, Order::Greater},
    {"NVMe vendor prefix", "VDV10184", "VDV10131", Scheme::Auto, Order::Greater},
    {"NVMe letter suffix after number", "2B2QEXM7", "3B2QEXM7", Scheme::Auto, Order::Less},
    {"NVMe other product line", "GDC5602Q", "EDA7602Q", Scheme::Auto, Order::Incomparable},
    {"NVMe text scheme equal", "GDC5602Q", "GDC5602Q", Scheme::Text, Order::Equal},
    {"NVMe text scheme has no order", "GDC5602Q", "GDC5302Q", Scheme::Text, Order::Incomparable},
    // RAID
    {"RAID dashed build", "51.16.0-4076", "52.26.0-5179", Scheme::Auto, Order::Less},
    {"RAID bracketed build", "7.18-0[32114]", "7.18-0[32010]", Scheme::Auto, Order::Greater},
    {"RAID bracketed build numeric", "7.18-0[32114]", "7.18-0[32010]", Scheme::Numeric, Order::Greater},
    {"RAID leading zeros", "25.5.9.0001", "25.5.9.1", Scheme::Auto, Order::Equal},
    {"RAID package", "4.680.00-8519", "4.740.00-8433", Scheme::Auto, Order::Less},
    // TPM
    {"TPM four numbers", "7.85.4555.0", "7.2.2.0", Scheme::Auto, Order::Greater},
    {"TPM hex firmware", "0x00070055", "0x0007003f", Scheme::Auto, Order::Greater},
    // Microcode
    {"microcode hex, not decimal", "0xd000389", "0x1000065", Scheme::Auto, Order::Greater},
    {"microcode hex same value", "0x0a0011d1", "0xA0011D1", Scheme::Auto, Order::Equal},
    {"microcode hex against decimal", "0x1000065", "1000065", Scheme::Auto, Order::Incomparable},
    {"microcode hex scheme without 0x", "2b000571", "0x2b000461", Scheme::Hex, Order::Greater},
    {"microcode hex scheme rejects words", "0x2b000571", "v2", Scheme::Hex, Order::Incomparable},
    // Shapes that do not compare
    {"no number", "N/A", "1.0", Scheme::Auto, Order::Incomparable},
    {"empty", "", "1.0", Scheme::Auto, Order::Incomparable},
    {"other separators", "1.2.3", "1-2-4", Scheme::Auto, Order::Incomparable},
    {"numeric scheme ignores separators", "1.2.3", "1-2-4", Scheme::Numeric, Order::Less},
    {"numeric scheme rejects letters", "1.0b", "1.0a", Scheme::Numeric, Order::Incomparable},
    {"numeric scheme leading v", "v2.10", "2.9", Scheme::Numeric, Order::Greater},
    {"numbers longer than 64 bits", "1.99999999999999999999999", "1.100000000000000000000000", Scheme::Auto,
     Order::Less},
};

Order Reversed(Order order) {
    return order == Order::Less ? Order::Greater : order == Order::Greater ? Order::Less : order;
}

TEST(VersionCompareTest, VendorVersionsCompareByTheirParts) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.what);
        const Comparison forward = CompareVersions(row.a, row.b, row.scheme);
        EXPECT_STREQ(OrderName(row.order), OrderName(forward.order)) << row.a << " vs " << row.b;
        EXPECT_EQ(row.order == Order::Incomparable, !forward.reason.empty()) << forward.reason;
        const Comparison backward = CompareVersions(row.b, row.a, row.scheme);
        EXPECT_STREQ(OrderName(Reversed(row.order)), OrderName(backward.order)) << row.b << " vs " << row.a;
    }
}

TEST(VersionCompareTest, SchemesByName) {
    const struct {
        const char* text;
        bool known;
        Scheme scheme;
    } rows[] = {{"auto", true, Scheme::Auto}, {"numeric", true, Scheme::Numeric},
                {"hex", true, Scheme::Hex},   {"text", true, Scheme::Text},
                {"Hex", false, Scheme::Auto}, {"semver", false, Scheme::Auto},
                {"", false, Scheme::Auto}};
    for (const auto& row : rows) {
        Scheme scheme = Scheme::Auto;
        EXPECT_EQ(row.known, ParseScheme(row.text, scheme)) << row.text;
        if (row.known) {
            EXPECT_EQ(row.scheme, scheme);
            EXPECT_STREQ(row.text, SchemeName(scheme));
        }
    }
}

}  // namespace
}  // namespace audit
