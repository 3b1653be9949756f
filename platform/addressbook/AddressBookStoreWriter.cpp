// SPDX-License-Identifier: MIT
#include "platform/addressbook/AddressBookStoreWriter.h"

#include <algorithm>
#include <chrono>

#include "base/UUID.h"
#include "codecs/plist/PropertyList.h"
#include "platform/addressbook/StoreSchema.h"
#include "platform/coredata/SQLiteDatabase.h"

namespace annivo {
namespace {

using std::chrono::sys_days;
using Numbers = std::vector<std::int64_t>;

constexpr std::int64_t kFirstSave = 1;  // Z_OPT

std::chrono::year_month_day civil(const StoredDay& day) {
  return {std::chrono::year{day.year}, std::chrono::month{static_cast<unsigned>(day.month)},
          std::chrono::day{static_cast<unsigned>(day.day)}};
}

std::int64_t noon(std::chrono::year_month_day day) {
  return (sys_days{day} + std::chrono::hours{12} -
          std::chrono::time_point_cast<std::chrono::seconds>(kReferenceDate))
      .count();
}

/// The moment within the year that stores keep for sorting by day; 2001 starts at zero.
double yearless(std::chrono::year_month_day day) {
  return static_cast<double>(noon(std::chrono::year{2001} / day.month() / day.day()));
}

std::string lowered(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  });
  return text;
}

std::string identifier(const std::string& given, const char* suffix) {
  return given.empty() ? freshUUID() + suffix : given;
}

/// The first thing that is wrong with what is to be written.
std::optional<std::string> fault(const std::vector<StoredPerson>& people,
                                 const std::vector<StoredGroup>& groups) {
  const auto wrong = [](const std::optional<StoredDay>& day) {
    return day && (day->month < 1 || day->month > 12 || day->day < 1 || day->day > 31 ||
                   day->year < 1 || day->year > 9999 || !civil(*day).ok());
  };
  for (const StoredPerson& person : people) {
    if (wrong(person.birthday) || std::ranges::any_of(person.dates, wrong, &StoredDate::day)) {
      return "a date is no day of the calendar";
    }
  }
  for (const StoredGroup& group : groups) {
    const auto beyond = [](std::size_t count) { return [=](std::size_t i) { return i >= count; }; };
    if (std::ranges::any_of(group.people, beyond(people.size())) ||
        std::ranges::any_of(group.subgroups, beyond(groups.size()))) {
      return "a group names a member that is not there";
    }
  }
  return std::nullopt;
}

/// A prepared INSERT. After the first failure, which it notes in `error`, it does nothing.
class Insert {
 public:
  Insert(const SQLiteDatabase& database, const std::string& table, const std::string& columns,
         std::optional<Error>& error)
      : error_(error) {
    if (error_) return;
    std::string places = "?";
    for (const char c : columns) places += c == ',' ? ",?" : "";
    auto statement = database.prepare("INSERT OR IGNORE INTO " + table + " (" + columns +
                                      ") VALUES (" + places + ")");
    if (statement) {
      statement_.emplace(*std::move(statement));
    } else {
      error_ = statement.error();
    }
  }

  template <typename... Values>
  void row(const Values&... values) {
    if (error_) return;
    int parameter = 0;
    (bind(++parameter, values), ...);
    if (const auto stepped = statement_->step(); !stepped) error_ = stepped.error();
  }

 private:
  void bind(int parameter, std::int64_t value) { statement_->bind(parameter, value); }
  void bind(int parameter, double value) { statement_->bind(parameter, value); }
  void bind(int parameter, const std::string& value) {
    statement_->bind(parameter, std::string_view(value));
  }
  void bind(int parameter, const PropertyList::Data& value) {
    statement_->bindBlob(parameter, value.bytes);
  }
  template <typename Value>
  void bind(int parameter, const std::optional<Value>& value) {
    if (value) {
      bind(parameter, *value);
    } else {
      statement_->bindNull(parameter);
    }
  }

  std::optional<Error>& error_;
  std::optional<SQLiteStatement> statement_;
};

/// The columns of a day: the moment, its year, its moment within a year.
struct DayColumns {
  explicit DayColumns(const std::optional<StoredDay>& day) {
    if (!day) return;
    moment = noon(civil(*day));
    year = day->year;
    withinYear = yearless(civil(*day));
  }
  std::optional<std::int64_t> moment, year;
  std::optional<double> withinYear;
};

/// Fills an empty database. Primary keys: the info row, the container, people, groups.
class Filling {
 public:
  Filling(const SQLiteDatabase& database, const StoreSchema& schema, Date now)
      : database_(database), schema_(schema), now_(now) {}

