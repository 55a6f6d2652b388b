// Text from the machine made safe to place in the report's HTML. Every name, path, title and
// message the report shows comes from disks, volumes, tools or file names, so none of it may
// become markup: `escape` turns it into text content (or an attribute value), and `scriptJson`
// turns a JSON document into the body of a <script type="application/json"> block that no
// string inside it can close.
//
//   html += "<td>" + HtmlText::escape(node.path) + "</td>";
//   html += "<script type=\"application/json\" id=\"data\">" + HtmlText::scriptJson(doc) + "</script>";
#pragma once

#include "common/Json.h"

#include <string>
#include <string_view>

namespace corvel::HtmlText {

// &, <, >, " and ' as character references; bytes that are not valid UTF-8 and control
// characters other than tab and newline become U+FFFD, so a hostile name shows as text.
std::string escape(std::string_view text);

// Compact JSON with invalid UTF-8 replaced and <, >, & and the line separators U+2028/U+2029
// written as \u escapes (they only occur inside strings, where the escape means the same).
std::string scriptJson(const Json& document);

}  // namespace corvel::HtmlText
