// The records of the numbering counter and the project options, and the numbering dialog.
#include "session/numbering.h"

#include <vector>

#include "store/project_store.h"
#include "store/store_error.h"

namespace qm {

namespace {

constexpr std::uint16_t kOptionsVersion = 1;
constexpr char kNumberTooLow[] =
    "You must enter a defect number that is higher than the highest defect number.";

void Require(DBStatus status) {
  if (status != DBStatus::kOk) Fail(status);
}

}  // namespace

std::array<std::uint8_t, kOptionsRecordSize> EncodeOptions(const ProjectOptions& options) {
  std::array<std::uint8_t, kOptionsRecordSize> record{};
  BeWriter out(record.data());
  out.U16(kOptionsVersion);
  out.U8(options.numberOnUserEntry ? 1 : 0);
  out.U8(options.numberOnWispNoteImport ? 1 : 0);
  out.U8(options.numberOnMailImport ? 1 : 0);
  out.U8(options.allowMultipleFixes ? 1 : 0);
  return record;
}

std::optional<ProjectOptions> DecodeOptions(std::span<const std::uint8_t> record) {
  if (record.size() != kOptionsRecordSize) return std::nullopt;
  BeReader in(record.data());
  in.Skip(2);
  ProjectOptions options;
  options.numberOnUserEntry = in.U8() != 0;
  options.numberOnWispNoteImport = in.U8() != 0;
  options.numberOnMailImport = in.U8() != 0;
  options.allowMultipleFixes = in.U8() != 0;
  return options;
}

DBStatus WriteOptions(CProjectStore& store, const ProjectOptions& options) {
  return store.PutRecord(kMiscTag, EncodeOptions(options), kOptionsRecord, PutMode::kReplace);
}

DBStatus ReadCounter(CProjectStore& store, Tag tag, std::uint32_t id, std::uint32_t& value) {
  std::vector<std::uint8_t> record;
  if (DBStatus s = store.ReadRecord(tag, id, record); s != DBStatus::kOk) return s;
  if (record.size() < 4) return DBStatus::kIoError;
  value = BeReader(record.data()).U32();
  return DBStatus::kOk;
}

NumberingSetup::NumberingSetup(CProjectStore& store, ProjectOptions& options,
                               ProjectCounters& counters, const DefectNumbers& defects, ui::Ui& ui)
    : store_(store), options_(options), counters_(counters), defects_(defects), ui_(ui) {}

void NumberingSetup::Open() {
  Require(ReadDefectCounter(store_, stored_));
  numberOnUserEntry = options_.numberOnUserEntry;
  numberOnWispNoteImport = options_.numberOnWispNoteImport;
  numberOnMailImport = options_.numberOnMailImport;
  nextNumber = stored_ + 1;
}

bool NumberingSetup::Accept() {
  ProjectOptions chosen = options_;
  chosen.numberOnUserEntry = numberOnUserEntry;
  chosen.numberOnWispNoteImport = numberOnWispNoteImport;
  chosen.numberOnMailImport = numberOnMailImport;
  if (chosen != options_) {
    Require(WriteOptions(store_, chosen));
    options_ = chosen;
  }

  const std::uint64_t typed = nextNumber;
  if (typed == std::uint64_t{stored_} + 1) return true;
  if (typed > stored_) {
    // Another client may have given numbers meanwhile; a counter that has passed the
    // number typed stays. Otherwise the counter takes the number itself, so the next
    // defect gets one more than was typed.
    std::uint32_t now = 0;
    Require(ReadDefectCounter(store_, now));
    if (now >= nextNumber) return true;
    Require(counters_.SetCounter(kMiscTag, kDefectCounterRecord, nextNumber));
    return true;
  }
  // Going back is allowed down to just above the highest number in use; then the next
  // defect gets exactly the number typed.
  if (nextNumber > defects_.HighestNumber()) {
    Require(counters_.SetCounter(kMiscTag, kDefectCounterRecord, nextNumber - 1));
    return true;
  }
  ui_.Tell(kNumberTooLow, ui::Icon::kWarning);
  return false;
}

}  // namespace qm
