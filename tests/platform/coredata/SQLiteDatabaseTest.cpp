// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <limits>
#include <thread>

#include "platform/coredata/SQLiteDatabase.h"
#include "tests/support/Doubles.h"
#include "tests/support/EditDatabase.h"
#include "tests/support/MemoryFileManager.h"
#include "tests/support/OtherProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

struct SQLiteDatabaseTest : testing::Test {
  TemporaryFolder folder;
  std::string path = folder.path("store.db");

  void makeStore(const std::string& journal = "DELETE") {
    EditDatabase(path)
        .run("PRAGMA journal_mode=" + journal)
        .run("CREATE TABLE T (N INTEGER)")
        .run("INSERT INTO T VALUES (1)");
  }

  /// The sum of T.N; -1 when it cannot be had.
  static std::int64_t sum(const std::string& file) {
    const auto database = SQLiteDatabase::openForReading(file);
    if (!database) return -1;
    auto statement = database->prepare("SELECT sum(N) FROM T");
    if (!statement || !statement->step()) return -1;
    return statement->integer(0).value_or(-1);
  }
};

TEST_F(SQLiteDatabaseTest, ReadsWhatFilesKeepInMemory) {
  makeStore();
  ManualClock clock{utc(2026, 11, 20)};
  MemoryFileManager memory(clock);
  memory.makeFolders("/m");
  const std::string whole = folder.readFile("store.db");
  const auto kindOf = [&](const std::string& bytes) {
    EXPECT_TRUE(memory.writeAtomically("/m/store.db", bytes));
    const auto database = SQLiteDatabase::openForReading(memory, "/m/store.db");
    if (database) return std::string("read");
    EXPECT_NE(database.error().text().find("/m/store.db"), std::string::npos);
    return std::string(database.error().kind == Error::Kind::malformed ? "malformed" : "other");
  };
  EXPECT_EQ(kindOf(whole), "read");
  EXPECT_EQ(kindOf(std::string(5000, 'x')), "malformed");
  EXPECT_EQ(SQLiteDatabase::openForReading(memory, "/m/none").error().kind, Error::Kind::absent);
  EXPECT_EQ(SQLiteDatabase::openForReading(memory, path).error().kind, Error::Kind::absent);
}

TEST_F(SQLiteDatabaseTest, GivesTheBytesOfItsFile) {
  const auto database = SQLiteDatabase::createInMemory("name");
  ASSERT_TRUE(database->execute("CREATE TABLE T (N INTEGER); INSERT INTO T VALUES (7)"));
  folder.writeFile("store.db", *database->bytes());
  EXPECT_EQ(sum(path), 7);
}

