// The preference file: its line format read from and written to hand-built text, the
// whole-file replacement, and where the file lives.
#include "platform/preference_file.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "support/temp_dir.h"

namespace qm::platform {
namespace {

using Kind = PreferenceKind;
using test::ReadText;
using test::WriteText;

constexpr std::string_view kHeader =
    "# Quillmark preferences, one value a line: Name=string:TEXT or Name=binary:HEXBYTES\n";

// Every damaged line is left out and costs nothing else; the tolerated forms of a file
// edited elsewhere read.
TEST(PreferenceFile, ReadsHandWrittenText) {
  test::TempDir dir;
  const std::string path = dir.File("p.conf");
  WriteText(path,
            "\xEF\xBB\xBF# comment=string:no\n\nFlag=binary:0100A0ff\nCrlf=string:windows\r\n"
            "Path=string:/home/ann/Proj\\\\ects\\nTwo\\r\\x09\\xE9\\xfF=x\nEmpty=string:\n"
            "NoBytes=binary:\nNoEquals string:x\nNumber=number:1\nBadEscape=string:a\\tb\n"
            "Trailing=string:a\\\nShortHex=string:\\x4\nOddHex=binary:010\nNotHex=binary:0g\n"
            "Caf\xC3\xA9=string:non-ASCII name\n=string:no name\nFlag=binary:02000000\n"
            "Lower=String:kind is case-sensitive\nLast=string:no LF at the end");
  PreferenceFile file(path);
  ASSERT_EQ(file.Load(), PreferenceFile::LoadResult::kRead);
  // The later line of a name wins.
  const std::vector<PreferenceValue> expected = {
      {"Flag", Kind::kBinary, std::string("\x02\x00\x00\x00", 4)},
      {"Crlf", Kind::kString, "windows"},
      {"Path", Kind::kString, "/home/ann/Proj\\ects\nTwo\r\t\xE9\xFF=x"},
      {"Empty", Kind::kString, ""},
      {"NoBytes", Kind::kBinary, ""},
      {"Last", Kind::kString, "no LF at the end"}};
  EXPECT_EQ(file.values(), expected);
  EXPECT_EQ(file.GetString("Path"), expected[2].bytes);
  EXPECT_EQ(file.GetString("Flag"), std::nullopt) << "a binary value is not a string";
  EXPECT_EQ(file.GetBinary("Flag"), (std::vector<std::uint8_t>{2, 0, 0, 0}));
  EXPECT_EQ(file.GetBinary("Path"), std::nullopt);
  EXPECT_EQ(file.GetString("Missing"), std::nullopt);
}

TEST(PreferenceFile, WritesTheLineFormat) {
  test::TempDir dir;
  const std::string path = dir.File("p.conf");
  PreferenceFile file(path);
  file.SetString("Text", "first a string");
  file.SetString("Escaped", "C:\\Proj\r\nTab\tDel\x7F|\x01");
  file.SetString("Utf8", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x90\x9B");
  // A lone Windows-1252 byte, an overlong slash, a surrogate, a cut euro sign.
  file.SetString("NotUtf8", "\xE9|\xC0\xAF|\xED\xA0\x80|\xE2\x82");
  const std::uint8_t bytes[] = {0x01, 0x00, 0xAB, 0xFF};
  file.SetBinary("Bytes", bytes);
  file.SetString("Empty", "");
  file.SetBinary("Text", bytes);  // in place, the other kind
  ASSERT_TRUE(file.Save());
  EXPECT_EQ(
      ReadText(path),
      std::string(kHeader) +
          "Text=binary:0100abff\nEscaped=string:C:\\\\Proj\\r\\nTab\\x09Del\\x7f|\\x01\n"
          "Utf8=string:caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x90\x9B\n"
          "NotUtf8=string:\\xe9|\\xc0\\xaf|\\xed\\xa0\\x80|\\xe2\\x82\nBytes=binary:0100abff\n"
          "Empty=string:\n");

  struct stat st;
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u) << "the file holds passwords";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1)
      << "no temporary file is left behind";

