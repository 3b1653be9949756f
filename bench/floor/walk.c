// SPDX-License-Identifier: MIT
// walk HOME: the least that finding nothing to do can cost. Walks Library/Calendars, not entering
// "Events", and Library/Application Support/AddressBook, not entering "Metadata"; looks at every
// entry; ends.
#define _XOPEN_SOURCE 700
#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

static void walk(const char* folder, const char* pruned) {
  DIR* entries = opendir(folder);
  if (!entries) return;
  for (struct dirent* entry; (entry = readdir(entries));) {
    if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) continue;
    char path[4096];
    struct stat status;
    snprintf(path, sizeof path, "%s/%s", folder, entry->d_name);
    if (lstat(path, &status) != 0 || !S_ISDIR(status.st_mode)) continue;
    if (strcmp(entry->d_name, pruned) != 0) walk(path, pruned);
  }
  closedir(entries);
}

int main(int count, char** arguments) {
  if (count != 2) {
    fprintf(stderr, "usage: walk HOME\n");
    return 2;
  }
  char folder[4096];
  snprintf(folder, sizeof folder, "%s/Library/Calendars", arguments[1]);
  walk(folder, "Events");
  snprintf(folder, sizeof folder, "%s/Library/Application Support/AddressBook", arguments[1]);
  walk(folder, "Metadata");
  return 0;
}
