#include "host/pages/page_formats.h"

#include "host/error.h"
#include "host/pages/foreign_formats.h"

std::unique_ptr<PageSource> OpenPages(PageInput input, int dpi) {
  const std::string_view head = input.Peek(kPageHeadBytes);
  if (head.empty()) throw HostError(kExitInput, input.Name() + ": is empty, it holds no page");
  for (const PageFormat& format : kPageFormats) {
    if (format.matches(head)) return format.open(std::move(input), dpi);
  }
  throw ForeignFormatError(head, input.Name(), PageFormatNames());
}

std::string PageFormatNames() {
  std::string names;
  for (const PageFormat& format : kPageFormats) {
    names.append(names.empty() ? "" : ", ").append(format.names);
  }
  return names;
}
