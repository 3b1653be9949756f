// SPDX-License-Identifier: MIT
#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/foundation/NSRunLoop.h"

namespace annivo {

/// The limits of a fetch, redirects included.
struct FeedLimits {
  std::chrono::milliseconds time = std::chrono::seconds{60};
  std::size_t bytes = std::size_t{5} * 1024 * 1024;  ///< of headers and content together
  int redirects = 10;
  /// PEM file of the authorities whose certificates are trusted; "": the system's.
  std::string authorities{};
};

/// Whether a redirect may be followed: to http or https, and from https to https only.
[[nodiscard]] bool redirectIsAllowed(const std::string& from, const std::string& to);

/// Fetches one http or https address on a run loop, without blocking it.
///
/// 1. fetch() starts and returns at once. From then to the completion the run loop has a source
///    (the timer of the time limit at least).
/// 2. The completion is called once, from the run loop and with no code of the network library on
///    the stack, so that it may throw; with the content, or why there is none.
/// 3. The object may be used again or destroyed after that; destroying it before cancels.
class FeedFetcher {
 public:
  using Completion = std::function<void(const Result<std::string>& content)>;

  explicit FeedFetcher(NSRunLoop& runLoop, FeedLimits limits = {});
  ~FeedFetcher();
  FeedFetcher(const FeedFetcher&) = delete;
  FeedFetcher& operator=(const FeedFetcher&) = delete;

  void fetch(const std::string& address, Completion completion);

 private:
  void request(const std::string& address);
  void act(curl_socket_t socket, int events);
  void requestEnded(CURLcode code);
  void end(Result<std::string> content);
  void dropRequest();
  void schedule(int& timer, std::chrono::milliseconds delay, std::function<void()> handler);
  void cancel(int& timer);
  [[nodiscard]] bool spend(std::size_t bytes);

  static int socketChanged(CURL*, curl_socket_t socket, int what, void* self, void*);
  static int timerChanged(CURLM*, long milliseconds, void* self);
  static std::size_t receiveHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t receive(char* data, std::size_t size, std::size_t count, void* self);

  NSRunLoop& runLoop_;
  FeedLimits limits_;
  CURLM* multi_ = nullptr;
  CURL* easy_ = nullptr;  ///< the request under way
  std::string address_;
  std::string content_;
  std::size_t spent_ = 0;
  int redirects_ = 0;
  std::array<char, CURL_ERROR_SIZE> reason_{};
  Completion completion_;
  int libraryTimer_ = 0;
  int deadline_ = 0;
  int delivery_ = 0;
};

}  // namespace annivo