  Result<void> run(const std::vector<StoredPerson>& people,
                   const std::vector<StoredGroup>& groups) {
    execute("BEGIN");
    execute(schema_.tables());
    writeSurroundings(people);
    writePeople(people);
    writeGroups(people.size(), groups);
    writeBookkeeping();
    execute(schema_.indices());
    execute("COMMIT");
    return error_ ? Result<void>(*error_) : Result<void>();
  }

 private:
  std::int64_t number(std::string_view entity) const { return schema_.number(entity); }
  bool hasContainers() const { return number("CNCDContainer") != 0; }
  std::int64_t firstPerson() const { return hasContainers() ? 3 : 2; }
  std::optional<std::int64_t> container() const {
    return hasContainers() ? std::optional<std::int64_t>(2) : std::nullopt;
  }

  void execute(const std::string& sql) {
    if (error_) return;
    if (const auto done = database_.execute(sql); !done) error_ = done.error();
  }
  Insert insert(const std::string& table, const std::string& columns) {
    return Insert(database_, table, schema_.withNumbers(columns), error_);
  }

  void writeSurroundings(const std::vector<StoredPerson>& people) {
    std::optional<std::int64_t> me, meEntity;
    if (const auto own = std::ranges::find_if(people, &StoredPerson::isMe); own != people.end()) {
      me = firstPerson() + (own - people.begin());
      meEntity = entityOf(*own);
    }
    Insert row = insert("ZABCDRECORD", "Z_PK,Z_ENT,Z_OPT,ZUNIQUEID,ZME,Z{contact}_ME");
    const bool container = hasContainers();
    const std::optional<std::int64_t> none;
    row.row(std::int64_t{1}, number("ABCDInfo"), kFirstSave, freshUUID() + ":ABInfo",
            container ? none : me, container ? none : meEntity);
    if (container) {
      row.row(std::int64_t{2}, number("CNCDContainer"), kFirstSave, freshUUID() + ":ABContainer",
              me, meEntity);
    }
    records_ = container ? 2 : 1;
  }

  std::int64_t entityOf(const StoredPerson& person) const {
    return number(person.isSubscribed ? "ABCDSubscribedContact" : "ABCDContact");
  }

  void writePeople(const std::vector<StoredPerson>& people) {
    Insert record =
        insert("ZABCDRECORD",
               std::string("Z_PK,Z_ENT,Z_OPT,ZUNIQUEID,ZFIRSTNAME,ZMIDDLENAME,ZLASTNAME,ZNICKNAME,"
                           "ZORGANIZATION,ZDISPLAYFLAGS,ZBIRTHDAY,ZBIRTHDAYYEAR,ZBIRTHDAYYEARLESS,"
                           "ZCREATIONDATE,ZMODIFICATIONDATE") +
                   (hasContainers() ? ",ZCONTAINER1,ZCONTAINERWHERECONTACTISME" : ""));
    Insert date = insert("ZABCDCONTACTDATE",
                         "Z_PK,Z_ENT,Z_OPT,ZOWNER,Z{contact}_OWNER,ZORDERINGINDEX,ZLABEL,"
                         "ZUNIQUEID,ZDATE,ZDATEYEAR,ZDATEYEARLESS");
    Insert email = insert("ZABCDEMAILADDRESS",
                          "Z_PK,Z_ENT,Z_OPT,ZOWNER,Z{contact}_OWNER,ZISPRIMARY,ZORDERINGINDEX,"
                          "ZLABEL,ZUNIQUEID,ZADDRESS,ZADDRESSNORMALIZED");
    for (const StoredPerson& person : people) {
      const std::int64_t key = ++records_;
      const auto write = [&](const auto&... more) {
        const DayColumns birthday(person.birthday);
        record.row(key, entityOf(person), kFirstSave, identifier(person.uniqueId, ":ABPerson"),
                   person.firstName, person.middleName, person.lastName, person.nickname,
                   person.organization, person.displayFlags, birthday.moment, birthday.year,
                   birthday.withinYear, referenceSeconds(now_), referenceSeconds(now_), more...);
      };
      if (hasContainers()) {
        write(container(), person.isMe ? container() : std::nullopt);
      } else {
        write();
      }
      std::int64_t place = 0;
      for (const StoredDate& entry : person.dates) {
        const DayColumns day(entry.day);
        date.row(++dates_, number("ABCDContactDate"), kFirstSave, key, entityOf(person), place++,
                 entry.label, identifier(entry.uniqueId, ""), day.moment, day.year, day.withinYear);
      }
      place = 0;
      for (const std::string& address : person.emails) {
        email.row(++emails_, number("ABCDEmailAddress"), kFirstSave, key, entityOf(person),
                  std::int64_t{place == 0}, place, std::string("_$!<Home>!$_"), freshUUID(),
                  address, lowered(address));
        ++place;
      }
    }
  }

