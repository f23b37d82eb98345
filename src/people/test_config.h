// CTestConfig, one computer's description: an item of the 'scfg' table, and the same
// form in-line inside a person's record and a custom reported-by.
//
// Payload (version 0x102 written; 0x100 to 0x102 read):
//
//   order  field                                       form        present when
//   1      version                                     u16         always
//   2      deleted                                     u8          0x101 or later
//   3      name, model, brand, operatingSystem,        string(255) always
//          version, cpuType, otherHardware,            each, in
//          videoController, hardDiskType,              this order
//          hardDiskSize, cpuSpeed, ram
//   4      hasCdRom u8, cdRom string(255),                         always
//          hasModem u8, modem string(255),
//          hasPrinter u8, printer string(255),
//          hasScanner u8, scanner string(255),
//          rom string(255)
//   5      multipleMonitors                            u8          0x102 or later
//
// The text, HTML and page forms are written here too, for the table's own items and for
// the users, customers and reported-by rows that hold one in-line.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "people/record_fields.h"
#include "session/item_table.h"
#include "session/page_form.h"
#include "session/record_item.h"

namespace qm {

class CTestConfig : public RecordItem {
 public:
  static constexpr std::uint16_t kOldestVersion = 0x100;
  static constexpr std::uint16_t kVersion = 0x102;

  // Writes the record from its version on; the same bytes stand in-line in the records
  // of people and reported-by rows.
  void WriteTo(PayloadWriter& out) const override;
  // Reads a record of version 0x100 to 0x102 from the stream's position, in-line ones
  // included; throws ItemError(kItemFailed) for another version.
  void ReadFrom(PayloadReader& in) override;

  std::string GetName() const override { return name.str(); }

  // One line per field, each ended by CR LF: the name, the machine, the system, the
  // disks, the devices, then other hardware. The CD-ROM flag decides all four device
  // lines, as older copies wrote them: with it all four show, whatever their own flags,
  // and without it none.
  void WriteText(std::string& out) const;
  // A table of two columns, a pair of fields to a row, the name and other hardware each
  // across both; values are escaped. Every device's text shows, whatever its flag.
  void WriteHtml(std::string& out) const;
  // The lines of the text form as print rows from the form's current line on, so that
  // a person's page can take them in.
  void Print(PageForm& form) const;

  // By name, ignoring case; a missing configuration sorts first.
  static int Compare(const CTestConfig* a, const CTestConfig* b);

  // The widths of the fields less their terminators.
  BoundedText<32> name;
  BoundedText<255> model;
  BoundedText<255> brand;
  BoundedText<255> operatingSystem;
  BoundedText<32> version;
  BoundedText<32> cpuType;
  BoundedText<255> otherHardware;
  BoundedText<32> videoController;
  BoundedText<32> hardDiskType;
  BoundedText<32> hardDiskSize;
  BoundedText<63> cpuSpeed;  // megahertz
  BoundedText<32> ram;       // megabytes
  BoundedText<63> rom;
  bool hasCdRom = false;
  BoundedText<63> cdRom;
  bool hasModem = false;
  BoundedText<63> modem;
  bool hasPrinter = false;
  BoundedText<63> printer;
  bool hasScanner = false;
  BoundedText<63> scanner;
  bool multipleMonitors = false;
};

// The 'scfg' table: shared test configurations, sorted by name ignoring case.
class CTestConfigTable : public ItemTableOf<CTestConfig> {
 public:
  CTestConfigTable(CProjectStore* store, ui::Ui& ui) : ItemTableOf(store, MakeTag("scfg"), ui) {}

  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;
};

}  // namespace qm
