// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace annivo {

namespace {

constexpr int kBusyMilliseconds = 5000;
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

/// `path` as the path of a "file:" URI.
std::string uriPath(const std::string& path) {
  std::string uri;
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      std::array<char, 4> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned>(c));
      uri += escaped.data();
    } else {
      uri += c;
    }
  }
  return uri;
}

bool isNotEmpty(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

bool isReadable(const std::string& path) { return ::access(path.c_str(), R_OK) == 0; }

/// The path of the file itself, beside which its WAL is, where `path` leads to it over links.
std::string realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real == nullptr ? path : real.get();
}

/// Whether the file's header asks for a write-ahead log (read version 2).
bool wantsWriteAheadLog(const std::string& path) {
  std::array<char, 20> header{};
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const auto count = ::pread(file, header.data(), header.size(), 0);
  ::close(file);
  return count == static_cast<ssize_t>(header.size()) && header[19] == 2;
}

/// How a file is opened so that nothing is written to it or beside it.
enum class Manner {
  /// With SQLite's own locks. A shared index of a WAL ("-shm") is looked at, never changed; when
  /// nobody has the store open, SQLite makes an index of its own in memory.
  locked,
  /// A WAL without a shared index: nobody has the store open, as whoever has keeps one. SQLite
  /// would make the index file; with its lock-free file layer in exclusive mode it makes it in
  /// memory.
  privateIndex,
  /// A store made for a WAL that has none: nobody has it open, and SQLite would make both files.
  immutable,
};

Manner mannerFor(const std::string& path) {
  const bool hasIndex = isReadable(path + "-shm");
  if (isNotEmpty(path + "-wal")) return hasIndex ? Manner::locked : Manner::privateIndex;
  if (!wantsWriteAheadLog(path)) return Manner::locked;
  return hasIndex && isReadable(path + "-wal") ? Manner::locked : Manner::immutable;
}

std::string uriFor(const std::string& path, Manner manner) {
  std::string uri = "file:" + uriPath(path) + "?mode=ro";
  switch (manner) {
    case Manner::locked:
      return uri + "&readonly_shm=1";
    case Manner::privateIndex:
      return uri + "&vfs=unix-none";
    case Manner::immutable:
      return uri + "&immutable=1";
  }
  return uri;
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
    : database_(std::exchange(other.database_, nullptr)), path_(std::move(other.path_)) {}

SQLiteDatabase::~SQLiteDatabase() { sqlite3_close_v2(database_); }

Result<SQLiteDatabase> SQLiteDatabase::openForReading(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return errorFromErrno(errno, "read", path);
  if (S_ISDIR(status.st_mode)) return errorFromErrno(EISDIR, "read", path);
  if (!S_ISREG(status.st_mode)) return errorFromErrno(EACCES, "read", path);

  const std::string file = realPath(path);
  const Manner manner = mannerFor(file);
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(uriFor(file, manner).c_str(), &handle,
                                   SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
  SQLiteDatabase database(handle, path);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  sqlite3_extended_result_codes(handle, 1);
  sqlite3_busy_timeout(handle, kBusyMilliseconds);
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongestValue);
  // The file is somebody else's: nothing in its schema runs, and leaving it folds no WAL into it.
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (manner == Manner::privateIndex) {
    const auto exclusive = database.execute("PRAGMA locking_mode=EXCLUSIVE");
    if (!exclusive) return exclusive.error();
  }
  if (const auto whole = database.checkWhole(file); !whole) return whole.error();
  // Tables are read once from end to end; SQLite's 2 MB of pages would be kept for nothing.
  if (const auto set = database.execute("PRAGMA cache_size=-128"); !set) return set.error();
  return database;
}

// Opening has read nothing yet; this reads the first page, and so finds most that can be wrong. A
// last page that is cut short SQLite itself would fill up with zeros, unless a WAL holds it whole.
Result<void> SQLiteDatabase::checkWhole(const std::string& file) const {
  if (auto begun = execute("BEGIN; PRAGMA schema_version"); !begun) return begun;
  auto statement = prepare("PRAGMA page_size");
  if (!statement) return statement.error();
  if (const auto stepped = statement->step(); !stepped) return stepped.error();
  const std::int64_t pageSize = statement->integer(0).value_or(1);
  struct stat status {};
  const bool isCut = !isNotEmpty(file + "-wal") && ::stat(file.c_str(), &status) == 0 &&
                     status.st_size % std::max<std::int64_t>(pageSize, 1) != 0;
  if (isCut) return sqliteError(SQLITE_CORRUPT, "the file is truncated", *path_);
  return execute("COMMIT");
}

Result<SQLiteDatabase> SQLiteDatabase::create(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return errorFromErrno(errno, "create", path);
  ::close(file);
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  SQLiteDatabase database(handle, path);
  if (code != SQLITE_OK) return sqliteError(handle, code, path);
  sqlite3_extended_result_codes(handle, 1);
  sqlite3_busy_timeout(handle, kBusyMilliseconds);
  return database;
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
