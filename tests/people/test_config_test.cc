// Test configuration records against hand-built bytes, capacities and the name order.
#include <gtest/gtest.h>

#include "people/test_config.h"
#include "session/item_error.h"
#include "store/file_bytes.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

Bytes& Str(Bytes& b, const std::string& s) {
  return b.u8(static_cast<std::uint8_t>(s.size())).text(s);
}

std::uint32_t ErrorOf(const std::vector<std::uint8_t>& payload) {
  CTestConfig config;
  PayloadReader in(payload);
  try {
    config.ReadFrom(in);
  } catch (const ItemError& e) {
    return e.code();
  }
  return 0;
}

TEST(PeopleTestConfig, RecordFormsOfEachVersion) {
  CTestConfig config;
  config.name = "Lab PC";
  config.model = "Mo";
  config.brand = "Br";
  config.operatingSystem = "Windows NT";
  config.version = "4.0";
  config.cpuType = "Pentium";
  config.otherHardware = "Oh";
  config.videoController = "Vc";
  config.hardDiskType = "Hdt";
  config.hardDiskSize = "Hds";
  config.cpuSpeed = "133";
  config.ram = "32";
  config.rom = "Ro";
  config.hasCdRom = true;
  config.cdRom = "Cd";
  config.modem = "Md";
  config.hasPrinter = true;
  config.printer = "Pr";
  config.scanner = "Sc";
  config.multipleMonitors = true;

  Bytes expected;
  expected.u16(0x102).u8(0);
  for (const char* s : {"Lab PC", "Mo", "Br", "Windows NT", "4.0", "Pentium", "Oh", "Vc", "Hdt",
                        "Hds", "133", "32"}) {
    Str(expected, s);
  }
  Str(expected.u8(1), "Cd");
  Str(expected.u8(0), "Md");
  Str(expected.u8(1), "Pr");
  Str(expected.u8(0), "Sc");
  Str(expected, "Ro").u8(1);
  EXPECT_EQ(config.Pack(), expected.b);

  // 0x100: no deleted mark before the names, no multipleMonitors at the end.
  Bytes old;
  old.u16(0x100);
  for (const char* s : {"Old", "", "", "Windows 95", "4.0", "80486", "", "", "", "", "", "8"}) {
    Str(old, s);
  }
  Str(old.u8(0), "");
  Str(old.u8(1), "28.8");
  Str(old.u8(0), "");
  Str(old.u8(1), "Flatbed");
  Str(old, "BIOS");
  ScriptedUi ui;
  CTestConfigTable table(nullptr, ui);
  const auto item = table.ItemFromRecord(old.b);
  const auto& read = static_cast<const CTestConfig&>(*item);
  EXPECT_FALSE(read.deleted);
  EXPECT_EQ(read.GetName(), "Old");
  EXPECT_EQ(read.operatingSystem.str(), "Windows 95");
  EXPECT_EQ(read.cpuType.str(), "80486");
  EXPECT_EQ(read.ram.str(), "8");
  EXPECT_FALSE(read.hasCdRom);
  EXPECT_TRUE(read.hasModem);
  EXPECT_EQ(read.modem.str(), "28.8");
  EXPECT_TRUE(read.hasScanner);
  EXPECT_EQ(read.scanner.str(), "Flatbed");
  EXPECT_EQ(read.rom.str(), "BIOS");
  EXPECT_FALSE(read.multipleMonitors);

  // The written record reads back whole.
  CTestConfig again;
  const std::vector<std::uint8_t> packed = config.Pack();
  PayloadReader in(packed);
  again.ReadFrom(in);
  EXPECT_EQ(again.Pack(), packed);

  EXPECT_EQ(ErrorOf(Bytes().u16(0x103).u8(0).b), kItemFailed);
  EXPECT_EQ(ErrorOf(Bytes().u16(0x0FF).u8(0).b), kItemFailed);
  EXPECT_EQ(ErrorOf({}), kItemFailed);
}

TEST(PeopleTestConfig, CapacitiesAndOrderByName) {
  CTestConfig config;
  config.name = std::string(40, 'x');
  EXPECT_EQ(config.GetName(), std::string(32, 'x'));
  // A two-byte character across the capacity goes whole.
  config.name = std::string(31, 'a') + "\xC3\xA9";
  EXPECT_EQ(config.GetName(), std::string(31, 'a'));
  config.otherHardware = std::string(300, 'h');
  EXPECT_EQ(config.otherHardware.str().size(), 255u);

  CTestConfig alpha;
  alpha.name = "alpha";
  CTestConfig beta;
  beta.name = "Beta";
  CTestConfig upper;
  upper.name = "ALPHA";
  EXPECT_EQ(CTestConfig::Compare(&alpha, &beta), -1) << "case is ignored";
  EXPECT_EQ(CTestConfig::Compare(&beta, &alpha), 1);
  EXPECT_EQ(CTestConfig::Compare(&alpha, &upper), 0);
  EXPECT_EQ(CTestConfig::Compare(nullptr, &alpha), -1) << "a missing one sorts first";
  EXPECT_EQ(CTestConfig::Compare(&alpha, nullptr), 1);
}

}  // namespace
}  // namespace qm::test
