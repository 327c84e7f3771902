// The texts of custom command blocks: no kind but the file's gives more than a block may hold.

#include <cstdlib>

#include "commands/custom_blocks.h"
#include "fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const WORD kind = input.Take<WORD>();
  const DWORD page = input.Take<DWORD>();
  const std::string text = input.Text(kCustomTextSize - 1);
  if (kind == kBlockFile) return 0;
  if (ExpandCustomBlock(kind, text, page).size() >= kCustomTextSize) std::abort();
  if (ExpandCustomBlock(kind, text).size() >= kCustomTextSize) std::abort();
  return 0;
}
