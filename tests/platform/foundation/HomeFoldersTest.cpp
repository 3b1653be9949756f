// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/foundation/HomeFolders.h"

namespace annivo {
namespace {

TEST(HomeFolders, LieUnderTheLibraryOfTheHome) {
  const HomeFolders folders("/home/ann");
  EXPECT_EQ(folders.home(), "/home/ann");
  EXPECT_EQ(folders.calendars(), "/home/ann/Library/Calendars");
  EXPECT_EQ(folders.preferences(), "/home/ann/Library/Preferences");
  EXPECT_EQ(folders.caches(), "/home/ann/Library/Caches");
  EXPECT_EQ(folders.applicationSupport(), "/home/ann/Library/Application Support");
  EXPECT_EQ(folders.addressBook(), "/home/ann/Library/Application Support/AddressBook");
  EXPECT_EQ(folders.addressBookSources(),
            "/home/ann/Library/Application Support/AddressBook/Sources");
}

}  // namespace
}  // namespace annivo
