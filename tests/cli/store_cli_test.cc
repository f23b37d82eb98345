// quillmark-cli store, run as the real program: its output forms, what check finds, and
// what running clients leave in the file.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "cli/cli_run.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

class StoreCli : public ::testing::Test {
 protected:
  CliResult Run(const std::string& args, const std::string& input = "") {
    return RunCli(dir, args, input);
  }
  std::string File() { return "'" + dir.File("p.qmk") + "'"; }

  TempDir dir;
};

TEST_F(StoreCli, RecordsGoInAndComeOutAsTheyWere) {
  ASSERT_EQ(Run("store create " + File()).code, 0);
  EXPECT_EQ(Run("store info " + File()).out,
            "{\"version\":358,\"multiUser\":1,\"tableDirectoryOffset\":392,\"lockAreaOffset\":128,"
            "\"holeBlockOffset\":3880,\"userBlockOffset\":1044,\"changeCounter\":0,"
            "\"lockBlockOffset\":4928,\"tables\":[{\"tag\":\"msgs\",\"count\":0,\"nextId\":1,"
            "\"indexOffset\":7240,\"revision\":0}],\"unusedBytes\":0}\n");
  ASSERT_EQ(Run("store add-table " + File() + " dfct").code, 0);
  EXPECT_EQ(Run("store add " + File() + " dfct", std::string("A\0B", 3)).out, "1\n");
  std::ofstream(dir.File("two"), std::ios::binary) << "two";
  EXPECT_EQ(Run("store add " + File() + " dfct --from '" + dir.File("two") + "'").out, "2\n");
  // Checksums from the byte table: 4844 + 0001 + 2421 for "A\0B", B401 + C53A + C5F2 for
  // "two", modulo 65536.
  EXPECT_EQ(Run("store dump " + File() + " dfct").out,
            "{\"tag\":\"dfct\",\"records\":[{\"id\":1,\"offset\":10352,\"size\":23,"
            "\"checksum\":27750,\"payload\":\"410042\"},{\"id\":2,\"offset\":10375,\"size\":23,"
            "\"checksum\":16173,\"payload\":\"74776f\"}]}\n");
  EXPECT_EQ(Run("store read " + File() + " dfct --id 1").out, std::string("A\0B", 3));

  ASSERT_EQ(Run("store put " + File() + " dfct --id 1 --mode 3", "put").code, 0);
  ASSERT_EQ(Run("store update " + File() + " dfct --id 2", "changed").code, 0);
  ASSERT_EQ(Run("store delete " + File() + " dfct --id 2").code, 0);
  ASSERT_EQ(Run("store put " + File() + " dfct --id 40 --mode 2", "forty").code, 0);
  EXPECT_EQ(Run("store read " + File() + " dfct --id 1").out, "put");
  EXPECT_EQ(Run("store read " + File() + " dfct --id 40").out, "forty");
  const std::string info = Run("store info " + File()).out;
  EXPECT_NE(info.find("{\"tag\":\"dfct\",\"count\":2,\"nextId\":41,"), std::string::npos) << info;
  EXPECT_NE(info.find("\"changeCounter\":7,"), std::string::npos) << info;
  const CliResult check = Run("store check " + File());
  EXPECT_EQ(check.code, 0);
  EXPECT_EQ(check.out, "");
}

// A damaged record is named by check, one line each, and the exit is 1.
TEST_F(StoreCli, CheckNamesWhatIsDamaged) {
  ASSERT_EQ(Run("store create " + File() + " --single-user").code, 0);
  ASSERT_EQ(Run("store add-table " + File() + " dfct").code, 0);
  ASSERT_EQ(Run("store add " + File() + " dfct", "one").code, 0);
  ASSERT_EQ(Run("store add " + File() + " dfct", "two").code, 0);
  auto bytes = ReadFileBytes(dir.File("p.qmk"));
  bytes[bytes.size() - 1] ^= 0x20;
  WriteFileBytes(dir.File("p.qmk"), bytes);
  CliResult r = Run("store check " + File());
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, "dfct 2 1036\n");
  // A directory entry one record and one id behind its index, as a writer stopped between
  // writing the two leaves it, is named; the index still decides what the table holds.
  const std::string info = Run("store info " + File()).out;
  const std::size_t at = info.find("\"tableDirectoryOffset\":") + 23;
  const std::size_t entry = std::stoul(info.substr(at)) + 12 + 20;
  bytes[entry + 7] -= 1;   // count 2 -> 1
  bytes[entry + 11] -= 1;  // nextId 3 -> 2
  WriteFileBytes(dir.File("p.qmk"), bytes);
  r = Run("store check " + File());
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out,
            "dfct: record count 1 in the directory, 2 in the index\n"
            "dfct: next id 2 in the directory, but the index holds id 2\n"
            "dfct 2 1036\n");
}

// What a running client leaves in the file, as the administrator sees it.
TEST_F(StoreCli, ShowsUsersLocksAndNoticesOfRunningClients) {
  ASSERT_EQ(Run("store create " + File()).code, 0);
  const std::string path = dir.File("p.qmk");
  Child client([path](Child::Channel& c) {
    ScriptedUi ui;
    CProjectStore store(ui);
    if (store.Open(path) != DBStatus::kOk || store.LoginUser(12) != DBStatus::kOk) return 1;
    const std::uint8_t data[8] = {0x64, 0x66, 0x63, 0x74, 0, 0, 0, 9};
    if (store.LockRecord(MakeTag("dfct"), 9, 12) != DBStatus::kOk) return 2;
    if (store.PostMessage(12, 1002, data) != DBStatus::kOk) return 3;
    c.Send("ready");
    c.Receive();
    return 0;
  });
  ASSERT_EQ(client.Receive(), "ready");
  EXPECT_EQ(Run("store users " + File()).out,
            "[{\"userId\":12,\"lockSlot\":200,\"alive\":true}]\n");
  const std::string locks = Run("store locks " + File()).out;
  EXPECT_TRUE(std::regex_match(
      locks,
      std::regex(
          "\\[\\{\"table\":\"dfct\",\"id\":9,\"userId\":12,\"lockSlot\":200,"
          "\"lockedAt\":\"20[0-9]{2}-[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-5][0-9]\","
          "\"alive\":true\\}\\]\n")))
      << locks;
  EXPECT_EQ(Run("store notices " + File()).out,
            "[{\"id\":1,\"kind\":1002,\"sender\":12,\"data\":\"6466637400000009\"}]\n");

  client.Kill();
  // The dead client's slot is cleared by the next look; its lock shows as not alive.
  EXPECT_EQ(Run("store users " + File()).out, "[]\n");
  EXPECT_NE(Run("store locks " + File()).out.find("\"alive\":false"), std::string::npos);
  EXPECT_EQ(Run("store notices " + File()).out, "[]\n") << "nobody is logged in: purged";
  EXPECT_EQ(Run("store check " + File()).out, "") << "a purge keeps the count of msgs";
}

}  // namespace
}  // namespace qm::test
