// From a page image to the driver's surface: what part of the paper the surface shows, and whether
// anything of the page is lost.
#pragma once

#include "host/pages/page_reader.h"
#include "platform/driver.h"

// A device's page in pixels, as the page is seen (a landscape page is wider than high).
struct DevicePage {
  LONG physicalWidthPx;
  LONG physicalHeightPx;
  LONG offsetXPx;  // of the surface on the paper
  LONG offsetYPx;
  LONG surfaceWidthPx;
  LONG surfaceHeightPx;
  int dpi;
};

// Throws HostError (settings) when the margins leave nothing of the paper.
void CheckPrintable(const DevicePage& device);

enum class Fit { None, Shrink };

// Makes the page fit the paper. A page that is larger is an error with Fit::None (HostError,
// settings, with both sizes and the remedy) and made smaller in proportion with Fit::Shrink.
void FitPage(PageImage& page, const DevicePage& device, Fit fit, const std::string& name);

// Lays the page with its top left corner on the paper's and cuts out the device's surface. The
// page's content is undefined afterwards: a page that is the surface changes places with it.
void RasterPage(PageImage& page, const DevicePage& device, PageImage& surface);

// Whether all bytes are 0xFF.
bool IsWhite(const std::uint8_t* bytes, std::size_t size);

// Whether the page has anything but white where the printer does not print: outside of the surface,
// or in its last columns and rows, which the plug-in drops when it puts the borders back.
bool LosesContent(const PageImage& page, const DevicePage& device);
