// Base types of the platform: the system's own.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstddef>
#include <cstdint>

// A wide (16-bit) literal.
#define WTEXT(literal) L##literal

// What a module exports stands in its definition file.
#define MODULE_EXPORT extern "C"

// Calls of a printf of ours are checked where LONG is an int; here it is a long of the same size.
#define PLATFORM_PRINTF(format_place, argument_place)
