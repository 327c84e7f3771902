// Scales pages.
#pragma once

#include <cstdint>
#include <string>

#include "host/pages/page_image.h"

// What is averaged where pixels mix: the light that they stand for, or their values, which keeps
// thin dark lines darker.
enum class Mixing { Light, Values };

// Gives the page this size. A whole number of times in both directions repeats each pixel, so that
// bar codes stay exact; any other size is resampled. Throws as ShapePage does.
void ScalePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx, Mixing mixing,
               const std::string& source);

// Whether ScalePage would repeat pixels.
bool IsWholeScale(const PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx);
