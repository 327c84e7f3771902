// The private devmode: its defaults, and the repair of records from outside.
#pragma once

#include "config/oemdev.h"

// One-colour labels with a gap between them, all options off.
OEMDEV DefaultDevMode();

// Converts a record of unknown origin to the current layout. size: how many of its bytes may be
// read. Fields that are missing or out of range get their default, the others are kept. Returns
// false, with *result untouched, if the bytes do not start with the header of a private devmode.
bool AdoptDevMode(const void* record, std::size_t size, OEMDEV* result);
