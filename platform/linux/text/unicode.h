// UTF-8 and UTF-16 inside the platform. What is malformed becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

std::string Utf8FromUtf16(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);

// The text for comparing names without case: ASCII, Latin-1, Greek and Cyrillic letters in lower
// case.
std::u16string FoldedCase(std::u16string_view text);
