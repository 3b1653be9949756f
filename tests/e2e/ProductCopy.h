// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "codecs/plist/PropertyList.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// A copy of the built product that a test may change. Its parent application is a program that
/// writes down how it was started.
class ProductCopy {
 public:
  ProductCopy();

  [[nodiscard]] std::string agent() const;
  /// The full path of a path inside "Annivo 2.app/Contents".
  [[nodiscard]] std::string path(const std::string& inContents) const;
  /// Replaces a file or folder by a file.
  void replace(const std::string& inContents, const std::string& bytes) const;
  void remove(const std::string& inContents) const;
  /// Sets ProductVersion of the system.
  void setSystemVersion(const std::string& version) const;

  void giveTo(unsigned user) const { folder_.giveTo(user); }

  /// Between the two a parent application that was started waits before it writes anything.
  void holdParent() const;
  void releaseParent() const;
  /// Waits for a start of the parent application (at most 30 s) and gives what it wrote: its name
  /// and arguments, its open files, and whether it leads a session; "" when it was not started.
  [[nodiscard]] std::string waitForParent() const;
  [[nodiscard]] bool parentWasStarted() const;

 private:
  TemporaryFolder folder_;
};

}  // namespace annivo
