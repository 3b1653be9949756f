// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "base/Unicode.h"
#include "codecs/vcard/VCard.h"
#include "codecs/vcard/VCardDate.h"
#include "codecs/vcard/VCardSplitter.h"
#include "tests/fuzz/require.h"

namespace annivo::fuzz {

/// The cards of a stream that comes in pieces of random sizes up to `largest`.
inline std::vector<VCardText> cardsOf(std::string_view stream, std::size_t largest) {
  std::vector<VCardText> cards;
  VCardSplitter splitter([&](VCardText card) { cards.push_back(std::move(card)); });
  std::mt19937 random(static_cast<std::uint32_t>(stream.size()));
  while (!stream.empty()) {
    const std::size_t size = std::min<std::size_t>(1 + random() % largest, stream.size());
    splitter.feed(stream.substr(0, size));
    stream.remove_prefix(size);
  }
  splitter.finish();
  return cards;
}

inline void checkProperty(const VCard& card, const VCardProperty& property) {
  require(!property.name.empty(), "a property has a name");
  const auto text = card.text(property);
  const auto parts = card.parts(property, ";,");
  require(text.ok() == parts.ok(), "a value can be read if its parts can");
  if (!text) return;
  require(isValidUTF8(*text), "a text is valid UTF-8");
  require(!parts->empty(), "a value has a part");
  for (const std::string& part : *parts) require(isValidUTF8(part), "so is each part");
  const auto day = vCardDay(property, *text);
  if (!day) {
    require(!day.error().description.empty(), "what is no day says why");
    return;
  }
  require(day->year >= 1 && day->year <= 9999, "a day lies in a year");
  require(day->month >= 1 && day->month <= 12, "a day lies in a month");
  const std::chrono::year_month_day civil{std::chrono::year{day->year},
                                          std::chrono::month{static_cast<unsigned>(day->month)},
                                          std::chrono::day{static_cast<unsigned>(day->day)}};
  require(day->day <= 31 && civil.ok(), "a day is one of the calendar");
}

/// What holds for every stream of cards, whoever wrote it; aborts where it does not.
inline void checkCards(std::string_view stream) {
  const auto cards = cardsOf(stream, 1 << 16);
  const auto again = cardsOf(stream, 7);
  require(cards.size() == again.size(), "pieces change no count");
  for (std::size_t i = 0; i < cards.size(); ++i) {
    require(cards[i].text == again[i].text && cards[i].line == again[i].line &&
                cards[i].skipped == again[i].skipped,
            "pieces change no card");
    require(cards[i].text.size() <= VCardSplitter::kCardLimit, "a card has a limit");
    if (!cards[i].skipped.empty()) continue;
    const VCard card = VCard::parse(cards[i].text);
    for (const VCardProperty& property : card.properties()) checkProperty(card, property);
  }
}

}  // namespace annivo::fuzz
