// The link to the printer: `png` in system.toml.
#pragma once

#include "platform/linux/state/system_toml.h"

namespace Gdiplus {

// Each link has the library and level of compression with which the printer has an image soonest:
// time to compress plus time to send.
enum class Link {
  Network,  // about 100 Mbit/s
  Usb,      // about 1 MB/s: USB full speed, Wi-Fi
  Serial,   // about 115,200 baud
};

SystemPart<Link>& PrinterLink();

}  // namespace Gdiplus
