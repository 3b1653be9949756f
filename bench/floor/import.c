// SPDX-License-Identifier: MIT
// import LIST STORE COPY: the least that importing cards can cost. Reads every listed file, then
// inserts every row of STORE into a new database COPY with prepared statements in one transaction.
#include <errno.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "list.h"

static void must(int code, sqlite3* database) {
  if (code == SQLITE_OK || code == SQLITE_DONE) return;
  fprintf(stderr, "import: %s\n", sqlite3_errmsg(database));
  exit(1);
}

static void read_files(const char* list_path) {
  FILE* list = fopen(list_path, "r");
  if (!list) fail("import", list_path);
  static char path[4096], bytes[65536];
  for (size_t size; next_file(list, &size, path, sizeof path);) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) fail("import", path);
    while (read(file, bytes, sizeof bytes) > 0) {
    }
    close(file);
  }
  fclose(list);
}

static void copy_rows(sqlite3* from, sqlite3* to, const char* table) {
  char sql[4096];
  snprintf(sql, sizeof sql, "SELECT * FROM \"%s\"", table);
  sqlite3_stmt *rows, *insert;
  must(sqlite3_prepare_v2(from, sql, -1, &rows, NULL), from);
  const int columns = sqlite3_column_count(rows);
  int length = snprintf(sql, sizeof sql, "INSERT INTO \"%s\" VALUES (?", table);
  for (int i = 1; i < columns; ++i) {
    length += snprintf(sql + length, sizeof sql - (size_t)length, ",?");
  }
  snprintf(sql + length, sizeof sql - (size_t)length, ")");
  must(sqlite3_prepare_v2(to, sql, -1, &insert, NULL), to);
  while (sqlite3_step(rows) == SQLITE_ROW) {
    for (int i = 0; i < columns; ++i)
      sqlite3_bind_value(insert, i + 1, sqlite3_column_value(rows, i));
    must(sqlite3_step(insert), to);
    sqlite3_reset(insert);
  }
  sqlite3_finalize(rows);
  sqlite3_finalize(insert);
}

int main(int count, char** arguments) {
  if (count != 4) {
    fprintf(stderr, "usage: import LIST STORE COPY\n");
    return 2;
  }
  read_files(arguments[1]);
  sqlite3 *from, *to;
  must(sqlite3_open_v2(arguments[2], &from, SQLITE_OPEN_READONLY, NULL), from);
  must(sqlite3_open(arguments[3], &to), to);
  must(sqlite3_exec(to, "BEGIN", NULL, NULL, NULL), to);
  sqlite3_stmt* tables;
  must(sqlite3_prepare_v2(from, "SELECT sql FROM sqlite_master WHERE sql NOT NULL ORDER BY rowid",
                          -1, &tables, NULL),
       from);
  while (sqlite3_step(tables) == SQLITE_ROW) {
    must(sqlite3_exec(to, (const char*)sqlite3_column_text(tables, 0), NULL, NULL, NULL), to);
  }
  sqlite3_finalize(tables);
  must(sqlite3_prepare_v2(from, "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &tables,
                          NULL),
       from);
  while (sqlite3_step(tables) == SQLITE_ROW) {
    copy_rows(from, to, (const char*)sqlite3_column_text(tables, 0));
  }
  sqlite3_finalize(tables);
  must(sqlite3_exec(to, "COMMIT", NULL, NULL, NULL), to);
  sqlite3_close(from);
  sqlite3_close(to);
  return 0;
}
