#include "tools/stocks_command.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/driver/printer.h"
#include "host/driver/stocks.h"
#include "host/error.h"
#include "host/settings/length.h"
#include "host/unicode.h"
#include "tools/job_options.h"
#include "viewer/reports/label_json.h"

namespace {

constexpr const char* kStocksExamples = R"(Examples:
  vlx stocks
  vlx stocks --printer "Label Printer"
  vlx print label.png -o label.job --set paper.stock={0A1B2C3D-0000-0000-0000-000000000001}

The catalogue is registry.reg in the VLX_HOME folder.)";

struct StocksOptions {
  std::string printer;
  bool json = false;
};

// The plug-in does not use these values, so their units are unknown; they are shown as stored.
struct StoredNumber {
  const char* name;
  DWORD StockItem::*field;
};
constexpr StoredNumber kStoredNumbers[] = {
    {"PaperWidth", &StockItem::dwPaperWidth},
    {"PaperLength", &StockItem::dwPaperLength},
    {"GapDistance", &StockItem::dwGapDistance},
    {"OffsetX", &StockItem::dwOffsetX},
    {"OffsetY", &StockItem::dwOffsetY},
    {"SensorType", &StockItem::dwSensorType},
    {"Rotation", &StockItem::dwRotation},
    {"Darkness", &StockItem::dwDarkness},
    {"Darkness2", &StockItem::dwDarkness2},
    {"PrintMode", &StockItem::dwPrintMode},
    {"RibbonSaver", &StockItem::dwRibbonSaver},
    {"NumberCopies", &StockItem::dwNumberCopies},
    {"Mirror", &StockItem::dwMirror},
    {"Invert", &StockItem::dwInvert},
    {"TopSameAsBottom", &StockItem::dwTopSameAsBottom},
    {"BackfeedMode", &StockItem::dwBackfeedMode},
    {"BackfeedSpeed", &StockItem::dwBackfeedSpeed},
    {"IgnorePaperEnd", &StockItem::dwIgnorePaperEnd},
    {"SingleBuffer", &StockItem::dwSingleBuffer},
    {"IgnoreLabelPosition", &StockItem::dwIgnoreLabelPosition},
};

std::string Margin(DWORD um) {
  return um > 0x7FFFFFFF ? std::to_string(um) + "um" : FormatLength(static_cast<LONG>(um));
}

void PrintStock(const PrinterStock& row, bool first) {
  const StockItem& stock = row.item;
  const StockItem defaults;
  const std::string name = Narrowed(stock.displayName);
  std::printf("%s  %s%s\n",
              row.selectable ? FormatGuid(stock.guid).c_str() : "(without Id, cannot be selected)",
              name.empty() ? "(no name)" : name.c_str(),
              first ? "  (used when none is selected)" : "");
  std::printf("  margins: left %s, right %s, top %s, bottom %s\n",
              Margin(stock.dwUnprintableLeft).c_str(), Margin(stock.dwUnprintableRight).c_str(),
              Margin(stock.dwUnprintableTop).c_str(), Margin(stock.dwUnprintableBottom).c_str());
  std::string stored = "  stored: SpeedInMmPerSec " + std::to_string(stock.dwSpeedInMmPerSec);
  for (const StoredNumber& number : kStoredNumbers) {
    if (stock.*number.field == defaults.*number.field) continue;
    stored.append(", ").append(number.name).append(" ");
    stored += std::to_string(stock.*number.field);
  }
  std::printf("%s\n", stored.c_str());
}

nlohmann::ordered_json ToJson(const PrinterStock& row) {
  const StockItem& stock = row.item;
  const StockItem defaults;
  nlohmann::ordered_json json = {{"name", Narrowed(stock.displayName)},
                                 {"selectable", row.selectable}};
  if (row.selectable) json["id"] = FormatGuid(stock.guid);
  json["marginsUm"] = {{"left", stock.dwUnprintableLeft},
                       {"right", stock.dwUnprintableRight},
                       {"top", stock.dwUnprintableTop},
                       {"bottom", stock.dwUnprintableBottom}};
  json["stored"] = {{"SpeedInMmPerSec", stock.dwSpeedInMmPerSec}};
  for (const StoredNumber& number : kStoredNumbers) {
    if (stock.*number.field != defaults.*number.field) {
      json["stored"][number.name] = stock.*number.field;
    }
  }
  return json;
}

int RunStocks(const StocksOptions& options) {
  WarnOfSystemFile();
  const Printer printer(options.printer);
  const std::vector<PrinterStock> stocks = StocksOf(printer);
  if (options.json) {
    auto json = nlohmann::ordered_json::array();
    for (const PrinterStock& stock : stocks) json.push_back(ToJson(stock));
    viewer::PrintJson(json);
    return kExitDone;
  }
  if (stocks.empty()) {
    std::printf("There are no stocks of \"%s\"; the driver reads them from %s, below\n%s\n",
                Narrowed(printer.Name()).c_str(), RegistryFilePath().c_str(),
                StocksKey(printer).c_str());
  }
  for (const PrinterStock& stock : stocks) PrintStock(stock, &stock == &stocks.front());
  return kExitDone;
}

}  // namespace

Command StocksCommand(CLI::App& program) {
  const auto options = std::make_shared<StocksOptions>();
  CLI::App* stocks = program.add_subcommand("stocks", "List the paper stocks of a printer");
  stocks->add_option("--printer", options->printer, "Printer named in system.toml [the first]")
      ->option_text("NAME");
  stocks->add_flag("--json", options->json, "Print JSON");
  stocks->footer(kStocksExamples);
  return {stocks, [options] { return RunStocks(*options); }};
}
