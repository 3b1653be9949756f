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

namespace annivo {

namespace {

constexpr std::size_t kCaptured = std::size_t{64} * 1024;

/// An open descriptor, closed when it goes.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }
  void set(int number) {
    close();
    number_ = number;
  }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }
  [[nodiscard]] int get() const { return number_; }

 private:
  int number_;
};

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

/// Becomes the program, or writes errno to `failure` (close-on-exec, above 2) and ends.
[[noreturn]] void becomeProgram(char* const* arguments, char* const* environment, int output,
                                int errors, int failure) {
  const int nowhere = ::open("/dev/null", O_RDWR);
  const bool redirected = nowhere >= 0 && ::dup2(nowhere, 0) >= 0 &&
                          ::dup2(output >= 0 ? output : nowhere, 1) >= 0 &&
                          ::dup2(errors >= 0 ? errors : nowhere, 2) >= 0;
  if (redirected) {
    closeRange(3, static_cast<unsigned>(failure) - 1);
    closeRange(static_cast<unsigned>(failure) + 1, UINT_MAX);
    ::signal(SIGPIPE, SIG_DFL);
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
  reading.set(::fcntl(ends[0], F_DUPFD_CLOEXEC, 3));
  writing.set(::fcntl(ends[1], F_DUPFD_CLOEXEC, 3));
  ::close(ends[0]);
  ::close(ends[1]);
  return reading.get() >= 0 && writing.get() >= 0;
}

/// The child's errno; 0 when it became the program.
int reportedFailure(const Descriptor& reading) {
  int code = 0;
  ssize_t size = 0;
  do {
    size = ::read(reading.get(), &code, sizeof code);
  } while (size < 0 && errno == EINTR);
  return size == sizeof code ? code : 0;
}

int waitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A nameless file in memory. A pipe would not do: a helper that the program leaves behind may
/// hold its end open for good.
bool makeCapture(Descriptor& capture) {
  const Descriptor made(::memfd_create("output", MFD_CLOEXEC));
  capture.set(::fcntl(made.get(), F_DUPFD_CLOEXEC, 3));
  return capture.get() >= 0;
}

std::string captured(const Descriptor& capture) {
  std::string text(kCaptured, '\0');
  const ssize_t size = ::pread(capture.get(), text.data(), text.size(), 0);
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return text;
}

}  // namespace

Result<EndedProcess> runProcess(const std::string& executable,
                                const std::vector<std::string>& arguments) {
  Descriptor output, errors, reading, writing;
  TextArray texts(argumentsOf(executable, arguments));
  TextArray environment(environmentInPlainLocale());
  if (!makeCapture(output) || !makeCapture(errors) || !makeFailurePipe(reading, writing)) {
    return errorFromErrno(errno, "start", executable);
  }
  const pid_t child = ::fork();
  if (child < 0) return errorFromErrno(errno, "start", executable);
  if (child == 0) {
    becomeProgram(texts.get(), environment.get(), output.get(), errors.get(), writing.get());
  }
  writing.close();
  const int failure = reportedFailure(reading);
  const int status = waitForEnd(child);
  if (failure != 0) return errorFromErrno(failure, "start", executable);
  return EndedProcess{.status = status, .output = captured(output), .errors = captured(errors)};
}

Result<void> startDetachedProcess(const std::string& executable,
                                  const std::vector<std::string>& arguments) {
  Descriptor reading, writing;
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
      becomeProgram(texts.get(), environment.get(), -1, -1, writing.get());
    }
    const int code = errno;
    [[maybe_unused]] const ssize_t written = ::write(writing.get(), &code, sizeof code);
    ::_exit(127);
  }
  writing.close();
  waitForEnd(child);
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
