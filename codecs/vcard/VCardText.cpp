// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCardText.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"

namespace annivo {

std::string quotedPrintableDecoded(std::string_view text) { return hexUnescaped(text, '='); }

Result<std::string> convertedToUTF8(std::string_view bytes, const std::string& charset) {
  const auto close = [](void* converter) { iconv_close(converter); };
  iconv_t opened = iconv_open("UTF-8", charset.c_str());
  if (reinterpret_cast<std::intptr_t>(opened) == -1) {
    return reason(translated("its charset \"{1}\" is unknown", charset));
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
      return reason(translated("it is not valid {1}", charset), Error::Kind::malformed);
    }
  }
  return converted;
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

std::string_view takeGroup(std::string_view& name) {
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos) return {};
  const std::string_view group = name.substr(0, dot);
  name.remove_prefix(dot + 1);
  return group;
}

}  // namespace annivo
