// The catalogue of a defect's fields: the numbers that filters, reports and templates
// store, the short labels of list columns, and the four-character tags of e-mail
// templates. Numbers 1 to 45 are short fields, 200 and above long texts.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "store/bytes.h"

namespace qm {

struct DefectField {
  std::uint16_t number;
  std::string_view tag;  // empty for the fields that have none
  std::string_view label;
};

// The 55 fields in catalogue order.
const std::array<DefectField, 55>& DefectFields();
// The short label of a field; the lookup serves 1 to 45 and 200 to 207 only, and answers
// empty for any other number.
std::string_view DefectFieldLabel(std::uint16_t number);
// The field a template tag names; nothing for a tag the catalogue does not know.
std::optional<std::uint16_t> DefectFieldByTag(Tag tag);

// Field numbers the program itself refers to.
inline constexpr std::uint16_t kFieldNumber = 1;
inline constexpr std::uint16_t kFieldSummary = 2;
inline constexpr std::uint16_t kFieldStatus = 6;
inline constexpr std::uint16_t kFieldDescription = 200;

}  // namespace qm
