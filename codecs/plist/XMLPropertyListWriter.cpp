// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <vector>

#include "base/Base64.h"
#include "codecs/plist/PropertyList.h"
#include "codecs/xml/XMLText.h"

namespace annivo {

namespace {

constexpr std::string_view kProlog =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

bool hasXMLForm(const PropertyList& value) { return !value.isNil() && !value.foreign(); }

std::string realText(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-infinity" : "+infinity";
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.begin(), text.end(), value).ptr};
}

/// "2026-11-20T18:46:00Z" from "2026-11-20 18:46:00 +0000".
std::string dateText(Date date) {
  const std::string text = describe(date);
  return text.substr(0, 10) + "T" + text.substr(11, 8) + "Z";
}

/// Each value on lines of its own, a tab in front for each level.
class Writer {
 public:
  std::string write(const PropertyList& value) {
    out_ = kProlog;
    if (hasXMLForm(value)) add(value);
    return std::move(out_ += "</plist>\n");
  }

 private:
  void add(const PropertyList& value) {
    if (value.boolean()) {
      line(*value.boolean() ? "<true/>" : "<false/>");
    } else if (value.integer()) {
      leaf("integer", std::to_string(*value.integer()));
    } else if (value.real()) {
      leaf("real", realText(*value.real()));
    } else if (value.string()) {
      leaf("string", *value.string());
    } else if (value.date()) {
      leaf("date", dateText(*value.date()));
    } else if (value.data()) {
      addData(value.data()->bytes);
    } else if (value.array()) {
      addArray(*value.array());
    } else {
      addDictionary(*value.dictionary());
    }
  }

  void line(std::string_view text) { out_.append(level_, '\t').append(text) += '\n'; }

  void leaf(std::string_view name, std::string_view text) {
    out_.append(level_, '\t').append(1, '<').append(name) += '>';
    appendEscaped(out_, repairedXMLText(text));
    out_.append("</").append(name) += ">\n";
  }

  void addData(std::string_view bytes) {
    constexpr std::size_t kWidth = 76;
    constexpr std::size_t kTab = 8;
    const std::size_t width = kWidth - kTab * std::min<std::size_t>(level_, 8);
    line("<data>");
    const std::string text = base64(bytes);
    for (std::size_t at = 0; at < text.size(); at += width) {
      line(std::string_view(text).substr(at, width));
    }
    line("</data>");
  }

  void addArray(const PropertyList::Array& array) {
    std::vector<const PropertyList*> elements;
    for (const PropertyList& element : array) {
      if (hasXMLForm(element)) elements.push_back(&element);
    }
    addCollection("array", elements, [&](const PropertyList* element) { add(*element); });
  }

  void addDictionary(const PropertyList::Dictionary& dictionary) {
    // By their keys in XML, where two may be one; the last of them stays.
    std::map<std::string, const PropertyList*> entries;
    for (const auto& [key, element] : dictionary) {
      if (hasXMLForm(element)) entries.insert_or_assign(repairedXMLText(key), &element);
    }
    addCollection("dict", entries, [&](const auto& entry) {
      leaf("key", entry.first);
      add(*entry.second);
    });
  }

  template <typename Elements, typename Add>
  void addCollection(const std::string& name, const Elements& elements, const Add& addElement) {
    if (elements.empty()) return line("<" + name + "/>");
    line("<" + name + ">");
    ++level_;
    for (const auto& element : elements) addElement(element);
    --level_;
    line("</" + name + ">");
  }

  std::string out_;
  std::size_t level_ = 0;
};

}  // namespace

std::string xmlPropertyList(const PropertyList& value) { return Writer().write(value); }

}  // namespace annivo
