// The user's eight custom command blocks: turns the stored text of a block into printer commands.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/oemdev.h"

// What a block of that kind and text sends, possibly nothing. A block of the file kind reads its
// file on every call: whole, whatever its length; nothing if it cannot be opened; what was read,
// with an error logged, if reading fails. pageNumber is given only where block 0 is expanded; it
// replaces a "{...}" in an inline block.
std::string ExpandCustomBlock(WORD kind, std::string_view text,
                              std::optional<DWORD> pageNumber = std::nullopt);

// The same for block k, 0 to 7, of the record.
std::string ExpandCustomBlock(const OEMDEV& devmode, int k,
                              std::optional<DWORD> pageNumber = std::nullopt);

// The text with its backslash escapes resolved, at most 79 bytes; "Error 111" if the result would
// be longer. With a page number, the first "{...}" becomes that number before escapes are resolved,
// unless it begins the text.
std::string ParseEscapes(std::string_view text, std::optional<DWORD> pageNumber);

// The expansion with a line end after or before it; empty if the expansion is empty.
std::string WithLineEnd(std::string expansion);
std::string AfterLineEnd(std::string expansion);
