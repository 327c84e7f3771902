// Converts between the platform's UTF-16 and the host's UTF-8.
#pragma once

#include <string>

#include "platform/types.h"

std::u16string Widened(const std::string& utf8);
std::string Narrowed(const std::u16string& text);

// text: in the system's ANSI code page, as the record stores it.
std::string AnsiToUtf8(const std::string& text);

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"
std::string FormatGuid(const GUID& guid);
