// Pages of a PDF file, for readers that convert their document to PDF.
#pragma once

#include <memory>
#include <string>

#include "host/pages/helper_program.h"
#include "host/pages/page_source.h"

// name: of the document, for messages. dpi: the resolution to draw at. The first Next or Skip
// throws HostError (input) if the file is not a readable PDF file.
std::unique_ptr<PageSource> PagesOfPdf(RereadableFile file, std::string name, int dpi);
