// The pieces that every form shares.
#include "session/form_text.h"

namespace qm {

std::string QuoteText(std::string_view text) {
  std::string quoted;
  bool lineStart = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (lineStart) quoted += '>';
    lineStart = false;
    quoted += text[i];
    if (text[i] != '\r') continue;
    if (i + 1 < text.size() && text[i + 1] == '\n') quoted += text[++i];
    lineStart = true;
  }
  return quoted;
}

// The three replacements, done one after the other, give the same text as this one
// pass: none of them brings in a character that a later one replaces.
std::string EscapeHtml(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '"':
        out += "&quot;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '<':
        out += "&lt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string CrToCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n')) out += '\n';
  }
  return out;
}

std::string CrLfToCr(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
  }
  return out;
}

void TextLine(std::string& out, std::string_view label, std::string_view value) {
  out += label;
  out += value;
  out += "\r\n";
}

void HtmlCell(std::string& out, int columns, std::string_view label, std::string_view value) {
  out += columns > 1 ? "<TD COLSPAN=" + std::to_string(columns) + ">" : std::string("<TD>");
  out += "<B>";
  out += label;
  out += "</B> ";
  out += EscapeHtml(value);
  out += "</TD>";
}

std::string YesNo(bool value) { return value ? "Yes" : "No"; }

}  // namespace qm
