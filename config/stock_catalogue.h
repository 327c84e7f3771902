// The paper stocks that the user defined for a printer, read from the current user's registry. The
// catalogue belongs to the driver's user interface; nothing here writes it. No failure is reported:
// what cannot be read makes the list shorter.
#pragma once

#include <list>
#include <string>

#include "config/wide_text.h"
#include "platform/registry.h"

// One stock. Fields that the renderer does not use have the units that the user interface gives
// them.
struct StockItem {
  GUID guid = {};
  WideText displayName;
  DWORD dwSpeedInMmPerSec = 0;
  DWORD dwDarkness = 0;
  DWORD dwDarkness2 = 0;
  DWORD dwPaperWidth = 9000;
  DWORD dwPaperLength = 6000;
  DWORD dwUnprintableLeft = 0;  // micrometres, as all four margins
  DWORD dwUnprintableRight = 0;
  DWORD dwUnprintableTop = 0;
  DWORD dwUnprintableBottom = 0;
  DWORD dwOffsetX = 0;
  DWORD dwOffsetY = 0;
  DWORD dwSensorType = 2;
  DWORD dwGapDistance = 0;
  DWORD dwIgnorePaperEnd = 0;
  DWORD dwRotation = 0;
  DWORD dwMirror = 0;
  DWORD dwInvert = 0;
  DWORD dwNumberCopies = 1;
  DWORD dwPrintMode = 0;
  DWORD dwBackfeedMode = 0;
  DWORD dwBackfeedSpeed = 0;
  DWORD dwRibbonSaver = 0;
  DWORD dwSingleBuffer = 0;
  DWORD dwIgnoreLabelPosition = 0;
  DWORD dwTopSameAsBottom = 0;
};

using StockList = std::list<StockItem>;

// Fills the list, cleared first, with the stocks of the printer behind the handle. Sets the
// thread's last error to 0 on entry.
void LoadStocksForPrinter(StockList& list, HANDLE hPrinter);

// The same for a driver and a printer name that StripKeyChars has stripped.
void LoadStocks(StockList& list, const WideText& driverName, const WideText& printerName);

// Reads one stock's values over the defaults that item holds. A value that is missing or has the
// wrong size leaves the default. Always returns true.
bool ReadStockItem(StockItem& item, HKEY key);

// The name without spaces, colons, backslashes and slashes, as it stands in a registry path.
WideText StripKeyChars(WideText name);

// The first stock with that identifier, or else the first stock; null for an empty list. *selected
// is set to whether the identifier was found.
const StockItem* ChooseStock(const StockList& list, const GUID& identifier, bool* selected);
