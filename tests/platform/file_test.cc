// Files and their one-byte locks, between handles of one process and between processes.
#include "platform/file.h"

#include <gtest/gtest.h>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace qm::platform {
namespace {

TEST(File, PositionedReadsAndWrites) {
  test::TempDir dir;
  auto f = FileSystem::Real().Open(dir.File("a"), OpenMode::kCreateReadWrite);
  const char text[] = "abcdef";
  f->WriteAt(10, text, 6);
  EXPECT_EQ(f->Length(), 16u);
  char buffer[8] = {};
  EXPECT_EQ(f->ReadAt(12, buffer, 8), 4u) << "short only at the end";
  EXPECT_EQ(std::string(buffer, 4), "cdef");
  EXPECT_EQ(f->ReadAt(0, buffer, 2), 2u);
  EXPECT_EQ(buffer[0], 0) << "the gap reads as zeros";
  EXPECT_EQ(f->ReadAt(16, buffer, 1), 0u);
  f->Flush();
  f.reset();
  EXPECT_EQ(FileSystem::Real().Open(dir.File("a"), OpenMode::kRead)->Length(), 16u);
  try {
    FileSystem::Real().Open(dir.File("missing"), OpenMode::kReadWrite);
    FAIL() << "opened a missing file";
  } catch (const FileError& e) {
    EXPECT_EQ(e.code(), ENOENT);
  }
}

// Two handles in one process conflict, a handle does not see its own lock as another's,
// and closing a handle gives its locks up. A lock of another process dies with it.
TEST(File, LocksConflictBetweenHandlesAndDieWithTheirProcess) {
  test::TempDir dir;
  const std::string path = dir.File("l");
  auto a = FileSystem::Real().Open(path, OpenMode::kCreateReadWrite);
  auto b = FileSystem::Real().Open(path, OpenMode::kReadWrite);
  ASSERT_TRUE(a->TryLockByte(256));
  EXPECT_TRUE(a->TryLockByte(256)) << "a handle may take its own lock again";
  EXPECT_FALSE(b->TryLockByte(256));
  EXPECT_TRUE(b->IsRangeLockedByOther(256, 1));
  EXPECT_TRUE(b->IsRangeLockedByOther(250, 20));
  EXPECT_FALSE(b->IsRangeLockedByOther(257, 20));
  EXPECT_FALSE(a->IsRangeLockedByOther(256, 1));
  a->UnlockByte(256);
  EXPECT_FALSE(b->IsRangeLockedByOther(256, 1));
  ASSERT_TRUE(b->TryLockByte(256));
  b.reset();
  EXPECT_TRUE(a->TryLockByte(256));

  test::Child other([&path](test::Child::Channel& c) {
    auto f = FileSystem::Real().Open(path, OpenMode::kReadWrite);
    c.Send(f->TryLockByte(300) ? "y" : "n");
    c.Receive();
    return 0;
  });
  ASSERT_EQ(other.Receive(), "y");
  EXPECT_TRUE(a->IsRangeLockedByOther(300, 1));
  EXPECT_FALSE(a->TryLockByte(300));
  other.Kill();
  EXPECT_FALSE(a->IsRangeLockedByOther(300, 1));
  EXPECT_TRUE(a->TryLockByte(300));
}

}  // namespace
}  // namespace qm::platform
