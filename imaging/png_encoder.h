// Encoding a page's images as PNG files in memory streams, and sending such a file to the printer.
#pragma once

#include <string>

#include "platform/com.h"
#include "platform/driver.h"
#include "platform/gdiplus.h"

// Finds the encoder whose MIME type is exactly "image/png". False when there is none or no memory.
bool FindPngEncoder(CLSID* encoder);

// Creates an empty memory stream; on failure logs the line of the stream with that name. spacer
// stands between the line and the suffix of a call that succeeds without giving a stream.
bool CreatePngStream(const char* streamName, const char* spacer, ComPtr<IStream>& stream);

// Downloads the PNG file in the stream to the printer under the image name: header, file, data end,
// each as one write. False, nothing written, when the stream cannot be read back.
bool WriteImageDownload(PDEVOBJ pdevobj, IStream* stream, const std::string& imageName);
