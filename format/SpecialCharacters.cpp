// SPDX-License-Identifier: MIT
#include "format/SpecialCharacters.h"

#include <array>
#include <string_view>
#include <utility>

#include "format/ReplacingText.h"

namespace annivo {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 17> kReplacements{{
    {" 's ", "'s "},
    {" .", "."},
    {" ,", ","},
    {" :", ":"},
    {" ;", ";"},
    {" !", "!"},
    {" ?", "?"},
    {"( ", "("},
    {" )", ")"},
    {"[ ", "["},
    {" ]", "]"},
    {"{ ", "{"},
    {" }", "}"},
    {"< ", "<"},
    {" >", ">"},
    {" - ", "-"},
    {" / ", "/"},
}};

}  // namespace

std::string replaceSpecialCharactersIn(std::string text) {
  ReplacingText result(std::move(text));
  for (const auto& [from, to] : kReplacements) {
    // Searching for one character is fastest, and most titles hold few of these marks.
    const char mark = to.front();
    if (result.text().find(mark) != std::string::npos) result.replace(from, to);
  }
  return std::move(result).text();
}

}  // namespace annivo
