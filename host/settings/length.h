// Lengths as people write them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Micrometres of a text like "100mm", "-1.5mm", "1500um", "10cm" or "4in". Throws HostError
// (settings) that names what for anything else, a number without a unit included.
std::int32_t ParseLengthUm(std::string_view text, std::string_view what);

struct PaperSize {
  std::int32_t widthUm;
  std::int32_t lengthUm;
};

// A text like "100x150mm": the unit counts for both. Each side must be 0.1 mm to 3276.7 mm.
PaperSize ParsePaperSize(std::string_view text, std::string_view what);

// The length with the unit, exact, as ParseLengthUm reads it: "2.5mm".
std::string FormatLength(std::int32_t um);

// Millimetres for messages, without needless zeros.
std::string FormatMm(double mm);
