// Lays a page image on the paper and cuts out what the printer can reach.
#pragma once

#include "host/error.h"
#include "host/pages/page_image.h"
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
};

// A page that is larger than the paper. Front ends know best how their user chooses a paper, so
// they may catch it and write a remedy of their own from the sizes.
class PageTooLargeError final : public HostError {
 public:
  PageTooLargeError(const std::string& page, const PageImage& image, const DevicePage& paper);
  double PageWidthMm() const { return m_widthMm; }
  double PageHeightMm() const { return m_heightMm; }

 private:
  double m_widthMm;
  double m_heightMm;
};

// Throws HostError (settings) if the margins leave nothing of the paper or its size in pixels does
// not fit the device.
void CheckPrintable(const DevicePage& device);

enum class Fit { None, Shrink };

// Makes the page fit the paper. A page that is larger is an error with Fit::None
// (PageTooLargeError) and is scaled down in proportion with Fit::Shrink. name: of the page, for
// messages.
void FitPage(PageImage& page, const DevicePage& device, Fit fit, const std::string& name);

// Lays the page's top left corner on the paper's and copies what the surface covers; the rest of
// the surface is white. The page's content is undefined afterwards: a page that is exactly the
// surface is swapped with it, not copied.
void RasterPage(PageImage& page, const DevicePage& device, PageImage& surface);

// Whether all bytes are 0xFF.
bool IsWhite(const std::uint8_t* bytes, std::size_t size);

// Whether anything but white lies where the printer does not print: outside of the surface, or in
// the last columns and rows, which the plug-in drops when it adds the margins again.
bool LosesContent(const PageImage& page, const DevicePage& device);
