// SPDX-License-Identifier: MIT
#include <array>
#include <random>
#include <string_view>

#include "tests/support/SampleHome.h"

namespace annivo {
namespace {

constexpr const char* kAnniversary = "_$!<Anniversary>!$_";
constexpr const char* kOther = "_$!<Other>!$_";

/// "<n as a UUID>" followed by `suffix`.
std::string uid(std::uint64_t n, const char* suffix) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "00000000-0000-4000-8000-000000000000";
  for (std::size_t i = text.size(); n != 0; n /= 16) text[--i] = kDigits[n % 16];
  return text + suffix;
}

StoredPerson person(std::uint64_t n, const char* first, const char* last,
                    std::optional<StoredDay> birthday = {}, std::vector<StoredDate> dates = {}) {
  StoredPerson result;
  result.uniqueId = uid(n, ":ABPerson");
  if (*first != '\0') result.firstName = first;
  if (*last != '\0') result.lastName = last;
  result.birthday = birthday;
  result.dates = std::move(dates);
  return result;
}

StoredPerson company(std::uint64_t n, const char* name, std::vector<StoredDate> dates) {
  StoredPerson result = person(n, "", "", {}, std::move(dates));
  result.organization = name;
  result.displayFlags = 1;
  return result;
}

StoredDate date(std::uint64_t n, std::optional<std::string> label, StoredDay day) {
  return {.uniqueId = uid(n, ""), .label = std::move(label), .day = day};
}

SampleStore mainStore(StoreGeneration generation) {
  SampleStore store;
  auto& people = store.people;
  people.push_back(person(0x101, "Robin", "Ashford", StoredDay{1975, 3, 14}));
  people.back().isMe = true;
  people.back().emails = {"robin@ashford.example", "r.ashford@work.example"};
  people.push_back(
      person(0x102, "Ann", "Smith", StoredDay{1980, 6, 10},
             {date(0x201, kAnniversary, {2004, 9, 18}), date(0x202, "First met", {1999, 5, 1})}));
  people.back().middleName = "Louise";
  people.back().nickname = "Annie";
  people.push_back(person(0x103, "Jürgen", "Müller", StoredDay{1604, 12, 24}));
  people.push_back(person(0x104, "Ella", "Leap", StoredDay{1984, 2, 29}));
  people.push_back(person(0x105, "Noah", "Leap", StoredDay{1604, 2, 29}));
  people.push_back(company(0x106, "Acme & Söhne GmbH", {date(0x203, kOther, {1962, 4, 2})}));
  people.back().firstName = "Jane";
  people.push_back(person(0x107, "Old", "Client", {}, {date(0x204, std::nullopt, {1900, 1, 31})}));
  people.back().organization = "Harbour Ltd";
  people.back().displayFlags = 33;  // company and a name order: stays a person
  people.push_back(person(0x108, "Nobody", "Dateless"));
  store.groups = {{uid(0x301, ":ABGroup"), "Family", {0, 1}, {1}},
                  {uid(0x302, ":ABGroup"), "Cousins", {3, 4}, {2}},
                  {uid(0x303, ":ABGroup"), "Overseas", {2}, {}},
                  {uid(0x304, ":ABGroup"), "Business", {5, 6, 1}, {}},
                  {uid(0x305, ":ABGroup"), "Recent", {}, {}, StoredGroup::Kind::smart}};
  if (generation != StoreGeneration::current) {
    // The older programs keep everybody in a group of this name.
    store.groups.push_back({uid(0x306, ":ABGroup"), "card", {0, 1, 2, 3, 4, 5, 6, 7}, {}});
  }
  return store;
}

SampleStore worldStore() {
  SampleStore store;
  store.people = {
      person(0x401, "Αθηνά", "Παπαδοπούλου", StoredDay{1991, 8, 15}),
      person(0x402, "İpek", "Yılmaz", StoredDay{1988, 10, 29},
             {date(0x501, kAnniversary, {2015, 6, 20})}),
      person(0x403, "Никита", "Соколов", StoredDay{1973, 1, 7}),
      person(0x404, "太郎", "山田", StoredDay{1969, 5, 5}, {date(0x502, "結婚", {1998, 11, 22})}),
      person(0x405, "민준", "김", StoredDay{2001, 9, 9}),
      person(0x406, "小明", "王", StoredDay{1995, 2, 17}),
      person(0x407, "ليلى", "حداد", StoredDay{1982, 7, 3}),
      person(0x408, "שרה", "כהן", StoredDay{1604, 4, 25}),
      person(0x409, "प्रिया", "शर्मा", StoredDay{1990, 12, 1}),
  };
  store.groups = {{uid(0x601, ":ABGroup"), "World", {0, 1, 2, 3, 4, 5, 6, 7, 8}, {}}};
  return store;
}

SampleStore clubStore() {
  SampleStore store;
  store.people = {
      person(0x701, "Zoë", "O’Brien", StoredDay{2026, 2, 3}),
      person(0x702, "Max 🎈", "", StoredDay{2011, 11, 11}),
      company(0x703, "Lake Rowing Club", {date(0x801, "Founded", {1898, 7, 12})}),
  };
  store.people.front().isSubscribed = true;
  store.groups = {{uid(0x901, ":ABGroup"), "Club", {0, 1, 2}, {}, StoredGroup::Kind::subscribed}};
  return store;
}

constexpr std::array kFirstNames{"Ann",   "Björn", "Chloé", "Dmitri", "Eleni", "Fatma",
                                 "Goran", "Hana",  "Ivan",  "Jorge",  "Kenji", "Lena",
                                 "Marek", "Nina",  "Oscar", "Priya",  "Rosa",  "Søren",
                                 "Tomás", "Yuki",  "Елена", "明",     "서연",  "Ελένη"};
constexpr std::array kLastNames{"Smith",  "Müller", "García",  "Rossi",  "Novák", "Yılmaz",
                                "Ivanov", "Larsen", "Dubois",  "Kowal",  "Silva", "Tanaka",
                                "Nagy",   "O’Neil", "Петрова", "Παππάς", "李",    "김"};

}  // namespace

