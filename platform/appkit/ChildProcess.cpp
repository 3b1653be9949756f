// SPDX-License-Identifier: MIT
#include "platform/appkit/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <sstream>
#include <utility>

#include "platform/foundation/Descriptor.h"

namespace annivo {

namespace {

constexpr std::size_t kCaptured = std::size_t{64} * 1024;

/// Texts as the null-terminated array that exec takes; they live as long as this object.
class TextArray {
 public:
  explicit TextArray(std::vector<std::string> texts) : texts_(std::move(texts)) {
    for (std::string& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
  }
  [[nodiscard]] char* const* get() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

std::vector<std::string> argumentsOf(const std::string& executable,
                                     const std::vector<std::string>& arguments) {
  std::vector<std::string> all{executable};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

std::vector<std::string> environmentInPlainLocale() {
  std::vector<std::string> all{"LC_ALL=C.UTF-8"};
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string text = *entry;
    if (!text.starts_with("LC_ALL=") && !text.starts_with("LANGUAGE=")) all.push_back(text);
  }
  return all;
}

std::vector<std::string> wholeEnvironment() {
  std::vector<std::string> all;
  for (char** entry = environ; entry && *entry; ++entry) all.emplace_back(*entry);
  return all;
}

// What follows runs between fork and exec: system calls only.

void closeRange(unsigned first, unsigned last) {
  if (first > last || ::close_range(first, last, 0) == 0) return;
  const long most = ::sysconf(_SC_OPEN_MAX);
  const unsigned end = most > 0 ? static_cast<unsigned>(most) : 65536;
  for (unsigned number = first; number <= last && number < end; ++number) {
    ::close(static_cast<int>(number));
  }
}

/// What a program gets as its standard files; -1 is /dev/null.
struct StandardFiles {
  int input = -1;
  int output = -1;
  int errors = -1;
};

/// Becomes the program, or writes errno to `failure` (close-on-exec, above 2) and ends.
[[noreturn]] void becomeProgram(char* const* arguments, char* const* environment,
                                StandardFiles files, int failure) {
  const int nowhere = ::open("/dev/null", O_RDWR);
  const auto redirect = [&](int file, int to) {
    return file == to || ::dup2(file >= 0 ? file : nowhere, to) >= 0;
  };
  const bool redirected = nowhere >= 0 && redirect(files.input, 0) && redirect(files.output, 1) &&
                          redirect(files.errors, 2);
  if (redirected) {
    closeRange(3, static_cast<unsigned>(failure) - 1);
    closeRange(static_cast<unsigned>(failure) + 1, UINT_MAX);
    for (const int signal : {SIGPIPE, SIGXFSZ}) ::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(arguments[0], arguments, environment);
  }
  const int code = errno;
  [[maybe_unused]] const ssize_t written = ::write(failure, &code, sizeof code);
  ::_exit(127);
}

/// The pipe through which a child reports that it could not become the program. The descriptors
/// are above 2, so that no redirection of a process started without standard files meets them.
bool makeFailurePipe(Descriptor& reading, Descriptor& writing) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return false;
  const Descriptor first(ends[0]);
  const Descriptor second(ends[1]);
  reading = Descriptor(::fcntl(first.number(), F_DUPFD_CLOEXEC, 3));
  writing = Descriptor(::fcntl(second.number(), F_DUPFD_CLOEXEC, 3));
  return reading.valid() && writing.valid();
}

/// The child's errno; 0 when it became the program.
int reportedFailure(const Descriptor& reading) {
  int code = 0;
  ssize_t size = 0;
  do {
    size = ::read(reading.number(), &code, sizeof code);
  } while (size < 0 && errno == EINTR);
  return size == sizeof code ? code : 0;
}

EndedProcess waitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return {};
  }
  EndedProcess ended;
  if (WIFEXITED(status)) ended.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) ended.signal = WTERMSIG(status);
  return ended;
}

/// Runs a program with those standard files and waits for its end.
Result<EndedProcess> runWithFiles(const std::string& executable,
                                  const std::vector<std::string>& arguments,
                                  std::vector<std::string> variables, StandardFiles files) {
  Descriptor reading;
  Descriptor writing;
  TextArray texts(argumentsOf(executable, arguments));
  TextArray environment(std::move(variables));
  if (!makeFailurePipe(reading, writing)) return errorFromErrno(errno, "start", executable);
  const pid_t child = ::fork();
  if (child < 0) return errorFromErrno(errno, "start", executable);
  if (child == 0) becomeProgram(texts.get(), environment.get(), files, writing.number());
  writing = Descriptor();
  const int failure = reportedFailure(reading);
  EndedProcess ended = waitForEnd(child);
  if (failure != 0) return errorFromErrno(failure, "start", executable);
  return ended;
}

/// A nameless file in memory. A pipe would not do: a helper that the program leaves behind may
/// hold its end open for good.
bool makeCapture(Descriptor& capture) {
  const Descriptor made(::memfd_create("output", MFD_CLOEXEC));
  capture = Descriptor(::fcntl(made.number(), F_DUPFD_CLOEXEC, 3));
  return capture.valid();
}

std::string captured(const Descriptor& capture) {
  std::string text(kCaptured, '\0');
  const ssize_t size = ::pread(capture.number(), text.data(), text.size(), 0);
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return text;
}

}  // namespace

Result<EndedProcess> runProcess(const std::string& executable,
                                const std::vector<std::string>& arguments) {
  Descriptor output;
  Descriptor errors;
  if (!makeCapture(output) || !makeCapture(errors)) {
    return errorFromErrno(errno, "start", executable);
  }
  auto ended = runWithFiles(executable, arguments, environmentInPlainLocale(),
                            {.output = output.number(), .errors = errors.number()});
  if (!ended) return ended;
  ended->output = captured(output);
  ended->errors = captured(errors);
  return ended;
}

Result<EndedProcess> runProcessInForeground(const std::string& executable,
                                            const std::vector<std::string>& arguments) {
  return runWithFiles(executable, arguments, wholeEnvironment(),
                      {.input = 0, .output = 1, .errors = 2});
}

Result<void> startDetachedProcess(const std::string& executable,
                                  const std::vector<std::string>& arguments) {
  Descriptor reading;
  Descriptor writing;
  TextArray texts(argumentsOf(executable, arguments));
  TextArray environment(wholeEnvironment());
  if (!makeFailurePipe(reading, writing)) return errorFromErrno(errno, "start", executable);
  const pid_t child = ::fork();
  if (child < 0) return errorFromErrno(errno, "start", executable);
  if (child == 0) {
    // The program is a grandchild, which init inherits, so that nobody has to wait for it.
    const pid_t grandchild = ::fork();
    if (grandchild > 0) ::_exit(0);
    if (grandchild == 0 && ::setsid() >= 0 && ::chdir("/") == 0) {
      becomeProgram(texts.get(), environment.get(), {}, writing.number());
    }
    const int code = errno;
    [[maybe_unused]] const ssize_t written = ::write(writing.number(), &code, sizeof code);
    ::_exit(127);
  }
  writing = Descriptor();
  (void)waitForEnd(child);
  const int failure = reportedFailure(reading);
  if (failure != 0) return errorFromErrno(failure, "start", executable);
  return {};
}

std::optional<std::string> programInPath(const std::string& name, const std::string& path) {
  std::istringstream folders(path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string candidate = folder + "/" + name;
    if (folder.starts_with('/') && ::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::nullopt;
}

}  // namespace annivo
