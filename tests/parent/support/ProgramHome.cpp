// SPDX-License-Identifier: MIT
#include "tests/parent/support/ProgramHome.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace annivo {

namespace {

/// Reads until every writer is gone.
void drain(const std::vector<std::pair<int, std::string*>>& sources) {
  std::vector<pollfd> open;
  for (const auto& [file, text] : sources) open.push_back({file, POLLIN, 0});
  std::size_t left = open.size();
  while (left > 0) {
    if (poll(open.data(), open.size(), 120000) <= 0) return;
    for (std::size_t i = 0; i < open.size(); ++i) {
      if (open[i].revents == 0) continue;
      std::array<char, 4096> buffer;
      const ssize_t count = read(open[i].fd, buffer.data(), buffer.size());
      if (count > 0) {
        sources[i].second->append(buffer.data(), static_cast<std::size_t>(count));
      } else {
        close(open[i].fd);
        open[i].fd = -1;
        --left;
      }
    }
  }
}

int waitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

std::string ProgramHome::programPath(const std::string& program) {
  return std::string(ANNIVO_PRODUCT) + "/Contents/Linux/" + program;
}

void ProgramHome::become(const std::vector<std::string>& words, const std::string& program) const {
  clearenv();
  setenv("HOME", folder.path().c_str(), 1);
  setenv("PATH", "/usr/local/bin:/usr/bin:/bin", 1);
  setenv("TZ", "UTC", 1);
  setenv("LANG", "en_US.UTF-8", 1);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<std::string> all{programPath(program)};
  all.insert(all.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : all) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

CommandOutcome ProgramHome::inPipe(const std::vector<std::string>& words,
                                   const std::string& program) const {
  int out[2];
  int err[2];
  CommandOutcome outcome;
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return outcome;
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    dup2(out[1], 1);
    dup2(err[1], 2);
    become(words, program);
  }
  close(out[1]);
  close(err[1]);
  drain({{out[0], &outcome.out}, {err[0], &outcome.err}});
  outcome.status = waitFor(child);
  return outcome;
}

CommandOutcome ProgramHome::onTerminal(const std::vector<std::string>& words,
                                       const std::string& program) const {
  CommandOutcome outcome;
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) become(words, program);
  drain({{terminal, &outcome.out}});
  outcome.status = waitFor(child);
  return outcome;
}

void ProgramHome::waitForAll() const {
  const std::string ours = "HOME=" + folder.path() + '\0';
  const auto isOurs = [&](const std::filesystem::path& process) {
    std::ifstream file(process / "environ", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {}).find(ours) != std::string::npos;
  };
  for (int i = 0; i < 1200; ++i) {
    const std::filesystem::directory_iterator processes("/proc");
    if (std::none_of(begin(processes), end(processes), isOurs)) return;
    std::this_thread::sleep_for(std::chrono::milliseconds{100});
  }
  ADD_FAILURE() << "a process on " << folder.path() << " does not end";
}

std::string ProgramHome::done(const std::vector<std::string>& words) const {
  const CommandOutcome outcome = inPipe(words);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

}  // namespace annivo
