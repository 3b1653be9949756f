// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "format/TitleTemplate.h"

namespace annivo {
namespace {

// The same rules once more, written to be plainly right and nothing else: every step is a pair of
// texts, and a pair is applied by walking the text one byte at a time.

using Steps = std::vector<std::pair<std::string, std::string>>;

std::string applied(std::string text, const Steps& steps) {
  for (const auto& [from, to] : steps) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
      if (text[at] == from[0] && text.compare(at, from.size(), from) == 0) {
        result += to;
        at += from.size();
      } else {
        result.push_back(text[at++]);
      }
    }
    text = result;
  }
  return text;
}

struct Input {
  std::vector<std::string> format;
  ContactDateRecord record;
  std::string year;
  std::string type;
  int age = 0;
  std::string language;
};

std::string naiveOrdinal(int n, const std::string& language) {
  const std::string digits = std::to_string(n);
  if (digits == "0") return "";
  if (language == "es" || language == "it" || language == "pt") return digits + "\xC2\xB0";
  if (language == "de") return digits + ".";
  if (language == "fr") return digits == "1" ? "1er" : digits + "e";
  if (digits.size() > 1 && digits[digits.size() - 2] == '1') return digits + "th";
  if (digits.back() == '1') return digits + "st";
  if (digits.back() == '2') return digits + "nd";
  if (digits.back() == '3') return digits + "rd";
  return digits + "th";
}

std::string naiveTitle(const Input& in) {
  std::string text = "^!*";
  for (std::size_t i = 0; i < in.format.size(); ++i) {
    if (i > 0) text += "^!* ^!*";
    text += in.format[i];
  }
  text += "^!*";
  const auto marked = [](const std::string& token) { return "^!*" + token + "^!*"; };
  const bool noYear = in.year == "1604";
  return applied(text, {{marked("First name"), in.record.firstName},
                        {marked("Last name"), in.record.lastName},
                        {marked("nickname"), in.record.nickName},
                        {marked("type"), in.type},
                        {marked("Middle name"), in.record.middleName},
                        {marked("organization"), in.record.organization},
                        {marked("year"), noYear ? "NULL" : in.year},
                        {marked("age"), noYear ? "NULL" : "^!!!*age^!!!*"},
                        {marked("ordinal age"), noYear ? "NULL" : "^!!!*ordinal age^!!!*"},
                        {"NULL ", ""},
                        {"NULL", ""},
                        {"^!*", ""},
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
                        {"  ", " "},
                        {"^!!!*age^!!!*", std::to_string(in.age)},
                        {"^!!!*ordinal age^!!!*", naiveOrdinal(in.age, in.language)}});
}

std::string title(const Input& in) {
  return titleForAge(baseTitle(masterTitle(in.format), in.record, in.year, in.type), in.age,
                     in.language);
}

/// Texts joined from pieces that the rules react to.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}

  Input input() {
    Input in;
    for (int i = below(9); i > 0; --i) {
      in.format.push_back(below(3) == 0 ? text(3) : std::string(kTokens[index(kTokens.size())]));
    }
    in.record.firstName = value();
    in.record.middleName = value();
    in.record.lastName = value();
    in.record.nickName = value();
    in.record.organization = value();
    in.type = value();
    in.year = below(3) == 0 ? "1604" : std::to_string(1580 + below(500));
    in.age = below(2) == 0 ? below(4) : below(430);
    static const std::vector<std::string> languages{"en", "es", "it", "pt", "de", "fr", "pt-BR"};
    in.language = languages[index(languages.size())];
    return in;
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  std::size_t index(std::size_t size) {
    return std::uniform_int_distribution<std::size_t>(0, size - 1)(random_);
  }
  std::string value() { return below(4) == 0 ? "NULL" : text(6); }
  std::string text(int most) {
    static const std::vector<std::string> pieces{"NULL",
                                                 "NULL ",
                                                 " NULL",
                                                 "NU",
                                                 "LL",
                                                 "^!*",
                                                 "^!",
                                                 "*",
                                                 "^",
                                                 "!",
                                                 "^!!!*",
                                                 "^!!!*age^!!!*",
                                                 "^!!!*ordinal age^!!!*",
                                                 "age",
                                                 "ordinal age",
                                                 "^!*age^!*",
                                                 "^!*type^!*",
                                                 "^!*organization^!*",
                                                 "^!*Last name^!*",
                                                 "First name",
                                                 "First name^!*",
                                                 "^!*year",
                                                 " ",
                                                 "  ",
                                                 "   ",
                                                 " .",
                                                 " ,",
                                                 " :",
                                                 " ;",
                                                 " !",
                                                 " ?",
                                                 "( ",
                                                 " )",
                                                 "[ ",
                                                 " ]",
                                                 "{ ",
                                                 " }",
                                                 "< ",
                                                 " >",
                                                 " - ",
                                                 " / ",
                                                 "-",
                                                 "/",
                                                 " 's ",
                                                 "'s",
                                                 "'",
                                                 "s",
                                                 ".",
                                                 "Ann",
                                                 "Smith",
                                                 "\u200F",
                                                 "\xE2\x80\xAE",
                                                 "\U0001F382",
                                                 "e\u0301",
                                                 "\n",
                                                 "\r\n",
                                                 "\t",
                                                 "\x01",
                                                 "\u00A0",
                                                 "%@",
                                                 "1604",
                                                 std::string(1, '\0'),
                                                 "\xFF"};
    std::string result;
    for (int i = below(most + 1); i > 0; --i) result += pieces[index(pieces.size())];
    return result;
  }

  std::mt19937 random_;
};