  void writeGroups(std::size_t peopleCount, const std::vector<StoredGroup>& groups) {
    Insert record = insert(
        "ZABCDRECORD", std::string("Z_PK,Z_ENT,Z_OPT,ZUNIQUEID,ZNAME,ZNAMENORMALIZED,ZCREATIONDATE,"
                                   "ZMODIFICATIONDATE") +
                           (hasContainers() ? ",ZCONTAINER" : ""));
    Insert membership = insert(schema_.withNumbers("Z_{contact}PARENTGROUPS"),
                               "Z_{contact}CONTACTS,Z_{group}PARENTGROUPS1");
    Insert nesting = insert(schema_.withNumbers("Z_{abstractGroup}PARENTGROUPS"),
                            "Z_{abstractGroup}CHILDGROUPS,Z_{group}PARENTGROUPS");
    const std::int64_t firstGroup = firstPerson() + static_cast<std::int64_t>(peopleCount);
    for (const StoredGroup& group : groups) {
      const std::int64_t key = ++records_;
      const auto write = [&](const auto&... more) {
        record.row(key, entityOf(group), kFirstSave, identifier(group.uniqueId, ":ABGroup"),
                   group.name, lowered(group.name), referenceSeconds(now_), referenceSeconds(now_),
                   more...);
      };
      if (hasContainers()) {
        write(container());
      } else {
        write();
      }
      if (group.kind == StoredGroup::Kind::smart) continue;
      for (const std::size_t i : group.people) {
        membership.row(firstPerson() + static_cast<std::int64_t>(i), key);
      }
      for (const std::size_t i : group.subgroups) {
        nesting.row(firstGroup + static_cast<std::int64_t>(i), key);
      }
    }
  }

  std::int64_t entityOf(const StoredGroup& group) const {
    switch (group.kind) {
      case StoredGroup::Kind::subscribed:
        return number("ABCDSubscribedGroup");
      case StoredGroup::Kind::smart:
        return number("ABCDSmartGroup");
      case StoredGroup::Kind::plain:
        break;
    }
    return number("ABCDGroup");
  }

  void writeBookkeeping() {
    Insert key = insert("Z_PRIMARYKEY", "Z_ENT,Z_NAME,Z_SUPER,Z_MAX");
    for (const StoreSchema::Entity& entity : schema_.entities()) {
      key.row(std::int64_t{entity.number}, std::string(entity.name), std::int64_t{entity.super},
              highestKey(entity.name));
    }
    // No version hashes: those of the models that other programs carry are not ours to claim.
    const PropertyList about(PropertyList::Dictionary{
        {"NSPersistenceFrameworkVersion", PropertyList(hasContainers() ? 641 : 358)},
        {"NSStoreModelVersionHashesVersion", PropertyList(3)},
        {"NSStoreModelVersionIdentifiers", PropertyList(PropertyList::Array{PropertyList("")})},
        {"NSStoreType", PropertyList("SQLite")},
    });
    insert("Z_METADATA", "Z_VERSION,Z_UUID,Z_PLIST")
        .row(std::int64_t{1}, freshUUID(), PropertyList::Data{binaryPropertyList(about)});
  }

  /// Z_MAX, kept on the row of a table's root entity.
  std::int64_t highestKey(std::string_view entity) const {
    if (entity == "ABCDRecord") return records_;
    if (entity == "ABCDContactDate") return dates_;
    if (entity == "ABCDEmailAddress") return emails_;
    return 0;
  }

  const SQLiteDatabase& database_;
  const StoreSchema& schema_;
  Date now_;
  std::optional<Error> error_;
  std::int64_t records_ = 0, dates_ = 0, emails_ = 0;
};

}  // namespace

Result<void> AddressBookStoreWriter::write(NSFileManager& files, const std::string& path,
                                           StoreGeneration generation,
                                           const std::vector<StoredPerson>& people,
                                           const std::vector<StoredGroup>& groups, Date now) {
  if (const auto wrong = fault(people, groups)) {
    return Error{Error::Kind::refused, "NSCocoaErrorDomain", 0,
                 "The contacts store " + path + " cannot be written: " + *wrong + ".", ""};
  }
  const auto database = SQLiteDatabase::createInMemory(path);
  if (!database) return database.error();
  const StoreSchema schema(generation);
  if (auto filled = Filling(*database, schema, now).run(people, groups); !filled) return filled;
  const auto bytes = database->bytes();
  if (!bytes) return bytes.error();
  return files.writeDurably(path, *bytes);
}

}  // namespace annivo
