// Files and their one-byte locks, between handles of one process and between processes.
#include "platform/file.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

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
// and closing a handle gives its locks up.
TEST(File, LocksConflictBetweenHandles) {
  test::TempDir dir;
  auto a = FileSystem::Real().Open(dir.File("l"), OpenMode::kCreateReadWrite);
  auto b = FileSystem::Real().Open(dir.File("l"), OpenMode::kReadWrite);
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
}

// A lock dies with its process, however the process ends.
TEST(File, ALockDiesWithItsProcess) {
  test::TempDir dir;
  const std::string path = dir.File("p");
  auto mine = FileSystem::Real().Open(path, OpenMode::kCreateReadWrite);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    auto f = FileSystem::Real().Open(path, OpenMode::kReadWrite);
    char ok = f->TryLockByte(300) ? 'y' : 'n';
    (void)!write(ready[1], &ok, 1);
    for (;;) pause();
  }
  char ok = 0;
  ASSERT_EQ(read(ready[0], &ok, 1), 1);
  EXPECT_EQ(ok, 'y');
  EXPECT_TRUE(mine->IsRangeLockedByOther(300, 1));
  EXPECT_FALSE(mine->TryLockByte(300));
  kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_FALSE(mine->IsRangeLockedByOther(300, 1));
  EXPECT_TRUE(mine->TryLockByte(300));
  close(ready[0]);
  close(ready[1]);
}

}  // namespace
}  // namespace qm::platform
