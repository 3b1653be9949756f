// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace annivo {

namespace {

constexpr int kLongestValue = 16 * 1024 * 1024;

Error sqliteError(int code, std::string why, const std::string& path) {
  Error::Kind kind = Error::Kind::failed;
  switch (code & 0xFF) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:
    case SQLITE_TOOBIG:
      kind = Error::Kind::malformed;
      break;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_IOERR:
      kind = Error::Kind::unreadable;
      break;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      kind = Error::Kind::unreadable;
      why = "another program has it locked";
      break;
    case SQLITE_READONLY:
      kind = Error::Kind::unreadable;
      why = "another program left a change in it unfinished";
      break;
    default:
      break;
  }
  return {.kind = kind,
          .domain = "NSSQLiteErrorDomain",
          .code = code,
          .description = "The database \"" + path + "\" cannot be used: " + why + ".",
          .failureReason = ""};
}

Error sqliteError(sqlite3* database, int code, const std::string& path) {
  return sqliteError(code, sqlite3_errmsg(database), path);
}

}  // namespace

SQLiteStatement::SQLiteStatement(SQLiteStatement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr)), path_(other.path_) {}

SQLiteStatement::~SQLiteStatement() { sqlite3_finalize(statement_); }

void SQLiteStatement::bind(int parameter, std::int64_t value) {
  sqlite3_bind_int64(statement_, parameter, value);
}

void SQLiteStatement::bind(int parameter, double value) {
  sqlite3_bind_double(statement_, parameter, value);
}

void SQLiteStatement::bind(int parameter, std::string_view text) {
  sqlite3_bind_text64(statement_, parameter, text.data() == nullptr ? "" : text.data(), text.size(),
                      SQLITE_TRANSIENT, SQLITE_UTF8);
}

void SQLiteStatement::bindBlob(int parameter, std::string_view bytes) {
  sqlite3_bind_blob64(statement_, parameter, bytes.data() == nullptr ? "" : bytes.data(),
                      bytes.size(), SQLITE_TRANSIENT);
}

void SQLiteStatement::bindNull(int parameter) { sqlite3_bind_null(statement_, parameter); }

Result<bool> SQLiteStatement::step() {
  const int code = sqlite3_step(statement_);
  if (code == SQLITE_ROW) return true;
  Result<bool> result = false;
  if (code != SQLITE_DONE) result = sqliteError(sqlite3_db_handle(statement_), code, *path_);
  sqlite3_reset(statement_);
  return result;
}

bool SQLiteStatement::isNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::optional<double> SQLiteStatement::number(int column) const {
  const int type = sqlite3_column_type(statement_, column);
  if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return std::nullopt;
  return sqlite3_column_double(statement_, column);
}

std::optional<std::int64_t> SQLiteStatement::integer(int column) const {
  const int type = sqlite3_column_type(statement_, column);
  if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return std::nullopt;
  return sqlite3_column_int64(statement_, column);
}

std::optional<std::string_view> SQLiteStatement::text(int column) const {
  if (sqlite3_column_type(statement_, column) != SQLITE_TEXT) return std::nullopt;
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  const int size = sqlite3_column_bytes(statement_, column);
  return std::string_view(bytes == nullptr ? "" : bytes, static_cast<std::size_t>(size));
}

SQLiteDatabase::SQLiteDatabase(sqlite3* database, std::string path)
    : database_(database), path_(std::make_unique<std::string>(std::move(path))) {}

SQLiteDatabase::SQLiteDatabase(SQLiteDatabase&& other) noexcept
    : waiting_(std::move(other.waiting_)),
      unlocked_(std::move(other.unlocked_)),
      database_(std::exchange(other.database_, nullptr)),
      path_(std::move(other.path_)) {}

SQLiteDatabase::~SQLiteDatabase() { sqlite3_close_v2(database_); }

Result<SQLiteDatabase> SQLiteDatabase::openForReading(
    const std::string& path, const std::shared_ptr<StoreReadings>& readings) {
  const SQLiteFile file(path);
  if (const auto sound = file.check(); !sound) return sound.error();
  const SQLiteFile::Stamp stamp = file.stamp();
  const SQLiteFile::Manner manner = file.manner();
  auto database = open(file, manner, path, readings);
  if (!database && database.error().code == SQLITE_READONLY_ROLLBACK) {
    return openCopy(file, path, *readings);
  }
  if (database && manner != SQLiteFile::Manner::locked) database->unlocked_ = {file, stamp};
  return database;
}

Result<SQLiteDatabase> SQLiteDatabase::open(const SQLiteFile& file, SQLiteFile::Manner manner,
                                            const std::string& path,
                                            std::shared_ptr<StoreReadings> readings) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(file.uri(manner).c_str(), &handle,
                                   SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
  SQLiteDatabase database(handle, path);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  database.waiting_ = std::make_unique<Waiting>(Waiting{std::move(readings), path});
  sqlite3_busy_handler(
      handle,
      [](void* context, int /*count*/) {
        const auto* waiting = static_cast<const Waiting*>(context);
        return waiting->readings->waitForLock(waiting->path) ? 1 : 0;
      },
      database.waiting_.get());
  const bool exclusive = manner == SQLiteFile::Manner::privateIndex;
  const auto read = database.beginReading(file, exclusive ? "PRAGMA locking_mode=EXCLUSIVE" : "");
  if (!read) return read.error();
  return database;
}

