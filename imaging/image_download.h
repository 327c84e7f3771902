// The memory streams in which images are encoded, and the download of such an image to the printer.
#pragma once

#include <string>

#include "platform/com.h"
#include "platform/driver.h"

// Creates an empty memory stream. On failure returns false and logs a line with streamName. spacer
// stands in that line before the reason if the call succeeded without giving a stream.
bool CreatePngStream(const char* streamName, const char* spacer, ComPtr<IStream>& stream);

// Downloads the PNG file in the stream to the printer under the image name: header, file, data end,
// one write each. Returns false, with nothing written, if the stream cannot be read back.
bool WriteImageDownload(PDEVOBJ pdevobj, IStream* stream, const std::string& imageName);
