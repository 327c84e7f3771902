// A device whose pages are drawn by a test, with GDI+ running.
#pragma once

#include <functional>

#include "Renderer/gdiplus_guard.h"
#include "config/vlx_shared.h"
#include "platform/memory.h"
#include "tests/support/device.h"
#include "tests/support/png_image.h"

class PageDevice : public Device {
 public:
  PageDevice() { g_gdiPlusGuard.Start(); }
  ~PageDevice() { g_gdiPlusGuard.Stop(); }

  // Puts a page of 24-bit pixels into the page buffer; color gives 0xRRGGBB of a pixel.
  void CapturePage(INT width, INT height, const std::function<DWORD(INT x, INT y)>& color) {
    const DWORD stride = (3 * width + 3) / 4 * 4;
    auto* buffer = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, stride * height));
    for (INT y = 0; y < height; ++y) {
      for (INT x = 0; x < width; ++x) {
        const DWORD rgb = color(x, y);
        for (INT i = 0; i < 3; ++i) buffer[y * stride + 3 * x + i] = BYTE(rgb >> 8 * i);
      }
    }
    state.SetPageBuffer(buffer, stride * height);
    state.bPageStarted = TRUE;
    state.bmiPage.biWidth = width;
    state.bmiPage.biHeight = height;
  }

  // The images downloaded so far under a name, as they were decoded.
  std::vector<PngImage> Downloads(const std::string& name) const {
    std::vector<PngImage> images;
    for (std::size_t i = 0; i + 1 < writes.size(); ++i) {
      if (writes[i] == "dPNG;" + name + "\r\n\x1B:") images.push_back(DecodePng(writes[i + 1]));
    }
    return images;
  }
};
