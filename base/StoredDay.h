// SPDX-License-Identifier: MIT
#pragma once

namespace annivo {

/// The year that stands for "no year" in contacts.
inline constexpr int kYearOfNoYear = 1604;

/// A date of a person as cards and stores hold it: a civil day.
struct StoredDay {
  int year = kYearOfNoYear;
  int month = 1;
  int day = 1;
};

}  // namespace annivo
