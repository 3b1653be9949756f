// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace annivo {

/// The text of one card as it stands between BEGIN:VCARD and END:VCARD, or why it cannot be had.
struct VCardText {
  std::string text;      ///< physical lines, each ended by "\n"; pictures and sounds are left out
  std::size_t line = 0;  ///< of BEGIN:VCARD, from 1
  std::string skipped;   ///< the reason, when `text` is not to be used; else empty
};

/// Cuts a stream of bytes into cards, in memory that does not grow with the stream and in time
/// linear in it.
///
/// 1. feed() takes the bytes in pieces of any size and delivers each card as its end is met.
/// 2. finish() delivers a last card that never ended.
///
/// A card over kCardLimit (its pictures, sounds and keys not counted), and one that never ends, is
/// delivered with a reason. A card inside a card (the value of AGENT) is left out.
class VCardSplitter {
 public:
  static constexpr std::size_t kCardLimit = std::size_t{1} << 20;

  explicit VCardSplitter(std::function<void(VCardText)> deliver) : deliver_(std::move(deliver)) {}
  void feed(std::string_view bytes);
  void finish();

 private:
  void appendToLine(std::string_view piece);
  void endLine();
  void takeLine(std::string_view line);
  void takePropertyLine(std::string_view line);
  void deliver(std::string reason);

  std::function<void(VCardText)> deliver_;
  std::string line_;          ///< the physical line so far
  bool discardRest_ = false;  ///< nothing more of the line is kept
  std::size_t lineNumber_ = 0;
  bool inCard_ = false;
  bool tooLong_ = false;
  bool dropping_ = false;    ///< in a picture, sound or key
  bool afterAgent_ = false;  ///< the line before opens an embedded card
  std::size_t depth_ = 0;    ///< embedded cards around the line
  VCardText card_;
};

}  // namespace annivo
