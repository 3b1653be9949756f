// SPDX-License-Identifier: MIT
#pragma once

#include <future>
#include <system_error>
#include <type_traits>
#include <utility>

namespace annivo {

/// Does some work on another thread; the future, which waits for it when it is destroyed, gives its
/// result. A future without a state where the system has no thread to give: `work` is not done.
template <typename Work>
[[nodiscard]] std::future<std::invoke_result_t<std::decay_t<Work>>> onAnotherThread(Work&& work) {
  try {
    return std::async(std::launch::async, std::forward<Work>(work));
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace annivo
