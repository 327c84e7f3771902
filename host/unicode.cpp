#include "host/unicode.h"

#include <cstdio>

#include "platform/text.h"

namespace {

std::u16string Wide(UINT codePage, const std::string& text) {
  std::u16string wide(text.size() + 1, u'\0');
  const INT size = MultiByteToWideChar(codePage, 0, text.c_str(), -1, wide.data(),
                                       static_cast<INT>(wide.size()));
  wide.resize(size > 0 ? size - 1 : 0);
  return wide;
}

}  // namespace

std::u16string Widened(const std::string& utf8) { return Wide(CP_UTF8, utf8); }

std::string AnsiToUtf8(const std::string& text) { return Narrowed(Wide(CP_ACP, text)); }

std::string Narrowed(const std::u16string& text) {
  std::string narrow(3 * text.size() + 1, '\0');
  const INT size = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, narrow.data(),
                                       static_cast<INT>(narrow.size()), nullptr, nullptr);
  narrow.resize(size > 0 ? size - 1 : 0);
  return narrow;
}

std::string FormatGuid(const GUID& guid) {
  char text[40];
  const BYTE* rest = guid.Data4;
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, rest[0], rest[1],
                rest[2], rest[3], rest[4], rest[5], rest[6], rest[7]);
  return text;
}
