#include <zint.h>

#include <memory>

#include "common/error.h"
#include "tools/test_label/blocks.h"

namespace {

std::vector<std::string> Encode(int symbology, const std::string& text) {
  const std::unique_ptr<zint_symbol, void (*)(zint_symbol*)> symbol(ZBarcode_Create(),
                                                                    ZBarcode_Delete);
  if (symbol == nullptr) throw std::bad_alloc();
  symbol->symbology = symbology;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  if (ZBarcode_Encode(symbol.get(), bytes, static_cast<int>(text.size())) >= ZINT_ERROR) {
    throw CommandError(kExitInternal, std::string("No bar code is made: ") + symbol->errtxt);
  }
  std::vector<std::string> rows;
  for (int y = 0; y < symbol->rows; ++y) {
    std::string& row = rows.emplace_back();
    for (int x = 0; x < symbol->width; ++x) {
      row += (symbol->encoded_data[y][x / 8] >> x % 8 & 1) != 0 ? '#' : '.';
    }
  }
  return rows;
}

}  // namespace

std::vector<std::string> LinearSymbol(const std::string& digits) {
  return Encode(BARCODE_CODE128, digits);
}

std::vector<std::string> SquareSymbol(const std::string& text) {
  return Encode(BARCODE_QRCODE, text);
}
