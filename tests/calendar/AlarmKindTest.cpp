// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <utility>

#include "calendar/AlarmKind.h"

namespace annivo {
namespace {

TEST(AlarmKind, IsStoredAsItsText) {
  for (const auto& [kind, text] : {std::pair{AlarmKind::none, "None"},
                                   {AlarmKind::message, "Message"},
                                   {AlarmKind::email, "Email"},
                                   {AlarmKind::sound, "Sound"},
                                   {AlarmKind::openFile, "Open File"}}) {
    EXPECT_STREQ(storedText(kind), text);
    EXPECT_EQ(alarmKindOf(text), kind) << text;
  }
}

TEST(AlarmKind, IsASoundForEveryTextThatEndsSo) {
  EXPECT_EQ(alarmKindOf("Message with Sound"), AlarmKind::sound);
  for (const char* other : {"", "sound", "Sounds", "email", "Email ", "Open  File"}) {
    EXPECT_EQ(alarmKindOf(other), std::nullopt) << other;
  }
}

TEST(AlarmKind, OfACalendarsAlarmIsWhatItWouldDo) {
  const CalAlarm message{.relativeTrigger = 0};
  CalAlarm sound = message;
  sound.sound = "Basso";
  CalAlarm file = sound;
  file.url = "file:///x";
  CalAlarm email = file;
  email.emailAddress = "ann@example.org";
  EXPECT_EQ(alarmKindOf(message), AlarmKind::message);
  EXPECT_EQ(alarmKindOf(sound), AlarmKind::sound);
  EXPECT_EQ(alarmKindOf(file), AlarmKind::openFile);
  EXPECT_EQ(alarmKindOf(email), AlarmKind::email);
}

}  // namespace
}  // namespace annivo
