// SPDX-License-Identifier: MIT
#include <libical/ical.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/fuzz/event_file_checks.h"

namespace {

constexpr std::size_t kLibicalLimit = 2000;  // it takes quadratic time on long lines

struct Rest {
  std::string_view text;
};

/// Hands libical one physical line at a time, as its line reader asks for them.
char* nextPhysicalLine(char* buffer, std::size_t size, void* data) {
  auto& rest = *static_cast<Rest*>(data);
  if (rest.text.empty()) return nullptr;
  const std::size_t end = std::min(rest.text.find('\n'), rest.text.size() - 1) + 1;
  const std::size_t length = std::min(end, size - 1);
  rest.text.copy(buffer, length);
  buffer[length] = '\0';
  rest.text.remove_prefix(length);
  return buffer;
}

/// Whether both libraries may be held against each other on this text: printable lines, ended by LF
/// or CRLF, none of them blank.
bool isComparable(std::string_view text) {
  if (text.size() > kLibicalLimit || !text.ends_with('\n')) return false;
  char previous = '\n';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r' && (i + 1 == text.size() || text[i + 1] != '\n')) return false;
    if ((c == '\r' || c == '\n' || c == ' ') && previous == '\n' && c != previous) return false;
    if (c == '\n' && previous == '\n') return false;
    if (c != '\r' && c != '\n' && (c < 0x20 || c == 0x7F)) return false;
    previous = c;
  }
  return true;
}

/// libical's line reader strips spaces at the ends of lines.
std::string withoutSpaces(std::string text) {
  std::erase(text, ' ');
  return text;
}

void checkUnfolding(std::string_view text) {
  // Folds of our own making, so that each text has them at places that both agree to be folds.
  std::string folded;
  std::size_t column = 0;
  for (const char c : text) {
    if (c == '\r' || c == '\n') {
      column = 0;
    } else if (++column == 30) {
      folded += "\r\n ";
      column = 1;
    }
    folded += c;
  }
  icalparser* parser = icalparser_new();
  Rest rest{folded};
  icalparser_set_gen_data(parser, &rest);
  // Its first answer is the line before the first one.
  icalmemory_free_buffer(icalparser_get_line(parser, nextPhysicalLine));
  annivo::ContentLines lines(folded);
  annivo::ContentLine line;
  while (lines.next(line)) {
    char* theirs = icalparser_get_line(parser, nextPhysicalLine);
    annivo::fuzz::require(theirs != nullptr, "libical reads as many lines");
    if (!line.name().empty()) {
      const std::string value = ":" + std::string(line.value());
      std::string ours(line.name());
      if (!line.parameters().empty()) ours.append(";").append(line.parameters());
      const bool bare =
          line.parameters().empty() && withoutSpaces(ours + ";" + value) == withoutSpaces(theirs);
      annivo::fuzz::require(bare || withoutSpaces(ours + value) == withoutSpaces(theirs),
                            "libical unfolds alike");
    }
    icalmemory_free_buffer(theirs);
  }
  icalparser_free(parser);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  annivo::fuzz::checkEventText(text);
  if (isComparable(text)) checkUnfolding(text);
  return 0;
}