/// The copy is opened for writing, which rolls it back, and then needs its files no more.
Result<SQLiteDatabase> SQLiteDatabase::openCopy(const SQLiteFile& file, const std::string& path,
                                                const StoreReadings& readings) {
  const auto folder = PrivateFolder::make(readings.temporaryFolder());
  if (!folder) {
    return sqliteError(
        SQLITE_CANTOPEN,
        "another program left a change in it unfinished; " + folder.error().description, path);
  }
  if (const auto copied = file.copyWithJournal(folder->path()); !copied) return copied.error();
  const SQLiteFile copy(folder->path() + "/store");
  sqlite3* handle = nullptr;
  const int code =
      sqlite3_open_v2((folder->path() + "/store").c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  SQLiteDatabase database(handle, path);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  if (const auto read = database.beginReading(copy, "PRAGMA query_only=1"); !read) {
    return read.error();
  }
  return database;
}

Result<void> SQLiteDatabase::beginReading(const SQLiteFile& file, const std::string& first) {
  sqlite3_extended_result_codes(database_, 1);
  sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, kLongestValue);
  // The file is somebody else's: nothing in its schema runs, and leaving it folds no WAL into it.
  sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (!first.empty()) {
    if (auto set = execute(first); !set) return set;
  }
  if (auto whole = checkWhole(file); !whole) return whole;
  // Tables are read once from end to end; SQLite's 2 MB of pages would be kept for nothing.
  return execute("PRAGMA cache_size=-128");
}

// Opening has read nothing yet; this reads the first page, and so finds most that can be wrong. A
// last page that is cut short SQLite itself would fill up with zeros, unless a WAL holds it whole.
Result<void> SQLiteDatabase::checkWhole(const SQLiteFile& file) const {
  if (auto begun = execute("BEGIN; PRAGMA schema_version"); !begun) return begun;
  auto statement = prepare("PRAGMA page_size");
  if (!statement) return statement.error();
  if (const auto stepped = statement->step(); !stepped) return stepped.error();
  if (file.isCut(statement->integer(0).value_or(1))) {
    return sqliteError(SQLITE_CORRUPT, "the file is truncated", *path_);
  }
  return execute("COMMIT");
}

bool SQLiteDatabase::wasChanged() const {
  return unlocked_ && unlocked_->file.stamp() != unlocked_->stamp;
}

Result<SQLiteDatabase> SQLiteDatabase::openForReading(
    const NSFileManager& files, const std::string& path,
    const std::shared_ptr<StoreReadings>& readings) {
  if (files.isOnDisk(path)) return openForReading(path, readings);
  const auto bytes = files.contentsAtPath(path);
  if (!bytes) return bytes.error();
  return openBytes(*bytes, path);
}

Result<SQLiteDatabase> SQLiteDatabase::createInMemory(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(":memory:", &handle, SQLITE_OPEN_READWRITE, nullptr);
  SQLiteDatabase database(handle, path);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  sqlite3_extended_result_codes(handle, 1);
  return database;
}

Result<SQLiteDatabase> SQLiteDatabase::openBytes(std::string_view bytes, const std::string& path) {
  auto database = createInMemory(path);
  if (!database) return database;
  sqlite3* handle = database->database_;
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // An empty file is a database without tables, which deserializing does not take.
  if (bytes.empty()) return database;
  auto* copy = static_cast<unsigned char*>(sqlite3_malloc64(bytes.size()));
  if (copy == nullptr) return sqliteError(handle, SQLITE_NOMEM, path);
  std::copy(bytes.begin(), bytes.end(), copy);
  const auto size = static_cast<sqlite3_int64>(bytes.size());
  const int code =
      sqlite3_deserialize(handle, "main", copy, size, size,
                          SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  // Reads the first page, as nothing was looked at yet.
  if (const auto read = database->execute("PRAGMA schema_version"); !read) return read.error();
  return database;
}

Result<std::string> SQLiteDatabase::bytes() const {
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> content(
      sqlite3_serialize(database_, "main", &size, 0), &sqlite3_free);
  if (content == nullptr && size > 0) return sqliteError(database_, SQLITE_NOMEM, *path_);
  return std::string(content.get(), content.get() + size);
}

Result<SQLiteStatement> SQLiteDatabase::prepare(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(database_, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                      &statement, nullptr);
  if (code != SQLITE_OK) return sqliteError(database_, code, *path_);
  return SQLiteStatement(statement, *path_);
}

Result<void> SQLiteDatabase::execute(const std::string& sql) const {
  const int code = sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) return sqliteError(database_, code, *path_);
  return {};
}

Result<std::vector<std::string>> SQLiteDatabase::columns(const std::string& table) const {
  auto statement = prepare(
      "SELECT upper(c.name) FROM sqlite_schema t, pragma_table_info(t.name) c "
      "WHERE t.type = 'table' AND t.name = ?1 COLLATE NOCASE ORDER BY c.cid");
  if (!statement) return statement.error();
  statement->bind(1, std::string_view(table));
  std::vector<std::string> names;
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) return names;
    names.emplace_back(statement->text(0).value_or(""));
  }
}

}  // namespace annivo
