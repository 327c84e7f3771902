#include "viewer/language/text.h"

#include <cmath>
#include <cstdio>

namespace viewer {

namespace {

bool IsUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    const std::size_t more = lead < 0x80 ? 0 : lead >> 5 == 6 ? 1 : lead >> 4 == 14 ? 2 : 9;
    if (more == 9 || lead == 0xC0 || lead == 0xC1 || at + more >= text.size()) return false;
    for (std::size_t i = 1; i <= more; ++i) {
      if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80) return false;
    }
    at += more + 1;
  }
  return true;
}

}  // namespace

std::string Plain(double number) {
  char text[400];
  std::snprintf(text, sizeof text, "%.2f", number);
  std::string plain = text;
  if (plain.find('.') != plain.npos) {
    plain.erase(plain.find_last_not_of('0') + 1);
    if (plain.back() == '.') plain.pop_back();
  }
  return plain == "-0" ? "0" : plain;
}

std::string Tenths(double mm) { return Plain(std::round(mm * 10) / 10); }

std::string Printable(std::string_view text) {
  const bool utf8 = IsUtf8(text);
  std::string printable;
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    char escaped[8];
    if (byte < 0x20 || byte == 0x7F || (!utf8 && byte >= 0x80 && byte < 0xA0)) {
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      printable += escaped;
    } else if (!utf8 && byte >= 0xA0) {
      printable += static_cast<char>(0xC0 | byte >> 6);
      printable += static_cast<char>(0x80 | (byte & 0x3F));
    } else {
      printable += c;
    }
  }
  return printable;
}

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string Counted(std::uint64_t number, const char* noun) {
  return Grouped(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace viewer
