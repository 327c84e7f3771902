#include "platform/linux/text/unicode.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
    return;
  }
  if (c < 0x800) {
    out += static_cast<char>(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      out += static_cast<char>(0xE0 | c >> 12);
    } else {
      out += static_cast<char>(0xF0 | c >> 18);
      out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
    }
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
  }
  out += static_cast<char>(0x80 | (c & 0x3F));
}

// Takes one character from the front of the text, which must not be empty.
char32_t TakeUtf8(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80) return lead;
  const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
  if (more < 0 || lead > 0xF4) return kReplacement;
  char32_t c = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    if (text.empty() || (text.front() & 0xC0) != 0x80) return kReplacement;
    c = c << 6 | (text.front() & 0x3F);
    text.remove_prefix(1);
  }
  constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  const bool valid = c >= kLeast[more] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
  return valid ? c : kReplacement;
}

}  // namespace

std::string Utf8FromUtf16(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDFFF) {
      const bool pair = c <= 0xDBFF && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
      c = pair ? 0x10000 + ((c & 0x3FF) << 10) + (text[++i] & 0x3FF) : kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const char32_t c = TakeUtf8(text);
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD7C0 + (c >> 10));
      out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
  }
  return out;
}

std::u16string FoldedCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& c : folded) {
    const bool plus32 = (c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7) ||
                        (c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F);
    if (plus32) c += 32;
    if (c >= 0x400 && c <= 0x40F) c += 80;
  }
  return folded;
}
