// SPDX-License-Identifier: MIT
#include <plist/plist.h>

#include <algorithm>
#include <memory>

#include "base/Unicode.h"
#include "codecs/plist/BinaryPropertyList.h"

// The XML form is libplist's, by way of the binary form in both directions: its accessors give
// dates as 32-bit seconds and hide the sign of a number, its binary form holds both in full.

namespace annivo {

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

/// Counts what is in an XML form without building it: libplist takes a stack frame for each level
/// and an allocation for each node. Whatever could make the two count differently is refused.
class XMLScan {
 public:
  XMLScan(std::string_view text, const PropertyListLimits& limits) : rest_(text), limits_(limits) {}

  /// Why the text may not be given to libplist; null when it may.
  const char* objection() {
    while (skipTo("<")) {
      const char* reason = nullptr;
      if (rest_.starts_with("<!--")) {
        reason = skipBehind("-->");
      } else if (rest_.starts_with("<![CDATA[")) {
        reason = skipBehind("]]>");
      } else if (rest_.starts_with("<?")) {
        reason = skipBehind("?>");
      } else {
        reason = tag(rest_.substr(0, rest_.find('>')));
      }
      if (reason) return reason;
      rest_.remove_prefix(1);
    }
    return nullptr;
  }

 private:
  static constexpr const char* kNotWellFormed = "It is no well-formed property list.";

  bool skipTo(std::string_view mark) {
    rest_.remove_prefix(std::min(rest_.find(mark), rest_.size()));
    return !rest_.empty();
  }

  const char* skipBehind(std::string_view mark) {
    if (!skipTo(mark)) return kNotWellFormed;
    rest_.remove_prefix(mark.size() - 1);
    return nullptr;
  }

  /// Takes note of a tag, given without its ">".
  const char* tag(std::string_view text) {
    if (text.starts_with("<!")) {
      return text.find('[') == std::string_view::npos ? nullptr : "It declares entities.";
    }
    const bool closes = text.starts_with("</");
    const std::string_view inner = text.substr(closes ? 2 : 1);
    const std::string_view name = inner.substr(0, inner.find_first_of(" \t\r\n/"));
    const bool collection = name == "dict" || name == "array";
    if (closes) {
      if (collection && (leafIsOpen_ || depth_-- == 0)) return kNotWellFormed;
      leafIsOpen_ = false;
      return nullptr;
    }
    if (leafIsOpen_) return kNotWellFormed;
    if (++nodes_ > limits_.nodes) return "It holds too many values.";
    if (text.ends_with('/')) return nullptr;
    if (collection && ++depth_ > limits_.depth) return "It is nested too deeply.";
    leafIsOpen_ = !collection && name != "plist";
    return nullptr;
  }

  std::string_view rest_;
  const PropertyListLimits& limits_;
  std::size_t nodes_ = 0;
  std::size_t depth_ = 0;
  bool leafIsOpen_ = false;  ///< within a text, number, date or data, which holds no tags
};

std::optional<PropertyList> readXML(std::string_view bytes, const PropertyListLimits& limits,
                                    std::string& reason) {
  if (const char* objection = XMLScan(bytes, limits).objection()) {
    reason = objection;
    return std::nullopt;
  }
  plist_t parsed = nullptr;
  plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &parsed);
  const Node node{parsed, &plist_free};
  if (!node) {
    reason = "It is no well-formed property list.";
    return std::nullopt;
  }
  char* binary = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(node.get(), &binary, &length);
  const std::unique_ptr<char, decltype(&plist_to_bin_free)> owner{binary, &plist_to_bin_free};
  return readBinaryPropertyList({binary, length}, limits, reason);
}

bool looksLikeXML(std::string_view bytes) {
  const auto start = bytes.find_first_not_of(" \t\r\n");
  return start != std::string_view::npos && bytes[start] == '<';
}

/// `text` as XML can hold it.
std::string xmlText(std::string_view text) {
  std::string result;
  for (const char c : repairedUTF8(text)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      result += "\uFFFD";
    } else {
      result += c;
    }
  }
  return result;
}

PropertyList xmlValue(const PropertyList& value) {
  if (value.string()) return xmlText(*value.string());
  if (value.foreign()) return {};
  if (value.date()) return Date{std::chrono::floor<std::chrono::seconds>(*value.date())};
  if (value.array()) {
    PropertyList::Array elements;
    for (const PropertyList& element : *value.array()) elements.push_back(xmlValue(element));
    return elements;
  }
  if (value.dictionary()) {
    PropertyList::Dictionary values;
    for (const auto& [key, element] : *value.dictionary()) {
      values.insert_or_assign(xmlText(key), xmlValue(element));
    }
    return values;
  }
  return value;
}

}  // namespace

Result<PropertyList> parsePropertyList(std::string_view bytes, const std::string& name) {
  const PropertyListLimits limits;
  std::string reason = "It is neither a binary nor an XML property list.";
  std::optional<PropertyList> value;
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  if (bytes.size() > limits.bytes) {
    reason = "It is too large.";
  } else if (bytes.starts_with(kBinaryPropertyListMagic)) {
    value = readBinaryPropertyList(bytes, limits, reason);
  } else if (looksLikeXML(bytes)) {
    value = readXML(bytes, limits, reason);
  }
  if (value) return *std::move(value);
  return Error{.kind = Error::Kind::malformed,
               .domain = "NSCocoaErrorDomain",
               .description = name + " is not a property list.",
               .failureReason = reason};
}

std::string xmlPropertyList(const PropertyList& value) {
  const std::string binary = binaryPropertyList(xmlValue(value));
  plist_t parsed = nullptr;
  plist_from_bin(binary.data(), static_cast<std::uint32_t>(binary.size()), &parsed);
  const Node node{parsed, &plist_free};
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node.get(), &xml, &length);
  const std::unique_ptr<char, decltype(&plist_to_xml_free)> owner{xml, &plist_to_xml_free};
  return {xml, length};
}

}  // namespace annivo
