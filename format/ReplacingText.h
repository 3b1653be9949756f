// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace annivo {

/// A text that goes through many replacements, each acting on the result of the one before. Two
/// buffers serve them all, so a replacement costs one pass and, in the long run, no allocation.
class ReplacingText {
 public:
  /// A replacement that has made so many bytes leaves the rest of the text as it is: a template
  /// that repeats a huge value cannot take all memory.
  static constexpr std::size_t kEnough = std::size_t{64} << 20;

  explicit ReplacingText(std::string text) : text_(std::move(text)) {}

  /// Every occurrence of `from` (not empty), found left to right without overlap, becomes `to`.
  void replace(std::string_view from, std::string_view to);
  [[nodiscard]] const std::string& text() const& { return text_; }
  [[nodiscard]] std::string text() && { return std::move(text_); }

 private:
  std::string text_;
  std::string spare_;
};

}  // namespace annivo
