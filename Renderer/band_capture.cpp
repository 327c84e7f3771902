#include "Renderer/band_capture.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "config/block_owner.h"
#include "config/log.h"
#include "platform/memory.h"
#include "platform/palette.h"

namespace {

constexpr BYTE kWhite = 0xFF;
constexpr LONG kBytesPerPixel = 3;
constexpr std::uint64_t kMostBytes = std::numeric_limits<DWORD>::max();

bool BuildOneBitTable(COemPDEV& state) {
  auto* table = static_cast<RGBQUAD*>(LocalAlloc(LPTR, 2 * sizeof(RGBQUAD)));
  if (table == nullptr) return false;
  table[1] = {0xFF, 0xFF, 0xFF, 0};
  return state.SetColorTable(table, 2);
}

bool BuildPaletteTable(COemPDEV& state, LONG entries) {
  std::unique_ptr<RGBQUAD, LocalFreer> table(
      static_cast<RGBQUAD*>(LocalAlloc(LPTR, entries * sizeof(RGBQUAD))));
  const std::unique_ptr<PALETTEENTRY, LocalFreer> palette(
      static_cast<PALETTEENTRY*>(LocalAlloc(LPTR, entries * sizeof(PALETTEENTRY))));
  if (table == nullptr || palette == nullptr) return false;
  if (GetPaletteEntries(state.hDevicePalette, 0, static_cast<UINT>(entries), palette.get()) == 0) {
    return false;
  }
  for (LONG i = 0; i < entries; ++i) {
    const PALETTEENTRY& entry = palette.get()[i];
    table.get()[i] = {entry.peBlue, entry.peGreen, entry.peRed, 0};
  }
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
    const bool built =
        format == 1 ? BuildOneBitTable(state) : BuildPaletteTable(state, known.entries);
    if (built) return true;
    state.SetColorTable(nullptr, known.entries);
    LogError(kNoCategory, "ImageProcessing END (E_FAIL, error handling %s)", known.name);
    return false;
  }
  return true;
}

// Grows the page buffer by bytes, which the caller fills; *askedBytes is the size that was asked
// for. Without memory the page is given up, whether or not it held a band already.
bool GrowBuffer(COemPDEV& state, std::uint64_t bytes, DWORD* askedBytes) {
  const DWORD oldSize = state.pBitmapBuffer == nullptr ? 0 : state.dwBitmapBufferSize;
  const std::uint64_t newSize = oldSize + bytes;
  *askedBytes = static_cast<DWORD>(newSize);
  if (bytes <= kMostBytes && newSize <= kMostBytes && state.GrowPageBuffer(*askedBytes))
    return true;
  LogError(kNoCategory, "LocalAlloc failed!\n");
  state.ResetPage();
  return false;
}

// A size of a page that cannot exist is asked for as one that no buffer has.
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
  DWORD askedBytes = 0;
  if (!GrowBuffer(state, PageBytes(widthPx, band.header->biHeight), &askedBytes)) {
    LogError(kNoCategory, "ImageProcessing END (E_FAIL, no memory for target bitmap (%d bytes)",
             static_cast<LONG>(askedBytes));
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

// The first band that gets this far gives the page its width.
bool SizePage(COemPDEV& state, const Band& band) {
  if (band.orientation == DMORIENT_LANDSCAPE) return StartLandscapePage(state, band);
  state.bmiPage.biWidth = band.header->biWidth;
  return true;
}

// Writes the band's rows beside those of the bands to its right. What reaches beyond the end of a
// row, the row padding of the strip at the right edge included, or beyond the buffer, is dropped.
void FillIn(COemPDEV& state, const Band& band) {
  const std::int64_t targetStride = StrideBytes(state.bmiPage.biWidth);
  const std::int64_t bandStride = StrideBytes(band.header->biWidth);
  const std::int64_t start = std::int64_t{kBytesPerPixel} * band.offset.x;
  const std::int64_t skipped = std::max<std::int64_t>(-start, 0);  // of each band row
  const std::int64_t target = std::max<std::int64_t>(start, 0);    // in each page row
  const std::int64_t length = std::min(bandStride - skipped, targetStride - target);
  const std::int64_t rows =
      std::min<std::int64_t>(band.header->biHeight, state.dwBitmapBufferSize / targetStride);
  if (length <= 0) return;
  const std::int64_t available = band.header->biSizeImage != 0
                                     ? std::int64_t{band.header->biSizeImage}
                                     : bandStride * std::max<std::int64_t>(rows, 0);
  for (std::int64_t row = 0; row < rows; ++row) {
    BYTE* to = state.pBitmapBuffer + row * targetStride + target;
    if (band.blank) {
      std::memset(to, kWhite, length);
      continue;
    }
    const std::int64_t from = row * bandStride + skipped;
    const std::int64_t count = std::min(length, available - from);
    if (count <= 0) return;
    std::memcpy(to, band.pixels + from, count);
  }
}

bool Append(COemPDEV& state, const Band& band) {
  const DWORD position = state.pBitmapBuffer == nullptr ? 0 : state.dwBitmapBufferSize;
  const DWORD bytes = band.header->biSizeImage;
  const auto sum = [](auto a, auto b) { return static_cast<DWORD>(a) + static_cast<DWORD>(b); };
  state.bmiPage.biHeight = static_cast<LONG>(sum(state.bmiPage.biHeight, band.header->biHeight));
  state.bmiPage.biSizeImage = sum(state.bmiPage.biSizeImage, bytes);
  DWORD askedBytes = 0;
  if (!GrowBuffer(state, bytes, &askedBytes)) {
    LogError(kRendering, "ImageProcessing END (E_FAIL, error growing bitmap buffer)");
    return false;
  }
  if (bytes == 0) return true;
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
