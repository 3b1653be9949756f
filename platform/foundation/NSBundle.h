// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// `path` with "." and ".." steps and doubled slashes resolved in the text, no trailing slash
/// (stringByStandardizingPath).
[[nodiscard]] std::string standardizedPath(std::string_view path);
/// One path component appended, with exactly one slash between.
[[nodiscard]] std::string appendingPathComponent(std::string_view path, std::string_view component);

/// A bundle folder: "Contents/" form (applications), or for a ".framework" the form with Resources
/// at its top (or in Versions/Current).
class NSBundle {
 public:
  /// The bundle at a folder; nothing is read before it is asked for.
  NSBundle(const NSFileManager& files, std::string path);
  /// The bundle that holds an executable: the folder above "Contents" on its path, or the
  /// executable's own folder where there is none.
  static NSBundle enclosing(const NSFileManager& files, const std::string& executable);

  [[nodiscard]] const std::string& bundlePath() const { return path_; }
  /// The files that the bundle is read from.
  [[nodiscard]] const NSFileManager& fileManager() const { return *files_; }
  [[nodiscard]] std::string resourcesPath() const;
  /// Info.plist; an empty dictionary when it is missing or damaged.
  [[nodiscard]] const PropertyList& infoDictionary() const;
  /// CFBundleIdentifier, or "".
  [[nodiscard]] std::string bundleIdentifier() const;
  /// Full path of CFBundleExecutable (else the bundle's name without extension) in
  /// Contents/Linux, or at a framework's top.
  [[nodiscard]] std::string executablePath() const;
  /// The file in Resources, un-localised; nothing when there is none.
  [[nodiscard]] std::optional<std::string> pathForResource(const std::string& name,
                                                           const std::string& extension) const;
  /// All files in Resources with that extension, sorted.
  [[nodiscard]] std::vector<std::string> pathsForResources(const std::string& extension) const;

  /// The text under `key` in <language>.lproj/<table>.strings, the table being chosen once from
  /// `languages` in order: by exact name, then by the bare language; none of them: English. When
  /// the table lacks the key: `value`, or the key itself when `value` is empty.
  [[nodiscard]] std::string localizedString(const std::string& key, const std::string& value,
                                            const std::string& table,
                                            const std::vector<std::string>& languages) const;

 private:
  const PropertyList& table(const std::string& name,
                            const std::vector<std::string>& languages) const;

  const NSFileManager* files_;
  std::string path_;
  mutable std::optional<PropertyList> info_;
  mutable std::map<std::string, PropertyList> tables_;
};

}  // namespace annivo
