// Capture from this computer: the facts are read from the files the kernel and the
// system keep, each taken only when it reads cleanly, and the printer from CUPS.
#include "people/machine_capture.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

#include "people/record_fields.h"

namespace qm {

namespace {

namespace fs = std::filesystem;

// More than any of the files read here holds, even /proc/cpuinfo of a large machine.
constexpr std::size_t kMostBytes = std::size_t{4} << 20;

// Texts that makers leave in DMI fields they did not fill.
constexpr std::array<std::string_view, 9> kPlaceholders = {"To Be Filled By O.E.M.",
                                                           "System Product Name",
                                                           "System manufacturer",
                                                           "Default string",
                                                           "Not Specified",
                                                           "Not Applicable",
                                                           "O.E.M.",
                                                           "None",
                                                           "Unknown"};

std::optional<std::string> ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string text;
  std::array<char, 65536> chunk{};
  while (text.size() < kMostBytes && in.read(chunk.data(), chunk.size()).gcount() > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(in.gcount()));
  }
  return text;
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0'; }

// The words of a text, each run of spaces one space, none at either end.
std::string Clean(std::string_view text) {
  std::string out;
  bool space = false;
  for (char c : text) {
    if (IsSpace(c)) {
      space = !out.empty();
    } else {
      if (space) out += ' ';
      space = false;
      out += c;
    }
  }
  return out;
}

// A file's text cleaned; nothing when it is missing or holds only spaces.
std::optional<std::string> ReadText(const fs::path& path) {
  const auto text = ReadFile(path);
  if (!text) return std::nullopt;
  std::string clean = Clean(*text);
  if (clean.empty()) return std::nullopt;
  return clean;
}

// A DMI field, unless it is a maker's placeholder.
std::optional<std::string> ReadDmi(const fs::path& root, std::string_view name) {
  auto text = ReadText(root / "sys/class/dmi/id" / name);
  if (text && std::ranges::any_of(kPlaceholders, [&](std::string_view p) {
        return CompareNoCase(*text, p) == 0;
      })) {
    return std::nullopt;
  }
  return text;
}

std::optional<std::uint64_t> ParseNumber(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<std::uint64_t> ReadNumber(const fs::path& path) {
  const auto text = ReadText(path);
  return text ? ParseNumber(*text) : std::nullopt;
}

// The value of the first "key : value" line with this key, cleaned.
std::optional<std::string> ValueOf(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && Clean(line.substr(0, colon)) == key) {
      return Clean(line.substr(colon + 1));
    }
  }
  return std::nullopt;
}

// The value of KEY=VALUE in os-release, its quotes and backslashes taken off.
std::optional<std::string> OsReleaseValue(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.starts_with(key) || line.substr(key.size(), 1) != "=") continue;
    line.remove_prefix(key.size() + 1);
    while (!line.empty() && IsSpace(line.back())) line.remove_suffix(1);
    if (line.size() >= 2 && (line[0] == '"' || line[0] == '\'') && line.back() == line[0]) {
      line = line.substr(1, line.size() - 2);
    }
    std::string value;
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] == '\\' && i + 1 < line.size()) ++i;
      value += line[i];
    }
    value = Clean(value);
    if (!value.empty()) return value;
  }
  return std::nullopt;
}

// A whole number of a finite, positive amount the size of a machine's.
std::optional<std::string> Rounded(double value) {
  if (!std::isfinite(value) || value <= 0 || value > 1e15) return std::nullopt;
  return std::to_string(std::llround(value));
}

std::optional<std::string> CpuMhz(const fs::path& root, std::string_view cpuinfo) {
  if (const auto khz = ReadNumber(root / "sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq")) {
    if (auto mhz = Rounded(static_cast<double>(*khz) / 1000)) return mhz;
  }
  const auto text = ValueOf(cpuinfo, "cpu MHz");
  if (!text) return std::nullopt;
  double mhz = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), mhz);
  if (error != std::errc() || end != text->data() + text->size()) return std::nullopt;
  return Rounded(mhz);
}

// MemTotal in kilobytes, as megabytes rounded up.
std::optional<std::string> RamMb(std::string_view meminfo) {
  const auto value = ValueOf(meminfo, "MemTotal");
  if (!value || !value->ends_with(" kB")) return std::nullopt;
  const auto kb = ParseNumber(std::string_view(*value).substr(0, value->size() - 3));
  if (!kb || *kb == 0) return std::nullopt;
  return std::to_string(*kb / 1024 + (*kb % 1024 != 0 ? 1 : 0));
}

// Bytes in decimal gigabytes as disk makers give them: whole ones from ten on, tenths
// below.
std::string Gigabytes(double bytes) {
  const long long tenths = std::llround(bytes / 1e8);
  if (tenths >= 100) return std::to_string(std::llround(bytes / 1e9)) + " GB";
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " GB";
}

struct Disk {
  std::string size;
  std::string type;  // empty when the kernel does not say
};

