// Capture from this computer over hand-made system trees: every field starts as "old" with
// both flags set, and each case gives all of them afterwards, so that those it must not
// touch are seen to stay.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>

#include "people/machine_capture.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

struct Case {
  const char* what;
  std::map<std::string, std::string> files;  // path below the root, contents
  std::optional<std::string> printer;
  std::string captured;
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
     "OptiPlex 7020|Dell Inc.|Dell Inc. A18|Debian \"12\"|6.1.0-18-amd64|Intel(R) Core(TM) "
     "i5-4590|3700|15932|NVMe SSD|512 GB|Other disks: 2000 GB HDD, 7.7 GB SSD|HL-DT-ST DVD+-RW "
     "GHB0N|Office_Laser|11"},
    {"an empty tree and no printer",
     {},
     std::nullopt,
     "old|old|old|old|old|old|old|old|old|old|old|old|old|10"},
    {"placeholders, NAME alone, memory rounded up, the speed from cpuinfo",
     {{"sys/class/dmi/id/product_name", "to be filled by o.e.m."},
      {"sys/class/dmi/id/sys_vendor", "System manufacturer"},
      {"sys/class/dmi/id/bios_version", "Default string"},
      {"usr/lib/os-release", "# no pretty name\nNAME='Arch Linux'"},
      {"proc/cpuinfo", "cpu MHz : 2899.5"},
      {"sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "0"},
      {"proc/meminfo", "MemTotal: 1048577 kB"}},
     "",
     "old|old|old|Arch Linux|old|old|2900|1025|old|old|old|old|old|10"},
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
     "old|old|old|old|old|old|old|old|old|11 GB|old|old|Q|01"},
    {"overlong texts cut between characters",
     {{"sys/class/dmi/id/product_name", kE300}, {"proc/cpuinfo", "model name: x" + kE300}},
     "Q",
     kE300.substr(0, 254) + "|old|old|old|old|x" + kE300.substr(0, 30) +
         "|old|old|old|old|old|old|Q|11"},
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
    CaptureThisComputer(config, {dir.path(), [&] { return c.printer; }});
    // Model|brand|rom|os|version|cpu|MHz|RAM|disk type|disk size|other|CD-ROM|printer|, then
    // the flags of the CD-ROM and the printer.
    std::string captured;
    for (const std::string& field :
         {config.model.str(), config.brand.str(), config.rom.str(), config.operatingSystem.str(),
          config.version.str(), config.cpuType.str(), config.cpuSpeed.str(), config.ram.str(),
          config.hardDiskType.str(), config.hardDiskSize.str(), config.otherHardware.str(),
          config.cdRom.str(), config.printer.str()}) {
      captured += field + "|";
    }
    EXPECT_EQ(captured + (config.hasCdRom ? "1" : "0") + (config.hasPrinter ? "1" : "0"),
              c.captured);
  }
}

}  // namespace
}  // namespace qm::test
