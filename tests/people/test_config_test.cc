// Test configuration records against hand-built bytes, capacities and the name order.
#include <gtest/gtest.h>

#include "people/test_config.h"
#include "session/item_error.h"
#include "store/file_bytes.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

using Strings = std::vector<std::string>;

// The text fields in the order of the record: twelve, the four devices, then rom.
const Strings kTexts = {"Lab PC", "Mo",  "Br", "Windows NT", "4.0", "Pentium", "Oh", "Vc", "Hdt",
                        "Hds",    "133", "32", "Cd",         "Md",  "Pr",      "Sc", "Ro"};

TEST(PeopleTestConfig, RecordFormsOfEachVersion) {
  ScriptedUi ui;
  CTestConfigTable table(nullptr, ui);
  EXPECT_THROW(table.ItemFromRecord(Bytes().u16(0x103).u8(0).b), ItemError);
  EXPECT_THROW(table.ItemFromRecord(Bytes().u16(0x0FF).u8(0).b), ItemError);

  // The deleted mark comes with 0x101, multipleMonitors with 0x102; a byte after the
  // record shows one read too many. The newest form is written back byte for byte.
  for (std::uint16_t v = 0x100; v <= 0x102; ++v) {
    SCOPED_TRACE(v);
    Bytes b;
    b.u16(v);
    if (v >= 0x101) b.u8(1);
    for (std::size_t i = 0; i < kTexts.size(); ++i) {
      if (i >= 12 && i < 16) b.u8(i % 2 == 0 ? 1 : 0);  // cd-rom and printer, no modem or scanner
      b.u8(static_cast<std::uint8_t>(kTexts[i].size())).text(kTexts[i]);
    }
    if (v >= 0x102) b.u8(1);
    const std::vector<std::uint8_t> record = b.b;
    const auto item = table.ItemFromRecord(b.u8(1).b);
    const auto& c = static_cast<const CTestConfig&>(*item);
    EXPECT_EQ(
        (Strings{c.name.str(), c.model.str(), c.brand.str(), c.operatingSystem.str(),
                 c.version.str(), c.cpuType.str(), c.otherHardware.str(), c.videoController.str(),
                 c.hardDiskType.str(), c.hardDiskSize.str(), c.cpuSpeed.str(), c.ram.str(),
                 c.cdRom.str(), c.modem.str(), c.printer.str(), c.scanner.str(), c.rom.str()}),
        kTexts);
    EXPECT_EQ((std::vector<bool>{c.deleted, c.hasCdRom, c.hasModem, c.hasPrinter, c.hasScanner,
                                 c.multipleMonitors}),
              (std::vector<bool>{v >= 0x101, true, false, true, false, v >= 0x102}));
    if (v == 0x102) {
      EXPECT_EQ(item->Pack(), record);
    }
  }
}

TEST(PeopleTestConfig, CapacitiesAndOrderByName) {
  CTestConfig config;
  config.name = std::string(31, 'a') + "\xC3\xA9";
  EXPECT_EQ(config.GetName(), std::string(31, 'a')) << "a character across the capacity goes";
  config.otherHardware = std::string(300, 'h');
  EXPECT_EQ(config.otherHardware.str().size(), 255u);

  CTestConfig alpha;
  alpha.name = "alpha";
  CTestConfig beta;
  beta.name = "Beta";
  CTestConfig upper;
  upper.name = "ALPHA";
  EXPECT_EQ(CTestConfig::Compare(&alpha, &beta), -1) << "case is ignored";
  EXPECT_EQ(CTestConfig::Compare(&alpha, &upper), 0);
  EXPECT_EQ(CTestConfig::Compare(nullptr, &alpha), -1) << "a missing one sorts first";
}

}  // namespace
}  // namespace qm::test
