// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "codecs/icalendar/ContentLine.h"

namespace annivo {

/// Walks an event file line by line and says where among its components each line lies. The text
/// is well formed when it holds at least one VCALENDAR, nothing but blank lines beside it, and when
/// each component is closed; what the lines inside say does not matter. Time and memory are linear
/// at every depth of nesting.
class EventLines {
 public:
  enum class Kind { property, begin, end };
  /// What a property line lies in, or what a begin or end line opens or closes: an event directly
  /// in a calendar, an alarm directly in an event, anything else.
  enum class Place { calendar, event, alarm, other };

  explicit EventLines(std::string_view text) : lines_(text) {}
  /// False at the end of the text or where it stops being well formed.
  bool next();
  /// After next() returned false.
  [[nodiscard]] bool wellFormed() const { return !malformed_ && depth_ == 0 && sawCalendar_; }

  /// After next() returned false: whether the text ended before its components did.
  [[nodiscard]] bool isOpen() const { return !malformed_ && depth_ > 0; }

  [[nodiscard]] const ContentLine& line() const { return line_; }
  [[nodiscard]] Kind kind() const { return kind_; }
  [[nodiscard]] Place place() const { return place_; }
  /// Open components, the one that a begin line opens or an end line closes included.
  [[nodiscard]] std::size_t depth() const { return lineDepth_; }

 private:
  bool begin();
  bool end();
  bool endOther(std::string_view name);
  /// The innermost open component.
  [[nodiscard]] Place innermost() const {
    return depth_ == known_ && known_ > 0 ? static_cast<Place>(known_ - 1) : Place::other;
  }

  ContentLines lines_;
  ContentLine line_;
  Kind kind_ = Kind::property;
  Place place_ = Place::other;
  std::size_t depth_ = 0;
  std::size_t known_ = 0;  ///< of the open ones, how many from the outermost on are no others
  std::string others_;     ///< names of the open others, a line feed before each
  std::size_t lineDepth_ = 0;
  bool sawCalendar_ = false;
  bool malformed_ = false;
};

}  // namespace annivo
