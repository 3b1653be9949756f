// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/appkit/Alerts.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSLog.h"

namespace annivo {

enum class TerminateReply { cancel = 0, now = 1, later = 2 };

/// A window as the interface file describes it; nothing ever shows it.
struct NSWindow {
  double x = 0, y = 0, width = 0, height = 0;
  /// Moves it to the middle of the screen.
  void center();
};

/// What the application object calls on its delegate.
class NSApplicationDelegate {
 public:
  virtual ~NSApplicationDelegate() = default;
  virtual void awakeFromNib(NSWindow window) = 0;
  virtual void applicationDidFinishLaunching() = 0;
  virtual TerminateReply applicationShouldTerminate() = 0;
};

/// A delegate class that an interface file can name.
struct DelegateClass {
  std::string name;
  std::function<void()> initialize;  ///< run once, before the object is made
  std::function<std::unique_ptr<NSApplicationDelegate>()> make;
};

/// The application object: start-up, termination, error presentation.
class NSApplication {
 public:
  NSApplication(Alerts& alerts, Log& log) : alerts_(alerts), log_(log) {}

  /// Loads the bundle's main interface file (Info.plist NSMainNibFile, a property list
  /// "<name>.nib" in Resources with "NSDelegateClass" and "NSWindow" {"x", "y", "width",
  /// "height"}), runs the class initialiser, makes the delegate, wakes it and tells it that
  /// launching is done. After terminate, or when launching returns (there is nothing to wait for
  /// then), the delegate and all that it owns are released, and the person is told how many
  /// different failures there were of each cause that had more than one. Returns the exit status: 0
  /// when no failure was presented, else 1; 1, with a log line, also when there is no usable
  /// interface file or an exception other than termination came out.
  int main(const NSBundle& bundle, const DelegateClass& delegateClass);

  /// Asks the delegate; unless it cancels, unwinds the stack to main and does not return.
  void terminate();

  /// Shows an error modally; true when it was dealt with (never: there is one button). Of the
  /// errors of one cause (causeOf) the first is shown, the others are logged.
  bool presentError(const Error& error);
  /// Shows an error of its own moment modally, with the same memory as presentError.
  void runAlertWithError(const Error& error);
  /// Whether an error was presented, shown or logged.
  [[nodiscard]] bool presentedFailure() const { return !failures_.empty(); }
  /// A modal panel (NSRunAlertPanel); an empty title has none.
  AlertAnswer runAlertPanel(const NSAlert& alert) { return alerts_.runModal(alert); }

 private:
  /// The errors of one cause.
  struct Failure {
    std::string cause;
    Error first;
    std::set<std::string> texts;  ///< of the different ones
  };
  void tellHowMany();

  Alerts& alerts_;
  Log& log_;
  NSApplicationDelegate* delegate_ = nullptr;
  std::vector<Failure> failures_;  ///< by cause, in the order in which they were met
};

/// Thrown by NSApplication::terminate, caught by NSApplication::main only.
struct Termination {};

/// A broken precondition reported by NSAssert; not caught before NSApplication::main.
struct NSInternalInconsistencyException {
  std::string reason;
};

}  // namespace annivo
