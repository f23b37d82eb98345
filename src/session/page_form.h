// The page form of an item: runs of text, rules and spacing on the lines of a page, as a
// plain list that the report engine lays out and draws. Positions are in twips (1440 to
// the inch) from the left edge; lines count from 0 within the item, each one and a half
// lines of text high.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qm {

struct PrintRow {
  enum class Kind : std::uint16_t { kText, kSpace, kRule, kPageBreak };
  enum Style : std::uint16_t { kPlain = 0, kBold = 1, kItalic = 2, kBoldItalic = 3 };
  // A text run at this x continues behind the previous run of its line.
  static constexpr std::int32_t kFollow = -1;

  Kind kind = Kind::kText;
  std::int32_t x = 0;
  std::uint32_t line = 0;
  std::string text;
  std::uint16_t style = kPlain;

  friend bool operator==(const PrintRow&, const PrintRow&) = default;
};

// Builds the rows of one item line by line.
class PageForm {
 public:
  // The three columns of a detail page.
  static constexpr std::int32_t kColumns[3] = {0, 3960, 7920};

  explicit PageForm(std::vector<PrintRow>& rows) : rows_(rows) {}

  // A bold label and its value behind it, at `x` on the current line.
  void Field(std::int32_t x, std::string_view label, std::string_view value) {
    rows_.push_back({PrintRow::Kind::kText, x, line_, std::string(label), PrintRow::kBold});
    rows_.push_back(
        {PrintRow::Kind::kText, PrintRow::kFollow, line_, std::string(value), PrintRow::kPlain});
  }
  // A bold label at the left, and a text of its own lines below it.
  void Block(std::string_view label, std::string_view text) {
    rows_.push_back({PrintRow::Kind::kText, 0, line_, std::string(label), PrintRow::kBold});
    NextLine();
    if (!text.empty()) {
      rows_.push_back({PrintRow::Kind::kText, 0, line_, std::string(text), PrintRow::kPlain});
      NextLine();
    }
  }
  void NextLine() { ++line_; }
  // A horizontal rule on a line of its own.
  void Rule() {
    rows_.push_back({PrintRow::Kind::kRule, 0, line_, {}, PrintRow::kPlain});
    NextLine();
  }
  std::uint32_t line() const { return line_; }
  // Goes on from a line another form ended on.
  void SetLine(std::uint32_t line) { line_ = line; }

 private:
  std::vector<PrintRow>& rows_;
  std::uint32_t line_ = 0;
};

}  // namespace qm