TEST_F(SQLiteDatabaseTest, GivesBackEveryKindOfValue) {
  const auto database = SQLiteDatabase::createInMemory(path);
  ASSERT_TRUE(database.ok());
  ASSERT_TRUE(database->execute("CREATE TABLE T (A, B, C, D, E, F)").ok());
  {
    auto insert = database->prepare("INSERT INTO T VALUES (?, ?, ?, ?, ?, ?)");
    ASSERT_TRUE(insert.ok());
    insert->bind(1, std::numeric_limits<std::int64_t>::min());
    insert->bind(2, 0.5);
    insert->bind(3, std::string_view("a\0b", 3));
    insert->bindBlob(4, std::string_view("\0\1", 2));
    insert->bindNull(5);
    insert->bind(6, std::string_view());
    ASSERT_TRUE(insert->step().ok());
  }
  auto row = database->prepare("SELECT * FROM T");
  ASSERT_TRUE(row.ok());
  ASSERT_TRUE(*row->step());
  EXPECT_EQ(row->integer(0), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(row->number(1), 0.5);
  EXPECT_EQ(row->text(0), std::nullopt);
  EXPECT_EQ(row->text(2), std::string_view("a\0b", 3));
  EXPECT_EQ(row->number(2), std::nullopt);
  EXPECT_EQ(row->integer(3), std::nullopt);
  EXPECT_EQ(row->text(3), std::nullopt);
  EXPECT_FALSE(row->isNull(3));
  EXPECT_TRUE(row->isNull(4));
  EXPECT_EQ(row->number(4), std::nullopt);
  EXPECT_EQ(row->text(5), "");
  EXPECT_FALSE(*row->step());
  EXPECT_TRUE(*row->step()) << "runs again after its end";
}

TEST_F(SQLiteDatabaseTest, NamesTheColumnsOfTablesInUpperCase) {
  EditDatabase(path).run(
      "CREATE TABLE zThing (Z_pk, zName); CREATE VIEW V AS SELECT * FROM zThing");
  const auto database = SQLiteDatabase::openForReading(path);
  ASSERT_TRUE(database.ok());
  EXPECT_EQ(*database->columns("ZTHING"), (std::vector<std::string>{"Z_PK", "ZNAME"}));
  EXPECT_TRUE(database->columns("V")->empty());
  EXPECT_TRUE(database->columns("NONE")->empty());
}

TEST_F(SQLiteDatabaseTest, NamesTheFileInEveryError) {
  makeStore();
  const auto database = SQLiteDatabase::openForReading(path);
  ASSERT_TRUE(database.ok());
  const auto prepared = database->prepare("SELECT * FROM NONE");
  ASSERT_FALSE(prepared.ok());
  EXPECT_NE(prepared.error().text().find(path), std::string::npos);
  const auto written = database->execute("INSERT INTO T VALUES (2)");
  ASSERT_FALSE(written.ok()) << "open for reading only";
  EXPECT_NE(written.error().text().find(path), std::string::npos);
}

TEST_F(SQLiteDatabaseTest, TellsAbsentUnreadableAndMalformedFilesApart) {
  folder.writeFile("text", std::string(5000, 'x'));
  folder.writeFile("half", "SQLite form");
  folder.makeFolder("folder");
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  makeStore();
  const std::string whole = folder.readFile("store.db");
  folder.writeFile("truncated", whole.substr(0, whole.size() - 4096));
  const struct {
    const char* name;
    Error::Kind kind;
  } rows[] = {{"none", Error::Kind::absent},        {"text", Error::Kind::malformed},
              {"half", Error::Kind::malformed},     {"folder", Error::Kind::unreadable},
              {"fifo", Error::Kind::unreadable},    {"store.db/x", Error::Kind::absent},
              {"truncated", Error::Kind::malformed}};
  for (const auto& row : rows) {
    const auto database = SQLiteDatabase::openForReading(folder.path(row.name));
    ASSERT_FALSE(database.ok()) << row.name;
    EXPECT_EQ(database.error().kind, row.kind) << database.error().text();
    EXPECT_NE(database.error().text().find(folder.path(row.name)), std::string::npos);
  }
}

TEST_F(SQLiteDatabaseTest, ReadsPathsWithCharactersThatUrisReserve) {
  path = folder.path("100% ä?mode=rw#x&y.db");
  makeStore();
  EXPECT_EQ(sum(path), 1);
}

TEST_F(SQLiteDatabaseTest, WaitsForAWriter) {
  makeStore();
  EditDatabase writer(path);
  writer.run("BEGIN EXCLUSIVE");
  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds{300});
    writer.run("COMMIT");
  });
  EXPECT_EQ(sum(path), 1);
  release.join();
}

TEST_F(SQLiteDatabaseTest, WaitsOnceForAStoreThatStaysLocked) {
  makeStore();
  EditDatabase writer(path);
  writer.run("BEGIN EXCLUSIVE");
  const auto readings = std::make_shared<StoreReadings>(std::chrono::milliseconds{100});
  const auto database = SQLiteDatabase::openForReading(path, readings);
  ASSERT_FALSE(database.ok());
  EXPECT_NE(database.error().description.find("locked"), std::string::npos);
  EXPECT_FALSE(readings->waitForLock(path)) << "all the waiting there is was done";
  EXPECT_TRUE(readings->waitForLock(path + "2")) << "for this store alone";
}

TEST_F(SQLiteDatabaseTest, RefusesWhatIsNoFileBesideTheStore) {
  ::alarm(60);  // Ends a test that hangs.
  const std::pair<const char*, std::function<void(const std::string&)>> kinds[] = {
      {"a FIFO", [](const auto& at) { ASSERT_EQ(::mkfifo(at.c_str(), 0600), 0); }},
      {"a link", [&](const auto& at) { std::filesystem::create_symlink("fifo", at); }},
      {"a dangling link", [](const auto& at) { std::filesystem::create_symlink("none", at); }},
      {"a device", [](const auto& at) { std::filesystem::create_symlink("/dev/zero", at); }},
      {"a folder", [](const auto& at) { std::filesystem::create_directory(at); }}};
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  for (const char* journal : {"DELETE", "WAL"}) {
    folder.remove("store.db");
    makeStore(journal);
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
      for (const auto& [name, make] : kinds) {
        SCOPED_TRACE(std::string(name) + " as " + suffix + " of a store with " + journal);
        make(path + suffix);
        const auto database = SQLiteDatabase::openForReading(path);
        folder.remove(std::string("store.db") + suffix);
        ASSERT_FALSE(database.ok());
        EXPECT_EQ(database.error().kind, Error::Kind::unreadable);
        EXPECT_NE(database.error().description.find(path + suffix), std::string::npos);
      }
    }
    EXPECT_EQ(sum(path), 1);
  }
  ::alarm(0);
}

