#include "config/stock_catalogue.h"

#include <new>
#include <string_view>

#include "config/block_owner.h"
#include "platform/com.h"
#include "platform/memory.h"
#include "platform/spooler.h"

namespace {

constexpr DWORD kNameRoom = 260;       // units of a subkey's name
constexpr DWORD kTextRoomBytes = 260;  // 129 units and the terminator

struct NumberValue {
  LPCWSTR name;
  DWORD StockItem::*field;
};

// In the order in which they are queried.
constexpr NumberValue kNumberValues[] = {
    {WTEXT("SpeedInMmPerSec"), &StockItem::dwSpeedInMmPerSec},
    {WTEXT("Darkness"), &StockItem::dwDarkness},
    {WTEXT("Darkness2"), &StockItem::dwDarkness2},
    {WTEXT("PaperWidth"), &StockItem::dwPaperWidth},
    {WTEXT("PaperLength"), &StockItem::dwPaperLength},
    {WTEXT("UnprintableLeft"), &StockItem::dwUnprintableLeft},
    {WTEXT("UnprintableRight"), &StockItem::dwUnprintableRight},
    {WTEXT("UnprintableTop"), &StockItem::dwUnprintableTop},
    {WTEXT("UnprintableBottom"), &StockItem::dwUnprintableBottom},
    {WTEXT("OffsetX"), &StockItem::dwOffsetX},
    {WTEXT("OffsetY"), &StockItem::dwOffsetY},
    {WTEXT("SensorType"), &StockItem::dwSensorType},
    {WTEXT("GapDistance"), &StockItem::dwGapDistance},
    {WTEXT("IgnorePaperEnd"), &StockItem::dwIgnorePaperEnd},
    {WTEXT("Rotation"), &StockItem::dwRotation},
    {WTEXT("Mirror"), &StockItem::dwMirror},
    {WTEXT("Invert"), &StockItem::dwInvert},
    {WTEXT("TopSameAsBottom"), &StockItem::dwTopSameAsBottom},
    {WTEXT("BackfeedMode"), &StockItem::dwBackfeedMode},
    {WTEXT("BackfeedSpeed"), &StockItem::dwBackfeedSpeed},
    {WTEXT("PrintMode"), &StockItem::dwPrintMode},
    {WTEXT("NumberCopies"), &StockItem::dwNumberCopies},
    {WTEXT("RibbonSaver"), &StockItem::dwRibbonSaver},
    {WTEXT("SingleBuffer"), &StockItem::dwSingleBuffer},
    {WTEXT("IgnoreLabelPosition"), &StockItem::dwIgnoreLabelPosition},
};

class RegKey {
 public:
  RegKey() = default;
  RegKey(const RegKey&) = delete;
  RegKey& operator=(const RegKey&) = delete;
  ~RegKey() {
    if (m_key != nullptr) RegCloseKey(m_key);
  }
  bool Open(HKEY parent, LPCWSTR path) {
    return RegOpenKeyExW(parent, path, 0, KEY_ALL_ACCESS, &m_key) == LSTATUS(ERROR_SUCCESS);
  }
  HKEY Get() const { return m_key; }

 private:
  HKEY m_key = nullptr;
};

// Reads the text of a value. Returns false if there is none or it does not fit with its terminator.
bool ReadText(HKEY key, LPCWSTR name, WideText& text) {
  WCHAR buffer[kTextRoomBytes / sizeof(WCHAR) + 1] = {};
  DWORD bytes = kTextRoomBytes;
  DWORD type = 0;
  if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<LPBYTE>(buffer), &bytes) !=
      LSTATUS(ERROR_SUCCESS)) {
    return false;
  }
  buffer[bytes / sizeof(WCHAR)] = 0;  // an odd byte at the end is no character
  const WideView value(buffer);
  if (value.size() * sizeof(WCHAR) >= kTextRoomBytes) return false;
  text = value;
  return true;
}

