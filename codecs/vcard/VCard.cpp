// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCard.h"

#include <algorithm>
#include <optional>

#include "base/Reason.h"
#include "base/Unicode.h"
#include "codecs/vcard/VCardText.h"

namespace annivo {

namespace {

/// The parts of a parameter list or of "name;params:value", cut where no quotation mark protects.
std::size_t findOutsideQuotes(std::string_view text, char wanted, std::size_t from = 0) {
  bool quoted = false;
  for (std::size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (text[i] == wanted && !quoted) return i;
  }
  return text.npos;
}

/// Quotation marks dropped, "^n" "^'" "^^" undone.
std::string parameterValue(std::string_view raw) {
  std::string value;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '"') continue;
    if (raw[i] == '^' && i + 1 < raw.size()) {
      const char next = raw[i + 1];
      if (next == 'n' || next == '\'' || next == '^') {
        value += next == 'n' ? '\n' : next == '\'' ? '"' : '^';
        ++i;
        continue;
      }
    }
    value += raw[i];
  }
  return value;
}

bool isEncodingName(const std::string& upper) {
  return upper == "QUOTED-PRINTABLE" || upper == "BASE64" || upper == "B" || upper == "8BIT" ||
         upper == "7BIT";
}

void addParameter(std::string_view raw, VCardProperty& property) {
  if (const auto equals = raw.find('='); equals != raw.npos) {
    property.parameters.emplace_back(upperCased(trimmedText(raw.substr(0, equals))),
                                     parameterValue(trimmedText(raw.substr(equals + 1))));
    return;
  }
  std::string value = parameterValue(trimmedText(raw));
  const bool encoding = isEncodingName(upperCased(value));
  property.parameters.emplace_back(encoding ? "ENCODING" : "TYPE", std::move(value));
}

/// Name, group and parameters; nothing for what is no property.
std::optional<VCardProperty> parseHead(std::string_view head) {
  VCardProperty property;
  std::size_t end = head.find(';');
  std::string_view name = trimmedText(head.substr(0, end));
  if (const auto dot = name.rfind('.'); dot != name.npos) {
    property.group = upperCased(name.substr(0, dot));
    name.remove_prefix(dot + 1);
  }
  if (name.empty()) return std::nullopt;
  property.name = upperCased(name);
  while (end != head.npos) {
    const std::size_t start = end + 1;
    end = findOutsideQuotes(head, ';', start);
    addParameter(head.substr(start, end == head.npos ? end : end - start), property);
  }
  return property;
}

std::optional<VCardProperty> parseLine(std::string_view line) {
  auto colon = findOutsideQuotes(line, ':');
  if (colon == line.npos) colon = line.find(':');  // A quotation mark that nothing closes.
  if (colon == line.npos) return std::nullopt;
  auto property = parseHead(line.substr(0, colon));
  if (property) property->value = line.substr(colon + 1);
  return property;
}

std::string_view nextLine(std::string_view& text) {
  const auto end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  return line;
}

bool isFolded(std::string_view text) {
  return !text.empty() && (text.front() == ' ' || text.front() == '\t');
}

/// Whether a quoted-printable value goes on in the next line.
bool hasSoftBreak(std::string_view line) {
  return line.ends_with('=') &&
         upperCased(line.substr(0, line.find(':'))).find("QUOTED-PRINTABLE") != line.npos;
}

}  // namespace

std::string_view VCardProperty::parameter(std::string_view parameterName) const {
  const auto found = std::find_if(parameters.begin(), parameters.end(), [&](const auto& parameter) {
    return parameter.first == parameterName;
  });
  return found == parameters.end() ? std::string_view() : found->second;
}

bool VCardProperty::isQuotedPrintable() const {
  return upperCased(parameter("ENCODING")) == "QUOTED-PRINTABLE";
}

bool VCardProperty::parameterHolds(std::string_view parameterName, std::string_view wanted) const {
  for (const auto& [key, text] : parameters) {
    if (key != parameterName) continue;
    const std::string upper = upperCased(text);
    for (const std::string_view part : unescapedParts(upper, ",")) {
      if (trimmedText(part) == upperCased(wanted)) return true;
    }
  }
  return false;
}

VCard VCard::parse(std::string_view text) {
  VCard card;
  // The version is wanted before the first folded line: 2.1 folds at white space and keeps it.
  std::size_t at = 0;
  while (at < text.size()) {
    const std::string_view line = text.substr(at, text.find('\n', at) - at);
    if (line.size() > 8 && upperCased(line.substr(0, 8)) == "VERSION:") {
      card.version_ = trimmedText(line.substr(8));
      break;
    }
    at += line.size() + 1;
  }
  const bool keepsFoldingSpace = card.version_ == "2.1";
  while (!text.empty()) {
    std::string line(nextLine(text));
    while (!text.empty()) {
      if (hasSoftBreak(line)) {
        line.pop_back();
        line.append(nextLine(text));
      } else if (isFolded(text)) {
        line.append(nextLine(text).substr(keepsFoldingSpace ? 0 : 1));
      } else {
        break;
      }
    }
    if (auto property = parseLine(line)) card.properties_.push_back(std::move(*property));
  }
  return card;
}

const VCardProperty* VCard::property(std::string_view name) const {
  const auto found =
      std::find_if(properties_.begin(), properties_.end(),
                   [&](const VCardProperty& property) { return property.name == name; });
  return found == properties_.end() ? nullptr : &*found;
}

Result<std::string> VCard::toUTF8(const VCardProperty& property, std::string bytes) const {
  const std::string charset = upperCased(property.parameter("CHARSET"));
  if (charset.empty() || charset == "UTF-8" || charset == "UTF8" || charset == "US-ASCII") {
    if (isValidUTF8(bytes)) return bytes;
    // Version 2.1 leaves the charset open; its writers meant that of their system.
    if (version_ == "2.1") return convertedToUTF8(bytes, "WINDOWS-1252");
    return reason("it is not valid UTF-8", Error::Kind::malformed);
  }
  return convertedToUTF8(bytes, charset);
}

Result<std::string> VCard::text(const VCardProperty& property) const {
  auto whole = parts(property, "");
  if (!whole) return whole.error();
  return std::move(whole->front());
}

Result<std::vector<std::string>> VCard::parts(const VCardProperty& property,
                                              std::string_view separators) const {
  const std::string encoding = upperCased(property.parameter("ENCODING"));
  std::vector<std::string> parts;
  if (property.isQuotedPrintable()) {
    // A coded separator is none, so the parts are cut before they are decoded.
    for (const std::string_view part : unescapedParts(property.value, separators)) {
      auto text = toUTF8(property, quotedPrintableDecoded(part));
      if (!text) return text.error();
      parts.push_back(unescaped(*text));
    }
    return parts;
  }
  const bool base64 = encoding == "B" || encoding == "BASE64";
  const auto text = toUTF8(property, base64 ? base64Decoded(property.value) : property.value);
  if (!text) return text.error();
  for (const std::string_view part : unescapedParts(*text, separators)) {
    parts.push_back(unescaped(part));
  }
  return parts;
}

}  // namespace annivo
