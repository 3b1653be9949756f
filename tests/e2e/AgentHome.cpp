// SPDX-License-Identifier: MIT
#include "tests/e2e/AgentHome.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace annivo {

namespace fs = std::filesystem;

namespace {

constexpr const char* kParentFile = "Library/Preferences/org.annivo.Annivo2.plist";
constexpr const char* kOwnFile = "Library/Preferences/org.annivo.Annivo2.Agent.plist";
constexpr const char* kAddressBook = "Library/Application Support/AddressBook";

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error(what);
}

PropertyList::Dictionary dictionaryAt(const TemporaryFolder& folder, const char* name) {
  if (!folder.exists(name)) return {};
  const auto list = parsePropertyList(folder.readFile(name), name);
  require(list.ok() && list->dictionary() != nullptr, std::string("no preferences in ") + name);
  return *list->dictionary();
}

std::vector<std::string> logLines(const std::string& errors) {
  std::vector<std::string> lines;
  std::istringstream in(errors);
  for (std::string line; std::getline(in, line);) {
    const auto prefix = line.find(" AnnivoAgent[");
    const auto end = line.find("] ", prefix);
    if (prefix != std::string::npos && end != std::string::npos)
      lines.push_back(line.substr(end + 2));
  }
  return lines;
}

}  // namespace

bool AgentRun::logged(const std::string& line) const {
  return std::find(log.begin(), log.end(), line) != log.end();
}

bool AgentRun::mentions(const std::string& text) const {
  return errors.find(text) != std::string::npos;
}

void AgentHome::setParent(const PropertyList::Dictionary& values) const {
  folder.writeFile(kParentFile, binaryPropertyList(values));
}

void AgentHome::setOwn(const PropertyList::Dictionary& values) const {
  folder.writeFile(kOwnFile, binaryPropertyList(values));
}

PropertyList::Dictionary AgentHome::parent() const { return dictionaryAt(folder, kParentFile); }
PropertyList::Dictionary AgentHome::own() const { return dictionaryAt(folder, kOwnFile); }

std::string AgentHome::storeOf(const std::string& source) {
  const std::string folder = source.empty() ? "" : "/Sources/" + source;
  return kAddressBook + folder + "/AddressBook-v22.abcddb";
}

void AgentHome::setContacts(const std::vector<StoredPerson>& people,
                            const std::vector<StoredGroup>& groups, StoreGeneration generation,
                            const std::string& source) const {
  const std::string store = storeOf(source);
  folder.makeFolder(std::string(kAddressBook) + "/Metadata");
  folder.makeFolder(store.substr(0, store.rfind('/')));
  if (folder.exists(store)) folder.remove(store);
  const Date now = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
  PosixFileManager disk;
  const auto written =
      AddressBookStoreWriter::write(disk, folder.path(store), generation, people, groups, now);
  require(written.ok(), "the contacts store was not written");
  folder.touch(std::string(kAddressBook) + "/Metadata", now);
}

std::string AgentHome::addCalendar(const std::string& uid, const std::string& title,
                                   const PropertyList::Dictionary& more) const {
  PropertyList::Dictionary info{{"Key", uid},       {"Title", title}, {"Type", "Local"},
                                {"Order", 1},       {"Checked", 1},   {"Color", "#492BA1FF"},
                                {"Editable", true}, {"Enabled", true}};
  for (const auto& [key, value] : more) info[key] = value;
  const std::string calendar = "Library/Calendars/" + uid + ".calendar/";
  folder.writeFile(calendar + "Info.plist", xmlPropertyList(info));
  folder.makeFolder(calendar + "Events");
  return uid;
}

std::string AgentHome::eventsFolder(const std::string& calendarUID) const {
  return folder.path("Library/Calendars/" + calendarUID + ".calendar/Events");
}

std::vector<std::string> AgentHome::titles(const std::string& calendarUID) const {
  std::vector<std::string> titles;
  for (const auto& entry : fs::directory_iterator(eventsFolder(calendarUID))) {
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      if (line.rfind("SUMMARY:", 0) != 0) continue;
      titles.push_back(line.substr(8, line.find('\r') - 8));
      break;
    }
  }
  std::sort(titles.begin(), titles.end());
  return titles;
}

std::vector<std::string> AgentHome::calendars() const {
  std::vector<std::string> uids;
  if (!folder.exists("Library/Calendars")) return uids;
  for (const auto& entry : fs::directory_iterator(folder.path("Library/Calendars"))) {
    if (entry.path().extension() == ".calendar") uids.push_back(entry.path().stem().string());
  }
  std::sort(uids.begin(), uids.end());
  return uids;
}

std::string AgentHome::ledger() const {
  constexpr const char* kLedger = "Library/Application Support/Annivo 2/Annivo 2.xml";
  return folder.exists(kLedger) ? folder.readFile(kLedger) : "";
}

std::size_t AgentHome::ledgerRecords() const {
  const std::string text = ledger();
  std::size_t count = 0;
  for (auto at = text.find("<object "); at != std::string::npos;
       at = text.find("<object ", at + 1)) {
    ++count;
  }
  return count;
}

std::map<std::string, std::string> AgentHome::fingerprint() const {
  auto entries = folder.fingerprint();
  std::erase_if(entries,
                [](const auto& entry) { return entry.first.starts_with("Library/Caches"); });
  return entries;
}

std::string AgentHome::agentExecutable() {
  return std::string(ANNIVO_PRODUCT) +
         "/Contents/Helpers/AnnivoAgent.app/Contents/Linux/AnnivoAgent";
}

AgentRun AgentHome::run(const std::map<std::string, std::string>& environment,
                        const std::string& executable) const {
  std::map<std::string, std::string> variables{
      {"HOME", folder.path()}, {"TZ", "UTC"}, {"LANG", "en_US.UTF-8"}};
  for (const auto& [name, value] : environment) variables[name] = value;
  std::vector<std::string> settings;
  for (const auto& [name, value] : variables) settings.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (std::string& setting : settings) envp.push_back(setting.data());
  envp.push_back(nullptr);

  int out[2];
  require(pipe2(out, O_CLOEXEC) == 0, "no pipe");
  const pid_t child = fork();
  require(child >= 0, "no process");
  if (child == 0) {
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, 0);
    dup2(out[1], 1);
    dup2(out[1], 2);
    std::string name = executable;
    char* const arguments[] = {name.data(), nullptr};
    execve(executable.c_str(), arguments, envp.data());
    _exit(127);
  }
  close(out[1]);
  AgentRun run;
  char buffer[4096];
  for (ssize_t count = 0; (count = ::read(out[0], buffer, sizeof buffer)) > 0;) {
    run.errors.append(buffer, static_cast<std::size_t>(count));
  }
  close(out[0]);
  int status = 0;
  waitpid(child, &status, 0);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  run.log = logLines(run.errors);
  return run;
}

StoredPerson personBorn(const std::string& first, const std::string& last, StoredDay day) {
  StoredPerson person;
  person.uniqueId = "P-" + first + last + ":ABPerson";
  person.firstName = first;
  person.lastName = last;
  person.birthday = day;
  return person;
}

StoredPerson personWithDate(const std::string& first, const std::string& last,
                            const std::string& label, StoredDay day) {
  StoredPerson person = personBorn(first, last, day);
  person.birthday.reset();
  person.dates.push_back({.uniqueId = "D-" + first + last, .label = label, .day = day});
  return person;
}

}  // namespace annivo
