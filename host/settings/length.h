// Lengths as people write them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The micrometres of a text like "100mm", "-1.5 mm", "1500um", "10cm" or "4in". what: the setting's
// name in messages. Throws HostError (settings) that quotes the text for anything else, including a
// number without a unit.
std::int32_t ParseLengthUm(std::string_view text, std::string_view what);

// The sides of a paper that the public devmode can hold.
inline constexpr std::int32_t kShortestSideUm = 100;
inline constexpr std::int32_t kLongestSideUm = 3276700;

struct PaperSize {
  std::int32_t widthUm;
  std::int32_t lengthUm;
};

// A text like "100x150mm", "100 x 150 mm" or "4in x 150mm". A single unit at the end is for both
// sides; the x may be a multiplication sign. Throws as above, also if a side is not within 0.1 mm
// to 3276.7 mm.
PaperSize ParsePaperSize(std::string_view text, std::string_view what);

// The exact length with its unit, as ParseLengthUm reads it: "2.5mm".
std::string FormatLength(std::int32_t um);

// The exact size as ParsePaperSize reads it: "101.6x152.4mm".
std::string FormatPaperSize(const PaperSize& size);

// Millimetres for messages, with one decimal at most: "2.5", "100".
std::string FormatMm(double mm);
