// SPDX-License-Identifier: MIT
#include "platform/coredata/XMLStoreJournal.h"

#include <array>
#include <charconv>
#include <iterator>
#include <optional>

#include "base/Digits.h"
#include "platform/coredata/ContentHash.h"

namespace annivo {

namespace {

constexpr std::string_view kTitle = "Annivo ledger journal ";
constexpr std::int64_t kVersion = 1;
/// Lower than the generation of any file.
constexpr std::int64_t kNoGeneration = -1;

/// Of a hash.
std::string hexadecimal(std::uint64_t value) { return hexDigits(value, 16); }

/// Reads lines of words; each operation is false when the text does not go on like that.
class Cursor {
 public:
  explicit Cursor(std::string_view text) : text_(text) {}
  [[nodiscard]] std::string_view rest() const { return text_; }
  bool take(std::string_view token) {
    if (!text_.starts_with(token)) return false;
    text_.remove_prefix(token.size());
    return true;
  }
  template <typename Number>
  bool takeNumber(Number& value, int base = 10) {
    const auto [end, error] =
        std::from_chars(text_.data(), text_.data() + text_.size(), value, base);
    if (error != std::errc()) return false;
    text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
    return true;
  }
  std::optional<std::string_view> takeBytes(std::uint64_t count) {
    if (count > text_.size()) return std::nullopt;
    const auto bytes = text_.substr(0, count);
    text_.remove_prefix(count);
    return bytes;
  }

 private:
  std::string_view text_;
};

/// Whether this is what a power loss left of a journal that was just begun: the start of a header,
/// perhaps filled up with zeros.
bool isCutHeader(std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));
  const auto line = bytes.find('\n');
  if (line != std::string_view::npos && bytes.find('\n', line + 1) != std::string_view::npos) {
    return false;
  }
  constexpr std::size_t kLongestHeader = 100;
  return bytes.size() < kLongestHeader && (kTitle.starts_with(bytes) || bytes.starts_with(kTitle));
}

/// The elements of the next entry, when it is whole.
std::optional<std::string_view> takeEntry(Cursor& cursor) {
  std::uint64_t length = 0;
  std::uint64_t hash = 0;
  if (!cursor.take("entry ") || !cursor.takeNumber(length) || !cursor.take(" ") ||
      !cursor.takeNumber(hash, 16) || !cursor.take("\n")) {
    return std::nullopt;
  }
  const auto elements = cursor.takeBytes(length);
  if (!elements || !cursor.take("\n") || contentHash(*elements) != hash) return std::nullopt;
  return elements;
}

}  // namespace

std::string journalHeader(const XMLStoreBase& base) {
  return std::string(kTitle) + std::to_string(kVersion) + "\nbase " +
         std::to_string(base.generation) + " " + std::to_string(base.size) + " " +
         hexadecimal(base.hash) + "\n";
}

std::string journalEntry(std::string_view elements) {
  std::string entry;
  entry.reserve(elements.size() + 64);
  entry.append("entry ").append(std::to_string(elements.size())).append(1, ' ');
  entry.append(hexadecimal(contentHash(elements))).append(1, '\n');
  return entry.append(elements).append(1, '\n');
}

XMLStoreJournal parseJournal(std::string_view bytes, const NSManagedObjectModel& model) {
  XMLStoreJournal journal;
  if (isCutHeader(bytes)) {
    journal.state = XMLStoreJournal::State::torn;
    journal.base.generation = kNoGeneration;
    return journal;
  }
  Cursor cursor(bytes);
  std::int64_t version = 0;
  if (!cursor.take(kTitle) || !cursor.takeNumber(version) || !cursor.take("\n")) {
    journal.state = XMLStoreJournal::State::damaged;
    return journal;
  }
  if (version > kVersion) {
    journal.state = XMLStoreJournal::State::newer;
    return journal;
  }
  XMLStoreBase& base = journal.base;
  if (!cursor.take("base ") || !cursor.takeNumber(base.generation) || !cursor.take(" ") ||
      !cursor.takeNumber(base.size) || !cursor.take(" ") || !cursor.takeNumber(base.hash, 16) ||
      !cursor.take("\n")) {
    journal.state = XMLStoreJournal::State::damaged;
    return journal;
  }
  while (!cursor.rest().empty()) {
    const auto elements = takeEntry(cursor);
    auto changes = elements ? parseXMLChanges(*elements, model) : std::vector<XMLStoreChange>();
    if (!elements || !changes) {
      journal.state = XMLStoreJournal::State::torn;
      break;
    }
    journal.changes.insert(journal.changes.end(), std::make_move_iterator(changes->begin()),
                           std::make_move_iterator(changes->end()));
  }
  return journal;
}

}  // namespace annivo