bool ReadIdentifier(HKEY key, GUID& guid) {
  WideText text;
  GUID read;
  if (!ReadText(key, WTEXT("Id"), text) || FAILED(CLSIDFromString(text.c_str(), &read))) {
    return false;
  }
  guid = read;
  return true;
}

void LoadSubkeys(StockList& list, HKEY stocks) {
  for (DWORD index = 0;; ++index) {
    WCHAR name[kNameRoom];
    DWORD length = kNameRoom;
    const LSTATUS status =
        RegEnumKeyExW(stocks, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (status == LSTATUS(ERROR_MORE_DATA)) continue;  // no stock has such a long name
    // At the end of the list, or the registry fails and would fail for every index.
    if (status != LSTATUS(ERROR_SUCCESS)) return;

    RegKey key;
    if (!key.Open(stocks, name)) continue;
    StockItem item;
    const bool hasRandom = SUCCEEDED(CoCreateGuid(&item.guid));
    if (!hasRandom) item.guid = {};
    ReadStockItem(item, key.Get());
    // Without an identifier it would match the stock whose identifier is all zeros.
    if (!hasRandom && !ReadIdentifier(key.Get(), item.guid)) continue;
    list.insert(item.guid == GUID{} ? list.begin() : list.end(), item);
  }
}

WideText TextOrEmpty(LPCWSTR text) { return text == nullptr ? WideText() : text; }

}  // namespace

WideText StripKeyChars(WideText name) {
  std::erase_if(name, [](WCHAR c) { return WideView(WTEXT(" :\\/")).find(c) != WideView::npos; });
  return name;
}

bool ReadStockItem(StockItem& item, HKEY key) {
  ReadText(key, WTEXT("DisplayName"), item.displayName);
  ReadIdentifier(key, item.guid);
  for (const NumberValue& value : kNumberValues) {
    DWORD number = 0;
    DWORD bytes = sizeof number;
    DWORD type = 0;
    if (RegQueryValueExW(key, value.name, nullptr, &type, reinterpret_cast<LPBYTE>(&number),
                         &bytes) == LSTATUS(ERROR_SUCCESS) &&
        bytes == sizeof number) {
      item.*value.field = number;
    }
  }
  return true;
}

void LoadStocks(StockList& list, const WideText& driverName, const WideText& printerName) {
  list.clear();
  try {
    const WideText path = WTEXT("Software\\Veltrix Printer Driver\\UI\\") + driverName +
                          WTEXT("\\") + printerName + WTEXT("\\Stocks");
    RegKey stocks;
    if (stocks.Open(HKEY_CURRENT_USER, path.c_str())) LoadSubkeys(list, stocks.Get());
  } catch (const std::bad_alloc&) {
    // The stocks read so far are kept.
  }
}

void LoadStocksForPrinter(StockList& list, HANDLE hPrinter) {
  list.clear();
  SetLastError(ERROR_SUCCESS);
  DWORD size = 0;
  if (!GetPrinterW(hPrinter, 2, nullptr, 0, &size) && GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return;
  }
  if (size < sizeof(PRINTER_INFO_2W)) return;
  const GlobalBlock<void> block(GlobalAlloc(GPTR, size));
  if (block == nullptr) return;
  if (!GetPrinterW(hPrinter, 2, static_cast<LPBYTE>(block.get()), size, &size)) return;
  const auto* info = static_cast<const PRINTER_INFO_2W*>(block.get());
  try {
    LoadStocks(list, StripKeyChars(TextOrEmpty(info->pDriverName)),
               StripKeyChars(TextOrEmpty(info->pPrinterName)));
  } catch (const std::bad_alloc&) {
    // Without memory for the names no stock can be looked up.
  }
}

const StockItem* ChooseStock(const StockList& list, const GUID& identifier, bool* selected) {
  *selected = false;
  for (const StockItem& item : list) {
    if (item.guid != identifier) continue;
    *selected = true;
    return &item;
  }
  return list.empty() ? nullptr : &list.front();
}
