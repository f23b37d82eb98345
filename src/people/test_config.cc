// The record, text, HTML and page forms of test configurations, and their table.
#include "people/test_config.h"

#include <string_view>
#include <utility>
#include <vector>

#include "session/form_text.h"

namespace qm {

namespace {

using Line = std::pair<std::string_view, std::string>;

// The lines of the text and page forms. Only the CPU speed carries its unit. The CD-ROM
// flag decides all four device lines, as older copies wrote them: the modem, printer and
// scanner flags are never looked at.
std::vector<Line> TextLines(const CTestConfig& c) {
  std::vector<Line> lines = {
      {"Name: ", c.name.str()},
      {"Model: ", c.model.str()},
      {"Brand: ", c.brand.str()},
      {"Operating System: ", c.operatingSystem.str()},
      {"Version: ", c.version.str()},
      {"CPU Type: ", c.cpuType.str()},
      {"CPU Speed: ", c.cpuSpeed.str() + " MHz"},
      {"RAM: ", c.ram.str()},
      {"ROM: ", c.rom.str()},
      {"Video Controller: ", c.videoController.str()},
      {"Hard Disk Type: ", c.hardDiskType.str()},
      {"Hard Disk Size: ", c.hardDiskSize.str()},
      {"Multiple Monitors: ", YesNo(c.multipleMonitors)},
  };
  if (c.hasCdRom) {
    lines.emplace_back("CD-ROM: ", c.cdRom.str());
    lines.emplace_back("Modem: ", c.modem.str());
    lines.emplace_back("Printer: ", c.printer.str());
    lines.emplace_back("Scanner: ", c.scanner.str());
  }
  lines.emplace_back("Other Hardware: ", c.otherHardware.str());
  return lines;
}

}  // namespace

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

void CTestConfig::WriteText(std::string& out) const {
  for (const auto& [label, value] : TextLines(*this)) {
    out += label;
    out += value;
    out += "\r\n";
  }
}

void CTestConfig::WriteHtml(std::string& out) const {
  constexpr std::string_view kNextRow = "</TR>\n<TR BGCOLOR=#FFFFFF>";
  // The pairs of the rows between the name and other hardware, left cell first.
  const std::pair<Line, Line> pairs[] = {
      {{"Model:", model.str()}, {"Brand:", brand.str()}},
      {{"Operating System:", operatingSystem.str()}, {"Version:", version.str()}},
      {{"CPU Type:", cpuType.str()}, {"CPU Speed:", cpuSpeed.str()}},
      {{"RAM:", ram.str()}, {"ROM:", rom.str()}},
      {{"Video Controller:", videoController.str()},
       {"Multiple Monitors:", YesNo(multipleMonitors)}},
      {{"Hard Disk Type:", hardDiskType.str()}, {"Hard Disk Size:", hardDiskSize.str()}},
      {{"CD-ROM:", cdRom.str()}, {"Printer:", printer.str()}},
      {{"Modem:", modem.str()}, {"Scanner:", scanner.str()}},
  };
  out += "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n";
  // An empty row fixes the widths of the two columns; no line break follows it.
  out += "<TR BGCOLOR=#FFFFFF><TD WIDTH=200>&nbsp;</TD><TD WIDTH=200>&nbsp;</TD></TR>";
  out += "<TR BGCOLOR=#FFFFFF>";
  HtmlCell(out, 2, "Name:", name.str());
  for (const auto& [left, right] : pairs) {
    out += kNextRow;
    HtmlCell(out, 1, left.first, left.second);
    HtmlCell(out, 1, right.first, right.second);
  }
  out += kNextRow;
  HtmlCell(out, 2, "Other Hardware:", otherHardware.str());
  out += "</TR>\n";
  out += "</TABLE>\n";
}

void CTestConfig::Print(PageForm& form) const {
  for (const auto& [label, value] : TextLines(*this)) {
    form.Field(PageForm::kColumns[0], label, value);
    form.NextLine();
  }
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
