// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "base/Text.h"

namespace annivo {

// What event files and cards have in common: a text of physical lines, some of which continue the
// one before; a name, parameters with quotes, a colon, a value.

/// Length of the physical line that the text, which is not empty, begins with, its end included.
[[nodiscard]] inline std::size_t lengthOfPhysicalLine(std::string_view text) {
  const void* const found = std::memchr(text.data(), '\n', text.size());
  if (!found) return text.size();
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + 1;
}
[[nodiscard]] inline std::string_view withoutLineEnd(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}
/// Whether what follows continues the line before it.
[[nodiscard]] inline bool isContinuation(std::string_view text) {
  return !text.empty() && (text.front() == ' ' || text.front() == '\t');
}

/// Takes the first parameter off a list ("VALUE=DATE;X=\"a:b\""), which is not empty.
[[nodiscard]] std::string_view takeParameter(std::string_view& parameters);

/// One content line. Its views live until the scanner's next step. It is taken apart when first
/// asked for a part: most lines are only asked whether they have a certain name.
class ContentLine {
 public:
  ContentLine() = default;
  /// A line whose folds are undone already; the text must outlive it.
  explicit ContentLine(std::string_view unfolded) : raw_(unfolded), content_(unfolded) {}

  /// Its bytes in the text, folds and line end included.
  [[nodiscard]] std::string_view raw() const { return raw_; }
  /// As written; "" where the line has no colon.
  [[nodiscard]] std::string_view name() const { return parts().name; }
  /// Between name and colon, e.g. "VALUE=DATE;X=\"a:b\"".
  [[nodiscard]] std::string_view parameters() const { return parts().parameters; }
  /// Unfolded, escapes as written.
  [[nodiscard]] std::string_view value() const { return parts().value; }

  /// Whether this is the property of that (upper-case) name; case does not matter.
  [[nodiscard]] bool named(std::string_view upperCaseName) const {
    // Few lines get beyond the first two conditions.
    const std::size_t size = upperCaseName.size();
    constexpr int kCaseBit = 0x20;
    return content_.size() > size && (content_[size] == ':' || content_[size] == ';') &&
           ((content_[0] ^ upperCaseName[0]) & ~kCaseBit) == 0 && isNamed(upperCaseName);
  }
  /// The value of the first parameter of that (upper-case) name, without its quotes.
  [[nodiscard]] std::optional<std::string_view> parameter(std::string_view upperCaseName) const;

 private:
  friend class ContentLines;
  struct Parts {
    std::string_view name;
    std::string_view parameters;
    std::string_view value;
  };
  [[nodiscard]] const Parts& parts() const {
    if (!isSplit_) split(std::min(content_.find_first_of(":;"), content_.size()));
    return parts_;
  }
  [[nodiscard]] bool isNamed(std::string_view upperCaseName) const;
  void split(std::size_t nameEnd) const;

  std::string_view raw_;
  std::string_view content_;  ///< the line without folds and line end
  mutable Parts parts_;
  mutable bool isSplit_ = false;
};

/// Walks a text line by line, in one pass and linear time. Lines end in CRLF or LF; a line that
/// begins with a space or a tab continues the one before it. A byte order mark at the start belongs
/// to the first line's raw bytes only.
class ContentLines {
 public:
  explicit ContentLines(std::string_view text) : rest_(text) {}
  /// False at the end of the text.
  bool next(ContentLine& line) {
    if (rest_.empty()) return false;
    const char* const begin = rest_.data();
    const std::size_t length = lengthOfPhysicalLine(rest_);
    line.raw_ = {begin, length};
    line.content_ = withoutLineEnd(line.raw_);
    line.isSplit_ = false;
    rest_.remove_prefix(length);
    if (atStart_ || isContinuation(rest_)) finish(line);
    return true;
  }

 private:
  /// For the few lines that are folded or begin with a byte order mark.
  void finish(ContentLine& line);
  void unfold(std::string_view raw);

  std::string_view rest_;
  bool atStart_ = true;
  std::string unfolded_;
};

}  // namespace annivo
