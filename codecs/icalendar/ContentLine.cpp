// SPDX-License-Identifier: MIT
#include "codecs/icalendar/ContentLine.h"

namespace annivo {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

std::string_view takeParameter(std::string_view& parameters) {
  const std::size_t end = endOfParameter(parameters, 0);
  const std::string_view taken = parameters.substr(0, end);
  parameters.remove_prefix(std::min(end + 1, parameters.size()));
  return taken;
}

bool ContentLine::isNamed(std::string_view upperCaseName) const {
  const std::size_t size = upperCaseName.size();
  if (!equalsIgnoringCase({content_.data(), size}, upperCaseName)) return false;
  if (!isSplit_) split(size);
  return parts_.name.size() == size;
}

void ContentLine::split(std::size_t nameEnd) const {
  isSplit_ = true;
  parts_ = {};
  std::size_t colon = nameEnd;
  while (colon < content_.size() && content_[colon] == ';') {
    colon = endOfParameter(content_, colon + 1);
  }
  if (colon == content_.size()) return;
  parts_.name = content_.substr(0, nameEnd);
  if (colon > nameEnd) parts_.parameters = content_.substr(nameEnd + 1, colon - nameEnd - 1);
  parts_.value = content_.substr(colon + 1);
}

std::optional<std::string_view> ContentLine::parameter(std::string_view upperCaseName) const {
  for (std::string_view rest = parameters(); !rest.empty();) {
    const std::string_view one = takeParameter(rest);
    const std::size_t equals = one.find('=');
    if (equals == one.npos || !equalsIgnoringCase(one.substr(0, equals), upperCaseName)) continue;
    const std::string_view text = one.substr(equals + 1);
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
  }
  return std::nullopt;
}

void ContentLines::finish(ContentLine& line) {
  if (isContinuation(rest_)) {
    const char* const begin = line.raw_.data();
    do {
      rest_.remove_prefix(lengthOfPhysicalLine(rest_));
    } while (isContinuation(rest_));
    line.raw_ = {begin, rest_.data()};
    unfold(line.raw_);
    line.content_ = unfolded_;
  }
  if (atStart_ && line.content_.starts_with(kByteOrderMark)) {
    line.content_.remove_prefix(kByteOrderMark.size());
  }
  atStart_ = false;
}

void ContentLines::unfold(std::string_view raw) {
  unfolded_.clear();
  unfolded_.reserve(raw.size());
  for (std::size_t skipped = 0; !raw.empty(); skipped = 1) {
    const std::size_t length = lengthOfPhysicalLine(raw);
    unfolded_ += withoutLineEnd(raw.substr(0, length)).substr(skipped);
    raw.remove_prefix(length);
  }
}

}  // namespace annivo
