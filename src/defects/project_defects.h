// The defects within their open project: the lookups a defect makes through the project's
// tables, and the value lists' view of the defects when a name is deleted.
#pragma once

#include <cstdint>

#include "defects/defect_lookups.h"
#include "defects/defect_table.h"
#include "session/numbering.h"
#include "session/value_setup.h"

namespace qm {

class CDBDoc;

// Reads the people, groups, test configurations and value lists of the open project.
class DocLookups : public DefectLookups {
 public:
  explicit DocLookups(const CDBDoc& doc) : doc_(doc) {}

  const CUser* User(std::uint32_t id) const override;
  const CUserGroup* Group(std::uint32_t id) const override;
  const CTestConfig* TestConfig(std::uint32_t id) const override;
  const ValueItem* Value(Tag list, std::uint32_t id) const override;
  std::uint32_t ValuePosition(Tag list, std::uint32_t id) const override;
  std::uint32_t CurrentUserId() const override;

 private:
  const RecordItem* Find(Tag table, std::uint32_t id) const;

  const CDBDoc& doc_;
};

// The defects of a table as the deletion of a value name walks them: the field of the
// list in the defect itself, or for the reproducible list in every reported-by row.
class DefectValueAccess : public DefectFieldAccess {
 public:
  explicit DefectValueAccess(CDefectTable& defects) : defects_(defects) {}

  std::uint32_t DefectCount() const override { return defects_.count(); }
  std::uint32_t DefectId(std::uint32_t position) const override;
  bool UsesValue(std::uint32_t position, std::uint16_t fieldCode,
                 std::uint32_t valueId) const override;
  void ReplaceValue(std::uint32_t position, std::uint16_t fieldCode, std::uint32_t oldId,
                    std::uint32_t newId) override;
  [[nodiscard]] DBStatus SaveDefect(std::uint32_t position) override;

 private:
  CDefectTable& defects_;
};

// The defect numbers in use, as the numbering dialog asks for them: the deleted defects
// keep theirs in the file but no longer count.
class DefectTableNumbers : public DefectNumbers {
 public:
  explicit DefectTableNumbers(const CDefectTable& defects) : defects_(defects) {}

  std::uint32_t HighestNumber() const override;

 private:
  const CDefectTable& defects_;
};

}  // namespace qm
