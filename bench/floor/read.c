// SPDX-License-Identifier: MIT
// read LIST ROOT: the least that looking at a calendar can cost. Opens, reads and closes every
// listed file under ROOT.
#define _POSIX_C_SOURCE 200809L
#include <fcntl.h>
#include <unistd.h>

#include "list.h"

int main(int count, char** arguments) {
  if (count != 3) {
    fprintf(stderr, "usage: read LIST ROOT\n");
    return 2;
  }
  FILE* list = fopen(arguments[1], "r");
  if (!list) fail("read", arguments[1]);
  static char relative[4096], path[8400], bytes[1 << 16];
  for (size_t size; next_file(list, &size, relative, sizeof relative);) {
    snprintf(path, sizeof path, "%s/%s", arguments[2], relative);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) fail("read", path);
    ssize_t got;
    while ((got = read(file, bytes, sizeof bytes)) > 0) {
    }
    if (got < 0) fail("read", path);
    close(file);
  }
  fclose(list);
  return 0;
}