  // Awkward strings come back as they were; names that could not be read back are refused.
  std::string everyByte;
  for (int b = 0; b < 256; ++b) everyByte += static_cast<char>(b);
  const std::vector<std::string> texts = {
      everyByte,    "\\",           "\\n",       "line\nline\n", "\r\n\r\n", "\\x41",
      "trailing\\", "# not a note", "=string:x", " spaced ",     "\xC3",     "\xC3\xA9\xC3",
  };
  PreferenceFile awkward(path);
  for (std::size_t i = 0; i < texts.size(); ++i)
    awkward.SetString("V" + std::to_string(i), texts[i]);
  for (const char* name : {"", "#Name", "A=B", "Two\nLines", "Caf\xC3\xA9", "Tab\t"}) {
    EXPECT_THROW(awkward.SetString(name, "x"), std::invalid_argument) << name;
  }
  awkward.SetString("Main Window Pos #2", "x");
  ASSERT_TRUE(awkward.Save());
  PreferenceFile again(path);
  ASSERT_EQ(again.Load(), PreferenceFile::LoadResult::kRead);
  EXPECT_EQ(again.values(), awkward.values());
}

// A missing file and one that cannot be read are told apart, and both leave no values,
// even those of an earlier Load. A save that cannot replace the file says so and leaves
// what was there as it was, with no temporary file beside it.
TEST(PreferenceFile, MissingUnreadableAndUnwritableFiles) {
  test::TempDir dir;
  const std::string path = dir.File("p.conf");
  WriteText(path, "A=string:a\n");
  PreferenceFile file(path);
  ASSERT_EQ(file.Load(), PreferenceFile::LoadResult::kRead);
  ASSERT_EQ(file.values().size(), 1u);
  std::filesystem::remove(path);
  EXPECT_EQ(file.Load(), PreferenceFile::LoadResult::kMissing);
  EXPECT_TRUE(file.values().empty());
  WriteText(path, "A=string:a\n");
  ASSERT_EQ(file.Load(), PreferenceFile::LoadResult::kRead);
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_EQ(file.Load(), PreferenceFile::LoadResult::kUnreadable);
  EXPECT_TRUE(file.values().empty());

  std::filesystem::create_directories(dir.File("taken/p.conf/inside"));
  PreferenceFile taken(dir.File("taken/p.conf"));
  taken.SetString("A", "a");
  EXPECT_FALSE(taken.Save()) << "a folder is in the way of the rename";
  EXPECT_TRUE(std::filesystem::is_directory(dir.File("taken/p.conf/inside")));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.File("taken")), {}), 1);
}

// Another process reading while this one saves sees either the old file or the new one,
// never a mixture or a beginning.
TEST(PreferenceFile, AReaderNeverSeesHalfAFile) {
  test::TempDir dir;
  const std::string path = dir.File("p.conf");
  constexpr int kValues = 400;
  auto save_round = [&](int round) {
    PreferenceFile file(path);
    for (int i = 0; i < kValues; ++i) {
      file.SetString("Value" + std::to_string(i), std::string(40, static_cast<char>('a' + round)));
    }
    return file.Save();
  };
  ASSERT_TRUE(save_round(0));
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    for (int round = 1; round < 100; ++round) {
      if (!save_round(round % 26)) _exit(1);
    }
    _exit(0);
  }
  int torn = 0;
  int reads = 0;
  int status = 0;
  for (; waitpid(child, &status, WNOHANG) == 0; ++reads) {
    PreferenceFile file(path);
    const auto& values = file.values();
    torn += file.Load() != PreferenceFile::LoadResult::kRead || values.size() != kValues ||
            std::any_of(values.begin(), values.end(),
                        [&](const PreferenceValue& v) { return v.bytes != values[0].bytes; });
  }
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the writer failed";
  EXPECT_EQ(torn, 0) << "of " << reads << " reads";
}

// XDG_CONFIG_HOME when it is an absolute path, else HOME's .config, else the home folder
// of the user list.
TEST(PreferenceFile, DefaultPathFollowsTheEnvironment) {
  std::optional<std::string> saved[2];
  const char* names[2] = {"XDG_CONFIG_HOME", "HOME"};
  for (int i = 0; i < 2; ++i) {
    if (const char* value = std::getenv(names[i])) saved[i] = value;
  }
  setenv("XDG_CONFIG_HOME", "/cfg", 1);
  setenv("HOME", "/home/ann", 1);
  EXPECT_EQ(PreferenceFile::DefaultPath(), "/cfg/Corvane Software/Quillmark.conf");
  setenv("XDG_CONFIG_HOME", "", 1);
  EXPECT_EQ(PreferenceFile::DefaultPath(), "/home/ann/.config/Corvane Software/Quillmark.conf");
  setenv("XDG_CONFIG_HOME", "relative/cfg", 1);
  EXPECT_EQ(PreferenceFile::DefaultPath(), "/home/ann/.config/Corvane Software/Quillmark.conf");
  unsetenv("XDG_CONFIG_HOME");
  unsetenv("HOME");
  if (const passwd* user = getpwuid(getuid())) {
    EXPECT_EQ(PreferenceFile::DefaultPath(),
              std::string(user->pw_dir) + "/.config/Corvane Software/Quillmark.conf");
  }

  for (int i = 0; i < 2; ++i) {
    if (saved[i]) setenv(names[i], saved[i]->c_str(), 1);
  }
}

}  // namespace
}  // namespace qm::platform
