// SPDX-License-Identifier: MIT
#include "calendar/EventRecords.h"

namespace annivo {

std::optional<EventRecords::Records> EventRecords::fetch(std::optional<NSPredicate> predicate) {
  if (!context_) return std::nullopt;
  auto fetched =
      context_->executeFetchRequest({.entity = "Event", .predicate = std::move(predicate)});
  if (!fetched) {
    platform_.log().write(fetched.error().text());
    return std::nullopt;
  }
  return std::move(*fetched);
}

std::optional<EventRecords::Records> EventRecords::find(const LedgerIdentity& identity) {
  static const auto format =
      NSPredicateFormat::parse("(myUID LIKE[c] %@) AND (calendarUID LIKE[c] %@) AND (date == %@)");
  std::vector<PropertyList> values;
  values.reserve(3);
  values.emplace_back(identity.myUID);
  values.emplace_back(identity.calendarUID);
  values.emplace_back(identity.date);
  return fetch(format.with(std::move(values)));
}

NSManagedObject& EventRecords::insert(const LedgerIdentity& identity, const std::string& eventUID) {
  NSManagedObject& record = context_->insertNewObjectForEntityForName("Event");
  context_->setValueForKey(record, identity.myUID, "myUID");
  context_->setValueForKey(record, identity.date, "date");
  context_->setValueForKey(record, eventUID, "iCalUID");
  context_->setValueForKey(record, identity.calendarUID, "calendarUID");
  return record;
}

LedgerIdentity EventRecords::identity(const NSManagedObject& record) {
  const Date* date = record.valueForKey("date").date();
  return {.myUID = record.valueForKey("myUID").stringOr(""),
          .calendarUID = record.valueForKey("calendarUID").stringOr(""),
          .date = date ? *date : Date{}};
}

void EventRecords::setEvent(NSManagedObject& record, const std::string& eventUID) {
  context_->setValueForKey(record, eventUID, "iCalUID");
}

void EventRecords::remove(NSManagedObject& record) { context_->deleteObject(record); }

}  // namespace annivo
