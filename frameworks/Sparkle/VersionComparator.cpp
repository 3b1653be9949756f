// SPDX-License-Identifier: MIT
#include "frameworks/Sparkle/VersionComparator.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "base/Digits.h"

namespace annivo {

namespace {

/// In the order in which kinds at the same place compare.
enum class Kind { word, end, separator, number };

struct Part {
  Kind kind = Kind::end;
  std::uint64_t number = 0;
  std::string_view text{};
  [[nodiscard]] bool isPeriod() const { return text == "."; }
};

constexpr Part kZero{.kind = Kind::number, .number = 0, .text = "0"};
constexpr Part kPeriod{.kind = Kind::separator, .number = 0, .text = "."};

/// Length of the separator at the front of `text`, 0 when there is none. Beside ASCII: the spaces
/// and the punctuation of Latin-1, U+2000 to U+206F and U+3000 to U+3003; symbols are no
/// separators.
std::size_t separatorLength(std::string_view text) {
  using namespace std::string_view_literals;
  constexpr auto kAscii = "\t\n\v\f\r !\"#%&'()*,-./:;?@[\\]_{}"sv;
  if (kAscii.find(text[0]) != std::string_view::npos) return 1;
  for (const auto latin1 : {"\u0085"sv, "\u00A0"sv, "\u00A1"sv, "\u00A7"sv, "\u00AB"sv, "\u00B6"sv,
                            "\u00B7"sv, "\u00BB"sv, "\u00BF"sv}) {
    if (text.starts_with(latin1)) return latin1.size();
  }
  if (text.size() < 3 || !(text.starts_with("\xE2") || text.starts_with("\xE3"))) return 0;
  const std::string_view character = text.substr(0, 3);
  const bool isGeneral = character >= "\u2000"sv && character <= "\u206F"sv &&
                         character != "\u2044"sv && character != "\u2052"sv;
  const bool isWide = character >= "\u3000"sv && character <= "\u3003"sv;
  return isGeneral || isWide ? 3 : 0;
}

std::uint64_t numberIn(std::string_view digits) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  std::uint64_t value = 0;
  for (const char c : digits) {
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (value > (kMost - digit) / 10) return kMost;
    value = value * 10 + digit;
  }
  return value;
}

/// Removes and returns the first part of `text`, which is not empty.
Part takePart(std::string_view& text) {
  Part part;
  std::size_t length = separatorLength(text);
  if (length > 0) {
    part.kind = Kind::separator;
  } else if (isDigit(text[0])) {
    part.kind = Kind::number;
    length = std::min(text.find_first_not_of("0123456789"), text.size());
    part.number = numberIn(text.substr(0, length));
  } else {
    part.kind = Kind::word;
    do {
      ++length;
    } while (length < text.size() && !isDigit(text[length]) &&
             separatorLength(text.substr(length)) == 0);
  }
  part.text = text.substr(0, length);
  text.remove_prefix(length);
  return part;
}

/// A version in its parts, the first `leading` of which are numbers and periods.
struct Version {
  std::vector<Part> parts;
  std::size_t leading = 0;

  explicit Version(std::string_view text) {
    text = text.substr(0, text.find('-', 1));
    while (!text.empty()) parts.push_back(takePart(text));
    while (leading < parts.size() &&
           (parts[leading].kind == Kind::number || parts[leading].isPeriod())) {
      ++leading;
    }
  }

  /// Continues the leading run, which is not empty, with ".0" to `length` parts.
  void pad(std::size_t length) {
    std::vector<Part> padding;
    bool afterNumber = parts[leading - 1].kind == Kind::number;
    for (; leading + padding.size() < length; afterNumber = !afterNumber) {
      padding.push_back(afterNumber ? kPeriod : kZero);
    }
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(leading), padding.begin(),
                 padding.end());
    leading = length;
  }

  [[nodiscard]] Part at(std::size_t index) const {
    return index < parts.size() ? parts[index] : Part{};
  }
};

std::weak_ordering compareParts(const Part& a, const Part& b) {
  if (a.kind != b.kind) return a.kind <=> b.kind;
  if (a.kind == Kind::number) return a.number <=> b.number;
  if (a.kind == Kind::word) return a.text <=> b.text;
  return std::weak_ordering::equivalent;
}

}  // namespace

std::weak_ordering compareVersions(std::string_view a, std::string_view b) {
  Version first(a), second(b);
  if ((first.leading == 0) != (second.leading == 0)) {
    return first.leading == 0 ? std::weak_ordering::less : std::weak_ordering::greater;
  }
  if (first.leading > 0) {
    const std::size_t length = std::max(first.leading, second.leading);
    first.pad(length);
    second.pad(length);
  }
  const std::size_t size = std::max(first.parts.size(), second.parts.size());
  for (std::size_t i = 0; i < size; ++i) {
    const auto order = compareParts(first.at(i), second.at(i));
    if (order != 0) return order;
  }
  return std::weak_ordering::equivalent;
}

}  // namespace annivo
