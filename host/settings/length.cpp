#include "host/settings/length.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "host/error.h"

namespace {

constexpr std::int32_t kLongestSideUm = 3276700;  // what the public devmode can hold

struct UnitSize {
  std::string_view name;
  double um;
};
constexpr UnitSize kLengthUnits[] = {{"um", 1}, {"mm", 1000}, {"cm", 10000}, {"in", 25400}};

[[noreturn]] void Refuse(std::string_view text, std::string_view what, const std::string& remedy) {
  throw HostError(kExitSettings, std::string(what) + " is \"" + std::string(text) + "\"", remedy);
}

}  // namespace

std::int32_t ParseLengthUm(std::string_view text, std::string_view what) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  std::string_view unit(end, text.data() + text.size() - end);
  while (unit.starts_with(' ')) unit.remove_prefix(1);
  if (error != std::errc() || !std::isfinite(value)) {
    Refuse(text, what, "write a length with its unit, as \"2.5mm\" or \"2500um\"");
  }
  for (const UnitSize& known : kLengthUnits) {
    if (known.name != unit) continue;
    const double um = std::round(value * known.um);
    if (um > 2147483647.0 || um < -2147483648.0)
      Refuse(text, what, "the length is out of range, write a smaller one");
    return static_cast<std::int32_t>(um);
  }
  Refuse(text, what, "add the unit: mm, um, cm or in");
}

PaperSize ParsePaperSize(std::string_view text, std::string_view what) {
  const std::size_t cross = text.find('x');
  const std::size_t unitAt = text.find_last_of("0123456789.") + 1;
  if (cross == text.npos || unitAt == 0 || unitAt < cross) {
    Refuse(text, what, "write width x length with their unit, as \"100x150mm\"");
  }
  const std::string unit(text.substr(unitAt));
  if (unit.empty())
    Refuse(text, what, "add the unit: mm, um, cm or in, as \"" + std::string(text) + "mm\"");
  const PaperSize size = {ParseLengthUm(std::string(text.substr(0, cross)) + unit, what),
                          ParseLengthUm(text.substr(cross + 1), what)};
  for (const std::int32_t side : {size.widthUm, size.lengthUm}) {
    if (side < 100 || side > kLongestSideUm) {
      Refuse(text, what, "make each side 0.1 mm to 3276.7 mm");
    }
  }
  return size;
}

std::string FormatLength(std::int32_t um) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", um / 1000.0);
  std::string result(text);
  result.erase(result.find_last_not_of('0') + 1);
  if (result.ends_with('.')) result.pop_back();
  return result + "mm";
}

std::string FormatMm(double mm) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f", mm);
  std::string result(text);
  if (result.ends_with(".0")) result.resize(result.size() - 2);
  return result;
}
