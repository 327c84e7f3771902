#include "host/settings/length.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "host/error.h"

namespace {

struct UnitSize {
  std::string_view name;
  double um;
};
constexpr UnitSize kLengthUnits[] = {
    {"um", 1}, {"mm", 1000}, {"cm", 10000}, {"in", 25400}, {"inch", 25400}};
constexpr std::string_view kUnits = "mm, um, cm or in";

// Replaces every occurrence.
std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// Reads lengths out of one text and quotes the whole text in errors.
class LengthReader {
 public:
  LengthReader(std::string_view text, std::string_view what)
      : m_text(text), m_what(what), m_plain(Replaced(std::string(text), "\u00D7", "x")) {
    m_plain = Replaced(m_plain, "\u00A0", " ");  // typeset text has it between number and unit
    for (char& c : m_plain) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    m_rest = m_plain;
  }

  [[noreturn]] void Refuse(const std::string& remedy) const {
    throw HostError(kExitSettings, std::string(m_what) + " is \"" + std::string(m_text) + "\"",
                    remedy);
  }

  // form: of the whole text, for the remedy.
  double ReadNumber(const std::string& form) {
    SkipSpace();
    double value = 0;
    const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
    if (error == std::errc()) m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
    SkipSpace();
    if (m_rest.starts_with(',')) {
      Refuse("write a point in place of the comma: \"" + Replaced(std::string(m_text), ",", ".") +
             "\"");
    }
    if (error != std::errc() || !std::isfinite(value)) Refuse(form);
    return value;
  }

  // The text up to one of these characters, or to its end.
  std::string_view ReadUnit(std::string_view before = " 0123456789") {
    const std::size_t end = std::min(m_rest.find_first_of(before), m_rest.size());
    const std::string_view unit = m_rest.substr(0, end);
    m_rest.remove_prefix(end);
    SkipSpace();
    return unit;
  }

  bool SkipCross() {
    if (!m_rest.starts_with('x')) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  bool AtEnd() const { return m_rest.empty(); }

  std::int32_t Micrometres(double value, std::string_view unit) const {
    for (const UnitSize& known : kLengthUnits) {
      if (known.name != unit) continue;
      const double um = std::round(value * known.um);
      if (um > 2147483647.0 || um < -2147483648.0)
        Refuse("the length is out of range, write a smaller one");
      return static_cast<std::int32_t>(um);
    }
    const bool isMissing = unit.empty();
    Refuse(isMissing
               ? "add the unit, " + std::string(kUnits) + ": \"" + std::string(m_text) + "mm\""
               : "write the unit as " + std::string(kUnits) + ", not \"" + std::string(unit) +
                     "\"");
  }

 private:
  void SkipSpace() {
    while (m_rest.starts_with(' ')) m_rest.remove_prefix(1);
  }

  const std::string_view m_text;
  const std::string_view m_what;
  std::string m_plain;  // in lower case, with plain "x" and spaces
  std::string_view m_rest;
};

}  // namespace

std::int32_t ParseLengthUm(std::string_view text, std::string_view what) {
  const std::string form = "write a length with its unit, as \"2.5mm\" or \"2500um\"";
  LengthReader reader(text, what);
  const double value = reader.ReadNumber(form);
  const std::string_view unit = reader.ReadUnit();
  if (!reader.AtEnd()) reader.Refuse(form);
  return reader.Micrometres(value, unit);
}

PaperSize ParsePaperSize(std::string_view text, std::string_view what) {
  const std::string form = "write width x length with their unit, as \"100x150mm\" or \"4x6in\"";
  LengthReader reader(text, what);
  const double width = reader.ReadNumber(form);
  const std::string_view widthUnit = reader.ReadUnit(" x");
  if (!reader.SkipCross()) reader.Refuse(form);
  const double length = reader.ReadNumber(form);
  const std::string_view unit = reader.ReadUnit();
  if (!reader.AtEnd()) reader.Refuse(form);
  const PaperSize size = {reader.Micrometres(width, widthUnit.empty() ? unit : widthUnit),
                          reader.Micrometres(length, unit)};
  for (const std::int32_t side : {size.widthUm, size.lengthUm}) {
    if (side < kShortestSideUm || side > kLongestSideUm) {
      reader.Refuse("make each side 0.1 mm to 3276.7 mm");
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

std::string FormatPaperSize(const PaperSize& size) {
  std::string width = FormatLength(size.widthUm);
  width.resize(width.size() - 2);  // one unit for both sides
  return width + "x" + FormatLength(size.lengthUm);
}

std::string FormatMm(double mm) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f", mm);
  std::string result(text);
  if (result.ends_with(".0")) result.resize(result.size() - 2);
  return result;
}
