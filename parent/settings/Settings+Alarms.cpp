// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>

#include "parent/settings/AlarmTable.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

bool hasControlCharacters(const std::string& text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

const std::string& oneWord(const std::vector<std::string>& words, const char* refusal) {
  if (words.size() != 1 || words.front().empty() || hasControlCharacters(words.front())) {
    throw Refusal{translated(refusal)};
  }
  return words.front();
}

void setEmail(Session& session, const std::vector<std::string>& words) {
  const std::string& address = oneWord(words, toTranslate("give one e-mail address"));
  const auto at = address.find('@');
  if (at == 0 || at == address.npos || at + 1 == address.size() ||
      address.find('@', at + 1) != address.npos || address.find(' ') != address.npos) {
    throw Refusal{translated("\"{1}\" is no e-mail address", address)};
  }
  storeChoices(session, {{keys::kSetEmail, address}});
}

void setFile(Session& session, const std::vector<std::string>& words) {
  std::string path = oneWord(words, toTranslate("give one path"));
  if (path == "~" || path.starts_with("~/")) {
    path.replace(0, 1, session.platform.homeDirectory());
  }
  path = standardizedPath(std::filesystem::absolute(path).string());
  if (!session.platform.fileManager().fileExistsAtPath(path)) {
    throw Refusal{translated("there is no file {1} for the alarm to open", path)};
  }
  storeChoices(session, {{keys::kAlarmFilePath, path}});
}

Setting textSetting(const char* name, const char* key, std::string help) {
  return {.name = name,
          .help = std::move(help),
          .show = [key](Session& session) { return AnvCalPrefs(session.platform).text(key); },
          .fact = [key](Session& session) { return AnvCalPrefs(session.platform).prefs()[key]; },
          .set = {},
          .reset =
              [key](Session& session) {
                storeChoices(session, {{key, PropertyList()}});
              },
          .values = {}};
}

}  // namespace

std::vector<Setting> alarmSettings() {
  Setting alarms{
      .name = "alarms",
      .help = translated("the alarms of events; \"annivo alarms add\" and \"remove\" change them"),
      .show =
          [](Session& session) {
            AnvCalPrefs prefs(session.platform);
            std::vector<std::string> texts;
            for (const ListedAlarm& alarm : listedAlarms(prefs.prefs()[keys::kAlarmTable],
                                                         session.platform.defaultTimeZone())) {
              texts.push_back(alarmText(alarm));
            }
            return texts.empty() ? "none" : listedPhrases(texts);
          },
      .fact =
          [](Session& session) {
            AnvCalPrefs prefs(session.platform);
            return alarmsFact(
                listedAlarms(prefs.prefs()[keys::kAlarmTable], session.platform.defaultTimeZone()));
          },
      .set = {},
      .reset =
          [](Session& session) {
            storeChoices(session, {{keys::kAlarmTable, PropertyList()}});
          },
      .values = {}};
  Setting email =
      textSetting("email", keys::kSetEmail, translated("the address that e-mail alarms go to"));
  email.set = setEmail;
  Setting sound =
      textSetting("sound", keys::kSelectedSystemSound, translated("the sound of sound alarms"));
  sound.set = [](Session& session, const std::vector<std::string>& words) {
    storeChoices(session, {{keys::kSelectedSystemSound,
                            oneWord(words, toTranslate("give the name of one sound"))}});
  };
  sound.values = [](Session&) {
    return std::vector<std::string>{"Basso", "Blow",   "Bottle",    "Frog", "Funk",
                                    "Glass", "Hero",   "Morse",     "Ping", "Pop",
                                    "Purr",  "Sosumi", "Submarine", "Tink"};
  };
  Setting file =
      textSetting("file", keys::kAlarmFilePath, translated("the file that file alarms open"));
  file.set = setFile;
  return {std::move(alarms), std::move(email), std::move(sound), std::move(file)};
}

}  // namespace annivo
