// SPDX-License-Identifier: MIT
#include <algorithm>

#include <pugixml.hpp>

#include "base/Base64.h"
#include "base/Digits.h"
#include "base/Text.h"
#include "codecs/xml/XMLElements.h"
#include "codecs/xml/XMLText.h"
#include "platform/coredata/XMLStoreFile.h"

namespace annivo {

namespace {

constexpr unsigned kParseOptions = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol |
                                   pugi::parse_ws_pcdata_single | pugi::parse_fragment;
constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
constexpr std::int64_t kHighestID = std::int64_t{1} << 60;

Error malformed(std::string reason) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 0,
          .description = {},
          .failureReason = std::move(reason)};
}

std::optional<std::int64_t> number(std::string_view text) {
  return numberFromText<std::int64_t>(trimmed(text));
}

/// The number of an id "z102".
std::optional<std::int64_t> objectNumber(std::string_view id) {
  if (!id.starts_with('z')) return std::nullopt;
  const auto value = number(id.substr(1));
  return value && *value > 0 && *value <= kHighestID ? value : std::nullopt;
}

/// Whether `given` is the name in the model with each letter of it folded.
template <char (*fold)(char)>
bool isFolded(std::string_view given, std::string_view modelled) {
  return std::equal(given.begin(), given.end(), modelled.begin(), modelled.end(),
                    [](char a, char b) { return a == fold(b); });
}

const NSEntityDescription* entityForType(const NSManagedObjectModel& model, std::string_view type) {
  for (const auto& [name, entity] : model.entities()) {
    if (isFolded<upperCased>(type, name)) return &entity;
  }
  return nullptr;
}

std::string textOf(const pugi::xml_node& element) {
  const auto first = element.first_child();
  std::string text = first.value();
  for (auto more = first.next_sibling(); more; more = more.next_sibling()) text += more.value();
  return text;
}

/// Nil for what is no value of that type.
PropertyList attributeValue(AttributeType type, std::string_view storedAs, std::string text) {
  switch (type) {
    case AttributeType::string: {
      if (storedAs != "binary") return text;
      auto bytes = fromBase64(text);
      return bytes ? PropertyList(std::move(*bytes)) : PropertyList();
    }
    case AttributeType::integer: {
      const auto value = number(text);
      return value ? PropertyList(*value) : PropertyList();
    }
    case AttributeType::date:
    case AttributeType::day:
      break;
  }
  const auto value = dateFromStoreText(text);
  return value ? PropertyList(*value) : PropertyList();
}

/// Hands each attribute's index and value to `take`; returns whether every value could be read.
template <typename Take>
bool readAttributes(const pugi::xml_node& object, const NSEntityDescription& entity, Take take) {
  bool readable = true;
  const std::size_t count = entity.attributes.size();
  std::size_t likely = 0;  // Files have them in the model's order.
  for (auto child = object.first_child(); child; child = child.next_sibling()) {
    if (std::string_view(child.name()) != "attribute") continue;
    const std::string_view name = child.attribute("name").value();
    for (std::size_t tried = 0; tried < count; ++tried, likely = (likely + 1) % count) {
      const auto& attribute = entity.attributes[likely];
      if (!isFolded<lowerCased>(name, attribute.name)) continue;
      auto value = attributeValue(attribute.type, child.attribute("type").value(), textOf(child));
      readable = readable && !value.isNil();
      take(likely, std::move(value));
      break;
    }
  }
  return readable;
}

class Reader {
 public:
  Reader(std::string_view bytes, const NSManagedObjectModel& model)
      : bytes_(bytes), model_(model), elements_(bytes) {}

  Result<XMLStoreContent> read() {
    if (bytes_.size() > kXMLStoreLimit) return malformed("It is too large.");
    if (auto entered = elements_.enter("database"); !entered) return entered.error();
    for (;;) {
      const auto element = elements_.next();
      if (!element) return element.error();
      if (!*element) break;
      if (auto taken = take(**element); !taken) return taken.error();
    }
    if (auto parsed = parsePiece(); !parsed) return parsed.error();
    if (content_.infoText.empty()) return malformed("It says nothing about its version.");
    content_.rootEnd = elements_.rootEnd();
    return finish();
  }

 private:
  Result<void> take(const XMLElements::Element& element) {
    if (element.end - element.begin > kXMLObjectLimit) return malformed("An object is too large.");
    if (element.name == "databaseInfo") return readInfo(element);
    if (element.name != "object") return checkForeign(element);
    if (++count_ > kXMLObjectCount) return malformed("It holds too many objects.");
    piece_.push_back(element);
    if (element.end - piece_.front().begin < kPieceSize) return {};
    return parsePiece();
  }

  /// What the store does not know stays in the file as it stands, so it has to be an element.
  Result<void> checkForeign(const XMLElements::Element& element) {
    if (auto parsed = parsePiece(); !parsed) return parsed;
    if (isWellFormedXML(bytes_.substr(element.begin, element.end - element.begin))) return {};
    return malformed("An element is not well-formed.");
  }

