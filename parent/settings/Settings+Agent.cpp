// SPDX-License-Identifier: MIT
#include <map>

#include "base/Digits.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"
#include "platform/LoggingSwitch.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

using Words = std::vector<std::string>;

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kDefaultInterval = 7 * kDay;

bool isOn(const Words& words) {
  if (words == Words{"on"}) return true;
  if (words == Words{"off"}) return false;
  throw Refusal{translated("give on or off")};
}

std::string onOff(bool on) { return on ? "on" : "off"; }

void storeOwn(Session& session, const char* key, PropertyList value) {
  NSUserDefaults& defaults = session.platform.standardUserDefaults();
  defaults.setObjectForKey(std::move(value), key);
  if (auto stored = defaults.synchronize(); !stored) throw Refusal{stored.error().description};
}

void storeUpdateChecks(Session& session, bool on) {
  PropertyList::Dictionary choices{{keys::kSUEnableAutomaticChecks, on}};
  // Without a time of the last check none would ever be due.
  AnvCalPrefs prefs(session.platform);
  if (!prefs.prefs()[keys::kSULastCheckTime].date()) {
    choices.emplace(keys::kSULastCheckTime, session.platform.clock().now());
  }
  storeChoices(session, choices);
}

std::int64_t intervalInSeconds(Session& session) {
  AnvCalPrefs prefs(session.platform);
  const PropertyList& stored = prefs.prefs()[keys::kSUScheduledCheckInterval];
  return stored.isNil() ? kDefaultInterval : stored.integerValue();
}

std::string shownInterval(Session& session) {
  const std::int64_t seconds = intervalInSeconds(session);
  if (seconds > 0 && seconds % kDay == 0) {
    return counted(static_cast<std::size_t>(seconds / kDay), "{1} day", "{1} days");
  }
  return translated("{1} seconds", std::to_string(seconds));
}

void setInterval(Session& session, const Words& words) {
  static const std::map<std::string, std::int64_t> kNames{
      {"daily", 1}, {"weekly", 7}, {"monthly", 30}};
  const auto refuse = [] {
    throw Refusal{translated("give daily, weekly, monthly or 1 to 3650 days")};
  };
  if (words.empty() || words.size() > 2) refuse();
  std::int64_t days = 0;
  if (const auto named = kNames.find(words.front()); named != kNames.end()) {
    days = named->second;
  } else {
    const std::string& text = words.front();
    days = numberFromText<std::int64_t>(text).value_or(0);
    const std::string unit = words.size() == 2 ? words[1] : "days";
    if (days < 1 || days > 3650 || (unit != "days" && unit != "day")) {
      refuse();
    }
  }
  storeChoices(session, {{keys::kSUScheduledCheckInterval, days * kDay}});
}

/// What is on or off.
Setting switchSetting(const char* name, std::string help,
                      const std::function<bool(Session&)>& isSetOn,
                      std::function<void(Session&, bool)> store,
                      std::function<void(Session&)> reset) {
  return {.name = name,
          .help = std::move(help),
          .show = [isSetOn](Session& session) { return onOff(isSetOn(session)); },
          .fact = [isSetOn](Session& session) { return PropertyList(isSetOn(session)); },
          .set = [store = std::move(store)](Session& session,
                                            const Words& words) { store(session, isOn(words)); },
          .reset = std::move(reset),
          .values =
              [](Session&) {
                return Words{"on", "off"};
              }};
}

/// A time that is only shown.
Setting momentSetting(const char* name, std::string help,
                      const std::function<PropertyList(Session&)>& moment) {
  return {.name = name,
          .help = std::move(help),
          .show =
              [moment](Session& session) {
                const PropertyList value = moment(session);
                return value.date() ? shownMoment(*value.date(), session.platform.defaultTimeZone())
                                    : translated("never");
              },
          .fact =
              [moment](Session& session) {
                const PropertyList value = moment(session);
                return value.date() ? value : PropertyList();
              },
          .set = {},
          .reset = {},
          .values = {}};
}

PropertyList choice(Session& session, const char* key) {
  return AnvCalPrefs(session.platform).prefs()[key];
}

PropertyList own(Session& session, const char* key) {
  return session.platform.standardUserDefaults().objectForKey(key);
}

Setting agentSwitch() {
  return switchSetting(
      "agent", translated("whether runs write events (on) or take them all out (off)"),
      [](Session& session) { return choice(session, keys::kAppRunning).isTheTrueObject(); },
      [](Session& session, bool on) {
        storeChoices(session, {{keys::kAppRunning, on}});
      },
      [](Session& session) {
        storeChoices(session, {{keys::kAppRunning, PropertyList()}});
      });
}

Setting emptyingSwitch() {
  return switchSetting(
      "empty-calendars",
      translated("an order to the next run to take all events out and switch the agent off"),
      [](Session& session) { return own(session, keys::kAlarmSet).isEqualToString("1"); },
      [](Session& session, bool on) { storeOwn(session, keys::kAlarmSet, on ? "1" : "0"); },
      [](Session& session) { storeOwn(session, keys::kAlarmSet, PropertyList()); });
}

Setting logging() {
  return switchSetting(
      "logging", translated("whether the agent writes each step to the log"),
      [](Session& session) { return loggingIsOn(session.platform); },
      [](Session& session, bool on) { storeOwn(session, keys::kDoLog, on ? 1 : 0); },
      [](Session& session) { storeOwn(session, keys::kDoLog, PropertyList()); });
}

Setting updateChecks() {
  return switchSetting(
      "update-checks",
      translated("whether runs look for a new version from time to time: on or off"),
      [](Session& session) { return choice(session, keys::kSUEnableAutomaticChecks).boolValue(); },
      storeUpdateChecks,
      [](Session& session) {
        storeChoices(session, {{keys::kSUEnableAutomaticChecks, PropertyList()}});
      });
}

Setting updateInterval() {
  return {.name = "update-interval",
          .help = translated("how often: daily, weekly, monthly or a number of days"),
          .show = shownInterval,
          .fact = [](Session& session) { return PropertyList(intervalInSeconds(session)); },
          .set = setInterval,
          .reset =
              [](Session& session) {
                storeChoices(session, {{keys::kSUScheduledCheckInterval, PropertyList()}});
              },
          .values =
              [](Session&) {
                return Words{"daily", "weekly", "monthly"};
              }};
}

}  // namespace

std::vector<Setting> agentSettings() {
  return {agentSwitch(),
          emptyingSwitch(),
          updateChecks(),
          updateInterval(),
          logging(),
          momentSetting("last-update-check", translated("when a new version was last looked for"),
                        [](Session& session) { return choice(session, keys::kSULastCheckTime); }),
          momentSetting("last-launched", translated("when this program last started a run"),
                        [](Session& session) { return choice(session, keys::kLastLaunched); }),
          momentSetting("last-run", translated("when the last full run ended"),
                        [](Session& session) { return own(session, keys::kLastUpdate); })};
}

}  // namespace annivo
