// SPDX-License-Identifier: MIT
#include "parent/settings/TitleChoice.h"

#include <algorithm>

#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "contacts/ZPKAddressBookDates.h"
#include "format/Occurrences.h"
#include "format/SpecialCharacters.h"
#include "format/TitleTemplate.h"

namespace annivo {

namespace {

std::string comparable(std::string_view word) {
  std::string text = upperCased(trimmed(word));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '-' || c == '_'; }, ' ');
  return text;
}

const std::string_view* tokenFor(std::string_view word) {
  const auto* found = std::find_if(kTokens.begin(), kTokens.end(), [&](std::string_view token) {
    return comparable(token) == comparable(word);
  });
  return found == kTokens.end() ? nullptr : found;
}

bool isToken(std::string_view element) {
  return std::find(kTokens.begin(), kTokens.end(), element) != kTokens.end();
}

/// With its first letter in lower case, as a person writes it.
std::string written(std::string_view token) {
  std::string text(token);
  if (!text.empty()) text[0] = lowerCased(text[0]);
  return text;
}

std::string tokenList() {
  std::string list;
  for (const std::string_view token : kTokens) {
    list += (list.empty() ? "{" : ", {") + written(token) + '}';
  }
  return list;
}

Result<void> addLiteral(std::string_view text, std::vector<std::string>& elements) {
  const std::string_view literal = trimmed(text);
  if (literal.empty()) return {};
  if (isToken(literal)) {
    return reason(translated(
        "the word \"{1}\" alone stands for the value; put it in braces, or beside another word",
        literal));
  }
  elements.emplace_back(literal);
  return {};
}

Result<void> addWithBraces(std::string_view text, std::vector<std::string>& elements) {
  while (true) {
    const auto open = text.find('{');
    if (auto added = addLiteral(text.substr(0, open), elements); !added) return added;
    if (open == text.npos) return {};
    const auto close = text.find('}', open);
    if (close == text.npos) {
      return reason(translated("a brace is not closed in \"{1}\"", text));
    }
    const std::string_view name = text.substr(open + 1, close - open - 1);
    const std::string_view* token = tokenFor(name);
    if (!token) {
      return reason(translated("\"{1}\" is no value of a title; there are {2}", name, tokenList()));
    }
    elements.emplace_back(*token);
    text.remove_prefix(close + 1);
  }
}

}  // namespace

Result<std::vector<std::string>> templateFromWords(const std::vector<std::string>& words) {
  std::vector<std::string> elements;
  for (const std::string& word : words) {
    if (word.find('{') != word.npos) {
      if (auto added = addWithBraces(word, elements); !added) return added.error();
    } else if (const std::string_view* token = tokenFor(word)) {
      elements.emplace_back(*token);
    } else if (auto added = addLiteral(word, elements); !added) {
      return added.error();
    }
  }
  if (elements.empty()) {
    return reason(translated("a title needs at least one value: {1}", tokenList()));
  }
  return elements;
}

std::string templateText(const std::vector<std::string>& titleFormat) {
  std::string text;
  for (const std::string& element : titleFormat) {
    if (!text.empty()) text += ' ';
    text += isToken(element) ? '{' + written(element) + '}' : element;
  }
  return replaceSpecialCharactersIn(text);
}

std::vector<std::string> tokenWords() {
  std::vector<std::string> words;
  for (const std::string_view token : kTokens) {
    std::string word = written(token);
    std::replace(word.begin(), word.end(), ' ', '-');
    words.push_back(std::move(word));
  }
  return words;
}

std::string exampleTitle(Platform& platform, CalendarType type,
                         const std::vector<std::string>& titleFormat) {
  const NSTimeZone& zone = platform.defaultTimeZone();
  ContactDateRecord record;
  record.firstName = "Ann";
  record.middleName = "Marie";
  record.lastName = "Smith";
  record.nickName = "Annie";
  record.organization = "Acme";
  record.dateType = type == CalendarType::birthdays
                        ? platform.sharedAddressBook().localizedPropertyOrLabel(kABBirthdayProperty)
                        : ZPKAddressBookDates::localizedAnniversaryString(platform);
  record.thisDate = zone.date({.year = 1980, .month = 6, .day = 10, .hour = 12});
  const std::string base =
      baseTitle(masterTitle(titleFormat), record, yearText(*record.thisDate, zone),
                platform.localizedString(record.dateType, ""));
  const auto returns = occurrences(*record.thisDate, platform.clock().now(), zone);
  const std::int64_t age = returns.empty() ? 0 : returns.back().age - 1;
  return titleForAge(base, age, platform.preferredLanguages().front());
}

}  // namespace annivo