  Result<void> readInfo(const XMLElements::Element& element) {
    if (auto parsed = parsePiece(); !parsed) return parsed;
    if (!content_.infoText.empty()) return malformed("It states its version twice.");
    content_.infoOffset = element.begin;
    content_.infoText = bytes_.substr(element.begin, element.end - element.begin);
    pugi::xml_document document;
    if (!isWellFormedXML(content_.infoText) ||
        !document.load_buffer(content_.infoText.data(), content_.infoText.size(), kParseOptions,
                              pugi::encoding_utf8)) {
      return malformed("Its databaseInfo is not well-formed.");
    }
    const auto info = document.child("databaseInfo");
    const auto version = number(textOf(info.child("version")));
    if (!version) return malformed("It says nothing about its version.");
    content_.info.version = *version;
    content_.info.uuid = textOf(info.child("UUID"));
    content_.info.nextObjectID = number(textOf(info.child("nextObjectID"))).value_or(101);
    if (content_.info.nextObjectID > kHighestID)
      return malformed("Its object numbers are used up.");
    const auto dictionary = info.child("metadata").child("plist").child("dict");
    for (const auto& key : dictionary.children("key")) {
      if (textOf(key) != "AnnivoGeneration") continue;
      content_.info.generation = number(textOf(key.next_sibling("integer"))).value_or(0);
    }
    return {};
  }

  /// Parses the objects gathered so far: those of a piece together, which is far cheaper than one
  /// by one, and so few that the tree stays small.
  Result<void> parsePiece() {
    if (piece_.empty()) return {};
    const std::size_t begin = piece_.front().begin;
    buffer_.assign(bytes_.substr(begin, piece_.back().end - begin));
    pugi::xml_document document;
    if (!document.load_buffer_inplace(buffer_.data(), buffer_.size(), kParseOptions,
                                      pugi::encoding_utf8)) {
      return malformed("An object is not well-formed.");
    }
    auto element = piece_.begin();
    for (const auto& node : document.children()) {
      if (node.type() != pugi::node_element) continue;
      if (element == piece_.end()) return malformed("An object is not well-formed.");
      if (auto added = addObject(node, *element++); !added) return added;
    }
    if (element != piece_.end()) return malformed("An object is not well-formed.");
    piece_.clear();
    return {};
  }

  Result<void> addObject(const pugi::xml_node& node, const XMLElements::Element& element) {
    const char* id = node.attribute("id").value();
    const auto objectID = objectNumber(id);
    const std::string_view type = node.attribute("type").value();
    if (!entity_ || type != type_) {
      type_ = type;
      entity_ = entityForType(model_, type);
    }
    if (objectID) ids_.push_back(*objectID);
    if (!entity_) return {};
    if (!objectID) return malformed("An object has no id.");
    auto& row = content_.rows.emplace_back(*entity_, *objectID);
    row.offset = static_cast<std::uint32_t>(element.begin);
    row.length = static_cast<std::uint32_t>(element.end - element.begin);
    row.saved = true;
    row.reserveAttributes(entity_->attributes.size());
    const bool readable = readAttributes(node, *entity_, [&](std::size_t i, PropertyList&& value) {
      row.attributeAt(i) = std::move(value);
    });
    if (!readable) {
      content_.notes.push_back("The object " + std::string(id) +
                               " has a value that cannot be read.");
    }
    return {};
  }

  Result<XMLStoreContent> finish() {
    if (!std::is_sorted(ids_.begin(), ids_.end())) {
      std::sort(ids_.begin(), ids_.end());
      std::sort(content_.rows.begin(), content_.rows.end(),
                [](const auto& a, const auto& b) { return a.objectID() < b.objectID(); });
    }
    if (std::adjacent_find(ids_.begin(), ids_.end()) != ids_.end()) {
      return malformed("Two objects have the same id.");
    }
    if (!ids_.empty()) {
      content_.info.nextObjectID = std::max(content_.info.nextObjectID, ids_.back());
    }
    return std::move(content_);
  }

  std::string_view bytes_;
  const NSManagedObjectModel& model_;
  XMLElements elements_;
  XMLStoreContent content_;
  std::vector<XMLElements::Element> piece_;
  std::string buffer_;
  std::vector<std::int64_t> ids_;
  std::size_t count_ = 0;
  std::string type_;
  const NSEntityDescription* entity_ = nullptr;
};

}  // namespace

Result<XMLStoreContent> parseXMLStore(std::string_view bytes, const NSManagedObjectModel& model) {
  return Reader(bytes, model).read();
}

Result<std::vector<XMLStoreChange>> parseXMLChanges(std::string_view fragment,
                                                    const NSManagedObjectModel& model) {
  pugi::xml_document document;
  if (!document.load_buffer(fragment.data(), fragment.size(), kParseOptions, pugi::encoding_utf8)) {
    return malformed("A change is not well-formed.");
  }
  std::vector<XMLStoreChange> changes;
  for (const auto& node : document.children()) {
    const std::string_view name = node.name();
    const auto objectID = objectNumber(node.attribute("id").value());
    if (!objectID) return malformed("A change names no object.");
    XMLStoreChange change{.objectID = *objectID, .entity = nullptr, .attributes = {}};
    if (name == "object") {
      change.entity = entityForType(model, node.attribute("type").value());
      if (!change.entity) return malformed("A change is of an unknown entity.");
      change.attributes.resize(change.entity->attributes.size());
      readAttributes(node, *change.entity, [&](std::size_t i, PropertyList value) {
        change.attributes[i] = std::move(value);
      });
    } else if (name != "removed") {
      return malformed("A change is of an unknown kind.");
    }
    changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace annivo
