// The private devmode OEMDEV, byte for byte as the driver's components share it. Flags are 32-bit
// and set when non-zero; lengths are micrometres unless noted; texts are 8-bit and end with a NUL
// within their field. Reserved gaps belong to other components and are carried unchanged.
#pragma once

#include <cstring>
#include <string>

#include "platform/driver.h"

inline constexpr DWORD kOemDevSignature = 0x564C5831;  // "VLX1" as a big-endian number
inline constexpr DWORD kOemDevVersion = 1;
inline constexpr int kCustomBlockCount = 8;
inline constexpr int kCustomTextSize = 80;  // bytes, terminator included
inline constexpr int kModelCodeSize = 20;

// How the stored text of a custom command block becomes bytes; every other value is plain text.
enum CustomBlockKind : WORD {
  kBlockNone = 0,
  kBlockFile = 1,
  kBlockEscaped = 2,
  kBlockPlain = 3,
  kBlockInline = 4,
};

#pragma pack(push, 1)
struct OEMDEV {
  OEM_DMEXTRAHEADER header;
  BYTE reserved00C[0x658 - 0x00C];
  DWORD dwUnprintableLeft;
  DWORD dwUnprintableRight;
  DWORD dwUnprintableTop;
  DWORD dwUnprintableBottom;
  LONG nOffsetX;
  LONG nOffsetY;
  DWORD dwOptionE;
  DWORD dwOptionM;
  DWORD dwOptionN;
  DWORD bTopSideSameAsBottom;
  BYTE reserved680[4];
  DWORD dwSensorType;  // 0 to 5
  DWORD dwGapDistance;
  DWORD dwRotation;  // 0 to 3 quarter turns; odd values exchange width and length
  DWORD dwPrintMethod;
  LONG dwOptionPD;  // 1 option P, 2 option D
  DWORD dwHeadParamB;
  BYTE reserved69C[4];
  DWORD dwSpeed;  // millimetres per second
  LONG nDarkness;
  DWORD dwRibbonSaver;
  DWORD dwOptionS;
  BYTE reserved6B0[4];
  DWORD dwSetupOnFirstPageOnly;
  DWORD dwOptionSet1Enabled;
  LONG nOptionSet1PValue;
  DWORD dwOptionSet1AEnabled;
  LONG nOptionSet1A0;
  LONG nOptionSet1A1;
  LONG nOptionSet1A2;
  LONG nOptionSet1A3;
  LONG nOptionSet1A4;
  BYTE reserved6D8[4];
  DWORD dwCut1Enabled;
  LONG dwCut1Mode;
  LONG nCut1Value1;
  LONG nCut1Value2;
  LONG nCut1Count;
  DWORD dwCut1CsEnabled;
  LONG nCut1CsValue;
  DWORD dwCut1AtJobEnd;
  DWORD dwPSource1Enabled;
  LONG nPSource1Value;
  DWORD dwCut2Enabled;
  LONG dwCut2Mode;
  LONG nCut2Value1;
  LONG nCut2Value2;
  LONG nCut2Count;
  DWORD dwCut2CsEnabled;
  LONG nCut2CsValue;
  DWORD dwCut2AtJobEnd;
  DWORD dwCut2CutEnabled;
  LONG nOptionCValue;
  DWORD dwCpEnabled;
  LONG nCpValue;
  DWORD dwCspEnabled;
  LONG nCspValue;
  BYTE reserved73C[4];
  DWORD dwOptionT;
  LONG nOptionTValue;
  DWORD dwPSource3Enabled;
  LONG nPSource3Value;
  DWORD dwOptionSet3Enabled;
  LONG nOptionSet3PValue;
  LONG nOptionSet3A5;
  LONG dwOptionSet3StartMode;  // 1 automatic, 2 on the start signal
  DWORD dwPSource2Enabled;
  BYTE reserved764[0x770 - 0x764];
  DWORD bCropToContent;
  BYTE reserved774[0x780 - 0x774];
  WORD wCustomType0;
  WORD wCustomType1;
  WORD wCustomType2;
  WORD wCustomType3;
  WORD wCustomType4;
  WORD wCustomType5;
  WORD wCustomType6;
  WORD wCustomType7;
  char szCustomText0[kCustomTextSize];
  char szCustomText1[kCustomTextSize];
  char szCustomText2[kCustomTextSize];
  char szCustomText3[kCustomTextSize];
  char szCustomText4[kCustomTextSize];
  char szCustomText5[kCustomTextSize];
  char szCustomText6[kCustomTextSize];
  char szCustomText7[kCustomTextSize];
  DWORD dwColorMode;          // 1 one colour, 2 two colours
  COLORREF crHighlightColor;  // 0x00BBGGRR
  BYTE reservedA18[4];
  LONG nOptionHValue;
  BYTE reservedA20[8];
  LONG nColorTolerance;  // hundredths
  BYTE byDitherParam;
  BYTE reservedA2D[3];
  WORD wDitherer;  // eBitmapDitherer
  BYTE reservedA32[0xA3C - 0xA32];
  DWORD dwOptionSet2Enabled;
  LONG nOptionSet2PValue;
  LONG nOptionSet2A2;
  LONG nOptionSet2A4;  // 20 micrometre units
  LONG nOptionSet2A0;
  LONG nOptionSet2A1;
  BYTE reservedA54[0xA60 - 0xA54];
  GUID guidSelectedStock;
  BYTE reservedA70[4];
  DWORD dwUseDarkness2;
  LONG nDarkness2;
  char szModelCode[kModelCodeSize];
  LONG dwInitialCutSent;  // the only field that the renderer writes
};
#pragma pack(pop)

