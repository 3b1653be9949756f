// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace annivo {

/// A text for a series of replacements, each applied to the result of the one before. Two buffers
/// are reused, so a replacement costs one pass and usually no allocation.
class ReplacingText {
 public:
  /// The size in bytes after which a replacement leaves the rest of the text unchanged, so that a
  /// template which repeats a huge value cannot exhaust memory.
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
