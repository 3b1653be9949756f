// SPDX-License-Identifier: MIT
#include <algorithm>
#include <bit>
#include <limits>

#include <pugixml.hpp>

#include "base/Base64.h"
#include "base/Digits.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "codecs/plist/BinaryPropertyList.h"
#include "codecs/plist/XMLPropertyList.h"

namespace annivo {

namespace {

[[noreturn]] void refuse(const char* reason) { throw MalformedPropertyList{reason}; }

/// Counts what is in a text before a tree is made of it, which takes memory for each value and for
/// each piece of other markup: attribute, comment, section of plain text, instruction.
class XMLScan {
 public:
  XMLScan(std::string_view text, const PropertyListLimits& limits) : rest_(text), limits_(limits) {}

  void check() {
    while (skipTo("<")) {
      if (rest_.starts_with("<!--")) {
        skipPiece("-->");
      } else if (rest_.starts_with("<![CDATA[")) {
        skipPiece("]]>");
      } else if (rest_.starts_with("<?")) {
        skipPiece("?>");
      } else {
        tag(takeTag());
      }
    }
  }

 private:
  [[noreturn]] static void refuseMarkup() { refuse("It is no well-formed property list."); }

  bool skipTo(std::string_view mark) {
    rest_.remove_prefix(std::min(rest_.find(mark), rest_.size()));
    return !rest_.empty();
  }

  void countOther() {
    if (++others_ > limits_.nodes / 10) refuse("It holds too much markup.");
  }

  void skipPiece(std::string_view end) {
    countOther();
    if (!skipTo(end)) refuseMarkup();
    rest_.remove_prefix(end.size());
  }

  /// Takes a tag off the text; gives it without its brackets. A bracket in quotes ends no tag.
  std::string_view takeTag() {
    for (std::size_t i = 1; i < rest_.size(); ++i) {
      const char c = rest_[i];
      if (c == '"' || c == '\'') i = std::min(rest_.find(c, i + 1), rest_.size());
      if (c == '=') countOther();
      if (c != '>') continue;
      const std::string_view taken = rest_.substr(1, i - 1);
      rest_.remove_prefix(i + 1);
      return taken;
    }
    refuseMarkup();
  }

  void tag(std::string_view text) {
    if (text.starts_with('!')) {
      if (text.find('[') != text.npos) refuse("It declares entities.");
      return;
    }
    const bool closes = text.starts_with('/');
    if (closes) text.remove_prefix(1);
    const std::string_view name = text.substr(0, text.find_first_of(" \t\r\n/"));
    if (name == "plist") return;
    const bool isCollection = name == "dict" || name == "array";
    if (closes) {
      if (isCollection && depth_-- == 0) refuseMarkup();
      return;
    }
    if (++values_ > limits_.nodes) refuse("It holds too many values.");
    if (isCollection && !text.ends_with('/') && ++depth_ > limits_.depth) {
      refuse("It is nested too deeply.");
    }
  }

