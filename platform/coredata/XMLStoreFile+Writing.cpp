// SPDX-License-Identifier: MIT
#include <algorithm>

#include <pugixml.hpp>

#include "base/Base64.h"
#include "base/Text.h"
#include "codecs/xml/XMLText.h"
#include "platform/coredata/XMLStoreFile.h"

namespace annivo {

namespace {

constexpr const char* kGeneration = "AnnivoGeneration";
constexpr unsigned kVerbatim =
    (pugi::parse_full & ~pugi::parse_eol) | pugi::parse_ws_pcdata | pugi::parse_fragment;

void appendAttribute(std::string& out, const NSAttributeDescription& attribute,
                     const PropertyList& value) {
  const auto append = [&](const char* type, std::string_view text) {
    out += "\n        <attribute name=\"";
    out += lowerCased(attribute.name);
    out += "\" type=\"";
    out += type;
    out += "\">";
    appendEscaped(out, text);
    out += "</attribute>";
  };
  if (const auto* text = value.string()) {
    // What XML cannot hold must still be found again as it was given.
    if (isXMLText(*text)) {
      append("string", *text);
    } else {
      append("binary", base64(*text));
    }
  } else if (const auto* date = value.date()) {
    append("date", storeDateText(*date));
  } else if (const auto* integer = value.integer()) {
    append("int64", std::to_string(*integer));
  }
}

/// The databaseInfo element with the numbers of `info` in it, otherwise as it stands.
std::string editedInfo(const std::string& element, const XMLStoreInfo& info) {
  pugi::xml_document document;
  document.load_buffer(element.data(), element.size(), kVerbatim, pugi::encoding_utf8);
  auto root = document.child("databaseInfo");
  const auto childOf = [](pugi::xml_node parent, const char* name) {
    const auto found = parent.child(name);
    return found ? found : parent.append_child(name);
  };
  childOf(root, "nextObjectID").text().set(static_cast<long long>(info.nextObjectID));
  auto plist = childOf(childOf(root, "metadata"), "plist");
  if (!plist.attribute("version")) plist.append_attribute("version").set_value("1.0");
  auto dictionary = childOf(plist, "dict");
  pugi::xml_node key;
  for (const auto& child : dictionary.children("key")) {
    if (std::string_view(child.text().get()) == kGeneration) key = child;
  }
  if (!key) {
    key = dictionary.prepend_child("key");
    key.text().set(kGeneration);
    dictionary.insert_child_after("integer", key);
  }
  auto value = key.next_sibling("integer");
  if (!value) value = dictionary.insert_child_after("integer", key);
  value.text().set(static_cast<long long>(info.generation));

  struct Text final : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
      text.append(static_cast<const char*>(data), size);
    }
  } writer;
  document.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return writer.text;
}

struct Edit {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

/// The line of an element that goes: from the line feed before it, when only blanks lie between.
std::size_t lineStart(std::string_view bytes, std::size_t offset) {
  std::size_t begin = offset;
  while (begin > 0 && (bytes[begin - 1] == ' ' || bytes[begin - 1] == '\t')) --begin;
  if (begin == 0 || bytes[begin - 1] != '\n') return offset;
  --begin;
  return begin > 0 && bytes[begin - 1] == '\r' ? begin - 1 : begin;
}

}  // namespace

bool isWellFormedXML(std::string_view element) {
  pugi::xml_document document;
  return document.load_buffer(element.data(), element.size(), kVerbatim, pugi::encoding_utf8);
}

void appendXMLObject(std::string& out, const NSManagedObject& object) {
  const NSEntityDescription& entity = object.entity();
  out.append("<object type=\"").append(upperCased(entity.name));
  out.append("\" id=\"z").append(std::to_string(object.objectID())).append("\">");
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    appendAttribute(out, entity.attributes[i], object.attributeAt(i));
  }
  out += "\n    </object>";
}

void appendXMLRemoval(std::string& out, std::int64_t objectID) {
  out += "<removed id=\"z" + std::to_string(objectID) + "\"/>";
}

std::string newXMLStore(XMLStoreContent& content) {
  const XMLStoreInfo& info = content.info;
  std::string out =
      "<?xml version=\"1.0\"?>\n"
      "<!DOCTYPE database SYSTEM \"file:///System/Library/DTDs/CoreData.dtd\">\n"
      "\n"
      "<database>\n"
      "    ";
  content.infoOffset = out.size();
  content.infoText =
      "<databaseInfo>\n"
      "        <version>" +
      std::to_string(kXMLStoreVersion) +
      "</version>\n"
      "        <UUID>" +
      info.uuid +
      "</UUID>\n"
      "        <nextObjectID>" +
      std::to_string(info.nextObjectID) +
      "</nextObjectID>\n"
      "        <metadata>\n"
      "            <plist version=\"1.0\">\n"
      "                <dict>\n"
      "                    <key>AnnivoGeneration</key>\n"
      "                    <integer>" +
      std::to_string(info.generation) +
      "</integer>\n"
      "                    <key>NSPersistenceFrameworkVersion</key>\n"
      "                    <integer>407</integer>\n"
      "                </dict>\n"
      "            </plist>\n"
      "        </metadata>\n"
      "    </databaseInfo>";
  out += content.infoText + "\n";
  out.reserve(out.size() + content.rows.size() * kXMLUsualObject);
  for (XMLStoreRow& row : content.rows) {
    if (row.removed) continue;
    out += "    ";
    row.offset = static_cast<std::uint32_t>(out.size());
    appendXMLObject(out, row);
    row.length = static_cast<std::uint32_t>(out.size()) - row.offset;
    out += '\n';
  }
  content.rootEnd = out.size();
  out += "</database>\n";
  return out;
}

std::string editedXMLStore(std::string_view bytes, const XMLStoreContent& content,
                           const XMLStoreInfo& info, const std::vector<XMLStoreRow*>& changed) {
  std::vector<Edit> edits;
  edits.push_back({content.infoOffset, content.infoOffset + content.infoText.size(),
                   editedInfo(content.infoText, info)});
  for (const XMLStoreRow* row : changed) {
    if (row->length == 0) continue;
    const std::size_t end = std::size_t{row->offset} + row->length;
    if (row->removed) {
      edits.push_back({lineStart(bytes, row->offset), end, ""});
    } else {
      std::string text;
      appendXMLObject(text, *row);
      edits.push_back({row->offset, end, std::move(text)});
    }
  }
  std::sort(edits.begin(), edits.end(),
            [](const Edit& a, const Edit& b) { return a.begin < b.begin; });

  std::string out;
  out.reserve(bytes.size() + changed.size() * kXMLUsualObject);
  std::size_t at = 0;
  for (const Edit& edit : edits) {
    out.append(bytes, at, edit.begin - at);
    out += edit.text;
    at = edit.end;
  }
  out.append(bytes, at, content.rootEnd - at);
  bool ownLine = out.ends_with('\n');
  for (const XMLStoreRow* row : changed) {
    if (row->length > 0 || row->removed) continue;
    out += ownLine ? "    " : "\n    ";
    ownLine = true;
    appendXMLObject(out, *row);
    out += '\n';
  }
  return out.append(bytes, content.rootEnd);
}

}  // namespace annivo
