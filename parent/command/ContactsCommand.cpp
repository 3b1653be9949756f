// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/settings/Contacts.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

PropertyList dateValue(const ContactDateRecord& record, Platform& platform) {
  return PropertyList::Dictionary{
      {"label", record.dateType},
      {"shown", platform.localizedString(record.dateType, "")},
      {"date", record.thisDate ? PropertyList(isoDay(*record.thisDate, platform.defaultTimeZone()))
                               : PropertyList()},
      {"uid", record.dateUID}};
}

std::string dateText(const ContactDateRecord& record, Platform& platform) {
  const std::string day = record.thisDate ? shownDay(*record.thisDate, platform.defaultTimeZone())
                                          : translated("no date");
  // TRANSLATORS: a date of a person: {1} is the day, {2} what is on it ("birthday").
  return translated("{1} {2}", day, shownLabel(record.dateType, platform));
}

}  // namespace

void peopleCommand(CommandSession& session) {
  const auto people = Contacts(session.platform).people();
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Array list;
    for (const ListedPerson& person : people) {
      PropertyList::Array dates;
      for (const auto& record : person.dates) dates.push_back(dateValue(record, session.platform));
      list.push_back(
          PropertyList::Dictionary{{"name", person.name}, {"uid", person.uid}, {"dates", dates}});
    }
    return console.writeJSON(list);
  }
  std::vector<std::vector<std::string>> rows{
      {translated("NAME"), translated("DATES"), translated("UID")}};
  std::size_t dates = 0;
  for (const ListedPerson& person : people) {
    std::vector<std::string> all;
    all.reserve(person.dates.size());
    for (const auto& record : person.dates) all.push_back(dateText(record, session.platform));
    dates += person.dates.size();
    rows.push_back({person.name, listed(all), person.uid});
  }
  if (!people.empty()) console.table(rows);
  const std::string peopleCount = counted(people.size(), "{1} person", "{1} people");
  const std::string dateCount = counted(dates, "{1} date", "{1} dates");
  const bool nobody = people.empty() && !session.platform.application().presentedFailure();
  // TRANSLATORS: {1} is "3 people", {2} is "4 dates".
  console.line(
      nobody ? translated("{1}, {2}. \"annivo import\" brings in vCards.", peopleCount, dateCount)
             : translated("{1}, {2}.", peopleCount, dateCount));
}

void groupsCommand(CommandSession& session) {
  const auto groups = Contacts(session.platform).groups();
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Array list;
    for (const ListedGroup& group : groups) {
      list.push_back(PropertyList::Dictionary{{"name", group.name},
                                              {"uid", group.uid},
                                              {"people", static_cast<std::int64_t>(group.people)}});
    }
    return console.writeJSON(list);
  }
  std::vector<std::vector<std::string>> rows{
      {translated("GROUP"), translated("PEOPLE WITH DATES"), translated("UID")}};
  for (const ListedGroup& group : groups) {
    rows.push_back({group.name, std::to_string(group.people), group.uid});
  }
  if (!groups.empty()) console.table(rows);
  console.line(counted(groups.size(), "{1} group.", "{1} groups."));
}

void labelsCommand(CommandSession& session) {
  const auto labels = Contacts(session.platform).labels();
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Array list;
    for (const ListedLabel& label : labels) {
      list.push_back(PropertyList::Dictionary{{"label", label.dateType},
                                              {"shown", label.shown},
                                              {"dates", static_cast<std::int64_t>(label.dates)}});
    }
    return console.writeJSON(list);
  }
  std::vector<std::vector<std::string>> rows{
      {translated("LABEL"), translated("DATES"), translated("STORED AS")}};
  for (const ListedLabel& label : labels) {
    rows.push_back({label.shown, std::to_string(label.dates), label.dateType});
  }
  if (!labels.empty()) console.table(rows);
  console.line(counted(labels.size(), "{1} label.", "{1} labels."));
}

}  // namespace annivo
