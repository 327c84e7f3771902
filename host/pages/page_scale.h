// Scales pages.
#pragma once

#include <cstdint>
#include <string>

#include "host/pages/page_image.h"

// What is averaged when pixels are resampled: the light that they stand for, or their values, which
// keeps thin dark lines darker.
enum class Mixing { Light, Values };

// Scales the page to this size. If both sides are whole multiples, each pixel is repeated, so that
// bar codes stay exact; otherwise the page is resampled. Throws as ShapePage does.
void ScalePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx, Mixing mixing,
               const std::string& source);

// Whether ScalePage would repeat pixels.
bool IsWholeScale(const PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx);
