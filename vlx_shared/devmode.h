// The private devmode's defaults and what makes a record from outside a valid one.
#pragma once

#include "config/oemdev.h"

// A record that prints one-colour labels with gap sensing and nothing special.
OEMDEV DefaultDevMode();

// Brings a record of unknown origin, of which size bytes can be read, to the current layout: what
// is missing or out of range takes its default, everything else is kept. Returns false, *result
// untouched, when the bytes are no private devmode at all.
bool AdoptDevMode(const void* record, std::size_t size, OEMDEV* result);
