// What the client reads from its command line and from files.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

// Rows of pixels (red, green, blue) without padding.
struct Picture {
  LONG widthPx = 0;
  LONG heightPx = 0;
  std::vector<BYTE> pixels;
};

// All throw std::runtime_error if the text or file is not what it should be.

// A binary 8-bit PPM file without comments.
Picture ReadPicture(const std::string& path);

std::vector<BYTE> ReadBytes(const std::string& path);

// UTF-16 of an ASCII text in which %u20AC stands for a character.
std::basic_string<WCHAR> Wide(const std::string& text);

// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}"
GUID ReadGuid(const std::string& text);
