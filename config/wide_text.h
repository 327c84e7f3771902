// Text in the platform's 16-bit units; literals are written WTEXT("...").
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

using WideText = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;
