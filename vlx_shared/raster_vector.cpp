// The kernels in vector code, compiled once for each kind of vector unit and chosen at run time.
// The plain kernels do the rest of a row that does not fill a vector.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "vlx_shared/raster_vector.cpp"
// clang-format off
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include "vlx_shared/raster_kernels.h"
#include "vlx_shared/raster_wavefront-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vlx::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE
const RasterKernels& TargetKernels() { return PlainKernels(); }
#else

// One step's bytes. Wider vectors gain nothing: splitting pixels into channels crosses their lanes.
using Bytes = hn::FixedTag<std::uint8_t, HWY_MAX_BYTES >= 32 ? 32 : 16>;
using Words = hn::Repartition<std::uint16_t, Bytes>;
using Shorts = hn::Repartition<std::int16_t, Bytes>;
using ByteVec = hn::Vec<Bytes>;
using WordVec = hn::Vec<Words>;
constexpr Bytes kBytes;
constexpr Words kWords;
constexpr Shorts kShorts;
constexpr INT kStep = static_cast<INT>(hn::MaxLanes(kBytes));

ByteVec White() { return hn::Set(kBytes, 255); }

bool AllWhite(const BYTE* pixels) {
  const ByteVec bits =
      hn::And(hn::LoadU(kBytes, pixels),
              hn::And(hn::LoadU(kBytes, pixels + kStep), hn::LoadU(kBytes, pixels + 2 * kStep)));
  return hn::AllTrue(kBytes, hn::Eq(bits, White()));
}

