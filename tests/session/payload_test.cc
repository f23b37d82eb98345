// Record payload elements against hand-built bytes, and reading with limits and past the
// end.
#include "session/payload.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include "session/handle_file.h"
#include "session/item_error.h"

namespace qm {
namespace {

using ByteList = std::vector<std::uint8_t>;

// `head`, then the bytes of `body`.
ByteList Cat(ByteList head, std::string_view body) {
  head.insert(head.end(), body.begin(), body.end());
  return head;
}

template <class Write>
ByteList Written(Write&& write) {
  CHandleFile file;
  PayloadWriter out(file);
  write(out);
  return file.Detach();
}

TEST(Payload, ElementsAreBigEndianAndStringsAreCutWhole) {
  EXPECT_EQ(
      Written([](PayloadWriter& w) {
        w.U16(0x0102);
        w.U8(7);
        w.U32(0xDEADBEEF);
        w.Stamp(0xFFFFFFFF);
        w.Float64(-1.5);
        w.String("abc");
        w.Text("hi");
        w.Raw(ByteList{9, 8});
      }),
      (ByteList{0x01, 0x02, 0x07, 0xDE, 0xAD, 0xBE, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0xBF, 0xF8, 0, 0,
                0,    0,    0,    0,    0x03, 'a',  'b',  'c',  0,    2,    'h',  'i',  9,    8}));

  // A two-byte character is not halved at the cut; text that is not UTF-8 is cut at the
  // byte, even where its bytes look like the inside of a character.
  std::string accents;
  for (int i = 0; i < 128; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(Written([&](PayloadWriter& w) { w.String(accents); }),
            Cat({254}, accents.substr(0, 254)));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String(std::string(300, '\xA9')); }),
            Cat({255}, std::string(255, '\xA9')));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String("\xE2\x82\xAC\xE2\x82\xAC", 4); }),
            (ByteList{3, 0xE2, 0x82, 0xAC}))
      << "a field's own capacity cuts too";
  EXPECT_EQ(Written([](PayloadWriter& w) { w.Text(std::string(40000, 't')); }),
            Cat({0x7F, 0xFF}, std::string(32767, 't')));
}

TEST(Payload, ReadingKeepsFieldsWhereThereIsNothingToRead) {
  std::string s;
  std::uint8_t b = 42;
  std::uint16_t u = 0;
  double d = 0;

  // A 0 byte reads as a blank; a string longer than its field stops the reading for good.
  ByteList bytes = Cat({255}, std::string(255, 'x'));
  bytes.insert(bytes.end(), {3, 'a', 0, 'b', 100});
  bytes = Cat(bytes, std::string(100, 'y') + "\x05");
  PayloadReader strings(bytes);
  ASSERT_TRUE(strings.String(s, 255));
  ASSERT_TRUE(strings.String(s, 63));
  EXPECT_FALSE(strings.String(s, 63));
  EXPECT_FALSE(strings.U8(b));
  EXPECT_TRUE(strings.failed());
  EXPECT_EQ(s, "a b");
  EXPECT_EQ(b, 42);

  // A text over the reader's limit leaves its tail to be read as what follows; an
  // element that runs past the end reads as nothing and takes the rest with it.
  const ByteList more{0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18, 0,
                      5,    'h',  'e',  'l',  'l',  'o',  0,    7};
  PayloadReader rest(more);
  ASSERT_TRUE(rest.Float64(d));
  EXPECT_EQ(d, std::numbers::pi);
  ASSERT_TRUE(rest.Text(s, 3));
  ASSERT_TRUE(rest.U8(b));
  ASSERT_TRUE(rest.U16(u));
  EXPECT_EQ(s + static_cast<char>(b), "hell");
  EXPECT_EQ(u, 0x6F00);
  EXPECT_FALSE(rest.U16(u)) << "one byte is not a u16";
  EXPECT_FALSE(rest.U8(b)) << "the short element took the rest";
  EXPECT_EQ(u, 0x6F00);
  EXPECT_FALSE(rest.failed()) << "reading past the end is no failure";

  // A text's 0 bytes read as blanks; a length below 0 as a signed number stops the reading.
  const ByteList texts{0, 3, 'a', 0, 'b', 0x80, 0, 'x', 'y'};
  PayloadReader signedLength(texts);
  ASSERT_TRUE(signedLength.Text(s, 100));
  EXPECT_EQ(s, "a b");
  EXPECT_FALSE(signedLength.Text(s, 100));
  EXPECT_TRUE(signedLength.failed());
  EXPECT_EQ(s, "a b");

  // The version of every payload: one outside the range, or none, throws.
  const ByteList two{0, 2}, three{0, 3}, none;
  PayloadReader ok(two), high(three), empty(none);
  EXPECT_EQ(ReadVersion(ok, 1, 2), 2);
  EXPECT_THROW(ReadVersion(high, 1, 2), ItemError);
  EXPECT_THROW(ReadVersion(empty, 1, 2), ItemError);
}

}  // namespace
}  // namespace qm
