// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCard.h"

#include <algorithm>
#include <optional>

#include "base/Base64.h"
#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Unicode.h"
#include "codecs/icalendar/ContentLine.h"
#include "codecs/icalendar/ContentText.h"
#include "codecs/vcard/VCardText.h"

namespace annivo {

namespace {

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
    property.parameters.emplace_back(upperCased(trimmed(raw.substr(0, equals))),
                                     parameterValue(trimmed(raw.substr(equals + 1))));
    return;
  }
  std::string value = parameterValue(trimmed(raw));
  const bool encoding = isEncodingName(upperCased(value));
  property.parameters.emplace_back(encoding ? "ENCODING" : "TYPE", std::move(value));
}

/// Nothing for what is no property.
std::optional<VCardProperty> propertyOf(std::string_view unfolded) {
  const ContentLine line(unfolded);
  std::string_view name = line.name();
  std::string_view parameters = line.parameters();
  std::string_view value = line.value();
  if (name.empty()) {  // A quotation mark that nothing closes hides the colon.
    const std::size_t colon = unfolded.find(':');
    if (colon == unfolded.npos) return std::nullopt;
    name = unfolded.substr(0, std::min(unfolded.find(';'), colon));
    parameters = unfolded.substr(name.size(), colon - name.size());
    if (!parameters.empty()) parameters.remove_prefix(1);
    value = unfolded.substr(colon + 1);
  }
  name = trimmed(name);
  VCardProperty property;
  property.group = upperCased(takeGroup(name));
  if (name.empty()) return std::nullopt;
  property.name = upperCased(name);
  while (!parameters.empty()) addParameter(takeParameter(parameters), property);
  property.value = value;
  return property;
}

/// Whether a quoted-printable value goes on in the next line.
bool hasSoftBreak(std::string_view line) {
  return line.ends_with('=') &&
         upperCased(line.substr(0, line.find(':'))).find("QUOTED-PRINTABLE") != line.npos;
}

enum class FoldingSpace { dropped, kept };

/// Takes a line off the text with all that continues it.
std::string takeUnfolded(std::string_view& text, FoldingSpace space) {
  const auto takeLine = [&] {
    const std::size_t length = lengthOfPhysicalLine(text);
    const std::string_view line = withoutLineEnd(text.substr(0, length));
    text.remove_prefix(length);
    return line;
  };
  std::string line(takeLine());
  while (!text.empty()) {
    if (hasSoftBreak(line)) {
      line.pop_back();
      line += takeLine();
    } else if (isContinuation(text)) {
      line += takeLine().substr(space == FoldingSpace::kept ? 0 : 1);
    } else {
      break;
    }
  }
  return line;
}

/// What VERSION says, "" without one.
std::string versionOf(std::string_view text) {
  ContentLines lines(text);
  ContentLine line;
  while (lines.next(line)) {
    if (line.named("VERSION")) return std::string(trimmed(line.value()));
  }
  return {};
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
      if (trimmed(part) == upperCased(wanted)) return true;
    }
  }
  return false;
}

VCard VCard::parse(std::string_view text) {
  VCard card;
  // Wanted before the first folded line: 2.1 folds at white space and keeps it.
  card.version_ = versionOf(text);
  const FoldingSpace space = card.version_ == "2.1" ? FoldingSpace::kept : FoldingSpace::dropped;
  while (!text.empty()) {
    if (auto property = propertyOf(takeUnfolded(text, space))) {
      card.properties_.push_back(std::move(*property));
    }
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
    return reason(translated("it is not valid UTF-8"), Error::Kind::malformed);
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
      parts.push_back(unescapedText(*text, kEscapable));
    }
    return parts;
  }
  const bool base64 = encoding == "B" || encoding == "BASE64";
  const auto text =
      toUTF8(property, base64 ? fromBase64AsFarAsItGoes(property.value) : property.value);
  if (!text) return text.error();
  for (const std::string_view part : unescapedParts(*text, separators)) {
    parts.push_back(unescapedText(part, kEscapable));
  }
  return parts;
}

}  // namespace annivo
