// SPDX-License-Identifier: MIT
#include "parent/sources/SourceFolder.h"

#include "parent/sources/LastingIdentifier.h"

namespace annivo {

namespace {

constexpr const char* kConfiguration = "Configuration.plist";
/// The version of the UUIDs in a store; absent where it may hold some of earlier builds.
constexpr const char* kIdentifiers = "identifiers";
constexpr std::int64_t kNameBased = 5;

/// What a folder's configuration says; nil where there is none, or one that is not ours.
Result<PropertyList> configurationOf(Platform& platform, const std::string& folder) {
  const std::string path = folder + '/' + kConfiguration;
  const auto bytes = platform.fileManager().contentsAtPath(path);
  if (!bytes) {
    if (bytes.error().kind == Error::Kind::absent) return PropertyList();
    return bytes.error();
  }
  auto read = parsePropertyList(*bytes, path);
  return read && !(*read)["digest"].isNil() ? *std::move(read) : PropertyList();
}

}  // namespace

Result<SourceFolder> SourceFolder::named(Platform& platform, const std::string& name) {
  const std::string sources = platform.folders().addressBookSources();
  const std::string usual = lastingIdentifier(JoinedFields() << "source" << name);
  std::vector<std::string> folders{usual};
  const auto entries = platform.fileManager().contentsOfDirectory(sources);
  if (!entries && entries.error().kind != Error::Kind::absent) return entries.error();
  if (entries) {
    for (const DirectoryEntry& entry : *entries) folders.push_back(entry.name);
  }
  for (const std::string& folder : folders) {
    const std::string path = sources + '/' + folder;
    auto configuration = configurationOf(platform, path);
    if (!configuration) return configuration.error();
    if ((*configuration)["name"].isEqualToString(name)) {
      return SourceFolder(platform, name, path, *std::move(configuration));
    }
  }
  return SourceFolder(platform, name, sources + '/' + usual, PropertyList());
}

std::string SourceFolder::storePath() const { return path_ + '/' + names::kContactsStore; }

bool SourceFolder::holds(const std::string& digest) const {
  const auto store = platform_.fileManager().attributesAtPath(storePath(), Links::follow);
  const auto* size = configuration_["storeSize"].integer();
  return configuration_["digest"].isEqualToString(digest) && store && size &&
         store->size == static_cast<std::uint64_t>(*size);
}

Result<EarlierIdentifiers> SourceFolder::earlierIdentifiers() const {
  if (configuration_.isNil() || configuration_[kIdentifiers].integerValue() == kNameBased) {
    return EarlierIdentifiers();
  }
  return EarlierIdentifiers::of(platform_, storePath());
}

Result<void> SourceFolder::write(const ImportedSource& source, const std::string& digest,
                                 const std::string& me) {
  NSFileManager& files = platform_.fileManager();
  if (auto made =
          files.createDirectoriesUnder(platform_.homeDirectory(), path_ + '/' + names::kMetadata);
      !made) {
    return made;
  }
  if (auto removed = removeLogs(); !removed) return removed;
  const Date now = platform_.clock().now();
  if (auto written = AddressBookStoreWriter::write(files, storePath(), StoreGeneration::current,
                                                   source.people(), source.groups(), now);
      !written) {
    return written;
  }
  auto touched =
      files.writeAtomically(path_ + '/' + names::kMetadata + "/import", describe(now) + "\n");
  return touched ? remember(source, digest, me) : touched;
}

/// A log of the old store beside the new one would be played into it.
Result<void> SourceFolder::removeLogs() {
  for (const char* log : {"-journal", "-wal", "-shm"}) {
    if (auto removed = platform_.fileManager().removeFile(storePath() + log);
        !removed && removed.error().kind != Error::Kind::absent) {
      return removed;
    }
  }
  return {};
}

Result<void> SourceFolder::remember(const ImportedSource& source, const std::string& digest,
                                    const std::string& me) {
  const auto store = platform_.fileManager().attributesAtPath(storePath(), Links::follow);
  if (!store) return store.error();
  PropertyList::Dictionary values{{"name", name_},
                                  {"digest", digest},
                                  {"storeSize", static_cast<std::int64_t>(store->size)},
                                  {"me", me.empty() ? PropertyList() : PropertyList(me)}};
  if (!source.keepsEarlierIdentifiers()) values.emplace(kIdentifiers, kNameBased);
  return platform_.fileManager().writeDurably(path_ + '/' + kConfiguration,
                                              xmlPropertyList(values));
}

}  // namespace annivo
