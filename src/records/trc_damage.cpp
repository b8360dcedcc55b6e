#include "records/trc_damage.h"

#include "base/text.h"

std::string DamageText(const TrcDamage& damage, bool places) {
  std::string text;
  if (damage.skippedBytes > 0) {
    text = GroupDigits(damage.skippedBytes) + (damage.skippedBytes == 1 ? " byte" : " bytes") +
           " skipped";
    if (places && damage.skippedPlaces > 1)
      text += " in " + GroupDigits(damage.skippedPlaces) + " places";
    if (places) text += " from byte " + GroupDigits(*damage.firstSkippedAt) + " on";
  }
  if (damage.cutAt) {
    if (!text.empty()) text += ", ";
    text += "last record cut";
    if (places) text += " at byte " + GroupDigits(*damage.cutAt);
  }
  return text;
}
