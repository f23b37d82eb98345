// RecordItem, the base of every item that a table loads from a store record: its id,
// the bookkeeping every kind shares, and the packing of its payload.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "session/payload.h"

namespace qm {

class ItemTable;

class RecordItem {
 public:
  RecordItem() = default;
  RecordItem(const RecordItem&) = delete;
  RecordItem& operator=(const RecordItem&) = delete;
  // Leaves every table that still holds it, so that no working copy keeps a dangling
  // pointer.
  virtual ~RecordItem();

  // The payload: the newest layout's version first, then the fields.
  virtual void WriteTo(PayloadWriter& out) const = 0;
  // Reads a payload of any layout the class knows; throws ItemError for another.
  virtual void ReadFrom(PayloadReader& in) = 0;

  virtual void SetId(std::uint32_t id) { id_ = id; }
  std::uint32_t GetId() const { return id_; }

  // The text of a list window's column; false when the item has none for it.
  virtual bool GetColumnText(std::uint16_t column, std::string& out) const;
  virtual std::string GetName() const;

  // Whether the item is assigned to the user (defects are); the check for other users'
  // changes alerts that user.
  virtual bool IsAssignedTo(std::uint32_t /*userId*/) const { return false; }

  // Called once the store holds what the item holds: after a save, after a reload.
  virtual void AfterSave() {}
  // Called once the store has the deletion.
  virtual void AfterDelete() {}

  // Reads a payload into the item, as from the clipboard or the store.
  virtual void Read(PayloadReader& in) { ReadFrom(in); }
  // The payload, written through a memory file that grows by 1024 bytes.
  std::vector<std::uint8_t> Pack() const;
  // Takes over what `other`, an item of the same class, holds: its payload and its id.
  void CopyPayloadFrom(const RecordItem& other);

  // The tables the item stands in, its own and any working copies; kept by the tables.
  void AddToTable(ItemTable& table);
  void RemoveFromTable(ItemTable& table);
  const std::vector<ItemTable*>& owners() const { return owners_; }

  bool isNew = false;  // a record the current user has not seen
  std::uint32_t createdAt = platform::kNoStamp;
  std::uint32_t changedAt = platform::kNoStamp;
  bool deleted = false;  // still in the file, marked deleted
  bool isChanged = false;
  bool isAssigned = false;  // assigned to the current user by someone else, not seen yet

 private:
  std::vector<ItemTable*> owners_;
  std::uint32_t id_ = 0;  // 0 until added to the store
};

}  // namespace qm
