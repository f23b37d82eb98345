// The store subcommands of quillmark-cli.
#include "command.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "args.h"
#include "json.h"
#include "session/db_doc.h"
#include "store/checksum.h"
#include "store/project_store.h"
#include "store/store_error.h"

namespace qm::cli {

namespace {

Tag TagArgument(const std::string& text) {
  auto tag = ParseTag(text);
  if (!tag) throw UsageError{"A table tag is four printable characters, not \"" + text + "\"."};
  return *tag;
}

std::vector<std::uint8_t> ReadAll(std::istream& in) {
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                   std::istreambuf_iterator<char>());
}

// The payload of put and update: from --from PATH or standard input.
std::vector<std::uint8_t> PayloadArgument(const Args& args) {
  if (auto path = args.Value("from")) {
    std::ifstream in(*path, std::ios::binary);
    if (!in) throw UsageError{"Cannot read " + *path + "."};
    return ReadAll(in);
  }
  return ReadAll(std::cin);
}

void InfoJson(CProjectStore& store, std::ostream& out) {
  const ProjectHeader& h = store.header();
  Json j;
  j.Open('{');
  j.Key("version").Number(h.version);
  j.Key("multiUser").Number(h.multiUser);
  j.Key("tableDirectoryOffset").Number(h.tableDirectoryOffset);
  j.Key("lockAreaOffset").Number(h.lockAreaOffset);
  j.Key("holeBlockOffset").Number(h.holeBlockOffset);
  j.Key("userBlockOffset").Number(h.userBlockOffset);
  j.Key("changeCounter").Number(h.changeCounter);
  j.Key("lockBlockOffset").Number(h.lockBlockOffset);
  j.Key("tables").Open('[');
  for (Tag tag : store.TableTags()) {
    TableEntry e;
    Check(store.GetTableEntry(tag, e));
    j.Open('{');
    j.Key("tag").String(TagText(tag));
    j.Key("count").Number(e.count);
    j.Key("nextId").Number(e.nextId);
    j.Key("indexOffset").Number(e.indexOffset);
    j.Key("revision").Number(e.revision);
    j.Close('}');
  }
  j.Close(']');
  j.Key("unusedBytes").Number(store.GetUnusedBytes());
  j.Close('}');
  out << j.text() << "\n";
}

void DumpJson(CProjectStore& store, Tag tag, std::ostream& out) {
  std::vector<IndexEntry> index;
  Check(store.ReadIndex(tag, index));
  Json j;
  j.Open('{');
  j.Key("tag").String(TagText(tag));
  j.Key("records").Open('[');
  for (const IndexEntry& e : index) {
    std::vector<std::uint8_t> payload;
    DBStatus s = store.ReadRecord(tag, e.id, payload);
    j.Open('{');
    j.Key("id").Number(e.id);
    j.Key("offset").Number(e.offset);
    j.Key("size").Number(e.size);
    if (s == DBStatus::kOk) {
      j.Key("checksum").Number(Checksum::Of(payload.data(), payload.size()));
      j.Key("payload").String(Hex(payload.data(), payload.size()));
    } else {
      j.Key("checksum").Null();
      j.Key("payload").Null();
      j.Key("status").Number(Code(s));
    }
    j.Close('}');
  }
  j.Close(']');
  j.Close('}');
  out << j.text() << "\n";
}

std::string DateTime(std::uint32_t stamp) {
  if (stamp == platform::kNoStamp) return "";
  const platform::CivilTime t = platform::CivilFromStamp(stamp);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour,
                t.minute, t.second);
  return text;
}

void UsersJson(CProjectStore& store, std::ostream& out) {
  std::vector<std::uint32_t> ids;
  Check(store.GetLoggedInUsers(ids));
  Json j;
  j.Open('[');
  for (const UserSlot& slot : store.userBlock().slots) {
    if (slot.userId == 0) continue;
    j.Open('{');
    j.Key("userId").Number(slot.userId);
    j.Key("lockSlot").Number(slot.lockSlot);
    j.Key("alive").Bool(store.IsLockNumberAlive(slot.lockSlot));
    j.Close('}');
  }
  j.Close(']');
  out << j.text() << "\n";
}

