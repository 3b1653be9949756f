// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>

#include "platform/foundation/NSLocale.h"

namespace annivo {
namespace {

using Languages = std::vector<std::string>;

Languages languages(const PropertyList& apple, std::map<std::string, std::string> variables) {
  return preferredLanguages(apple, [&](const std::string& name) { return variables[name]; });
}

TEST(PreferredLanguages, AreAppleLanguagesAsTheyStand) {
  EXPECT_EQ(languages(PropertyList::Array{"pt-BR", "zh-Hans", "xx_YY"}, {{"LANG", "de_DE"}}),
            (Languages{"pt-BR", "zh-Hans", "xx_YY"}));
  EXPECT_EQ(languages(PropertyList::Array{7, "", "de"}, {}), Languages{"de"});
}

TEST(PreferredLanguages, FallBackToTheFirstVariableThatIsSet) {
  const struct {
    std::map<std::string, std::string> variables;
    Languages expected;
  } rows[] = {
      {{{"LANGUAGE", "fr:de"}, {"LC_ALL", "es_ES"}, {"LANG", "it_IT"}}, {"fr", "de"}},
      {{{"LC_ALL", "es_ES.UTF-8"}, {"LC_MESSAGES", "fr_FR"}, {"LANG", "it_IT"}}, {"es"}},
      {{{"LC_MESSAGES", "fr_FR"}, {"LANG", "it_IT"}}, {"fr"}},
      {{{"LANG", "it_IT.UTF-8@euro"}}, {"it"}},
      {{{"LANG", "PT-br"}}, {"pt"}},
      {{{"LANGUAGE", "de_AT:de:en_GB:C"}}, {"de", "en"}},
      {{{"LANG", "zh_TW.UTF-8"}}, {"zh-Hant"}},
      {{{"LANG", "zh_HK"}}, {"zh-Hant"}},
      {{{"LANG", "zh_MO"}}, {"zh-Hant"}},
      {{{"LANG", "zh_CN.UTF-8"}}, {"zh-Hans"}},
      {{{"LANG", "zh"}}, {"zh-Hans"}},
      {{{"LANG", "C"}}, {"en"}},
      {{{"LANG", "C.UTF-8"}}, {"en"}},
      {{{"LANG", "POSIX"}}, {"en"}},
      {{{"LC_ALL", "C"}, {"LANG", "de_DE"}}, {"en"}},
      {{{"LANG", "../../etc"}}, {"en"}},
      {{{"LANG", ":::"}}, {"en"}},
      {{}, {"en"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(languages({}, row.variables), row.expected) << &row - rows;
    EXPECT_EQ(languages(PropertyList::Array{}, row.variables), row.expected) << &row - rows;
    EXPECT_EQ(languages("de", row.variables), row.expected) << &row - rows;
  }
}

TEST(CatalogueLanguages, AreThoseOfTheFirstVariableThatIsSet) {
  struct Row {
    std::map<std::string, std::string> environment;
    const char* languages;
  };
  const Row rows[] = {
      {{}, "C"},
      {{{"LANG", "C"}}, "C"},
      {{{"LANG", "POSIX"}}, "C"},
      {{{"LANG", "C.UTF-8"}}, "C"},
      {{{"LANG", "de_DE.UTF-8"}}, "de_DE:C"},
      {{{"LANG", "de_DE@euro"}}, "de_DE@euro:C"},
      {{{"LANG", "en_GB.UTF-8"}}, "C"},
      {{{"LANG", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}}, "fr_FR:C"},
      {{{"LC_MESSAGES", "fr_FR"}, {"LC_ALL", "it_IT"}}, "it_IT:C"},
      {{{"LC_ALL", "it_IT"}, {"LANGUAGE", "nl"}}, "nl:C"},
      {{{"LANGUAGE", "pt-BR:fr:en:de"}}, "pt_BR:fr:C"},
      {{{"LANGUAGE", "zh-Hans"}}, "zh_CN:C"},
      {{{"LANG", "zh_HK.UTF-8"}}, "zh_TW:C"},
      {{{"LANGUAGE", "../../etc:de"}}, "de:C"},
      {{{"LANGUAGE", "de/../../x"}}, "C"},
      {{{"LANGUAGE", ":de:"}}, "de:C"},
  };
  for (Row row : rows) {
    EXPECT_EQ(catalogueLanguages([&](const std::string& name) { return row.environment[name]; }),
              row.languages);
  }
}

}  // namespace
}  // namespace annivo
