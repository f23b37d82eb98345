// Several clients of one file, as objects of one process and as separate processes: the
// write lock, indexes that stay true whoever changed them, single-user files, claims, life
// signs and user slots, record locks, change notices and the change counter.
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <thread>

#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

std::vector<std::uint8_t> P(const std::string& s) { return {s.begin(), s.end()}; }

// Entry n of the lock block of the file at `path`, and such an entry once released.
std::vector<std::uint8_t> LockEntry(const std::string& path, std::size_t n) {
  const auto f = ReadFileBytes(path);
  return {f.begin() + 4928 + 8 + 18 * n, f.begin() + 4928 + 26 + 18 * n};
}
const std::vector<std::uint8_t> kReleased = Bytes().tag("????").u32(0).u32(0).u16(0).u32(~0u).b;

// A multi-user file with the table dfct and its record 1, "first".
class Clients : public ::testing::Test {
 protected:
  void SetUp() override {
    path = dir.File("shared.qmk");
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
    ASSERT_EQ(store.AddRecord(kDfct, P("first"), nullptr), DBStatus::kOk);
  }

  // A child that opens the file, logs in as user 7, claims dfct or locks its records 1 and 2,
  // says what that answered, and waits for the word to end.
  std::unique_ptr<Child> Client(bool claim) {
    auto child = std::make_unique<Child>([this, claim](Child::Channel& c) {
      CProjectStore store(ui);
      if (store.Open(path) != DBStatus::kOk || store.LoginUser(7) != DBStatus::kOk) return 10;
      DBStatus s = claim ? store.LockDatabase(kDfct) : store.LockRecord(kDfct, 1, 7);
      if (!claim && s == DBStatus::kOk) s = store.LockRecord(kDfct, 2, 7);
      c.Send(std::to_string(Code(s)));
      c.Receive();
      return 0;
    });
    EXPECT_EQ(child->Receive(), "0");
    return child;
  }

  TempDir dir;
  ScriptedUi ui;
  std::string path;
};

TEST_F(Clients, TheWriteLockKeepsOthersOutUntilItIsReleased) {
  FakeClock clock;
  clock.pauseTicks = 600;  // ten seconds a pause: the five minutes pass quickly
  CProjectStore holder(ui), waiter(ui, platform::FileSystem::Real(), clock),
      late(ui, platform::FileSystem::Real(), clock);
  ASSERT_EQ(holder.Open(path), DBStatus::kOk);
  ASSERT_EQ(waiter.Open(path), DBStatus::kOk);

  ASSERT_EQ(holder.BeginAccess(true), DBStatus::kOk);
  ASSERT_EQ(holder.AddRecord(kDfct, P("inside"), nullptr), DBStatus::kOk);
  ASSERT_EQ(holder.AddRecord(kDfct, P("bracket"), nullptr), DBStatus::kOk);
  EXPECT_EQ(waiter.AddRecord(kDfct, P("waits"), nullptr), DBStatus::kBusy);
  EXPECT_GE(clock.pauses, 30);
  EXPECT_LE(clock.pauses, 31);
  EXPECT_EQ(late.Open(path), DBStatus::kBusy) << "an opening writes the header too";
  ASSERT_EQ(holder.EndAccess(true), DBStatus::kOk);

  std::uint32_t id = 0;
  ASSERT_EQ(waiter.AddRecord(kDfct, P("after"), &id), DBStatus::kOk);
  EXPECT_EQ(id, 4u);
  std::uint32_t count = 0;
  ASSERT_EQ(holder.CountRecords(kDfct, count), DBStatus::kOk);
  EXPECT_EQ(count, 4u);

  // On the system's clock, a waiting client goes on as soon as the lock is let go.
  CProjectStore patient(ui);
  ASSERT_EQ(patient.Open(path), DBStatus::kOk);
  ASSERT_EQ(holder.BeginAccess(true), DBStatus::kOk);
  std::thread release([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(holder.EndAccess(true), DBStatus::kOk);
  });
  EXPECT_EQ(patient.AddRecord(kDfct, P("patient"), nullptr), DBStatus::kOk);
  release.join();
}