void LocksJson(CProjectStore& store, std::ostream& out) {
  std::vector<RecordLockEntry> entries;
  Check(store.ReadRecordLocks(entries));
  Json j;
  j.Open('[');
  for (const RecordLockEntry& e : entries) {
    if (e.table == kFreeTag) continue;
    j.Open('{');
    j.Key("table").String(TagText(e.table));
    j.Key("id").Number(e.id);
    j.Key("userId").Number(e.userId);
    j.Key("lockSlot").Number(e.lockSlot);
    j.Key("lockedAt").String(DateTime(e.lockedAt - kLockStampOffset));
    j.Key("alive").Bool(store.IsLockNumberAlive(e.lockSlot));
    j.Close('}');
  }
  j.Close(']');
  out << j.text() << "\n";
}

void NoticesJson(CProjectStore& store, std::ostream& out) {
  std::vector<IndexEntry> index;
  Check(store.ReadIndex(kMessagesTag, index));
  Json j;
  j.Open('[');
  for (const IndexEntry& e : index) {
    std::vector<std::uint8_t> payload;
    Check(store.ReadRecord(kMessagesTag, e.id, payload));
    payload.resize(ChangeNotice::kSize, 0);
    const ChangeNotice n = ChangeNotice::Decode(payload.data());
    j.Open('{');
    j.Key("id").Number(e.id);
    j.Key("kind").Number(n.kind);
    j.Key("sender").Number(n.sender);
    j.Key("data").String(
        Hex(n.data.data(), std::min<std::uint32_t>(n.dataLength, ChangeNotice::kMaxData)));
    j.Close('}');
  }
  j.Close(']');
  out << j.text() << "\n";
}

// Reads every record of every table under one claim per table; a line per damaged one.
int CheckFile(CProjectStore& store, std::ostream& out) {
  int damaged = 0;
  for (Tag tag : store.TableTags()) {
    Check(store.LockDatabase(tag));
    std::vector<IndexEntry> index;
    DBStatus s = store.ReadIndex(tag, index);
    if (s != DBStatus::kOk) {
      out << TagText(tag) << " 0 " << Code(s) << "\n";
      ++damaged;
    }
    TableEntry entry;
    Check(store.GetTableEntry(tag, entry));
    // The purge of change notices empties the index of msgs and leaves its directory
    // count as it was, so only the other tables' counts must agree.
    if (s == DBStatus::kOk && tag != kMessagesTag && entry.count != index.size()) {
      out << TagText(tag) << ": record count " << entry.count << " in the directory, "
          << index.size() << " in the index\n";
      ++damaged;
    }
    std::uint32_t highest = 0;
    for (const IndexEntry& e : index) highest = std::max(highest, e.id);
    if (highest >= entry.nextId) {
      out << TagText(tag) << ": next id " << entry.nextId
          << " in the directory, but the index holds id " << highest << "\n";
      ++damaged;
    }
    std::vector<std::uint8_t> payload;
    for (const IndexEntry& e : index) {
      s = store.ReadRecord(tag, e.id, payload);
      if (s != DBStatus::kOk) {
        out << TagText(tag) << " " << e.id << " " << Code(s) << "\n";
        ++damaged;
      }
    }
    Check(store.UnlockDatabase());
  }
  return damaged == 0 ? 0 : 1;
}

// The table named by the word after FILE.
Tag TableArgument(const Context& c) { return TagArgument(c.args.positional()[3]); }

