#include "host/settings/setting_keys.h"

#include <sstream>

#include "config/ditherers.h"
#include "host/error.h"

namespace {

using Kind = SettingKey::Kind;
constexpr LONG kAny = 2147483647;
constexpr LONG kFarUm = 3276700;  // no label is longer

const std::string kDithererWords = [] {
  std::string words;
  for (std::size_t i = 0; i < std::size(kDithererNames); ++i) {
    words += std::string(kDithererNames[i]) + "=" + std::to_string(i) + " ";
  }
  return words;
}();

const SettingKey kKeys[] = {
    {"paper.size", Kind::Paper, ""},
    {"paper.orientation", Kind::Words, "", "portrait=0 landscape=1"},
    {"paper.dpi", Kind::Number, "", "", 100, 1200},
    {"paper.margin_left", Kind::Margin, "dwUnprintableLeft"},
    {"paper.margin_right", Kind::Margin, "dwUnprintableRight"},
    {"paper.margin_top", Kind::Margin, "dwUnprintableTop"},
    {"paper.margin_bottom", Kind::Margin, "dwUnprintableBottom"},
    {"paper.offset_x", Kind::Length, "nOffsetX", "", -kFarUm, kFarUm},
    {"paper.offset_y", Kind::Length, "nOffsetY", "", -kFarUm, kFarUm},
    {"paper.gap", Kind::Margin, "dwGapDistance"},
    {"paper.sensor", Kind::Words, "dwSensorType", "e=0 l0=1 l1=2 l2=3 x0=4 x1=5"},
    {"paper.rotation", Kind::Words, "dwRotation", "0=0 90=1 180=2 270=3"},
    {"paper.stock", Kind::Stock, "guidSelectedStock"},

    {"print.speed", Kind::Number, "dwSpeed", "", 1, 1000},
    {"print.darkness", Kind::Number, "nDarkness", "", -kAny, kAny},
    {"print.darkness2", Kind::Number, "nDarkness2", "", -kAny, kAny},
    {"print.use_darkness2", Kind::Flag, "dwUseDarkness2"},
    {"print.method", Kind::Words, "dwPrintMethod", "transfer=0 direct=1"},
    {"print.ribbon_saver", Kind::Flag, "dwRibbonSaver"},
    {"print.model", Kind::Text, "szModelCode"},
    {"print.copies", Kind::Number, "", "", 1, 32767},
    {"print.collate", Kind::Flag, ""},
    {"print.crop", Kind::Flag, "bCropToContent"},
    {"print.setup_once", Kind::Flag, "dwSetupOnFirstPageOnly"},
    {"print.both_sides", Kind::Flag, "bTopSideSameAsBottom"},

    {"colour.mode", Kind::Words, "dwColorMode", "one=1 two=2"},
    {"colour.highlight", Kind::Color, "crHighlightColor"},
    {"colour.tolerance", Kind::Percent, "nColorTolerance", "", 0, 100},
    {"colour.ditherer", Kind::Words, "wDitherer", kDithererWords},
    {"colour.ditherer_parameter", Kind::Number, "byDitherParam", "", 0, 255},
    {"colour.threshold", Kind::Number, "byDitherParam", "", 0, 255},

    {"cut.enabled", Kind::Flag, "dwCut1Enabled"},
    {"cut.mode", Kind::Words, "dwCut1Mode", "job-end=0 each-label=1 count=2"},
    {"cut.count", Kind::Number, "nCut1Count", "", 0, 9998},
    {"cut.value1", Kind::Length, "nCut1Value1"},
    {"cut.value2", Kind::Length, "nCut1Value2"},
    {"cut.at_job_end", Kind::Flag, "dwCut1AtJobEnd"},

#define BLOCK(k)                                        \
  {"blocks." #k ".kind", Kind::Words, "wCustomType" #k, \
   "none=0 file=1 escaped=2 plain=3 inline=4"},         \
  {                                                     \
    "blocks." #k ".text", Kind::Text, "szCustomText" #k \
  }
    BLOCK(0),
    BLOCK(1),
    BLOCK(2),
    BLOCK(3),
    BLOCK(4),
    BLOCK(5),
    BLOCK(6),
    BLOCK(7),
#undef BLOCK
};

}  // namespace

std::span<const SettingKey> SettingKeys() { return kKeys; }

const OemDevField& FieldOfKey(const SettingKey& key) {
  for (const OemDevField& field : OemDevFields()) {
    if (field.name == key.field) return field;
  }
  throw HostError(kExitInternal, "The record has no field " + std::string(key.field));
}

const SettingKey* KeyOf(const OemDevField& field) {
  for (const SettingKey& key : kKeys) {
    if (key.field == field.name) return &key;
  }
  return nullptr;
}

std::string NameOf(const OemDevField& field) {
  const SettingKey* key = KeyOf(field);
  return key != nullptr ? std::string(key->name) : "devmode." + std::string(field.name);
}

std::optional<std::string> WordOf(const SettingKey& key, std::int64_t value) {
  std::istringstream pairs{std::string(key.words)};
  for (std::string pair; pairs >> pair;) {
    const std::size_t equals = pair.find('=');
    if (std::stoll(pair.substr(equals + 1)) == value) return '"' + pair.substr(0, equals) + '"';
  }
  return std::nullopt;
}
