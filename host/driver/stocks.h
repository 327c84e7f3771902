// The paper stocks of a printer, as the plug-in reads them.
#pragma once

#include <string>
#include <vector>

#include "config/stock_catalogue.h"
#include "host/driver/printer.h"

struct PrinterStock {
  StockItem item;
  bool selectable;  // the catalogue gives it an identifier; otherwise it has a random one
};

// In the order of the catalogue. The plug-in uses the first one unless another is selected.
std::vector<PrinterStock> StocksOf(const Printer& printer);

// The registry key that holds the printer's stocks.
std::string StocksKey(const Printer& printer);
