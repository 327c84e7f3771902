// The set-up commands of a page: opening lines, head, options, label size, P and cut commands, and
// the custom command blocks between them.
#pragma once

#include <string>

#include "config/device_state.h"

// Composes the set-up commands of the coming page. If the set-up is sent once, they are empty from
// the second page on. Width and length are in tenths of a millimetre; pageCount is the number of
// pages started so far. Sets job.dwPageNumber; may set the record's dwInitialCutSent.
std::string BuildPageCommands(JobState& job, OEMDEV& devmode, DWORD widthTenthsMm,
                              DWORD lengthTenthsMm, LONG pageCount, DWORD colorMode);

// The H command: speed, darkness, print method, ribbon saver.
std::string BuildHeadCommand(const OEMDEV& devmode);

// The S command: sensor, offsets, label length, pitch and width. Width and length are micrometres.
std::string BuildLabelSizeCommand(const OEMDEV& devmode, DWORD widthUm, DWORD lengthUm,
                                  DWORD colorMode);

// Width in millimetres of a two-colour label on the model "K5", from its printable width. A
// piecewise linear fit, computed in single precision.
float CorrectTwoColorWidth(float widthMm);
