// SPDX-License-Identifier: MIT
#include "tests/e2e/TracedAgent.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>

#include "tests/e2e/AgentHome.h"

namespace annivo {

namespace {

/// How the calls that may change a file name it.
enum class Names { path, pathAfterFolder, twoPathsAfterFolders, openFlags, descriptor };

struct Call {
  const char* name;
  Names names;
};

const std::map<std::uint64_t, Call>& changingCalls() {
  static const std::map<std::uint64_t, Call> calls = {
#ifdef SYS_rename
      {SYS_rename, {"rename", Names::path}},
      {SYS_unlink, {"unlink", Names::path}},
      {SYS_mkdir, {"mkdir", Names::path}},
      {SYS_rmdir, {"rmdir", Names::path}},
      {SYS_creat, {"creat", Names::path}},
      {SYS_link, {"link", Names::path}},
      {SYS_symlink, {"symlink", Names::path}},
      {SYS_chmod, {"chmod", Names::path}},
#endif
      {SYS_truncate, {"truncate", Names::path}},
      {SYS_renameat, {"renameat", Names::twoPathsAfterFolders}},
      {SYS_renameat2, {"renameat2", Names::twoPathsAfterFolders}},
      {SYS_unlinkat, {"unlinkat", Names::pathAfterFolder}},
      {SYS_mkdirat, {"mkdirat", Names::pathAfterFolder}},
      {SYS_linkat, {"linkat", Names::twoPathsAfterFolders}},
      {SYS_symlinkat, {"symlinkat", Names::path}},
      {SYS_fchmodat, {"fchmodat", Names::pathAfterFolder}},
      {SYS_utimensat, {"utimensat", Names::pathAfterFolder}},
      {SYS_openat, {"openat", Names::openFlags}},
      {SYS_write, {"write", Names::descriptor}},
      {SYS_writev, {"writev", Names::descriptor}},
      {SYS_pwrite64, {"pwrite64", Names::descriptor}},
      {SYS_pwritev, {"pwritev", Names::descriptor}},
      {SYS_ftruncate, {"ftruncate", Names::descriptor}},
      {SYS_fallocate, {"fallocate", Names::descriptor}},
      {SYS_fchmod, {"fchmod", Names::descriptor}},
      {SYS_fsync, {"fsync", Names::descriptor}},
      {SYS_fdatasync, {"fdatasync", Names::descriptor}},
      {SYS_syncfs, {"syncfs", Names::descriptor}},
  };
  return calls;
}

std::string textAt(pid_t child, std::uint64_t address) {
  std::string text;
  for (;; address += sizeof(long)) {
    errno = 0;
    const long word = ptrace(PTRACE_PEEKDATA, child, address, nullptr);
    if (errno != 0) return text;
    const char* bytes = reinterpret_cast<const char*>(&word);
    for (std::size_t i = 0; i < sizeof word; ++i) {
      if (bytes[i] == '\0') return text;
      text += bytes[i];
    }
  }
}

std::string pathOf(pid_t child, std::uint64_t descriptor) {
  std::error_code none;
  const std::string link = "/proc/" + std::to_string(child) + "/fd/" + std::to_string(descriptor);
  return std::filesystem::read_symlink(link, none).string();
}

/// The change that the child is about to make, if it is one.
std::optional<std::string> changeAtEntry(pid_t child) {
  __ptrace_syscall_info info{};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) < 0 ||
      info.op != PTRACE_SYSCALL_INFO_ENTRY) {
    return std::nullopt;
  }
  const auto found = changingCalls().find(info.entry.nr);
  if (found == changingCalls().end()) return std::nullopt;
  const auto& arguments = info.entry.args;
  const std::string name = std::string(found->second.name) + " ";
  switch (found->second.names) {
    case Names::path:
      return name + textAt(child, arguments[0]);
    case Names::pathAfterFolder:
    case Names::twoPathsAfterFolders:
      return name + textAt(child, arguments[1]);
    case Names::openFlags: {
      const bool writes = (arguments[2] & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
      const std::string path = textAt(child, arguments[1]);
      if (!writes || path.starts_with("/dev/")) return std::nullopt;
      return name + path;
    }
    case Names::descriptor: {
      if (arguments[0] <= 2) return std::nullopt;  // The log.
      const std::string path = pathOf(child, arguments[0]);
      // The address sanitizer feels its way by writing into a pipe.
      if (path.starts_with("pipe:")) return std::nullopt;
      return name + path;
    }
  }
  return std::nullopt;
}

/// Whether the child is about to open that path.
bool opensAtEntry(pid_t child, const std::string& path) {
  __ptrace_syscall_info info{};
  return ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) >= 0 &&
         info.op == PTRACE_SYSCALL_INFO_ENTRY && info.entry.nr == SYS_openat &&
         textAt(child, info.entry.args[1]) == path;
}

