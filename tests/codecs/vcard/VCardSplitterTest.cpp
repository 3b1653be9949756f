// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "codecs/vcard/VCardSplitter.h"

namespace annivo {
namespace {

std::vector<VCardText> split(const std::string& text, std::size_t piece = std::string::npos) {
  std::vector<VCardText> cards;
  VCardSplitter splitter([&](VCardText card) { cards.push_back(std::move(card)); });
  for (std::size_t at = 0; at < text.size(); at += std::min(piece, text.size())) {
    splitter.feed(std::string_view(text).substr(at, piece));
  }
  splitter.finish();
  return cards;
}

TEST(VCardSplitter, CutsCardsInAnyPieceSize) {
  const std::string text =
      "\xEF\xBB\xBF"
      "BEGIN:VCARD\r\nFN:Ann\r\nEND:VCARD\r\n\r\nbegin:vcard\nFN:Bob\nend:vcard";
  for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::string::npos}) {
    const auto cards = split(text, piece);
    ASSERT_EQ(cards.size(), 2U);
    EXPECT_EQ(cards[0].text, "FN:Ann\n");
    EXPECT_EQ(cards[0].line, 1U);
    EXPECT_EQ(cards[1].text, "FN:Bob\n");
    EXPECT_EQ(cards[1].line, 5U);
  }
}

TEST(VCardSplitter, SaysThatTheLastCardNeverEnds) {
  const auto cards = split("BEGIN:VCARD\nFN:Ann\n");
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(cards[0].skipped, "the card never ends (END:VCARD is missing)");
}

TEST(VCardSplitter, GoesOnWithTheCardAfterOneThatNeverEnds) {
  const auto cards = split("BEGIN:VCARD\nFN:Ann\nBEGIN:VCARD\nFN:Bob\nEND:VCARD\n");
  ASSERT_EQ(cards.size(), 2U);
  EXPECT_NE(cards[0].skipped, "");
  EXPECT_EQ(cards[1].skipped, "");
  EXPECT_EQ(cards[1].text, "FN:Bob\n");
}

TEST(VCardSplitter, LeavesOutACardInsideACard) {
  const auto cards =
      split("BEGIN:VCARD\nFN:Ann\nAGENT:\nBEGIN:VCARD\nFN:Bob\nEND:VCARD\nNOTE:x\nEND:VCARD\n");
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(cards[0].text, "FN:Ann\nAGENT:\nNOTE:x\n");
}

TEST(VCardSplitter, LeavesOutPicturesHoweverTheirLinesAreFolded) {
  const auto cards = split(
      "BEGIN:VCARD\nPHOTO;ENCODING=b:AAAA\n BBBB\nitem1.LOGO:x\nSOUND;BASE64:CCCC\nDDDD\n\n"
      "FN:Ann\nEND:VCARD\n");
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(cards[0].text, "FN:Ann\n");
}

TEST(VCardSplitter, TakesACardWhosePictureIsLargerThanACardMayBe) {
  const std::string picture(3 * VCardSplitter::kCardLimit, 'A');
  for (const std::string& text : {"BEGIN:VCARD\nPHOTO:" + picture + "\nFN:Ann\nEND:VCARD\n",
                                  "BEGIN:VCARD\nPHOTO:\n " + picture + "\nFN:Ann\nEND:VCARD\n"}) {
    const auto cards = split(text, 1000);
    ASSERT_EQ(cards.size(), 1U);
    EXPECT_EQ(cards[0].text, "FN:Ann\n");
    EXPECT_EQ(cards[0].skipped, "");
  }
}

TEST(VCardSplitter, TakesACardOfExactlyTheLimitAndSkipsOneAbove) {
  const auto cardOf = [](std::size_t size) {
    std::string text = "BEGIN:VCARD\n";
    for (; size > 1000; size -= 1000) text += "NOTE:" + std::string(994, 'x') + '\n';
    return text + "NOTE:" + std::string(size - 6, 'x') + "\nEND:VCARD\n";
  };
  EXPECT_EQ(split(cardOf(VCardSplitter::kCardLimit))[0].skipped, "");
  EXPECT_EQ(split(cardOf(VCardSplitter::kCardLimit + 1))[0].skipped,
            "the card is larger than 1 MiB");
}

TEST(VCardSplitter, SkipsALineOf100MegabytesAndTakesTheCardAfterIt) {
  std::vector<VCardText> cards;
  VCardSplitter splitter([&](VCardText card) { cards.push_back(std::move(card)); });
  splitter.feed("BEGIN:VCARD\nNOTE:");
  const std::string piece(64 * 1024, 'x');
  for (int i = 0; i < 1600; ++i) splitter.feed(piece);
  splitter.feed("\nEND:VCARD\nBEGIN:VCARD\nFN:Bob\nEND:VCARD\n");
  splitter.finish();
  ASSERT_EQ(cards.size(), 2U);
  EXPECT_EQ(cards[0].skipped, "the card is larger than 1 MiB");
  EXPECT_EQ(cards[0].text, "");
  EXPECT_EQ(cards[1].text, "FN:Bob\n");
}

TEST(VCardSplitter, KeepsNothingOfTextOutsideCards) {
  std::size_t count = 0;
  VCardSplitter splitter([&](const VCardText&) { ++count; });
  const std::string piece(64 * 1024, 'x');
  for (int i = 0; i < 1600; ++i) splitter.feed(piece);
  splitter.finish();
  EXPECT_EQ(count, 0U);
}

}  // namespace
}  // namespace annivo
