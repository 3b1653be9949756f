// SPDX-License-Identifier: MIT
#include "platform/foundation/NSBundle.h"

#include <algorithm>

#include "platform/foundation/HomeFolders.h"
#include "platform/foundation/NSLocale.h"

namespace annivo {

namespace {

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

bool isFramework(const std::string& path) { return path.ends_with(".framework"); }

PropertyList readDictionary(const NSFileManager& files, const std::string& path) {
  const auto bytes = files.contentsAtPath(path);
  if (!bytes) return {};
  auto list = parsePropertyList(*bytes, path);
  if (!list || !list->dictionary()) return {};
  return *std::move(list);
}

/// The names under which the tables for `languages` may lie, best first.
std::vector<std::string> tableLanguages(const std::vector<std::string>& languages) {
  std::vector<std::string> names;
  for (const std::string& language : languages) {
    names.push_back(language);
    names.push_back(bareLanguage(language));
  }
  names.emplace_back("en");
  return names;
}

}  // namespace

std::string standardizedPath(std::string_view path) {
  std::vector<std::string_view> steps;
  for (std::size_t start = 0; start < path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string_view step = path.substr(start, end - start);
    if (step == ".." && !steps.empty() && steps.back() != "..") {
      steps.pop_back();
    } else if (step == "..") {
      if (!path.starts_with('/')) steps.push_back(step);
    } else if (!step.empty() && step != ".") {
      steps.push_back(step);
    }
    start = end + 1;
  }
  std::string result = path.starts_with('/') ? "/" : "";
  for (const std::string_view step : steps) {
    if (!result.empty() && result.back() != '/') result += '/';
    result += step;
  }
  return result;
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  std::string result(path);
  while (result.ends_with('/')) result.pop_back();
  while (component.starts_with('/')) component.remove_prefix(1);
  return result + "/" + std::string(component);
}

NSBundle::NSBundle(const NSFileManager& files, std::string path)
    : files_(&files), path_(std::move(path)) {}

NSBundle NSBundle::enclosing(const NSFileManager& files, const std::string& executable) {
  const auto contents = executable.rfind("/Contents/");
  return {files,
          executable.substr(0, contents == std::string::npos ? executable.rfind('/') : contents)};
}

std::string NSBundle::resourcesPath() const {
  if (!isFramework(path_)) return path_ + "/Contents/Resources";
  for (const char* folder : {"/Resources", "/Versions/Current/Resources"}) {
    if (files_->fileExistsAtPath(path_ + folder)) return path_ + folder;
  }
  return path_ + "/Versions/A/Resources";
}

const PropertyList& NSBundle::infoDictionary() const {
  if (!info_) {
    info_ = readDictionary(*files_, isFramework(path_) ? resourcesPath() + '/' + names::kInfo
                                                       : path_ + "/Contents/" + names::kInfo);
    if (info_->isNil()) info_ = PropertyList::Dictionary{};
  }
  return *info_;
}

std::string NSBundle::bundleIdentifier() const {
  return infoDictionary()["CFBundleIdentifier"].stringOr("");
}

std::string NSBundle::executablePath() const {
  const std::string_view name = lastComponent(path_);
  std::string executable(name.substr(0, name.rfind('.')));
  if (auto named = pathComponent(infoDictionary()["CFBundleExecutable"].stringOr(""),
                                 "name of the executable")) {
    executable = *std::move(named);
  }
  return path_ + (isFramework(path_) ? "/" : "/Contents/Linux/") + executable;
}

std::optional<std::string> NSBundle::pathForResource(const std::string& name,
                                                     const std::string& extension) const {
  std::string path = resourcesPath() + "/" + name;
  if (!extension.empty()) path += "." + extension;
  if (!files_->fileExistsAtPath(path)) return std::nullopt;
  return path;
}

std::vector<std::string> NSBundle::pathsForResources(const std::string& extension) const {
  const std::string folder = resourcesPath();
  std::vector<std::string> paths;
  const auto entries = files_->contentsOfDirectory(folder);
  if (!entries) return paths;
  for (const DirectoryEntry& entry : *entries) {
    if (entry.name.ends_with("." + extension)) paths.push_back(folder + "/" + entry.name);
  }
  return paths;
}

const PropertyList& NSBundle::table(const std::string& name,
                                    const std::vector<std::string>& languages) const {
  std::string key = name;
  for (const std::string& language : languages) key += "\n" + language;
  const auto [found, isNew] = tables_.try_emplace(key);
  if (!isNew) return found->second;
  const std::string folder = resourcesPath();
  for (const std::string& language : tableLanguages(languages)) {
    if (!pathComponent(language, "language")) continue;
    found->second =
        readDictionary(*files_, folder + "/" + language + ".lproj/" + name + ".strings");
    if (!found->second.isNil()) break;
  }
  return found->second;
}

std::string NSBundle::localizedString(const std::string& key, const std::string& value,
                                      const std::string& table,
                                      const std::vector<std::string>& languages) const {
  return this->table(table, languages)[key].stringOr(value.empty() ? key : value);
}

}  // namespace annivo
