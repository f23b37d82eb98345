// Pieces that every text, HTML and page form shares: the HTML escape, the line-end step,
// the quoting of a reply, and the table frame of the HTML forms.
#pragma once

#include <string>
#include <string_view>

namespace qm {

// Replaces the double quote, then the greater-than sign, then the less-than sign by
// "&quot;", "&gt;" and "&lt;". Nothing else is touched, the ampersand included.
std::string EscapeHtml(std::string_view text);

// A text quoted for a reply: broken into lines at each CR (a LF right behind it stays with
// its line), each line led by ">". An empty text gives an empty quotation.
std::string QuoteText(std::string_view text);

// Makes each lone CR a CR LF; a CR already followed by LF stays as it is. Stored texts end
// their lines with a bare CR, text files with CR LF.
std::string CrToCrLf(std::string_view text);
// And back: each CR LF becomes a bare CR, as stored notes and the change text end lines.
std::string CrLfToCr(std::string_view text);

// A line of a text form: the label, the value, CR LF.
void TextLine(std::string& out, std::string_view label, std::string_view value);

// The frame of every HTML form: a table whose rows each hold a few cells.
inline constexpr std::string_view kHtmlTableOpen =
    "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n";
inline constexpr std::string_view kHtmlTableClose = "</TABLE>\n";
inline constexpr std::string_view kHtmlRowOpen = "<TR BGCOLOR=#FFFFFF>";
inline constexpr std::string_view kHtmlRowClose = "</TR>\n";

// "<TD><B>label</B> value</TD>", with COLSPAN=n in the cell's tag when `columns` is above
// 1. The value is escaped here; the label is written as it is.
void HtmlCell(std::string& out, int columns, std::string_view label, std::string_view value);

// "Yes" or "No".
std::string YesNo(bool value);

}  // namespace qm
