// The printer's configuration record. The shared library owns it; a pointer to it is valid until
// the cache instance that it came from is released.
#pragma once

#include "platform/types.h"

#pragma pack(push, 1)
struct Config {
  BYTE reserved000[0x80];
  DWORD dwMinLabelWidth;  // micrometres, as all four
  DWORD dwMaxLabelWidth;
  BYTE reserved088[4];
  DWORD dwMinLabelLength;
  DWORD dwMaxLabelLength;
};
#pragma pack(pop)

static_assert(offsetof(Config, dwMinLabelWidth) == 0x80);
static_assert(offsetof(Config, dwMaxLabelWidth) == 0x84);
static_assert(offsetof(Config, dwMinLabelLength) == 0x8C);
static_assert(offsetof(Config, dwMaxLabelLength) == 0x90);