// Each client keeps the index it holds while the file's head says the same; a change by
// another client must always be seen, whatever kind of change it was.
TEST_F(Clients, EachClientSeesTheIndexOnDisk) {
  CProjectStore a(ui), b(ui);
  ASSERT_EQ(a.Open(path), DBStatus::kOk);
  ASSERT_EQ(b.Open(path), DBStatus::kOk);
  std::map<std::uint32_t, std::string> truth = {{1, "first"}};
  std::uint32_t id = 0;
  for (int round = 0; round < 300; ++round) {
    CProjectStore& writer = round % 3 == 0 ? a : b;
    CProjectStore& reader = round % 3 == 0 ? b : a;
    const std::string text = std::string("r").append(std::to_string(round));
    if (round % 7 == 3) {
      const auto victim = truth.begin()->first;
      ASSERT_EQ(writer.DeleteRecord(kDfct, victim), DBStatus::kOk);
      truth.erase(victim);
    } else if (round % 5 == 2) {
      const auto target = truth.rbegin()->first;
      const std::string changed = truth[target] + (round % 2 ? "+" : "");
      ASSERT_EQ(writer.UpdateRecord(kDfct, target, P(changed)), DBStatus::kOk);
      truth[target] = changed;
    } else {
      ASSERT_EQ(writer.AddRecord(kDfct, P(text), &id), DBStatus::kOk);
      truth[id] = text;
    }
    std::vector<IndexEntry> index;
    ASSERT_EQ(reader.ReadIndex(kDfct, index), DBStatus::kOk);
    ASSERT_EQ(index.size(), truth.size()) << "round " << round;
    for (const IndexEntry& e : index) {
      std::vector<std::uint8_t> out;
      ASSERT_EQ(reader.ReadRecord(kDfct, e.id, out), DBStatus::kOk) << "round " << round;
      ASSERT_EQ(std::string(out.begin(), out.end()), truth[e.id]);
    }
  }
}

// A single-user file is held by its client from the opening, or from the switch to
// single-user, until it closes or switches back: the others wait and are told it is busy.
TEST_F(Clients, ASingleUserFileIsHeldByItsClient) {
  FakeClock clock;
  clock.pauseTicks = 6000;
  CProjectStore owner(ui), other(ui, platform::FileSystem::Real(), clock),
      late(ui, platform::FileSystem::Real(), clock);
  ASSERT_EQ(owner.Open(path), DBStatus::kOk);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  ASSERT_EQ(owner.SetMultiUser(0), DBStatus::kOk);
  EXPECT_FALSE(owner.multiUser());
  std::vector<std::uint8_t> out;
  EXPECT_EQ(other.ReadRecord(kDfct, 1, out), DBStatus::kBusy);
  ASSERT_EQ(owner.AddRecord(kDfct, P("alone"), nullptr), DBStatus::kOk);
  ASSERT_EQ(owner.Close(), DBStatus::kOk);
  ASSERT_EQ(owner.Open(path), DBStatus::kOk);
  EXPECT_EQ(late.Open(path), DBStatus::kBusy);
  ASSERT_EQ(owner.SetMultiUser(1), DBStatus::kOk);
  ASSERT_EQ(other.ReadRecord(kDfct, 2, out), DBStatus::kOk);
  EXPECT_EQ(std::string(out.begin(), out.end()), "alone");
  EXPECT_EQ(other.header().multiUser, 1);
  EXPECT_EQ(late.Open(path), DBStatus::kOk);
}

TEST_F(Clients, AClaimDoesNotKeepWritersOutAndTenIsTheLimit) {
  auto reader = Client(true);
  CProjectStore writer(ui);
  ASSERT_EQ(writer.Open(path), DBStatus::kOk);
  ASSERT_EQ(writer.AddRecord(kDfct, P("while claimed"), nullptr), DBStatus::kOk);
  ASSERT_EQ(writer.LockDatabase(kDfct), DBStatus::kOk);
  EXPECT_EQ(BeU16(ReadFileBytes(path), 373 + 2), 1u) << "the second claim takes slot 1";
  ASSERT_EQ(writer.UnlockDatabase(), DBStatus::kOk);

  std::vector<std::unique_ptr<CProjectStore>> readers;
  for (int i = 0; i < 9; ++i) {
    readers.push_back(std::make_unique<CProjectStore>(ui));
    ASSERT_EQ(readers.back()->Open(path), DBStatus::kOk);
    ASSERT_EQ(readers.back()->LockDatabase(kDfct), DBStatus::kOk) << i;
  }
  EXPECT_EQ(writer.LockDatabase(kDfct), DBStatus::kNoClaimSlot);
  const auto f = ReadFileBytes(path);
  for (std::size_t n = 0; n < 9; ++n) EXPECT_EQ(BeU16(f, 373 + 2 * n), n);
  EXPECT_EQ(f[391], 0);
  EXPECT_EQ(f[392], 't') << "the tenth claim leaves the directory alone";
  EXPECT_EQ(writer.LockDatabase(MakeTag("none")), DBStatus::kNoSuchTable);
  reader->Send("end");
  EXPECT_EQ(reader->Wait(), 0);
  EXPECT_EQ(writer.LockDatabase(kDfct), DBStatus::kOk) << "a claim ends with its process";
}

