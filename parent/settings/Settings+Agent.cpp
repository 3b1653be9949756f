// SPDX-License-Identifier: MIT
#include <map>

#include "base/Digits.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"
#include "platform/LoggingSwitch.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kDefaultInterval = 7 * kDay;

bool isOn(const std::vector<std::string>& words) {
  if (words == std::vector<std::string>{"on"}) return true;
  if (words == std::vector<std::string>{"off"}) return false;
  throw Refusal{"give on or off"};
}

std::string onOff(bool on) { return on ? "on" : "off"; }

std::vector<std::string> onOffWords(Session&) { return {"on", "off"}; }

void storeOwn(Session& session, const char* key, PropertyList value) {
  NSUserDefaults& defaults = session.platform.standardUserDefaults();
  defaults.setObjectForKey(std::move(value), key);
  if (auto stored = defaults.synchronize(); !stored) throw Refusal{stored.error().description};
}

void setUpdateChecks(Session& session, const std::vector<std::string>& words) {
  PropertyList::Dictionary choices{{keys::kSUEnableAutomaticChecks, isOn(words)}};
  // Without a time of the last check none would ever be due.
  AnvCalPrefs prefs(session.platform);
  if (!prefs.prefs()[keys::kSULastCheckTime].date()) {
    choices.emplace(keys::kSULastCheckTime, session.platform.clock().now());
  }
  storeChoices(session, choices);
}

std::string shownInterval(Session& session) {
  AnvCalPrefs prefs(session.platform);
  const PropertyList& stored = prefs.prefs()[keys::kSUScheduledCheckInterval];
  const std::int64_t seconds = stored.isNil() ? kDefaultInterval : stored.integerValue();
  if (seconds > 0 && seconds % kDay == 0) {
    return counted(static_cast<std::size_t>(seconds / kDay), "day", "days");
  }
  return std::to_string(seconds) + " seconds";
}

void setInterval(Session& session, const std::vector<std::string>& words) {
  static const std::map<std::string, std::int64_t> kNames{
      {"daily", 1}, {"weekly", 7}, {"monthly", 30}};
  if (words.empty() || words.size() > 2) throw Refusal{"give daily, weekly, monthly or N days"};
  std::int64_t days = 0;
  if (const auto named = kNames.find(words.front()); named != kNames.end()) {
    days = named->second;
  } else {
    const std::string& text = words.front();
    days = numberFromText<std::int64_t>(text).value_or(0);
    const std::string unit = words.size() == 2 ? words[1] : "days";
    if (days < 1 || days > 3650 || (unit != "days" && unit != "day")) {
      throw Refusal{"give daily, weekly, monthly or 1 to 3650 days"};
    }
  }
  storeChoices(session, {{keys::kSUScheduledCheckInterval, days * kDay}});
}

std::string momentOrNever(Session& session, const PropertyList& moment) {
  return moment.date() ? shownMoment(*moment.date(), session.platform.defaultTimeZone()) : "never";
}

Setting readOnlyMoment(const char* name, const char* key, const char* help) {
  return {.name = name,
          .help = help,
          .show =
              [key](Session& session) {
                AnvCalPrefs prefs(session.platform);
                return momentOrNever(session, prefs.prefs()[key]);
              },
          .set = {},
          .reset = {},
          .values = {}};
}

Setting agentSwitch() {
  return {.name = "agent",
          .help = "whether runs write events (on) or take them all out (off)",
          .show =
              [](Session& session) {
                AnvCalPrefs prefs(session.platform);
                return onOff(prefs.prefs()[keys::kAppRunning].isTheTrueObject());
              },
          .set =
              [](Session& session, const std::vector<std::string>& words) {
                storeChoices(session, {{keys::kAppRunning, isOn(words)}});
              },
          .reset =
              [](Session& session) {
                storeChoices(session, {{keys::kAppRunning, PropertyList()}});
              },
          .values = onOffWords};
}

Setting emptyingSwitch() {
  return {.name = "empty-calendars",
          .help = "an order to the next run to take all events out and switch the agent off",
          .show =
              [](Session& session) {
                return onOff(session.platform.standardUserDefaults()
                                 .objectForKey(keys::kAlarmSet)
                                 .isEqualToString("1"));
              },
          .set =
              [](Session& session, const std::vector<std::string>& words) {
                storeOwn(session, keys::kAlarmSet, isOn(words) ? "1" : "0");
              },
          .reset = [](Session& session) { storeOwn(session, keys::kAlarmSet, PropertyList()); },
          .values = onOffWords};
}

Setting logging() {
  return {.name = "logging",
          .help = "whether the agent writes each step to the log",
          .show = [](Session& session) { return onOff(loggingIsOn(session.platform)); },
          .set =
              [](Session& session, const std::vector<std::string>& words) {
                storeOwn(session, keys::kDoLog, isOn(words) ? 1 : 0);
              },
          .reset = [](Session& session) { storeOwn(session, keys::kDoLog, PropertyList()); },
          .values = onOffWords};
}

}  // namespace

std::vector<Setting> agentSettings() {
  Setting checks{.name = "update-checks",
                 .help = "whether runs look for a new version from time to time: on or off",
                 .show =
                     [](Session& session) {
                       AnvCalPrefs prefs(session.platform);
                       return onOff(prefs.prefs()[keys::kSUEnableAutomaticChecks].boolValue());
                     },
                 .set = setUpdateChecks,
                 .reset =
                     [](Session& session) {
                       storeChoices(session, {{keys::kSUEnableAutomaticChecks, PropertyList()}});
                     },
                 .values = onOffWords};
  Setting interval{.name = "update-interval",
                   .help = "how often: daily, weekly, monthly or a number of days",
                   .show = shownInterval,
                   .set = setInterval,
                   .reset =
                       [](Session& session) {
                         storeChoices(session, {{keys::kSUScheduledCheckInterval, PropertyList()}});
                       },
                   .values =
                       [](Session&) {
                         return std::vector<std::string>{"daily", "weekly", "monthly"};
                       }};
  return {
      agentSwitch(),
      emptyingSwitch(),
      std::move(checks),
      std::move(interval),
      logging(),
      readOnlyMoment("last-update-check", keys::kSULastCheckTime,
                     "when a new version was last looked for"),
      readOnlyMoment("last-launched", keys::kLastLaunched, "when this program last started a run"),
      {.name = "last-run",
       .help = "when the last full run ended",
       .show =
           [](Session& session) {
             return momentOrNever(
                 session, session.platform.standardUserDefaults().objectForKey(keys::kLastUpdate));
           },
       .set = {},
       .reset = {},
       .values = {}}};
}

}  // namespace annivo
