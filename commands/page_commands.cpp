#include "commands/page_commands.h"

#include <algorithm>
#include <iterator>

#include "commands/custom_blocks.h"
#include "commands/job_stream.h"
#include "commands/option_commands.h"

namespace {

constexpr const char* kSensorTokens[] = {"e", "l0", "l1", "l2", "x0", "x1"};
constexpr const char* kDefaultSensorToken = "l1";

const char* SensorToken(DWORD sensorType) {
  return sensorType < std::size(kSensorTokens) ? kSensorTokens[sensorType] : kDefaultSensorToken;
}

std::string SignedText(DWORD value) { return std::to_string(static_cast<LONG>(value)); }

}  // namespace

float CorrectTwoColorWidth(float widthMm) {
  if (widthMm > 140.0f) return widthMm * 1.999f + 0.3325f;
  if (widthMm > 135.0f) return widthMm * 2.0325713f - 4.3657f;
  return widthMm * 1.9989612f + 0.16693051f;
}

std::string BuildHeadCommand(const OEMDEV& devmode) {
  const bool twoDarknesses =
      IsModel(devmode, "K7") && (devmode.dwUseDarkness2 || devmode.dwColorMode == 2);
  std::string text =
      "\r\nH" + SignedText(devmode.dwSpeed) + "," + std::to_string(devmode.nDarkness);
  if (twoDarknesses) text += ":" + std::to_string(devmode.nDarkness2);
  text += devmode.dwPrintMethod ? ",D" : ",T";
  text += devmode.dwRibbonSaver ? ",R1" : ",R0";
  if (devmode.dwHeadParamB) text += ",B" + FormatFixed(devmode.dwHeadParamB, 0);
  return text;
}

std::string BuildLabelSizeCommand(const OEMDEV& devmode, DWORD widthUm, DWORD lengthUm,
                                  DWORD colorMode) {
  const float printableWidthMm =
      MillimetresOf(widthUm - devmode.dwUnprintableRight - devmode.dwUnprintableLeft);
  const float printableLengthMm =
      MillimetresOf(lengthUm - devmode.dwUnprintableBottom - devmode.dwUnprintableTop);
  const float widthMm = IsModel(devmode, "K5") && colorMode == 2
                            ? CorrectTwoColorWidth(printableWidthMm)
                            : printableWidthMm * static_cast<float>(colorMode);
  const float pitchMm = MillimetresOf(devmode.dwGapDistance) + printableLengthMm;

  std::string text = "\r\nS";
  text += SensorToken(devmode.dwSensorType);
  text += ";" + FormatLength(devmode.nOffsetX) + "," + FormatLength(devmode.nOffsetY);
  text += "," + FormatFixed(printableLengthMm, 2);
  text += "," + FormatFixed(pitchMm, 2);
  text += "," + FormatFixed(widthMm, 2);
  if (devmode.wCustomType1 == kBlockInline) text += ExpandCustomBlock(devmode, 1);
  return text;
}

std::string BuildPageCommands(JobState& job, OEMDEV& devmode, DWORD widthTenthsMm,
                              DWORD lengthTenthsMm, LONG pageCount, DWORD colorMode) {
  job.dwPageNumber = static_cast<DWORD>(std::max<LONG>(pageCount, 0)) + 1;
  if (devmode.dwSetupOnFirstPageOnly && job.dwPageNumber != 1) return {};

  const bool turned = (devmode.dwRotation & 1) != 0;
  const DWORD widthUm = (turned ? lengthTenthsMm : widthTenthsMm) * 100;
  const DWORD lengthUm = (turned ? widthTenthsMm : lengthTenthsMm) * 100;

  std::string text;
  if (devmode.wCustomType4 != kBlockInline) text += WithLineEnd(ExpandCustomBlock(devmode, 4));
  text += "mm\r\nzO\r\nJ";
  text += BuildHeadCommand(devmode);
  std::string pAndCutText;
  text += BuildOptionCommands(devmode, &pAndCutText);
  if (devmode.wCustomType5 == kBlockInline) {
    text += "\r\n" + WithLineEnd(ExpandCustomBlock(devmode, 5));
  }
  text += BuildLabelSizeCommand(devmode, widthUm, lengthUm, colorMode);
  if (devmode.wCustomType0 == kBlockInline) {
    text += "\r\n" + WithLineEnd(ExpandCustomBlock(devmode, 0, job.dwPageNumber));
  }
  text += pAndCutText;
  text += AfterLineEnd(ExpandCustomBlock(devmode, 6));
  return text;
}
