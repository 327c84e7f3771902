// What the system file says.
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/gdiplus/deflate.h"
#include "platform/system_file.h"

struct SystemContent {
  UINT ansiCodePage = 1252;
  std::vector<PlatformPrinter> printers;
  Gdiplus::Link link = Gdiplus::Link::Network;
  INT dotGainPercent = 0;
};

// The content as the file stands now.
std::shared_ptr<const SystemContent> SystemState();
