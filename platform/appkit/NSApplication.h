// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

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
  /// launching is done. Returns the exit status: 0 after terminate, or when launching returns
  /// (there is nothing to wait for then); 1, with a log line, when there is no usable interface
  /// file or an exception other than termination came out. The delegate and all that it owns are
  /// released before this returns.
  int main(const NSBundle& bundle, const DelegateClass& delegateClass);

  /// Asks the delegate; unless it cancels, unwinds the stack to main and does not return.
  void terminate();

  /// Shows an error modally; true when it was dealt with (never: there is one button). An error
  /// equal to one shown before in this process is only logged, so that the person sees it once.
  bool presentError(const Error& error);
  /// Shows an error of its own moment modally, with the same memory as presentError.
  void runAlertWithError(const Error& error);
  /// A modal panel (NSRunAlertPanel); an empty title has none.
  AlertAnswer runAlertPanel(const NSAlert& alert) { return alerts_.runModal(alert); }

 private:
  Alerts& alerts_;
  Log& log_;
  NSApplicationDelegate* delegate_ = nullptr;
  std::set<std::string> shown_;
};

/// Thrown by NSApplication::terminate, caught by NSApplication::main only.
struct Termination {};

/// A broken precondition reported by NSAssert; not caught before NSApplication::main.
struct NSInternalInconsistencyException {
  std::string reason;
};

}  // namespace annivo
