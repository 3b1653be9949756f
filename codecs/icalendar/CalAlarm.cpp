// SPDX-License-Identifier: MIT
#include "codecs/icalendar/CalAlarm.h"

#include "codecs/icalendar/ContentLine.h"
#include "codecs/icalendar/ContentText.h"

namespace annivo {

std::string fileURLWithPath(const std::string& path) {
  const std::string root = path.starts_with('/') ? "" : "/";
  return "file://" + root + percentEncoded(path, "-._~/!$&'()*+,=:@");
}

bool isFileURL(const std::string& url) {
  return equalsIgnoringCase(std::string_view(url).substr(0, 5), "FILE:");
}

std::optional<std::string> urlWithString(const std::string& text) {
  if (text.empty() || escapedURI(text) != text) return std::nullopt;
  const std::size_t hash = text.find('#');
  if (hash != text.npos && text.find('#', hash + 1) != text.npos) return std::nullopt;
  return text;
}

}  // namespace annivo
