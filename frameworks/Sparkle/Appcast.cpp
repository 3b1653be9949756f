// SPDX-License-Identifier: MIT
#include "frameworks/Sparkle/Appcast.h"

#include <algorithm>
#include <optional>

#include <pugixml.hpp>

#include "base/Text.h"

namespace annivo {

namespace {

constexpr std::string_view kNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr std::size_t kLongestVersion = 256;
/// Declarations of namespaces are looked for among this many attributes of an element, so that a
/// feed of nothing but attributes cannot make the search quadratic.
constexpr int kMostAttributes = 64;

/// The URI that `declaration` ("xmlns" or "xmlns:<prefix>") is bound to at an element.
std::string_view boundNamespace(pugi::xml_node element, const std::string& declaration) {
  for (; element.type() == pugi::node_element; element = element.parent()) {
    int count = 0;
    for (const pugi::xml_attribute attribute : element.attributes()) {
      if (declaration == attribute.name()) return attribute.value();
      if (++count == kMostAttributes) break;
    }
  }
  return {};
}

/// Whether a qualified name at `element` is `local` in the update namespace. A name without a
/// prefix is in the default namespace when it is an element's, in none when an attribute's.
bool isNamed(pugi::xml_node element, std::string_view name, std::string_view local,
             bool isAttribute) {
  if (!name.ends_with(local)) return false;
  const std::string_view prefix = name.substr(0, name.size() - local.size());
  if (prefix.empty()) return !isAttribute && boundNamespace(element, "xmlns") == kNamespace;
  if (!prefix.ends_with(':')) return false;
  const std::string declaration = "xmlns:" + std::string(prefix.substr(0, prefix.size() - 1));
  return boundNamespace(element, declaration) == kNamespace;
}

std::string textOf(pugi::xml_node element) {
  std::string text;
  for (const pugi::xml_node child : element.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      text += child.value();
    }
  }
  return std::string(trimmed(text));
}

/// The text of an item's first element of that name in the update namespace; "" without one.
std::string sparkleElement(pugi::xml_node item, std::string_view local) {
  for (const pugi::xml_node child : item.children()) {
    if (isNamed(child, child.name(), local, false)) return textOf(child);
  }
  return "";
}

std::string sparkleAttribute(pugi::xml_node element, std::string_view local) {
  for (const pugi::xml_attribute attribute : element.attributes()) {
    if (isNamed(element, attribute.name(), local, true))
      return std::string(trimmed(attribute.value()));
  }
  return "";
}

/// The first enclosure that is not for another operating system; a null node without one.
pugi::xml_node suitableEnclosure(pugi::xml_node item) {
  for (const pugi::xml_node enclosure : item.children("enclosure")) {
    const std::string system = sparkleAttribute(enclosure, "os");
    if (system.empty() || system == "macos" || system == "linux") return enclosure;
  }
  return {};
}

std::string escapedSpaces(const std::string& address) {
  std::string result;
  for (const char c : address) {
    if (c == ' ') {
      result += "%20";
    } else {
      result += c;
    }
  }
  return result;
}

/// "2.1" of "https://host/folder/Annivo_2.1.zip?from=feed"; "" where the name has no such part.
std::string versionInFileName(std::string_view address) {
  address = address.substr(0, address.find_first_of("?#"));
  std::string_view name = address.substr(address.rfind('/') + 1);
  name = name.substr(0, name.rfind('.'));
  const std::size_t underscore = name.rfind('_');
  return underscore == std::string_view::npos ? "" : std::string(name.substr(underscore + 1));
}

std::string firstOf(std::initializer_list<std::string> texts) {
  const auto found = std::find_if(texts.begin(), texts.end(),
                                  [](const std::string& text) { return !text.empty(); });
  return found == texts.end() ? "" : *found;
}

std::optional<AppcastItem> parseItem(pugi::xml_node item) {
  const pugi::xml_node enclosure = suitableEnclosure(item);
  if (!enclosure && item.child("enclosure")) return std::nullopt;
  const std::string address =
      escapedSpaces(enclosure ? std::string(trimmed(enclosure.attribute("url").value()))
                              : textOf(item.child("link")));
  if (!isWebAddress(address)) return std::nullopt;
  const std::string version =
      firstOf({sparkleAttribute(enclosure, "version"), sparkleElement(item, "version"),
               enclosure ? versionInFileName(address) : ""});
  if (version.empty() || version.size() > kLongestVersion) return std::nullopt;
  return AppcastItem{
      .version = version,
      .displayVersion = firstOf({sparkleAttribute(enclosure, "shortVersionString"),
                                 sparkleElement(item, "shortVersionString"), version}),
      .url = address,
      .channel = sparkleElement(item, "channel"),
      .minimumSystemVersion = sparkleElement(item, "minimumSystemVersion"),
      .maximumSystemVersion = sparkleElement(item, "maximumSystemVersion")};
}

Error malformed(const std::string& description, const std::string& reason) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSXMLParserErrorDomain",
          .code = 0,
          .description = description,
          .failureReason = reason};
}

}  // namespace

bool isWebAddress(std::string_view address) {
  for (const std::string_view scheme : {"HTTP://", "HTTPS://"}) {
    const std::string_view start = address.substr(0, scheme.size());
    if (address.size() > scheme.size() && equalsIgnoringCase(start, scheme)) return true;
  }
  return false;
}

Result<std::vector<AppcastItem>> parseAppcast(std::string_view feed) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed =
      document.load_buffer(feed.data(), feed.size(), pugi::parse_default | pugi::parse_doctype);
  if (!parsed) return malformed("The feed is no XML document.", parsed.description());
  for (const pugi::xml_node node : document.children()) {
    if (node.type() == pugi::node_doctype &&
        std::string_view(node.value()).find('[') != std::string_view::npos) {
      return malformed("The feed declares entities of its own.", "");
    }
  }
  const pugi::xml_node rss = document.child("rss");
  if (!rss.child("channel")) return malformed("The feed has no RSS channel.", "");
  std::vector<AppcastItem> items;
  for (const pugi::xml_node channel : rss.children("channel")) {
    for (const pugi::xml_node item : channel.children("item")) {
      if (auto parsedItem = parseItem(item)) items.push_back(std::move(*parsedItem));
    }
  }
  return items;
}

}  // namespace annivo