std::string shown(const Input& in) {
  std::string text = "template:";
  for (const auto& element : in.format) text += " [" + element + "]";
  const auto& r = in.record;
  return text + " first [" + r.firstName + "] middle [" + r.middleName + "] last [" + r.lastName +
         "] nick [" + r.nickName + "] organization [" + r.organization + "] type [" + in.type +
         "] year " + in.year + " age " + std::to_string(in.age) + " " + in.language;
}

TEST(TitleTemplateProperty, AgreesWithTheNaiveTitleOn100000RandomTemplatesAndRecords) {
  constexpr std::uint32_t kSeed = 20261120;
  Generator generator(kSeed);
  int different = 0;
  int notEmpty = 0;
  for (int i = 0; i < 100'000 && different < 5; ++i) {
    const Input in = generator.input();
    const std::string result = title(in);
    notEmpty += result.empty() ? 0 : 1;
    if (result == naiveTitle(in)) continue;
    ++different;
    ADD_FAILURE() << "seed " << kSeed << ", case " << i << ": " << shown(in) << "\n  gives ["
                  << result << "]\n  not   [" << naiveTitle(in) << "]";
  }
  EXPECT_GT(notEmpty, 70'000) << "the generator makes too little to compare";
}

// Huge templates. A way of replacing that costs the square of the length would need hours here.

Input named(std::vector<std::string> format) {
  Input in;
  in.format = std::move(format);
  in.record.firstName = "Ann";
  in.record.lastName = "Smith";
  in.type = "birthday";
  in.year = "1980";
  in.age = 46;
  in.language = "en";
  return in;
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  for (std::size_t i = 0; i < times; ++i) result += text;
  return result;
}

TEST(TitleTemplateProperty, ThousandsOfElements) {
  std::vector<std::string> format;
  std::string expected;
  for (int i = 0; i < 10'000; ++i) {
    for (const char* element : {"First name", "", "ordinal age", ",", "NULL", "x"}) {
      format.emplace_back(element);
    }
    expected += "Ann 46th, x ";
  }
  expected.pop_back();
  const Input in = named(format);
  EXPECT_TRUE(title(in) == expected);
  EXPECT_TRUE(title(in) == naiveTitle(in));
}

TEST(TitleTemplateProperty, ThousandsOfEmptyElements) {
  EXPECT_EQ(title(named(std::vector<std::string>(100'000))), std::string(50'000, ' '));
}

void expectNaiveTitleOfElementsOf(std::size_t size,
                                  std::initializer_list<std::string_view> pieces) {
  for (const auto piece : pieces) {
    const Input in =
        named({"First name", repeated(piece, size / piece.size()), "Last name", "age"});
    EXPECT_TRUE(title(in) == naiveTitle(in)) << "of \"" << piece << '"';
  }
}

TEST(TitleTemplateProperty, LongElementsOfEveryKind) {
  expectNaiveTitleOfElementsOf(
      1 << 16, {"x", " ", "^", "^!", "^!*", "NULL", "NUL", " . ", "( ", "'s ", " - ", "^!!!*age",
                "^!*First name^!*", "\U0001F382"});
}

TEST(TitleTemplateProperty, ElementsOfOneMebibyte) {
  expectNaiveTitleOfElementsOf(1 << 20, {"x", "NULL . ", "^!*First name^!*"});
}

TEST(TitleTemplateProperty, ANameOfOneMebibyte) {
  Input in = named({"First name", "Last name", "First name", "type", "First name"});
  in.record.firstName = repeated("NULL ^!* . ", 95'000);
  EXPECT_TRUE(title(in) == naiveTitle(in));
}

}  // namespace
}  // namespace annivo
