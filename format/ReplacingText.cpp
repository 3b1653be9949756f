// SPDX-License-Identifier: MIT
#include "format/ReplacingText.h"

namespace annivo {

void ReplacingText::replace(std::string_view from, std::string_view to) {
  auto found = text_.find(from);
  if (found == std::string::npos) return;
  spare_.clear();
  std::size_t copied = 0;
  for (; found != std::string::npos && spare_.size() < kEnough; found = text_.find(from, copied)) {
    spare_.append(text_, copied, found - copied).append(to);
    copied = found + from.size();
  }
  spare_.append(text_, copied);
  text_.swap(spare_);
}

}  // namespace annivo
