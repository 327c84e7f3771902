// Conversion between code pages inside the platform, by iconv.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

// The number behind CP_ACP and CP_THREAD_ACP resolved; others as they are.
UINT ResolveCodePage(UINT codePage);

// Whether texts can be converted to and from the code page.
bool CodePageExists(UINT codePage);

// None when the code page is unknown. What it cannot hold becomes fallback, and *usedFallback is
// set.
std::optional<std::string> EncodeText(UINT codePage, std::u16string_view text,
                                      std::string_view fallback, bool* usedFallback);
std::optional<std::u16string> DecodeText(UINT codePage, std::string_view bytes);
