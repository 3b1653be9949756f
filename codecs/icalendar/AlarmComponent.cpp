// SPDX-License-Identifier: MIT
#include "codecs/icalendar/AlarmComponent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "base/UUID.h"
#include "codecs/icalendar/ContentText.h"
#include "codecs/icalendar/ContentValues.h"

namespace annivo {
namespace {

constexpr std::string_view kDescription = "Event reminder";
/// The time that other programs write for an alarm that never fires.
constexpr std::string_view kNever = "19760401T005545Z";
constexpr std::string_view kMailto = "MAILTO:";
/// The longest trigger, in seconds, that is written; a longer one's exact value is kept in a
/// parameter.
constexpr double kLongestTrigger = 1e11;
constexpr std::string_view kPlainInAddress = "-._~@+!$'*=";
constexpr std::string_view kPlainInSound = "-._~";

std::int64_t wholeSeconds(double seconds) {
  if (std::isnan(seconds)) return 0;
  return std::llround(std::clamp(seconds, -kLongestTrigger, kLongestTrigger));
}

void appendTrigger(std::string& out, std::optional<double> trigger, std::string_view lineEnd) {
  if (!trigger) return appendContentLine(out, "TRIGGER;VALUE=DATE-TIME", kNever, lineEnd);
  const std::int64_t seconds = wholeSeconds(*trigger);
  std::string head = "TRIGGER";
  if (static_cast<double>(seconds) != *trigger) {
    std::array<char, 40> exact{};
    std::snprintf(exact.data(), exact.size(), "%a", *trigger);
    head += exactParameter(exact.data());
  }
  appendContentLine(out, head, durationText(seconds), lineEnd);
}

void appendURL(std::string& out, const std::string& url, std::string_view lineEnd) {
  const std::string value = escapedURI(url);
  std::string head = "ATTACH;VALUE=URI";
  if (value != url) head += exactParameter(url);
  appendContentLine(out, head, value, lineEnd);
}

std::string urlFrom(const ContentLine& line) {
  if (const auto exact = line.parameter(kExactParameter)) {
    std::string url = underscoreDecoded(*exact);
    if (escapedURI(url) == line.value()) return url;
  }
  return std::string(line.value());
}

}  // namespace

void appendAlarm(std::string& out, const CalAlarm& alarm, std::string_view lineEnd) {
  const auto line = [&](std::string_view head, std::string_view value) {
    appendContentLine(out, head, value, lineEnd);
  };
  const std::string uid = freshUUID();
  line("BEGIN", "VALARM");
  line("X-WR-ALARMUID", uid);
  line("UID", uid);
  appendTrigger(out, alarm.relativeTrigger, lineEnd);
  // An alarm has one action; what else it carries stands in properties of our own.
  const bool opensFile = alarm.url && !alarm.emailAddress;
  const bool plays = alarm.sound && !alarm.emailAddress && !alarm.url;
  if (alarm.url && !opensFile) line("X-ANNIVO-URL", underscoreEncoded(*alarm.url));
  if (alarm.sound && !plays) line("X-ANNIVO-SOUND", underscoreEncoded(*alarm.sound));
  if (alarm.emailAddress) {
    line("ATTENDEE", "mailto:" + percentEncoded(*alarm.emailAddress, kPlainInAddress));
    line("SUMMARY", kDescription);
    line("DESCRIPTION", kDescription);
    line("ACTION", "EMAIL");
  } else if (opensFile) {
    if (!alarm.url->empty()) appendURL(out, *alarm.url, lineEnd);
    line("DESCRIPTION", kDescription);
    line("ACTION", "PROCEDURE");
  } else if (plays) {
    if (!alarm.sound->empty()) {
      line("ATTACH;VALUE=URI", percentEncoded(*alarm.sound, kPlainInSound));
    }
    line("ACTION", "AUDIO");
  } else {
    line("DESCRIPTION", kDescription);
    line("ACTION", "DISPLAY");
  }
  line("END", "VALARM");
}

void AlarmReader::read(const ContentLine& line) {
  if (line.named("TRIGGER") && !hasTrigger_) {
    hasTrigger_ = true;
    readTrigger(line);
  } else if (line.named("ACTION")) {
    action_ = equalsIgnoringCase(line.value(), "AUDIO")       ? Action::audio
              : equalsIgnoringCase(line.value(), "EMAIL")     ? Action::email
              : equalsIgnoringCase(line.value(), "PROCEDURE") ? Action::procedure
              : equalsIgnoringCase(line.value(), "NONE")      ? Action::none
                                                              : Action::display;
  } else if (line.named("ATTACH") && !attachment_) {
    attachment_ = urlFrom(line);
  } else if (line.named("ATTENDEE") && !attendee_) {
    std::string_view address = line.value();
    if (equalsIgnoringCase(address.substr(0, kMailto.size()), kMailto)) {
      address.remove_prefix(kMailto.size());
    }
    attendee_ = percentDecoded(address);
  } else if (line.named("X-ANNIVO-URL")) {
    alarm_.url = underscoreDecoded(line.value());
  } else if (line.named("X-ANNIVO-SOUND")) {
    alarm_.sound = underscoreDecoded(line.value());
  }
}

void AlarmReader::readTrigger(const ContentLine& line) {
  const auto related = line.parameter("RELATED");
  const auto seconds = durationFromText(line.value());
  if (!seconds || (related && !equalsIgnoringCase(*related, "START"))) return;
  alarm_.relativeTrigger = static_cast<double>(*seconds);
  if (const auto parameter = line.parameter(kExactParameter)) {
    const double exact = std::strtod(underscoreDecoded(*parameter).c_str(), nullptr);
    if (wholeSeconds(exact) == *seconds) alarm_.relativeTrigger = exact;
  }
}

std::optional<CalAlarm> AlarmReader::alarm() && {
  switch (action_) {
    case Action::none:
      return std::nullopt;
    case Action::email:
      alarm_.emailAddress = std::move(attendee_).value_or("");
      break;
    case Action::procedure:
      alarm_.url = std::move(attachment_).value_or("");
      break;
    case Action::audio:
      alarm_.sound = percentDecoded(attachment_.value_or(""));
      break;
    case Action::display:
      break;
  }
  return std::move(alarm_);
}

}  // namespace annivo
