// Printer handles and printer information of the spooler, over the system file.
#pragma once

#include "platform/driver.h"

struct PRINTER_INFO_2W {
  LPWSTR pServerName;
  LPWSTR pPrinterName;
  LPWSTR pShareName;
  LPWSTR pPortName;
  LPWSTR pDriverName;
  LPWSTR pComment;
  LPWSTR pLocation;
  PDEVMODEW pDevMode;
  LPWSTR pSepFile;
  LPWSTR pPrintProcessor;
  LPWSTR pDatatype;
  LPWSTR pParameters;
  PVOID pSecurityDescriptor;
  DWORD Attributes;
  DWORD Priority;
  DWORD DefaultPriority;
  DWORD StartTime;
  DWORD UntilTime;
  DWORD Status;
  DWORD cJobs;
  DWORD AveragePPM;
};
static_assert(sizeof(PRINTER_INFO_2W) == 136);

// Opens the printer of that name (compared without case). FALSE with ERROR_INVALID_PRINTER_NAME
// when the system file names no such printer; *phPrinter is then null.
PLATFORM_API BOOL WINAPI OpenPrinterW(LPWSTR pPrinterName, HANDLE* phPrinter, LPVOID pDefault);
PLATFORM_API BOOL WINAPI ClosePrinter(HANDLE hPrinter);

// The name of the system's default printer: the first that the system file names. *pcchBuffer: room
// in units in, length with the terminator out; FALSE with ERROR_INSUFFICIENT_BUFFER when it does
// not fit, ERROR_FILE_NOT_FOUND when there is no printer.
PLATFORM_API BOOL WINAPI GetDefaultPrinterW(LPWSTR pszBuffer, LPDWORD pcchBuffer);

// Level 2 only. Stores the size needed in *pcbNeeded; when cbBuf is smaller, FALSE with
// ERROR_INSUFFICIENT_BUFFER, otherwise a PRINTER_INFO_2W followed by its texts. The server name is
// set for a printer name that begins with two backslashes, texts that are not known are empty.
PLATFORM_API BOOL WINAPI GetPrinterW(HANDLE hPrinter, DWORD Level, LPBYTE pPrinter, DWORD cbBuf,
                                     LPDWORD pcbNeeded);
