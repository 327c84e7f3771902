// GIF files, read by giflib: the page is the whole screen in white with the first picture on it.

#include <gif_lib.h>

#include <exception>
#include <utility>

#include "host/error.h"
#include "host/pages/page_formats.h"

namespace {

struct GifCloser {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

class GifPage final : public PageSource {
 public:
  explicit GifPage(PageInput input) : m_input(std::move(input)) {}

  bool Next(PageImage& page) override {
    if (m_done) return false;
    m_done = true;
    int error = 0;
    m_gif.reset(DGifOpen(this, Read, &error));
    if (m_gif == nullptr) Fail(error);
    GoToPicture();
    DrawPicture(page);
    m_gif.reset();
    return true;
  }
  bool Skip(PageImage&) override { return !std::exchange(m_done, true); }
  std::optional<std::size_t> Count() const override { return 1; }

 private:
  // Exceptions must not pass through giflib.
  static int Read(GifFileType* gif, GifByteType* bytes, int size) {
    GifPage& self = *static_cast<GifPage*>(gif->UserData);
    try {
      return static_cast<int>(self.m_input.Read(bytes, static_cast<std::size_t>(size)));
    } catch (...) {
      self.m_inputError = std::current_exception();
      return 0;
    }
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    if (m_inputError) std::rethrow_exception(m_inputError);
    throw HostError(kExitInput, m_input.Name() + ": is not a whole GIF file (" + reason + ")",
                    "export it again");
  }
  [[noreturn]] void Fail(int error) const {
    const char* text = GifErrorString(error);
    Fail(std::string(text == nullptr ? "no reason is known" : text));
  }
  void Check(int result) const {
    if (result != GIF_OK) Fail(m_gif->Error);
  }

  void GoToPicture() {
    for (;;) {
      GifRecordType record = UNDEFINED_RECORD_TYPE;
      Check(DGifGetRecordType(m_gif.get(), &record));
      if (record == IMAGE_DESC_RECORD_TYPE) break;
      if (record != EXTENSION_RECORD_TYPE) Fail("it holds no picture");
      int kind = 0;
      GifByteType* block = nullptr;  // its length, then its bytes
      Check(DGifGetExtension(m_gif.get(), &kind, &block));
      GraphicsControlBlock control = {};
      if (kind == GRAPHICS_EXT_FUNC_CODE && block != nullptr &&
          DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
        m_transparent = control.TransparentColor;
      }
      while (block != nullptr) Check(DGifGetExtensionNext(m_gif.get(), &block));
    }
    Check(DGifGetImageDesc(m_gif.get()));
  }

  void DrawPicture(PageImage& page) {
    const GifImageDesc& picture = m_gif->Image;
    const ColorMapObject* colours = picture.ColorMap ? picture.ColorMap : m_gif->SColorMap;
    if (colours == nullptr) Fail("it has no colours");
    if (picture.Left < 0 || picture.Top < 0 || picture.Width <= 0 || picture.Height <= 0) {
      Fail("its picture has no size");
    }
    ShapePage(page, std::max<std::uint64_t>(m_gif->SWidth, picture.Left + picture.Width),
              std::max<std::uint64_t>(m_gif->SHeight, picture.Top + picture.Height),
              m_input.Name());
    std::fill(page.pixels.begin(), page.pixels.end(), 0xFF);
    std::vector<GifPixelType> line(static_cast<std::size_t>(picture.Width));
    const auto drawRow = [&](int y) {
      Check(DGifGetLine(m_gif.get(), line.data(), picture.Width));
      std::uint8_t* to = page.Row(static_cast<std::uint32_t>(picture.Top + y)) + 3 * picture.Left;
      for (const GifPixelType index : line) {
        if (index != m_transparent && index >= colours->ColorCount) Fail("it uses unknown colours");
        if (index != m_transparent) {
          const GifColorType& colour = colours->Colors[index];
          to[0] = colour.Blue;
          to[1] = colour.Green;
          to[2] = colour.Red;
        }
        to += 3;
      }
    };
    struct Pass {
      int first, step;
    };
    constexpr Pass kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}, {0, 1}};
    const Pass* pass = picture.Interlace ? kPasses : kPasses + 4;
    const Pass* const end = picture.Interlace ? kPasses + 4 : kPasses + 5;
    for (; pass != end; ++pass) {
      for (int y = pass->first; y < picture.Height; y += pass->step) drawRow(y);
    }
  }

  PageInput m_input;
  bool m_done = false;
  std::exception_ptr m_inputError;
  std::unique_ptr<GifFileType, GifCloser> m_gif;
  int m_transparent = NO_TRANSPARENT_COLOR;
};

}  // namespace

std::unique_ptr<PageSource> OpenGif(PageInput input, int) {
  return std::make_unique<GifPage>(std::move(input));
}
