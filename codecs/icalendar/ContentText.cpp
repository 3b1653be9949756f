// SPDX-License-Identifier: MIT
#include "codecs/icalendar/ContentText.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/Text.h"
#include "base/Unicode.h"

namespace annivo {
namespace {

constexpr std::size_t kLineOctets = 75;

/// Letters, digits and those in `plain`, by their code.
constexpr std::array<bool, 256> characters(std::string_view plain) {
  std::array<bool, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const char c = static_cast<char>(i);
    table[i] = isAlphanumeric(c) || plain.find(c) != plain.npos;
  }
  return table;
}

std::string encoded(std::string_view bytes, char escape, std::string_view plain) {
  std::string out;
  out.reserve(bytes.size());
  const auto isPlain = [&](char c) { return isAlphanumeric(c) || plain.find(c) != plain.npos; };
  for (auto at = bytes.begin(); at != bytes.end(); ++at) {
    const auto stop = std::find_if_not(at, bytes.end(), isPlain);
    out.append(at, stop);
    if (stop == bytes.end()) break;
    appendHexEscape(out, escape, *stop);
    at = stop;
  }
  return out;
}

/// What has no meaning of its own in a value of type TEXT and is no part of a control character or
/// line break, wherever in valid UTF-8 it stands.
constexpr auto standsForItself = [](char c) {
  if ((c & 0x80) != 0) return c != '\xC2' && c != '\xE2';
  return c >= ' ' && c <= '~' && c != '\\' && c != ';' && c != ',';
};

/// Length of the line break at `i` (CRLF, LF, CR, VT, FF, NEL, U+2028, U+2029), 0 if there is none.
std::size_t lineBreakAt(std::string_view text, std::size_t i) {
  const std::string_view rest = text.substr(i);
  if (rest.starts_with("\r\n")) return 2;
  if (rest[0] >= '\n' && rest[0] <= '\r') return 1;
  if (rest.starts_with("\xC2\x85")) return 2;
  if (rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9")) return 3;
  return 0;
}

/// Length of the control character (C0 without tab, DEL, C1) at `i`, 0 if there is none.
std::size_t controlAt(std::string_view text, std::size_t i) {
  const auto byte = static_cast<unsigned char>(text[i]);
  if ((byte < 0x20 && byte != '\t') || byte == 0x7F) return 1;
  if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0)
    return 2;
  return 0;
}

/// What some readers strip off the ends of a text.
constexpr bool isStripped(char c) { return isSpaceOrTab(c) || c == '\n'; }

/// A backslash before what it does not escape stands for itself, as does a last one.
template <typename IsEscapable>
std::string withoutBackslashes(std::string_view value, const IsEscapable& isEscapable) {
  std::string out;
  out.reserve(value.size());
  for (std::size_t i = 0; i < value.size();) {
    const std::size_t escape = std::min(value.find('\\', i), value.size() - 1);
    if (value[escape] != '\\' || escape + 1 == value.size()) {
      out.append(value.substr(i));
      break;
    }
    const char c = value[escape + 1];
    out.append(value, i, escape - i);
    i = escape + 2;
    if (c == 'n' || c == 'N') {
      out += '\n';
    } else if (isEscapable(c)) {
      out += c;
    } else {
      (out += '\\') += c;
    }
  }
  return out;
}

}  // namespace

void appendContentLine(std::string& out, std::string_view head, std::string_view value,
                       std::string_view lineEnd) {
  if (head.size() + 1 + value.size() <= kLineOctets) {
    (out.append(head) += ':').append(value).append(lineEnd);
    return;
  }
  const std::string line = std::string(head).append(1, ':').append(value);
  std::size_t start = 0;
  for (std::size_t room = kLineOctets; line.size() - start > room; room = kLineOctets - 1) {
    std::size_t end = start + room;
    while (end > start + room - 3 && (line[end] & 0xC0) == 0x80) --end;
    out.append(line, start, end - start).append(lineEnd).append(1, ' ');
    start = end;
  }
  out.append(line, start).append(lineEnd);
}

std::string escapedText(std::string_view text) {
  std::string repaired;
  if (!isValidUTF8(text)) {
    repaired = repairedUTF8(text);
    text = repaired;
  }
  std::string out;
  out.reserve(text.size() + 8);
  for (std::size_t i = 0; i < text.size();) {
    const auto stop = std::find_if_not(text.begin() + i, text.end(), standsForItself);
    out.append(text.begin() + i, stop);
    i = static_cast<std::size_t>(stop - text.begin());
    if (stop == text.end()) break;
    if (const std::size_t length = lineBreakAt(text, i)) {
      out += "\\n";
      i += length;
    } else if (const std::size_t control = controlAt(text, i)) {
      i += control;
    } else {
      if (text[i] == '\\' || text[i] == ';' || text[i] == ',') out += '\\';
      out += text[i++];
    }
  }
  return out;
}

std::string unescapedText(std::string_view value) {
  return withoutBackslashes(value, [](char) { return true; });
}

std::string unescapedText(std::string_view value, std::string_view escapable) {
  return withoutBackslashes(value, [&](char c) { return escapable.find(c) != escapable.npos; });
}

std::string escapedURI(std::string_view uri) {
  static constexpr auto allowed = characters("-._~:/?#[]@!$&'()*+,;=");
  std::string out;
  out.reserve(uri.size());
  constexpr auto isAllowed = [](char c) { return allowed[static_cast<unsigned char>(c)]; };
  for (std::size_t i = 0; i < uri.size(); ++i) {
    const auto stop = std::find_if_not(uri.begin() + i, uri.end(), isAllowed);
    out.append(uri.begin() + i, stop);
    i = static_cast<std::size_t>(stop - uri.begin());
    if (stop == uri.end()) break;
    if (*stop == '%' && isHexEscape(uri, i)) {
      out += '%';
    } else {
      appendHexEscape(out, '%', *stop);
    }
  }
  return out;
}

std::string percentEncoded(std::string_view bytes, std::string_view plain) {
  return encoded(bytes, '%', plain);
}

std::string percentDecoded(std::string_view text) { return hexUnescaped(text, '%'); }

std::string underscoreEncoded(std::string_view bytes, std::string_view plain) {
  return encoded(bytes, '_', std::string("-.").append(plain));
}

std::string underscoreDecoded(std::string_view text) { return hexUnescaped(text, '_'); }

std::string plainestReading(std::string_view value) {
  return std::string(trimmed(unescapedText(value), isStripped));
}

std::string plainestText(std::string_view text) { return plainestReading(escapedText(text)); }

std::string exactParameter(std::string_view text) {
  return std::string(";").append(kExactParameter) + "=" + underscoreEncoded(text);
}

}  // namespace annivo
