// The fields of the private devmode as a table, to show, check or set them by name.
#pragma once

#include <span>
#include <string_view>

#include "config/oemdev.h"

enum class OemDevKind {
  Flag,      // 32-bit, set when non-zero
  Signed,    // 32-bit number
  Unsigned,  // 32-bit number
  Length,    // 32-bit micrometres, signed
  Margin,    // 32-bit micrometres, unsigned
  Word,      // 16-bit number
  Byte,      // 8-bit number
  Color,     // 32-bit 0x00BBGGRR
  Guid,      // 16 bytes
  Text,      // 8-bit text with its terminator in the field
};

struct OemDevField {
  std::string_view name;
  std::size_t offset;  // bytes from the start of the record
  std::size_t size;    // bytes
  OemDevKind kind;
};

// Every named field, in the order of the record; the header is not among them.
std::span<const OemDevField> OemDevFields();