/// The path in `folder` that the child is about to read, list or examine, if it does.
std::optional<std::string> readingAtEntry(pid_t child, const std::string& folder) {
  __ptrace_syscall_info info{};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) < 0 ||
      info.op != PTRACE_SYSCALL_INFO_ENTRY) {
    return std::nullopt;
  }
  static const std::map<std::uint64_t, const char*> byPath = {
#ifdef SYS_newfstatat
      {SYS_newfstatat, "newfstatat"},
#endif
      {SYS_openat, "openat"},         {SYS_statx, "statx"},           {SYS_faccessat, "faccessat"},
      {SYS_faccessat2, "faccessat2"}, {SYS_readlinkat, "readlinkat"},
  };
  static const std::map<std::uint64_t, const char*> byDescriptor = {{SYS_read, "read"},
                                                                    {SYS_pread64, "pread64"},
                                                                    {SYS_getdents64, "getdents64"},
                                                                    {SYS_fstat, "fstat"}};
  const auto& arguments = info.entry.args;
  std::string name;
  std::string path;
  if (const auto call = byPath.find(info.entry.nr); call != byPath.end()) {
    const bool writes = info.entry.nr == SYS_openat &&
                        (arguments[2] & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
    if (writes) return std::nullopt;
    name = call->second;
    path = textAt(child, arguments[1]);
    if (!path.starts_with('/')) {
      const std::string open = pathOf(child, arguments[0]);
      path = path.empty() ? open : open + "/" + path;
    }
  } else if (const auto reading = byDescriptor.find(info.entry.nr); reading != byDescriptor.end()) {
    name = reading->second;
    path = pathOf(child, arguments[0]);
  }
  if (!path.starts_with(folder)) return std::nullopt;
  return name + " " + path;
}

/// At the entry of a call: lets it return with that errno and do nothing.
void failCall([[maybe_unused]] pid_t child, [[maybe_unused]] int code) {
#ifdef __x86_64__
  ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, orig_rax), -1L);
  ptrace(PTRACE_SYSCALL, child, nullptr, 0);
  int status = 0;
  waitpid(child, &status, 0);
  ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, rax), -static_cast<long>(code));
#endif
}

std::string contentsOf(int file) {
  std::string text;
  char bytes[4096];
  lseek(file, 0, SEEK_SET);
  for (ssize_t count = 0; (count = read(file, bytes, sizeof bytes)) > 0;) {
    text.append(bytes, static_cast<std::size_t>(count));
  }
  return text;
}

pid_t startStopped(const std::string& home, int errors) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child > 0) return child;
  const int nothing = open("/dev/null", O_RDWR);
  for (const int standard : {0, 1}) dup2(nothing, standard);
  dup2(errors, 2);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  raise(SIGSTOP);
  std::string executable = AgentHome::agentExecutable();
  // The search for leaks traces the process itself, which one that is traced already cannot have;
  // the runs that are not traced look for them.
  std::string variables[] = {"HOME=" + home, "TZ=UTC", "LANG=en_US.UTF-8",
                             "ASAN_OPTIONS=detect_leaks=0"};
  char* const arguments[] = {executable.data(), nullptr};
  char* const environment[] = {variables[0].data(), variables[1].data(), variables[2].data(),
                               variables[3].data(), nullptr};
  execve(executable.c_str(), arguments, environment);
  _exit(127);
}

}  // namespace

TracedRun traceAgent(const std::string& home, Disturbance disturbance) {
  TracedRun run;
  const int errors = memfd_create("errors", MFD_CLOEXEC);
  const pid_t child = startStopped(home, errors);
  int status = 0;
  waitpid(child, &status, 0);
  ptrace(PTRACE_SETOPTIONS, child, nullptr,
         PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEEXEC);
  int signal = 0;
  while (ptrace(PTRACE_SYSCALL, child, nullptr, signal) == 0) {
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) break;
    const int stopped = WSTOPSIG(status);
    signal = stopped == (SIGTRAP | 0x80) || stopped == SIGTRAP ? 0 : stopped;
    if (stopped != (SIGTRAP | 0x80)) continue;
    if (disturbance.kind == Disturbance::Kind::failOpening) {
      if (opensAtEntry(child, disturbance.path)) failCall(child, disturbance.code);
      continue;
    }
    auto change = disturbance.calls == Disturbance::Calls::changes
                      ? changeAtEntry(child)
                      : readingAtEntry(child, home + "/Library/Calendars");
    if (!change) continue;
    run.changes.push_back(std::move(*change));
    if (run.changes.size() != disturbance.number) continue;
    if (disturbance.kind == Disturbance::Kind::fail) failCall(child, disturbance.code);
    if (disturbance.kind != Disturbance::Kind::kill) continue;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    run.killed = true;
    break;
  }
  if (!run.killed) run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  run.errors = contentsOf(errors);
  close(errors);
  return run;
}

}  // namespace annivo
