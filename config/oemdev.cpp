#include "config/oemdev.h"

#include <cassert>

namespace {

struct BlockFields {
  WORD OEMDEV::*kind;
  char (OEMDEV::*text)[kCustomTextSize];
};

constexpr BlockFields kBlockFields[kCustomBlockCount] = {
    {&OEMDEV::wCustomType0, &OEMDEV::szCustomText0},
    {&OEMDEV::wCustomType1, &OEMDEV::szCustomText1},
    {&OEMDEV::wCustomType2, &OEMDEV::szCustomText2},
    {&OEMDEV::wCustomType3, &OEMDEV::szCustomText3},
    {&OEMDEV::wCustomType4, &OEMDEV::szCustomText4},
    {&OEMDEV::wCustomType5, &OEMDEV::szCustomText5},
    {&OEMDEV::wCustomType6, &OEMDEV::szCustomText6},
    {&OEMDEV::wCustomType7, &OEMDEV::szCustomText7},
};

}  // namespace

bool IsModel(const OEMDEV& devmode, const char* modelCode) {
  return FixedText(devmode.szModelCode) == modelCode;
}

CustomBlock GetCustomBlock(const OEMDEV& devmode, int k) {
  assert(k >= 0 && k < kCustomBlockCount);
  const BlockFields& fields = kBlockFields[k];
  return {devmode.*fields.kind, FixedText(devmode.*fields.text)};
}
