// Converts between the platform's texts and UTF-8, which the host uses.
#pragma once

#include <string>

#include "platform/types.h"

std::u16string Widened(const std::string& utf8);
std::string Narrowed(const std::u16string& text);

// text: from a record, in the system's ANSI code page.
std::string AnsiToUtf8(const std::string& text);

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"
std::string FormatGuid(const GUID& guid);
