// Record payload elements against hand-built bytes, reading with limits and past the
// end, and the memory file the payloads are written through.
#include "session/payload.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>
#include <vector>

#include "session/handle_file.h"
#include "session/item_error.h"

namespace qm {
namespace {

using ByteList = std::vector<std::uint8_t>;

ByteList Repeat(std::size_t n, std::uint8_t b) { return ByteList(n, b); }

ByteList Join(std::initializer_list<ByteList> parts) {
  ByteList out;
  for (const ByteList& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

template <class Write>
ByteList Written(Write&& write) {
  CHandleFile file;
  PayloadWriter out(file);
  write(out);
  return file.Detach();
}

TEST(Payload, ElementsAreBigEndianAndStringsAreCutWhole) {
  EXPECT_EQ(Written([](PayloadWriter& w) {
              w.U16(0x0102);
              w.U8(7);
              w.U32(0xDEADBEEF);
              w.Stamp(0xFFFFFFFF);
              w.Float64(1.5);
              w.Float64(-2.0);
              w.String("abc");
              w.Text("hi");
              w.Raw(ByteList{9, 8});
            }),
            (ByteList{0x01, 0x02, 0x07, 0xDE, 0xAD, 0xBE, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 0xF8,
                      0,    0,    0,    0,    0,    0,    0xC0, 0,    0,    0,    0,    0,    0,
                      0,    0x03, 'a',  'b',  'c',  0,    2,    'h',  'i',  9,    8}));

  // 300 characters keep 255; a two-byte character is not halved at the cut, but text
  // that is not UTF-8 is cut at the byte.
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String(std::string(300, 'x')); }),
            Join({{255}, Repeat(255, 'x')}));
  std::string accents;
  for (int i = 0; i < 128; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(Written([&](PayloadWriter& w) { w.String(accents); }),
            Join({{254}, ByteList(accents.begin(), accents.begin() + 254)}));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String(std::string(300, '\xE9')); }),
            Join({{255}, Repeat(255, 0xE9)}));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String("\xE2\x82\xAC\xE2\x82\xAC", 4); }),
            (ByteList{3, 0xE2, 0x82, 0xAC}))
      << "a field's own capacity cuts too";
  EXPECT_EQ(Written([](PayloadWriter& w) { w.Text(std::string(40000, 't')); }),
            Join({{0x7F, 0xFF}, Repeat(32767, 't')}));
}

TEST(Payload, ReadingKeepsFieldsWhereThereIsNothingToRead) {
  {
    const ByteList bytes = Join({{255}, Repeat(255, 'x'), {3, 'a', 0, 'b'}});
    PayloadReader in(bytes);
    std::string s;
    ASSERT_TRUE(in.String(s, 255));
    EXPECT_EQ(s, std::string(255, 'x'));
    ASSERT_TRUE(in.String(s, 63));
    EXPECT_EQ(s, "a b") << "a 0 byte reads as a blank";
  }
  {
    // A string longer than its field stops the reading for good.
    const ByteList bytes = Join({{100}, Repeat(100, 'y'), {5}});
    PayloadReader in(bytes);
    std::string s = "kept";
    std::uint8_t b = 42;
    EXPECT_FALSE(in.String(s, 63));
    EXPECT_TRUE(in.failed());
    EXPECT_EQ(s, "kept");
    EXPECT_FALSE(in.U8(b));
    EXPECT_EQ(b, 42);
  }
  {
    // A text over the reader's limit leaves its tail to be read as what follows.
    const ByteList bytes{0, 5, 'h', 'e', 'l', 'l', 'o', 0, 7};
    PayloadReader in(bytes);
    std::string t;
    std::uint8_t b = 0;
    std::uint16_t u = 0;
    ASSERT_TRUE(in.Text(t, 3));
    EXPECT_EQ(t, "hel");
    ASSERT_TRUE(in.U8(b));
    EXPECT_EQ(b, 'l');
    ASSERT_TRUE(in.U16(u));
    EXPECT_EQ(u, 0x6F00);
    EXPECT_FALSE(in.failed());
  }
  {
    const ByteList bytes{0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18, 0x12};
    PayloadReader in(bytes);
    double d = 0;
    std::uint16_t u = 0xABCD;
    std::uint8_t b = 1;
    std::string s = "old";
    ASSERT_TRUE(in.Float64(d));
    EXPECT_EQ(d, std::numbers::pi);
    EXPECT_FALSE(in.U16(u)) << "one byte is not a u16";
    EXPECT_EQ(u, 0xABCD);
    EXPECT_FALSE(in.U8(b)) << "the short element took the rest";
    EXPECT_FALSE(in.String(s, 10));
    EXPECT_EQ(s, "old");
    EXPECT_FALSE(in.failed()) << "reading past the end is no failure";
  }
}

TEST(Payload, VersionsOutsideTheRangeThrow) {
  const ByteList two{0, 2};
  const ByteList three{0, 3};
  PayloadReader ok(two);
  EXPECT_EQ(ReadVersion(ok, 1, 2), 2);
  for (const ByteList& bytes : {three, ByteList{}}) {
    PayloadReader in(bytes);
    try {
      ReadVersion(in, 1, 2);
      ADD_FAILURE() << "no throw";
    } catch (const ItemError& e) {
      EXPECT_EQ(e.code(), 1u);
    }
  }
}

TEST(HandleFile, GrowsByItsGrowthSeeksAndHandsOut) {
  CHandleFile f(16);
  f.Write(ByteList{1, 2, 3});
  EXPECT_EQ(f.allocated(), 16u);
  f.Seek(20, CHandleFile::From::kStart);
  f.Write(ByteList{9});
  EXPECT_EQ(f.allocated(), 32u);
  EXPECT_EQ(f.GetLength(), 21u);
  EXPECT_EQ(f.Data()[10], 0) << "a gap reads as zeros";

  EXPECT_EQ(f.Seek(-2, CHandleFile::From::kEnd), 19u);
  ByteList two(2);
  EXPECT_EQ(f.Read(two), 2u);
  EXPECT_EQ(two, (ByteList{0, 9}));
  EXPECT_EQ(f.Read(two), 0u);
  EXPECT_THROW(f.Seek(-22, CHandleFile::From::kCurrent), CHandleFile::BadSeek);
  EXPECT_EQ(f.position(), 21u) << "a refused seek moves nothing";

  f.SetLength(2);
  EXPECT_EQ(f.position(), 2u);
  f.SetLength(4);
  EXPECT_EQ(f.Detach(), (ByteList{1, 2, 0, 0})) << "bytes beyond a cut are not brought back";
  EXPECT_EQ(f.GetLength(), 0u);
  EXPECT_EQ(f.allocated(), 0u);
}

}  // namespace
}  // namespace qm
