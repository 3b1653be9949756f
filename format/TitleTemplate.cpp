// SPDX-License-Identifier: MIT
#include "format/TitleTemplate.h"

#include "format/OrdinalNumber.h"
#include "format/ReplacingText.h"
#include "format/SpecialCharacters.h"

namespace annivo {

namespace {

constexpr std::string_view kMarker = "^!*";
constexpr std::string_view kSeparator = "^!* ^!*";

// The tokens in their marked form.
constexpr std::string_view kFirstName = "^!*First name^!*";
constexpr std::string_view kMiddleName = "^!*Middle name^!*";
constexpr std::string_view kLastName = "^!*Last name^!*";
constexpr std::string_view kNickname = "^!*nickname^!*";
constexpr std::string_view kAge = "^!*age^!*";
constexpr std::string_view kOrdinalAge = "^!*ordinal age^!*";
constexpr std::string_view kYear = "^!*year^!*";
constexpr std::string_view kType = "^!*type^!*";
constexpr std::string_view kOrganization = "^!*organization^!*";

// Chosen so that removing the marker leaves them intact.
constexpr std::string_view kDeferredAge = "^!!!*age^!!!*";
constexpr std::string_view kDeferredOrdinalAge = "^!!!*ordinal age^!!!*";

}  // namespace

std::string masterTitle(const std::vector<std::string>& titleFormat) {
  std::string master(kMarker);
  std::string_view separator;
  for (const auto& element : titleFormat) {
    master.append(separator).append(element);
    separator = kSeparator;
  }
  return master.append(kMarker);
}

std::string baseTitle(std::string master, const ContactDateRecord& record, std::string_view year,
                      std::string_view type) {
  ReplacingText title(std::move(master));
  title.replace(kFirstName, record.firstName);
  title.replace(kLastName, record.lastName);
  title.replace(kNickname, record.nickName);
  title.replace(kType, type);
  title.replace(kMiddleName, record.middleName);
  title.replace(kOrganization, record.organization);

  const bool yearIsKnown = year != kNoYear;
  title.replace(kYear, yearIsKnown ? year : kNull);
  title.replace(kAge, yearIsKnown ? kDeferredAge : kNull);
  title.replace(kOrdinalAge, yearIsKnown ? kDeferredOrdinalAge : kNull);

  title.replace("NULL ", "");
  title.replace(kNull, "");
  title.replace(kMarker, "");

  ReplacingText tidied(replaceSpecialCharactersIn(std::move(title).text()));
  tidied.replace("  ", " ");
  return std::move(tidied).text();
}

std::string titleForAge(std::string base, std::int64_t age, std::string_view language) {
  ReplacingText title(std::move(base));
  title.replace(kDeferredAge, std::to_string(age));
  title.replace(kDeferredOrdinalAge, ordinalNumberFormat(age, language));
  return std::move(title).text();
}

}  // namespace annivo
