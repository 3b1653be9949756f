// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// One property of a card, its value as it stands in the file but for the folding.
struct VCardProperty {
  std::string group;  ///< "item1" of "item1.X-ABDATE", in upper case; may be empty
  std::string name;   ///< in upper case
  /// Names in upper case. A bare parameter of version 2.1 is an ENCODING or else a TYPE.
  std::vector<std::pair<std::string, std::string>> parameters;
  std::string value;

  /// The parameter's first value, or "".
  [[nodiscard]] std::string_view parameter(std::string_view parameterName) const;
  [[nodiscard]] bool isQuotedPrintable() const;
  /// Whether a parameter's comma-separated values hold `wanted`, case aside.
  [[nodiscard]] bool parameterHolds(std::string_view parameterName, std::string_view wanted) const;
};

/// A card of version 2.1, 3.0 or 4.0.
class VCard {
 public:
  /// `text` holds the lines between BEGIN:VCARD and END:VCARD. A line without a name or a colon is
  /// passed over.
  static VCard parse(std::string_view text);

  [[nodiscard]] const std::string& version() const { return version_; }
  [[nodiscard]] const std::vector<VCardProperty>& properties() const { return properties_; }
  /// The first property of that name, or null.
  [[nodiscard]] const VCardProperty* property(std::string_view name) const;

  /// The value as UTF-8 text: transfer encoding, charset and escapes undone. Malformed when the
  /// bytes are not what the charset says, refused when the charset is unknown.
  [[nodiscard]] Result<std::string> text(const VCardProperty& property) const;
  /// The same for a value of several parts with `separator` between them, which an escaped one is
  /// not.
  [[nodiscard]] Result<std::vector<std::string>> parts(const VCardProperty& property,
                                                       std::string_view separators) const;

 private:
  [[nodiscard]] Result<std::string> toUTF8(const VCardProperty& property, std::string bytes) const;

  std::string version_;
  std::vector<VCardProperty> properties_;
};

}  // namespace annivo
