#include "platform/palette.h"

#include <algorithm>
#include <new>
#include <vector>

#include "platform/extensions.h"
#include "platform/linux/system/handle_table.h"

namespace {

constexpr ULONG kMostColors = 256;

HandleTable<std::vector<PALETTEENTRY>>& Palettes() {
  static HandleTable<std::vector<PALETTEENTRY>> table(0x100000);
  return table;
}

}  // namespace

HPALETTE EngCreatePalette(ULONG iMode, ULONG cColors, ULONG* pulColors, FLONG, FLONG, FLONG) try {
  const bool indexed = iMode == PAL_INDEXED;
  if (!indexed && iMode != PAL_BITFIELDS && iMode != PAL_RGB && iMode != PAL_BGR) return nullptr;
  if (indexed && (cColors == 0 || cColors > kMostColors || pulColors == nullptr)) return nullptr;
  if (PlatformShouldFail("EngCreatePalette")) return nullptr;
  std::vector<PALETTEENTRY> entries;
  for (ULONG i = 0; indexed && i < cColors; ++i) {
    const ULONG color = pulColors[i];
    entries.push_back({static_cast<BYTE>(color), static_cast<BYTE>(color >> 8),
                       static_cast<BYTE>(color >> 16), 0});
  }
  return Palettes().Add(std::move(entries));
} catch (const std::bad_alloc&) {
  return nullptr;
}

BOOL EngDeletePalette(HPALETTE hPal) { return Palettes().Remove(hPal); }

UINT GetPaletteEntries(HPALETTE hPal, UINT iStart, UINT cEntries, PALETTEENTRY* pPalEntries) {
  const auto palette = Palettes().Find(hPal);
  if (palette == nullptr || PlatformShouldFail("GetPaletteEntries")) return 0;
  const UINT size = static_cast<UINT>(palette->size());
  if (pPalEntries == nullptr) return size;
  const UINT count = iStart < size ? std::min(cEntries, size - iStart) : 0;
  std::copy_n(palette->begin() + (count == 0 ? 0 : iStart), count, pPalEntries);
  return count;
}
