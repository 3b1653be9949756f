// SPDX-License-Identifier: MIT
#include <chrono>

#include "parent/command/Commands.h"
#include "parent/command/ProgressBar.h"
#include "parent/runs/ServiceUnits.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

PropertyList asList(const std::vector<LeftOut>& leftOut) {
  PropertyList::Array list;
  for (const LeftOut& item : leftOut) {
    list.push_back(PropertyList::Dictionary{{"where", item.where}, {"reason", item.reason}});
  }
  return list;
}

void showLeftOut(const Console& console, const std::vector<LeftOut>& leftOut,
                 const std::string& what) {
  for (const LeftOut& item : leftOut) {
    console.line(console.styled(what, Style::yellow) + ' ' + printable(item.where) + ": " +
                 printable(item.reason));
  }
}

std::string summary(const ImportReport& report, const std::string& source) {
  const std::string people = counted(report.people, "{1} person", "{1} people");
  const std::string dates = counted(report.dates, "{1} date", "{1} dates");
  const std::string groups = counted(report.groups, "{1} group", "{1} groups");
  // TRANSLATORS: {1} is a name, {2} "3 people", {3} "4 dates", {4} "1 group".
  return report.changed
             ? translated("Source \"{1}\": {2}, {3}, {4}.", source, people, dates, groups)
             : translated("Source \"{1}\": {2}, {3}, {4}; nothing has changed.", source, people,
                          dates, groups);
}

}  // namespace

void importCommand(CommandSession& session, const ImportRequest& request) {
  const Console& console = session.console;
  ProgressBar bar(console);
  const auto report =
      importVCards(session.platform, request,
                   [&](std::uint64_t done, std::uint64_t all) { bar.show(done, all); });
  bar.clear();
  if (!report) throw Refusal{report.error().description};
  if (report->changed) refreshService(session);
  if (console.json) {
    console.writeJSON(
        PropertyList::Dictionary{{"source", request.source},
                                 {"people", static_cast<std::int64_t>(report->people)},
                                 {"dates", static_cast<std::int64_t>(report->dates)},
                                 {"groups", static_cast<std::int64_t>(report->groups)},
                                 {"changed", report->changed},
                                 {"skippedCards", asList(report->skippedCards)},
                                 {"skippedDates", asList(report->skippedDates)}});
    return;
  }
  showLeftOut(console, report->skippedCards, translated("skipped card"));
  showLeftOut(console, report->skippedDates, translated("skipped date"));
  console.line(summary(*report, printable(request.source)));
}

}  // namespace annivo
