// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCardText.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/Reason.h"

namespace annivo {

namespace {

std::optional<unsigned> hexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  return std::nullopt;
}

std::optional<unsigned> base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0' + 52);
  if (c == '+') return 62U;
  if (c == '/') return 63U;
  return std::nullopt;
}

}  // namespace

std::string quotedPrintableDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' && i + 2 < text.size()) {
      const auto high = hexDigit(text[i + 1]);
      const auto low = hexDigit(text[i + 2]);
      if (high && low) {
        decoded += static_cast<char>(*high << 4 | *low);
        i += 2;
        continue;
      }
    }
    decoded += text[i];
  }
  return decoded;
}

std::string base64Decoded(std::string_view text) {
  std::string decoded;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char c : text) {
    if (c == ' ' || c == '\t') continue;
    const auto digit = base64Digit(c);
    if (!digit) break;
    bits = (bits << 6 | *digit) & 0xFFFFFF;
    if (++count % 4 != 1) decoded += static_cast<char>(bits >> (6 - 2 * ((count - 1) % 4)) & 0xFF);
  }
  return decoded;
}

Result<std::string> convertedToUTF8(std::string_view bytes, const std::string& charset) {
  const auto close = [](void* converter) { iconv_close(converter); };
  iconv_t opened = iconv_open("UTF-8", charset.c_str());
  if (reinterpret_cast<std::intptr_t>(opened) == -1) {
    return reason("its charset \"" + charset + "\" is unknown");
  }
  const std::unique_ptr<void, decltype(close)> converter(opened, close);
  std::string converted;
  std::string input(bytes);
  char* from = input.data();
  std::size_t left = input.size();
  std::array<char, 4096> buffer;
  while (left > 0) {
    char* to = buffer.data();
    std::size_t room = buffer.size();
    const std::size_t done = iconv(converter.get(), &from, &left, &to, &room);
    const int code = errno;
    converted.append(buffer.data(), buffer.size() - room);
    if (done == static_cast<std::size_t>(-1) && code != E2BIG) {
      return reason("it is not valid " + charset, Error::Kind::malformed);
    }
  }
  return converted;
}

std::string unescaped(std::string_view text) {
  if (text.find('\\') == text.npos) return std::string(text);
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) {
      const char next = text[i + 1];
      if (next == 'n' || next == 'N') {
        plain += '\n';
        ++i;
        continue;
      }
      if (next == ',' || next == ';' || next == ':' || next == '\\') {
        plain += next;
        ++i;
        continue;
      }
    }
    plain += text[i];
  }
  return plain;
}

std::vector<std::string_view> unescapedParts(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (separators.find(text[i]) != separators.npos) {
      parts.push_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  parts.push_back(text.substr(start));
  return parts;
}

std::string upperCased(std::string_view ascii) {
  std::string upper(ascii);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::string_view trimmedText(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n\f\v";
  const auto first = text.find_first_not_of(kSpace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

}  // namespace annivo
