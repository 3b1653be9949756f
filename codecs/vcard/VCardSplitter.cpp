// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCardSplitter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"
#include "base/Translation.h"
#include "codecs/icalendar/ContentLine.h"
#include "codecs/vcard/VCardText.h"

namespace annivo {

namespace {

constexpr std::size_t kDecidedBy = 4096;  // of a line: its name has been seen by then

/// The property's name, without its group.
std::string_view nameOf(std::string_view line) {
  std::string_view name = line.substr(0, line.find_first_of(";:"));
  takeGroup(name);
  return name;
}

/// Whether a property's value is bulk that no contact date needs.
bool isBulk(std::string_view line) {
  constexpr std::array<std::string_view, 4> kBulk{"PHOTO", "LOGO", "SOUND", "KEY"};
  const std::string_view name = nameOf(line);
  return std::any_of(kBulk.begin(), kBulk.end(),
                     [&](std::string_view bulk) { return equalsIgnoringCase(name, bulk); });
}

}  // namespace

void VCardSplitter::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto end = bytes.find('\n');
    appendToLine(bytes.substr(0, end));
    if (end == bytes.npos) return;
    bytes.remove_prefix(end + 1);
    endLine();
  }
}

void VCardSplitter::finish() {
  if (!line_.empty() || discardRest_) endLine();
  if (inCard_) deliver(translated("the card never ends (END:VCARD is missing)"));
}

void VCardSplitter::appendToLine(std::string_view piece) {
  if (discardRest_) return;
  line_.append(piece);
  if (line_.size() <= kDecidedBy) return;
  if (!inCard_ || isBulk(line_) || (dropping_ && isContinuation(line_))) {
    line_.resize(kDecidedBy);
    discardRest_ = true;
  } else if (line_.size() > kCardLimit) {
    tooLong_ = true;
    line_.clear();
    discardRest_ = true;
  }
}

void VCardSplitter::endLine() {
  ++lineNumber_;
  std::string_view line = withoutLineEnd(line_);
  if (lineNumber_ == 1 && line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
  takeLine(line);
  line_.clear();
  discardRest_ = false;
}

void VCardSplitter::takeLine(std::string_view line) {
  if (equalsIgnoringCase(trimmedEnd(line, isSpaceOrTab), "BEGIN:VCARD")) {
    if (inCard_ && (afterAgent_ || depth_ > 0)) {
      ++depth_;
      return;
    }
    if (inCard_) deliver(translated("the card never ends (END:VCARD is missing)"));
    inCard_ = true;
    card_.line = lineNumber_;
  } else if (inCard_ && equalsIgnoringCase(trimmedEnd(line, isSpaceOrTab), "END:VCARD")) {
    if (depth_ > 0) {
      --depth_;
    } else {
      deliver({});
    }
  } else if (inCard_ && depth_ == 0) {
    takePropertyLine(line);
  }
}

void VCardSplitter::takePropertyLine(std::string_view line) {
  // Older writers do not indent the lines of base64 text; those hold no colon.
  if (dropping_ && (isContinuation(line) || line.find(':') == line.npos)) return;
  dropping_ = isBulk(line);
  afterAgent_ = equalsIgnoringCase(nameOf(line), "AGENT") && line.ends_with(':');
  if (dropping_ || tooLong_) return;
  card_.text.append(line) += '\n';
  tooLong_ = card_.text.size() > kCardLimit;
  if (tooLong_) card_.text = {};
}

void VCardSplitter::deliver(std::string reason) {
  if (tooLong_) reason = translated("the card is larger than 1 MiB");
  card_.skipped = std::move(reason);
  deliver_(std::exchange(card_, {}));
  inCard_ = tooLong_ = dropping_ = afterAgent_ = false;
  depth_ = 0;
}

}  // namespace annivo
