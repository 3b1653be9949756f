// SPDX-License-Identifier: MIT
#include "platform/appkit/NSApplication.h"

#include <algorithm>
#include <exception>

namespace annivo {

namespace {

/// The screen that a faceless program's window is centred on.
constexpr double kScreenWidth = 1024;
constexpr double kScreenHeight = 768;

double number(const PropertyList& value) {
  return value.real() ? *value.real() : static_cast<double>(value.integerValue());
}

Error malformed(const std::string& description) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 0,
          .description = description,
          .failureReason = ""};
}

/// The window of the bundle's main interface file.
Result<NSWindow> loadInterfaceFile(const NSBundle& bundle, const std::string& delegateClass) {
  const std::string name = bundle.infoDictionary()["NSMainNibFile"].stringOr("");
  const auto path = bundle.pathForResource(name, "nib");
  if (name.empty() || !path) {
    return malformed("There is no main interface file in " + bundle.bundlePath() + ".");
  }
  const auto bytes = bundle.fileManager().contentsAtPath(*path);
  if (!bytes) return bytes.error();
  const auto file = parsePropertyList(*bytes, *path);
  if (!file) return file.error();
  const PropertyList& window = file.value()["NSWindow"];
  if (!file.value()["NSDelegateClass"].isEqualToString(delegateClass) || !window.dictionary()) {
    return malformed("The interface file " + *path + " does not name the class " + delegateClass +
                     " and its window.");
  }
  return NSWindow{.x = number(window["x"]),
                  .y = number(window["y"]),
                  .width = number(window["width"]),
                  .height = number(window["height"])};
}

}  // namespace

void NSWindow::center() {
  x = (kScreenWidth - width) / 2;
  y = (kScreenHeight - height) / 2;
}

int NSApplication::main(const NSBundle& bundle, const DelegateClass& delegateClass) {
  std::unique_ptr<NSApplicationDelegate> delegate;
  int status = 1;
  try {
    const auto window = loadInterfaceFile(bundle, delegateClass.name);
    if (window) {
      delegateClass.initialize();
      delegate = delegateClass.make();
      delegate_ = delegate.get();
      delegate->awakeFromNib(*window);
      delegate->applicationDidFinishLaunching();
      status = 0;
    } else {
      log_.write(window.error().text());
    }
  } catch (const Termination&) {
    status = 0;
  } catch (const NSInternalInconsistencyException& exception) {
    log_.write("Terminating due to uncaught exception: " + exception.reason);
  } catch (const std::exception& exception) {
    log_.write(std::string("Terminating due to uncaught exception: ") + exception.what());
  } catch (...) {
    log_.write("Terminating due to uncaught exception of unknown type");
  }
  delegate_ = nullptr;
  delegate.reset();  // It saves what is left, which may fail.
  tellHowMany();
  return presentedFailure() ? 1 : status;
}

void NSApplication::terminate() {
  if (delegate_ && delegate_->applicationShouldTerminate() == TerminateReply::cancel) return;
  throw Termination{};
}

bool NSApplication::presentError(const Error& error) {
  runAlertWithError(error);
  return false;
}

void NSApplication::runAlertWithError(const Error& error) {
  const std::string cause = causeOf(error);
  const auto known = std::find_if(failures_.begin(), failures_.end(),
                                  [&](const Failure& failure) { return failure.cause == cause; });
  if (known != failures_.end()) {
    known->texts.insert(error.text());
    return log_.write(error.text());
  }
  failures_.push_back({.cause = cause, .first = error, .texts = {error.text()}});
  alerts_.runModal(alertWithError(error));
}

void NSApplication::tellHowMany() {
  std::string lines;
  for (const Failure& failure : failures_) {
    if (failure.texts.size() == 1) continue;
    lines += std::to_string(failure.texts.size()) +
             " like this one: " + textOf(alertWithError(failure.first), " ") + "\n";
  }
  if (lines.empty()) return;
  alerts_.runModal({.messageText = "There were more failures than were shown.",
                    .informativeText = lines + "The log names each of them."});
}

}  // namespace annivo
