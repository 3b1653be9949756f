// SPDX-License-Identifier: MIT
#include "parent/command/CommandLine.h"

#include <algorithm>
#include <map>

#include <CLI/CLI.hpp>

#include "parent/command/Commands.h"
#include "parent/command/UsageWords.h"
#include "parent/settings/AlarmTable.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

constexpr const char* kVersion = "annivo " ANNIVO_VERSION;
const std::vector<std::string> kKinds = dateKindWords();
const std::vector<std::string> kAlarms = alarmWords();
const std::vector<std::string> kShells{"bash", "zsh", "fish"};

using Action = std::function<void(CommandSession&)>;

/// Of a word that is among kKinds.
DateKind chosenKind(const std::string& word) { return dateKindOfWord(word).value(); }

/// "annivo calendars choose".
std::string fullName(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  return (parent ? fullName(*parent) + ' ' : "") + command.get_name();
}

}  // namespace

struct CommandLine::State {
  CLI::App app{translated("Copies the dates kept in your contacts into your calendars."), "annivo"};
  std::map<const CLI::App*, Action> actions;
  bool json = false;

  ImportRequest import{{}, "vCards", {}};
  std::string kind, calendar, title, key, shell, from;
  std::optional<std::string> forKind;
  std::string alarmKind, alarmDates = dateKindWord(DateKind::both);
  std::vector<std::string> values;
  CLI::App* valued = nullptr;
  bool reset = false, print = false;
  NewAlarm alarm;
  int number = 0;
  int days = 366;

  CLI::App& command(CLI::App& parent, const char* name, const std::string& help,
                    Action action = {}) {
    CLI::App& added = *parent.add_subcommand(name, help);
    added.fallthrough()->group(translated("Commands"));
    added.get_help_ptr()->group(translated("Options"));
    if (action) actions.emplace(&added, std::move(action));
    return added;
  }

  void addContacts() {
    CLI::App& imports =
        command(app, "import", translated("Bring in contacts from vCard files and folders"),
                [this](CommandSession& s) { importCommand(s, import); });
    imports.add_option("PATH", import.paths, translated("vCard files, or folders of them"))
        ->required();
    imports.add_option("--source", import.source,
                       translated("Name of the source; importing into it again replaces it"));
    imports.add_option("--me", import.me, translated("UID of your own card"));
    command(app, "people", translated("List the people with their dates"), peopleCommand);
    command(app, "groups", translated("List the groups"), groupsCommand);
    command(app, "labels", translated("List the labels of the dates"), labelsCommand);
  }

  void addCalendars() {
    CLI::App& calendars = command(app, "calendars", translated("List, choose and create calendars"),
                                  calendarsCommand);
    calendars.require_subcommand(0, 1);
    CLI::App& choose =
        command(calendars, "choose", translated("Choose the calendar for dates"),
                [this](auto& s) { chooseCalendarCommand(s, chosenKind(kind), calendar); });
    choose.add_option("KIND", kind, listedAlternatives(kKinds))->required()->check(oneOf(kKinds));
    choose.add_option("CALENDAR", calendar, translated("Its title or UID"))->required();
    CLI::App& create =
        command(calendars, "create", translated("Create a calendar"), [this](auto& s) {
          createCalendarCommand(s, title,
                                forKind ? std::optional(chosenKind(*forKind)) : std::nullopt);
        });
    create.add_option("TITLE", title, translated("Its title"))->required();
    create
        .add_option("--for", forKind, translated("Choose it for {1}", listedAlternatives(kKinds)))
        ->check(oneOf(kKinds));
    CLI::App& none = command(calendars, "none", translated("Write no events of a kind"),
                             [this](auto& s) { noCalendarCommand(s, chosenKind(kind)); });
    none.add_option("KIND", kind, listedAlternatives(kKinds))->required()->check(oneOf(kKinds));
  }

