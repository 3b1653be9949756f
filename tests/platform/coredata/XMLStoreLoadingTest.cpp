// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/platform/coredata/LedgerFixture.h"

namespace annivo {
namespace {

struct XMLStoreBegunToLoad : testing::Test, LedgerFixture {
  /// A store that has begun to load.
  std::unique_ptr<NSPersistentStore> begun(NSFileManager& manager) {
    auto store = openXMLStore(*model, {manager, clock, NSTimeZone()}, path());
    EXPECT_TRUE(store.ok());
    (*store)->beginLoading();
    return std::move(*store);
  }
};

TEST_F(XMLStoreBegunToLoad, HoldsWhatTheFileHolds) {
  fill({"a", "b", "c"});
  auto store = begun(disk);
  store->beginLoading();
  EXPECT_EQ(myUIDs(*store), (std::vector<std::string>{"a", "b", "c"}));
  store->beginLoading();
  insert(*store, "d");
  ASSERT_TRUE(store->save().ok());
  ASSERT_TRUE(store->close().ok());
  EXPECT_EQ(myUIDs(*open()), (std::vector<std::string>{"a", "b", "c", "d"}));
}

TEST_F(XMLStoreBegunToLoad, TellsOfDamageWhenItIsLoaded) {
  folder.writeFile("L.xml", "<database>");
  auto store = begun(disk);
  ASSERT_TRUE(store->load().ok());
  ASSERT_TRUE(store->damage());
  EXPECT_NE(store->damage()->text().find(path()), std::string::npos);
  EXPECT_EQ(file(), "<database>");
}

TEST_F(XMLStoreBegunToLoad, MayGoWithoutHavingBeenAskedForAnything) {
  fill(std::vector<std::string>(2000, "x"));
  const auto before = folder.fingerprint();
  {
    auto store = begun(disk);
    EXPECT_FALSE(store->hasChanges());
    EXPECT_TRUE(store->close().ok());
  }
  EXPECT_EQ(folder.fingerprint(), before);
}

TEST_F(XMLStoreBegunToLoad, LoadsLaterWhereFilesAreForOneThreadOnly) {
  fill({"a"});
  ForwardingFileManager plain(disk);
  const auto store = begun(plain);
  EXPECT_EQ(myUIDs(*store), std::vector<std::string>{"a"});
}

}  // namespace
}  // namespace annivo
