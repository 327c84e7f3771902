// The job stream: its text conventions, the single path to the spooler and the comment header that
// opens every job. Builders return the bytes of a command and never write; writers hand each built
// string whole to SpoolWrite.
#pragma once

#include <string>
#include <string_view>

#include "config/wide_text.h"
#include "platform/driver.h"

inline constexpr std::string_view g_strLineEnd = "\r\n";
inline constexpr std::string_view g_strEscape = "\x1B";

// The number as fixed-point text with exactly that many decimals, "." as decimal point, rounded
// half away from zero in double precision; a negative value that rounds to zero keeps its sign.
std::string FormatFixed(float value, int decimals);
// The plain unsigned decimal number; decimals is 0.
std::string FormatFixed(DWORD value, int decimals);

// Micrometres as millimetres, divided in single precision.
inline float MillimetresOf(LONG lengthUm) { return static_cast<float>(lengthUm) / 1000.0f; }
inline float MillimetresOf(DWORD lengthUm) { return static_cast<float>(lengthUm) / 1000.0f; }

// A length field of the command language: micrometres sent as millimetres with two decimals.
inline std::string FormatLength(LONG lengthUm) { return FormatFixed(MillimetresOf(lengthUm), 2); }

// Hands the bytes to the spooler and adds their number to the job's byte count. The spooler's
// answer is not examined: a write that fails, or a driver without a spool write, counts as written.
// An empty text is not handed over.
void SpoolWrite(PDEVOBJ pdevobj, std::string_view bytes);

// The local time as "07.03.2025, 14:05:09".
WideText FormatJobTimestamp();

std::string BuildJobHeader(std::string_view timestamp, std::string_view model,
                           std::string_view jobName);

// Restarts the job's byte count and writes the header. documentName may be null.
void WriteJobHeader(PDEVOBJ pdevobj, LPCWSTR documentName);
