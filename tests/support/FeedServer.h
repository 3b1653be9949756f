// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// A certificate and its key, made by openssl, which a server on 127.0.0.1 may show.
struct Certificate {
  std::string file;
  std::string key;
};
/// `name` is the subject's alternative name, e.g. "IP:127.0.0.1".
[[nodiscard]] Certificate makeCertificate(const TemporaryFolder& folder, const std::string& name);

/// A server of update feeds on the loopback interface, a process of its own that ends with this
/// object. What it serves: see feed_server.py beside this file.
class FeedServer {
 public:
  FeedServer() : FeedServer(std::vector<std::string>{}) {}
  explicit FeedServer(const Certificate& certificate)
      : FeedServer(std::vector<std::string>{certificate.file, certificate.key}) {}
  ~FeedServer();
  FeedServer(const FeedServer&) = delete;
  FeedServer& operator=(const FeedServer&) = delete;

  /// The full address of a path that begins with "/".
  [[nodiscard]] std::string url(const std::string& path) const;
  /// The paths that were asked for, in their order.
  [[nodiscard]] std::vector<std::string> requests() const;

 private:
  explicit FeedServer(const std::vector<std::string>& certificate);

  TemporaryFolder folder_;
  std::string scheme_;
  std::string port_;
  pid_t process_ = -1;
  int input_ = -1;
};

}  // namespace annivo
