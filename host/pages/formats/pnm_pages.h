// Reads one page of a PNM stream, for sources that get such a stream from a helper program.
#pragma once

#include "host/pages/page_image.h"
#include "host/pages/page_input.h"

// Returns false at the end of the stream. Throws HostError (input).
bool ReadPnm(PageInput& input, PageImage& page);
