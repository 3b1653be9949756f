// SPDX-License-Identifier: MIT
#include "platform/coredata/NSPredicate.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "base/Unicode.h"

namespace annivo {

namespace {

using Operator = NSPredicate::Comparison::Operator;

}  // namespace

struct NSPredicateFormat::Node {
  enum class Kind { conjunction, disjunction, negation, comparison };
  Kind kind = Kind::comparison;
  std::vector<std::shared_ptr<const Node>> children;

  // Of a comparison.
  std::string attribute;
  Operator op = Operator::equal;
  PropertyList constant;
  std::optional<std::size_t> argument;  ///< index of its %@

  [[nodiscard]] const PropertyList& value(const std::vector<PropertyList>& arguments) const {
    return argument ? arguments[*argument] : constant;
  }
};

namespace {

using Node = NSPredicateFormat::Node;

[[noreturn]] void fail(std::string_view what, std::string_view format) {
  std::cerr << "Predicate format \"" << format << "\": " << what << '\n';
  std::abort();
}

bool isWordCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

/// Recursive descent over
///   either := both { OR both }    both := one { AND one }
///   one := NOT one | ( either ) | attribute operator value
class Parser {
 public:
  explicit Parser(std::string_view format) : format_(format) {}

  std::shared_ptr<const Node> parse() {
    auto root = either();
    skipSpace();
    if (at_ != format_.size()) fail("more follows the condition", format_);
    return root;
  }
  [[nodiscard]] std::size_t argumentCount() const { return argumentCount_; }

 private:
  using Shared = std::shared_ptr<const Node>;

  void skipSpace() {
    while (at_ < format_.size() && format_[at_] == ' ') ++at_;
  }

  /// Takes `token` when it comes next; a token of letters only as a whole word.
  bool take(std::string_view token) {
    skipSpace();
    if (format_.substr(at_, token.size()) != token) return false;
    const std::size_t end = at_ + token.size();
    if (isWordCharacter(token.back()) && end < format_.size() && isWordCharacter(format_[end])) {
      return false;
    }
    at_ = end;
    return true;
  }

  Shared joined(Node::Kind kind, std::string_view word, Shared (Parser::*part)()) {
    Shared first = (this->*part)();
    if (!take(word)) return first;
    auto node = std::make_shared<Node>();
    node->kind = kind;
    node->children = {std::move(first)};
    do {
      node->children.push_back((this->*part)());
    } while (take(word));
    return node;
  }

  Shared either() { return joined(Node::Kind::disjunction, "OR", &Parser::both); }
  Shared both() { return joined(Node::Kind::conjunction, "AND", &Parser::one); }

  Shared one() {
    if (take("NOT")) {
      auto node = std::make_shared<Node>();
      node->kind = Node::Kind::negation;
      node->children = {one()};
      return node;
    }
    if (take("(")) {
      Shared inner = either();
      if (!take(")")) fail("a closing parenthesis is missing", format_);
      return inner;
    }
    return comparison();
  }

  Shared comparison() {
    auto node = std::make_shared<Node>();
    node->attribute = word();
    node->op = comparisonOperator();
    readValue(*node);
    return node;
  }

  std::string word() {
    skipSpace();
    const std::size_t start = at_;
    while (at_ < format_.size() && isWordCharacter(format_[at_])) ++at_;
    if (at_ == start) fail("the name of an attribute is missing", format_);
    return std::string(format_.substr(start, at_ - start));
  }

  Operator comparisonOperator() {
    if (take("==")) return Operator::equal;
    if (take("!=")) return Operator::notEqual;
    if (take(">=")) return Operator::greaterOrEqual;
    if (take("<=")) return Operator::lessOrEqual;
    if (take(">")) return Operator::greater;
    if (take("<")) return Operator::less;
    if (take("LIKE[c]")) return Operator::likeC;
    if (take("LIKE")) return Operator::like;
    fail("an operator is missing", format_);
  }

  void readValue(Node& node) {
    if (take("nil")) return;
    if (take("%@")) {
      node.argument = argumentCount_++;
      return;
    }
    if (take("\"")) return readText(node, '"');
    if (take("'")) return readText(node, '\'');
    readNumber(node);
  }

  void readText(Node& node, char quote) {
    const std::size_t end = format_.find(quote, at_);
    if (end == std::string_view::npos) fail("a closing quote is missing", format_);
    node.constant = PropertyList(format_.substr(at_, end - at_));
    at_ = end + 1;
  }

  void readNumber(Node& node) {
    skipSpace();
    const std::string rest(format_.substr(at_));
    char* end = nullptr;
    const double real = std::strtod(rest.c_str(), &end);
    const auto length = static_cast<std::size_t>(end - rest.c_str());
    if (length == 0) fail("a value is missing", format_);
    const bool whole = rest.substr(0, length).find_first_not_of("-0123456789") == std::string::npos;
    node.constant = whole ? PropertyList(static_cast<std::int64_t>(std::atoll(rest.c_str())))
                          : PropertyList(real);
    at_ += length;
  }

