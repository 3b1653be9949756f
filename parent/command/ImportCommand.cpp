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

void showLeftOut(const Console& console, const std::vector<LeftOut>& leftOut, const char* what) {
  for (const LeftOut& item : leftOut) {
    console.line(console.styled(what, Style::yellow) + ' ' + printable(item.where) + ": " +
                 printable(item.reason));
  }
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
  showLeftOut(console, report->skippedCards, "skipped card");
  showLeftOut(console, report->skippedDates, "skipped date");
  console.line("Source \"" + printable(request.source) +
               "\": " + counted(report->people, "person", "people") + ", " +
               counted(report->dates, "date", "dates") + ", " +
               counted(report->groups, "group", "groups") +
               (report->changed ? "." : "; nothing has changed."));
}

}  // namespace annivo