int Create(Context& c) {
  const std::string& path = c.args.positional()[2];
  if (std::ifstream(path).good()) {
    c.err << ExistingFileText(path) << "\n";
    return 1;
  }
  CProjectStore store(c.ui);
  const std::uint16_t multiUser = c.args.Flag("single-user") ? 0 : 1;
  if (DBStatus s = store.Create(path, multiUser); s != DBStatus::kOk) {
    c.err << OpeningText(s, path) << "\n";
    return 2;
  }
  c.out << "Created " << (multiUser ? "multi-user" : "single-user") << " project file " << path
        << "\n";
  return 0;
}

int AddTable(CProjectStore& store, Context& c) {
  const Tag tag = TableArgument(c);
  Check(store.BeginAccess(true));
  DBStatus s = store.AddTable(tag, c.args.positional()[3]);
  DBStatus ended = store.EndAccess(s == DBStatus::kOk);
  Check(s);
  Check(ended);
  return 0;
}

int Add(CProjectStore& store, Context& c) {
  const Tag tag = TableArgument(c);
  std::uint32_t id = 0;
  if (auto from = c.args.Value("from")) {
    Check(store.AddRecordFromFile(tag, *from, &id));
  } else {
    const auto payload = ReadAll(std::cin);
    Check(store.AddRecord(tag, payload, &id));
  }
  c.out << id << "\n";
  return 0;
}

int Put(CProjectStore& store, Context& c) {
  const Tag tag = TableArgument(c);
  const std::uint32_t id = c.args.RequiredNumber("id");
  const std::uint32_t mode = c.args.RequiredNumber("mode");
  if (mode < 1 || mode > 3) {
    throw UsageError{"--mode is 1 (keep), 2 (keep if shorter) or 3 (replace)."};
  }
  if (id == 0) throw UsageError{"--id must not be 0."};
  Check(store.PutRecord(tag, PayloadArgument(c.args), id, static_cast<PutMode>(mode)));
  return 0;
}

int Read(CProjectStore& store, Context& c) {
  std::vector<std::uint8_t> payload;
  Check(store.ReadRecord(TableArgument(c), c.args.RequiredNumber("id"), payload));
  c.out.write(reinterpret_cast<const char*>(payload.data()),
              static_cast<std::streamsize>(payload.size()));
  return 0;
}

// A store command that prints what `show` writes of the open file.
template <void (*show)(CProjectStore&, std::ostream&)>
int Show(CProjectStore& store, Context& c) {
  show(store, c.out);
  return 0;
}

}  // namespace

const std::vector<Command>& StoreCommands() {
  static const std::vector<Command> kRows = {
      {"store create FILE", "[--single-user]", "", Create},
      {"store add-table FILE TAG", "", "", AddTable},
      {"store add FILE TAG", "[--from PATH]", "prints the new id", Add},
      {"store put FILE TAG", "--id N --mode 1|2|3 [--from PATH]", "", Put},
      {"store update FILE TAG", "--id N [--from PATH]", "",
       [](CProjectStore& store, Context& c) {
         Check(store.UpdateRecord(TableArgument(c), c.args.RequiredNumber("id"),
                                  PayloadArgument(c.args)));
         return 0;
       }},
      {"store delete FILE TAG", "--id N", "",
       [](CProjectStore& store, Context& c) {
         Check(store.DeleteRecord(TableArgument(c), c.args.RequiredNumber("id")));
         return 0;
       }},
      {"store read FILE TAG", "--id N", "payload to standard output", Read},
      {"store info FILE", "", "header and tables as JSON", Show<InfoJson>},
      {"store dump FILE TAG", "", "every record as JSON",
       [](CProjectStore& store, Context& c) {
         DumpJson(store, TableArgument(c), c.out);
         return 0;
       }},
      {"store check FILE", "", "reads every record; lists damaged ones",
       [](CProjectStore& store, Context& c) { return CheckFile(store, c.out); }},
      {"store users FILE", "", "the logged-in clients as JSON", Show<UsersJson>},
      {"store locks FILE", "", "the record locks as JSON", Show<LocksJson>},
      {"store notices FILE", "", "the change notices as JSON", Show<NoticesJson>},
  };
  return kRows;
}

}  // namespace qm::cli