  std::string_view rest_;
  const PropertyListLimits& limits_;
  std::size_t values_ = 0;  ///< keys too
  std::size_t others_ = 0;
  std::size_t depth_ = 0;
};

bool isText(pugi::xml_node node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// Appends what the reference at the front of `text` ("&amp;", "&#233;") stands for; its length.
std::size_t appendReference(std::string& out, std::string_view text) {
  constexpr std::pair<std::string_view, char> kNamed[] = {
      {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  for (const auto& [reference, c] : kNamed) {
    if (!text.starts_with(reference)) continue;
    out += c;
    return reference.size();
  }
  const std::size_t end = text.find(';');
  if (end != text.npos && text.starts_with("&#")) {
    const bool hex = text[2] == 'x';
    const std::string_view digits = text.substr(hex ? 3 : 2, end - (hex ? 3 : 2));
    const auto point =
        hex ? numberFromText<std::uint32_t, 16>(digits) : numberFromText<std::uint32_t>(digits);
    if (point && *point > 0 && *point <= 0x10FFFF) {
      appendUTF8(out, *point);
      return end + 1;
    }
  }
  refuse("A text refers to an entity that is not declared.");
}

std::string withoutReferences(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find('&'), text.size());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (!text.empty()) text.remove_prefix(appendReference(out, text));
  }
  return out;
}

std::string textOf(pugi::xml_node element) {
  std::string text;
  for (const pugi::xml_node child : element.children()) {
    if (!isText(child)) refuse("A value holds another one.");
    text += child.type() == pugi::node_cdata ? child.value() : withoutReferences(child.value());
  }
  return repairedUTF8(text);
}

PropertyList integerFrom(std::string_view text) {
  text = trimmed(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const auto size =
      hex ? numberFromText<std::uint64_t, 16>(text.substr(2)) : numberFromText<std::uint64_t>(text);
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (!size || (negative && *size > kLargest + 1)) refuse("It holds a number that cannot be read.");
  if (negative) return static_cast<std::int64_t>(0 - *size);
  if (*size <= kLargest) return static_cast<std::int64_t>(*size);
  std::string object = "\x14";
  appendBigEndian(object, 0, 8);
  appendBigEndian(object, *size, 8);
  return PropertyList::Foreign{std::move(object)};
}

PropertyList realFrom(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  const auto value = numberFromText<double>(text);
  if (!value) refuse("It holds a number that cannot be read.");
  return *value;
}

/// The number in front of `end`, which is taken off `text` too.
int takeField(std::string_view& text, std::string_view end) {
  const std::size_t length = text.find(end, 1);
  const auto value = numberFromText<int>(text.substr(0, length));
  if (!value || length == text.npos) refuse("It holds a date that cannot be read.");
  text.remove_prefix(length + end.size());
  return *value;
}

/// "2026-11-20T18:46:00Z"
PropertyList dateFrom(std::string_view text) {
  text = trimmed(text);
  const int year = takeField(text, "-");
  const int month = takeField(text, "-");
  const int day = takeField(text, "T");
  const int hour = takeField(text, ":");
  const int minute = takeField(text, ":");
  const int second = takeField(text, "Z");
  const auto in = [](int value, int first, int last) { return value >= first && value <= last; };
  constexpr int kMostOfAYear = 32'000;  // what the types of the library hold
  const std::chrono::year_month_day civil{
      std::chrono::year{std::clamp(year, -kMostOfAYear, kMostOfAYear)},
      std::chrono::month{static_cast<unsigned>(month)},
      std::chrono::day{static_cast<unsigned>(day)}};
  if (!text.empty() || !in(year, -kMostOfAYear, kMostOfAYear) || !in(month, 1, 12) ||
      !in(day, 1, 31) || !civil.ok() || !in(hour, 0, 23) || !in(minute, 0, 59) ||
      !in(second, 0, 60)) {
    refuse("It holds a date that cannot be read.");
  }
  const Date moment = std::chrono::sys_days{civil} + std::chrono::hours{hour} +
                      std::chrono::minutes{minute} + std::chrono::seconds{second};
  if (moment >= kEarliestDate && moment <= kLatestDate) return moment;
  std::string object = "\x33";
  appendBigEndian(object, std::bit_cast<std::uint64_t>(referenceSeconds(moment)), 8);
  return PropertyList::Foreign{std::move(object)};
}

PropertyList dataFrom(std::string_view text) {
  auto bytes = fromBase64(text);
  if (!bytes) refuse("It holds data that is no base64.");
  return PropertyList::Data{*std::move(bytes)};
}

/// The next element from `node` on, over white space; none at the end.
pugi::xml_node elementFrom(pugi::xml_node node) {
  while (node && isText(node) && trimmed(node.value()).empty()) node = node.next_sibling();
  if (node && node.type() != pugi::node_element) refuse("It has text between its values.");
  return node;
}

PropertyList value(pugi::xml_node element);

PropertyList array(pugi::xml_node element) {
  PropertyList::Array elements;
  for (auto child = elementFrom(element.first_child()); child;
       child = elementFrom(child.next_sibling())) {
    elements.push_back(value(child));
  }
  return elements;
}

PropertyList dictionary(pugi::xml_node element) {
  PropertyList::Dictionary values;
  for (auto key = elementFrom(element.first_child()); key;) {
    if (key.name() != std::string_view("key")) refuse("The key of a dictionary is no text.");
    const pugi::xml_node child = elementFrom(key.next_sibling());
    if (!child) refuse("A key of a dictionary has no value.");
    values.insert_or_assign(textOf(key), value(child));
    key = elementFrom(child.next_sibling());
  }
  return values;
}

PropertyList value(pugi::xml_node element) {
  const std::string_view name = element.name();
  if (name == "dict") return dictionary(element);
  if (name == "array") return array(element);
  const std::string text = textOf(element);
  if (name == "string") return text;
  if (name == "integer") return integerFrom(text);
  if (name == "real") return realFrom(text);
  if (name == "date") return dateFrom(text);
  if (name == "data") return dataFrom(text);
  if ((name != "true" && name != "false") || !trimmed(text).empty()) {
    refuse("It holds an object of an unknown kind.");
  }
  return name == "true";
}

/// The one element of a document or of a plist element.
pugi::xml_node onlyElement(pugi::xml_node parent) {
  const pugi::xml_node element = elementFrom(parent.first_child());
  if (!element || elementFrom(element.next_sibling())) refuse("It does not hold one value.");
  return element;
}

}  // namespace

PropertyList readXMLPropertyList(std::string text, const PropertyListLimits& limits) {
  XMLScan(text, limits).check();
  pugi::xml_document document;
  const auto result = document.load_buffer_inplace(
      text.data(), text.size(), pugi::parse_cdata | pugi::parse_ws_pcdata, pugi::encoding_utf8);
  if (!result) refuse("It is no well-formed property list.");
  const pugi::xml_node root = onlyElement(document);
  // A tree is as deep as the scan allows: it nests nothing but arrays and dictionaries.
  return value(root.name() == std::string_view("plist") ? onlyElement(root) : root);
}

}  // namespace annivo
