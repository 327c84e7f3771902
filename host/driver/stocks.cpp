#include "host/driver/stocks.h"

#include <algorithm>

#include "host/unicode.h"
#include "platform/extensions.h"

std::vector<PrinterStock> StocksOf(const Printer& printer) {
  // A stock without an identifier gets a random one at every reading.
  StockList stocks, again;
  LoadStocksForPrinter(stocks, printer.Handle());
  LoadStocksForPrinter(again, printer.Handle());
  std::vector<PrinterStock> result;
  for (const StockItem& stock : stocks) {
    const bool selectable = std::any_of(again.begin(), again.end(), [&](const StockItem& other) {
      return other.guid == stock.guid;
    });
    result.push_back({stock, selectable});
  }
  return result;
}

std::string StocksKey(const Printer& printer) {
  const auto system = PlatformPrinterFromHandle(printer.Handle());
  return "HKEY_CURRENT_USER\\Software\\Veltrix Printer Driver\\UI\\" +
         Narrowed(StripKeyChars(system ? system->driver : u"")) + "\\" +
         Narrowed(StripKeyChars(printer.Name())) + "\\Stocks";
}
