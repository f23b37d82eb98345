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

// The text fields in the order of the record: twelve, the four devices, then rom. Other
// hardware needs escaping in HTML.
const Strings kTexts = {"Lab PC", "Mo",  "Br",  "NT",  "4.0", "P5", "Tape <DAT> \"4mm\" & Zip",
                        "Vc",     "Hdt", "Hds", "133", "32",  "Cd", "Md",
                        "Pr",     "Sc",  "Ro"};

// The record of layout `v`: the deleted mark from 0x101, a CD-ROM and a printer but no modem
// or scanner, multiple monitors from 0x102.
std::vector<std::uint8_t> Record(std::uint16_t v) {
  Bytes b;
  b.u16(v);
  if (v >= 0x101) b.u8(1);
  for (std::size_t i = 0; i < kTexts.size(); ++i) {
    if (i >= 12 && i < 16) b.u8(i % 2 == 0 ? 1 : 0);
    b.u8(static_cast<std::uint8_t>(kTexts[i].size())).text(kTexts[i]);
  }
  if (v >= 0x102) b.u8(1);
  return b.b;
}

class PeopleTestConfig : public ::testing::Test {
 protected:
  CTestConfig& Read(std::vector<std::uint8_t> bytes) {
    item = table.ItemFromRecord(bytes);
    return static_cast<CTestConfig&>(*item);
  }

  ScriptedUi ui;
  CTestConfigTable table{nullptr, ui};
  std::unique_ptr<RecordItem> item;
};

TEST_F(PeopleTestConfig, RecordFormsOfEachVersion) {
  EXPECT_THROW(table.ItemFromRecord(Bytes().u16(0x103).u8(0).b), ItemError);
  EXPECT_THROW(table.ItemFromRecord(Bytes().u16(0x0FF).u8(0).b), ItemError);

  // A byte after the record shows one read too many. The newest form is written back byte
  // for byte.
  for (std::uint16_t v = 0x100; v <= 0x102; ++v) {
    SCOPED_TRACE(v);
    std::vector<std::uint8_t> bytes = Record(v);
    bytes.push_back(1);
    const CTestConfig& c = Read(bytes);
    EXPECT_EQ(
        (Strings{c.name.str(), c.model.str(), c.brand.str(), c.operatingSystem.str(),
                 c.version.str(), c.cpuType.str(), c.otherHardware.str(), c.videoController.str(),
                 c.hardDiskType.str(), c.hardDiskSize.str(), c.cpuSpeed.str(), c.ram.str(),
                 c.cdRom.str(), c.modem.str(), c.printer.str(), c.scanner.str(), c.rom.str()}),
        kTexts);
    EXPECT_EQ((std::vector<bool>{c.deleted, c.hasCdRom, c.hasModem, c.hasPrinter, c.hasScanner,
                                 c.multipleMonitors}),
              (std::vector<bool>{v >= 0x101, true, false, true, false, v >= 0x102}));
  }
  EXPECT_EQ(Read(Record(0x102)).Pack(), Record(0x102));

  // The table sorts by name without regard to case.
  CTestConfig zeta;
  CTestConfig alpha;
  zeta.name = "Zeta";
  alpha.name = "alpha";
  EXPECT_GT(table.CompareItems(zeta, alpha, table.sortOrder()), 0);
  EXPECT_EQ(CTestConfig::Compare(nullptr, &alpha), -1);
}

// The CD-ROM flag alone decides all four device lines of the text and the page; the HTML
// shows every device whatever the flags.
TEST_F(PeopleTestConfig, TextHtmlAndPageForms) {
  CTestConfig& c = Read(Record(0x102));
  std::string text;
  c.WriteText(text);
  EXPECT_EQ(text,
            "Name: Lab PC\r\nModel: Mo\r\nBrand: Br\r\nOperating System: NT\r\nVersion: 4.0\r\n"
            "CPU Type: P5\r\nCPU Speed: 133 MHz\r\nRAM: 32\r\nROM: Ro\r\nVideo Controller: Vc\r\n"
            "Hard Disk Type: Hdt\r\nHard Disk Size: Hds\r\nMultiple Monitors: Yes\r\n"
            "CD-ROM: Cd\r\nModem: Md\r\nPrinter: Pr\r\nScanner: Sc\r\n"
            "Other Hardware: Tape <DAT> \"4mm\" & Zip\r\n");
  std::string html;
  c.WriteHtml(html);
  EXPECT_EQ(html,
            "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
            "<TR BGCOLOR=#FFFFFF><TD WIDTH=200>&nbsp;</TD><TD WIDTH=200>&nbsp;</TD></TR>"
            "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Name:</B> Lab PC</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Model:</B> Mo</TD><TD><B>Brand:</B> Br</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Operating System:</B> NT</TD>"
            "<TD><B>Version:</B> 4.0</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>CPU Type:</B> P5</TD><TD><B>CPU Speed:</B> 133</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>RAM:</B> 32</TD><TD><B>ROM:</B> Ro</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Video Controller:</B> Vc</TD>"
            "<TD><B>Multiple Monitors:</B> Yes</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Hard Disk Type:</B> Hdt</TD>"
            "<TD><B>Hard Disk Size:</B> Hds</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>CD-ROM:</B> Cd</TD><TD><B>Printer:</B> Pr</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD><B>Modem:</B> Md</TD><TD><B>Scanner:</B> Sc</TD></TR>\n"
            "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Other Hardware:</B> "
            "Tape &lt;DAT&gt; &quot;4mm&quot; & Zip</TD></TR>\n"
            "</TABLE>\n");

  // The page carries the text form's lines from the line the form stands on: a bold label
  // at the left and the value behind it.
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

  std::string plain;
  c.hasCdRom = false;
  c.hasModem = c.hasScanner = true;
  c.WriteHtml(plain);
  EXPECT_EQ(plain, html);
  c.multipleMonitors = false;
  text.clear();
  c.WriteText(text);
  EXPECT_NE(text.find("Multiple Monitors: No\r\nOther Hardware: "), std::string::npos);
}

}  // namespace
}  // namespace qm::test
