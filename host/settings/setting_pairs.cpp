#include "host/settings/setting_pairs.h"

#include <algorithm>
#include <cstring>

#include "host/error.h"
#include "host/settings/setting_keys.h"

namespace {

constexpr int kOther = -1;  // of field: other than in the base record; of needs: other than 0
constexpr int kK7 = -2;     // the text "K7"

// A field with this value has an effect only if another one has the value that is needed.
struct Pair {
  std::string_view field;
  std::string_view needs;
  int needed = kOther;
  int value = kOther;            // of field
  bool always = false;           // refused even if the other one was set
  std::string_view ifOn = "";    // applies only if this flag is set
  std::string_view orElse = "";  // a flag that will do in place of needs
};

#define BLOCK(k)                                                                           \
  {"szCustomText" #k, "wCustomType" #k}, {"wCustomType" #k, "szCustomText" #k, kOther, 1}, \
      {"wCustomType" #k, "szCustomText" #k, kOther, 2}, {                                  \
    "wCustomType" #k, "szCustomText" #k, kOther, 3                                         \
  }

constexpr Pair kPairs[] = {
    {"dwCut1Mode", "nCut1Count", kOther, 2, true, "dwCut1Enabled"},
    {"nCut1Count", "dwCut1Mode", 2},
    {"dwCut1Mode", "dwCut1Enabled"},
    {"nCut1Value1", "dwCut1Enabled"},
    {"nCut1Value2", "dwCut1Enabled"},
    {"dwCut1AtJobEnd", "dwCut1Enabled"},
    {"dwCut1CsEnabled", "dwCut1Enabled"},
    {"nCut1CsValue", "dwCut1CsEnabled"},

    {"dwCut2Mode", "nCut2Count", kOther, 2, true, "dwCut2CutEnabled"},
    {"nCut2Count", "dwCut2Mode", 2},
    {"dwCut2Mode", "dwCut2CutEnabled"},
    {"dwCut2CutEnabled", "dwCut2Enabled"},
    {"nCut2Value1", "dwCut2Enabled"},
    {"nCut2Value2", "dwCut2Enabled"},
    {"dwCut2AtJobEnd", "dwCut2Enabled"},
    {"dwCut2CsEnabled", "dwCut2CutEnabled"},
    {"nCut2CsValue", "dwCut2CsEnabled"},
    {"nOptionCValue", "dwCut2Enabled"},
    {"dwCpEnabled", "dwCut2Enabled"},
    {"nCpValue", "dwCpEnabled"},
    {"dwCspEnabled", "dwCut2Enabled"},
    {"nCspValue", "dwCspEnabled"},

    {"nOptionTValue", "dwOptionT"},
    {"nPSource1Value", "dwPSource1Enabled", kOther, kOther, false, "", "dwPSource2Enabled"},
    {"nPSource3Value", "dwPSource3Enabled"},
    {"nOptionSet1PValue", "dwOptionSet1Enabled"},
    {"dwOptionSet1AEnabled", "dwOptionSet1Enabled"},
    {"nOptionSet1A0", "dwOptionSet1AEnabled"},
    {"nOptionSet1A1", "dwOptionSet1AEnabled"},
    {"nOptionSet1A2", "dwOptionSet1AEnabled"},
    {"nOptionSet1A3", "dwOptionSet1AEnabled"},
    {"nOptionSet1A4", "dwOptionSet1AEnabled"},
    {"nOptionSet2PValue", "dwOptionSet2Enabled"},
    {"nOptionSet2A0", "dwOptionSet2Enabled"},
    {"nOptionSet2A1", "dwOptionSet2Enabled"},
    {"nOptionSet2A2", "dwOptionSet2Enabled"},
    {"nOptionSet2A4", "dwOptionSet2Enabled"},
    {"nOptionSet3PValue", "dwOptionSet3Enabled"},
    {"nOptionSet3A5", "dwOptionSet3Enabled"},
    {"dwOptionSet3StartMode", "dwOptionSet3Enabled"},

    {"crHighlightColor", "dwColorMode", 2},
    {"nColorTolerance", "dwColorMode", 2},
    {"nOptionHValue", "dwColorMode", 2},
    {"bTopSideSameAsBottom", "dwColorMode", 1, kOther, true},
    {"nDarkness2", "szModelCode", kK7},
    {"dwUseDarkness2", "szModelCode", kK7, kOther, false, "", "dwOptionM"},

    BLOCK(0),
    BLOCK(1),
    BLOCK(2),
    BLOCK(3),
    BLOCK(4),
    BLOCK(5),
    BLOCK(6),
    BLOCK(7),
};
#undef BLOCK

const OemDevField& FieldNamed(std::string_view name) {
  const auto fields = OemDevFields();
  return *std::find_if(fields.begin(), fields.end(),
                       [name](const OemDevField& field) { return field.name == name; });
}

const BYTE* BytesOf(const OEMDEV& devmode, const OemDevField& field) {
  return reinterpret_cast<const BYTE*>(&devmode) + field.offset;
}

bool Differs(const OemDevField& field, const OEMDEV& devmode, const OEMDEV& base) {
  return std::memcmp(BytesOf(devmode, field), BytesOf(base, field), field.size) != 0;
}

bool Has(const OEMDEV& devmode, const OemDevField& field, int value) {
  if (value == kK7) return std::strcmp(devmode.szModelCode, "K7") == 0;
  DWORD number = 0;  // of a text: its first bytes
  std::memcpy(&number, BytesOf(devmode, field), std::min(field.size, sizeof number));
  if (field.kind == OemDevKind::Text) number &= 0xFF;
  return value == kOther ? number != 0 : number == static_cast<DWORD>(value);
}

bool IsOn(const OEMDEV& devmode, std::string_view flag) {
  return !flag.empty() && Has(devmode, FieldNamed(flag), kOther);
}

bool IsFault(const Pair& pair, const OEMDEV& devmode, const OEMDEV& base) {
  const OemDevField& field = FieldNamed(pair.field);
  const bool effective =
      pair.value == kOther ? Differs(field, devmode, base) : Has(devmode, field, pair.value);
  return effective && (pair.ifOn.empty() || IsOn(devmode, pair.ifOn)) &&
         !Has(devmode, FieldNamed(pair.needs), pair.needed) && !IsOn(devmode, pair.orElse);
}

std::string NeededText(const Pair& pair) {
  const OemDevField& needed = FieldNamed(pair.needs);
  const SettingKey* key = KeyOf(needed);
  if (pair.needed == kK7) return "\"K7\"";
  if (needed.kind == OemDevKind::Flag) return "true";
  if (needed.kind == OemDevKind::Text) return "TEXT";
  if (pair.needed == kOther && pair.needs.starts_with("wCustomType")) return "\"escaped\"";
  if (pair.needed == kOther) return "NUMBER";
  const auto word = key == nullptr ? std::nullopt : WordOf(*key, pair.needed);
  return word.value_or(std::to_string(pair.needed));
}

}  // namespace

void CheckSettingPairs(const OEMDEV& devmode, const OEMDEV& base, const FindSetBy& setBy) {
  for (const Pair& pair : kPairs) {
    const OemDevField& field = FieldNamed(pair.field);
    const OemDevField& needed = FieldNamed(pair.needs);
    const SetBy set = setBy(field), other = setBy(needed);
    if (set.key.empty() || !IsFault(pair, devmode, base)) continue;
    if (!pair.always && !other.key.empty()) continue;
    const std::string name = other.key.empty() ? NameOf(needed) : other.key;
    throw HostError(kExitSettings,
                    "\"" + set.key + "\" = " + set.shown + " has no effect without \"" + name +
                        "\"" + (other.key.empty() ? "" : ", which is " + other.shown),
                    "set " + name + " = " + NeededText(pair) + " as well");
  }
}

bool IsNeededByOthers(const OemDevField& field, const OEMDEV& devmode, const OEMDEV& base) {
  return std::any_of(std::begin(kPairs), std::end(kPairs), [&](const Pair& pair) {
    return pair.needs == field.name && IsFault(pair, devmode, base);
  });
}