TEST_F(Clients, ADeadClientsSlotAndLockAreTakenOver) {
  auto other = Client(false);

  CProjectStore me(ui);
  ASSERT_EQ(me.Open(path), DBStatus::kOk);
  ASSERT_EQ(me.LoginUser(8), DBStatus::kOk);
  bool in = false;
  ASSERT_EQ(me.IsUserLoggedIn(7, in), DBStatus::kOk);
  EXPECT_TRUE(in);
  std::vector<std::uint32_t> users;
  ASSERT_EQ(me.GetLoggedInUsers(users), DBStatus::kOk);
  EXPECT_EQ(users, (std::vector<std::uint32_t>{7, 8}));
  EXPECT_EQ(me.LoginUser(7), DBStatus::kAlreadyLoggedIn);
  EXPECT_EQ(me.LockRecord(kDfct, 1, 8), DBStatus::kRecordLocked);
  bool locked = false;
  LockHolder holder;
  ASSERT_EQ(me.IsRecordLocked(kDfct, 1, locked, &holder), DBStatus::kOk);
  EXPECT_TRUE(locked);
  EXPECT_EQ(holder.userId, 7u);
  EXPECT_GE(holder.lockSlot, 200u);
  EXPECT_TRUE(me.IsLockNumberAlive(holder.lockSlot));

  other->Kill();
  EXPECT_FALSE(me.IsLockNumberAlive(holder.lockSlot));
  const std::uint32_t before = BeU32(ReadFileBytes(path), 1044 + 12);
  ASSERT_EQ(me.IsUserLoggedIn(7, in), DBStatus::kOk);
  EXPECT_FALSE(in) << "the next refresh clears the slot of a dead client";
  EXPECT_EQ(BeU32(ReadFileBytes(path), 1044 + 12), before + 1);
  // Its locks no longer count: a look clears the entry, a lock takes it over.
  ASSERT_EQ(me.IsRecordLocked(kDfct, 2, locked), DBStatus::kOk);
  EXPECT_FALSE(locked);
  EXPECT_EQ(LockEntry(path, 1), kReleased);
  ASSERT_EQ(me.LockRecord(kDfct, 1, 8), DBStatus::kOk);
  EXPECT_EQ(me.LockRecord(kDfct, 1, 8), DBStatus::kRecordLocked) << "not re-entrant";
  ASSERT_EQ(me.IsRecordLocked(kDfct, 1, locked, &holder), DBStatus::kOk);
  EXPECT_EQ(holder.userId, 8u);
  ASSERT_EQ(me.UnlockUserRecords(8), DBStatus::kOk);
  ASSERT_EQ(me.IsRecordLocked(kDfct, 1, locked), DBStatus::kOk);
  EXPECT_FALSE(locked);
  ASSERT_EQ(me.LogoutUser(8), DBStatus::kOk);
  EXPECT_EQ(me.LogoutUser(8), DBStatus::kNotLoggedIn);
}

