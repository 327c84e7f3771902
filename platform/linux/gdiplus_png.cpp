// PNG files of bitmaps, by libpng.

#include <png.h>

#include "platform/linux/gdiplus_image.h"

namespace Gdiplus {

namespace {

// Errors leave libpng by its own jump; nothing with a destructor lives between here and there.
void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void OnWarning(png_structp, png_const_charp) {}

void WriteBytes(png_structp png, png_bytep bytes, png_size_t size) {
  auto* stream = static_cast<IStream*>(png_get_io_ptr(png));
  ULONG written = 0;
  if (FAILED(stream->Write(bytes, static_cast<ULONG>(size), &written)) || written != size) {
    png_error(png, "the stream is full");
  }
}

void Flush(png_structp) {}

bool WriteRows(png_structp png, png_infop info, const GpImage* image, IStream* stream) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_write_fn(png, stream, WriteBytes, Flush);
  const bool oneBit = image->IsOneBit();
  png_set_IHDR(png, info, static_cast<png_uint_32>(image->width),
               static_cast<png_uint_32>(image->height), oneBit ? 1 : 8,
               oneBit ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  // Rows of dots compress best as they are.
  if (oneBit) png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_write_info(png, info);
  if (!oneBit) png_set_bgr(png);
  for (INT y = 0; y < image->height; ++y) png_write_row(png, image->Row(y));
  png_write_end(png, nullptr);
  return true;
}

}  // namespace

GpStatus WritePng(const GpImage& image, IStream* stream) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
  if (png == nullptr) return OutOfMemory;
  png_infop info = png_create_info_struct(png);
  const bool written = info != nullptr && WriteRows(png, info, &image, stream);
  png_destroy_write_struct(&png, &info);
  return written ? Ok : Win32Error;
}

}  // namespace Gdiplus