  std::string_view format_;
  std::size_t at_ = 0;
  std::size_t argumentCount_ = 0;
};

std::optional<double> number(const PropertyList& value) {
  if (value.integer()) return static_cast<double>(*value.integer());
  if (value.real()) return *value.real();
  return std::nullopt;
}

bool isEqual(const PropertyList& left, const PropertyList& right) {
  if (left == right) return true;
  const auto a = number(left);
  const auto b = number(right);
  return a && b && *a == *b;
}

/// -1, 0 or 1; nothing for values that have no order between them.
std::optional<int> order(const PropertyList& left, const PropertyList& right) {
  const auto compare = [](const auto& a, const auto& b) { return a < b ? -1 : (b < a ? 1 : 0); };
  if (left.date() && right.date()) return compare(*left.date(), *right.date());
  if (left.string() && right.string()) return compare(*left.string(), *right.string());
  if (left.integer() && right.integer()) return compare(*left.integer(), *right.integer());
  const auto a = number(left);
  const auto b = number(right);
  if (a && b) return compare(*a, *b);
  return std::nullopt;
}

/// Whole-text match. On a mismatch it goes back to the last "*" only, which is enough, so the cost
/// is at most the product of the lengths. "?" stands for one character, not for one byte.
bool matchesWildcards(std::string_view text, std::string_view pattern) {
  const auto next = [&](std::size_t i) {
    do ++i;
    while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80);
    return i;
  };
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t star = std::string_view::npos;
  std::size_t resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = t;
    } else if (p < pattern.size() && pattern[p] == '?') {
      t = next(t);
      ++p;
    } else if (p < pattern.size() && pattern[p] == text[t]) {
      ++t;
      ++p;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = resume = next(resume);
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

bool isLike(const PropertyList& left, const PropertyList& right, bool foldCase) {
  if (!left.string() || !right.string()) return false;
  const std::string& text = *left.string();
  const std::string& pattern = *right.string();
  if (!hasWildcard(pattern)) {
    return text == pattern || (foldCase && caseFolded(text) == caseFolded(pattern));
  }
  if (!foldCase) return matchesWildcards(text, pattern);
  return matchesWildcards(caseFolded(text), caseFolded(pattern));
}

bool holds(const PropertyList& left, Operator op, const PropertyList& right) {
  switch (op) {
    case Operator::equal:
      return isEqual(left, right);
    case Operator::notEqual:
      return !isEqual(left, right);
    case Operator::greater:
      return order(left, right) == 1;
    case Operator::greaterOrEqual:
      return order(left, right).value_or(-1) >= 0;
    case Operator::less:
      return order(left, right) == -1;
    case Operator::lessOrEqual:
      return order(left, right).value_or(1) <= 0;
    case Operator::like:
      return isLike(left, right, false);
    case Operator::likeC:
      return isLike(left, right, true);
  }
  return false;
}

bool evaluateNode(const Node& node, const std::vector<PropertyList>& arguments,
                  const NSPredicate::Lookup& valueForKey) {
  const auto isTrue = [&](const std::shared_ptr<const Node>& child) {
    return evaluateNode(*child, arguments, valueForKey);
  };
  switch (node.kind) {
    case Node::Kind::conjunction:
      return std::all_of(node.children.begin(), node.children.end(), isTrue);
    case Node::Kind::disjunction:
      return std::any_of(node.children.begin(), node.children.end(), isTrue);
    case Node::Kind::negation:
      return !isTrue(node.children.front());
    case Node::Kind::comparison:
      return holds(valueForKey(node.attribute), node.op, node.value(arguments));
  }
  return false;
}

bool collect(const Node& node, const std::vector<PropertyList>& arguments,
             std::vector<NSPredicate::Comparison>& comparisons) {
  if (node.kind == Node::Kind::comparison) {
    comparisons.push_back({node.attribute, node.op, &node.value(arguments)});
    return true;
  }
  return node.kind == Node::Kind::conjunction &&
         std::all_of(node.children.begin(), node.children.end(),
                     [&](const auto& child) { return collect(*child, arguments, comparisons); });
}

}  // namespace

NSPredicateFormat NSPredicateFormat::parse(std::string_view format) {
  Parser parser(format);
  NSPredicateFormat result;
  result.root_ = parser.parse();
  result.argumentCount_ = parser.argumentCount();
  return result;
}

NSPredicate NSPredicateFormat::with(std::vector<PropertyList> arguments) const {
  if (arguments.size() != argumentCount_) {
    std::cerr << "A predicate takes " << argumentCount_ << " arguments, not " << arguments.size()
              << '\n';
    std::abort();
  }
  NSPredicate predicate;
  predicate.root_ = root_;
  predicate.arguments_ = std::move(arguments);
  return predicate;
}

bool NSPredicate::Comparison::holds(const PropertyList& left) const {
  return annivo::holds(left, op, *value);
}

bool NSPredicate::evaluate(const Lookup& valueForKey) const {
  return evaluateNode(*root_, arguments_, valueForKey);
}

std::optional<std::vector<NSPredicate::Comparison>> NSPredicate::conjunction() const {
  std::vector<Comparison> comparisons;
  comparisons.reserve(4);
  if (!collect(*root_, arguments_, comparisons)) return std::nullopt;
  return comparisons;
}

bool hasWildcard(std::string_view pattern) {
  return pattern.find('*') != std::string_view::npos || pattern.find('?') != std::string_view::npos;
}

}  // namespace annivo