TEST_F(Clients, TheLockBlockHoldsAHundredAndTwentyEightLocks) {
  CProjectStore me(ui);
  ASSERT_EQ(me.Open(path), DBStatus::kOk);
  ASSERT_EQ(me.LoginUser(3), DBStatus::kOk);
  for (std::uint32_t id = 1; id <= 128; ++id) ASSERT_EQ(me.LockRecord(kDfct, id, 3), DBStatus::kOk);
  EXPECT_EQ(me.LockRecord(kDfct, 129, 3), DBStatus::kRecordLocked);
  ASSERT_EQ(me.UnlockRecord(kDfct, 64), DBStatus::kOk);
  ASSERT_EQ(me.LockRecord(kDfct, 129, 3), DBStatus::kOk);
  EXPECT_EQ(BeU32(LockEntry(path, 63), 4), 129u) << "entry 64 was reused";
  ASSERT_EQ(me.UnlockRecord(kDfct, 1), DBStatus::kOk);
  EXPECT_EQ(BeU32(ReadFileBytes(path), 4928 + 4), 131u) << "every lock and unlock is counted";
}

TEST_F(Clients, NoticesReachEveryOtherClientOnce) {
  CProjectStore poster(ui), second(ui), third(ui);
  for (std::uint32_t user : {1, 2, 3}) {
    CProjectStore& client = user == 1 ? poster : user == 2 ? second : third;
    ASSERT_EQ(client.Open(path), DBStatus::kOk);
    ASSERT_EQ(client.LoginUser(user), DBStatus::kOk);
  }
  // The notices a client has not read yet, as "sender:kind:data length".
  const auto read = [](CProjectStore& client) {
    std::string notices;
    Notice n;
    while (client.GetNextMessage(n) == DBStatus::kOk) {
      notices += " " + std::to_string(n.sender) + ":" + std::to_string(n.kind) + ":" +
                 std::to_string(n.data.size());
    }
    return notices;
  };
  EXPECT_FALSE(second.HasChanged());
  const std::uint8_t data[8] = {0, 0, 0, 1, 0, 0, 0, 2};
  ASSERT_EQ(poster.PostMessage(1, 1002, data), DBStatus::kOk);
  ASSERT_EQ(poster.PostMessage(1, 1002, data), DBStatus::kOk);
  EXPECT_TRUE(second.HasChanged());
  EXPECT_FALSE(second.HasChanged());
  for (CProjectStore* reader : {&second, &third}) {
    EXPECT_EQ(read(*reader), " 1:1002:8 1:1002:8");
    EXPECT_EQ(read(*reader), "") << "read once";
  }
  EXPECT_EQ(read(poster), "") << "never by the poster";

  const std::uint32_t counter = BeU32(ReadFileBytes(path), 24);
  const std::uint8_t nine[9] = {};
  ASSERT_EQ(third.PostMessage(4, 1001, nine), DBStatus::kOk);
  std::uint32_t count = 0;
  ASSERT_EQ(third.CountRecords(kMessagesTag, count), DBStatus::kOk);
  EXPECT_EQ(count, 2u) << "nine bytes of data are not posted";
  ASSERT_EQ(third.PostMessage(4, 1001, std::vector<std::uint8_t>{'h', 'i'}), DBStatus::kOk);
  EXPECT_EQ(BeU32(ReadFileBytes(path), 24), counter + 2) << "a notice moves the counter by two";
  EXPECT_EQ(read(second), " 4:1001:2");
}

TEST(ClientsSingleUser, EverythingAnswersAtOnceAndLocksNothing) {
  TempDir dir;
  ScriptedUi ui;
  CProjectStore store(ui);
  bool flag = true;
  ASSERT_EQ(store.Create(dir.File("s.qmk"), 0), DBStatus::kOk);
  const auto before = ReadFileBytes(dir.File("s.qmk"));
  EXPECT_EQ(store.LoginUser(1), DBStatus::kOk);
  EXPECT_EQ(store.LockRecord(kDfct, 1, 1), DBStatus::kOk);
  EXPECT_EQ(store.LockRecord(kDfct, 1, 1), DBStatus::kOk);
  EXPECT_EQ(store.IsRecordLocked(kDfct, 1, flag), DBStatus::kOk);
  EXPECT_FALSE(flag);
  EXPECT_EQ(store.PostMessage(1, 1002, std::vector<std::uint8_t>{1}), DBStatus::kOk);
  Notice n;
  EXPECT_EQ(store.GetNextMessage(n), DBStatus::kNoMessage);
  EXPECT_FALSE(store.HasChanged());
  EXPECT_EQ(store.LockDatabase(kDfct), DBStatus::kOk);
  EXPECT_EQ(ReadFileBytes(dir.File("s.qmk")), before) << "nothing was written";
}

}  // namespace
}  // namespace qm::test
