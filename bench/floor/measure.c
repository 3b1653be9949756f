// SPDX-License-Identifier: MIT
// measure PROGRAM [ARGUMENT...]: runs a program with its output thrown away and prints three
// numbers: nanoseconds from start to end, peak memory in KiB, exit status (minus the signal).
// Small itself, so that neither its own start nor its own memory shows in what it measures.
#define _GNU_SOURCE
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

int main(int count, char** arguments) {
  if (count < 2) {
    fprintf(stderr, "usage: measure PROGRAM [ARGUMENT...]\n");
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  const long long start = now();
  pid_t child;
  const int error = posix_spawn(&child, arguments[1], &actions, NULL, arguments + 1, environ);
  if (error != 0) {
    fprintf(stderr, "measure: %s: %s\n", arguments[1], strerror(error));
    return 1;
  }
  int status;
  struct rusage usage;
  wait4(child, &status, 0, &usage);
  printf("%lld %ld %d\n", now() - start, usage.ru_maxrss,
         WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status));
  return 0;
}
