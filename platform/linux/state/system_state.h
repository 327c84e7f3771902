// What the system file says.
#pragma once

#include <memory>
#include <vector>

#include "platform/system_file.h"

// How much time goes into making PNG files small.
enum class PngSize { Fast, Usual, Small };

struct SystemContent {
  UINT ansiCodePage = 1252;
  std::vector<PlatformPrinter> printers;
  PngSize pngSize = PngSize::Usual;
  INT dotGainPercent = 0;
};

// The content as the file stands now.
std::shared_ptr<const SystemContent> SystemState();
