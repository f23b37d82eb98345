// Test configuration records against hand-built bytes; their text, HTML and page forms
// against whole expected texts.
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

// A machine with every flag set and a text in every field; other hardware needs escaping.
void FillAll(CTestConfig& c) {
  c.name = "Lab PC";
  c.model = "Tower 5";
  c.brand = "Acme";
  c.operatingSystem = "Windows NT";
  c.version = "4.0";
  c.cpuType = "Pentium";
  c.otherHardware = "Tape <DAT> \"4mm\" & Zip";
  c.videoController = "Trio 64";
  c.hardDiskType = "SCSI";
  c.hardDiskSize = "2 GB";
  c.cpuSpeed = "133";
  c.ram = "32";
  c.rom = "BIOS 1.2";
  c.hasCdRom = c.hasModem = c.hasPrinter = c.hasScanner = true;
  c.cdRom = "8x";
  c.modem = "28.8";
  c.printer = "Laser 4";
  c.scanner = "Flatbed 2";
  c.multipleMonitors = true;
}

TEST(PeopleTestConfig, FormsOfAFullConfiguration) {
  CTestConfig c;
  FillAll(c);
  std::string text;
  c.WriteText(text);
  EXPECT_EQ(text,
            "Name: Lab PC\r\n"
            "Model: Tower 5\r\n"
            "Brand: Acme\r\n"
            "Operating System: Windows NT\r\n"
            "Version: 4.0\r\n"
            "CPU Type: Pentium\r\n"
            "CPU Speed: 133 MHz\r\n"
            "RAM: 32\r\n"
            "ROM: BIOS 1.2\r\n"
            "Video Controller: Trio 64\r\n"
            "Hard Disk Type: SCSI\r\n"
            "Hard Disk Size: 2 GB\r\n"
            "Multiple Monitors: Yes\r\n"
            "CD-ROM: 8x\r\n"
            "Modem: 28.8\r\n"
            "Printer: Laser 4\r\n"
            "Scanner: Flatbed 2\r\n"
            "Other Hardware: Tape <DAT> \"4mm\" & Zip\r\n");

  std::string html;
  c.WriteHtml(html);
  EXPECT_EQ(html,
            "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
            "<TR BGCOLOR=#FFFFFF><TD WIDTH=200>&nbsp;</TD><TD WIDTH=200>&nbsp;</TD></TR>"
            "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Name:</B> Lab PC</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Model:</B> Tower 5</TD><TD><B>Brand:</B> Acme</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Operating System:</B> Windows NT</TD>"
            "<TD><B>Version:</B> 4.0</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>CPU Type:</B> Pentium</TD>"
            "<TD><B>CPU Speed:</B> 133</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>RAM:</B> 32</TD><TD><B>ROM:</B> BIOS 1.2</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Video Controller:</B> Trio 64</TD>"
            "<TD><B>Multiple Monitors:</B> Yes</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Hard Disk Type:</B> SCSI</TD>"
            "<TD><B>Hard Disk Size:</B> 2 GB</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>CD-ROM:</B> 8x</TD><TD><B>Printer:</B> Laser 4</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Modem:</B> 28.8</TD>"
            "<TD><B>Scanner:</B> Flatbed 2</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Other Hardware:</B> "
            "Tape &lt;DAT&gt; &quot;4mm&quot; & Zip</TD></TR>\n"
            "</TABLE>\n");

  // The page carries the text form's lines from the line the form stands on: a bold
  // label at the left and the value behind it.
  std::vector<PrintRow> rows;
  PageForm form(rows);
  form.SetLine(7);
  c.Print(form);
  ASSERT_EQ(rows.size() % 2, 0u);
  std::string printed;
  for (std::size_t i = 0; i < rows.size(); i += 2) {
    const std::uint32_t line = 7 + static_cast<std::uint32_t>(i / 2);
    EXPECT_EQ(rows[i], (PrintRow{PrintRow::Kind::kText, 0, line, rows[i].text, PrintRow::kBold}));
    EXPECT_EQ(rows[i + 1], (PrintRow{PrintRow::Kind::kText, PrintRow::kFollow, line,
                                     rows[i + 1].text, PrintRow::kPlain}));
    printed += rows[i].text + rows[i + 1].text + "\r\n";
  }
  EXPECT_EQ(printed, text);
  EXPECT_EQ(form.line(), 7u + 18u);
}

// The HTML shows every device's text whatever the flags; in the text, the CD-ROM flag alone
// decides all four device lines.
TEST(PeopleTestConfig, CdRomFlagDecidesAllFourDeviceLines) {
  CTestConfig c;
  FillAll(c);
  std::string full, html, text, devices;
  c.WriteHtml(full);
  c.hasCdRom = c.hasModem = c.hasPrinter = c.hasScanner = false;
  c.WriteHtml(html);
  EXPECT_EQ(html, full);
  c.hasModem = c.hasPrinter = c.hasScanner = true;
  c.multipleMonitors = false;
  c.WriteText(text);
  EXPECT_NE(text.find("Multiple Monitors: No\r\nOther Hardware: "), std::string::npos);
  c.hasCdRom = true;
  c.hasModem = c.hasPrinter = c.hasScanner = false;
  c.WriteText(devices);
  EXPECT_NE(devices.find("No\r\nCD-ROM: 8x\r\nModem: 28.8\r\nPrinter: Laser 4\r\nScanner: "
                         "Flatbed 2\r\nOther Hardware: "),
            std::string::npos);
}

}  // namespace
}  // namespace qm::test
