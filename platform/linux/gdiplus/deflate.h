// Compression of PNG images by the library that suits the link.
#pragma once

#include "platform/linux/gdiplus/link.h"
#include "platform/types.h"

namespace Gdiplus {

// The most room that Deflate can need.
SIZE_T DeflateBound(SIZE_T bytes);

// Compresses to a zlib stream (RFC 1950) in out and returns its size; 0 if there is no memory.
// room: DeflateBound(bytes) or more. bytes and room: below 4 GB.
SIZE_T Deflate(Link link, const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room);

}  // namespace Gdiplus
