// SPDX-License-Identifier: MIT
#include "codecs/xml/XMLElements.h"

namespace annivo {

namespace {

constexpr auto npos = std::string_view::npos;

Error malformed(const char* reason) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 0,
          .description = {},
          .failureReason = reason};
}

}  // namespace

bool XMLElements::skipPast(std::string_view token, std::size_t from) {
  const std::size_t found = text_.find(token, from);
  if (found == npos) return false;
  at_ = found + token.size();
  return true;
}

bool XMLElements::skipMarkup() {
  if (at("</")) return skipPast(">", at_ + 2);
  if (at("<?")) return skipPast("?>", at_ + 2);
  if (at("<!--")) return skipPast("-->", at_ + 4);
  if (at("<![CDATA[")) return skipPast("]]>", at_ + 9);
  for (std::size_t i = at_ + 1; i < text_.size(); ++i) {
    const char c = text_[i];
    if (c == '>') {
      at_ = i + 1;
      return true;
    }
    if (c == '"' || c == '\'') i = text_.find(c, i + 1);
    if (i == npos) break;
  }
  return false;
}

bool XMLElements::skipMiscellany() {
  for (;;) {
    const char* const end = text_.data() + text_.size();
    const char* next = text_.data() + at_;
    while (next != end && (*next == ' ' || *next == '\n' || *next == '\t' || *next == '\r')) ++next;
    at_ = text_.size() - static_cast<std::size_t>(end - next);
    if (!at("<!--") && !at("<?")) return true;
    if (!skipMarkup()) return false;
  }
}

bool XMLElements::skipDocumentType() {
  const std::size_t begin = at_;
  return skipMarkup() && text_.substr(begin, at_ - begin).find('[') == npos;
}

std::string_view XMLElements::nameAt(std::size_t begin) const {
  const std::size_t end = text_.find_first_of(" \t\r\n/>", begin);
  return text_.substr(begin, (end == npos ? text_.size() : end) - begin);
}

Result<void> XMLElements::enter(std::string_view root) {
  root_ = root;
  if (at("\xEF\xBB\xBF")) at_ += 3;
  if (!skipMiscellany()) return malformed("A comment does not end.");
  if (at("<!DOCTYPE")) {
    if (!skipDocumentType()) return malformed("Its document type declares something of its own.");
    if (!skipMiscellany()) return malformed("A comment does not end.");
  }
  if (!at("<") || nameAt(at_ + 1) != root) return malformed("It has another root element.");
  if (!skipMarkup()) return malformed("It ends within a tag.");
  if (text_[at_ - 2] == '/') return malformed("Its root element is empty.");
  return {};
}

Result<std::optional<XMLElements::Element>> XMLElements::next() {
  if (!skipMiscellany()) return malformed("A comment does not end.");
  if (!at("<") || at("<!")) return malformed("It ends early or has text between its objects.");
  const std::size_t begin = at_;
  if (at("</")) {
    rootEnd_ = begin;
    if (nameAt(begin + 2) != root_) return malformed("Its tags do not match.");
    if (!skipMarkup() || !skipMiscellany()) return malformed("It ends within a tag.");
    if (at_ != text_.size()) return malformed("More follows its root element.");
    return std::optional<Element>();
  }
  const std::string_view name = nameAt(begin + 1);
  if (!skipPlainElement(name)) {
    if (auto skipped = skipElement(); !skipped) return skipped.error();
  }
  return std::optional(Element{name, begin, at_});
}

bool XMLElements::skipPlainElement(std::string_view name) {
  for (std::size_t tag = text_.find('<', at_ + 1); tag != npos; tag = text_.find('<', tag + 1)) {
    std::string_view rest = text_.substr(tag + 1);
    if (rest.starts_with('!') || rest.starts_with('?') || rest.starts_with(name)) return false;
    if (!rest.starts_with('/')) continue;
    rest.remove_prefix(1);
    if (!rest.starts_with(name)) continue;
    rest.remove_prefix(name.size());
    if (!rest.starts_with('>')) return false;
    at_ = text_.size() - rest.size() + 1;
    return true;
  }
  return false;
}

Result<void> XMLElements::skipElement() {
  std::size_t depth = 0;
  for (;;) {
    const bool opens = at_ + 1 < text_.size() && text_[at_ + 1] != '!' && text_[at_ + 1] != '?';
    const bool closes = opens && text_[at_ + 1] == '/';
    if (!skipMarkup()) return malformed("It ends within a tag.");
    if (closes) {
      --depth;
    } else if (opens && text_[at_ - 2] != '/') {
      ++depth;
    }
    if (depth == 0) return {};
    at_ = text_.find('<', at_);
    if (at_ == npos) return malformed("It ends within an object.");
  }
}

}  // namespace annivo