struct BlockDevices {
  std::vector<Disk> disks;
  bool hasOptical = false;
  std::optional<std::string> opticalModel;
};

bool IsVirtual(std::string_view name) {
  constexpr std::array<std::string_view, 5> kPrefixes = {"loop", "ram", "zram", "dm-", "md"};
  return std::ranges::any_of(kPrefixes, [&](std::string_view p) { return name.starts_with(p); });
}

// The block devices in the order of their names; nothing when the list cannot be read.
std::optional<BlockDevices> ReadBlockDevices(const fs::path& root) {
  std::error_code error;
  fs::directory_iterator entries(root / "sys/block", error);
  if (error) return std::nullopt;
  std::vector<std::string> names;
  for (const auto& entry : entries) names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  BlockDevices found;
  for (const std::string& name : names) {
    const fs::path dir = root / "sys/block" / name;
    if (name.starts_with("sr")) {
      const std::string model = Clean(ReadText(dir / "device/vendor").value_or("") + " " +
                                      ReadText(dir / "device/model").value_or(""));
      if (!found.hasOptical && !model.empty()) found.opticalModel = model;
      found.hasOptical = true;
      continue;
    }
    if (IsVirtual(name) || ReadNumber(dir / "removable") == std::uint64_t{1}) continue;
    const auto sectors = ReadNumber(dir / "size");
    if (!sectors || *sectors == 0) continue;
    Disk disk{Gigabytes(static_cast<double>(*sectors) * 512), ""};
    const auto rotational = ReadNumber(dir / "queue/rotational");
    if (name.starts_with("nvme")) {
      disk.type = "NVMe SSD";
    } else if (rotational == std::uint64_t{0}) {
      disk.type = "SSD";
    } else if (rotational == std::uint64_t{1}) {
      disk.type = "HDD";
    }
    found.disks.push_back(disk);
  }
  return found;
}

void CaptureDisks(CTestConfig& config, const fs::path& root) {
  const auto devices = ReadBlockDevices(root);
  if (!devices) return;
  config.hasCdRom = devices->hasOptical;
  if (devices->opticalModel) config.cdRom = *devices->opticalModel;
  if (devices->disks.empty()) return;
  const Disk& first = devices->disks.front();
  config.hardDiskSize = first.size;
  if (!first.type.empty()) config.hardDiskType = first.type;
  if (devices->disks.size() == 1) return;
  std::string others = "Other disks:";
  for (std::size_t i = 1; i < devices->disks.size(); ++i) {
    const Disk& d = devices->disks[i];
    others += (i == 1 ? " " : ", ") + d.size + (d.type.empty() ? "" : " " + d.type);
  }
  config.otherHardware = others;
}

template <std::size_t N>
void SetIf(BoundedText<N>& field, const std::optional<std::string>& value) {
  if (value) field = *value;
}

}  // namespace

std::optional<std::string> DefaultPrinterFromCups() {
  cups_dest_t* dest = cupsGetNamedDest(CUPS_HTTP_DEFAULT, nullptr, nullptr);
  if (dest == nullptr) return std::nullopt;
  std::string name = dest->name != nullptr ? dest->name : "";
  cupsFreeDests(1, dest);
  if (name.empty()) return std::nullopt;
  return name;
}

void CaptureThisComputer(CTestConfig& config, const MachineFacts& facts) {
  const fs::path& root = facts.root;
  SetIf(config.model, ReadDmi(root, "product_name"));
  SetIf(config.brand, ReadDmi(root, "sys_vendor"));
  const auto biosVendor = ReadDmi(root, "bios_vendor");
  const auto biosVersion = ReadDmi(root, "bios_version");
  if (biosVendor || biosVersion) {
    config.rom = Clean(biosVendor.value_or("") + " " + biosVersion.value_or(""));
  }

  auto osRelease = ReadFile(root / "etc/os-release");
  if (!osRelease) osRelease = ReadFile(root / "usr/lib/os-release");
  if (osRelease) {
    auto name = OsReleaseValue(*osRelease, "PRETTY_NAME");
    SetIf(config.operatingSystem, name ? name : OsReleaseValue(*osRelease, "NAME"));
  }
  SetIf(config.version, ReadText(root / "proc/sys/kernel/osrelease"));

  const std::string cpuinfo = ReadFile(root / "proc/cpuinfo").value_or("");
  const auto cpuName = ValueOf(cpuinfo, "model name");
  if (cpuName && !cpuName->empty()) config.cpuType = *cpuName;
  SetIf(config.cpuSpeed, CpuMhz(root, cpuinfo));
  SetIf(config.ram, RamMb(ReadFile(root / "proc/meminfo").value_or("")));

  CaptureDisks(config, root);

  if (facts.defaultPrinter) {
    const auto printer = facts.defaultPrinter();
    config.hasPrinter = printer && !printer->empty();
    if (config.hasPrinter) config.printer = *printer;
  }
}

}  // namespace qm
