// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "base/Error.h"

namespace annivo {

/// Walks over the direct children of an XML document's root element without making a tree, so that
/// a large file can be parsed a few children at a time and its bytes copied as they stand.
///
/// Finds where elements begin and end, heeding comments, CDATA, processing instructions and quoted
/// attribute values; whether an element is well-formed inside is for its parser to say.
class XMLElements {
 public:
  struct Element {
    std::string_view name;
    std::size_t begin = 0;  ///< of its "<"
    std::size_t end = 0;    ///< after its last ">"
  };

  /// `text` must outlive this.
  explicit XMLElements(std::string_view text) : text_(text) {}

  /// Goes over the prolog into the root element. Malformed when the root is not called `root` or
  /// the document type declares anything of its own (an entity, say).
  Result<void> enter(std::string_view root);
  /// The next child; nothing at the root's end tag, after which only white space and comments may
  /// come. Text between the children is malformed.
  Result<std::optional<Element>> next();
  /// Where the root's end tag begins; after the last child.
  [[nodiscard]] std::size_t rootEnd() const { return rootEnd_; }

 private:
  /// Goes over white space, comments and processing instructions; false when one does not end.
  bool skipMiscellany();
  /// Goes over what begins with "<" at the present place; false when it does not end.
  bool skipMarkup();
  /// Goes over the element of that name that begins at the present place when that takes a look at
  /// its tags' names only: when it holds no comment and the like and none of its own name.
  bool skipPlainElement(std::string_view name);
  /// Whatever it holds.
  Result<void> skipElement();
  /// Goes over a document type without declarations of its own.
  bool skipDocumentType();
  [[nodiscard]] bool at(std::string_view token) const {
    return at_ < text_.size() && text_.substr(at_).starts_with(token);
  }
  bool skipPast(std::string_view token, std::size_t from);
  [[nodiscard]] std::string_view nameAt(std::size_t begin) const;

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t rootEnd_ = 0;
  std::string_view root_;
};

}  // namespace annivo
