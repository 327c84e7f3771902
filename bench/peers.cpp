#include "bench/peers.h"

#include <leptonica/allheaders.h>
#include <vips/vips.h>
#include <wand/MagickWand.h>

#include <cstring>
#include <stdexcept>

namespace {

void Check(bool done, const char* peer) {
  if (!done) throw std::runtime_error(std::string(peer) + " failed");
}

// Red, green, blue without padding.
std::vector<std::uint8_t> RgbOf(const Raster& page) {
  std::vector<std::uint8_t> rgb;
  rgb.reserve(std::size_t{3} * page.widthPx * page.heightPx);
  for (int y = 0; y < page.heightPx; ++y) {
    for (int x = 0; x < page.widthPx; ++x) {
      const std::uint8_t* pixel = page.Row(y) + 3 * x;
      rgb.insert(rgb.end(), {pixel[2], pixel[1], pixel[0]});
    }
  }
  return rgb;
}

void* LoadLeptonica(const Raster& page) {
  PIX* pix = pixCreate(page.widthPx, page.heightPx, 32);
  for (int y = 0; y < page.heightPx; ++y) {
    for (int x = 0; x < page.widthPx; ++x) {
      const std::uint8_t* pixel = page.Row(y) + 3 * x;
      pixSetRGBPixel(pix, x, y, pixel[2], pixel[1], pixel[0]);
    }
  }
  return pix;
}

std::size_t RunLeptonica(void* loaded, bool dither, StageTimes& times) {
  StageClock clock;
  PIX* turned = pixRotateOrth(static_cast<PIX*>(loaded), 1);
  times.turn += clock.Lap();
  PIX* grey = pixConvertRGBToLuminance(turned);
  PIX* bits = dither ? pixDitherToBinary(grey) : pixThresholdToBinary(grey, 128);
  times.dots += clock.Lap();
  l_uint8* file = nullptr;
  size_t bytes = 0;
  Check(pixWriteMemPng(&file, &bytes, bits, 0) == 0, "leptonica");
  lept_free(file);
  for (PIX** pix : {&bits, &grey, &turned}) pixDestroy(pix);
  times.png += clock.Lap();
  return bytes;
}

void UnloadLeptonica(void* loaded) {
  auto* pix = static_cast<PIX*>(loaded);
  pixDestroy(&pix);
}

void* LoadVips(const Raster& page) {
  static const bool started = [] {
    Check(VIPS_INIT("page_bench") == 0, "libvips");
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    return true;
  }();
  Check(started, "libvips");
  const std::vector<std::uint8_t> rgb = RgbOf(page);
  VipsImage* image = vips_image_new_from_memory_copy(rgb.data(), rgb.size(), page.widthPx,
                                                     page.heightPx, 3, VIPS_FORMAT_UCHAR);
  Check(image != nullptr, "libvips");
  image->Type = VIPS_INTERPRETATION_sRGB;
  return image;
}

std::size_t RunVips(void* loaded, bool dither, StageTimes&) {
  VipsImage *turned = nullptr, *grey = nullptr, *bits = nullptr;
  void* file = nullptr;
  std::size_t bytes = 0;
  Check(vips_rot90(static_cast<VipsImage*>(loaded), &turned, nullptr) == 0 &&
            vips_colourspace(turned, &grey, VIPS_INTERPRETATION_B_W, nullptr) == 0,
        "libvips");
  if (dither) {  // its dithering is that of its palettes
    Check(vips_pngsave_buffer(grey, &file, &bytes, "palette", TRUE, "bitdepth", 1, "dither", 1.0,
                              nullptr) == 0,
          "libvips");
  } else {
    Check(vips_moreeq_const1(grey, &bits, 128.0, nullptr) == 0 &&
              vips_pngsave_buffer(bits, &file, &bytes, "bitdepth", 1, nullptr) == 0,
          "libvips");
    g_object_unref(bits);
  }
  g_free(file);
  g_object_unref(grey);
  g_object_unref(turned);
  return bytes;
}

void UnloadVips(void* loaded) { g_object_unref(loaded); }

void* LoadMagick(const Raster& page) {
  static const bool started = [] {
    MagickWandGenesis();
    return MagickSetResourceLimit(ThreadResource, 1) != MagickFalse;
  }();
  Check(started, "ImageMagick");
  const std::vector<std::uint8_t> rgb = RgbOf(page);
  MagickWand* wand = NewMagickWand();
  Check(MagickConstituteImage(wand, page.widthPx, page.heightPx, "RGB", CharPixel, rgb.data()) !=
            MagickFalse,
        "ImageMagick");
  return wand;
}

std::size_t RunMagick(void* loaded, bool dither, StageTimes& times) {
  StageClock clock;
  MagickWand* wand = CloneMagickWand(static_cast<MagickWand*>(loaded));
  PixelWand* white = NewPixelWand();
  PixelSetColor(white, "white");
  bool done = MagickRotateImage(wand, white, 90.0) != MagickFalse;
  times.turn += clock.Lap();
  done = done && MagickTransformImageColorspace(wand, GRAYColorspace) != MagickFalse;
  if (dither) {
    done = done &&
           MagickQuantizeImage(wand, 2, GRAYColorspace, 0, MagickTrue, MagickFalse) != MagickFalse;
  } else {
    done = done && MagickThresholdImage(wand, QuantumRange / 2.0) != MagickFalse;
  }
  done = done && MagickSetImageType(wand, BilevelType) != MagickFalse;
  times.dots += clock.Lap();
  done = done && MagickSetImageFormat(wand, "PNG") != MagickFalse;
  size_t bytes = 0;
  unsigned char* file = done ? MagickGetImageBlob(wand, &bytes) : nullptr;
  Check(file != nullptr, "ImageMagick");
  MagickRelinquishMemory(file);
  DestroyPixelWand(white);
  DestroyMagickWand(wand);
  times.png += clock.Lap();
  return bytes;
}

void UnloadMagick(void* loaded) { DestroyMagickWand(static_cast<MagickWand*>(loaded)); }

constexpr PeerCall kPeers[] = {{"leptonica", LoadLeptonica, RunLeptonica, UnloadLeptonica},
                               {"libvips", LoadVips, RunVips, UnloadVips},
                               {"imagemagick", LoadMagick, RunMagick, UnloadMagick}};

}  // namespace

std::span<const PeerCall> Peers() { return kPeers; }
