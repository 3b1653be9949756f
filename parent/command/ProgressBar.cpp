// SPDX-License-Identifier: MIT
#include "parent/command/ProgressBar.h"

#include <string>

namespace annivo {

void ProgressBar::show(std::uint64_t done, std::uint64_t all) {
  if (!console_.errTerminal || all == 0) return;
  const int percent = static_cast<int>(done * 100 / all);
  if (percent == shown_) return;
  if (now_() - start_ < std::chrono::seconds(1)) return;
  shown_ = percent;
  const auto filled = static_cast<std::size_t>(percent / 4);
  console_.err << "\r[" << std::string(filled, '#') << std::string(25 - filled, ' ') << "] "
               << percent << "% " << std::flush;
}

void ProgressBar::clear() {
  if (shown_ >= 0) console_.err << '\r' << std::string(40, ' ') << '\r' << std::flush;
  shown_ = -1;
}

}  // namespace annivo
