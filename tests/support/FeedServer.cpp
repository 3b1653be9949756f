// SPDX-License-Identifier: MIT
#include "tests/support/FeedServer.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace annivo {

namespace {

struct Child {
  pid_t process;
  int input;   ///< the writing end of its standard input
  int output;  ///< the reading end of its standard output
};

Child start(std::vector<std::string> command) {
  std::array<int, 2> input{}, output{};
  if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  const pid_t process = ::fork();
  if (process < 0) throw std::runtime_error("no process");
  if (process == 0) {
    ::dup2(input[0], 0);
    ::dup2(output[1], 1);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ::close(input[0]);
  ::close(output[1]);
  return {.process = process, .input = input[1], .output = output[0]};
}

/// What the descriptor gives up to a line feed or its end.
std::string readLine(int descriptor) {
  std::string line;
  for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
  return line;
}

}  // namespace

Certificate makeCertificate(const TemporaryFolder& folder, const std::string& name) {
  const Certificate made{.file = folder.path("certificate.pem"), .key = folder.path("key.pem")};
  const Child child =
      start({"/usr/bin/openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
             "ec_paramgen_curve:prime256v1", "-nodes", "-days", "30", "-subj", "/CN=annivo test",
             "-addext", "subjectAltName=" + name, "-keyout", made.key, "-out", made.file});
  ::close(child.input);
  ::close(child.output);
  int status = 0;
  ::waitpid(child.process, &status, 0);
  if (status != 0) throw std::runtime_error("openssl made no certificate");
  return made;
}

FeedServer::FeedServer(const std::vector<std::string>& certificate)
    : scheme_(certificate.empty() ? "http" : "https") {
  ::setenv("no_proxy", "*", 1);
  folder_.writeFile("requests", "");
  std::vector<std::string> command{"/usr/bin/python3",
                                   std::string(ANNIVO_SOURCE_DIR) + "/tests/support/feed_server.py",
                                   folder_.path("requests")};
  command.insert(command.end(), certificate.begin(), certificate.end());
  const Child child = start(command);
  process_ = child.process;
  input_ = child.input;
  port_ = readLine(child.output);
  ::close(child.output);
  if (port_.empty()) throw std::runtime_error("the feed server did not start");
}

FeedServer::~FeedServer() {
  ::close(input_);
  ::waitpid(process_, nullptr, 0);
}

std::string FeedServer::url(const std::string& path) const {
  return scheme_ + "://127.0.0.1:" + port_ + path;
}

std::vector<std::string> FeedServer::requests() const {
  std::istringstream lines(folder_.readFile("requests"));
  std::vector<std::string> all;
  for (std::string line; std::getline(lines, line);) all.push_back(line);
  return all;
}

}  // namespace annivo
