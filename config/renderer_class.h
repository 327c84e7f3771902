// The class identifier of the plug-in object, shared by the plug-in and the hosts that load it.
#pragma once

#include "platform/com.h"

inline constexpr CLSID kRendererClass = {
    0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
