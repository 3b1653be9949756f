// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "base/Error.h"

namespace annivo {
namespace {

TEST(Error, TellsAbsentUnreadableAndFailedApart) {
  using Kind = Error::Kind;
  const struct {
    int code;
    Kind kind;
  } rows[] = {{ENOENT, Kind::absent},      {ENOTDIR, Kind::absent},   {EACCES, Kind::unreadable},
              {EPERM, Kind::unreadable},   {ELOOP, Kind::unreadable}, {EISDIR, Kind::unreadable},
              {EIO, Kind::unreadable},     {ENOSPC, Kind::failed},    {EROFS, Kind::failed},
              {ENAMETOOLONG, Kind::failed}};
  for (const auto& row : rows) {
    const Error error = errorFromErrno(row.code, "read", "/home/ann/file");
    EXPECT_EQ(error.kind, row.kind) << row.code;
    EXPECT_EQ(error.code, row.code);
  }
}

TEST(Error, NamesTheFileAndTheReasonInOneLine) {
  EXPECT_EQ(errorFromErrno(ENOENT, "read", "/home/ann/file").text(),
            "Error Domain=NSPOSIXErrorDomain Code=2 \"Cannot read /home/ann/file.\" "
            "(No such file or directory.)");
  EXPECT_EQ((Error{.kind = Error::Kind::failed,
                   .domain = "D",
                   .code = 7,
                   .description = "It is so.",
                   .failureReason = ""})
                .text(),
            "Error Domain=D Code=7 \"It is so.\"");
}

TEST(Result, HoldsAValueOrAnError) {
  Result<std::unique_ptr<int>> good = std::make_unique<int>(3);
  ASSERT_TRUE(good);
  EXPECT_EQ(**good, 3);
  const std::unique_ptr<int> taken = *std::move(good);
  EXPECT_EQ(*taken, 3);
  const Result<int> bad = errorFromErrno(ENOSPC, "write", "/file");
  ASSERT_FALSE(bad);
  EXPECT_EQ(bad.error().description, "Cannot write /file.");
  EXPECT_TRUE(Result<void>());
  EXPECT_FALSE(Result<void>(Error{}));
}

}  // namespace
}  // namespace annivo
