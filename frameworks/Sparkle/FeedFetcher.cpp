// SPDX-License-Identifier: MIT
#include "frameworks/Sparkle/FeedFetcher.h"

#include <utility>

#include "frameworks/Sparkle/Appcast.h"

namespace annivo {

namespace {

Error failed(const std::string& reason) {
  return {.kind = Error::Kind::failed,
          .domain = "NSURLErrorDomain",
          .code = 0,
          .description = "The feed could not be fetched.",
          .failureReason = reason};
}

bool isSecure(const std::string& address) {
  return isWebAddress(address) && (address[4] == 's' || address[4] == 'S');
}

}  // namespace

bool redirectIsAllowed(const std::string& from, const std::string& to) {
  return isSecure(to) || (isWebAddress(to) && !isSecure(from));
}

FeedFetcher::FeedFetcher(NSRunLoop& runLoop, FeedLimits limits)
    : runLoop_(runLoop), limits_(std::move(limits)) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  multi_ = curl_multi_init();
  curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &FeedFetcher::socketChanged);
  curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
  curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &FeedFetcher::timerChanged);
  curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
}

FeedFetcher::~FeedFetcher() {
  dropRequest();
  curl_multi_cleanup(multi_);
  for (int* timer : {&libraryTimer_, &deadline_, &delivery_}) cancel(*timer);
}

void FeedFetcher::fetch(const std::string& address, Completion completion) {
  completion_ = std::move(completion);
  spent_ = 0;
  redirects_ = 0;
  schedule(deadline_, limits_.time, [this] { end(failed("The time limit was reached.")); });
  if (isWebAddress(address)) {
    request(address);
  } else {
    end(failed("The address is neither http nor https."));
  }
}

void FeedFetcher::request(const std::string& address) {
  address_ = address;
  content_.clear();
  reason_.fill('\0');
  easy_ = curl_easy_init();
  curl_easy_setopt(easy_, CURLOPT_URL, address_.c_str());
  curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(easy_, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy_, CURLOPT_SSL_VERIFYHOST, 2L);
  if (!limits_.authorities.empty()) {
    curl_easy_setopt(easy_, CURLOPT_CAINFO, limits_.authorities.c_str());
  }
  curl_easy_setopt(easy_, CURLOPT_USERAGENT, "Annivo update check");
  // CURLOPT_NOSIGNAL stays off: with it a connection that breaks while TLS writes is a SIGPIPE.
  curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);  // do not wait for a slow name server at the end
  curl_easy_setopt(easy_, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits_.bytes));
  curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &FeedFetcher::receiveHeader);
  curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &FeedFetcher::receive);
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy_, CURLOPT_ERRORBUFFER, reason_.data());
  const CURLMcode code = curl_multi_add_handle(multi_, easy_);
  if (code != CURLM_OK) end(failed(curl_multi_strerror(code)));
}

void FeedFetcher::act(curl_socket_t socket, int events) {
  int running = 0;
  const CURLMcode code = curl_multi_socket_action(multi_, socket, events, &running);
  if (code != CURLM_OK) return end(failed(curl_multi_strerror(code)));
  int left = 0;
  const CURLMsg* message = curl_multi_info_read(multi_, &left);
  if (message && message->msg == CURLMSG_DONE) requestEnded(message->data.result);
}

void FeedFetcher::requestEnded(CURLcode code) {
  long status = 0;
  const char* redirect = nullptr;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy_, CURLINFO_REDIRECT_URL, &redirect);
  const std::string next = redirect ? redirect : "";
  dropRequest();
  if (spent_ > limits_.bytes) return end(failed("The answer is too long."));
  if (code != CURLE_OK) {
    return end(failed(reason_[0] ? reason_.data() : curl_easy_strerror(code)));
  }
  if (next.empty()) {
    if (status == 200) return end(std::move(content_));
    return end(failed("The server answered " + std::to_string(status) + "."));
  }
  if (!redirectIsAllowed(address_, next)) {
    return end(failed("The server redirects to an address that is not secure."));
  }
  if (++redirects_ > limits_.redirects) return end(failed("There are too many redirects."));
  request(next);
}

void FeedFetcher::end(Result<std::string> content) {
  dropRequest();
  cancel(libraryTimer_);
  cancel(deadline_);
  schedule(delivery_, {}, [this, content = std::move(content)] {
    delivery_ = 0;
    const Completion completion = std::exchange(completion_, nullptr);
    completion(content);
  });
}

void FeedFetcher::dropRequest() {
  if (!easy_) return;
  curl_multi_remove_handle(multi_, easy_);
  curl_easy_cleanup(std::exchange(easy_, nullptr));
}

void FeedFetcher::schedule(int& timer, std::chrono::milliseconds delay,
                           std::function<void()> handler) {
  cancel(timer);
  timer = runLoop_.addTimer(NSRunLoop::Clock::now() + delay, std::move(handler));
}

void FeedFetcher::cancel(int& timer) {
  if (timer != 0) runLoop_.removeTimer(std::exchange(timer, 0));
}

bool FeedFetcher::spend(std::size_t bytes) {
  spent_ += bytes;
  return spent_ <= limits_.bytes;
}

int FeedFetcher::socketChanged(CURL*, curl_socket_t socket, int what, void* self, void*) {
  auto* fetcher = static_cast<FeedFetcher*>(self);
  if (what == CURL_POLL_REMOVE) {
    fetcher->runLoop_.unwatch(socket);
    return 0;
  }
  const unsigned events = ((what & CURL_POLL_IN) ? NSRunLoop::kReadable : 0u) |
                          ((what & CURL_POLL_OUT) ? NSRunLoop::kWritable : 0u);
  fetcher->runLoop_.watch(socket, events, [fetcher, socket](unsigned happened) {
    fetcher->act(socket, ((happened & NSRunLoop::kReadable) ? CURL_CSELECT_IN : 0) |
                             ((happened & NSRunLoop::kWritable) ? CURL_CSELECT_OUT : 0));
  });
  return 0;
}

int FeedFetcher::timerChanged(CURLM*, long milliseconds, void* self) {
  auto* fetcher = static_cast<FeedFetcher*>(self);
  if (milliseconds < 0) {
    fetcher->cancel(fetcher->libraryTimer_);
  } else {
    fetcher->schedule(fetcher->libraryTimer_, std::chrono::milliseconds{milliseconds}, [fetcher] {
      fetcher->libraryTimer_ = 0;
      fetcher->act(CURL_SOCKET_TIMEOUT, 0);
    });
  }
  return 0;
}

std::size_t FeedFetcher::receiveHeader(char*, std::size_t size, std::size_t count, void* self) {
  return static_cast<FeedFetcher*>(self)->spend(size * count) ? size * count : 0;
}

std::size_t FeedFetcher::receive(char* data, std::size_t size, std::size_t count, void* self) {
  auto* fetcher = static_cast<FeedFetcher*>(self);
  if (!fetcher->spend(size * count)) return 0;
  fetcher->content_.append(data, size * count);
  return size * count;
}

}  // namespace annivo
