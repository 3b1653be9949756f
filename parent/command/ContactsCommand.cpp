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
      {"date", record.thisDate
                   ? PropertyList(shownDay(*record.thisDate, platform.defaultTimeZone()))
                   : PropertyList()},
      {"uid", record.dateUID}};
}

std::string dateText(const ContactDateRecord& record, Platform& platform) {
  const std::string label = record.dateType == kNull
                                ? std::string("(no label)")
                                : platform.localizedString(record.dateType, "");
  return (record.thisDate ? shownDay(*record.thisDate, platform.defaultTimeZone()) : "no date") +
         ' ' + label;
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
  std::vector<std::vector<std::string>> rows{{"NAME", "DATES", "UID"}};
  std::size_t dates = 0;
  for (const ListedPerson& person : people) {
    std::string all;
    for (const auto& record : person.dates) {
      all += (all.empty() ? "" : ", ") + dateText(record, session.platform);
    }
    dates += person.dates.size();
    rows.push_back({person.name, all, person.uid});
  }
  if (!people.empty()) console.table(rows);
  const bool nobody = people.empty() && !session.platform.application().presentedFailure();
  console.line(counted(people.size(), "person", "people") + ", " + counted(dates, "date", "dates") +
               '.' + (nobody ? " \"annivo import\" brings in vCards." : ""));
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
  std::vector<std::vector<std::string>> rows{{"GROUP", "PEOPLE WITH DATES", "UID"}};
  for (const ListedGroup& group : groups) {
    rows.push_back({group.name, std::to_string(group.people), group.uid});
  }
  if (!groups.empty()) console.table(rows);
  console.line(counted(groups.size(), "group", "groups") + '.');
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
  std::vector<std::vector<std::string>> rows{{"LABEL", "DATES", "STORED AS"}};
  for (const ListedLabel& label : labels) {
    rows.push_back({label.shown, std::to_string(label.dates), label.dateType});
  }
  if (!labels.empty()) console.table(rows);
  console.line(counted(labels.size(), "label", "labels") + '.');
}

}  // namespace annivo