  void addSettings() {
    CLI::App& settingsApp =
        command(app, "settings", translated("Show and change settings"), [this](CommandSession& s) {
          if (key.empty()) return settingsCommand(s);
          if (reset) return resetSettingCommand(s, key);
          if (values.empty()) return showSettingCommand(s, key);
          setSettingCommand(s, key, values);
        });
    settingsApp.add_option("KEY", key, translated("The setting"));
    settingsApp.add_flag("--reset", reset, translated("Go back to the default"));
    // The words of a value stay as they are: CLI11 would take "[a,b]" for two.
    settingsApp.fallthrough(false)->allow_extras();
    settingsApp.add_flag("--json", json, translated("Results as JSON"));
    settingsApp.footer(translated("VALUE ... after KEY sets it."));
    valued = &settingsApp;
    CLI::App& alarms =
        command(app, "alarms", translated("List, add and remove alarms"), alarmsCommand);
    alarms.require_subcommand(0, 1);
    CLI::App& add =
        command(alarms, "add", translated("Add an alarm to every event"), [this](auto& s) {
          alarm.kind = alarmKindOfWord(alarmKind).value();
          alarm.dates = chosenKind(alarmDates);
          addAlarmCommand(s, alarm);
        });
    add.add_option("KIND", alarmKind, listedAlternatives(kAlarms))
        ->required()
        ->check(oneOf(kAlarms));
    add.add_option("--days", alarm.days, translated("Days before the date"))
        ->check(numberFrom(0, 3650));
    add.add_option("--time", alarm.time, translated("Time of day, such as 08:00"));
    add.add_option("--for", alarmDates, listedAlternatives(kKinds))->check(oneOf(kKinds));
    command(alarms, "remove", translated("Remove an alarm"),
            [this](auto& s) { removeAlarmCommand(s, number); })
        .add_option("NUMBER", number, translated("Its number in the list"))
        ->required();
  }

  void addRuns() {
    command(app, "preview", translated("Show what a run would change, and change nothing"),
            previewCommand);
    command(app, "run", translated("Bring the calendars up to date"), runCommand);
    CLI::App& lists = command(app, "list", translated("List the coming events"), [this](auto& s) {
      listCommand(s, from.empty() ? std::nullopt : std::optional(from), days);
    });
    lists.add_option("--from", from, translated("First day, such as 2026-06-10 (today)"));
    lists.add_option("--days", days, translated("Number of days"))->check(numberFrom(1, 36500));
    command(app, "status", translated("Show how things stand"), statusCommand);
    command(app, "on", translated("Switch the agent on"), onCommand);
    command(app, "off", translated("Switch the agent off and take its events out"), offCommand);
  }

  void addService() {
    CLI::App& service =
        command(app, "service", translated("Let runs start by themselves (systemd)"));
    service.require_subcommand(0, 1);
    service.add_flag("--print", print, translated("Show the units"));
    actions.emplace(&service, [this](CommandSession& s) {
      if (!print)
        throw Refusal{
            translated("say \"service install\", \"service remove\" or \"service --print\"")};
      printServiceCommand(s);
    });
    command(service, "install", translated("Install the units and start them"),
            [this](auto& s) { print ? printServiceCommand(s) : installServiceCommand(s); });
    command(service, "remove", translated("Stop the units and remove them"),
            [this](auto& s) { print ? printServiceCommand(s) : removeServiceCommand(s); });
    command(app, "completions", translated("Print the completion script of a shell"),
            [this](CommandSession& s) { s.console.out << completionScript(shell); })
        .add_option("SHELL", shell, listedAlternatives(kShells))
        ->required()
        ->check(oneOf(kShells));
  }

  [[nodiscard]] std::vector<std::string> valuesFor(CommandSession& session, const std::string& path,
                                                   const std::vector<std::string>& given) const;
};

