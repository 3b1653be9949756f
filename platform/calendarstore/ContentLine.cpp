// SPDX-License-Identifier: MIT
#include "platform/calendarstore/ContentLine.h"

#include <cstring>

namespace annivo {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool continues(char c) { return c == ' ' || c == '\t'; }

/// Where the physical line that holds `position` ends, after its LF.
std::size_t endOfLine(std::string_view text, std::size_t position) {
  const void* found = std::memchr(text.data() + position, '\n', text.size() - position);
  if (!found) return text.size();
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + 1;
}

std::string_view withoutLineEnd(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

/// The end of the parameter that begins at `start`: a ';', a ':' or the end; quotes hide both.
std::size_t endOfParameter(std::string_view text, std::size_t start) {
  bool quoted = false;
  for (std::size_t i = start; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') quoted = !quoted;
    if (!quoted && (c == ';' || c == ':')) return i;
  }
  return text.size();
}

}  // namespace

bool ContentLine::isNamed(std::string_view upperCaseName) const {
  const std::size_t size = upperCaseName.size();
  if (!equalsIgnoringCase(content_.substr(0, size), upperCaseName)) return false;
  return content_[size] == ':' || name().size() == size;
}

ContentLine::Parts ContentLine::split(std::string_view content) {
  std::size_t nameEnd = 0;
  while (nameEnd < content.size() && content[nameEnd] != ':' && content[nameEnd] != ';') ++nameEnd;
  std::size_t colon = nameEnd;
  while (colon < content.size() && content[colon] == ';') {
    colon = endOfParameter(content, colon + 1);
  }
  if (colon == content.size()) return {};
  Parts parts{
      .name = content.substr(0, nameEnd), .parameters = {}, .value = content.substr(colon + 1)};
  if (colon > nameEnd) parts.parameters = content.substr(nameEnd + 1, colon - nameEnd - 1);
  return parts;
}

std::optional<std::string_view> ContentLine::parameter(std::string_view upperCaseName) const {
  const std::string_view all = parameters();
  for (std::size_t start = 0; start < all.size();) {
    const std::size_t end = endOfParameter(all, start);
    const std::string_view one = all.substr(start, end - start);
    start = end + 1;
    const std::size_t equals = one.find('=');
    if (equals == one.npos || !equalsIgnoringCase(one.substr(0, equals), upperCaseName)) continue;
    const std::string_view text = one.substr(equals + 1);
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
  }
  return std::nullopt;
}

bool ContentLines::next(ContentLine& line) {
  if (position_ == text_.size()) return false;
  const std::size_t start = position_;
  position_ = endOfLine(text_, position_);
  std::string_view content = withoutLineEnd(text_.substr(start, position_ - start));
  if (position_ < text_.size() && continues(text_[position_])) {
    do {
      position_ = endOfLine(text_, position_);
    } while (position_ < text_.size() && continues(text_[position_]));
    content = unfolded(text_.substr(start, position_ - start));
  }
  line.raw_ = text_.substr(start, position_ - start);
  if (start == 0 && content.starts_with(kByteOrderMark)) {
    content.remove_prefix(kByteOrderMark.size());
  }
  line.content_ = content;
  line.parts_.reset();
  return true;
}

std::string_view ContentLines::unfolded(std::string_view raw) {
  unfolded_.clear();
  unfolded_.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size();) {
    const std::size_t end = endOfLine(raw, i);
    const std::string_view physical = withoutLineEnd(raw.substr(i, end - i));
    unfolded_ += i == 0 ? physical : physical.substr(1);
    i = end;
  }
  return unfolded_;
}

}  // namespace annivo
