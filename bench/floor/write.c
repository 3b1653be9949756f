// SPDX-License-Identifier: MIT
// write LIST ROOT: the least that writing a calendar can cost. Writes every listed file, in its
// size, under ROOT: a temporary file beside it, renamed; one syncfs at the end.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "list.h"

// Makes the folders that hold `path`, once for each run of files in one folder.
static void make_folders(char* path) {
  static char last[4096];
  char* end = strrchr(path, '/');
  const size_t length = (size_t)(end - path);
  if (strncmp(last, path, length) == 0 && last[length] == '\0') return;
  for (char* slash = strchr(path + 1, '/'); slash; slash = strchr(slash + 1, '/')) {
    *slash = '\0';
    if (mkdir(path, 0700) != 0 && errno != EEXIST) fail("write", path);
    *slash = '/';
  }
  memcpy(last, path, length);
  last[length] = '\0';
}

int main(int count, char** arguments) {
  if (count != 3) {
    fprintf(stderr, "usage: write LIST ROOT\n");
    return 2;
  }
  FILE* list = fopen(arguments[1], "r");
  if (!list) fail("write", arguments[1]);
  static char relative[4096], path[8400], temporary[8404];
  char* bytes = NULL;
  size_t capacity = 0;
  for (size_t size; next_file(list, &size, relative, sizeof relative);) {
    if (size > capacity) {
      bytes = realloc(bytes, size);
      if (!bytes) fail("write", "memory");
      memset(bytes, 'x', capacity = size);
    }
    snprintf(path, sizeof path, "%s/%s", arguments[2], relative);
    make_folders(path);
    snprintf(temporary, sizeof temporary, "%s.tmp", path);
    const int file = open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) fail("write", temporary);
    if (write(file, bytes, size) != (ssize_t)size) fail("write", temporary);
    if (close(file) != 0) fail("write", temporary);
    if (rename(temporary, path) != 0) fail("write", path);
  }
  fclose(list);
  free(bytes);
  const int root = open(arguments[2], O_RDONLY | O_DIRECTORY);
  if (root < 0 || syncfs(root) != 0) fail("write", arguments[2]);
  return 0;
}
