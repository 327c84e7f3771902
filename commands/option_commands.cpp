#include "commands/option_commands.h"

#include "commands/custom_blocks.h"
#include "commands/cut_commands.h"
#include "commands/job_stream.h"

namespace {

constexpr LONG kOptionSet2Unit = 20;

struct OptionTexts {
  std::string options;  // each begins with its comma
  std::string p;
};

std::string PCommand(LONG lengthUm) { return "\r\nP" + FormatLength(lengthUm); }

// The settings user interface keeps some values in steps of 20; the product wraps as 32-bit.
LONG TimesUnit(LONG value) {
  return static_cast<LONG>(static_cast<DWORD>(value) * static_cast<DWORD>(kOptionSet2Unit));
}

OptionTexts OptionSet1(const OEMDEV& devmode) {
  struct Option {
    const char* literal;
    LONG value;
  };
  const Option options[] = {
      {",A0=", devmode.nOptionSet1A0}, {",A1=", devmode.nOptionSet1A1},
      {",A2=", devmode.nOptionSet1A2}, {",A3=", devmode.nOptionSet1A3},
      {",A4=", devmode.nOptionSet1A4},
  };
  OptionTexts texts{{}, PCommand(devmode.nOptionSet1PValue)};
  if (!devmode.dwOptionSet1AEnabled) return texts;
  for (const Option& option : options) {
    if (option.value > 0) texts.options += option.literal + std::to_string(option.value);
  }
  return texts;
}

OptionTexts OptionSet2(const OEMDEV& devmode) {
  OptionTexts texts{{}, PCommand(devmode.nOptionSet2PValue)};
  if (devmode.nOptionSet2A0 > 0) {
    texts.options += ",A0=" + std::to_string(TimesUnit(devmode.nOptionSet2A0));
  }
  if (devmode.nOptionSet2A1 > 0) texts.options += ",A1=" + std::to_string(devmode.nOptionSet2A1);
  if (devmode.nOptionSet2A2 > 0) texts.options += ",A2=" + std::to_string(devmode.nOptionSet2A2);
  if (devmode.nOptionSet2A4 > 0) {
    texts.options += ",A4=" + FormatLength(TimesUnit(devmode.nOptionSet2A4));
  }
  return texts;
}

OptionTexts OptionSet3(const OEMDEV& devmode) {
  OptionTexts texts;
  if (devmode.dwOptionSet3StartMode == 1) texts.options += ",A1='Automatic'";
  if (devmode.dwOptionSet3StartMode == 2) texts.options += ",A1='START signal'";
  texts.options += ",A5=" + FormatLength(devmode.nOptionSet3A5);
  return texts;
}

OptionTexts OptionSet(const OEMDEV& devmode) {
  if (devmode.dwOptionSet1Enabled) return OptionSet1(devmode);
  if (devmode.dwOptionSet2Enabled) return OptionSet2(devmode);
  if (devmode.dwOptionSet3Enabled) return OptionSet3(devmode);
  return {};
}

std::string OptionT(const OEMDEV& devmode) {
  if (devmode.wCustomType4 == kBlockInline) {
    return (devmode.dwOptionT ? ",T" : "") + ExpandCustomBlock(devmode, 4);
  }
  return devmode.dwOptionT ? ",T" + FormatLength(devmode.nOptionTValue) : std::string();
}

std::string Flags(const OEMDEV& devmode) {
  std::string text;
  if (devmode.dwCut2Enabled && devmode.nOptionCValue > 0) {
    text += ",C" + FormatFixed(MillimetresOf(devmode.nOptionCValue), 1);
  }
  if (devmode.dwOptionPD == 2) text += ",D";
  if (devmode.dwOptionE) text += ",E";
  if (devmode.dwColorMode == 2) text += ",H" + FormatLength(devmode.nOptionHValue);
  if (devmode.dwOptionM) text += ",M";
  if (devmode.dwOptionN) text += ",N";
  if (devmode.dwOptionPD == 1) text += ",P";
  if (devmode.dwOptionS) text += ",S";
  if (IsModel(devmode, "K7") && devmode.dwUseDarkness2) text += ",X";
  return text + OptionT(devmode);
}

// A P source replaces the P command of the option set. Sources 1 and 2 share one value.
std::string PSource(const OEMDEV& devmode, std::string ofOptionSet) {
  if (devmode.dwPSource1Enabled || devmode.dwPSource2Enabled) {
    return PCommand(devmode.nPSource1Value);
  }
  if (devmode.dwPSource3Enabled) return PCommand(devmode.nPSource3Value);
  if (devmode.dwOptionSet3Enabled) return PCommand(devmode.nOptionSet3PValue);
  return ofOptionSet;
}

}  // namespace

std::string BuildOptionCommands(OEMDEV& devmode, std::string* pAndCutText) {
  OptionTexts texts = OptionSet(devmode);
  texts.options += Flags(devmode);
  std::string line;
  if (!texts.options.empty()) {
    line.append(g_strLineEnd).append("O ").append(texts.options, 1);
  }
  *pAndCutText = PSource(devmode, std::move(texts.p)) + BuildCutCommands(devmode);
  return line;
}
