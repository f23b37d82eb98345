// Capture from this computer over hand-made system trees: every field starts as "old" with
// every flag set, and each case names the fields it changes; all others must stay.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>

#include "people/machine_capture.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

using Fields = std::map<std::string, std::string>;

Fields FieldsOf(const CTestConfig& c) {
  return {{"model", c.model.str()},
          {"brand", c.brand.str()},
          {"rom", c.rom.str()},
          {"os", c.operatingSystem.str()},
          {"version", c.version.str()},
          {"cpu", c.cpuType.str()},
          {"mhz", c.cpuSpeed.str()},
          {"ram", c.ram.str()},
          {"type", c.hardDiskType.str()},
          {"size", c.hardDiskSize.str()},
          {"other", c.otherHardware.str()},
          {"cd", c.cdRom.str()},
          {"hasCd", c.hasCdRom ? "1" : "0"},
          {"printer", c.printer.str()},
          {"hasPrinter", c.hasPrinter ? "1" : "0"}};
}

struct Case {
  const char* what;
  Fields files;  // path below the root, contents
  std::optional<std::string> printer;
  Fields changed;
};

const std::string kE300 = [] {
  std::string s;
  for (int i = 0; i < 150; ++i) s += "\xC3\xA9";  // é
  return s;
}();

const Case kCases[] = {
    {"a full machine",
     {{"sys/class/dmi/id/product_name", "OptiPlex 7020\n"},
      {"sys/class/dmi/id/sys_vendor", "Dell Inc.\n"},
      {"sys/class/dmi/id/bios_vendor", "Dell Inc.\n"},
      {"sys/class/dmi/id/bios_version", "A18\n"},
      {"etc/os-release", "NAME=\"Debian\"\nPRETTY_NAME=\"Debian \\\"12\\\"\"\n"},
      {"proc/sys/kernel/osrelease", "6.1.0-18-amd64\n"},
      {"proc/cpuinfo",
       "processor\t: 0\nmodel name\t: Intel(R) Core(TM)  i5-4590\ncpu MHz\t\t: 800.004\n\n"
       "processor\t: 1\nmodel name\t: Second\n"},
      {"sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "3700000\n"},
      {"proc/meminfo", "MemFree: 5 kB\nMemTotal:       16314264 kB\n"},
      {"sys/block/sda/size", "3907029168\n"},
      {"sys/block/sda/queue/rotational", "1\n"},
      {"sys/block/nvme0n1/size", "1000215216\n"},
      {"sys/block/sdb/size", "15000000\n"},
      {"sys/block/sdb/queue/rotational", "0\n"},
      {"sys/block/sr0/device/vendor", "HL-DT-ST\n"},
      {"sys/block/sr0/device/model", "DVD+-RW GHB0N    \n"}},
     "Office_Laser",
     {{"model", "OptiPlex 7020"},
      {"brand", "Dell Inc."},
      {"rom", "Dell Inc. A18"},
      {"os", "Debian \"12\""},
      {"version", "6.1.0-18-amd64"},
      {"cpu", "Intel(R) Core(TM) i5-4590"},
      {"mhz", "3700"},
      {"ram", "15932"},
      {"type", "NVMe SSD"},
      {"size", "512 GB"},
      {"other", "Other disks: 2000 GB HDD, 7.7 GB SSD"},
      {"cd", "HL-DT-ST DVD+-RW GHB0N"},
      {"printer", "Office_Laser"}}},
    {"an empty tree and no printer", {}, std::nullopt, {{"hasPrinter", "0"}}},
    {"placeholders, NAME alone, memory rounded up, the speed from cpuinfo",
     {{"sys/class/dmi/id/product_name", "to be filled by o.e.m."},
      {"sys/class/dmi/id/sys_vendor", "System manufacturer"},
      {"sys/class/dmi/id/bios_version", "Default string"},
      {"usr/lib/os-release", "# no pretty name\nNAME='Arch Linux'"},
      {"proc/cpuinfo", "cpu MHz : 2899.5"},
      {"sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "0"},
      {"proc/meminfo", "MemTotal: 1048577 kB"}},
     "",
     {{"os", "Arch Linux"}, {"mhz", "2900"}, {"ram", "1025"}, {"hasPrinter", "0"}}},
    {"odd contents read as nothing; virtual, removable and empty disks skipped",
     {{"sys/class/dmi/id/product_name", ""},
      {"etc/os-release", "PRETTY_NAME=\nNAME"},
      {"proc/sys/kernel/osrelease", "\n"},
      {"proc/cpuinfo", "model name:\ncpu MHz: 1e400\n:"},
      {"proc/meminfo", "MemTotal: 99999999999999999999999 kB"},
      {"sys/block/loop0/size", "100"},
      {"sys/block/ram0/size", "100"},
      {"sys/block/zram0/size", "100"},
      {"sys/block/dm-0/size", "100"},
      {"sys/block/sdc/size", "100"},
      {"sys/block/sdc/removable", "1"},
      {"sys/block/vda/size", "0"},
      {"sys/block/vdb/size", "18446744073709551616"},
      {"sys/block/vdc/size", "20971520"},
      {"sys/block/vdc/queue/rotational", "x"}},
     "Q",
     {{"size", "11 GB"}, {"hasCd", "0"}, {"printer", "Q"}}},
    {"overlong texts cut between characters",
     {{"sys/class/dmi/id/product_name", kE300}, {"proc/cpuinfo", "model name: x" + kE300}},
     "Q",
     {{"model", kE300.substr(0, 254)}, {"cpu", "x" + kE300.substr(0, 30)}, {"printer", "Q"}}},
};

TEST(PeopleMachineCapture, FieldsFromSystemTrees) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    TempDir dir;
    for (const auto& [path, text] : c.files) {
      const std::filesystem::path file = dir.File(path);
      std::filesystem::create_directories(file.parent_path());
      WriteText(file, text);
    }
    CTestConfig config;
    const auto old = [](auto&... field) { ((field = "old"), ...); };
    old(config.model, config.brand, config.rom, config.operatingSystem, config.version,
        config.cpuType, config.cpuSpeed, config.ram, config.hardDiskType, config.hardDiskSize,
        config.otherHardware, config.cdRom, config.printer);
    config.hasCdRom = config.hasPrinter = true;
    Fields expected = FieldsOf(config);
    for (const auto& [field, value] : c.changed) expected[field] = value;
    CaptureThisComputer(config, {dir.path(), [&] { return c.printer; }});
    EXPECT_EQ(FieldsOf(config), expected);
  }
}

}  // namespace
}  // namespace qm::test
