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

// What classes of a library are to the library and to its users.
#define PLATFORM_EXPORT __declspec(dllexport)
#define PLATFORM_IMPORT __declspec(dllimport)
// What the plug-in exports stands in its definition file.
#define MODULE_EXPORT extern "C"
// The platform's own functions are linked in.
#define PLATFORM_API extern "C"
#define PLATFORM_CXX_API

// Calls of a printf of ours are checked where LONG is an int; here it is a long of the same size.
#define PLATFORM_PRINTF(format_place, argument_place)