// Takes the bytes at even or odd places as 16-bit numbers; Whole puts both halves together again.
template <int kOdd>
WordVec Half(ByteVec bytes) {
  const WordVec words = hn::BitCast(kWords, bytes);
  return kOdd ? hn::ShiftRight<8>(words) : hn::And(words, hn::Set(kWords, 0xFF));
}
ByteVec Whole(WordVec even, WordVec odd) {
  return hn::BitCast(kBytes, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

struct Channels {
  WordVec blue, green, red;
};
template <int kOdd>
Channels HalfOf(ByteVec blue, ByteVec green, ByteVec red) {
  return {Half<kOdd>(blue), Half<kOdd>(green), Half<kOdd>(red)};
}

WordVec LumaOf(const Channels& pixels) {
  return hn::ShiftRight<8>(hn::Add(hn::Mul(pixels.blue, hn::Set(kWords, 29)),
                                   hn::Add(hn::Mul(pixels.green, hn::Set(kWords, 150)),
                                           hn::Mul(pixels.red, hn::Set(kWords, 77)))));
}
ByteVec LumaOf(ByteVec blue, ByteVec green, ByteVec red) {
  return Whole(LumaOf(HalfOf<0>(blue, green, red)), LumaOf(HalfOf<1>(blue, green, red)));
}

// Remembers whether any level is neither 0 nor 255: only then does adding 1 give more than 1.
class GreyWatch {
 public:
  GreyWatch() : m_most(hn::Zero(kBytes)) {}
  void See(ByteVec levels) { m_most = hn::Max(m_most, hn::Add(levels, hn::Set(kBytes, 1))); }
  bool Seen() const { return !hn::AllFalse(kBytes, hn::Gt(m_most, hn::Set(kBytes, 1))); }

 private:
  ByteVec m_most;
};

bool Grey(const BYTE* pixels, INT count, BYTE* levels) {
  if (count < kStep) return PlainKernels().Grey(pixels, count, levels);
  GreyWatch watch;
  for (INT next = 0; next < count; next += kStep) {
    const INT x = std::min(next, count - kStep);  // the last step repeats some pixels
    ByteVec level = White();
    if (!AllWhite(pixels + 3 * x)) {
      ByteVec blue, green, red;
      hn::LoadInterleaved3(kBytes, pixels + 3 * x, blue, green, red);
      level = LumaOf(blue, green, red);
      watch.See(level);
    }
    hn::StoreU(level, kBytes, levels + x);
  }
  return watch.Seen();
}

WordVec Squared(WordVec a, WordVec b) {
  const WordVec off = hn::Sub(a, b);
  return hn::Mul(off, off);
}

WordVec HighlightAmount(const Channels& pixels, const ColorMixture& mixture) {
  const auto set = [](int value)
                       HWY_ATTR { return hn::Set(kWords, static_cast<std::uint16_t>(value)); };
  const auto distance = [&](WordVec channel, int i) HWY_ATTR {
    return hn::ShiftRight<2>(Squared(channel, set(mixture.color[i])));
  };
  const auto along = [&](WordVec channel, int i) HWY_ATTR {
    return hn::MulFixedPoint15(hn::BitCast(kShorts, hn::ShiftLeft<7>(channel)),
                               hn::Set(kShorts, mixture.weight[i]));
  };
  const auto notAbove = [](WordVec a, WordVec b) HWY_ATTR { return hn::Eq(hn::Min(a, b), a); };
  const auto [blue, green, red] = pixels;
  const WordVec fromHighlight =
      hn::Add(distance(blue, 0), hn::Add(distance(green, 1), distance(red, 2)));
  const auto sum = hn::Add(along(blue, 0), hn::Add(along(green, 1), along(red, 2)));
  const WordVec chroma = hn::Add(hn::AverageRound(Squared(blue, green), Squared(green, red)),
                                 hn::ShiftRight<1>(Squared(red, blue)));
  const WordVec length = hn::ShiftLeft<2>(
      hn::MulHigh(hn::ShiftLeft<1>(hn::BitCast(kWords, sum)), set(mixture.alongScale)));
  const WordVec lengthSquared = hn::MulHigh(length, length);
  const WordVec off = hn::SaturatedSub(chroma, lengthSquared);
  const auto counts = hn::Or(notAbove(off, set(mixture.offLimit)),
                             notAbove(hn::MulHigh(off, set(mixture.cosineSquared)),
                                      hn::MulHigh(lengthSquared, set(mixture.sineSquared))));
  const int shift = mixture.amountShift;
  const auto rounding = hn::Set(kShorts, static_cast<std::int16_t>(1 << shift >> 1));
  const auto amount =
      hn::Min(hn::ShiftRightSame(hn::Add(sum, rounding), shift), hn::Set(kShorts, 255));
  const WordVec positive = hn::BitCast(kWords, hn::Max(amount, hn::Zero(kShorts)));
  return hn::IfThenElse(notAbove(fromHighlight, set(mixture.solidLimit)), set(255),
                        hn::IfThenElseZero(counts, positive));
}

struct Amounts {
  WordVec black, highlight;  // as levels
};

Amounts SplitHalf(const Channels& pixels, const ColorMixture& mixture) {
  const auto set = [](int value)
                       HWY_ATTR { return hn::Set(kWords, static_cast<std::uint16_t>(value)); };
  const WordVec luma = LumaOf(pixels);
  const auto isGrey = hn::And(hn::Eq(pixels.blue, pixels.green), hn::Eq(pixels.green, pixels.red));
  const auto isEnd = hn::Or(hn::Eq(pixels.blue, set(0)), hn::Eq(pixels.blue, set(255)));
  WordVec amount = hn::IfThenZeroElse(hn::And(isGrey, isEnd), HighlightAmount(pixels, mixture));
  const WordVec lack = hn::Add(hn::Mul(amount, set(mixture.lumaDeficit)), set(128));
  WordVec level = hn::Add(luma, hn::ShiftRight<8>(hn::Add(lack, hn::ShiftRight<8>(lack))));
  const WordVec trace =
      hn::Add(set(kTrace), hn::ShiftRight<8>(hn::Mul(amount, set(mixture.blackTrace))));
  const auto clean = hn::AndNot(hn::Eq(amount, set(0)), hn::Gt(hn::Add(level, trace), set(254)));
  level = hn::IfThenElse(hn::Or(clean, hn::Eq(amount, set(255))), set(255), level);
  amount = hn::IfThenElseZero(hn::Gt(amount, set(kTrace)), amount);
  level = hn::Min(hn::Max(level, amount), set(255));
  return {level, hn::Sub(set(255), amount)};
}

bool Split(const BYTE* pixels, INT count, const ColorMixture& mixture, BYTE* black,
           BYTE* highlight) {
  if (count < kStep) return PlainKernels().Split(pixels, count, mixture, black, highlight);
  GreyWatch watch;
  for (INT next = 0; next < count; next += kStep) {
    const INT x = std::min(next, count - kStep);
    if (AllWhite(pixels + 3 * x)) {
      hn::StoreU(White(), kBytes, black + x);
      hn::StoreU(White(), kBytes, highlight + x);
      continue;
    }
    ByteVec blue, green, red;
    hn::LoadInterleaved3(kBytes, pixels + 3 * x, blue, green, red);
    const Amounts even = SplitHalf(HalfOf<0>(blue, green, red), mixture);
    const Amounts odd = SplitHalf(HalfOf<1>(blue, green, red), mixture);
    const ByteVec blackLevel = Whole(even.black, odd.black);
    const ByteVec highlightLevel = Whole(even.highlight, odd.highlight);
    watch.See(blackLevel);
    watch.See(highlightLevel);
    hn::StoreU(blackLevel, kBytes, black + x);
    hn::StoreU(highlightLevel, kBytes, highlight + x);
  }
  return watch.Seen();
}

// Calls work with the place and the thresholds of each whole step. Returns where the rest begins;
// phase: its place in the screen's period.
template <typename Work>
INT ForEachStep(INT count, const BYTE* thresholds, INT period, INT& phase, const Work& work) {
  const INT advance = kStep % period;
  INT x = 0;
  for (phase = 0; x + kStep <= count; x += kStep) {
    work(x, hn::LoadU(kBytes, thresholds + phase));
    phase += advance;
    if (phase >= period) phase -= period;
  }
  return x;
}

ByteVec DotsOf(ByteVec levels, ByteVec thresholds) {
  return hn::VecFromMask(kBytes, hn::Eq(hn::Max(levels, thresholds), levels));
}

void Screen(BYTE* levels, INT count, const BYTE* thresholds, INT period) {
  INT phase;
  const INT x =
      ForEachStep(count, thresholds, period, phase, [&](INT at, ByteVec threshold) HWY_ATTR {
        hn::StoreU(DotsOf(hn::LoadU(kBytes, levels + at), threshold), kBytes, levels + at);
      });
  for (INT i = x; i < count; ++i) levels[i] = levels[i] < thresholds[phase + i - x] ? 0 : 255;
}

void ScreenTwo(BYTE* black, BYTE* highlight, INT count, const BYTE* thresholds, INT period) {
  INT phase;
  const INT x =
      ForEachStep(count, thresholds, period, phase, [&](INT at, ByteVec threshold) HWY_ATTR {
        const ByteVec level = hn::LoadU(kBytes, black + at);
        const ByteVec both = hn::SaturatedSub(level, hn::Not(hn::LoadU(kBytes, highlight + at)));
        const ByteVec dots = DotsOf(level, threshold);
        hn::StoreU(dots, kBytes, black + at);
        hn::StoreU(hn::Or(DotsOf(both, threshold), hn::Not(dots)), kBytes, highlight + at);
      });
  if (x < count)
    PlainKernels().ScreenTwo(black + x, highlight + x, count - x, thresholds + phase, count - x);
}

void StoreBits(ByteVec levels, BYTE* bits) {
  alignas(32) static constexpr BYTE kFirstIsHighest[32] = {
      7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8,
      7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8};
  const ByteVec ordered = hn::TableLookupBytes(levels, hn::Load(kBytes, kFirstIsHighest));
  hn::StoreMaskBits(kBytes, hn::Gt(ordered, hn::Set(kBytes, 127)), bits);
}

// Calls step for all pixels that fill whole bytes of bits. Returns where the rest begins.
template <typename Step>
INT ForEachBits(INT count, const Step& step) {
  if (count < kStep) return 0;
  const INT wholeBytes = count / 8 * 8;
  for (INT next = 0; next < wholeBytes; next += kStep) step(std::min(next, wholeBytes - kStep));
  return wholeBytes;
}

void PackLevels(const BYTE* levels, INT count, BYTE* bits) {
  const INT x = ForEachBits(
      count, [&](INT at) HWY_ATTR { StoreBits(hn::LoadU(kBytes, levels + at), bits + at / 8); });
  PlainKernels().PackLevels(levels + x, count - x, bits + x / 8);
}

void Pack(const BYTE* pixels, INT count, BYTE* bits) {
  const INT x = ForEachBits(count, [&](INT at) HWY_ATTR {
    ByteVec level = White();
    if (!AllWhite(pixels + 3 * at)) {
      ByteVec blue, green, red;
      hn::LoadInterleaved3(kBytes, pixels + 3 * at, blue, green, red);
      level = LumaOf(blue, green, red);
    }
    StoreBits(level, bits + at / 8);
  });
  PlainKernels().Pack(pixels + 3 * x, count - x, bits + x / 8);
}

const RasterKernels& TargetKernels() {
  static constexpr RasterKernels kKernels = {Grey,    Split,      Screen,     ScreenTwo,
                                             Diffuse, DiffuseTwo, PackLevels, Pack};
  return kKernels;
}
#endif

}  // namespace vlx::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vlx {
HWY_EXPORT(TargetKernels);
const RasterKernels& Choose() { return HWY_DYNAMIC_DISPATCH(TargetKernels)(); }
}  // namespace vlx

const RasterKernels& BestKernels() { return vlx::Choose(); }
#endif
