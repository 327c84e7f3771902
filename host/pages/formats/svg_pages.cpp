// SVG drawings: the program rsvg-convert (librsvg) converts one to a PDF page, which is then drawn
// at the device's resolution like any other, without smoothed edges.

#include "host/error.h"
#include "host/pages/formats/pdf_pages.h"
#include "host/pages/helper_program.h"
#include "host/pages/page_formats.h"

namespace {

constexpr std::size_t kHeadBytes = 4096;  // the drawing begins within these, after comments

}  // namespace

std::unique_ptr<PageSource> OpenSvg(PageInput input, int dpi) {
  const std::string name = input.Name();
  if (input.Peek(kHeadBytes).find("<svg") == std::string_view::npos) {
    throw HostError(kExitInput, name + ": seems to be XML, but no SVG drawing",
                    "convert it to one of " + PageFormatNames());
  }
  const RereadableFile svg(std::move(input));
  HelperProgram program({name, "an SVG drawing", "librsvg2-bin", {"rsvg-convert", "--format=pdf"}},
                        svg.Descriptor());
  RereadableFile pdf(std::move(program.Output()));
  if (const std::optional<std::string> fault = program.AwaitFault()) {
    throw HostError(kExitInput,
                    name + ": rsvg-convert cannot read this SVG drawing (" + *fault + ")",
                    "export it again");
  }
  return PagesOfPdf(std::move(pdf), name, dpi);
}
