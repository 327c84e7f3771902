// Numbers and job text for people.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace viewer {

// A number with at most two decimals and no trailing zeros: "12.5".
std::string Plain(double number);

// The size of a label: millimetres to one decimal. The width correction of some heads adds
// hundredths, which nobody wants to read.
std::string Tenths(double mm);

// A number with thousands separators: "12,345".
std::string Grouped(std::uint64_t number);

// A number with its noun: "1 label", "2 labels".
std::string Counted(std::uint64_t number, const char* noun);

// Text from a job, as UTF-8. Control characters are escaped; text that is not valid UTF-8 is read
// as Latin-1.
std::string Printable(std::string_view text);

}  // namespace viewer
