// SPDX-License-Identifier: MIT
#include "base/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "base/Text.h"

namespace annivo {

namespace {

bool isASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

/// Length of the valid UTF-8 sequence at the start of `text`, or 0.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates, and what lies beyond the last code point.
  const unsigned second = byte(1);
  if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
      (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) {
    return 0;
  }
  return length;
}

using CodePoints = std::vector<utf8proc_int32_t>;

CodePoints decoded(std::string_view raw) {
  const std::string text = repairedUTF8(raw);
  CodePoints points;
  points.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    utf8proc_int32_t point = 0;
    i += static_cast<std::size_t>(
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + i,
                         static_cast<utf8proc_ssize_t>(text.size() - i), &point));
    points.push_back(point);
  }
  return points;
}

constexpr bool isSurrogate(char32_t point) { return point >= 0xD800 && point < 0xE000; }

enum class Role { letter, other, none };

/// What a character is to a word: a letter of it, another part of it (mark, digit), or no part.
Role role(utf8proc_int32_t point) {
  switch (utf8proc_category(point)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
      return Role::letter;
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ME:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
      return Role::other;
    default:
      return Role::none;
  }
}

bool isApostrophe(utf8proc_int32_t point) { return point == '\'' || point == 0x2019; }

bool isWordAt(const CodePoints& points, std::size_t i) {
  return i < points.size() && role(points[i]) != Role::none;
}

enum class DotlessI { no, yes };

constexpr utf8proc_int32_t kCapitalIWithDot = 0x130;
constexpr utf8proc_int32_t kDotlessI = 0x131;
constexpr utf8proc_int32_t kCapitalSigma = 0x3A3;
constexpr utf8proc_int32_t kFinalSigma = 0x3C2;

utf8proc_int32_t titleCase(utf8proc_int32_t point, DotlessI rules) {
  if (rules == DotlessI::yes && point == 'i') return kCapitalIWithDot;
  return utf8proc_totitle(point);
}

utf8proc_int32_t lowerCase(utf8proc_int32_t point, DotlessI rules, bool endsWord) {
  if (rules == DotlessI::yes && point == 'I') return kDotlessI;
  if (point == kCapitalIWithDot) return 'i';
  if (point == kCapitalSigma && endsWord) return kFinalSigma;
  return utf8proc_tolower(point);
}

}  // namespace

std::string caseFolded(std::string_view text) {
  if (isASCII(text)) return lowerCased(text);
  std::string folded = repairedUTF8(text);
  utf8proc_uint8_t* mapped = nullptr;
  const auto length = utf8proc_map(
      reinterpret_cast<const utf8proc_uint8_t*>(folded.data()),
      static_cast<utf8proc_ssize_t>(folded.size()), &mapped,
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD));
  if (length >= 0) {
    folded.assign(reinterpret_cast<const char*>(mapped), static_cast<std::size_t>(length));
  }
  std::free(mapped);
  return folded;
}

std::size_t caseFoldedHash(std::string_view text) {
  constexpr std::size_t kHighBits = 0x8080808080808080;
  constexpr std::size_t kCaseBits = 0x2020202020202020;
  std::size_t hash = text.size();
  std::size_t seen = 0;
  const auto take = [&](const char* bytes, std::size_t count) {
    std::size_t word = 0;
    std::memcpy(&word, bytes, count);
    seen |= word;
    hash = (hash ^ (word | kCaseBits)) * 0x9E3779B97F4A7C15;
    hash ^= hash >> 32;
  };
  std::size_t i = 0;
  for (; i + sizeof hash <= text.size(); i += sizeof hash) take(text.data() + i, sizeof hash);
  take(text.data() + i, text.size() - i);
  if ((seen & kHighBits) == 0) return hash;
  const std::string folded = caseFolded(text);
  return isASCII(folded) ? caseFoldedHash(folded) : std::hash<std::string>{}(folded);
}

std::string capitalized(std::string_view text, std::string_view language) {
  const std::string_view bare = language.substr(0, language.find_first_of("-_"));
  const DotlessI rules = bare == "tr" || bare == "az" ? DotlessI::yes : DotlessI::no;
  const CodePoints points = decoded(text);
  std::string result;
  bool inWord = false;
  bool titled = false;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const utf8proc_int32_t point = points[i];
    const bool joins = inWord && isApostrophe(point) && isWordAt(points, i + 1);
    inWord = joins || isWordAt(points, i);
    if (!inWord) titled = false;
    if (role(point) != Role::letter) {
      appendUTF8(result, static_cast<char32_t>(point));
    } else if (!titled) {
      appendUTF8(result, static_cast<char32_t>(titleCase(point, rules)));
      titled = true;
    } else {
      appendUTF8(result, static_cast<char32_t>(lowerCase(point, rules, !isWordAt(points, i + 1))));
    }
  }
  return result;
}

void appendUTF8(std::string& out, char32_t point) {
  const auto put = [&](char32_t byte) { out += static_cast<char>(byte); };
  if (point < 0x80) return put(point);
  if (isSurrogate(point) || point > 0x10FFFF) point = U'\uFFFD';
  if (point < 0x800) {
    put(0xC0 | point >> 6);
  } else if (point < 0x10000) {
    put(0xE0 | point >> 12);
    put(0x80 | (point >> 6 & 0x3F));
  } else {
    put(0xF0 | point >> 18);
    put(0x80 | (point >> 12 & 0x3F));
    put(0x80 | (point >> 6 & 0x3F));
  }
  put(0x80 | (point & 0x3F));
}

std::string fromUTF16(std::string_view bytes, ByteOrder order) {
  const std::size_t high = order == ByteOrder::bigEndian ? 0 : 1;
  const auto unitAt = [&](std::size_t i) {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[i + high]) << 8 |
                                 static_cast<unsigned char>(bytes[i + 1 - high]));
  };
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t point = unitAt(i);
    if (point >= 0xD800 && point < 0xDC00 && i + 3 < bytes.size()) {
      const char32_t low = unitAt(i + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    appendUTF8(text, point);
  }
  return text;
}

bool isValidUTF8(std::string_view text) {
  if (isASCII(text)) return true;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequenceLength(text.substr(i));
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string repairedUTF8(std::string_view text) {
  if (isASCII(text)) return std::string(text);
  std::string repaired;
  repaired.reserve(text.size());
  std::size_t copied = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (const std::size_t length = sequenceLength(text.substr(i))) {
      i += length;
      continue;
    }
    repaired.append(text, copied, i - copied).append("\uFFFD");
    copied = ++i;
  }
  return repaired.append(text, copied);
}

std::size_t columnsOf(std::string_view text) {
  if (isASCII(text)) return text.size();
  std::size_t columns = 0;
  for (const utf8proc_int32_t point : decoded(text)) {
    columns += static_cast<std::size_t>(utf8proc_charwidth(point));
  }
  return columns;
}

}  // namespace annivo
