// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "parent/settings/Session.h"

namespace annivo {

enum class Style { plain, bold, dim, green, yellow, red };

/// Where a command speaks: results on one stream, everything else on the other.
struct Console {
  std::ostream& out;
  std::ostream& err;
  bool json = false;         ///< results as JSON
  bool colours = false;      ///< on `out`
  bool errTerminal = false;  ///< whether `err` is a terminal

  /// One line of results.
  void line(std::string_view text) const;
  /// One line beside the results.
  void note(std::string_view text) const;
  /// Rows in aligned columns; the first row is the headings.
  void table(const std::vector<std::vector<std::string>>& rows) const;
  void writeJSON(const PropertyList& value) const;
  /// `text` in a style, where there are colours.
  [[nodiscard]] std::string styled(std::string_view text, Style style) const;
};

/// What every command works with.
struct CommandSession : Session {
  Console& console;
};

/// JSON with two spaces of indentation, ending in a line break; dates as "2026-11-20T18:46:00Z".
[[nodiscard]] std::string jsonText(const PropertyList& value);

}  // namespace annivo
