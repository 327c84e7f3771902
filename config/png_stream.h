// PNG files in memory streams, for the images of a job and for the diagnostic save.
#pragma once

#include "config/block_owner.h"
#include "platform/com.h"
#include "platform/gdiplus.h"

// Finds the encoder whose MIME type is exactly "image/png". Returns false if there is none or no
// memory.
bool FindPngEncoder(CLSID* encoder);

// Reads a stream whole, from its start, into a block of exactly *size bytes. Returns false if it
// cannot be read or there is no memory.
bool ReadStream(IStream* stream, LocalBlock<BYTE>& bytes, DWORD* size);
