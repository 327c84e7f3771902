#include "commands/image_commands.h"

#include <iterator>

#include "commands/custom_blocks.h"
#include "commands/cut_commands.h"
#include "commands/job_stream.h"
#include "commands/page_commands.h"

namespace {

// Where an image goes: its side in x, and whether its offset counts from the far end in y.
struct PlacementRow {
  bool rightSide;
  bool fromLength;
};
// By print direction and rotation of the label; an unknown rotation counts as none.
constexpr PlacementRow kPlacementRows[][4] = {
    {{true, true}, {false, true}, {false, false}, {true, false}},
    {{false, false}, {false, true}, {true, true}, {true, false}}};

// Both options together reverse the print direction, which exchanges rotations 0 and 2.
bool TurnsPlacement(const OEMDEV& devmode) {
  return devmode.dwOptionM != 0 && devmode.dwUseDarkness2 != 0;
}

DWORD Angle(const OEMDEV& devmode) {
  if (devmode.dwRotation == 1) return 90;
  if (devmode.dwRotation == 3) return 270;
  const DWORD turned = devmode.dwRotation * 90;
  return TurnsPlacement(devmode) ? turned : (turned + 180) % 360;
}

const PlacementRow& RowOf(const OEMDEV& devmode) {
  const auto& rows = kPlacementRows[TurnsPlacement(devmode)];
  return devmode.dwRotation < std::size(rows) ? rows[devmode.dwRotation] : kPlacementRows[0][0];
}

float PlacementX(const OEMDEV& devmode, bool highlight, bool rightSide, float widthMm) {
  if (!highlight) return rightSide ? widthMm : 0.0f;
  // The highlight is printed by the second half of the doubled width.
  const bool corrected = IsModel(devmode, "K5") && devmode.dwColorMode == 2;
  if (!corrected) return rightSide ? 2.0f * widthMm : widthMm;
  const float correctedMm = CorrectTwoColorWidth(widthMm);
  return rightSide ? correctedMm : correctedMm / 2.0f;
}

std::string RecallText(const JobState& job, OEMDEV& devmode, LONG imageIndex) {
  const std::string index = FormatFixed(static_cast<DWORD>(imageIndex), 0);
  std::string text;
  if (devmode.wCustomType0 == kBlockInline) {
    text += "\r\n" + WithLineEnd(ExpandCustomBlock(devmode, 0, job.dwPageNumber));
  }
  text += BuildCutCommands(devmode);
  return text + "\r\nR Image" + index + ";" + index;
}

std::string PlacementText(const OEMDEV& devmode, const ImageCommand& image) {
  const std::string index = std::to_string(image.index);
  const bool highlight = image.index == 0 && image.twoColor;
  const float offsetMm = highlight ? image.highlightOffsetMm : image.backgroundOffsetMm;
  const PlacementRow& row = RowOf(devmode);
  const float xMm = PlacementX(devmode, highlight, row.rightSide, image.widthMm);
  const float yMm = row.fromLength ? image.lengthMm - offsetMm : offsetMm;
  return "\r\nI:Image" + index + ";" + FormatFixed(xMm, 2) + "," + FormatFixed(yMm, 2) + "," +
         FormatFixed(Angle(devmode), 0) + ";" + index;
}

float TenthsToMillimetres(LONG tenthsMm) {
  return static_cast<float>(static_cast<DWORD>(tenthsMm)) / 10.0f;
}

}  // namespace

std::string ComposeImageErase() { return std::string("eIMG;*").append(g_strLineEnd); }

std::string ComposeImageDownloadHeader(const std::string& name) {
  return std::string("dPNG;").append(name).append(g_strLineEnd).append(g_strEscape).append(":");
}

std::string ComposeImageDataEnd() {
  return std::string(g_strEscape).append("end-of-data").append(g_strLineEnd);
}

std::string ComposeImageCommand(const JobState& job, OEMDEV& devmode, const ImageCommand& image) {
  if (image.reuse && !image.firstPage) return RecallText(job, devmode, image.index);
  return PlacementText(devmode, image);
}

std::string ComposeImageCommands(const JobState& job, OEMDEV& devmode,
                                 const ImagePlacement& placement) {
  const bool turned = (devmode.dwRotation & 1) != 0;
  const float paperWidthMm = TenthsToMillimetres(placement.paperWidthTenthsMm);
  const float paperLengthMm = TenthsToMillimetres(placement.paperLengthTenthsMm);
  const bool twoColor = placement.colorMode > 1;
  ImageCommand image = {.widthMm = turned ? paperLengthMm : paperWidthMm,
                        .lengthMm = turned ? paperWidthMm : paperLengthMm,
                        .backgroundOffsetMm = placement.backgroundOffsetMm,
                        .highlightOffsetMm = placement.highlightOffsetMm,
                        .index = 0,
                        .twoColor = twoColor,
                        .reuse = devmode.dwSetupOnFirstPageOnly != 0,
                        .firstPage = job.dwPageNumber == 1};
  std::string text;
  if (twoColor && !placement.highlightEmpty) text += ComposeImageCommand(job, devmode, image);
  if (placement.backgroundEmpty) return text;
  image.index = placement.colorMode - 1;
  return text + ComposeImageCommand(job, devmode, image);
}
