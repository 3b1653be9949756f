// SPDX-License-Identifier: MIT
#include "parent/runs/OverlayFileManager.h"
#include "tests/platform/foundation/NSFileManagerContract.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

struct Overlay : FileManagerMachine {
  Overlay() {
    root = folder.path();
    files = &overlay;
  }
  TemporaryFolder folder;
  PosixFileManager posix;
  OverlayFileManager overlay{posix, clock};
};

/// The folder itself is only in memory.
struct OverlayOverNothing : Overlay {
  OverlayOverNothing() {
    root = folder.path("made");
    overlay.putDirectory(root);
  }
};

INSTANTIATE_TEST_SUITE_P(All, NSFileManagerContract,
                         testing::Values(FileManagerKind{"Overlay", std::make_unique<Overlay>},
                                         FileManagerKind{"OverlayOverNothing",
                                                         std::make_unique<OverlayOverNothing>}),
                         [](const auto& kind) { return std::string(kind.param.name); });

}  // namespace
}  // namespace annivo
