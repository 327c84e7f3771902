// The pages of a PDF file that another reader has made of its document.
#pragma once

#include <memory>
#include <string>

#include "host/pages/helper_program.h"
#include "host/pages/page_source.h"

// name: of the document, for messages.
std::unique_ptr<PageSource> PagesOfPdf(RereadableFile file, std::string name, int dpi);
