// Lays a page image on the paper and cuts out what the printer can reach.
#pragma once

#include <optional>
#include <string>

#include "host/error.h"
#include "host/pages/page_image.h"
#include "host/settings/length.h"
#include "platform/types.h"

// A device's page in pixels, as the page is seen (a landscape page is wider than high). The surface
// is the printable area, where the plug-in expects pixels.
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

// The paper that has the page's dots, in whole millimetres where these have at most a dot more, or
// in tenths where these have just as many. landscape: how the page lies. nullopt if no paper can be
// as large.
std::optional<PaperSize> PaperFor(const PageImage& page, int dpi, bool landscape);

// A page that is larger than the paper. Front ends know best how their user chooses a paper, so
// they may catch it and write a remedy of their own from the sizes.
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

// Throws HostError (settings) if the margins leave nothing of the paper or its size in pixels does
// not fit the device.
void CheckPrintable(const DevicePage& device);

// What becomes of a page of another size than the paper: None refuses a larger one, Shrink scales
// it down, Scale also scales a smaller one up.
enum class Fit { None, Shrink, Scale };

// Where a page that is smaller than the paper lies on it.
enum class Place { TopLeft, TopRight, BottomLeft, BottomRight, Centre };

// How a page was scaled.
struct PageScale {
  double x;  // dots a pixel
  double y;
  double statedDpi;  // that the page stated, 0 if that was no reason
  bool isWhole;      // every pixel is the same whole number of dots
};

// Brings the page to the device's resolution, and makes it fit the paper, in proportion. A page
// that is larger is an error with Fit::None (PageTooLargeError). name: of the page, for messages.
// nullopt if every pixel stays a dot.
std::optional<PageScale> FitPage(PageImage& page, const DevicePage& device, Fit fit,
                                 const std::string& name);

// The top left corner on the paper of a page that fits.
POINT PlaceOf(const PageImage& page, const DevicePage& device, Place place);

// Lays the page on the paper, its top left corner at that place, and copies what the surface
// covers; the rest of the surface is white. The page's content is undefined afterwards: a page that
// is exactly the surface is swapped with it, not copied.
void RasterPage(PageImage& page, const DevicePage& device, POINT at, PageImage& surface);

// Whether all bytes are 0xFF.
bool IsWhite(const std::uint8_t* bytes, std::size_t size);

// Whether anything but white lies where the printer does not print: outside of the surface, or in
// the last columns and rows, which the plug-in drops when it adds the margins again.
bool LosesContent(const PageImage& page, const DevicePage& device, POINT at);
