// The value lists a project sets up for itself: what each list's set-up command tells its
// dialog, and the names a new project starts with.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "store/bytes.h"

namespace qm {

// The defect field whose value a list names; 11 is kept in each reported-by row of a
// defect rather than in the defect itself.
inline constexpr std::uint16_t kFieldProduct = 3;
inline constexpr std::uint16_t kFieldType = 4;
inline constexpr std::uint16_t kFieldPriority = 5;
inline constexpr std::uint16_t kFieldResolution = 7;
inline constexpr std::uint16_t kFieldReproducible = 11;
inline constexpr std::uint16_t kFieldComponent = 24;
inline constexpr std::uint16_t kFieldSeverity = 33;
inline constexpr std::uint16_t kFieldDisposition = 43;

struct ValueListSettings {
  Tag tag;
  std::uint16_t fieldCode;
  std::string_view titleWord;     // "Defect Type": after "Set Up ", "Add ", "Edit "
  std::string_view sentenceWord;  // "defect type": inside sentences
  // A reassigning list keeps at least one name, and a deletion moves the defects that use
  // the name to another one; the other lists may become empty, and a deletion clears the
  // field in the defects.
  bool reassign;
};

// The lists in the order of their commands. The table `stat` has none: its names are fixed.
inline constexpr std::array<ValueListSettings, 8> kValueLists{{
    {MakeTag("type"), kFieldType, "Defect Type", "defect type", true},
    {MakeTag("reso"), kFieldResolution, "Defect Resolution", "defect resolution", true},
    {MakeTag("prio"), kFieldPriority, "Defect Priority", "defect priority", true},
    {MakeTag("prod"), kFieldProduct, "Product", "product", false},
    {MakeTag("rpro"), kFieldReproducible, "Reproducible", "reproducible", true},
    {MakeTag("sevr"), kFieldSeverity, "Defect Severity", "defect severity", true},
    {MakeTag("comp"), kFieldComponent, "Component", "component", false},
    {MakeTag("usta"), kFieldDisposition, "Disposition", "disposition", true},
}};

// The settings of the list kept in the table `tag`, or null for a table without a command.
const ValueListSettings* FindValueList(Tag tag);

// The names a new project's list in the table `tag` starts with, in list order (the first
// gets order 1); also the names of a Severity, Disposition or Reproducible list that an
// older project gains. Empty for `prod`, which starts with the file's title, for `comp`,
// which starts empty, and for tables that are not value lists.
std::span<const std::string_view> DefaultValueNames(Tag tag);

}  // namespace qm
