// The defect numbering counter and project options of the `misc` table, and
// NumberingSetup, the model of the "Defect Numbering" dialog that edits them.
//
// misc record 7, the counter, 4 bytes:
//   0  4  the last defect number given, u32
//
// misc record 8, the project options, exactly 6 bytes:
//   0  2  version                 u16, 1
//   2  1  numberOnUserEntry       0 or 1
//   3  1  numberOnWispNoteImport  0 or 1
//   4  1  numberOnMailImport      0 or 1
//   5  1  allowMultipleFixes      0 or 1
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "store/bytes.h"
#include "store/db_status.h"
#include "ui/ui.h"

namespace qm {

class CProjectStore;

inline constexpr Tag kMiscTag = MakeTag("misc");
inline constexpr std::uint32_t kDefectCounterRecord = 7;
inline constexpr std::uint32_t kOptionsRecord = 8;
inline constexpr std::size_t kOptionsRecordSize = 6;

// The options of a project, all on in a new one. The numbering dialog shows the first
// three; the fourth belongs to the actions on defects and is written back as it was.
struct ProjectOptions {
  bool numberOnUserEntry = true;       // a defect entered in a record window is numbered
  bool numberOnWispNoteImport = true;  // an imported Wisp Note report is numbered
  bool numberOnMailImport = true;      // a defect from mail intake is numbered
  bool allowMultipleFixes = true;      // a fixed defect may be fixed again

  bool operator==(const ProjectOptions&) const = default;
};

std::array<std::uint8_t, kOptionsRecordSize> EncodeOptions(const ProjectOptions& options);
// The options of a record of exactly 6 bytes, any byte but 0 counting as on; nothing for
// a record of another length, which the opening of the project writes anew.
std::optional<ProjectOptions> DecodeOptions(std::span<const std::uint8_t> record);

// Writes record 8, replacing what is there; the other clients take it over at their next
// check of the file.
[[nodiscard]] DBStatus WriteOptions(CProjectStore& store, const ProjectOptions& options);
// Reads the value of a counter record of misc (5, 6 or 7), a big-endian u32; a record of
// fewer than 4 bytes is 1011.
[[nodiscard]] DBStatus ReadCounter(CProjectStore& store, Tag tag, std::uint32_t id,
                                   std::uint32_t& value);
// Reads the value of counter record 7.
[[nodiscard]] inline DBStatus ReadDefectCounter(CProjectStore& store, std::uint32_t& value) {
  return ReadCounter(store, kMiscTag, kDefectCounterRecord, value);
}

// The counters of the open project, which set a value under the counter record's lock.
class ProjectCounters {
 public:
  virtual ~ProjectCounters() = default;
  [[nodiscard]] virtual DBStatus SetCounter(Tag tag, std::uint32_t id, std::uint32_t value) = 0;
};

// What the numbering needs of the defects; the defect table provides it.
class DefectNumbers {
 public:
  virtual ~DefectNumbers() = default;
  // The highest number among the defects not marked deleted; 0 when there is none.
  virtual std::uint32_t HighestNumber() const = 0;
};

// The dialog's fields are the three options it shows and the next defect number. A
// failure of the store ends the command and is thrown as StoreError.
class NumberingSetup {
 public:
  static constexpr std::string_view kTitle = "Defect Numbering";
  static constexpr std::string_view kText =
      "Quillmark can defer numbering defects until someone has had a chance to review "
      "them.\n\nNumber defects when...";
  static constexpr std::string_view kDeferLabel = "Defer numbering defects";
  static constexpr std::string_view kUserEntryLabel = "Defects are submitted by Quillmark users";
  static constexpr std::string_view kWispNoteLabel = "Defects are imported from Wisp Note";
  static constexpr std::string_view kMailLabel = "Defects are imported via e-mail";
  static constexpr std::string_view kNextNumberLabel = "Next defect number is:";

  // `options` are the project's own, which OK updates.
  NumberingSetup(CProjectStore& store, ProjectOptions& options, ProjectCounters& counters,
                 const DefectNumbers& defects, ui::Ui& ui);

  // Fills the fields: the options of the project, and the stored counter plus 1.
  void Open();

  // OK: writes options that changed, then takes the number typed. False, after saying
  // why, when the number is refused; the dialog then stays.
  bool Accept();

  bool numberOnUserEntry = true;
  bool numberOnWispNoteImport = true;
  bool numberOnMailImport = true;
  std::uint32_t nextNumber = 1;

 private:
  CProjectStore& store_;
  ProjectOptions& options_;
  ProjectCounters& counters_;
  const DefectNumbers& defects_;
  ui::Ui& ui_;
  std::uint32_t stored_ = 0;  // the counter when the dialog opened
};

}  // namespace qm
