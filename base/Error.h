// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace annivo {

/// What went wrong, in words for the person (NSError).
struct Error {
  /// Absent, unreadable and malformed are three different things to a caller.
  enum class Kind {
    absent,      ///< nothing is there
    unreadable,  ///< something is there and the system does not give it to us
    malformed,   ///< it was read and is not what it should be
    refused,     ///< we decline, e.g. an identifier that would leave its folder
    failed,      ///< anything else, e.g. a write to a full disk
  };
  Kind kind = Kind::failed;
  std::string domain{};         ///< e.g. "NSPOSIXErrorDomain", "NSCocoaErrorDomain"
  int code = 0;                 ///< errno for "NSPOSIXErrorDomain"
  std::string description{};    ///< one sentence that names the file or object concerned
  std::string failureReason{};  ///< may be empty
  std::string operation{};      ///< what failed, for "NSPOSIXErrorDomain": "read", "write"

  /// Domain, code, description and reason in one line, as "%@" gives it.
  [[nodiscard]] std::string text() const;
};

/// An error from `errno`; `operation` is a verb phrase ("read"), `path` names the file. The one
/// place where errno values are translated: ENOENT and ENOTDIR are absent; EACCES, EPERM, ELOOP,
/// EISDIR and EIO are unreadable; all else is failed.
[[nodiscard]] Error errorFromErrno(int code, const std::string& operation, const std::string& path);

/// A value, or why there is none.
template <typename T = void>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}
  [[nodiscard]] bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }
  /// The value; only where ok().
  [[nodiscard]] T& value() & { return std::get<0>(state_); }
  [[nodiscard]] const T& value() const& { return std::get<0>(state_); }
  [[nodiscard]] T&& value() && { return std::get<0>(std::move(state_)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  /// The error; only where not ok().
  [[nodiscard]] const Error& error() const { return std::get<1>(state_); }

 private:
  std::variant<T, Error> state_;
};

template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Error error) : error_(std::move(error)) {}
  [[nodiscard]] bool ok() const { return !error_; }
  explicit operator bool() const { return ok(); }
  [[nodiscard]] const Error& error() const { return *error_; }

 private:
  std::optional<Error> error_;
};

}  // namespace annivo
