// Lays a page image on the paper and cuts out what the printer can reach.
#pragma once

#include <optional>
#include <string>

#include "host/error.h"
#include "host/pages/page_image.h"
#include "host/settings/length.h"
#include "platform/types.h"

// A device's page in pixels, as a reader sees it: a landscape page is wider than high. The surface
// is the printable area, for which the plug-in expects pixels.
struct DevicePage {
  LONG physicalWidthPx;  // of the paper
  LONG physicalHeightPx;
  LONG offsetXPx;  // of the surface on the paper
  LONG offsetYPx;
  LONG surfaceWidthPx;
  LONG surfaceHeightPx;
  int dpi;
  bool landscape = false;
};

struct PageDots {
  std::int64_t width;
  std::int64_t height;
};

// The size of the page at the device's resolution: a pixel is a dot, unless the page states another
// resolution.
PageDots DotsOf(const PageImage& page, int dpi);

// The paper for a page of this size. Each side is rounded to whole millimetres if that adds at most
// one dot; otherwise to the coarsest step (quarter inches, halves, tenths, ...) that adds none.
// landscape: whether the page lies. nullopt if no paper can be so large.
std::optional<PaperSize> PaperFor(const PageImage& page, int dpi, bool landscape);

// A page is larger than the paper. A front end may catch this and use the sizes to write a remedy
// in its users' terms.
class PageTooLargeError final : public HostError {
 public:
  PageTooLargeError(const std::string& page, const PageImage& image, const DevicePage& paper);
  double PageWidthMm() const { return m_widthMm; }
  double PageHeightMm() const { return m_heightMm; }
  // The paper that the page needs; nullopt if it is larger than any.
  const std::optional<PaperSize>& FittingPaper() const { return m_fitting; }

 private:
  double m_widthMm;
  double m_heightMm;
  std::optional<PaperSize> m_fitting;
};

// Throws HostError (settings) if the margins leave nothing of the paper, or if the paper has too
// many dots for the device.
void CheckPrintable(const DevicePage& device);

// What to do with a page whose size is not the paper's: None refuses a larger one, Shrink scales it
// down, Scale also scales a smaller one up.
enum class Fit { None, Shrink, Scale };

// Where a page that is smaller than the paper lies on it.
enum class Place { TopLeft, TopRight, BottomLeft, BottomRight, Centre };

// How a page was scaled.
struct PageScale {
  double x;  // dots per pixel
  double y;
  double statedDpi;  // the resolution for which it was scaled; 0 if for another reason
  bool isWhole;      // every pixel is the same whole number of dots
};

// Scales the page to the device's resolution and, in proportion, to the paper. Throws
// PageTooLargeError if the page is larger and fit is None. name: of the page, for messages. Returns
// nullopt if every pixel remains one dot.
std::optional<PageScale> FitPage(PageImage& page, const DevicePage& device, Fit fit,
                                 const std::string& name);

// Where on the paper the top left corner of a page lies. The page must fit.
POINT PlaceOf(const PageImage& page, const DevicePage& device, Place place);

// Lays the page on the paper with its top left corner at that point, and copies what the surface
// covers; the rest of the surface is white. The page's content is undefined afterwards: a page that
// covers the surface exactly is swapped with it, not copied.
void RasterPage(PageImage& page, const DevicePage& device, POINT at, PageImage& surface);

// Whether all bytes are 0xFF.
bool IsWhite(const std::uint8_t* bytes, std::size_t size);

// Whether anything but white lies where the printer does not print: outside the surface, or in the
// last columns and rows, which the plug-in drops when it adds the margins again.
bool LosesContent(const PageImage& page, const DevicePage& device, POINT at);
