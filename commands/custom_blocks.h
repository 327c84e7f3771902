// The user's eight custom command blocks: what the stored text of a block becomes for the printer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/oemdev.h"

// What a block of that kind and text sends, possibly nothing. A block of the file kind reads its
// file anew each time: whole, whatever its length; nothing if it cannot be opened; what was read,
// with an error logged, if reading fails. pageNumber is given only where block 0 is expanded, and
// replaces
// a "{...}" in an inline block.
std::string ExpandCustomBlock(WORD kind, std::string_view text,
                              std::optional<DWORD> pageNumber = std::nullopt);

// The same for block k, 0 to 7, of the record.
std::string ExpandCustomBlock(const OEMDEV& devmode, int k,
                              std::optional<DWORD> pageNumber = std::nullopt);

// The text with its backslash escapes resolved: at most 79 bytes, or "Error 111" when it would be
// longer. With a page number, the first "{...}" that does not begin the text becomes that number
// first.
std::string ParseEscapes(std::string_view text, std::optional<DWORD> pageNumber);

// The expansion with a line end behind it or in front of it, empty when the expansion is.
std::string WithLineEnd(std::string expansion);
std::string AfterLineEnd(std::string expansion);
