// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "parent/sources/EarlierIdentifiers.h"
#include "parent/sources/ImportedSource.h"
#include "platform/Platform.h"

namespace annivo {

/// The folder of one source in the person's address book, and what it was last made from.
///
/// Its "Configuration.plist" keeps the source's name and a digest of the content, so that what
/// would change nothing writes nothing; the Metadata folder, by which the agent notices a change,
/// is touched after the store.
class SourceFolder {
 public:
  /// The folder whose configuration bears the name, whatever the folder is called; where there is
  /// none, a new one, made by the first write. An error where one could not be looked into.
  [[nodiscard]] static Result<SourceFolder> named(Platform& platform, const std::string& name);

  /// UID of the own card at the last write, or "".
  [[nodiscard]] std::string me() const { return configuration_["me"].stringOr(""); }
  /// Whether it was last made from content of that digest, and still holds it.
  [[nodiscard]] bool holds(const std::string& digest) const;
  [[nodiscard]] Result<EarlierIdentifiers> earlierIdentifiers() const;
  /// Replaces the store. After a failure the old one is as it was.
  Result<void> write(const ImportedSource& source, const std::string& digest,
                     const std::string& me);

 private:
  SourceFolder(Platform& platform, std::string name, std::string path, PropertyList configuration)
      : platform_(platform),
        name_(std::move(name)),
        path_(std::move(path)),
        configuration_(std::move(configuration)) {}
  [[nodiscard]] std::string storePath() const;
  Result<void> removeLogs();
  Result<void> remember(const ImportedSource& source, const std::string& digest,
                        const std::string& me);

  Platform& platform_;
  std::string name_;
  std::string path_;
  PropertyList configuration_;
};

}  // namespace annivo
