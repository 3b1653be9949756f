// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace annivo {

/// Whether two ASCII texts are equal without case; `upper` is in upper case.
[[nodiscard]] constexpr bool equalsIgnoringCase(std::string_view text, std::string_view upper) {
  if (text.size() != upper.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i] >= 'a' && text[i] <= 'z' ? static_cast<char>(text[i] - 32) : text[i];
    if (c != upper[i]) return false;
  }
  return true;
}

/// One content line of an iCalendar text. The views live until the scanner's next step.
struct ContentLine {
  std::string_view raw;         ///< its bytes in the text, folds and line end included
  std::string_view name;        ///< as written; "" where the line has no colon
  std::string_view parameters;  ///< between name and colon, e.g. "VALUE=DATE;X=\"a:b\""
  std::string_view value;       ///< unfolded, escapes as written

  /// Whether this is the property of that (upper-case) name; case does not matter.
  [[nodiscard]] bool named(std::string_view upperCaseName) const {
    return equalsIgnoringCase(name, upperCaseName);
  }
  /// The value of the first parameter of that (upper-case) name, without its quotes.
  [[nodiscard]] std::optional<std::string_view> parameter(std::string_view upperCaseName) const;
};

/// Walks a text line by line, in one pass and linear time. Lines end in CRLF or LF; a line that
/// begins with a space or a tab continues the one before it. A byte order mark at the start belongs
/// to the first line's raw bytes only.
class ContentLines {
 public:
  explicit ContentLines(std::string_view text) : text_(text) {}
  /// False at the end of the text.
  bool next(ContentLine& line);

 private:
  std::string_view unfolded(std::string_view raw);

  std::string_view text_;
  std::size_t position_ = 0;
  std::string unfolded_;
};

}  // namespace annivo
