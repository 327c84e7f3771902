// Texts of the platform as UTF-8, in which the command line speaks.
#pragma once

#include <string>

#include "platform/types.h"

std::u16string Widened(const std::string& utf8);
std::string Narrowed(const std::u16string& text);

// Text of a record, in the system's ANSI code page.
std::string AnsiToUtf8(const std::string& text);

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"
std::string FormatGuid(const GUID& guid);