TEST_F(SQLiteDatabaseTest, GivesUpOnAWriterAfterFiveSeconds) {
  makeStore();
  EditDatabase writer(path);
  writer.run("BEGIN EXCLUSIVE");
  const auto start = std::chrono::steady_clock::now();
  const auto database = SQLiteDatabase::openForReading(path);
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
  ASSERT_FALSE(database.ok());
  EXPECT_NE(database.error().description.find("locked"), std::string::npos);
  EXPECT_NE(database.error().description.find(path), std::string::npos);
  EXPECT_GT(waited.count(), 4.5);
  EXPECT_LT(waited.count(), 7.5);
}

// How a store may lie on disk, and that reading it changes nothing there.

struct SQLiteDatabaseLying : SQLiteDatabaseTest {
  void expectReadsWithoutTrace(std::int64_t expected) {
    const auto contents = folder.snapshot();
    const auto files = folder.fingerprint();
    EXPECT_EQ(sum(path), expected);
    EXPECT_TRUE(folder.snapshot() == contents);
    EXPECT_EQ(folder.fingerprint(), files);
  }
  /// Leaves the store as a crash in the middle of a change does: half of it in the file, what it
  /// replaces in the journal.
  void leaveUnfinished(const std::string& sql) {
    std::string half, journal;
    {
      EditDatabase writer(path);
      writer.run(
          "PRAGMA cache_size = 1; BEGIN; CREATE TABLE G (B BLOB); INSERT INTO G VALUES "
          "(randomblob(50000)); " +
          sql);
      half = folder.readFile("store.db");
      journal = folder.readFile("store.db-journal");
      writer.run("ROLLBACK");
    }
    folder.writeFile("store.db", half);
    folder.writeFile("store.db-journal", journal);
  }
  /// A store with 1 in its file and 2 in its WAL, as a crash leaves it.
  void makeCrashedStore() {
    makeStore("WAL");
    EditDatabase(path).keepLog().run("INSERT INTO T VALUES (2)");
    ASSERT_TRUE(folder.exists("store.db-wal"));
    ASSERT_TRUE(folder.exists("store.db-shm"));
  }
};

TEST_F(SQLiteDatabaseLying, WithAChangeThatACrashLeftUnfinished) {
  makeStore();
  EditDatabase(path).run("CREATE TABLE F (B BLOB)").run("INSERT INTO F VALUES (zeroblob(20000))");
  leaveUnfinished("UPDATE T SET N = 5; UPDATE F SET B = randomblob(20000)");
  expectReadsWithoutTrace(1);
  folder.makeFolder("copies");
  const auto readings =
      std::make_shared<StoreReadings>(std::chrono::milliseconds{0}, folder.path("copies"));
  const auto database = SQLiteDatabase::openForReading(path, readings);
  ASSERT_TRUE(database.ok()) << database.error().text();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path("copies"))) << "no copy is left to be seen";
  auto statement = database->prepare("SELECT count(*) FROM F WHERE B = zeroblob(20000)");
  ASSERT_TRUE(*statement->step());
  EXPECT_EQ(statement->integer(0), 1);
  EXPECT_FALSE(database->execute("DELETE FROM T").ok()) << "for reading only, the copy too";
}

TEST_F(SQLiteDatabaseLying, WithAChangeLeftUnfinishedAndNowhereToCopyTo) {
  makeStore();
  leaveUnfinished("UPDATE T SET N = 5");
  const auto readings =
      std::make_shared<StoreReadings>(std::chrono::milliseconds{0}, folder.path("none"));
  const auto database = SQLiteDatabase::openForReading(path, readings);
  ASSERT_FALSE(database.ok());
  EXPECT_EQ(database.error().kind, Error::Kind::unreadable);
  EXPECT_NE(database.error().description.find(path), std::string::npos);
}

TEST_F(SQLiteDatabaseLying, WithARollbackJournal) {
  makeStore();
  expectReadsWithoutTrace(1);
}

TEST_F(SQLiteDatabaseLying, InWalModeWithoutAWal) {
  makeStore("WAL");
  ASSERT_FALSE(folder.exists("store.db-wal"));
  expectReadsWithoutTrace(1);
}

TEST_F(SQLiteDatabaseLying, WithAWalAndItsIndex) {
  makeCrashedStore();
  expectReadsWithoutTrace(3);
}

TEST_F(SQLiteDatabaseLying, WithAWalWithoutItsIndex) {
  makeCrashedStore();
  folder.remove("store.db-shm");
  expectReadsWithoutTrace(3);
}

