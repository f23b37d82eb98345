// The record form of test configurations and their table.
#include "people/test_config.h"

namespace qm {

void CTestConfig::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  WriteString(out, name);
  WriteString(out, model);
  WriteString(out, brand);
  WriteString(out, operatingSystem);
  WriteString(out, version);
  WriteString(out, cpuType);
  WriteString(out, otherHardware);
  WriteString(out, videoController);
  WriteString(out, hardDiskType);
  WriteString(out, hardDiskSize);
  WriteString(out, cpuSpeed);
  WriteString(out, ram);
  out.U8(hasCdRom ? 1 : 0);
  WriteString(out, cdRom);
  out.U8(hasModem ? 1 : 0);
  WriteString(out, modem);
  out.U8(hasPrinter ? 1 : 0);
  WriteString(out, printer);
  out.U8(hasScanner ? 1 : 0);
  WriteString(out, scanner);
  WriteString(out, rom);
  out.U8(multipleMonitors ? 1 : 0);
}

void CTestConfig::ReadFrom(PayloadReader& in) {
  const std::uint16_t layout = ReadVersion(in, kOldestVersion, kVersion);
  if (layout >= 0x101) in.U8(deleted);
  ReadString(in, name);
  ReadString(in, model);
  ReadString(in, brand);
  ReadString(in, operatingSystem);
  ReadString(in, version);
  ReadString(in, cpuType);
  ReadString(in, otherHardware);
  ReadString(in, videoController);
  ReadString(in, hardDiskType);
  ReadString(in, hardDiskSize);
  ReadString(in, cpuSpeed);
  ReadString(in, ram);
  in.U8(hasCdRom);
  ReadString(in, cdRom);
  in.U8(hasModem);
  ReadString(in, modem);
  in.U8(hasPrinter);
  ReadString(in, printer);
  in.U8(hasScanner);
  ReadString(in, scanner);
  ReadString(in, rom);
  if (layout >= 0x102) in.U8(multipleMonitors);
}

int CTestConfig::Compare(const CTestConfig* a, const CTestConfig* b) {
  if (a == nullptr || b == nullptr) return a == b ? 0 : (a == nullptr ? -1 : 1);
  return CompareNoCase(a->name.str(), b->name.str());
}

int CTestConfigTable::CompareItems(const RecordItem& a, const RecordItem& b,
                                   const SortOrder& /*order*/) const {
  return CTestConfig::Compare(static_cast<const CTestConfig*>(&a),
                              static_cast<const CTestConfig*>(&b));
}

}  // namespace qm
