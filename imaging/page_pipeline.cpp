#include "imaging/page_pipeline.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "commands/page_commands.h"
#include "config/log.h"
#include "imaging/bitmap_owner.h"
#include "imaging/image_emission.h"
#include "platform/memory.h"

namespace {

// One page in the pipeline.
struct Page {
  SURFOBJ* surface;
  PDEVOBJ device;
  COemPDEV* state;
  OEMDEV* devmode;
  std::shared_ptr<const void> buffer = nullptr;  // may still be read by captured
  BitmapOwner captured = nullptr;                // may still be read by placed
  BitmapOwner placed = nullptr;                  // with borders, turned; null if it needed neither

  Gdiplus::Bitmap* Bitmap() const { return placed != nullptr ? placed.get() : captured.get(); }
};

// A driver may leave out the last rows of a page. Missing rows are paper: white.
bool CompleteBuffer(COemPDEV& state, std::uint64_t neededBytes) {
  if (state.dwBitmapBufferSize >= neededBytes) return true;
  if (neededBytes > std::numeric_limits<DWORD>::max()) return false;
  const DWORD capturedBytes = state.dwBitmapBufferSize;
  if (!state.GrowPageBuffer(static_cast<DWORD>(neededBytes))) return false;
  std::memset(state.pBitmapBuffer + capturedBytes, 0xFF, neededBytes - capturedBytes);
  return true;
}

bool CopyPage(Page& page) {
  const UINT width = static_cast<UINT>(page.state->bmiPage.biWidth);
  const UINT height = static_cast<UINT>(page.state->bmiPage.biHeight);
  BitmapOwner bitmap =
      MakeBitmap(width, height, PixelFormat24bppRGB, WTEXT("pBmpBuffer24BPP_Orig"));
  if (bitmap == nullptr) return false;
  const auto strideBytes = static_cast<std::uint64_t>(StrideBytes(width));
  if (!CompleteBuffer(*page.state, strideBytes * height)) return false;
  BitmapHelper::Copy24BPPBufferToBitmap(page.state->pBitmapBuffer, static_cast<INT>(width),
                                        static_cast<INT>(height), bitmap.get());
  page.buffer = page.state->TakePage();
  SaveStage(*page.state, bitmap.get(), WTEXT("a_OriginalBuffer"));
  page.captured = std::move(bitmap);
  return true;
}

// Draws pixel for pixel, whatever resolutions the two bitmaps have.
void DrawWhole(Gdiplus::Graphics& graphics, Gdiplus::Bitmap* bitmap, INT x, INT y) {
  const INT width = static_cast<INT>(bitmap->GetWidth());
  const INT height = static_cast<INT>(bitmap->GetHeight());
  graphics.DrawImage(bitmap, Gdiplus::Rect(x, y, width, height), 0, 0, width, height,
                     Gdiplus::UnitPixel);
}

// The bands hold the printable area only: moves it to its place on the paper.
bool AddBorders(Page& page) {
  const INT offsetX = page.state->gdiPhysOffsetX;
  const INT offsetY = page.state->gdiPhysOffsetY;
  if (offsetX == 0 && offsetY == 0) return true;
  const INT width = static_cast<INT>(page.Bitmap()->GetWidth());
  const INT height = static_cast<INT>(page.Bitmap()->GetHeight());
  BitmapOwner bordered =
      MakeBitmap(width, height, PixelFormat24bppRGB, WTEXT("pBmpBuffer24BPP_NonprintableBorders"));
  if (bordered == nullptr) return false;
  if (const GraphicsOwner graphics = DrawOn(bordered.get())) {
    graphics->Clear(kOpaqueWhite);
    DrawWhole(*graphics, page.Bitmap(), offsetX, offsetY);
  }
  SaveStage(*page.state, bordered.get(), WTEXT("b_NonprintableBorders"));
  page.placed = std::move(bordered);
  return true;
}

// A landscape page is turned 90 degrees clockwise: (x, y) lands at (height - 1 - y, x). GDI+ turns
// a whole bitmap exactly, which it does not promise of drawing under a rotated transform.
bool CorrectOrientation(Page& page) {
  if (page.device->pPublicDM->dmOrientation == DMORIENT_PORTRAIT) return true;
  const UINT width = page.Bitmap()->GetWidth();
  const UINT height = page.Bitmap()->GetHeight();
  BitmapOwner turned =
      MakeBitmap(height, width, PixelFormat24bppRGB, WTEXT("pBmpBuffer24BPP_Orientation"));
  if (turned == nullptr || turned->RotateFlip(Gdiplus::Rotate270FlipNone) != Gdiplus::Ok) {
    return false;
  }
  GraphicsOwner graphics = DrawOn(turned.get());
  if (graphics == nullptr) return false;
  graphics->Clear(kOpaqueWhite);
  DrawWhole(*graphics, page.Bitmap(), 0, 0);
  graphics.reset();
  if (turned->RotateFlip(Gdiplus::Rotate90FlipNone) != Gdiplus::Ok) return false;
  SaveStage(*page.state, turned.get(), WTEXT("c_CorrectedOrientation"));
  page.placed = std::move(turned);
  return true;
}

// The 1-bit image of a 24-bit one that is already black and white. Null without memory: a new
// bitmap is black, so a conversion that failed would print a black page.
BitmapOwner ReduceToOneBit(const Page& page, Gdiplus::Bitmap* source, LPCWSTR name, LPCWSTR stage) {
  BitmapOwner oneBit =
      MakeBitmap(source->GetWidth(), source->GetHeight(), PixelFormat1bppIndexed, name);
  if (oneBit == nullptr) return nullptr;
  if (BitmapHelper::GetMonochromeImage1BPP(source, oneBit.get()) == 0) return nullptr;
  SaveStage(*page.state, oneBit.get(), stage);
  return oneBit;
}

INT SendOneColor(const Page& page) {
  const BitmapOwner dithered(BitmapRasterizer::Dither(
      page.Bitmap(), eBitmapDitherer{page.devmode->wDitherer}, page.devmode->byDitherParam));
  if (dithered == nullptr) return 0;
  SaveStage(*page.state, dithered.get(), WTEXT("d_1C_Background24BPP"));
  const BitmapOwner oneBit =
      ReduceToOneBit(page, dithered.get(), WTEXT("pMonochrome1BPP"), WTEXT("e_1C_Background1BPP"));
  if (oneBit == nullptr) return 0;
  return SendImageToPrinter(page.surface, oneBit.get(), nullptr, false, false);
}

Gdiplus::ARGB OpaqueColor(COLORREF color) {
  const DWORD red = color & 0xFF;
  const DWORD green = color >> 8 & 0xFF;
  const DWORD blue = color >> 16 & 0xFF;
  return 0xFF000000 | red << 16 | green << 8 | blue;
}

INT SendTwoColors(const Page& page) {
  Gdiplus::Bitmap* backgroundOut = nullptr;
  Gdiplus::Bitmap* highlightOut = nullptr;
  const INT split =
      BitmapHelper::SplitImage(page.Bitmap(), OpaqueColor(page.devmode->crHighlightColor),
                               static_cast<double>(page.devmode->nColorTolerance) / 100.0,
                               eBitmapDitherer{page.devmode->wDitherer},
                               page.devmode->byDitherParam, &backgroundOut, &highlightOut);
  const BitmapOwner background24(backgroundOut);
  const BitmapOwner highlight24(highlightOut);
  if (split == 0) return 0;
  SaveStage(*page.state, background24.get(), WTEXT("d_2C_Background24BPP"));
  SaveStage(*page.state, highlight24.get(), WTEXT("d_2C_Highlight24BPP"));

  BitmapOwner background = ReduceToOneBit(page, background24.get(), WTEXT("pNewBackground1BPP"),
                                          WTEXT("e_2C_Background1BPP"));
  if (background == nullptr) return 0;
  BitmapOwner highlight = ReduceToOneBit(page, highlight24.get(), WTEXT("pNewHighlight1BPP"),
                                         WTEXT("e_2C_Highlight1BPP"));
  if (highlight == nullptr) return 0;

  const bool backgroundEmpty = BitmapHelper::GetFirstContentColumn1BPP(background.get()) < 0;
  const bool highlightEmpty = BitmapHelper::GetFirstContentColumn1BPP(highlight.get()) < 0;
  const INT result = SendImageToPrinter(page.surface, background.get(), highlight.get(),
                                        backgroundEmpty, highlightEmpty);
  // The printer still holds the last image with content.
  if (!backgroundEmpty) page.state->KeepBackground(background.release());
  if (!highlightEmpty) page.state->KeepHighlight(highlight.release());
  return result;
}

// A colour mode other than 1 and 2 prints no image.
INT SendImages(const Page& page) {
  switch (page.devmode->dwColorMode) {
    case 1:
      return SendOneColor(page);
    case 2:
      return SendTwoColors(page);
    default:
      return 1;
  }
}

DWORD Clamp(DWORD tenthsMm, DWORD minimumUm, DWORD maximumUm) {
  if (tenthsMm > maximumUm / 100) return maximumUm / 100;
  if (tenthsMm < minimumUm / 100) return minimumUm / 100;
  return tenthsMm;
}

void PrepareComingPage(const Page& page) {
  const DEVMODEW& publicDevmode = *page.device->pPublicDM;
  DWORD width = static_cast<DWORD>(LONG{publicDevmode.dmPaperWidth});
  DWORD length = static_cast<DWORD>(LONG{publicDevmode.dmPaperLength});
  const Config* config = nullptr;
  if (CConfigParser::Load(page.device->hPrinter, &config, g_configsCache, g_logClient)) {
    width = Clamp(width, config->dwMinLabelWidth, config->dwMaxLabelWidth);
    length = Clamp(length, config->dwMinLabelLength, config->dwMaxLabelLength);
  }
  page.state->strPageSetup =
      BuildPageCommands(page.state->job, *page.devmode, width, length,
                        static_cast<LONG>(page.state->dwPageCount), page.devmode->dwColorMode);
  page.state->dmPrivateCopy = *page.devmode;
  page.state->dmPublicCopy = publicDevmode;
}

INT ProcessPage(Page& page) {
  if (page.state->pBitmapBuffer == nullptr) {
    PrepareComingPage(page);
    LogTrace(kRendering, "ProcessImageData END (no bitmap)");
    return 1;
  }
  if (!CopyPage(page) || !AddBorders(page) || !CorrectOrientation(page)) return 0;
  const INT result = SendImages(page);
  page.placed.reset();
  page.captured.reset();
  page.buffer.reset();
  PrepareComingPage(page);
  LogTrace(kRendering, "ProcessImageData END (%d)", result);
  return result;
}

}  // namespace

INT ProcessImageData(SURFOBJ* pso) {
  LogTrace(kRendering, "ProcessImageData BEGIN");
  const PDEVOBJ device = DeviceOf(pso);
  COemPDEV* state = DeviceState(device);
  if (state == nullptr || device->pOEMDM == nullptr || device->pPublicDM == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    LogTrace(kRendering, "ProcessImageData END (%d)", 0);
    return 0;
  }
  Page page{pso, device, state, static_cast<OEMDEV*>(device->pOEMDM)};
  try {
    return ProcessPage(page);
  } catch (const std::bad_alloc&) {
    LogTrace(kRendering, "ProcessImageData END (%d)", 0);
    return 0;
  }
}