TEST_F(SQLiteDatabaseLying, WithAWalThatEndsInTheMiddleOfAChange) {
  makeCrashedStore();
  folder.remove("store.db-shm");
  const std::string log = folder.readFile("store.db-wal");
  folder.writeFile("store.db-wal", log.substr(0, log.size() - 100));
  expectReadsWithoutTrace(1);
}

TEST_F(SQLiteDatabaseLying, WithAnEmptyWalAndAnIndex) {
  makeCrashedStore();
  folder.writeFile("store.db-wal", "");
  expectReadsWithoutTrace(1);
}

TEST_F(SQLiteDatabaseLying, WithAnIndexThatIsNone) {
  makeCrashedStore();
  folder.writeFile("store.db-shm", std::string(32768, '\7'));
  expectReadsWithoutTrace(3);
}

TEST_F(SQLiteDatabaseLying, BehindALinkToAnotherFolder) {
  makeCrashedStore();
  folder.remove("store.db-shm");
  folder.makeFolder("elsewhere");
  const std::string link = folder.path("elsewhere/link.db");
  std::filesystem::create_symlink(path, link);
  path = link;
  expectReadsWithoutTrace(3);
}

TEST_F(SQLiteDatabaseLying, OpenInAnotherProgramThatGoesOnWriting) {
  makeStore("WAL");
  const OtherProgram writer(path);
  writer.run("INSERT INTO T VALUES (2)");
  const auto contents = folder.snapshot();
  {
    const auto database = SQLiteDatabase::openForReading(path);
    ASSERT_TRUE(database.ok()) << database.error().text();
    ASSERT_TRUE(database->execute("BEGIN").ok());
    auto statement = database->prepare("SELECT sum(N) FROM T");
    ASSERT_TRUE(*statement->step());
    EXPECT_EQ(statement->integer(0), 3);
    EXPECT_TRUE(folder.snapshot() == contents);
    writer.run("INSERT INTO T VALUES (4)");
    writer.run("PRAGMA wal_checkpoint(PASSIVE)");
    writer.run("INSERT INTO T VALUES (8)");
    ASSERT_FALSE(*statement->step());
    ASSERT_TRUE(*statement->step());
    EXPECT_EQ(statement->integer(0), 3) << "one picture within a transaction";
  }
  writer.run("PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_EQ(sum(path), 15);
  writer.run("INSERT INTO T VALUES (16)");
  EXPECT_EQ(sum(path), 31);
}

TEST_F(SQLiteDatabaseLying, OpenedWithoutLocksTellsThatAnotherProgramBeganToWrite) {
  makeStore("WAL");
  {
    const auto database = SQLiteDatabase::openForReading(path);
    ASSERT_TRUE(database.ok()) << database.error().text();
    const OtherProgram other(path);
    other.run("PRAGMA schema_version");
    EXPECT_FALSE(database->wasChanged()) << "it is only read";
    other.run("INSERT INTO T VALUES (2)");
    EXPECT_TRUE(database->wasChanged());
  }
  EditDatabase(path).keepLog().run("INSERT INTO T VALUES (2)");
  folder.remove("store.db-shm");
  const auto database = SQLiteDatabase::openForReading(path);
  ASSERT_TRUE(database.ok()) << database.error().text();
  EXPECT_FALSE(database->wasChanged());
  const OtherProgram other(path);
  other.run("INSERT INTO T VALUES (4)");
  EXPECT_TRUE(database->wasChanged());
}

TEST_F(SQLiteDatabaseLying, InAFolderThatMayNotBeWritten) {
  const struct {
    const char* name;
    std::int64_t expected;
  } rows[] = {{"rollback", 1}, {"no wal", 1}, {"wal", 3}, {"wal without index", 3}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string name = row.name;
    folder.remove("locked");
    folder.makeFolder("locked");
    path = folder.path("locked/store.db");
    makeStore(name == "rollback" ? "DELETE" : "WAL");
    if (name.starts_with("wal")) EditDatabase(path).keepLog().run("INSERT INTO T VALUES (2)");
    if (name == "wal without index") folder.remove("locked/store.db-shm");
    for (const auto& [file, content] : folder.snapshot("locked")) {
      std::filesystem::permissions(folder.path("locked/" + file), std::filesystem::perms{0444});
    }
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0555});
    std::filesystem::permissions(folder.path(), std::filesystem::perms{0755});
    const pid_t child = ::fork();
    if (child == 0) {
      // Permissions bind nobody's child even where the tests run as root.
      if (::getuid() == 0 && ::setresuid(65534, 65534, 65534) != 0) ::_exit(98);
      if (::access(folder.path("locked").c_str(), W_OK) == 0) ::_exit(99);
      ::_exit(static_cast<int>(sum(path)));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), row.expected);
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0755});
  }
}

}  // namespace
}  // namespace annivo
