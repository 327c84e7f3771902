// The image commands: erasing stored images, the frame of a download, and the placement or recall
// of a page's images.
#pragma once

#include <string>

#include "config/device_state.h"

// Erases all images stored in the printer.
std::string ComposeImageErase();

// The bytes before and after the PNG file of a downloaded image.
std::string ComposeImageDownloadHeader(const std::string& name);
std::string ComposeImageDataEnd();

// The inputs of a page's image placement besides the private devmode.
struct ImagePlacement {
  LONG paperWidthTenthsMm;
  LONG paperLengthTenthsMm;
  float backgroundOffsetMm;  // from the label's edge to the first row or column of content
  float highlightOffsetMm;
  LONG colorMode;
  bool backgroundEmpty;
  bool highlightEmpty;
};

// The placement or recall text of a page's images, the highlight before the background. devmode is
// the page's own copy; a recall may set its dwInitialCutSent.
std::string ComposeImageCommands(const JobState& job, OEMDEV& devmode,
                                 const ImagePlacement& placement);

// The text of one image on a label of width W and length L. Index 0 is the one-colour image and the
// highlight, 1 the two-colour background. With a set-up that is sent once, pages from the second on
// recall it.
struct ImageCommand {
  float widthMm;
  float lengthMm;
  float backgroundOffsetMm;
  float highlightOffsetMm;
  LONG index;
  bool twoColor;
  bool reuse;
  bool firstPage;
};
std::string ComposeImageCommand(const JobState& job, OEMDEV& devmode, const ImageCommand& image);
