// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/Date.h"
#include "base/Error.h"

namespace annivo {

/// One property-list value, or nil. Boolean true, integer 1 and text "1" are three different
/// values. An immutable-by-convention value type; copies are deep.
class PropertyList {
 public:
  struct Data {
    std::string bytes;
    friend bool operator==(const Data&, const Data&) = default;
  };
  /// A value of a kind that has no type here (a UID, an integer beyond 64 bits, a date beyond the
  /// year 9999): not nil, read by nobody, and kept as its object in the binary form so that a file
  /// that is written anew loses nothing.
  struct Foreign {
    std::string object;
    friend bool operator==(const Foreign&, const Foreign&) = default;
  };
  using Array = std::vector<PropertyList>;
  using Dictionary = std::map<std::string, PropertyList, std::less<>>;

  PropertyList() = default;
  PropertyList(bool value) : value_(value) {}
  PropertyList(int value) : value_(static_cast<std::int64_t>(value)) {}
  PropertyList(std::int64_t value) : value_(value) {}
  PropertyList(double value) : value_(value) {}
  PropertyList(const char* value) : value_(std::string(value)) {}
  PropertyList(std::string value) : value_(std::move(value)) {}
  PropertyList(std::string_view value) : value_(std::string(value)) {}
  PropertyList(Date value) : value_(value) {}
  PropertyList(Data value) : value_(std::move(value)) {}
  PropertyList(Foreign value) : value_(std::move(value)) {}
  PropertyList(Array value) : value_(std::move(value)) {}
  PropertyList(Dictionary value) : value_(std::move(value)) {}

  [[nodiscard]] bool isNil() const { return std::holds_alternative<std::monostate>(value_); }
  /// The value of that type, or null when this is another one.
  [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&value_); }
  [[nodiscard]] const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
  [[nodiscard]] const double* real() const { return std::get_if<double>(&value_); }
  [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&value_); }
  [[nodiscard]] const Date* date() const { return std::get_if<Date>(&value_); }
  [[nodiscard]] const Data* data() const { return std::get_if<Data>(&value_); }
  [[nodiscard]] const Foreign* foreign() const { return std::get_if<Foreign>(&value_); }
  [[nodiscard]] const Array* array() const { return std::get_if<Array>(&value_); }
  [[nodiscard]] const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }

  /// Identity with the boolean object true; no other value passes.
  [[nodiscard]] bool isTheTrueObject() const { return boolean() && *boolean(); }
  /// The value under a key; nil when there is none or this is no dictionary.
  [[nodiscard]] const PropertyList& operator[](std::string_view key) const;
  /// Equality with a text; false for every other type.
  [[nodiscard]] bool isEqualToString(std::string_view text) const {
    return string() && *string() == text;
  }
  /// The text, or `otherwise` when this is no text.
  [[nodiscard]] std::string stringOr(std::string_view otherwise) const;

  /// Number, boolean, or a text's leading whole number (white space before it is skipped), held at
  /// the limits of 64 bits; 0 for all else.
  [[nodiscard]] std::int64_t integerValue() const;
  /// The same in 32 bits: numbers keep their low 32 bits, texts are held at the limits.
  [[nodiscard]] std::int32_t intValue() const;
  /// Non-zero numbers, true, and texts that begin (after white space, sign and zeros) with one of
  /// Y y T t 1..9.
  [[nodiscard]] bool boolValue() const;

  friend bool operator==(const PropertyList&, const PropertyList&) = default;

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, Date, Data, Foreign, Array,
               Dictionary>
      value_;
};

/// Reads a binary or XML property list. Refuses, as malformed, what is over 16 MiB, nested deeper
/// than 64, of more than 1,000,000 nodes or 64 MiB of text and data (a binary form can name one
/// object many times), what is neither form, and what could be read in part only. Invalid UTF-8 is
/// repaired; XML may be UTF-16 with a byte order mark. `name` is the file named in the error.
[[nodiscard]] Result<PropertyList> parsePropertyList(std::string_view bytes,
                                                     const std::string& name);
/// The binary form; dates keep their fraction. Nil values inside are left out.
[[nodiscard]] std::string binaryPropertyList(const PropertyList& value);
/// The XML form, keys sorted; dates are whole seconds, characters that XML forbids become U+FFFD.
/// Foreign values and nil are left out: most have no form in XML.
[[nodiscard]] std::string xmlPropertyList(const PropertyList& value);

}  // namespace annivo
