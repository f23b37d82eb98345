// The lookup of list settings and the default names of new lists.
#include "session/value_lists.h"

namespace qm {

namespace {

constexpr std::string_view kTypeNames[] = {"Crash - Data Loss", "Crash - No Data Loss",
                                           "Incorrect Functionality", "Cosmetic",
                                           "Feature Request"};
constexpr std::string_view kResolutionNames[] = {
    "Code Change", "Documentation Change", "Clarification", "Not Our Bug", "Not a Bug", "On Hold"};
constexpr std::string_view kPriorityNames[] = {"Immediate", "Before Alpha", "Before Beta",
                                               "Before Final", "Future Release"};
constexpr std::string_view kStatusNames[] = {"Open",          "Fixed",  "Verify Failed",
                                             "Verify Passed", "Closed", "Re-opened"};
constexpr std::string_view kReproducibleNames[] = {"Always", "Sometimes", "Rarely", "Could Not",
                                                   "I Didn't Try"};
constexpr std::string_view kSeverityNames[] = {"Causes Crash", "No Workaround", "Workaround",
                                               "Cosmetic"};
constexpr std::string_view kDispositionNames[] = {
    "Open - Not Reviewed",   "Open - Reviewed", "Need Customer Input",
    "Fix In Future Release", "Closed",          "Hold"};

struct DefaultNames {
  Tag tag;
  std::span<const std::string_view> names;
};

constexpr DefaultNames kDefaults[] = {
    {MakeTag("type"), kTypeNames},         {MakeTag("reso"), kResolutionNames},
    {MakeTag("prio"), kPriorityNames},     {MakeTag("stat"), kStatusNames},
    {MakeTag("rpro"), kReproducibleNames}, {MakeTag("sevr"), kSeverityNames},
    {MakeTag("usta"), kDispositionNames},
};

}  // namespace

const ValueListSettings* FindValueList(Tag tag) {
  for (const ValueListSettings& list : kValueLists) {
    if (list.tag == tag) return &list;
  }
  return nullptr;
}

std::span<const std::string_view> DefaultValueNames(Tag tag) {
  for (const DefaultNames& d : kDefaults) {
    if (d.tag == tag) return d.names;
  }
  return {};
}

}  // namespace qm
