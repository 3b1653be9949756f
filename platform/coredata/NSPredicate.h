// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/plist/PropertyList.h"

namespace annivo {

/// A condition over attributes. The forms understood: `attribute OP value` with OP one of
/// == != > >= < <= LIKE LIKE[c], value one of %@ (the next argument), nil, a number or a quoted
/// text; AND, OR, NOT and parentheses. LIKE takes "*" (any run) and "?" (any one character) in the
/// value as wildcards, whole-value; LIKE[c] compares case-folded.
///
///   static const auto format = NSPredicateFormat::parse("(myUID LIKE[c] %@) AND (date == %@)");
///   NSPredicate predicate = format.with({uid, date});
///
/// A nil attribute is equal to nil only, and less or greater than nothing.
class NSPredicate;

/// A format, parsed once.
class NSPredicateFormat {
 public:
  /// A format outside the grammar above is our own bug and aborts with a message.
  static NSPredicateFormat parse(std::string_view format);
  /// The predicate with its %@ filled in, in order; another number of arguments aborts.
  [[nodiscard]] NSPredicate with(std::vector<PropertyList> arguments) const;

  struct Node;

 private:
  std::shared_ptr<const Node> root_;
  std::size_t argumentCount_ = 0;
};

class NSPredicate {
 public:
  /// The value of an attribute by name.
  using Lookup = std::function<const PropertyList&(std::string_view attribute)>;
  [[nodiscard]] bool evaluate(const Lookup& valueForKey) const;

  /// One comparison of a conjunction, for stores that index.
  struct Comparison {
    enum class Operator {
      equal,
      notEqual,
      greater,
      greaterOrEqual,
      less,
      lessOrEqual,
      like,
      likeC
    };
    std::string_view attribute;
    Operator op;
    const PropertyList* value;  ///< nil for `nil`
    /// Whether it holds where the attribute has that value.
    [[nodiscard]] bool holds(const PropertyList& left) const;
  };
  /// The comparisons when the predicate is nothing but comparisons joined by AND; else nothing.
  [[nodiscard]] std::optional<std::vector<Comparison>> conjunction() const;

 private:
  friend class NSPredicateFormat;
  std::shared_ptr<const NSPredicateFormat::Node> root_;
  std::vector<PropertyList> arguments_;
};

/// Whether a LIKE value holds a wildcard.
[[nodiscard]] bool hasWildcard(std::string_view pattern);

}  // namespace annivo
