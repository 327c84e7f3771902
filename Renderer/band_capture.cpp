#include "Renderer/band_capture.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "config/block_owner.h"
#include "config/log.h"
#include "platform/memory.h"
#include "platform/palette.h"

namespace {

constexpr BYTE kWhite = 0xFF;
constexpr LONG kBytesPerPixel = 3;
constexpr std::uint64_t kMostBytes = std::numeric_limits<DWORD>::max();

template <typename Entry>
LocalBlock<Entry> Allocate(LONG entries) {
  return LocalBlock<Entry>(static_cast<Entry*>(LocalAlloc(LPTR, entries * sizeof(Entry))));
}

bool CopyPalette(HPALETTE from, RGBQUAD* table, LONG entries) {
  const LocalBlock<PALETTEENTRY> palette = Allocate<PALETTEENTRY>(entries);
  if (palette == nullptr) return false;
  if (GetPaletteEntries(from, 0, static_cast<UINT>(entries), palette.get()) == 0) return false;
  for (LONG i = 0; i < entries; ++i) {
    const PALETTEENTRY& entry = palette.get()[i];
    table[i] = {entry.peBlue, entry.peGreen, entry.peRed, 0};
  }
  return true;
}

// Black and white for 1-bit bands, the device's palette for others; the last entry is white.
bool BuildTable(COemPDEV& state, DWORD format, LONG entries) {
  LocalBlock<RGBQUAD> table = Allocate<RGBQUAD>(entries);
  if (table == nullptr) return false;
  if (format != 1 && !CopyPalette(state.hDevicePalette, table.get(), entries)) return false;
  table.get()[entries - 1] = {0xFF, 0xFF, 0xFF, 0};
  return state.SetColorTable(table.release(), entries);
}

// The colour table of a page whose bands are below 24 bits.
bool BuildColorTable(COemPDEV& state, DWORD format) {
  struct Format {
    DWORD code;
    LONG entries;
    const char* name;
  };
  constexpr Format kFormats[] = {{1, 2, "BMF_1BPP"}, {2, 16, "BMF_4BPP"}, {3, 256, "BMF_8BPP"}};
  for (const Format& known : kFormats) {
    if (known.code != format) continue;
    if (BuildTable(state, format, known.entries)) return true;
    state.SetColorTable(nullptr, known.entries);
    LogError(kNoCategory, "ImageProcessing END (E_FAIL, error handling %s)", known.name);
    return false;
  }
  return true;
}

// Grows the page buffer; the caller fills the new bytes. Without memory the page is dropped,
// whether or not it already held a band.
bool GrowBuffer(COemPDEV& state, std::uint64_t bytes) {
  const DWORD oldSize = state.pBitmapBuffer == nullptr ? 0 : state.dwBitmapBufferSize;
  if (bytes <= kMostBytes - oldSize && state.GrowPageBuffer(oldSize + static_cast<DWORD>(bytes))) {
    return true;
  }
  LogError(kNoCategory, "LocalAlloc failed!\n");
  state.ResetPage();
  return false;
}

// An impossible page size counts as one that no buffer can hold.
std::uint64_t PageBytes(std::int64_t widthPx, LONG heightPx) {
  if (widthPx <= 0 || heightPx <= 0 || widthPx > std::numeric_limits<LONG>::max()) {
    return ~std::uint64_t{0};
  }
  return static_cast<std::uint64_t>(StrideBytes(widthPx)) * static_cast<std::uint64_t>(heightPx);
}

bool StartLandscapePage(COemPDEV& state, const Band& band) {
  const std::int64_t widthPx = std::int64_t{band.offset.x} + band.header->biWidth;
  state.bmiPage.biWidth = static_cast<LONG>(widthPx);
  state.bmiPage.biHeight = band.header->biHeight;
  const std::uint64_t bytes = PageBytes(widthPx, band.header->biHeight);
  if (!GrowBuffer(state, bytes)) {
    LogError(kNoCategory, "ImageProcessing END (E_FAIL, no memory for target bitmap (%d bytes)",
             static_cast<LONG>(bytes));
    SetLastError(ERROR_OUTOFMEMORY);
    return false;
  }
  std::memset(state.pBitmapBuffer, kWhite, state.dwBitmapBufferSize);
  return true;
}

bool StartPage(COemPDEV& state, const Band& band) {
  const BITMAPINFOHEADER& header = *band.header;
  state.bPageStarted = TRUE;
  state.bmiPage.biSize = header.biSize;
  state.bmiPage.biPlanes = header.biPlanes;
  state.bmiPage.biBitCount = header.biBitCount;
  state.bmiPage.biCompression = header.biCompression;
  state.bmiPage.biXPelsPerMeter = header.biXPelsPerMeter;
  state.bmiPage.biYPelsPerMeter = header.biYPelsPerMeter;
  state.bmiPage.biClrUsed = header.biClrUsed;
  state.bmiPage.biClrImportant = header.biClrImportant;
  state.bHasColorTable = band.format != 5;
  return BuildColorTable(state, band.format);
}

// The first band that can be captured gives the page its width.
bool SizePage(COemPDEV& state, const Band& band) {
  if (band.orientation == DMORIENT_LANDSCAPE) return StartLandscapePage(state, band);
  state.bmiPage.biWidth = band.header->biWidth;
  return true;
}

// Writes the strip's rows at its x offset. Bytes beyond the end of a page row, such as the row
// padding of the strip at the right edge, and bytes beyond the buffer are dropped.
void FillIn(COemPDEV& state, const Band& band) {
  const std::int64_t targetStride = StrideBytes(state.bmiPage.biWidth);
  const std::int64_t bandStride = StrideBytes(band.header->biWidth);
  const std::int64_t start = std::int64_t{kBytesPerPixel} * band.offset.x;
  const std::int64_t skipped = std::max<std::int64_t>(-start, 0);  // of each band row
  const std::int64_t target = std::max<std::int64_t>(start, 0);    // in each page row
  const std::int64_t length = std::min(bandStride - skipped, targetStride - target);
  const std::int64_t rows =
      std::clamp<std::int64_t>(band.header->biHeight, 0, state.dwBitmapBufferSize / targetStride);
  const std::int64_t available =
      band.header->biSizeImage != 0 ? std::int64_t{band.header->biSizeImage} : bandStride * rows;
  for (std::int64_t row = 0; row < rows; ++row) {
    const std::int64_t from = row * bandStride + skipped;
    const std::int64_t count = band.blank ? length : std::min(length, available - from);
    if (count < 1) return;
    BYTE* to = state.pBitmapBuffer + row * targetStride + target;
    if (band.blank) {
      std::memset(to, kWhite, count);
    } else {
      std::memcpy(to, band.pixels + from, count);
    }
  }
}

bool Append(COemPDEV& state, const Band& band) {
  const DWORD position = state.pBitmapBuffer == nullptr ? 0 : state.dwBitmapBufferSize;
  const DWORD bytes = band.header->biSizeImage;
  const auto sum = [](auto a, auto b) { return static_cast<DWORD>(a) + static_cast<DWORD>(b); };
  state.bmiPage.biHeight = static_cast<LONG>(sum(state.bmiPage.biHeight, band.header->biHeight));
  state.bmiPage.biSizeImage = sum(state.bmiPage.biSizeImage, bytes);
  if (!GrowBuffer(state, bytes)) {
    LogError(kRendering, "ImageProcessing END (E_FAIL, error growing bitmap buffer)");
    return false;
  }
  if (band.blank) {
    std::memset(state.pBitmapBuffer + position, kWhite, bytes);
  } else {
    std::memcpy(state.pBitmapBuffer + position, band.pixels, bytes);
  }
  return true;
}

}  // namespace

bool CaptureBand(COemPDEV& state, const Band& band) {
  if (!state.bPageStarted && !StartPage(state, band)) return false;
  if (state.pBitmapBuffer == nullptr && !SizePage(state, band)) return false;
  if (band.orientation != DMORIENT_LANDSCAPE) return Append(state, band);
  if (state.bmiPage.biWidth > 0) FillIn(state, band);
  return true;
}
