#include "vlx_shared/devmode.h"

#include <algorithm>
#include <cstring>

#include "config/oemdev_fields.h"
#include "config/vlx_shared.h"

namespace {

// Fields that select one of a few things. Other fields are numbers, which the commands send as they
// are or ignore.
struct Range {
  std::size_t offset;
  DWORD least;
  DWORD most;
};
constexpr Range kRanges[] = {
    {offsetof(OEMDEV, dwSensorType), 0, 5},
    {offsetof(OEMDEV, dwRotation), 0, 3},
    {offsetof(OEMDEV, dwColorMode), 1, 2},
};

void CopyField(OEMDEV& to, const OEMDEV& from, std::size_t offset, std::size_t size) {
  std::memcpy(reinterpret_cast<BYTE*>(&to) + offset, reinterpret_cast<const BYTE*>(&from) + offset,
              size);
}

void RepairTexts(OEMDEV& devmode, const OEMDEV& defaults) {
  for (const OemDevField& field : OemDevFields()) {
    if (field.kind != OemDevKind::Text) continue;
    const char* text = reinterpret_cast<const char*>(&devmode) + field.offset;
    if (std::memchr(text, '\0', field.size) == nullptr) {
      CopyField(devmode, defaults, field.offset, field.size);
    }
  }
}

void RepairRanges(OEMDEV& devmode, const OEMDEV& defaults) {
  for (const Range& range : kRanges) {
    DWORD value;
    std::memcpy(&value, reinterpret_cast<const BYTE*>(&devmode) + range.offset, sizeof value);
    if (value < range.least || value > range.most) {
      CopyField(devmode, defaults, range.offset, sizeof value);
    }
  }
  if (devmode.wDitherer >= std::size(kDithererNames)) devmode.wDitherer = defaults.wDitherer;
}

}  // namespace

OEMDEV DefaultDevMode() {
  OEMDEV devmode = {};
  devmode.header = {sizeof(OEMDEV), kOemDevSignature, kOemDevVersion};
  devmode.dwSensorType = 1;
  devmode.dwGapDistance = 3000;
  devmode.dwSpeed = 100;
  devmode.dwColorMode = 1;
  devmode.crHighlightColor = 0x000000FF;  // red
  devmode.nColorTolerance = 25;
  devmode.wDitherer = eFloydSteinberg;
  return devmode;
}

bool AdoptDevMode(const void* record, std::size_t size, OEMDEV* result) {
  OEM_DMEXTRAHEADER header;
  if (record == nullptr || size < sizeof header) return false;
  std::memcpy(&header, record, sizeof header);
  if (header.dwSignature != kOemDevSignature || header.dwSize < sizeof header) return false;

  const OEMDEV defaults = DefaultDevMode();
  OEMDEV adopted = defaults;
  std::memcpy(&adopted, record, std::min({size, std::size_t{header.dwSize}, sizeof adopted}));
  adopted.header = defaults.header;
  RepairTexts(adopted, defaults);
  RepairRanges(adopted, defaults);
  *result = adopted;
  return true;
}

void ConvertEp2Qor(OEMDEV* devmode) {
  if (devmode == nullptr) return;
  const OEM_DMEXTRAHEADER& header = devmode->header;
  // A record without the signature has an unknown layout; a current one needs no conversion.
  if (header.dwSignature != kOemDevSignature) return;
  if (header.dwSize == sizeof(OEMDEV) && header.dwVersion == kOemDevVersion) return;
  OEMDEV adopted;
  if (AdoptDevMode(devmode, sizeof *devmode, &adopted)) *devmode = adopted;
}
