// What a defect reads of the rest of its project: the people, groups, test configurations
// and value lists its ids name, and who is logged in. The open project provides it.
#pragma once

#include <cstdint>

#include "store/bytes.h"

namespace qm {

class CTestConfig;
class CUser;
class CUserGroup;
class ValueItem;

class DefectLookups {
 public:
  virtual ~DefectLookups() = default;

  // Null for an id that names nothing (0, or a record that is gone).
  virtual const CUser* User(std::uint32_t id) const = 0;
  virtual const CUserGroup* Group(std::uint32_t id) const = 0;
  virtual const CTestConfig* TestConfig(std::uint32_t id) const = 0;
  virtual const ValueItem* Value(Tag list, std::uint32_t id) const = 0;
  // The 1-based place of the value in its list; 0 when it is not there.
  virtual std::uint32_t ValuePosition(Tag list, std::uint32_t id) const = 0;
  // The user logged in, 0 for none.
  virtual std::uint32_t CurrentUserId() const = 0;
};

}  // namespace qm
