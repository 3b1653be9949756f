// SPDX-License-Identifier: MIT
#include "base/Error.h"

#include <cerrno>
#include <cstring>

namespace annivo {

namespace {

Error::Kind kindOfErrno(int code) {
  switch (code) {
    case ENOENT:
    case ENOTDIR:
      return Error::Kind::absent;
    case EACCES:
    case EPERM:
    case ELOOP:
    case EISDIR:
    case EIO:
      return Error::Kind::unreadable;
    default:
      return Error::Kind::failed;
  }
}

}  // namespace

std::string Error::text() const {
  std::string text =
      "Error Domain=" + domain + " Code=" + std::to_string(code) + " \"" + description + "\"";
  if (!failureReason.empty()) text += " (" + failureReason + ")";
  return text;
}

Error errorFromErrno(int code, const std::string& operation, const std::string& path) {
  return {.kind = kindOfErrno(code),
          .domain = "NSPOSIXErrorDomain",
          .code = code,
          .description = "Cannot " + operation + " " + path + ".",
          .failureReason = std::string(std::strerror(code)) + ".",
          .operation = operation};
}

}  // namespace annivo
