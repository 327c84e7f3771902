// Sets fields of a private devmode by their names.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>

#include "config/oemdev_fields.h"
#include "platform/print_oem.h"

// "dwOptionE=1 szModelCode=K7"; a text ends at the next blank.
inline void SetFields(OEMDEV& devmode, const std::string& fields) {
  std::istringstream words(fields);
  for (std::string name, value; std::getline(words >> std::ws, name, '=') && words >> value;) {
    const auto all = OemDevFields();
    const auto field = std::find_if(all.begin(), all.end(),
                                    [&](const OemDevField& known) { return known.name == name; });
    if (field == all.end()) throw std::invalid_argument(name);
    const auto number = static_cast<DWORD>(std::strtoll(value.c_str(), nullptr, 10));
    const bool text = field->kind == OemDevKind::Text;
    std::memcpy(reinterpret_cast<BYTE*>(&devmode) + field->offset,
                text ? value.c_str() : static_cast<const void*>(&number),
                text ? value.size() + 1 : field->size);
  }
}

// The arguments of a devmode call that passes a record. extra: its size as the public devmode gives
// it; 0: only its own header does.
struct DevModeCall {
  DevModeCall(const void* in, OEMDEV& out, std::size_t extra = 0, DWORD room = sizeof(OEMDEV)) {
    publicDevmode.dmSize = sizeof publicDevmode;
    publicDevmode.dmDriverExtra = static_cast<WORD>(extra);
    block.cbSize = sizeof block;
    block.pPublicDMIn = extra == 0 ? nullptr : &publicDevmode;
    block.pOEMDMIn = const_cast<void*>(in);
    block.pOEMDMOut = &out;
    block.cbBufSize = room;
  }
  DEVMODEW publicDevmode = {};
  OEMDMPARAM block = {};
};

inline void SetBlock(OEMDEV& devmode, int k, WORD kind, const std::string& text) {
  (&devmode.wCustomType0)[k] = kind;
  text.copy(devmode.szCustomText0 + k * kCustomTextSize, kCustomTextSize - 1);
}
