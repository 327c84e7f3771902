#include "commands/job_stream.h"

#include <cassert>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "config/device_state.h"
#include "config/process.h"
#include "platform/text.h"

namespace {

constexpr std::string_view kDriverVersion = "1.3.0.25";
constexpr DWORD kDriverNameRoom = 1023;  // units

std::string FormatDouble(double value, int decimals) {
  char text[512];  // the largest double has 309 digits before the point
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
  assert(end.ec == std::errc());
  return std::string(text, end.ptr);
}

// The text in the thread's ANSI code page; empty for null, which leaves the last error alone.
std::string Narrow(LPCWSTR text) {
  if (text == nullptr) return {};
  const INT size = WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size == 0) return {};
  std::string narrow(size, '\0');
  if (WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, narrow.data(), size, nullptr, nullptr) !=
      size) {
    return {};
  }
  narrow.resize(size - 1);
  return narrow;
}

std::string DriverName(HANDLE hPrinter) {
  WCHAR name[kDriverNameRoom + 1] = {};
  if (!CConfigParser::GetPrinterDriverName(hPrinter, name, kDriverNameRoom, g_logClient)) return {};
  return Narrow(name);
}

}  // namespace

std::string FormatFixed(float value, int decimals) {
  double scale = 1.0;
  for (int i = 0; i < decimals; ++i) scale *= 10.0;
  return FormatDouble(std::round(static_cast<double>(value) * scale) / scale, decimals);
}

std::string FormatFixed(DWORD value, int decimals) {
  return FormatDouble(static_cast<double>(value), decimals);
}

void SpoolWrite(PDEVOBJ pdevobj, std::string_view bytes) {
  if (bytes.empty()) return;
  const DWORD length = static_cast<DWORD>(bytes.size());
  const DRVPROCS* procedures = pdevobj->pDrvProcs;
  try {
    if (procedures != nullptr && procedures->DrvWriteSpoolBuf != nullptr) {
      procedures->DrvWriteSpoolBuf(pdevobj, const_cast<char*>(bytes.data()), length);
    }
  } catch (...) {
    // The spooler's answer is not examined, an exception included.
  }
  DeviceState(pdevobj)->job.dwJobBytesWritten += length;
}

WideText FormatJobTimestamp() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char text[64];
  std::snprintf(text, sizeof text, "%02d.%02d.%04d, %02d:%02d:%02d", now.wDay, now.wMonth,
                now.wYear, now.wHour, now.wMinute, now.wSecond);
  return WideText(text, text + std::char_traits<char>::length(text));
}

std::string BuildJobHeader(std::string_view timestamp, std::string_view model,
                           std::string_view jobName) {
  std::string header;
  const auto addLine = [&header](std::string_view label, std::string_view text) {
    header.append(label).append(text).append(g_strLineEnd);
  };
  addLine(";Created: ", timestamp);
  addLine(";Driver version: ", kDriverVersion);
  addLine(";Printer model: ", model);
  addLine(";Print job name: ", jobName);
  return header;
}

void WriteJobHeader(PDEVOBJ pdevobj, LPCWSTR documentName) {
  DeviceState(pdevobj)->job.dwJobBytesWritten = 0;
  const std::string timestamp = Narrow(FormatJobTimestamp().c_str());
  const std::string model = DriverName(pdevobj->hPrinter);
  SpoolWrite(pdevobj, BuildJobHeader(timestamp, model, Narrow(documentName)));
}
