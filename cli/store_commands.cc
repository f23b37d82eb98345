// The store subcommands of quillmark-cli.
#include "store_commands.h"

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

namespace qm::cli {

namespace {

// A failed operation: exit 1 with its status and a sentence.
struct OperationFailed {
  DBStatus status;
};

void Check(DBStatus status) {
  if (status != DBStatus::kOk) throw OperationFailed{status};
}

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
    if (s == DBStatus::kOk && entry.count != index.size()) {
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

}  // namespace

const char* StoreUsage() {
  return "  store create FILE [--single-user]\n"
         "  store add-table FILE TAG\n"
         "  store add FILE TAG [--from PATH]          prints the new id\n"
         "  store put FILE TAG --id N --mode 1|2|3 [--from PATH]\n"
         "  store update FILE TAG --id N [--from PATH]\n"
         "  store delete FILE TAG --id N\n"
         "  store read FILE TAG --id N                payload to standard output\n"
         "  store info FILE                           header and tables as JSON\n"
         "  store dump FILE TAG                       every record as JSON\n"
         "  store check FILE                          reads every record; lists damaged ones\n"
         "  store users FILE                          the logged-in clients as JSON\n"
         "  store locks FILE                          the record locks as JSON\n"
         "  store notices FILE                        the change notices as JSON\n";
}

int RunStore(const std::vector<std::string>& words, ui::Ui& ui, std::ostream& out,
             std::ostream& err) {
  try {
    Args args(words, {"from", "id", "mode"});
    const auto& pos = args.positional();
    if (pos.empty()) throw UsageError{std::string("store commands:\n") + StoreUsage()};
    const std::string& command = pos[0];
    if (pos.size() < 2) throw UsageError{"usage: quillmark-cli store " + command + " FILE ..."};
    const std::string& path = pos[1];
    CProjectStore store(ui);

    if (command == "create") {
      args.ExpectPositional(2, "store create FILE [--single-user]");
      if (std::ifstream(path).good()) {
        err << ExistingFileText(path) << "\n";
        return 1;
      }
      const std::uint16_t multiUser = args.Flag("single-user") ? 0 : 1;
      if (DBStatus s = store.Create(path, multiUser); s != DBStatus::kOk) {
        err << OpeningText(s, path) << "\n";
        return 2;
      }
      out << "Created " << (multiUser ? "multi-user" : "single-user") << " project file " << path
          << "\n";
      return 0;
    }

    if (DBStatus s = store.Open(path); s != DBStatus::kOk) {
      err << OpeningText(s, path) << "\n";
      return 2;
    }
    if (command == "info") {
      args.ExpectPositional(2, "store info FILE");
      InfoJson(store, out);
    } else if (command == "users") {
      args.ExpectPositional(2, "store users FILE");
      UsersJson(store, out);
    } else if (command == "locks") {
      args.ExpectPositional(2, "store locks FILE");
      LocksJson(store, out);
    } else if (command == "notices") {
      args.ExpectPositional(2, "store notices FILE");
      NoticesJson(store, out);
    } else if (command == "check") {
      args.ExpectPositional(2, "store check FILE");
      return CheckFile(store, out);
    } else if (command == "add-table") {
      args.ExpectPositional(3, "store add-table FILE TAG");
      const Tag tag = TagArgument(pos[2]);
      Check(store.BeginAccess(true));
      DBStatus s = store.AddTable(tag, pos[2]);
      DBStatus ended = store.EndAccess(s == DBStatus::kOk);
      Check(s);
      Check(ended);
    } else if (command == "dump") {
      args.ExpectPositional(3, "store dump FILE TAG");
      DumpJson(store, TagArgument(pos[2]), out);
    } else if (command == "add") {
      args.ExpectPositional(3, "store add FILE TAG [--from PATH]");
      const Tag tag = TagArgument(pos[2]);
      std::uint32_t id = 0;
      if (auto from = args.Value("from")) {
        Check(store.AddRecordFromFile(tag, *from, &id));
      } else {
        const auto payload = ReadAll(std::cin);
        Check(store.AddRecord(tag, payload, &id));
      }
      out << id << "\n";
    } else if (command == "put") {
      args.ExpectPositional(3, "store put FILE TAG --id N --mode 1|2|3 [--from PATH]");
      const Tag tag = TagArgument(pos[2]);
      const std::uint32_t id = args.RequiredNumber("id");
      const std::uint32_t mode = args.RequiredNumber("mode");
      if (mode < 1 || mode > 3)
        throw UsageError{"--mode is 1 (keep), 2 (keep if shorter) or 3 (replace)."};
      if (id == 0) throw UsageError{"--id must not be 0."};
      Check(store.PutRecord(tag, PayloadArgument(args), id, static_cast<PutMode>(mode)));
    } else if (command == "update") {
      args.ExpectPositional(3, "store update FILE TAG --id N [--from PATH]");
      Check(store.UpdateRecord(TagArgument(pos[2]), args.RequiredNumber("id"),
                               PayloadArgument(args)));
    } else if (command == "delete") {
      args.ExpectPositional(3, "store delete FILE TAG --id N");
      Check(store.DeleteRecord(TagArgument(pos[2]), args.RequiredNumber("id")));
    } else if (command == "read") {
      args.ExpectPositional(3, "store read FILE TAG --id N");
      std::vector<std::uint8_t> payload;
      Check(store.ReadRecord(TagArgument(pos[2]), args.RequiredNumber("id"), payload));
      out.write(reinterpret_cast<const char*>(payload.data()),
                static_cast<std::streamsize>(payload.size()));
    } else {
      throw UsageError{"Unknown store command \"" + command + "\".\nstore commands:\n" +
                       StoreUsage()};
    }
    return 0;
  } catch (const UsageError& e) {
    err << e.message << "\n";
    return 64;
  } catch (const OperationFailed& f) {
    err << "Error " << Code(f.status) << ": " << StatusSentence(f.status) << "\n";
    return 1;
  }
}

}  // namespace qm::cli
