// SPDX-License-Identifier: MIT
#include "parent/command/Program.h"

#include "parent/command/CommandLine.h"
#include "parent/command/Commands.h"
#include "parent/command/Console.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

/// The log and the alerts of a command: lines beside its results.
class ConsoleLog final : public Log {
 public:
  explicit ConsoleLog(const Console& console) : console_(console) {}
  void write(std::string_view text) override { console_.note("annivo: " + printable(text)); }

 private:
  const Console& console_;
};

class ConsoleAlerts final : public Alerts {
 public:
  explicit ConsoleAlerts(const Console& console) : console_(console) {}
  AlertAnswer runModal(const NSAlert& alert) override {
    std::string text = printable(alert.messageText);
    if (!alert.informativeText.empty()) text += ": " + printable(alert.informativeText);
    console_.note("annivo: " + text);
    return AlertAnswer::alternate;
  }

 private:
  const Console& console_;
};

int inSession(const ProgramStart& start, Console& console, bool launched,
              const std::function<void(CommandSession&)>& action) {
  const std::string home = start.environment("HOME");
  if (!home.starts_with('/')) throw Refusal{translated("HOME is not set to your home folder")};
  const PosixFileManager files;
  const std::string parent = NSBundle::enclosing(files, start.executable).bundlePath();
  PlatformParts parts = agentParts(standardizedPath(home), agentExecutable(files, parent),
                                   start.environment, std::make_unique<SystemClock>());
  parts.files = std::make_unique<PosixFileManager>();
  parts.launcher = std::make_unique<ProcessLauncher>();
  // The launched application has a person's screen to speak on; a command has its terminal.
  if (!launched) {
    parts.log = std::make_unique<ConsoleLog>(console);
    parts.alerts = std::make_unique<ConsoleAlerts>(console);
  }
  Platform platform(std::move(parts));
  CommandSession session{{.platform = platform,
                          .executable = start.executable,
                          .environment = start.environment,
                          .note = [&](std::string_view text) { console.note(text); }},
                         console};
  action(session);
  console.out.flush();
  if (!console.out) throw Refusal{translated("the results could not be written")};
  return platform.application().presentedFailure() ? 1 : 0;
}

int dispatch(const ProgramStart& start, Console& console) {
  if (start.words.empty() && start.name == "Annivo 2") {
    const bool launched = !start.outTerminal;
    return inSession(start, console, launched, launched ? launchedCommand : statusCommand);
  }
  CommandLine commandLine;
  if (!start.words.empty() && start.words.front() == "__complete") {
    const std::vector<std::string> words(start.words.begin() + 1, start.words.end());
    return inSession(start, console, false, [&](CommandSession& session) {
      for (const std::string& word : commandLine.completions(session, words)) {
        console.line(printable(word));
      }
    });
  }
  switch (commandLine.parse(start.words, console.out, console.err)) {
    case CommandLine::Outcome::done:
      return 0;
    case CommandLine::Outcome::usage:
      return 2;
    case CommandLine::Outcome::command:
      break;
  }
  console.json = commandLine.json();
  return inSession(start, console, false,
                   [&](CommandSession& session) { commandLine.run(session); });
}

}  // namespace

int runProgram(const ProgramStart& start, Console& console) {
  try {
    return dispatch(start, console);
  } catch (const Refusal& refusal) {
    console.out.flush();
    console.note("annivo: " + printable(refusal.sentence));
  } catch (const NSInternalInconsistencyException& exception) {
    console.note("annivo: " + printable(exception.reason));
  } catch (const std::exception& exception) {
    console.note("annivo: " + printable(exception.what()));
  }
  return 1;
}

}  // namespace annivo
