#include "commands/cut_commands.h"

#include "commands/job_stream.h"

namespace {

constexpr LONG kEveryLabel = 9998;  // stands for "no count given"

// What the two cut groups have in common.
struct CutGroup {
  LONG mode;
  LONG value1Um;
  LONG value2Um;
  LONG count;
  bool atJobEnd;
};

CutGroup FirstGroup(const OEMDEV& devmode) {
  return {devmode.dwCut1Mode, devmode.nCut1Value1, devmode.nCut1Value2, devmode.nCut1Count,
          devmode.dwCut1AtJobEnd != 0};
}

CutGroup SecondGroup(const OEMDEV& devmode) {
  return {devmode.dwCut2Mode, devmode.nCut2Value1, devmode.nCut2Value2, devmode.nCut2Count,
          devmode.dwCut2AtJobEnd != 0};
}

std::string Values(const CutGroup& group) {
  return "," + FormatLength(group.value1Um) + "," + FormatLength(group.value2Um);
}

std::string GroupCommand(const CutGroup& group) {
  const auto cutAfter = [&group](LONG count) {
    return "\r\nC" + std::to_string(count) + Values(group);
  };
  switch (group.mode) {
    case 0:
      return group.atJobEnd ? cutAfter(kEveryLabel) : std::string();
    case 1:
      return "\r\nCe" + Values(group);
    case 2:
      return cutAfter(group.count == 0 ? kEveryLabel : group.count);
    default:
      return {};
  }
}

std::string InitialCommands(const OEMDEV& devmode) {
  std::string text;
  if (devmode.dwCut2Enabled && devmode.dwCspEnabled) {
    text += "\r\nCsp," + FormatLength(devmode.nCspValue);
  }
  if (devmode.dwCut1Enabled && devmode.dwCut1CsEnabled) {
    text += "\r\nCs," + FormatLength(devmode.nCut1CsValue);
  } else if (devmode.dwCut2Enabled && devmode.dwCut2CutEnabled && devmode.dwCut2CsEnabled) {
    text += "\r\nCs," + FormatLength(devmode.nCut2CsValue);
  }
  return text;
}

}  // namespace

std::string BuildCutCommands(OEMDEV& devmode) {
  std::string text;
  if (devmode.dwInitialCutSent == 0) {
    text = InitialCommands(devmode);
    devmode.dwInitialCutSent = 1;
  }
  if (devmode.dwCut2Enabled && devmode.dwCpEnabled) {
    text += "\r\nCp," + FormatLength(devmode.nCpValue);
  }
  if (devmode.dwCut1Enabled) {
    text += GroupCommand(FirstGroup(devmode));
  } else if (devmode.dwCut2Enabled && devmode.dwCut2CutEnabled) {
    text += GroupCommand(SecondGroup(devmode));
  }
  return text;
}

std::string BuildEndCutCommand(const OEMDEV& devmode) {
  if (!devmode.dwCut1Enabled && !devmode.dwCut2Enabled) return {};
  const CutGroup group = devmode.dwCut1Enabled ? FirstGroup(devmode) : SecondGroup(devmode);
  if (!group.atJobEnd) return {};
  return std::string(g_strLineEnd) + "Ce" + Values(group);
}
