#include "Renderer/page_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::int64_t kSizeToleranceUm = 199;
constexpr std::int64_t kPixelTolerance = 2;

// The whole pixels in a length. The product wraps at 32 bits, so the result is at most 84,547.
LONG PixelsOf(DWORD lengthUm, ULONG dpi) {
  const float product = static_cast<float>(static_cast<LONG>(dpi * lengthUm));
  return static_cast<LONG>(std::floor(product / 10000.0f / 2.54f));
}

// Micrometres in steps of 100.
LONG SizeOf(LONG pixels, ULONG dpi) {
  if (dpi == 0) return 0;  // a page without resolution has no pixels
  const float steps =
      static_cast<float>(pixels) * 10000.0f * 2.54f / static_cast<float>(dpi) / 100.0f;
  return static_cast<LONG>(100u * static_cast<DWORD>(std::round(steps)));
}

LONG Negated(LONG value) { return static_cast<LONG>(0u - static_cast<DWORD>(value)); }

// Sets the field if it differs from the value by more than the tolerance. Returns whether it did.
template <typename Field>
bool Replace(Field& field, LONG value, std::int64_t tolerance, LONG* old) {
  *old = static_cast<LONG>(field);
  if (std::abs(std::int64_t{*old} - value) <= tolerance) return false;
  field = static_cast<Field>(value);
  return true;
}

std::string Entry(const char* label, LONG oldValue, LONG newValue) {
  return std::string(label) + ":" + std::to_string(oldValue) + " => " + std::to_string(newValue) +
         ", ";
}

template <typename Field>
std::string UpdatePixels(const char* label, Field& field, LONG value) {
  LONG old;
  return Replace(field, value, kPixelTolerance, &old) ? Entry(label, old, value) : std::string();
}

// Sizes are stored negative: micrometres. The log shows them positive.
std::string UpdateSize(const char* label, ULONG& field, LONG sizeUm) {
  LONG old;
  return Replace(field, Negated(sizeUm), kSizeToleranceUm, &old)
             ? Entry(label, Negated(old), sizeUm)
             : std::string();
}

// What remains between two margins. If nothing does, the offset is moved back onto the paper.
LONG Printable(LONG physicalPx, LONG marginsPx, LONG* offsetPx) {
  const LONG printable =
      static_cast<LONG>(static_cast<DWORD>(physicalPx) - static_cast<DWORD>(marginsPx));
  if (printable >= 0) return printable;
  *offsetPx = std::min(*offsetPx, physicalPx);
  return 0;
}

}  // namespace

Margins TurnedForLandscape(const Margins& margins) {
  return {margins.top, margins.bottom, margins.right, margins.left};
}

PageGeometry ComputePageGeometry(LONG paperWidthUm, LONG paperLengthUm, const Margins& margins,
                                 ULONG dpiX, ULONG dpiY) {
  PageGeometry geometry;
  geometry.physicalWidthPx = PixelsOf(static_cast<DWORD>(paperWidthUm), dpiX);
  geometry.physicalHeightPx = PixelsOf(static_cast<DWORD>(paperLengthUm), dpiY);
  geometry.offsetXPx = PixelsOf(margins.left, dpiX);
  geometry.offsetYPx = PixelsOf(margins.top, dpiY);
  geometry.printableWidthPx = Printable(
      geometry.physicalWidthPx, PixelsOf(margins.left + margins.right, dpiX), &geometry.offsetXPx);
  geometry.printableHeightPx = Printable(
      geometry.physicalHeightPx, PixelsOf(margins.top + margins.bottom, dpiY), &geometry.offsetYPx);
  geometry.printableWidthUm = SizeOf(geometry.printableWidthPx, dpiX);
  geometry.printableHeightUm = SizeOf(geometry.printableHeightPx, dpiY);
  return geometry;
}

std::string UpdateGdiInfo(GDIINFO& gdiInfo, const PageGeometry& geometry) {
  std::string text;
  text += UpdateSize("HorzSize", gdiInfo.ulHorzSize, geometry.printableWidthUm);
  text += UpdateSize("VertSize", gdiInfo.ulVertSize, geometry.printableHeightUm);
  text += UpdatePixels("HorzRes", gdiInfo.ulHorzRes, geometry.printableWidthPx);
  text += UpdatePixels("VertRes", gdiInfo.ulVertRes, geometry.printableHeightPx);
  text += UpdatePixels("PhysSizeCx", gdiInfo.szlPhysSize.cx, geometry.physicalWidthPx);
  text += UpdatePixels("PhysSizeCy", gdiInfo.szlPhysSize.cy, geometry.physicalHeightPx);
  text += UpdatePixels("PhysOffsetX", gdiInfo.ptlPhysOffset.x, geometry.offsetXPx);
  text += UpdatePixels("PhysOffsetY", gdiInfo.ptlPhysOffset.y, geometry.offsetYPx);
  return text;
}
