#include "printing/label_paper.h"

#include <cups/cups.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int kUmPerPoint = 353;

bool IsWithinPoint(std::int32_t um, std::int32_t other) {
  return std::abs(um - other) <= kUmPerPoint;
}

std::string SizeText(double width, double height, int dpi) {
  return FormatMm(width * 25.4 / dpi) + " x " + FormatMm(height * 25.4 / dpi) + " mm";
}

}  // namespace

std::optional<LabelPaper> PaperOfName(const std::string& name) {
  const bool isCustom = name.starts_with("Custom.");
  const std::string size = isCustom ? name.substr(7) : name;
  if (!size.empty() && size.find_first_not_of("0123456789.x") == size.npos) {
    if (!isCustom) return std::nullopt;
  } else if (size.find_first_not_of("0123456789.xmcinu") == size.npos) {
    return LabelPaper{ParsePaperSize(size, "The label size"), false};
  }
  const pwg_media_t* media = isCustom ? pwgMediaForPPD(name.c_str()) : pwgMediaForPWG(name.c_str());
  if (media == nullptr) return std::nullopt;
  return LabelPaper{{media->width * 10, media->length * 10}, isCustom};
}

PaperSize LabelFor(const LabelPaper& paper, const PageImage& page, int dpi, bool landscape) {
  if (!paper.rounded) return paper.size;
  const std::optional<PaperSize> size = PaperFor(page, dpi, landscape);
  const bool isTheSame = size && IsWithinPoint(size->widthUm, paper.size.widthUm) &&
                         IsWithinPoint(size->lengthUm, paper.size.lengthUm);
  return isTheSame ? *size : paper.size;
}

void SetPaper(Settings& settings, const PaperSize& size) {
  settings.Set("paper.size",
               std::to_string(size.widthUm) + "x" + std::to_string(size.lengthUm) + "um");
}

bool IsLandscape(int orientation) {
  return orientation == IPP_ORIENT_LANDSCAPE || orientation == IPP_ORIENT_REVERSE_LANDSCAPE;
}

void SetOrientation(Settings& settings, int orientation) {
  if (IsLandscape(orientation)) settings.Set("paper.orientation", "landscape");
  if (orientation == IPP_ORIENT_REVERSE_LANDSCAPE || orientation == IPP_ORIENT_REVERSE_PORTRAIT) {
    settings.Set("paper.rotation", "180");
  }
}

void CropToLabel(PageImage& page, const DevicePage& label, const std::string& name,
                 bool mayBeSmaller) {
  const int pointDots = static_cast<int>(std::ceil(label.dpi / 72.0));
  const auto fits = [&](std::uint32_t pageDots, LONG labelDots) {
    const std::int64_t over = std::int64_t{pageDots} - labelDots;
    return over <= pointDots && (mayBeSmaller || over >= -pointDots);
  };
  if (!fits(page.widthPx, label.physicalWidthPx) || !fits(page.heightPx, label.physicalHeightPx)) {
    throw HostError(kExitSettings,
                    name + " is " + SizeText(page.widthPx, page.heightPx, label.dpi) +
                        ", the label is " +
                        SizeText(label.physicalWidthPx, label.physicalHeightPx, label.dpi),
                    "choose the page's size as paper size in the print dialog, or the other "
                    "orientation, or make the page as large as the label");
  }
  TrimPage(page, std::min<std::uint32_t>(page.widthPx, label.physicalWidthPx),
           std::min<std::uint32_t>(page.heightPx, label.physicalHeightPx));
}
