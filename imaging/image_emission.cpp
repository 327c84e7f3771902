#include "imaging/image_emission.h"

#include <new>

#include "commands/custom_blocks.h"
#include "commands/image_commands.h"
#include "commands/job_stream.h"
#include "config/log.h"
#include "config/png_stream.h"
#include "imaging/crop.h"
#include "imaging/image_download.h"

namespace {

constexpr float kMillimetresPerInch = 25.4f;

// One page that is being written.
struct Emission {
  PDEVOBJ device;
  COemPDEV* state;
  OEMDEV* devmode;
  Gdiplus::Bitmap* background;
  Gdiplus::Bitmap* highlight;  // null in one-colour mode
  bool backgroundEmpty;
  CroppedImage usedBackground;
  CroppedImage usedHighlight;
  ComPtr<IStream> backgroundPng = {};
  ComPtr<IStream> highlightPng = {};
};

// Logs what is missing: the surface and the image, each with its line; if both are there, the first
// missing part of the device object.
bool ArgumentsComplete(SURFOBJ* pso, Gdiplus::Bitmap* pbmpBackground) {
  if (pso == nullptr) LogError(kNoCategory, "SendImageToPrinter: pso == NULL !!!");
  if (pbmpBackground == nullptr) {
    LogError(kNoCategory, "SendImageToPrinter: pbmpBackground == NULL !!!");
  }
  if (pso == nullptr || pbmpBackground == nullptr) return false;

  const PDEVOBJ device = DeviceOf(pso);
  const char* missing = device == nullptr            ? "pDevObj"
                        : device->pdevOEM == nullptr ? "pOemPDEV"
                        : device->pOEMDM == nullptr  ? "pOemDevMode"
                                                     : nullptr;
  if (missing == nullptr) return true;
  LogError(kNoCategory, "SendImageToPrinter: %s == NULL !!!", missing);
  return false;
}

void WriteFirstPageBlocks(const Emission& page) {
  if (page.devmode->wCustomType0 != kBlockInline) {
    SpoolWrite(page.device,
               WithLineEnd(ExpandCustomBlock(*page.devmode, 0, page.state->job.dwPageNumber)));
  }
  SpoolWrite(page.device, WithLineEnd(ExpandCustomBlock(*page.devmode, 2)));
  SpoolWrite(page.device, ComposeImageErase());
}

void CropImages(Emission& page) {
  page.usedBackground = CropToContent(page.background, page.devmode->dwRotation);
  if (page.usedBackground.copy != nullptr) {
    SaveStage(*page.state, page.usedBackground.used,
              page.highlight != nullptr ? WTEXT("f_2C_Background1BPP_Opt")
                                        : WTEXT("f_1C_Background1BPP_Opt"));
  }
  if (page.highlight == nullptr) return;
  const bool flaggedEmpty = page.usedHighlight.empty;
  page.usedHighlight = CropToContent(page.highlight, page.devmode->dwRotation);
  page.usedHighlight.empty |= flaggedEmpty;
  if (page.usedHighlight.copy != nullptr) {
    SaveStage(*page.state, page.usedHighlight.used, WTEXT("f_2C_Highlight1BPP_Opt"));
  }
}

bool SavePng(Gdiplus::Bitmap* bitmap, IStream* stream, const CLSID& encoder, const char* name) {
  if (bitmap->Save(stream, &encoder, nullptr) == Gdiplus::Ok) return true;
  LogError(kNoCategory, "SendImageToPrinter: %s->Save failed!!!", name);
  return false;
}

// Encodes the background twice, side by side: both sides of a folded label show the same.
bool EncodeBothSides(const Emission& page, const CLSID& encoder) {
  Gdiplus::Bitmap* used = page.usedBackground.used;
  const UINT width = used->GetWidth();
  const BitmapOwner doubled = MakeBitmap(2 * width, used->GetHeight(), PixelFormat24bppRGB,
                                         WTEXT("pTopSideSameAsBottomBitmap"));
  if (doubled == nullptr) return false;
  bool encoded = false;
  if (GraphicsOwner graphics = DrawOn(doubled.get())) {
    graphics->DrawImage(used, 0, 0);
    graphics->DrawImage(used, static_cast<INT>(width), 0);
    graphics.reset();
    encoded =
        SavePng(doubled.get(), page.backgroundPng.Get(), encoder, "pTopSideSameAsBottomBitmap");
  } else {
    LogError(kNoCategory,
             "SendImageToPrinter: Graphics::FromImage(pTopSideSameAsBottomBitmap) failed!!!");
  }
  SaveStage(*page.state, doubled.get(), WTEXT("g_1C_Background_TopSideSameAsBottom"));
  return encoded;
}

bool EncodeImages(Emission& page) {
  CLSID encoder;
  if (!FindPngEncoder(&encoder)) {
    LogError(kNoCategory, "SendImageToPrinter: GetCLSID for img/png failed");
    return false;
  }
  if (!CreatePngStream("pPngStream", " ", page.backgroundPng) ||
      !CreatePngStream("pPngStreamHighlight", "", page.highlightPng)) {
    return false;
  }
  // The option is for one-colour labels; a label with a highlight is encoded normally.
  if (page.devmode->bTopSideSameAsBottom && page.highlight == nullptr) {
    return EncodeBothSides(page, encoder);
  }
  bool encoded =
      SavePng(page.usedBackground.used, page.backgroundPng.Get(), encoder, "pUsedBackgroundBitmap");
  if (page.highlight != nullptr) {
    encoded &=
        SavePng(page.usedHighlight.used, page.highlightPng.Get(), encoder, "pUsedHighlightBitmap");
  }
  return encoded;
}

bool HoldsImage(Gdiplus::Bitmap* image, Gdiplus::Bitmap* kept) {
  return kept != nullptr && BitmapHelper::Are1BPPBitmapsEqual(image, kept) != 0;
}

// Downloads the images that the printer does not hold from an earlier page.
bool DownloadImages(const Emission& page) {
  if (page.highlight == nullptr) {
    return page.backgroundEmpty || WriteImageDownload(page.device, page.backgroundPng.Get(), "0");
  }
  const bool sendHighlight =
      !page.usedHighlight.empty && !HoldsImage(page.highlight, page.state->pPrevPageBitmap2);
  const bool sendBackground =
      !page.backgroundEmpty && !HoldsImage(page.background, page.state->pPrevPageBitmap1);
  if (sendHighlight && !WriteImageDownload(page.device, page.highlightPng.Get(), "0")) {
    return false;
  }
  return !sendBackground || WriteImageDownload(page.device, page.backgroundPng.Get(), "1");
}

float OffsetMm(const CroppedImage& image, SHORT resolutionDpi) {
  const float divisor = resolutionDpi > 1 ? static_cast<float>(resolutionDpi) : 1.0f;
  return static_cast<float>(image.offsetPx) * kMillimetresPerInch / divisor;
}

void WriteImageCommands(const Emission& page) {
  const DEVMODEW* publicDevmode = page.device->pPublicDM;
  if (publicDevmode == nullptr) return;
  const ImagePlacement placement = {
      .paperWidthTenthsMm = page.state->dmPublicCopy.dmPaperWidth,
      .paperLengthTenthsMm = page.state->dmPublicCopy.dmPaperLength,
      .backgroundOffsetMm = OffsetMm(page.usedBackground, publicDevmode->dmYResolution),
      .highlightOffsetMm = OffsetMm(page.usedHighlight, publicDevmode->dmYResolution),
      .colorMode = static_cast<LONG>(page.devmode->dwColorMode),
      .backgroundEmpty = page.backgroundEmpty,
      .highlightEmpty = page.usedHighlight.empty};
  SpoolWrite(page.device,
             page.state->strPageSetup +
                 ComposeImageCommands(page.state->job, page.state->dmPrivateCopy, placement));
}

// Writes the page. Returns whether all of it was written.
bool Emit(Emission& page) {
  if (page.state->dwPageCount == 1) WriteFirstPageBlocks(page);
  if (page.devmode->bCropToContent) CropImages(page);
  if (!EncodeImages(page) || !DownloadImages(page)) return false;
  WriteImageCommands(page);
  return true;
}

}  // namespace

INT SendImageToPrinter(SURFOBJ* pso, Gdiplus::Bitmap* pbmpBackground,
                       Gdiplus::Bitmap* pbmpHighlight, bool bBackgroundEmpty,
                       bool bHighlightEmpty) {
  LogTrace(kRendering, "SendImageToPrinter START");
  if (!ArgumentsComplete(pso, pbmpBackground)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const PDEVOBJ device = DeviceOf(pso);
  Emission page = {.device = device,
                   .state = DeviceState(device),
                   .devmode = static_cast<OEMDEV*>(device->pOEMDM),
                   .background = pbmpBackground,
                   .highlight = pbmpHighlight,
                   .backgroundEmpty = bBackgroundEmpty,
                   .usedBackground = {.used = pbmpBackground},
                   .usedHighlight = {.used = pbmpHighlight, .empty = bHighlightEmpty}};
  bool emitted = false;
  try {
    emitted = Emit(page);
  } catch (const std::bad_alloc&) {
    // The page fails like one whose image cannot be encoded.
  }
  LogTrace(kRendering, "SendImageToPrinter END (%d)", emitted ? 1 : 0);
  return 1;
}
