// SPDX-License-Identifier: MIT
// A list of files, one a line: size in bytes, a space, path relative to a root.
#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static inline void fail(const char* program, const char* what) {
  fprintf(stderr, "%s: ", program);
  perror(what);
  exit(1);
}

// Reads the next line; 0 at the end.
static inline int next_file(FILE* list, size_t* size, char* path, size_t capacity) {
  char line[8192];
  if (!fgets(line, sizeof line, list)) return 0;
  char* end;
  *size = strtoul(line, &end, 10);
  if (*end == ' ') ++end;
  end[strcspn(end, "\n")] = '\0';
  snprintf(path, capacity, "%s", end);
  return 1;
}
