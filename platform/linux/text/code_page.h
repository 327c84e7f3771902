// Conversion between code pages inside the platform, by iconv.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/state/system_toml.h"
#include "platform/types.h"

// The number of the system's ANSI code page, the entry `ansi_code_page` of system.toml.
SystemPart<UINT>& AnsiCodePage();

// The number of the ANSI code page for CP_ACP and CP_THREAD_ACP; other numbers unchanged.
UINT ResolveCodePage(UINT codePage);

// Whether text can be converted to and from the code page.
bool CodePageExists(UINT codePage);

// nullopt if the code page is unknown. A character that it cannot hold becomes fallback, and
// *usedFallback is set.
std::optional<std::string> EncodeText(UINT codePage, std::u16string_view text,
                                      std::string_view fallback, bool* usedFallback);
std::optional<std::u16string> DecodeText(UINT codePage, std::string_view bytes);
