// SPDX-License-Identifier: MIT
#include "tests/platform/foundation/NSFileManagerContract.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

struct Disk : FileManagerMachine {
  Disk() {
    root = folder.path();
    files = &posix;
  }
  TemporaryFolder folder;
  PosixFileManager posix;
};

struct Memory : FileManagerMachine {
  Memory() {
    root = "/home/ann";
    memory.makeFolders(root);
    files = &memory;
  }
  MemoryFileManager memory{clock};
};

struct PassingFailing : Disk {
  PassingFailing() { files = &passing; }
  FailingFileManager passing{posix};
};

INSTANTIATE_TEST_SUITE_P(All, NSFileManagerContract,
                         testing::Values(FileManagerKind{"Disk", std::make_unique<Disk>},
                                         FileManagerKind{"Memory", std::make_unique<Memory>},
                                         FileManagerKind{"PassingFailing",
                                                         std::make_unique<PassingFailing>}),
                         [](const auto& kind) { return std::string(kind.param.name); });

}  // namespace
}  // namespace annivo