static_assert(sizeof(OEMDEV) == 2708);
// The offsets are the format.
#define OEMDEV_AT(field, offset) static_assert(offsetof(OEMDEV, field) == (offset))
OEMDEV_AT(dwUnprintableLeft, 0x658);
OEMDEV_AT(dwUnprintableRight, 0x65C);
OEMDEV_AT(dwUnprintableTop, 0x660);
OEMDEV_AT(dwUnprintableBottom, 0x664);
OEMDEV_AT(nOffsetX, 0x668);
OEMDEV_AT(nOffsetY, 0x66C);
OEMDEV_AT(dwOptionE, 0x670);
OEMDEV_AT(dwOptionM, 0x674);
OEMDEV_AT(dwOptionN, 0x678);
OEMDEV_AT(bTopSideSameAsBottom, 0x67C);
OEMDEV_AT(dwSensorType, 0x684);
OEMDEV_AT(dwGapDistance, 0x688);
OEMDEV_AT(dwRotation, 0x68C);
OEMDEV_AT(dwPrintMethod, 0x690);
OEMDEV_AT(dwOptionPD, 0x694);
OEMDEV_AT(dwHeadParamB, 0x698);
OEMDEV_AT(dwSpeed, 0x6A0);
OEMDEV_AT(nDarkness, 0x6A4);
OEMDEV_AT(dwRibbonSaver, 0x6A8);
OEMDEV_AT(dwOptionS, 0x6AC);
OEMDEV_AT(dwSetupOnFirstPageOnly, 0x6B4);
OEMDEV_AT(dwOptionSet1Enabled, 0x6B8);
OEMDEV_AT(nOptionSet1PValue, 0x6BC);
OEMDEV_AT(dwOptionSet1AEnabled, 0x6C0);
OEMDEV_AT(nOptionSet1A0, 0x6C4);
OEMDEV_AT(nOptionSet1A1, 0x6C8);
OEMDEV_AT(nOptionSet1A2, 0x6CC);
OEMDEV_AT(nOptionSet1A3, 0x6D0);
OEMDEV_AT(nOptionSet1A4, 0x6D4);
OEMDEV_AT(dwCut1Enabled, 0x6DC);
OEMDEV_AT(dwCut1Mode, 0x6E0);
OEMDEV_AT(nCut1Value1, 0x6E4);
OEMDEV_AT(nCut1Value2, 0x6E8);
OEMDEV_AT(nCut1Count, 0x6EC);
OEMDEV_AT(dwCut1CsEnabled, 0x6F0);
OEMDEV_AT(nCut1CsValue, 0x6F4);
OEMDEV_AT(dwCut1AtJobEnd, 0x6F8);
OEMDEV_AT(dwPSource1Enabled, 0x6FC);
OEMDEV_AT(nPSource1Value, 0x700);
OEMDEV_AT(dwCut2Enabled, 0x704);
OEMDEV_AT(dwCut2Mode, 0x708);
OEMDEV_AT(nCut2Value1, 0x70C);
OEMDEV_AT(nCut2Value2, 0x710);
OEMDEV_AT(nCut2Count, 0x714);
OEMDEV_AT(dwCut2CsEnabled, 0x718);
OEMDEV_AT(nCut2CsValue, 0x71C);
OEMDEV_AT(dwCut2AtJobEnd, 0x720);
OEMDEV_AT(dwCut2CutEnabled, 0x724);
OEMDEV_AT(nOptionCValue, 0x728);
OEMDEV_AT(dwCpEnabled, 0x72C);
OEMDEV_AT(nCpValue, 0x730);
OEMDEV_AT(dwCspEnabled, 0x734);
OEMDEV_AT(nCspValue, 0x738);
OEMDEV_AT(dwOptionT, 0x740);
OEMDEV_AT(nOptionTValue, 0x744);
OEMDEV_AT(dwPSource3Enabled, 0x748);
OEMDEV_AT(nPSource3Value, 0x74C);
OEMDEV_AT(dwOptionSet3Enabled, 0x750);
OEMDEV_AT(nOptionSet3PValue, 0x754);
OEMDEV_AT(nOptionSet3A5, 0x758);
OEMDEV_AT(dwOptionSet3StartMode, 0x75C);
OEMDEV_AT(dwPSource2Enabled, 0x760);
OEMDEV_AT(bCropToContent, 0x770);
OEMDEV_AT(wCustomType0, 0x780);
OEMDEV_AT(wCustomType1, 0x782);
OEMDEV_AT(wCustomType2, 0x784);
OEMDEV_AT(wCustomType3, 0x786);
OEMDEV_AT(wCustomType4, 0x788);
OEMDEV_AT(wCustomType5, 0x78A);
OEMDEV_AT(wCustomType6, 0x78C);
OEMDEV_AT(wCustomType7, 0x78E);
OEMDEV_AT(szCustomText0, 0x790);
OEMDEV_AT(szCustomText1, 0x7E0);
OEMDEV_AT(szCustomText2, 0x830);
OEMDEV_AT(szCustomText3, 0x880);
OEMDEV_AT(szCustomText4, 0x8D0);
OEMDEV_AT(szCustomText5, 0x920);
OEMDEV_AT(szCustomText6, 0x970);
OEMDEV_AT(szCustomText7, 0x9C0);
OEMDEV_AT(dwColorMode, 0xA10);
OEMDEV_AT(crHighlightColor, 0xA14);
OEMDEV_AT(nOptionHValue, 0xA1C);
OEMDEV_AT(nColorTolerance, 0xA28);
OEMDEV_AT(byDitherParam, 0xA2C);
OEMDEV_AT(wDitherer, 0xA30);
OEMDEV_AT(dwOptionSet2Enabled, 0xA3C);
OEMDEV_AT(nOptionSet2PValue, 0xA40);
OEMDEV_AT(nOptionSet2A2, 0xA44);
OEMDEV_AT(nOptionSet2A4, 0xA48);
OEMDEV_AT(nOptionSet2A0, 0xA4C);
OEMDEV_AT(nOptionSet2A1, 0xA50);
OEMDEV_AT(guidSelectedStock, 0xA60);
OEMDEV_AT(dwUseDarkness2, 0xA74);
OEMDEV_AT(nDarkness2, 0xA78);
OEMDEV_AT(szModelCode, 0xA7C);
OEMDEV_AT(dwInitialCutSent, 0xA90);
#undef OEMDEV_AT

// The text of a fixed field: its bytes up to the first NUL, never past the field's end.
template <std::size_t size>
std::string FixedText(const char (&field)[size]) {
  return std::string(field, strnlen(field, size));
}

// Whether the printer model is that one. The whole code counts, case included.
bool IsModel(const OEMDEV& devmode, const char* modelCode);

// One custom command block as stored.
struct CustomBlock {
  WORD kind;
  std::string text;
};

// Block k, 0 to 7, of the record.
CustomBlock GetCustomBlock(const OEMDEV& devmode, int k);
