// SPDX-License-Identifier: MIT
#include "run/ZPKLimitSystem.h"

namespace annivo {

namespace {

constexpr std::int32_t kLastBefore10_5 = 0x104F;

}  // namespace

std::int32_t ZPKLimitSystem::versionVal(const Gestalt& gestalt) {
  const auto version = gestalt.query(kGestaltSystemVersion);
  if (!version) return 1030;
  if (*version <= kLastBefore10_5) return 1040;
  if (*version <= 0x105F) return 1050;
  if (*version <= 0x106F) return 1060;
  if (*version <= 0x107F) return 1070;
  return 1080;
}

void ZPKLimitSystem::alert(Platform& platform) {
  const auto version = platform.gestalt().query(kGestaltSystemVersion);
  if (!version || *version > kLastBefore10_5) return;
  const NSAlert warning{
      .messageText = "Annivo 2",
      .defaultButton = "Quit",
      .alternateButton = "Continue",
      .otherButton = "",
      .informativeText =
          "This application is developed for use under OSX 10.5, Leopard and later.\n\n"
          "It will not work under earlier versions of OSX and it is likely not to work under later "
          "versions."};
  if (platform.alerts().runModal(warning) == AlertAnswer::alternate) return;
  platform.log().write("quit");
  platform.application().terminate();
}

}  // namespace annivo