CommandLine::CommandLine() : state_(std::make_unique<State>()) {
  CLI::App& app = state_->app;
  translateHelp(app);
  app.require_subcommand(1, 1);
  app.set_version_flag("--version", kVersion, translated("Print the version and exit"));
  app.add_flag("--json", state_->json, translated("Results as JSON"));
  state_->addContacts();
  state_->addCalendars();
  state_->addSettings();
  state_->addRuns();
  state_->addService();
}

CommandLine::~CommandLine() = default;

CommandLine::Outcome CommandLine::parse(const std::vector<std::string>& words, std::ostream& out,
                                        std::ostream& err) {
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    state_->app.parse(std::move(reversed));
    state_->values = state_->valued->remaining();
    for (const std::string& value : state_->values) {
      if (!value.starts_with("--")) continue;
      throw CLI::ParseError(translated("there is no option \"{1}\"", value),
                            CLI::ExitCodes::ExtrasError);
    }
    return Outcome::command;
  } catch (const CLI::Success& success) {  // Help and version.
    state_->app.exit(success, out, err);
    return Outcome::done;
  } catch (const CLI::ParseError& error) {
    // TRANSLATORS: {1} is what is wrong, {2} a command.
    err << "annivo: "
        << translated("{1} (\"{2} --help\" says more)", printable(problem(state_->app, error)),
                      fullName(commandOf(state_->app)))
        << '\n';
    return Outcome::usage;
  }
}

bool CommandLine::json() const { return state_->json; }

void CommandLine::run(CommandSession& session) const {
  const Action& action = state_->actions.at(&commandOf(state_->app));
  action(session);
}

std::vector<std::string> CommandLine::State::valuesFor(
    CommandSession& session, const std::string& path, const std::vector<std::string>& given) const {
  const auto titles = [&] { return settingNamed("birthday-calendar").values(session); };
  if (!given.empty() && given.back() == "--for") return kKinds;
  if (path == " calendars choose") return given.empty() ? kKinds : titles();
  if (path == " calendars none") return kKinds;
  if (path == " alarms add") return given.empty() ? kAlarms : std::vector<std::string>();
  if (path == " completions") return kShells;
  std::vector<std::string> found;
  if (path == " alarms remove") {
    AnvCalPrefs prefs(session.platform);
    for (const ListedAlarm& alarmRow :
         listedAlarms(prefs.prefs()[keys::kAlarmTable], session.platform.defaultTimeZone())) {
      found.push_back(std::to_string(alarmRow.number));
    }
  }
  if (path == " settings") {
    for (const Setting& setting : settings()) {
      if (given.empty()) found.push_back(setting.name);
      if (!given.empty() && setting.name == given.front() && setting.values) {
        return setting.values(session);
      }
    }
  }
  return found;
}

std::vector<std::string> CommandLine::completions(CommandSession& session,
                                                  const std::vector<std::string>& words) const {
  const CLI::App* command = &state_->app;
  std::string path;
  std::vector<std::string> given;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const auto subcommands = command->get_subcommands({});
    const auto found = std::find_if(subcommands.begin(), subcommands.end(), [&](const auto* sub) {
      return given.empty() && sub->get_name() == words[i];
    });
    const CLI::App* next = found == subcommands.end() ? nullptr : *found;
    if (next) {
      command = next;
      path += ' ' + words[i];
    } else {
      given.push_back(words[i]);
    }
  }
  const std::string current = words.empty() ? "" : words.back();
  std::vector<std::string> candidates;
  if (current.starts_with("-")) {
    for (const CLI::Option* option : command->get_options()) {
      for (const std::string& name : option->get_lnames()) candidates.push_back("--" + name);
    }
    if (command != &state_->app) candidates.emplace_back("--json");
  } else {
    candidates = state_->valuesFor(session, path, given);
    if (given.empty()) {
      for (const CLI::App* sub : command->get_subcommands({})) {
        candidates.push_back(sub->get_name());
      }
    }
  }
  std::erase_if(candidates, [&](const std::string& word) { return !word.starts_with(current); });
  return candidates;
}

}  // namespace annivo
