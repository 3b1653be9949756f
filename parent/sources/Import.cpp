// SPDX-License-Identifier: MIT
#include "parent/sources/Import.h"

#include "base/Reason.h"
#include "parent/settings/Words.h"
#include "parent/sources/SourceFolder.h"
#include "parent/sources/VCardFiles.h"

namespace annivo {

namespace {

std::string place(const std::string& file, std::size_t line, const std::string& name) {
  return file + ':' + std::to_string(line) + (name.empty() ? "" : " " + name);
}

/// Takes the cards of one file after the other.
class CardReader {
 public:
  CardReader(ImportedSource& source, ImportReport& report) : source_(source), report_(report) {}

  void take(const std::string& file, const VCardText& card) {
    ++cards_;
    if (!card.skipped.empty()) return skip(place(file, card.line, ""), card.skipped);
    auto contact = readContact(VCard::parse(card.text));
    if (!contact) return skip(place(file, card.line, ""), contact.error().description);
    const std::string where = place(file, card.line, contact->shownName);
    const auto leftOut = contact->leftOut;
    if (auto refused = source_.add(std::move(*contact), card.text)) return skip(where, *refused);
    for (const std::string& date : leftOut) report_.skippedDates.push_back({where, date});
  }

  [[nodiscard]] std::size_t cards() const { return cards_; }

 private:
  void skip(const std::string& where, const std::string& why) {
    report_.skippedCards.push_back({where, why});
  }

  ImportedSource& source_;
  ImportReport& report_;
  std::size_t cards_ = 0;
};

Result<void> readAll(const std::vector<VCardFile>& files, CardReader& reader,
                     const ImportProgress& progress) {
  std::uint64_t all = 0;
  for (const VCardFile& file : files) all += file.size;
  std::uint64_t done = 0;
  for (const VCardFile& file : files) {
    auto read = readVCardFile(
        file.path, [&](const VCardText& card) { reader.take(file.path, card); },
        [&](std::size_t bytes) { progress(done += bytes, all); });
    if (!read) return read;
  }
  return {};
}

}  // namespace

Result<ImportReport> importVCards(Platform& platform, const ImportRequest& request,
                                  const ImportProgress& progress) {
  const auto files = findVCardFiles(request.paths);
  if (!files) return files.error();
  ImportReport report;
  ImportedSource source(request.source);
  CardReader reader(source, report);
  if (auto read = readAll(*files, reader, progress); !read) return read.error();
  if (source.people().empty()) {
    const std::string paths = listed(request.paths);
    if (report.skippedCards.empty()) {
      return reason(
          translated("no vCard with a person in {1}; the address book is as it was", paths));
    }
    const LeftOut& first = report.skippedCards.front();
    // TRANSLATORS: {1} is one or more paths; {2} is a card that was not taken, {3} says why.
    return reason(
        translated("no vCard with a person in {1}; the address book is as it was ({2}: {3})", paths,
                   first.where, first.reason));
  }
  auto folder = SourceFolder::named(platform, request.source);
  if (!folder) return folder.error();
  auto earlier = folder->earlierIdentifiers();
  if (!earlier) return earlier.error();
  source.finish(*std::move(earlier));
  const std::string me = request.me.value_or(folder->me());
  const bool found = !me.empty() && source.setMe(me);
  if (request.me && !found) {
    return reason(
        translated("no card has the UID \"{1}\"; the address book is as it was (annivo "
                   "people lists the UIDs)",
                   *request.me));
  }
  report.people = source.people().size();
  report.dates = source.dateCount();
  report.groups = source.groups().size();
  const std::string digest = source.digest();
  report.changed = !folder->holds(digest);
  if (report.changed) {
    if (auto written = folder->write(source, digest, found ? me : ""); !written)
      return written.error();
  }
  return report;
}

}  // namespace annivo