std::vector<SampleStore> sampleStores(StoreGeneration generation) {
  return {mainStore(generation), worldStore(), clubStore()};
}

SampleStore generatedStore(std::size_t people, std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
  const auto day = [&](bool hasYear) {
    const int year = hasYear ? 1920 + static_cast<int>(below(100)) : 1604;
    const int month = 1 + static_cast<int>(below(12));
    return StoredDay{year, month, 1 + static_cast<int>(below(28))};
  };
  const std::uint64_t base = std::uint64_t{seed} << 32;
  SampleStore store;
  // Nine of ten have a birthday, three of five a date of their own: 3 dates for 2 people.
  for (std::size_t i = 0; i < people; ++i) {
    StoredPerson entry = person(base + i, kFirstNames[below(kFirstNames.size())],
                                kLastNames[below(kLastNames.size())]);
    if (i % 10 != 9) entry.birthday = day(i % 8 != 7);
    if (i % 5 < 3) {
      entry.dates = {
          date(base + i, i % 3 == 0 ? std::string(kAnniversary) : "First met", day(true))};
    }
    if (i % 50 == 49) {
      entry.organization = "Company " + std::to_string(i);
      entry.displayFlags = 1;
    }
    entry.emails = {"person" + std::to_string(i) + "@sample.example"};
    entry.isMe = i == 0;
    store.people.push_back(std::move(entry));
  }
  const std::size_t groups = people / 10;
  for (std::size_t g = 0; g < groups; ++g) {
    StoredGroup group{uid(base + g, ":ABGroup"), "Group " + std::to_string(g), {}, {}};
    for (std::size_t i = g; i < people; i += groups) group.people.push_back(i);
    if (g % 5 != 4 && g + 1 < groups) group.subgroups = {g + 1};
    store.groups.push_back(std::move(group));
  }
  return store;
}

}  // namespace annivo
