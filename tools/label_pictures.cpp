#include "tools/label_pictures.h"

#include "common/error.h"
#include "viewer/drawing/job_view.h"

namespace {

viewer::Colour InkOf(const OEMDEV& devmode) {
  const COLORREF color = devmode.crHighlightColor;
  return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
          static_cast<std::uint8_t>(color >> 16)};
}

}  // namespace

void DrawLabels(std::string_view job, const PageSettings& page, const OEMDEV& devmode,
                const std::function<void(const std::string& png)>& each) {
  const int pageTurn = page.landscape ? 90 : 0;  // landscape pages are printed turned clockwise
  viewer::JobView view(job, page.dpi);
  while (const std::optional<viewer::DrawnLabel> drawn = view.Next()) {
    if (!drawn->picture) {
      throw CommandError(kExitSettings, "The label cannot be drawn: " + drawn->why);
    }
    each(viewer::PicturePng(viewer::Turn(*drawn->picture, (drawn->turn + pageTurn) % 360), page.dpi,
                            InkOf(devmode)));
  }
}
