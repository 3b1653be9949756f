// SPDX-License-Identifier: MIT
#include "platform/addressbook/ABAddressBook.h"

#include <algorithm>
#include <utility>

#include "base/Unicode.h"
#include "platform/coredata/SQLiteDatabase.h"
#include "platform/foundation/HomeFolders.h"

namespace annivo {
namespace {

std::string textOr(const SQLiteStatement& row, int column, std::string_view otherwise) {
  return repairedUTF8(row.text(column).value_or(otherwise));
}

/// A table's columns, each nil where this store's generation lacks it.
class ProbedTable {
 public:
  static Result<ProbedTable> of(const SQLiteDatabase& database, const std::string& table) {
    auto columns = database.columns(table);
    if (!columns) return columns.error();
    return ProbedTable(*std::move(columns));
  }
  [[nodiscard]] bool exists() const { return !columns_.empty(); }
  [[nodiscard]] std::string column(const std::string& name) const {
    return std::ranges::find(columns_, name) == columns_.end() ? "NULL" : name;
  }

 private:
  explicit ProbedTable(std::vector<std::string> columns) : columns_(std::move(columns)) {}
  std::vector<std::string> columns_;
};

struct OwnRecord {
  std::int64_t key = 0;
  std::string uniqueId;
};

Result<std::optional<OwnRecord>> ownRecord(const SQLiteDatabase& database,
                                           const std::string& path) {
  const auto table = ProbedTable::of(database, "ZABCDRECORD");
  if (!table) return table.error();
  if (!table->exists()) {
    return Error{Error::Kind::malformed, "NSCocoaErrorDomain", 0,
                 "The contacts store " + path + " has no table of records.", ""};
  }
  // Keys are positive; asked so, an index on the column serves where the store has one.
  const std::string me = table->column("ZME");
  const std::string named = "Z_PK IN (SELECT " + me + " FROM ZABCDRECORD WHERE " + me + " > 0)";
  const std::string marked = table->column("ZCONTAINERWHERECONTACTISME") + " > 0";
  for (const std::string& condition : {named, marked}) {
    auto query =
        database.prepare("SELECT Z_PK, " + table->column("ZUNIQUEID") + " FROM ZABCDRECORD WHERE " +
                         condition + " ORDER BY Z_PK LIMIT 1");
    if (!query) return query.error();
    const auto found = query->step();
    if (!found) return found.error();
    if (*found) {
      return std::optional(OwnRecord{query->integer(0).value_or(0), textOr(*query, 1, "")});
    }
  }
  return std::optional<OwnRecord>();
}

/// The addresses of a record; rows without one are no addresses.
Result<ABMultiValue> emails(const SQLiteDatabase& database, std::int64_t owner) {
  ABMultiValue values;
  const auto table = ProbedTable::of(database, "ZABCDEMAILADDRESS");
  if (!table) return table.error();
  if (!table->exists()) return values;
  const std::string place = table->column("ZORDERINGINDEX");
  auto query = database.prepare("SELECT Z_PK, " + table->column("ZUNIQUEID") + ", " +
                                table->column("ZADDRESS") + ", " + table->column("ZISPRIMARY") +
                                " FROM ZABCDEMAILADDRESS WHERE " + table->column("ZOWNER") +
                                " = ?1 ORDER BY " + place + " IS NULL, " + place + ", Z_PK");
  if (!query) return query.error();
  query->bind(1, owner);
  for (;;) {
    const auto row = query->step();
    if (!row) return row.error();
    if (!*row) break;
    const auto address = query->text(2);
    if (!address) continue;
    const std::string key = std::to_string(query->integer(0).value_or(0));
    values.entries.push_back({textOr(*query, 1, key), repairedUTF8(*address)});
    if (query->integer(3) == 1 && !values.primaryIdentifier) {
      values.primaryIdentifier = values.entries.back().identifier;
    }
  }
  if (!values.primaryIdentifier && !values.entries.empty()) {
    values.primaryIdentifier = values.entries.front().identifier;
  }
  return values;
}

Result<std::optional<ABPerson>> ownCardIn(const SQLiteDatabase& database, const std::string& path) {
  auto record = ownRecord(database, path);
  if (!record) return record.error();
  if (!*record) return std::optional<ABPerson>();
  auto addresses = emails(database, (*record)->key);
  if (!addresses) return addresses.error();
  return std::optional(ABPerson{(*record)->uniqueId, *std::move(addresses)});
}

Result<std::optional<ABPerson>> ownCard(const NSFileManager& files, const std::string& path,
                                        const std::shared_ptr<StoreReadings>& readings) {
  for (int i = 0; i < SQLiteDatabase::kMostReadings; ++i) {
    const auto database = SQLiteDatabase::openForReading(files, path, readings);
    if (!database) return database.error();
    auto card = ownCardIn(*database, path);
    if (!database->wasChanged()) return card;
  }
  return keepsChanging(path);
}

}  // namespace

std::optional<std::size_t> ABMultiValue::indexForIdentifier(const std::string& identifier) const {
  const auto found = std::ranges::find(entries, identifier, &Entry::identifier);
  if (found == entries.end()) return std::nullopt;
  return static_cast<std::size_t>(found - entries.begin());
}

std::optional<std::string> ABMultiValue::valueAtIndex(std::optional<std::size_t> index) const {
  if (!index || *index >= entries.size()) return std::nullopt;
  return entries[*index].value;
}

ABAddressBook::ABAddressBook(const NSFileManager& files, Log& log, std::string home,
                             NSBundle framework, std::vector<std::string> languages,
                             std::shared_ptr<StoreReadings> readings)
    : files_(files),
      log_(log),
      home_(std::move(home)),
      framework_(std::move(framework)),
      languages_(std::move(languages)),
      readings_(std::move(readings)) {}

std::optional<ABPerson> ABAddressBook::me() const {
  const HomeFolders home(home_);
  const std::string name = std::string("/") + names::kContactsStore;
  const std::string folder = home.addressBookSources();
  std::vector<std::string> stores{home.addressBook() + name};
  if (const auto sources = files_.contentsOfDirectory(folder)) {
    for (const DirectoryEntry& source : *sources) {
      stores.push_back(folder + '/' + source.name + name);
    }
  } else if (sources.error().kind != Error::Kind::absent) {
    log_.write(sources.error().text());
  }
  for (const std::string& store : stores) {
    auto card = ownCard(files_, store, readings_);
    if (!card) {
      if (card.error().kind != Error::Kind::absent) log_.write(card.error().text());
    } else if (*card) {
      return *std::move(card);
    }
  }
  return std::nullopt;
}

std::string ABAddressBook::localizedPropertyOrLabel(const std::string& code) const {
  return framework_.localizedString(code, "", "Localizable", languages_);
}

std::string ABAddressBook::capitalized(const std::string& text) const {
  return annivo::capitalized(text, languages_.empty() ? "en" : languages_.front());
}

}  // namespace annivo
