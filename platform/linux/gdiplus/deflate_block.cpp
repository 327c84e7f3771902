#include "platform/linux/gdiplus/deflate_block.h"

namespace {

constexpr INT kMostRunLengthBits = 7;
constexpr INT kHeadBits = 17;  // before the lengths of the code of runs

INT LengthExtraBits(INT code) {
  return code < kFirstLengthCode + 8 || code == kFirstLengthCode + 28
             ? 0
             : (code - kFirstLengthCode) / 4 - 1;
}

INT DistanceExtraBits(INT code) { return code < 4 ? 0 : code / 2 - 1; }

}  // namespace

void BlockCounts::Add(const BlockCounts& more) {
  for (SIZE_T i = 0; i < lengths.size(); ++i) lengths[i] += more.lengths[i];
  for (SIZE_T i = 0; i < distances.size(); ++i) distances[i] += more.distances[i];
}

void LengthRuns::Add(const BYTE* lengths, INT number) {
  for (INT i = 0; i < number;) {
    INT same = 1;
    while (i + same < number && lengths[i + same] == lengths[i]) ++same;
    AddRun(lengths[i], same);
    i += same;
  }
}

void LengthRuns::AddRun(BYTE length, INT same) {
  const auto add = [this](INT symbol, INT extraBits, INT extra) {
    runs[count++] = {static_cast<BYTE>(symbol), static_cast<BYTE>(extraBits),
                     static_cast<BYTE>(extra)};
  };
  if (length != 0) {
    add(length, 0, 0);
    --same;
  }
  while (same >= 3) {
    const INT most = length != 0 ? 6 : 138;
    const INT part = std::min(same, most);
    if (length != 0) {
      add(16, 2, part - 3);
    } else if (part <= 10) {
      add(17, 3, part - 3);
    } else {
      add(18, 7, part - 11);
    }
    same -= part;
  }
  for (; same > 0; --same) add(length, 0, 0);
}

BlockCodes::BlockCodes(BlockCounts counts) {
  counts.lengths[kEndOfBlock] = 1;
  lengths.MakeLengths(counts.lengths, lengths.kMostBits);
  distances.MakeLengths(counts.distances, distances.kMostBits);
  runs.Add(lengths.lengths.data(), lengths.Used(kFirstLengthCode));
  runs.Add(distances.lengths.data(), distances.Used(1));
  std::array<DWORD, 19> runCounts = {};
  for (INT i = 0; i < runs.count; ++i) ++runCounts[runs.runs[i].symbol];
  runLengths.MakeLengths(runCounts, kMostRunLengthBits);
  while (sentRunLengths > 4 && runLengths.lengths[kRunLengthOrder[sentRunLengths - 1]] == 0) {
    --sentRunLengths;
  }
  bits = kHeadBits + SIZE_T{3} * sentRunLengths;
  for (INT i = 0; i < runs.count; ++i) {
    bits += runLengths.lengths[runs.runs[i].symbol] + runs.runs[i].extraBits;
  }
  for (INT i = 0; i < 286; ++i) {
    bits += SIZE_T{counts.lengths[i]} * (lengths.lengths[i] + LengthExtraBits(i));
  }
  for (INT i = 0; i < 30; ++i) {
    bits += SIZE_T{counts.distances[i]} * (distances.lengths[i] + DistanceExtraBits(i));
  }
}
